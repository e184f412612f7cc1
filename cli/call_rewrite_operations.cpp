#include "cli/call_operations.h"
#include "rewrite/pubProg.h"

namespace kelb::cli {

std::vector<CallOperation> rewriteOperations() {
    return {
        {"ClsSmart.killURLText",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().killURLText(given.text(0)));
         }},
        {"ClsSmart.killTag",
         {"text"},
         {"text"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string text = given.text(0);
             return answer(objects.smart().killTag(text), text);
         }},
        {"pubProg.killTagStr",
         {"text"},
         {},
         [](CallObjects&, const CallArguments& given) { return answer(rewrite::pubProg::killTagStr(given.text(0))); }},
        {"ClsSmart.replaceGarbage",
         {"text", "log"},
         {"cleaned", "log"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string cleaned, log = given.text(1);
             return answer(objects.smart().replaceGarbage(given.text(0), cleaned, log), cleaned, log);
         }},
        {"ClsSmart.replaceGarbageTags",
         {"text", "log"},
         {"cleaned", "log"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string cleaned, log = given.text(1);
             return answer(objects.smart().replaceGarbageTags(given.text(0), cleaned, log), cleaned, log);
         }},
        {"ClsSmart.replaceGarbageTag",
         {"text", "log", "opening", "closing"},
         {"cleaned", "log"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string cleaned, log = given.text(1);
             return answer(objects.smart().replaceGarbageTag(given.text(0), cleaned, log, given.text(2), given.text(3)),
                           cleaned, log);
         }},
        {"ClsSmart.killMoreBR",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().killMoreBR(given.text(0)));
         }},
        {"ClsSmart.cutTitle",
         {"text", "separator"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().cutTitle(given.text(0), given.text(1)));
         }},
        {"ClsSmart.CountGoodChar",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().CountGoodChar(given.text(0)));
         }},
        {"ClsSmart.blnValue",
         {"text", "reason"},
         {"reason"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string reason = given.text(1);
             return answer(objects.smart().blnValue(given.text(0), reason), reason);
         }},
        {"ClsSmart.blnValue2",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().blnValue2(given.text(0)));
         }},
        {"ClsSmart.smartRead",
         {},
         {},
         [](CallObjects& objects, const CallArguments&) { return answer(objects.smart().smartRead()); }},
    };
}

} // namespace kelb::cli
