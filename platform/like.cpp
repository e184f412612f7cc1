#include "platform/like.h"

#include "platform/letter_case.h"

namespace kelb::platform {

namespace {

struct ExactUnits {
    static constexpr char16_t kAnyRun = u'*', kAnyUnit = u'?';
    static constexpr bool kHasDigit = true;
    static bool equal(char16_t a, char16_t b) noexcept { return a == b; }
    static std::size_t find(std::u16string_view text, char16_t unit, std::size_t from) noexcept {
        return text.find(unit, from);
    }
    static bool within(char16_t unit, char16_t low, char16_t high) noexcept { return low <= unit && unit <= high; }
};

struct SqlUnits {
    static constexpr char16_t kAnyRun = u'%', kAnyUnit = u'_';
    static constexpr bool kHasDigit = false;
    static bool equal(char16_t a, char16_t b) noexcept { return a == b || upper(a) == upper(b); }
    static std::size_t find(std::u16string_view text, char16_t unit, std::size_t from) noexcept {
        return findNoCase(text, {&unit, 1}, from);
    }
    static bool within(char16_t unit, char16_t low, char16_t high) noexcept {
        return ExactUnits::within(unit, low, high) || ExactUnits::within(upper(unit), low, high) ||
               ExactUnits::within(lower(unit), low, high);
    }
};

/// The set that begins at pattern[at] == '['. The first "]" ends it, so that no set holds a "]"; "[!]" is the unit "!",
/// and "-" stands for itself at either end. A range that runs backwards holds nothing.
struct Set {
    std::u16string_view members; ///< without brackets and "!"
    bool negated;
    std::size_t end; ///< behind the "]", npos when it is missing
};

Set readSet(std::u16string_view pattern, std::size_t at) noexcept {
    const std::size_t close = pattern.find(u']', at + 1);
    if (close == pattern.npos) {
        return {{}, false, close};
    }
    const auto members = pattern.substr(at + 1, close - at - 1);
    const bool negated = members.size() > 1 && members.front() == u'!';
    return {negated ? members.substr(1) : members, negated, close + 1};
}

template <class Units>
bool setHolds(const Set& set, char16_t unit) noexcept {
    bool held = false;
    for (std::size_t i = 0; i < set.members.size() && !held; ++i) {
        const char16_t low = set.members[i];
        if (i + 2 < set.members.size() && set.members[i + 1] == u'-') {
            held = Units::within(unit, low, set.members[i + 2]);
            i += 2;
        } else {
            held = Units::equal(unit, low);
        }
    }
    return held != set.negated;
}

/// Whether the pattern's element at `at` takes `unit`; moves `at` behind it if so. Not for any-run and the empty set.
template <class Units>
bool takes(std::u16string_view pattern, std::size_t& at, char16_t unit) noexcept {
    const char16_t element = pattern[at];
    bool taken = false;
    std::size_t next = at + 1;
    if (element == Units::kAnyUnit) {
        taken = true;
    } else if (Units::kHasDigit && element == u'#') {
        taken = unit >= u'0' && unit <= u'9';
    } else if (element == u'[') {
        const Set set = readSet(pattern, at);
        taken = set.end != pattern.npos && setHolds<Units>(set, unit);
        next = set.end;
    } else {
        taken = Units::equal(unit, element);
    }
    if (taken) {
        at = next;
    }
    return taken;
}

/// Elements that take nothing: "[]" stands for the empty text, as in the language these patterns come from.
std::size_t skipEmptySets(std::u16string_view pattern, std::size_t at) noexcept {
    while (pattern.substr(at, 2) == u"[]") {
        at += 2;
    }
    return at;
}

/// First position >= `from` where what stands behind an any-run can begin: straight to the next such unit when it is an
/// ordinary one. npos when there is none.
template <class Units>
std::size_t nextStart(std::u16string_view text, std::u16string_view pattern, std::size_t at,
                      std::size_t from) noexcept {
    at = skipEmptySets(pattern, at);
    if (from > text.size()) {
        return text.npos;
    }
    if (at == pattern.size()) {
        return from;
    }
    const char16_t element = pattern[at];
    const bool special = element == Units::kAnyRun || element == Units::kAnyUnit || element == u'[' ||
                         (Units::kHasDigit && element == u'#');
    return special ? from : Units::find(text, element, from);
}

/// Walks text and pattern together. At a mismatch only the last any-run has to grow: what stands before it has matched
/// as early as it can.
template <class Units>
bool matches(std::u16string_view text, std::u16string_view pattern) noexcept {
    constexpr std::size_t none = std::u16string_view::npos;
    std::size_t inText = 0, inPattern = 0;
    std::size_t runPattern = none, runText = 0; // behind the last any-run; where its run ends now
    for (;;) {
        if (runText == none && runPattern != none) {
            return false;
        }
        inPattern = skipEmptySets(pattern, inPattern);
        if (inPattern < pattern.size() && pattern[inPattern] == Units::kAnyRun) {
            runPattern = ++inPattern;
            if (inPattern == pattern.size()) {
                return true;
            }
            runText = inText = nextStart<Units>(text, pattern, runPattern, inText);
        } else if (inText == text.size()) {
            return inPattern == pattern.size();
        } else if (inPattern < pattern.size() && takes<Units>(pattern, inPattern, text[inText])) {
            ++inText;
        } else if (runPattern != none) {
            runText = inText = nextStart<Units>(text, pattern, runPattern, runText + 1);
            inPattern = runPattern;
        } else {
            return false;
        }
    }
}

} // namespace

bool matchesPattern(std::u16string_view text, std::u16string_view pattern) noexcept {
    return matches<ExactUnits>(text, pattern);
}

bool matchesSqlLike(std::u16string_view text, std::u16string_view pattern) noexcept {
    return matches<SqlUnits>(text, pattern);
}

} // namespace kelb::platform
