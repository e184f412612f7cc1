#include "rewrite/pubProg.h"

#include "platform/text.h"
#include "rewrite/tag_spans.h"

namespace kelb::rewrite::pubProg {

std::u16string killTagStr(std::u16string_view text) {
    std::u16string cleaned = withoutTags(platform::left(text, kTagTextLimit));
    platform::replaceAllIn(cleaned, u"&nbsp;", u"");
    return cleaned;
}

} // namespace kelb::rewrite::pubProg
