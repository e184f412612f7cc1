#include "extract/Prog_Form.h"

#include "platform/code_page.h"
#include "platform/letter_case.h"

#include <algorithm>

namespace kelb::extract::Prog_Form {
namespace {

constexpr std::u16string_view kFileEndings[] = {u".rar", u".zip", u".pdf", u".bin"};
constexpr std::size_t kShortestCode = 4;

bool isOfCode(char16_t unit) {
    return unit != u'(' && unit != u')' && !platform::isDoubleByte(unit); // full-width brackets are double-byte
}

} // namespace

std::u16string extModelCode(std::u16string_view text) {
    const auto begin = std::find_if(text.begin(), text.end(), isOfCode);
    std::u16string code(begin, std::find_if_not(begin, text.end(), isOfCode));
    for (const std::u16string_view ending : kFileEndings) {
        std::size_t at = 0;
        while ((at = platform::findNoCase(code, ending, at)) != code.npos) {
            code.erase(at, ending.size());
        }
    }
    return code.size() < kShortestCode ? std::u16string() : code;
}

} // namespace kelb::extract::Prog_Form
