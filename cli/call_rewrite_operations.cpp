#include "cli/call_operations.h"
#include "rewrite/pubProg.h"

namespace kelb::cli {

using rewrite::ClsSmart;

namespace {

/// From one text to a result. ClsSmart is made for it, also where the operation needs none of its memory: without the
/// file of ad marks none of them answers.
template <auto Operation>
CallAnswer ofPost(CallObjects& objects, const CallArguments& given) {
    objects.smart();
    return answer(Operation(given.text(0)));
}

std::vector<CallOperation> cleaningOperations() {
    return {
        {"ClsSmart.killURLText", {"text"}, {}, ofPost<ClsSmart::killURLText>},
        {"ClsSmart.killTag",
         {"text"},
         {"text"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string text = given.text(0);
             return answer(objects.smart().killTag(text), text);
         }},
        {"pubProg.killTagStr", {"text"}, {}, ofText<rewrite::pubProg::killTagStr>},
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
        {"ClsSmart.killMoreBR", {"text"}, {}, ofPost<ClsSmart::killMoreBR>},
        {"ClsSmart.cutTitle",
         {"text", "separator"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().cutTitle(given.text(0), given.text(1)));
         }},
    };
}

std::vector<CallOperation> judgingOperations() {
    return {
        {"ClsSmart.CountGoodChar", {"text"}, {}, ofPost<ClsSmart::CountGoodChar>},
        {"ClsSmart.blnValue",
         {"text", "reason"},
         {"reason"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string reason = given.text(1);
             return answer(objects.smart().blnValue(given.text(0), reason), reason);
         }},
        {"ClsSmart.blnValue2", {"text"}, {}, ofPost<ClsSmart::blnValue2>},
    };
}

std::vector<CallOperation> rewritingOperations() {
    return {
        {"ClsSmart.smartRead",
         {},
         {},
         [](CallObjects& objects, const CallArguments&) { return answer(objects.smart().smartRead()); }},
        {"ClsSmart.smartReplaceTitle", {"title"}, {}, ofPost<ClsSmart::smartReplaceTitle>},
        {"ClsSmart.smartReplaceContent",
         {"text", "brand"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().smartReplaceContent(given.text(0), given.text(1)));
         }},
        {"ClsSmart.smartReplaceNormal",
         {"text", "brand"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().smartReplaceNormal(given.text(0), given.text(1)));
         }},
    };
}

std::vector<CallOperation> recognitionOperations() {
    return {
        {"ClsSmart.getPinPai", {"text"}, {}, ofPost<ClsSmart::getPinPai>},
        {"ClsSmart.blnChangHong", {"text"}, {}, ofPost<ClsSmart::blnChangHong>},
        {"ClsSmart.searchTVCode", {"text"}, {}, ofPost<ClsSmart::searchTVCode>},
        {"ClsSmart.searchICCode", {"code"}, {}, ofPost<ClsSmart::searchICCode>},
        {"ClsSmart.replaceTVCode",
         {"text", "brand"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().replaceTVCode(given.text(0), given.text(1)));
         }},
        {"ClsSmart.rndTVCode",
         {"path"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().rndTVCode(given.text(0), objects.platform().random));
         }},
        {"ClsSmart.smartGetProblem", {"text"}, {}, ofPost<ClsSmart::smartGetProblem>},
    };
}

} // namespace

std::vector<CallOperation> rewriteOperations() {
    return joined({cleaningOperations(), judgingOperations(), rewritingOperations(), recognitionOperations()});
}

} // namespace kelb::cli
