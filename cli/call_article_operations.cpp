#include "cli/call_operations.h"
#include "extract/Prog_Kelb.h"

namespace kelb::cli {

using extract::Cls4Article;

namespace {

/// An operation that gives a text and, when it misses a marker, the reason.
template <std::u16string (*Operation)(std::u16string_view, std::u16string&)>
CallAnswer textAndReason(CallObjects&, const CallArguments& given) {
    std::u16string reason;
    const std::u16string text = Operation(given.text(0), reason);
    return answer(text, reason);
}

std::vector<CallOperation> cuttingOperations() {
    return {
        {"Cls4Article.extTitleV1",
         {"html", {"startMarkers", ArgumentKind::Texts}, {"endMarkers", ArgumentKind::Texts}},
         {"title", "reason"},
         [](CallObjects&, const CallArguments& given) {
             if (given.texts(1).empty() || given.texts(2).empty()) {
                 throw CallError("a list of markers must hold at least one");
             }
             std::u16string title, reason;
             const bool found = Cls4Article::extTitleV1(given.text(0), given.texts(1), given.texts(2), title, reason);
             return answer(found, title, reason);
         }},
        {"Cls4Article.extContent4SiteA", {"html"}, {"reason"}, textAndReason<Cls4Article::extContent4SiteA>},
        {"Cls4Article.extTitle4SiteA", {"html"}, {"reason"}, textAndReason<Cls4Article::extTitle4SiteA>},
        {"Cls4Article.extContent4SiteB", {"html"}, {"reason"}, textAndReason<Cls4Article::extContent4SiteB>},
        {"Cls4Article.extTitle4SiteB", {"html"}, {"reason"}, textAndReason<Cls4Article::extTitle4SiteB>},
        {"Cls4Article.extContent",
         {"html", "start", "end"},
         {"body", "reason"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string body, reason;
             const bool found = objects.article().extContent(given.text(0), given.text(1), given.text(2), body, reason);
             return answer(found, body, reason);
         }},
        {"Cls4Article.extTitle",
         {"html", "start", "end"},
         {"title", "reason"},
         [](CallObjects& objects, const CallArguments& given) {
             std::u16string title, reason;
             const bool found = objects.article().extTitle(given.text(0), given.text(1), given.text(2), title, reason);
             return answer(found, title, reason);
         }},
    };
}

std::vector<CallOperation> textOperations() {
    return {
        {"Cls4Article.replaceHtmlTag", {"text"}, {}, ofText<Cls4Article::replaceHtmlTag>},
        {"Cls4Article.killTag", {"text"}, {}, ofText<Cls4Article::killTag>},
        {"Cls4Article.getPageNum", {"url"}, {}, ofText<Cls4Article::getPageNum>},
        {"Cls4Article.ImgSrcRecover", {"text"}, {}, ofText<Cls4Article::ImgSrcRecover>},
        {"Cls4Article.getTagIMG", {"html"}, {}, ofText<Cls4Article::getTagIMG>},
        {"Cls4Article.getImgSrc",
         {"tag", "pageUrl"},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(Cls4Article::getImgSrc(given.text(0), given.text(1)));
         }},
        {"Prog_Kelb.getFullURL",
         {"pageUrl", "link"},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(extract::Prog_Kelb::getFullURL(given.text(0), given.text(1)));
         }},
        {"Prog_Kelb.InStrNoCase",
         {{"start", ArgumentKind::Number}, "text", "wanted"},
         {},
         [](CallObjects&, const CallArguments& given) {
             return answer(extract::Prog_Kelb::InStrNoCase(given.number(0), given.text(1), given.text(2)));
         }},
    };
}

} // namespace

std::vector<CallOperation> articleOperations() {
    return joined({cuttingOperations(), textOperations()});
}

} // namespace kelb::cli
