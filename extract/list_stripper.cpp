#include "extract/list_stripper.h"

#include "extract/tag_reader.h"
#include "platform/letter_case.h"

namespace kelb::extract {

StrippedText stripListedTags(std::u16string_view html, ImageTags images) {
    TagReader tags(html);
    std::u16string text;
    text.reserve(html.size());
    std::size_t from = 0;
    while (const auto tag = tags.next(from)) {
        if (tag->close == html.npos) {
            text.append(html.substr(from));
            return {std::move(text), html.size()};
        }
        if (isListedTag(tag->name, images)) {
            // The separator stands before the text in front of the tag, not after it, and so even splits a kept tag
            // straight before a removed one ("<br />x</td>" becomes "< br />x"). Kept.
            text.append(platform::equalNoCase(tag->name, u"p") ? std::u16string_view(u"\r\n") : u" ");
            text.append(html.substr(from, tag->open - from));
            from = tags.removalEnd(*tag);
        } else {
            text.append(html.substr(from, tag->open + 1 - from));
            from = tag->open + 1;
        }
    }
    text.append(html.substr(from));
    return {std::move(text), from};
}

} // namespace kelb::extract
