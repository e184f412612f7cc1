#include "rewrite/ClsSmart.h"

#include "platform/code_page.h"
#include "platform/text.h"
#include "rewrite/pubProg.h"
#include "rewrite/tag_spans.h"

namespace kelb::rewrite {

namespace {

constexpr std::size_t kAddressReach = 330; ///< units behind the start of an address that the scan covers

bool endsAddress(char16_t unit) {
    return unit == u' ' || unit == u'"' || platform::isDoubleByte(unit);
}

} // namespace

std::u16string ClsSmart::killURLText(std::u16string_view text) {
    // Upper case only: the texts that reach this were upper-cased before. Kept.
    const std::size_t start = text.find(u"HTTP://");
    if (start == text.npos) {
        return std::u16string(text);
    }
    // Not the first stop decides but the last within reach, so words behind the address often go with it. Kept.
    const std::size_t last = start + kAddressReach;
    if (last >= text.size()) {
        return std::u16string(text.substr(0, start));
    }
    for (std::size_t at = last; at > start; --at) {
        if (endsAddress(text[at])) {
            return std::u16string(text.substr(0, start)).append(text.substr(at));
        }
    }
    return std::u16string(text);
}

bool ClsSmart::killTag(std::u16string& text) {
    std::u16string cleaned = withoutTags(platform::left(text, kTagTextLimit));
    platform::replaceAllIn(cleaned, u"&nbsp;", u"");
    platform::replaceAllIn(cleaned, u"&QUOT;", u"\"");
    platform::replaceAllIn(cleaned, u"&quot;", u"\"");
    text = std::move(cleaned);
    return true;
}

std::u16string ClsSmart::killMoreBR(std::u16string_view text) {
    constexpr std::u16string_view kFour = u"<br><br><br><br>";
    std::u16string cleaned(text);
    // Each round shortens every long run by a quarter, so the rounds are few.
    do {
        platform::replaceAllIn(cleaned, u"<br> <br>", u"<br><br>");
        platform::replaceAllIn(cleaned, kFour, u"<br><br><br>");
    } while (cleaned.find(kFour) != cleaned.npos);
    return cleaned;
}

std::u16string ClsSmart::cutTitle(std::u16string_view text, std::u16string_view separator) {
    const std::size_t at = text.find(separator);
    return std::u16string(at == text.npos ? text : text.substr(at + separator.size()));
}

} // namespace kelb::rewrite
