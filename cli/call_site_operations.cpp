#include "cli/call_operations.h"
#include "extract/ClsSpecSheet.h"

namespace kelb::cli {

using extract::Cls4QASite;
using extract::ClsSpecSheet;

namespace {

std::vector<CallOperation> specSheetOperations() {
    return {
        {"ClsSpecSheet.extTable",
         {"html", "key"},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(std::u16string(ClsSpecSheet::extTable(given.text(0), given.text(1))));
         }},
        {"ClsSpecSheet.Table2TR",
         {"table"},
         {"rows"},
         [](CallObjects&, const CallArguments& given) {
             std::vector<std::u16string> rows;
             const std::int16_t last = ClsSpecSheet::Table2TR(given.text(0), rows);
             return answer(last, rows);
         }},
        {"ClsSpecSheet.extSpePara",
         {"name", {"rows", ArgumentKind::Texts}},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(ClsSpecSheet::extSpePara(given.text(0), given.texts(1)));
         }},
        {"ClsSpecSheet.extTitle", {"html"}, {}, ofText<ClsSpecSheet::extTitle>},
        {"ClsSpecSheet.extNameAndCode",
         {"title"},
         {"name", "code"},
         [](CallObjects&, const CallArguments& given) {
             std::u16string name, code;
             ClsSpecSheet::extNameAndCode(given.text(0), name, code);
             return onlyOut(name, code);
         }},
    };
}

std::vector<CallOperation> questionOperations() {
    return {
        {"Cls4QASite.extQTitle", {"html"}, {}, ofText<Cls4QASite::extQTitle>},
        {"Cls4QASite.extQContent", {"html"}, {}, ofText<Cls4QASite::extQContent>},
        {"Cls4QASite.extAContent",
         {"html"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             return answer(objects.questionSite().extAContent(given.text(0)));
         }},
        {"Cls4QASite.giveRndName",
         {},
         {},
         [](CallObjects& objects, const CallArguments&) {
             return answer(objects.userNames().giveRndName(objects.random())); // without the ad marks
         }},
    };
}

} // namespace

std::vector<CallOperation> siteOperations() {
    return joined({specSheetOperations(), questionOperations()});
}

} // namespace kelb::cli
