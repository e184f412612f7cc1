#include "cli/call_operations.h"
#include "rewrite/pubProg.h"

#include <algorithm>
#include <iterator>

namespace kelb::cli {

namespace {

std::vector<CallOperation> cleaningOperations() {
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
    };
}

std::vector<CallOperation> judgingOperations() {
    return {
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
    };
}

std::vector<CallOperation> rewritingOperations() {
    return {
        {"ClsSmart.smartRead",
         {},
         {},
         [](CallObjects& objects, const CallArguments&) { return answer(objects.smart().smartRead()); }},
        {"ClsSmart.smartReplaceTitle",
         {"title"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().smartReplaceTitle(given.text(0)));
         }},
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
        {"ClsSmart.getPinPai",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().getPinPai(given.text(0)));
         }},
        {"ClsSmart.blnChangHong",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().blnChangHong(given.text(0)));
         }},
        {"ClsSmart.searchTVCode",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().searchTVCode(given.text(0)));
         }},
        {"ClsSmart.searchICCode",
         {"code"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().searchICCode(given.text(0)));
         }},
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
        {"ClsSmart.smartGetProblem",
         {"text"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.smart().smartGetProblem(given.text(0)));
         }},
    };
}

} // namespace

std::vector<CallOperation> rewriteOperations() {
    std::vector<CallOperation> all;
    for (std::vector<CallOperation> chapter :
         {cleaningOperations(), judgingOperations(), rewritingOperations(), recognitionOperations()}) {
        std::ranges::move(chapter, std::back_inserter(all));
    }
    return all;
}

} // namespace kelb::cli
