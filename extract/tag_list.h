#pragma once

#include <string_view>

/// The tags that the list stripper knows, by name and without regard to letter case.
namespace kelb::extract {

/// Whether IMG counts among the listed tags.
enum class ImageTags { Listed, NotListed };

/// True for a tag that is taken out. "BR" is not among them.
[[nodiscard]] bool isListedTag(std::u16string_view name, ImageTags images);

/// True for a tag whose opening takes everything up to its closing tag along.
[[nodiscard]] bool isBlockTag(std::u16string_view name);

} // namespace kelb::extract
