#include "jet/text_keys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace kelb::jet {
namespace {

constexpr std::size_t kMaxUnits = 255;
constexpr std::uint8_t kNoAccent = 0x02;

// Cells of the characters, 16 in a row, all figures hexadecimal: `xx` code, `xx+yy` code and accent, `xxxx*` two
// letters, `uxx` apart, `-` ignored, `?` no cell.
constexpr std::string_view kLatin[] = {
    "- u03 u04 u05 u06 u07 u08 u09 u0A 0803 0804 0805 0806 0807 u0B u0C",                              // U+0000
    "u0D u0E u0F u10 u11 u12 u13 u14 u15 u16 u17 u18 u19 u1A u1B u1C",                                 // U+0010
    "07 09 0A 0C 0E 10 12 u80 14 16 18 2C 1A u82 1C 1E",                                               // U+0020
    "36 38 3A 3C 3E 40 42 44 46 48 20 22 2E 30 32 24",                                                 // U+0030
    "26 4A 4C 4D 4F 51 53 55 57 59 5B 5C 5E 60 62 64",                                                 // U+0040
    "66 68 69 6B 6D 6F 71 73 75 76 78 27 29 2A 2B02 2B03",                                             // U+0050
    "2B07 4A 4C 4D 4F 51 53 55 57 59 5B 5C 5E 60 62 64",                                               // U+0060
    "66 68 69 6B 6D 6F 71 73 75 76 78 2B09 2B0B 2B0D 2B0F u1D",                                        // U+0070
    "u1E u1F u20 u21 u22 u23 u24 u25 u26 u27 u28 u29 u2A u2B u2C u2D",                                 // U+0080
    "u2E u2F u30 u31 u32 u33 u34 u35 u36 u37 u38 u39 u3A u3B u3C u3D",                                 // U+0090
    "0802 2B10 34A6 34A7 34A8 34A9 2B11 34AA 2B12 34AB 4A+03 3305 34AC u83 34AD 2B13",                 // U+00A0
    "34AE 3304 3A 3C 2B14 34AF 34B0 34B1 2B15 38 64+03 3307 3712 3716 371A 2B16",                      // U+00B0
    "4A+0F 4A+0E 4A+12 4A+19 4A+13 4A+1A 4A51* 4D+1C 51+0F 51+0E 51+12 51+13 59+0F 59+0E 59+12 59+13", // U+00C0
    "4F+68 62+19 64+0F 64+0E 64+12 64+19 64+13 3309 64+21 6F+0F 6F+0E 6F+12 6F+13 76+0E 6D57* 6B6B*",  // U+00D0
    "4A+0F 4A+0E 4A+12 4A+19 4A+13 4A+1A 4A51* 4D+1C 51+0F 51+0E 51+12 51+13 59+0F 59+0E 59+12 59+13", // U+00E0
    "4F+68 62+19 64+0F 64+0E 64+12 64+19 64+13 330A 64+21 6F+0F 6F+0E 6F+12 6F+13 76+0E 6D57* 76+13",  // U+00F0
};
constexpr std::string_view kPunctuation[] = {
    "u84 u85 u88 u89 u8B u8C 2B35 2B36 2B37 2B38 2B39 2B3A 2B3B 2B3C 2B3D 2B3E",    // U+2010
    "34B3 34B4 34B5 34B6 34B7 34B8 34B9 u86 ? ? ? ? ? ? ? ?",                       // U+2020
    "34BA 34BB 2B3F 2B40 2B41 2B42 2B43 2B44 2B45 2B46 2B47 34BC 2B48 2B49 2B4A ?", // U+2030
};
constexpr std::string_view kChinesePunctuation[] = {
    "07 1B03 1D02 2B97 34D1 ? 2B98 ? 2B51 2B53 2B55 2B57 2B59 2B5B 2B5D 2B5F",        // U+3000
    "2B61 2B63 34CC 34CD 2B66 2B69 2B6B 2B6C 2B6D 2B6E 2B6F 2B70 u8D 2B71 2B72 2B73", // U+3010
};

consteval std::uint8_t hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<std::uint8_t>(c - '0');
    if (c >= 'A' && c <= 'F')
        return static_cast<std::uint8_t>(c - 'A' + 10);
    throw "not a hexadecimal digit";
}
consteval std::uint8_t hexByte(std::string_view digits) {
    return static_cast<std::uint8_t>(hexDigit(digits.at(0)) << 4 | hexDigit(digits.at(1)));
}

consteval TextCell parseCell(std::string_view text) {
    if (text == "?")
        return {};
    if (text == "-")
        return {TextCell::Kind::Ignored};
    if (text.front() == 'u')
        return {TextCell::Kind::Apart, 1, {hexByte(text.substr(1)), 0}};
    if (text.size() == 5 && text[2] == '+')
        return {TextCell::Kind::Accented, 1, {hexByte(text), 0}, hexByte(text.substr(3))};
    if (text.size() == 2)
        return {TextCell::Kind::Code, 1, {hexByte(text), 0}};
    const TextCell::Kind kind = text.size() == 5 && text[4] == '*' ? TextCell::Kind::TwoLetters : TextCell::Kind::Code;
    if (kind == TextCell::Kind::Code && text.size() != 4)
        throw "not a cell";
    return {kind, 2, {hexByte(text), hexByte(text.substr(2))}};
}

template <std::size_t Rows>
consteval std::array<TextCell, Rows * 16> parseRows(const std::string_view (&rows)[Rows]) {
    std::array<TextCell, Rows * 16> cells{};
    for (std::size_t row = 0; row < Rows; ++row) {
        std::string_view rest = rows[row];
        for (std::size_t column = 0; column < 16; ++column) {
            const std::size_t blank = rest.find(' ');
            if ((blank == std::string_view::npos) != (column == 15))
                throw "a row has 16 cells";
            cells[row * 16 + column] = parseCell(rest.substr(0, blank));
            rest = column == 15 ? std::string_view{} : rest.substr(blank + 1);
        }
    }
    return cells;
}

constexpr auto kLatinCells = parseRows(kLatin);
constexpr auto kPunctuationCells = parseRows(kPunctuation);
constexpr auto kChinesePunctuationCells = parseRows(kChinesePunctuation);

// Chinese characters run in code-point order through a two-byte counter; from each of these on it has skipped more.
struct Skip {
    char16_t from;
    std::uint8_t step;
};
constexpr Skip kSkips[] = {
    {0x4E01, 3}, {0x4E02, 1}, {0x4E04, 2}, {0x4E0A, 3}, {0x4E0B, 2}, {0x4E0C, 2}, {0x4E1A, 1}, {0x4E2E, 2}, {0x4E5A, 1},
    {0x4E5E, 2}, {0x4E8D, 3}, {0x4E95, 2}, {0x4EBB, 1}, {0x4EDE, 1}, {0x4EE4, 1}, {0x4F02, 2}, {0x4F12, 2}, {0x512B, 1},
    {0x516C, 2}, {0x516E, 2}, {0x52DF, 2}, {0x5342, 2}, {0x5355, 2}, {0x5371, 1}, {0x53F4, 1}, {0x540E, 2}, {0x547D, 1},
    {0x56DC, 3}, {0x5720, 2}, {0x5731, 1}, {0x591D, 1}, {0x5928, 1}, {0x592A, 1}, {0x5974, 1}, {0x5B79, 2}, {0x5B98, 1},
    {0x5BEC, 1}, {0x5DE7, 1}, {0x5E74, 1}, {0x65E6, 2}, {0x660F, 1}, {0x662E, 1}, {0x6709, 2}, {0x670A, 2}, {0x6729, 2},
    {0x682B, 3}, {0x6B64, 1}, {0x6C35, 2}, {0x6CE9, 1}, {0x706C, 2}, {0x727A, 2}, {0x7533, 1}, {0x7538, 1}, {0x76E4, 2},
    {0x793F, 2}, {0x795E, 2}, {0x796E, 1}, {0x79D9, 1}, {0x81EB, 1}, {0x81F4, 1}, {0x8CA2, 2}, {0x8CC8, 2}, {0x906A, 1},
    {0x91AC, 1}, {0x91D2, 2}, {0x9806, 1},
};
constexpr char16_t kFirstChinese = 0x4E00;
constexpr char16_t kLastChinese = 0x9FA5;

// kSkips with the steps added up.
constexpr auto kSkipSums = [] {
    std::array<Skip, std::size(kSkips)> sums{};
    std::uint8_t sum = 0;
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sum = static_cast<std::uint8_t>(sum + kSkips[i].step);
        sums[i] = {kSkips[i].from, sum};
    }
    return sums;
}();
static_assert(kSkipSums.size() == 66 && kSkipSums.back().step == 105);

TextCell chineseCell(char16_t unit) noexcept {
    const auto* const after = std::upper_bound(kSkipSums.begin(), kSkipSums.end(), unit,
                                               [](char16_t u, const Skip& skip) { return u < skip.from; });
    const unsigned skipped = after == kSkipSums.begin() ? 0U : (after - 1)->step;
    const unsigned position = static_cast<unsigned>(unit - kFirstChinese) + skipped;
    return {TextCell::Kind::Code,
            2,
            {static_cast<std::uint8_t>(0x9F + position / 254), static_cast<std::uint8_t>(0x02 + position % 254)}};
}

/// The parts of a key behind its codes.
class KeyTail {
public:
    void addAccent(std::size_t letter, std::uint8_t accent) noexcept {
        while (accents_ < letter)
            accent_[accents_++] = std::byte{kNoAccent};
        accent_[accents_++] = std::byte{accent};
    }
    void addApart(std::size_t letter, std::uint8_t code) noexcept {
        const std::size_t position = 0x8000 | (7 + 4 * letter);
        apart_[aparts_++] = static_cast<std::byte>(position >> 8);
        apart_[aparts_++] = static_cast<std::byte>(position & 0xFF);
        apart_[aparts_++] = std::byte{0x06};
        apart_[aparts_++] = std::byte{code};
    }
    void appendTo(KeyBytes& key) const {
        key.push_back(std::byte{0x01});
        key.insert(key.end(), accent_.begin(), accent_.begin() + static_cast<std::ptrdiff_t>(accents_));
        if (aparts_ != 0) {
            key.insert(key.end(), 3, std::byte{0x01});
            key.insert(key.end(), apart_.begin(), apart_.begin() + static_cast<std::ptrdiff_t>(aparts_));
        }
        key.push_back(std::byte{0x00});
    }

private:
    std::array<std::byte, 2 * kMaxUnits> accent_; // a unit is one or two letters
    std::array<std::byte, 4 * kMaxUnits> apart_;
    std::size_t accents_ = 0;
    std::size_t aparts_ = 0;
};

} // namespace

TextCell textCell(char16_t unit) noexcept {
    if (unit < 0x100)
        return kLatinCells[unit];
    if (unit >= kFirstChinese && unit <= kLastChinese)
        return chineseCell(unit);
    if (unit >= 0xFF01 && unit <= 0xFF5E) // full-width ASCII sorts as ASCII
        return kLatinCells[static_cast<std::size_t>(unit - 0xFEE0)];
    if (unit >= 0x2010 && unit <= 0x203F)
        return kPunctuationCells[static_cast<std::size_t>(unit - 0x2010)];
    if (unit >= 0x3000 && unit <= 0x301F)
        return kChinesePunctuationCells[static_cast<std::size_t>(unit - 0x3000)];
    return {};
}

std::optional<char16_t> appendTextKey(KeyBytes& key, std::u16string_view text, bool ascending, TextKeys known,
                                      TwoLetterPlaces places) {
    text = text.substr(0, kMaxUnits);
    text = text.substr(0, text.find_last_not_of(u' ') + 1);
    const std::size_t start = key.size();
    KeyTail tail;
    std::size_t letter = 0;
    for (const char16_t unit : text) {
        const TextCell cell =
            known == TextKeys::All || (known == TextKeys::AsciiOnly && unit < 0x80) ? textCell(unit) : TextCell{};
        switch (cell.kind) {
        case TextCell::Kind::None:
            key.resize(start);
            return unit;
        case TextCell::Kind::Ignored:
            continue;
        case TextCell::Kind::Apart:
            tail.addApart(letter, cell.code[0]);
            continue;
        case TextCell::Kind::Accented:
            tail.addAccent(letter, cell.accent);
            break;
        case TextCell::Kind::Code:
        case TextCell::Kind::TwoLetters:
            break;
        }
        for (std::size_t i = 0; i < cell.size; ++i)
            key.push_back(std::byte{cell.code[i]});
        letter += cell.kind == TextCell::Kind::TwoLetters ? static_cast<std::size_t>(places) : 1;
    }
    tail.appendTo(key);
    if (!ascending) {
        for (std::byte& b : std::span(key).subspan(start))
            b = ~b;
        key.push_back(std::byte{0x00});
    }
    return std::nullopt;
}

} // namespace kelb::jet
