#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Code page 936 (GBK with the user-defined pairs and 0x80 = U+20AC, 0xFF = U+F8F5), from generated tables.
/// Texts are UTF-16; every byte string decodes and every text encodes: what has no counterpart is replaced.
namespace kelb::platform {

/// Decodes code page 936. An invalid pair gives one U+FFFD; a lead byte before a byte below 0x40 gives U+FFFD
/// and leaves that byte to be read on its own; so does a lead byte at the end.
[[nodiscard]] std::u16string decode936(std::string_view bytes);

/// Appends the decoded text to `out`; the same rules.
void decode936(std::string_view bytes, std::u16string& out);

/// Encodes into code page 936. A code unit that the page cannot hold becomes "?"; adds their number to `replaced`
/// when it is given.
[[nodiscard]] std::string encode936(std::u16string_view text, std::size_t* replaced = nullptr);

/// True when code page 936 really encodes `unit` in two bytes (Chinese characters, full-width marks, é, α, я, U+3000;
/// not ASCII, €, ñ, ©, U+00A0, nor what the page lacks).
[[nodiscard]] bool isDoubleByte(char16_t unit) noexcept;

/// True when `text` holds at least one double-byte character.
[[nodiscard]] bool hasDoubleByte(std::u16string_view text) noexcept;

} // namespace kelb::platform
