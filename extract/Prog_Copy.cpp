#include "extract/Prog_Copy.h"

#include "extract/list_stripper.h"
#include "extract/text_pieces.h"
#include "rewrite/tag_spans.h"

namespace kelb::extract::Prog_Copy {

std::u16string CopyRemoveHTML(std::u16string_view text) {
    return rewrite::withoutTags(text);
}

std::u16string CopyRemoveHTML1(std::u16string& text) {
    StrippedText stripped = stripListedTags(text, ImageTags::Listed);
    text.erase(0, stripped.remainder);
    return std::move(stripped.text);
}

std::size_t CopyRemoveHTML2(std::u16string_view html, std::vector<std::u16string>& outPieces) {
    outPieces = textPieces(html);
    return outPieces.size();
}

} // namespace kelb::extract::Prog_Copy
