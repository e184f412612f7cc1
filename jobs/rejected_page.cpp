#include "jobs/rejected_page.h"

#include "jobs/row_reasons.h"
#include "platform/text.h"

#include <string>

namespace kelb::jobs {

void rejectPage(const RejectedPage& page, JobSummary& summary, JobHost& host) {
    constexpr std::size_t kShown = 100;
    summary.fail(page.reason, page.url, page.detail);
    std::u16string line = u"提取失败! 第" + platform::number(static_cast<long long>(summary.failed)) + u"次,";
    line += page.url;
    line += u",";
    line += platform::left(page.shown, kShown);
    host.log(line);
}

void rejectArticle(std::u16string_view url, const ArticlePart& title, const ArticlePart& body, JobSummary& summary,
                   JobHost& host) {
    std::u16string reasons(title.reason);
    reasons += title.reason.empty() || body.reason.empty() ? u"" : u"|";
    reasons += body.reason;
    const std::string_view missing = title.found ? kNoBody : body.found ? kNoTitle : kNoTitleNorBody;
    rejectPage({.reason = missing, .url = url, .detail = reasons, .shown = reasons}, summary, host);
}

} // namespace kelb::jobs
