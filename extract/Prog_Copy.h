#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// From HTML to text, as the extractors need it.
namespace kelb::extract::Prog_Copy {

/// Every span from "<" to the next ">" deleted; entities stay.
[[nodiscard]] std::u16string CopyRemoveHTML(std::u16string_view text);

/// The listed tags, images among them, taken out as list_stripper.h tells. `text` is left with the part behind the
/// last tag that was dealt with, so callers pass a copy.
std::u16string CopyRemoveHTML1(std::u16string& text);

/// The page as separate pieces of text (text_pieces.h); the result is their number.
std::size_t CopyRemoveHTML2(std::u16string_view html, std::vector<std::u16string>& outPieces);

} // namespace kelb::extract::Prog_Copy
