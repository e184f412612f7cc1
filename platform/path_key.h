#pragma once

#include <string>
#include <string_view>

/// Paths as map keys: in upper case, "/" for every separator, none doubled and none at the end. A folder's key ends in
/// "/" and is the front of the keys of all that lies below it.
namespace kelb::platform {

[[nodiscard]] std::u16string pathKey(std::u16string_view path);
/// The key but for its upper case: as long as the key, spelled as the path.
[[nodiscard]] std::u16string plainPath(std::u16string_view path);
[[nodiscard]] std::u16string folderKey(std::u16string_view folder);

} // namespace kelb::platform
