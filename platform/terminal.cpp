#include "platform/terminal.h"

#include <algorithm>
#include <array>

namespace kelb::platform {
namespace {

struct Range {
    char32_t first, last;
};

/// Characters of two columns: East Asian Width W and F of the Unicode standard, runs joined over unassigned gaps.
constexpr std::array<Range, 28> kWide{{
    {0x1100, 0x115F}, {0x231A, 0x231B}, {0x2329, 0x232A},   {0x23E9, 0x23EC},   {0x25FD, 0x25FE}, {0x2614, 0x2615},
    {0x2648, 0x2653}, {0x267F, 0x267F}, {0x26BD, 0x26BE},   {0x26D4, 0x26D4},   {0x2705, 0x2705}, {0x274C, 0x274C},
    {0x2753, 0x2757}, {0x2795, 0x2797}, {0x2B1B, 0x2B1C},   {0x2E80, 0x303E},   {0x3041, 0x33FF}, {0x3400, 0x4DBF},
    {0x4E00, 0xA4CF}, {0xA960, 0xA97C}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19}, {0xFE30, 0xFE6F},
    {0xFF01, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD},
}};

/// Characters of no column: combining marks, joiners, variation selectors.
constexpr std::array<Range, 6> kNone{{
    {0x0300, 0x036F},
    {0x200B, 0x200F},
    {0x20D0, 0x20F0},
    {0x302A, 0x302D},
    {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF},
}};

template <std::size_t Count>
bool contains(const std::array<Range, Count>& ranges, char32_t character) {
    const auto range = std::lower_bound(ranges.begin(), ranges.end(), character,
                                        [](const Range& r, char32_t wanted) { return r.last < wanted; });
    return range != ranges.end() && range->first <= character;
}

std::size_t columnsOf(char32_t character) {
    if (character < 0x0300) {
        return 1;
    }
    return contains(kNone, character) ? 0 : contains(kWide, character) ? 2 : 1;
}

/// The character at `at`, which moves behind it.
char32_t nextCharacter(std::u16string_view text, std::size_t& at) {
    const char16_t unit = text[at++];
    if (unit >= 0xD800 && unit < 0xDC00 && at < text.size() && text[at] >= 0xDC00 && text[at] < 0xE000) {
        return 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (char32_t{text[at++]} - 0xDC00);
    }
    return unit;
}

} // namespace

std::size_t displayColumns(std::u16string_view text) noexcept {
    std::size_t columns = 0;
    for (std::size_t at = 0; at < text.size();) {
        columns += columnsOf(nextCharacter(text, at));
    }
    return columns;
}

std::u16string_view cutToColumns(std::u16string_view text, std::size_t columns) noexcept {
    std::size_t used = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t begin = at;
        used += columnsOf(nextCharacter(text, at));
        if (used > columns) {
            return text.substr(0, begin);
        }
    }
    return text;
}

} // namespace kelb::platform
