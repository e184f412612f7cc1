#include "extract/text_pieces.h"

#include "extract/tag_list.h"
#include "extract/tag_reader.h"
#include "platform/letter_case.h"
#include "platform/text.h"

#include <algorithm>
#include <array>

namespace kelb::extract {

namespace {

constexpr std::array<std::u16string_view, 14> kInlineTags{
    u"B", u"STRONG", u"I", u"EM", u"U", u"S", u"STRIKE", u"FONT", u"SPAN", u"SUB", u"SUP", u"SMALL", u"BIG", u"TT"};

bool isInline(std::u16string_view name) {
    return std::ranges::any_of(kInlineTags,
                               [name](std::u16string_view tag) { return platform::equalNoCase(tag, name); });
}

/// <br>, <BR/>, <br clear="all">, </br> …
bool isLineBreak(std::u16string_view name) {
    return platform::equalNoCase(name.substr(0, name.find_first_of(u"\t/")), u"br");
}

void addPiece(std::vector<std::u16string>& pieces, std::u16string& piece) {
    platform::replaceAllIn(piece, u"&nbsp;", u" ");
    std::ranges::replace_if(
        piece, [](char16_t unit) { return unit == u'\r' || unit == u'\n' || unit == u'\t'; }, u' ');
    const std::u16string_view trimmed = platform::trimBlanks(piece);
    if (!trimmed.empty()) {
        pieces.emplace_back(trimmed);
    }
    piece.clear();
}

} // namespace

std::vector<std::u16string> textPieces(std::u16string_view html) {
    std::vector<std::u16string> pieces;
    std::u16string piece;
    TagReader tags(html);
    std::size_t from = 0;
    while (const auto tag = tags.next(from)) {
        if (tag->close == html.npos) {
            break;
        }
        const bool lineBreak = isLineBreak(tag->name);
        if (lineBreak || isListedTag(tag->name, ImageTags::Listed)) {
            piece.append(html.substr(from, tag->open - from));
            if (lineBreak || !isInline(tag->name)) {
                addPiece(pieces, piece);
            }
            from = tags.removalEnd(*tag);
        } else {
            piece.append(html.substr(from, tag->open + 1 - from));
            from = tag->open + 1;
        }
    }
    piece.append(html.substr(from));
    addPiece(pieces, piece);
    return pieces;
}

} // namespace kelb::extract
