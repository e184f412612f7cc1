#include "platform/letter_case.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kelb::platform {

namespace {

/// Units first, first + step … last move by delta.
struct CaseRun {
    std::uint16_t first, last;
    int step, delta;
};

#include "platform/letter_case_table.inc"

constexpr std::size_t kPageSize = 256;
constexpr std::size_t kPages = 0x10000 / kPageSize;

template <std::size_t N>
constexpr std::size_t countUsedPages(const std::array<CaseRun, N>& runs) {
    std::array<bool, kPages> used{};
    for (const CaseRun& run : runs) {
        for (std::size_t page = run.first / kPageSize; page <= run.last / kPageSize; ++page) {
            used[page] = true;
        }
    }
    return static_cast<std::size_t>(std::count(used.begin(), used.end(), true));
}

/// Distance of every unit, in pages of 256; all pages without a letter share page 0.
template <std::size_t UsedPages>
struct CaseTable {
    std::array<std::uint8_t, kPages> pageOf{};
    std::array<std::array<std::uint16_t, kPageSize>, UsedPages + 1> distance{};

    constexpr char16_t map(char16_t unit) const noexcept {
        return static_cast<char16_t>(unit + distance[pageOf[unit / kPageSize]][unit % kPageSize]);
    }
};

template <std::size_t UsedPages, std::size_t N>
constexpr CaseTable<UsedPages> makeTable(const std::array<CaseRun, N>& runs) {
    CaseTable<UsedPages> table;
    std::uint8_t pages = 0;
    for (const CaseRun& run : runs) {
        for (unsigned unit = run.first; unit <= run.last; unit += static_cast<unsigned>(run.step)) {
            std::uint8_t& page = table.pageOf[unit / kPageSize];
            if (page == 0) {
                page = ++pages;
            }
            table.distance[page][unit % kPageSize] = static_cast<std::uint16_t>(run.delta);
        }
    }
    return table;
}

constexpr auto kUpper = makeTable<countUsedPages(kUpperRuns)>(kUpperRuns);
constexpr auto kLower = makeTable<countUsedPages(kLowerRuns)>(kLowerRuns);

bool equalRange(const char16_t* a, const char16_t* b, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        if (a[i] != b[i] && kUpper.map(a[i]) != kUpper.map(b[i])) {
            return false;
        }
    }
    return true;
}

/// Upper-case units that more than one other unit becomes (ſ and s become S, ı and i become I), so that a search for
/// one of them has to ask the table about every unit.
constexpr std::size_t kCrowdedLimit = 64;
struct CrowdedUppers {
    std::array<char16_t, kCrowdedLimit> units{};
    std::size_t count = 0;
};

constexpr CrowdedUppers findCrowdedUppers() {
    CrowdedUppers crowded;
    for (const CaseRun& run : kUpperRuns) {
        for (unsigned unit = run.first; unit <= run.last; unit += static_cast<unsigned>(run.step)) {
            const char16_t mapped = kUpper.map(static_cast<char16_t>(unit));
            if (kLower.map(mapped) != unit) {
                crowded.units[crowded.count++] = mapped;
            }
        }
    }
    return crowded;
}

constexpr CrowdedUppers kCrowded = findCrowdedUppers();

/// The units that equal one unit without regard to case.
struct Twins {
    char16_t upper, lower;
    bool more; ///< there are others; `upper` is what all of them map to
};

Twins twinsOf(char16_t unit) noexcept {
    const char16_t mapped = kUpper.map(unit);
    const char16_t back = kLower.map(mapped); // no way back from İ and the Kelvin sign: i and k become I and K
    const auto end = kCrowded.units.begin() + kCrowded.count;
    return {mapped, kUpper.map(back) == mapped ? back : mapped, std::find(kCrowded.units.begin(), end, mapped) != end};
}

/// First unit in [at, end) that equals one of the twins, else end.
const char16_t* findTwin(const char16_t* at, const char16_t* end, const Twins& twins) noexcept {
    if (twins.more) {
        return std::find_if(at, end, [&](char16_t unit) { return kUpper.map(unit) == twins.upper; });
    }
#ifdef __SSE2__
    const __m128i uppers = _mm_set1_epi16(static_cast<short>(twins.upper));
    const __m128i lowers = _mm_set1_epi16(static_cast<short>(twins.lower));
    for (; end - at >= 8; at += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i hits = _mm_or_si128(_mm_cmpeq_epi16(units, uppers), _mm_cmpeq_epi16(units, lowers));
        if (const int mask = _mm_movemask_epi8(hits); mask != 0) {
            return at + std::countr_zero(static_cast<unsigned>(mask)) / 2;
        }
    }
#endif
    return std::find_if(at, end, [&](char16_t unit) { return unit == twins.upper || unit == twins.lower; });
}

} // namespace

char16_t upper(char16_t unit) noexcept {
    return kUpper.map(unit);
}

char16_t lower(char16_t unit) noexcept {
    return kLower.map(unit);
}

std::u16string upperCase(std::u16string_view text) {
    std::u16string mapped(text);
    std::transform(mapped.begin(), mapped.end(), mapped.begin(), upper);
    return mapped;
}

std::u16string lowerCase(std::u16string_view text) {
    std::u16string mapped(text);
    std::transform(mapped.begin(), mapped.end(), mapped.begin(), lower);
    return mapped;
}

bool equalNoCase(std::u16string_view a, std::u16string_view b) noexcept {
    return a.size() == b.size() && equalRange(a.data(), b.data(), a.size());
}

int compareNoCase(std::u16string_view a, std::u16string_view b) noexcept {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] != b[i]) {
            const int difference = kUpper.map(a[i]) - kUpper.map(b[i]);
            if (difference != 0) {
                return difference;
            }
        }
    }
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

std::size_t findNoCase(std::u16string_view text, std::u16string_view wanted, std::size_t from) noexcept {
    if (from > text.size() || wanted.size() > text.size() - from) {
        return text.npos;
    }
    if (wanted.empty()) {
        return from;
    }
    const Twins twins = twinsOf(wanted.front());
    const char16_t* const begin = text.data();
    const char16_t* const end = begin + (text.size() - wanted.size() + 1);
    for (const char16_t* at = findTwin(begin + from, end, twins); at != end; at = findTwin(at + 1, end, twins)) {
        if (equalRange(at + 1, wanted.data() + 1, wanted.size() - 1)) {
            return static_cast<std::size_t>(at - begin);
        }
    }
    return text.npos;
}

std::size_t NoCaseHash::operator()(std::u16string_view text) const noexcept {
    std::uint64_t hash = 0xCBF29CE484222325U; // FNV-1a over the upper-cased units
    for (const char16_t unit : text) {
        hash = (hash ^ kUpper.map(unit)) * 0x100000001B3U;
    }
    return static_cast<std::size_t>(hash ^ hash >> 32U);
}

} // namespace kelb::platform
