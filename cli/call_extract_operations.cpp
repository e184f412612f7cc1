#include "cli/call_operations.h"
#include "extract/ClsYCleaner.h"
#include "extract/Prog_Copy.h"
#include "extract/Prog_Dz.h"
#include "extract/Prog_Form.h"

namespace kelb::cli {

using extract::Cls4Discuz;

namespace {

std::vector<CallOperation> stripperOperations() {
    return {
        {"Prog_Copy.CopyRemoveHTML",
         {"text"},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(extract::Prog_Copy::CopyRemoveHTML(given.text(0)));
         }},
        {"Prog_Copy.CopyRemoveHTML1",
         {"text"},
         {"text"},
         [](CallObjects&, const CallArguments& given) {
             std::u16string text = given.text(0);
             return answer(extract::Prog_Copy::CopyRemoveHTML1(text), text);
         }},
        {"Prog_Copy.CopyRemoveHTML2",
         {"html"},
         {"pieces"},
         [](CallObjects&, const CallArguments& given) {
             std::vector<std::u16string> pieces;
             return answer(extract::Prog_Copy::CopyRemoveHTML2(given.text(0), pieces), pieces);
         }},
        {"ClsYCleaner.RemoveHTML",
         {"text"},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(extract::ClsYCleaner::RemoveHTML(given.text(0)));
         }},
        {"ClsYCleaner.RemoveHTML1",
         {"text"},
         {"text"},
         [](CallObjects&, const CallArguments& given) {
             std::u16string text = given.text(0);
             return answer(extract::ClsYCleaner::RemoveHTML1(text), text);
         }},
    };
}

std::vector<CallOperation> forumOperations() {
    return {
        {"Cls4Discuz.extDiscuzTitle",
         {"html", "reason"},
         {"reason"},
         [](CallObjects&, const CallArguments& given) {
             std::u16string reason = given.text(1);
             return answer(Cls4Discuz::extDiscuzTitle(given.text(0), reason), reason);
         }},
        {"Cls4Discuz.extDiscuzPageContent",
         {"html", "reason", {"firstPage", ArgumentKind::Flag}},
         {"reason"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string reason = given.text(1);
             const auto page = given.flag(2) ? extract::ThreadPage::First : extract::ThreadPage::Later;
             return answer(objects.discuz().extDiscuzPageContent(given.text(0), reason, page), reason);
         }},
        {"Cls4Discuz.extFloorContent",
         {"floor"},
         {},
         [](CallObjects&, const CallArguments& given) { return answer(Cls4Discuz::extFloorContent(given.text(0))); }},
        {"Cls4Discuz.killDiscuzMark",
         {"text"},
         {},
         [](CallObjects&, const CallArguments& given) { return answer(Cls4Discuz::killDiscuzMark(given.text(0))); }},
        {"Cls4Discuz.split2Floors",
         {"html", "reason"},
         {"floors", "reason", "success"},
         [](CallObjects&, const CallArguments& given) {
             std::vector<std::u16string> floors;
             std::u16string reason = given.text(1);
             bool success = false;
             Cls4Discuz::split2Floors(given.text(0), floors, reason, success);
             return onlyOut(floors, reason, success);
         }},
        {"Cls4Discuz.giveRndName",
         {},
         {},
         [](CallObjects& objects, const CallArguments&) {
             return answer(objects.userNames().giveRndName(objects.random()));
         }},
        {"Cls4Discuz.killGR",
         {"text"},
         {},
         [](CallObjects&, const CallArguments& given) { return answer(Cls4Discuz::killGR(given.text(0))); }},
        {"Cls4Discuz.killBeginGR",
         {"text"},
         {},
         [](CallObjects&, const CallArguments& given) { return answer(Cls4Discuz::killBeginGR(given.text(0))); }},
        {"Prog_Dz.localPagePath",
         {{"lanMode", ArgumentKind::Flag}, "folder", "storedPath"},
         {},
         [](CallObjects&, const CallArguments& given) {
             using namespace extract::Prog_Dz;
             const LanMode mode = given.flag(0) ? LanMode::On : LanMode::Off;
             return answer(localPagePath(mode, given.text(1), given.text(2)));
         }},
        {"Prog_Dz.extTitleTag",
         {"html"},
         {},
         [](CallObjects&, const CallArguments& given) { return answer(extract::Prog_Dz::extTitleTag(given.text(0))); }},
        {"Prog_Form.extModelCode",
         {"text"},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(extract::Prog_Form::extModelCode(given.text(0)));
         }},
    };
}

} // namespace

std::vector<CallOperation> extractOperations() {
    std::vector<CallOperation> all = stripperOperations();
    for (CallOperation& operation : forumOperations()) {
        all.push_back(std::move(operation));
    }
    return all;
}

} // namespace kelb::cli
