#include "jobs/published_article.h"

#include "platform/text.h"

#include <algorithm>

namespace kelb::jobs {
namespace {

bool isLetter(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

/// What a reader of HTML takes for a tag: "<" with a letter, "/" or "!" behind it. "3<5" is none.
bool hasTag(std::u16string_view text) noexcept {
    for (std::size_t at = text.find(u'<'); at != text.npos; at = text.find(u'<', at + 1)) {
        const char16_t next = at + 1 < text.size() ? text[at + 1] : u'\0';
        if (isLetter(next) || next == u'/' || next == u'!') {
            return true;
        }
    }
    return false;
}

} // namespace

std::u16string publishedBody(std::u16string_view body) {
    if (hasTag(body)) {
        return std::u16string(body);
    }
    // Characters such as "&nbsp;" are left to the reader of HTML, to whom the site leaves them, too.
    std::u16string html = platform::replaceAll(body, u"<", u"&lt;");
    html = platform::replaceAll(html, u"\r\n", u"\n");
    return platform::replaceAll(html, u"\n", u"<br>");
}

} // namespace kelb::jobs
