#pragma once

#include "jet/index_key.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kelb::jet {

/// What one UTF-16 unit adds to a text key in the order "General (Legacy)".
struct TextCell {
    enum class Kind : std::uint8_t {
        None,       ///< no key is known for the unit
        Ignored,    ///< adds nothing
        Code,       ///< one letter: code bytes
        TwoLetters, ///< sorts as two letters (Æ, Þ, ß): code bytes of both
        Accented,   ///< code byte of the letter, accent in the second part of the key
        Apart       ///< stands only in the last part, with its position: hyphen, apostrophe, control characters
    };
    Kind kind = Kind::None;
    std::uint8_t size = 0; ///< code bytes used
    std::uint8_t code[2] = {0, 0};
    std::uint8_t accent = 0;
};
TextCell textCell(char16_t unit) noexcept;

/// How many places a TwoLetters unit takes before accents and units apart. The original engine counts two; keys that
/// count one are written by another program and are only recognised here, never made.
enum class TwoLetterPlaces : std::size_t { One = 1, Two = 2 };

/// Appends the key of a text, without flag byte:
///
///     codes 01 [accents by letter, 02 = none] [01 01 01 (position 06 code)…] 00
///
/// (descending: all of it complemented and another 00). Only the first 255 units count, trailing blanks do not, nor
/// does case or width. Returns the first unit for which no key can be made; `key` is then unchanged.
[[nodiscard]] std::optional<char16_t> appendTextKey(KeyBytes& key, std::u16string_view text, bool ascending,
                                                    TextKeys known, TwoLetterPlaces places = TwoLetterPlaces::Two);

} // namespace kelb::jet
