#include "rewrite/ClsSmart.h"

#include "platform/letter_case.h"
#include "platform/text.h"
#include "rewrite/wording_rules.h"

#include <algorithm>

namespace kelb::rewrite {

namespace {

constexpr std::u16string_view kHelp = u"求助";
constexpr std::u16string_view kHelpInBrackets = u"[求助]";

/// What a title loses: bars, hyphens, punctuation, blanks and line breaks.
constexpr bool isDroppedFromTitle(char16_t unit) {
    return std::u16string_view(u"|-，,。？?！! \u3000\r\n").find(unit) != std::u16string_view::npos;
}

void replaceFirst(std::u16string& text, std::u16string_view wanted, std::u16string_view with) {
    if (const std::size_t at = text.find(wanted); at != text.npos) {
        text.replace(at, wanted.size(), with);
    }
}

void replaceAllNoCase(std::u16string& text, std::u16string_view wanted, std::u16string_view with) {
    std::size_t found = platform::findNoCase(text, wanted);
    if (found == text.npos) {
        return;
    }
    std::u16string replaced;
    std::size_t start = 0;
    for (; found != text.npos; found = platform::findNoCase(text, wanted, start)) {
        replaced.append(text, start, found - start).append(with);
        start = found + wanted.size();
    }
    text = replaced.append(text, start);
}

void apply(const WordingRule& rule, std::u16string_view brand, std::u16string& text) {
    if (rule.letterCase == LetterCase::Ignored) {
        replaceAllNoCase(text, rule.find, rule.with);
    } else if (text.find(rule.find) != text.npos) {
        const std::u16string with = platform::replaceAll(rule.with, kBrandPlace, brand);
        if (rule.occurrences == Occurrences::First) {
            replaceFirst(text, rule.find, with);
        } else {
            platform::replaceAllIn(text, rule.find, with);
        }
    }
}

} // namespace

std::u16string ClsSmart::smartReplaceTitle(std::u16string_view title) {
    std::u16string rewritten;
    rewritten.reserve(title.size());
    std::ranges::remove_copy_if(title, std::back_inserter(rewritten), isDroppedFromTitle);
    if (rewritten.find(kHelpInBrackets) != rewritten.npos) {
        platform::replaceAllIn(rewritten, kHelpInBrackets, u"");
        rewritten += u"，求详解？";
    }
    platform::replaceAllIn(rewritten, kHelp, u"请教");
    return rewritten;
}

std::u16string ClsSmart::smartReplaceContent(std::u16string_view text, std::u16string_view /*brand*/) {
    constexpr std::u16string_view kAskExperts = u"请教大虾";
    return platform::replaceAll(platform::replaceAll(text, kHelpInBrackets, kAskExperts), kHelp, kAskExperts);
}

std::u16string ClsSmart::smartReplaceNormal(std::u16string_view text, std::u16string_view brand) {
    std::u16string rewritten = platform::upperCase(text);
    killTag(rewritten);
    rewritten = replaceTVCode(rewritten, brand);
    for (const WordingRule& rule : kWordingRules) {
        apply(rule, brand, rewritten);
    }
    return rewritten;
}

} // namespace kelb::rewrite
