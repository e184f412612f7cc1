#include "extract/tag_reader.h"

#include "extract/tag_list.h"
#include "platform/letter_case.h"

namespace kelb::extract {

namespace {

/// What stands between the "<" and the first blank, CR or LF. No list has a name with a "<" in it; not reading on
/// there keeps a page of nothing but "<" from being walked once for each of them.
std::u16string_view readName(std::u16string_view inside) {
    const std::size_t end = inside.find_first_of(u" \r\n<");
    return end != inside.npos && inside[end] == u'<' ? std::u16string_view() : inside.substr(0, end);
}

std::size_t findClosingTag(std::u16string_view html, std::u16string_view name, std::size_t from) {
    for (std::size_t at = html.find(u"</", from); at != html.npos; at = html.find(u"</", at + 2)) {
        if (platform::equalNoCase(html.substr(at + 2, name.size()), name)) {
            return at;
        }
    }
    return html.npos;
}

} // namespace

std::optional<Tag> TagReader::next(std::size_t from) {
    Tag tag;
    tag.open = html_.find(u'<', from);
    if (tag.open == html_.npos) {
        return std::nullopt;
    }
    if (close_ <= tag.open) {
        close_ = html_.find(u'>', tag.open);
    }
    tag.close = close_;
    if (tag.close != html_.npos) {
        tag.name = readName(html_.substr(tag.open + 1, tag.close - tag.open - 1));
        tag.closing = tag.name.starts_with(u'/');
        tag.name.remove_prefix(tag.closing ? 1 : 0);
    }
    return tag;
}

std::size_t TagReader::removalEnd(const Tag& tag) const {
    if (tag.closing || !isBlockTag(tag.name)) {
        return tag.close + 1;
    }
    const std::size_t closing = findClosingTag(html_, tag.name, tag.open);
    const std::size_t close = closing == html_.npos ? html_.npos : html_.find(u'>', closing);
    return close == html_.npos ? html_.size() : close + 1;
}

} // namespace kelb::extract
