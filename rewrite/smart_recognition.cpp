#include "rewrite/ClsSmart.h"

#include "platform/letter_case.h"
#include "platform/text.h"
#include "rewrite/brand_list.h"
#include "rewrite/chip_prefix_table.h"
#include "rewrite/problem_table.h"

#include <algorithm>

namespace kelb::rewrite {

namespace {

constexpr std::size_t kShortestCode = 5;
constexpr std::size_t kLongestCode = 14;
constexpr std::size_t kLookBehind = 8;      ///< units before a set code in which its brand may stand
constexpr std::size_t kNearMaker = 5;       ///< a maker's name this close to the prefix is part of the same word
constexpr std::size_t kLongestMention = 12; ///< a segment up to this length only mentions a fault

bool contains(std::u16string_view text, std::u16string_view wanted) {
    return text.find(wanted) != text.npos;
}

constexpr bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}
bool isLetter(char16_t unit) {
    const char16_t lower = platform::lower(unit);
    return lower >= u'a' && lower <= u'z';
}
bool isLetterOrDigit(char16_t unit) {
    return isDigit(unit) || isLetter(unit);
}
bool isCodeUnit(char16_t unit) {
    return unit == u'-' || isLetterOrDigit(unit);
}

bool isSetCode(std::u16string_view candidate) {
    const auto twoDigits = [](char16_t a, char16_t b) { return isDigit(a) && isDigit(b); };
    return std::ranges::adjacent_find(candidate, twoDigits) != candidate.end() &&
           std::ranges::any_of(candidate, isLetter) && !platform::equalNoCase(candidate.substr(0, 2), u"qq");
}

/// The first set code that ends where the run of code units [begin, end) does; "" when there is none. A longer run
/// is not refused: its last 14 units are a candidate, and so is every shorter rest. Kept.
std::u16string_view setCodeInRun(std::u16string_view text, std::size_t begin, std::size_t end) {
    std::size_t at = std::max(begin, end - std::min(end, kLongestCode));
    for (; at + kShortestCode <= end; ++at) {
        const std::u16string_view candidate = text.substr(at, end - at);
        if (isLetterOrDigit(candidate.front()) && isSetCode(candidate)) {
            return candidate;
        }
    }
    return {};
}

bool namesChip(const ChipPrefix& row, std::u16string_view upperCode) {
    const std::size_t at = upperCode.find(row.prefix);
    if (row.prefix.empty() || at == upperCode.npos) {
        return false;
    }
    // The second unit behind the prefix's start, also where the prefix is longer than one unit. Kept.
    if (at + 2 < upperCode.size() && upperCode[at + 2] == u'L') {
        return false;
    }
    if (at > 0 && isLetterOrDigit(upperCode[at - 1])) {
        return false;
    }
    const std::size_t maker = upperCode.find(row.maker);
    return maker == upperCode.npos || std::max(at, maker) - std::min(at, maker) > kNearMaker;
}

/// The post with "|" for all that parts its segments, and without the bars and hyphens that it had.
std::u16string withBars(std::u16string_view text) {
    constexpr std::u16string_view kSeparators = u"，,。？?！! \u3000:：（）()";
    std::u16string barred;
    barred.reserve(text.size());
    for (const char16_t unit : text) {
        if (unit == u'|' || unit == u'-') {
            continue; // also from between CR and LF, which then part segments
        }
        if (unit == u'\n' && !barred.empty() && barred.back() == u'\r') {
            barred.back() = u'|';
        } else {
            barred.push_back(contains(kSeparators, {&unit, 1}) ? u'|' : unit);
        }
    }
    return barred;
}

bool namesFault(std::u16string_view segment) {
    for (const Problem& problem : kProblems) {
        if (problem.keyword.empty()) {
            return false;
        }
        if (contains(segment, problem.keyword)) {
            return true;
        }
    }
    return false;
}

} // namespace

std::u16string ClsSmart::getPinPai(std::u16string_view text) {
    const auto found =
        std::ranges::find_if(kBrands, [text](std::u16string_view brand) { return contains(text, brand); });
    return found == kBrands.end() ? std::u16string() : std::u16string(*found);
}

bool ClsSmart::blnChangHong(std::u16string_view text) {
    return contains(text, u"长虹") || contains(text, u"CH");
}

std::u16string ClsSmart::searchTVCode(std::u16string_view text) {
    // A code needs a unit behind the one that ends it, so the last unit of the text is never that end. Kept.
    for (std::size_t begin = 0, end = 0; end + 1 < text.size(); ++end) {
        if (isCodeUnit(text[end])) {
            continue;
        }
        if (const std::u16string_view code = setCodeInRun(text, begin, end); !code.empty()) {
            return std::u16string(code);
        }
        begin = end + 1;
    }
    return {};
}

std::u16string ClsSmart::searchICCode(std::u16string_view code) {
    const std::u16string upper = platform::upperCase(code);
    const auto found =
        std::ranges::find_if(kChipPrefixes, [&upper](const ChipPrefix& row) { return namesChip(row, upper); });
    return found == kChipPrefixes.end() ? std::u16string() : std::u16string(found->maker);
}

std::u16string ClsSmart::replaceTVCode(std::u16string_view text, std::u16string_view brand) {
    std::u16string marked = platform::upperCase(text);
    const std::u16string code = searchTVCode(marked);
    if (code.empty()) {
        return marked;
    }
    const std::size_t at = marked.find(code);
    // Near its start the text's first units serve, which may hold the code itself. Kept.
    const std::u16string_view before =
        std::u16string_view(marked).substr(at >= kLookBehind ? at - kLookBehind : 0, kLookBehind);
    // An empty brand is found everywhere.
    const bool hasBrand =
        contains(before, brand) || platform::findNoCase(before, u"TCL") != before.npos || contains(before, u"王牌");
    std::u16string with;
    if (!hasBrand) {
        with.append(brand).append(u"电视");
    }
    with += code;
    if (const std::u16string maker = searchICCode(code); !maker.empty()) {
        with.append(u"（").append(maker).append(u"机芯）");
    }
    return marked.replace(at, code.size(), with);
}

std::u16string ClsSmart::smartGetProblem(std::u16string_view text) {
    const std::u16string barred = withBars(text);
    for (const std::u16string_view segment : platform::split(barred, u"|")) {
        // A short segment that names a fault is passed over; of a long one the whole is the result. Kept.
        if (segment.size() > kLongestMention && namesFault(segment)) {
            return std::u16string(segment);
        }
    }
    return {};
}

} // namespace kelb::rewrite
