#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Paths as map keys: in upper case, "/" for every separator, none doubled and none at the end. A folder's key ends in
/// "/" and is the front of the keys of all that lies below it.
namespace kelb::platform {

[[nodiscard]] std::u16string pathKey(std::u16string_view path);
/// The key but for its upper case: as long as the key, spelled as the path.
[[nodiscard]] std::u16string plainPath(std::u16string_view path);
[[nodiscard]] std::u16string folderKey(std::u16string_view folder);

/// The order in which folders are listed: without regard to case, names that differ in nothing else by their units.
void sortNames(std::vector<std::u16string>& names);

} // namespace kelb::platform
