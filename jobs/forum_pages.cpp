#include "jobs/forum_pages.h"

#include "jobs/row_reasons.h"
#include "platform/text.h"

namespace kelb::jobs {

std::u16string ForumPages::title(std::u16string_view page, std::u16string& reason) const {
    std::u16string title = extract::Cls4Discuz::extDiscuzTitle(page, reason);
    std::erase_if(title, [](char16_t unit) { return unit == u'\r' || unit == u'\n'; });
    return title;
}

std::u16string ForumPages::content(std::u16string_view page, std::u16string& reason, extract::ThreadPage which) {
    if (!extractor_) {
        extractor_.emplace(context_.smart(), noNames_, context_.platform().random);
    }
    std::u16string content = extractor_->extDiscuzPageContent(page, reason, which);
    if (context_.configuration().number(Setting::ForumMendBreaks) != 0) {
        // Taking out the tags behind a kept one splits it.
        platform::replaceAllIn(content, u"< br />", u"<br>");
    }
    return content;
}

bool ForumPages::isNotice(std::u16string_view page) const {
    const std::u16string& boardName = context_.configuration().text(Setting::ForumBoardName);
    return !boardName.empty() && page.find(u"<title>提示信息 -  " + boardName + u" -  Powered by Discuz!") != page.npos;
}

std::string_view ForumPages::failure(std::u16string_view page, std::u16string_view title,
                                     std::u16string_view reason) const {
    const auto has = [reason](std::u16string_view entry) { return reason.find(entry) != reason.npos; };
    if (isNotice(page)) {
        return kNoticePage;
    }
    if (page.empty()) {
        return kEmptyPage;
    }
    if (has(extract::kNoFloorMark)) {
        return kNoFloors;
    }
    if (title.empty()) {
        return kNoTitle;
    }
    return has(extract::kNotAThread) ? kTooFewFloors : kFirstPostRejected;
}

void deleteNotice(const NoticePage& page, Disposal& disposal, JobSummary& summary) {
    disposal.deleteRow(page.rows, {page.database, kForumTable});
    ++summary.deletedRows;
    page.connection.flush();
    disposal.deleteFile(page.file, page.lanFolder);
    ++summary.deletedFiles;
}

} // namespace kelb::jobs
