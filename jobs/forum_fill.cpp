#include "jobs/forum_fill.h"

#include "ado/connection_string.h"
#include "jobs/database_paths.h"
#include "jobs/forum_pages.h"
#include "jobs/rejected_page.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/table_check.h"
#include "platform/text.h"

namespace kelb::jobs {

using extract::ThreadPage;

namespace {

constexpr std::size_t kSampleLength = 10; // characters of each end of a body that the log shows

class ForumFill {
public:
    ForumFill(const ForumFillOptions& options, Context& context, JobHost& host, JobSummary& summary)
        : context_(context), host_(host), summary_(summary),
          sourcePath_(chosenDatabase(options.source, context.configuration(), Setting::PathsFillDb)),
          source_(context.databases()), pages_(context), files_(context.pageFiles()),
          disposal_(context.disposal(kForumFillJob)) {}

    void run() {
        open();
        walkRows({.rows = threads_, .connections = {&source_}}, host_, summary_, [this](std::size_t) { fillRow(); });
        if (!lanModeSeen_ && !host_.pages().lanMode) {
            summary_.note = "LAN mode is off: nothing can be filled";
        } else if (summary_.rows == 0 && !summary_.stopped) {
            summary_.note = "no row of the source is a thread page of the channel";
        }
        threads_.Close();
        source_.Close();
        disposal_->finish();
        host_.log(u"完成!");
    }

private:
    void open() {
        source_.mode = ado::Connection::Mode::Write;
        source_.Open(ado::jetConnectionString(sourcePath_));
        TableCheck check;
        check.need(source_, sourcePath_, kForumTable, {u"url", u"content", u"cid", u"sT", u"sC"});
        check.finish();
        threads_.Open(u"select * from " + std::u16string(kForumTable) + u" where (cid=" +
                          platform::number(context_.configuration().number(Setting::ForumFillCid)) +
                          u" and url like '%thread%')",
                      source_, ado::CursorType::Keyset, ado::LockType::Optimistic);
        urlField_ = threads_.fieldIndex(u"url");
        contentField_ = threads_.fieldIndex(u"content");
        summary_.source = {sourcePath_, std::u16string(kForumTable), u"url"};
    }

    void fillRow() {
        const PageLocation location = host_.pages();
        lanModeSeen_ = lanModeSeen_ || location.lanMode;
        threads_.text(urlField_, url_);
        threads_.text(contentField_, storedPath_);
        const std::u16string path = PageFiles::path(location, storedPath_);
        // A missing file is a page without content: it fails below like any other page without a body.
        files_.read(path, page_);
        reason_.clear();
        const std::u16string title = pages_.title(page_, reason_);
        const std::u16string body = pages_.content(page_, reason_, ThreadPage::First);
        if (body.empty()) {
            fail(path, location, title);
            return;
        }
        threads_.set(u"sT", title);
        threads_.set(u"sC", body);
        threads_.Update();
        summary_.save(url_);
        std::u16string sample = u"\r\n";
        sample += platform::left(body, kSampleLength);
        sample += platform::right(body, kSampleLength);
        host_.log(sample);
    }

    void fail(const std::u16string& path, const PageLocation& location, std::u16string_view title) {
        const std::string_view why = pages_.failure(page_, title, reason_);
        if (why != kNoticePage) {
            rejectPage({.reason = why, .url = url_, .detail = reason_, .shown = page_}, summary_, host_);
            return;
        }
        deleteNotice({threads_, source_, sourcePath_, path, location.lanFolder}, *disposal_, summary_);
        summary_.skip(kNoticePage, url_);
    }

    Context& context_;
    JobHost& host_;
    JobSummary& summary_;
    std::u16string sourcePath_;
    ado::Connection source_; // before the record set, which is closed first
    ado::Recordset threads_;
    ForumPages pages_;
    PageFiles files_;
    std::unique_ptr<Disposal> disposal_;
    std::size_t urlField_ = 0, contentField_ = 0;
    bool lanModeSeen_ = false;
    std::u16string url_, storedPath_, page_, reason_;
};

} // namespace

void fillForumThreads(const ForumFillOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    ForumFill(options, context, host, summary).run();
}

} // namespace kelb::jobs
