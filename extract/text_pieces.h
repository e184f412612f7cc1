#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelb::extract {

/// The texts that a reader of the page sees as separate: they end at every listed tag and at every line-break tag, but
/// not at inline tags (B, FONT, SPAN …), which are dropped within a piece. Blocks such as SCRIPT go whole; other tags
/// and a "<" without ">" are text. "&nbsp;", CR, LF and TAB become blanks; pieces are trimmed, empty ones dropped.
[[nodiscard]] std::vector<std::u16string> textPieces(std::u16string_view html);

} // namespace kelb::extract
