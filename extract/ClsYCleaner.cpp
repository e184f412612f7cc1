#include "extract/ClsYCleaner.h"

#include "extract/Prog_Copy.h"
#include "extract/list_stripper.h"

namespace kelb::extract {

std::u16string ClsYCleaner::RemoveHTML(std::u16string_view text) {
    return Prog_Copy::CopyRemoveHTML(text);
}

std::u16string ClsYCleaner::RemoveHTML1(std::u16string& text) {
    StrippedText stripped = stripListedTags(text, ImageTags::NotListed);
    text.erase(0, stripped.remainder);
    return std::move(stripped.text);
}

} // namespace kelb::extract
