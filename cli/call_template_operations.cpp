#include "cli/call_operations.h"
#include "extract/template_model.h"

namespace kelb::cli {

std::vector<CallOperation> templateOperations() {
    return {
        {"FrmExtractor.tagName",
         {"fragment", {"endPosition", ArgumentKind::Number}},
         {"endPosition"},
         [](CallObjects&, const CallArguments& given) {
             const std::u16string fragment = given.text(0);
             std::int32_t endPosition = given.number(1);
             const std::u16string name(extract::tagName(fragment, endPosition));
             return answer(name, endPosition);
         }},
        {"FrmExtractor.getSpecialIdx",
         {{"fragments", ArgumentKind::Texts}, "begin", "end"},
         {"outBegin", "outEnd"},
         [](CallObjects&, const CallArguments& given) {
             const std::vector<std::u16string> texts = given.texts(0);
             const std::vector<std::u16string_view> fragments(texts.begin(), texts.end());
             std::int32_t outBegin = 0;
             std::int32_t outEnd = 0;
             const bool found = extract::getSpecialIdx(fragments, given.text(1), given.text(2), outBegin, outEnd);
             return answer(found, outBegin, outEnd);
         }},
        {"ClsWebExtractor.extC",
         {{"lines", ArgumentKind::Texts}},
         {"firstLine", "content"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string firstLine;
             std::u16string content;
             const bool result = objects.webExtractor().extC(given.texts(0), firstLine, content);
             return answer(result, firstLine, content);
         }},
    };
}

} // namespace kelb::cli
