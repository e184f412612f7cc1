#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Links of a page, and the search that does not mind case.
namespace kelb::extract::Prog_Kelb {

/// The whole address of a link on the page at `pageUrl`; "" for a page address below 11 characters and for a scheme
/// that does not begin with "http". Only "http://" counts as absolute: an https link is put behind the page's folder.
[[nodiscard]] std::u16string getFullURL(std::u16string_view pageUrl, std::u16string_view link);

/// Position, counted from 1, of `wanted` at or behind position `start`, in any case; 0 when it is not there or `start`
/// is no position of the text.
[[nodiscard]] std::size_t InStrNoCase(std::int64_t start, std::u16string_view text, std::u16string_view wanted);

} // namespace kelb::extract::Prog_Kelb
