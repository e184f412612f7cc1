#include "cli/call_operations.h"
#include "extract/ClsYCleaner.h"
#include "extract/Prog_Copy.h"
#include "extract/Prog_Dz.h"
#include "extract/Prog_Form.h"

namespace kelb::cli {

using extract::Cls4Discuz;

namespace {

/// An operation that leaves in its argument what it did not work on.
template <std::u16string (*Operation)(std::u16string&)>
CallAnswer textAndRest(CallObjects&, const CallArguments& given) {
    std::u16string text = given.text(0);
    return answer(Operation(text), text);
}

std::vector<CallOperation> stripperOperations() {
    return {
        {"Prog_Copy.CopyRemoveHTML", {"text"}, {}, ofText<extract::Prog_Copy::CopyRemoveHTML>},
        {"Prog_Copy.CopyRemoveHTML1", {"text"}, {"text"}, textAndRest<extract::Prog_Copy::CopyRemoveHTML1>},
        {"Prog_Copy.CopyRemoveHTML2",
         {"html"},
         {"pieces"},
         [](CallObjects&, const CallArguments& given) {
             std::vector<std::u16string> pieces;
             return answer(extract::Prog_Copy::CopyRemoveHTML2(given.text(0), pieces), pieces);
         }},
        {"ClsYCleaner.RemoveHTML", {"text"}, {}, ofText<extract::ClsYCleaner::RemoveHTML>},
        {"ClsYCleaner.RemoveHTML1", {"text"}, {"text"}, textAndRest<extract::ClsYCleaner::RemoveHTML1>},
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
        {"Cls4Discuz.extFloorContent", {"floor"}, {}, ofText<Cls4Discuz::extFloorContent>},
        {"Cls4Discuz.killDiscuzMark", {"text"}, {}, ofText<Cls4Discuz::killDiscuzMark>},
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
        {"Cls4Discuz.killGR", {"text"}, {}, ofText<Cls4Discuz::killGR>},
        {"Cls4Discuz.killBeginGR", {"text"}, {}, ofText<Cls4Discuz::killBeginGR>},
        {"Prog_Dz.localPagePath",
         {{"lanMode", ArgumentKind::Flag}, "folder", "storedPath"},
         {},
         [](CallObjects&, const CallArguments& given) {
             using namespace extract::Prog_Dz;
             const LanMode mode = given.flag(0) ? LanMode::On : LanMode::Off;
             return answer(localPagePath(mode, given.text(1), given.text(2)));
         }},
        {"Prog_Dz.extTitleTag", {"html"}, {}, ofText<extract::Prog_Dz::extTitleTag>},
        {"Prog_Form.extModelCode", {"text"}, {}, ofText<extract::Prog_Form::extModelCode>},
    };
}

} // namespace

std::vector<CallOperation> extractOperations() {
    return joined({stripperOperations(), forumOperations()});
}

} // namespace kelb::cli
