#include "jobs/forum_import.h"

#include "ado/connection_string.h"
#include "jobs/database_paths.h"
#include "jobs/forum_pages.h"
#include "jobs/overflow_files.h"
#include "jobs/rejected_page.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/table_check.h"
#include "platform/clock.h"
#include "platform/text.h"

namespace kelb::jobs {

using ado::CursorType;
using ado::LockType;
using extract::ThreadPage;

namespace {

constexpr std::u16string_view kArticleTable = u"wxAll";
constexpr std::size_t kArticleEnd = 12000; // UTF-16 code units: the first length that is too long for a row
constexpr std::size_t kTitleCut = 250;
constexpr int kSourceTimeout = 300; // seconds

/// One run: its connections, record sets and the buffers that are used again for each row.
class ForumImport {
public:
    ForumImport(const ForumImportOptions& options, Context& context, JobHost& host, JobSummary& summary)
        : context_(context), host_(host), summary_(summary),
          sourcePath_(sourceDatabase(options.source, context.configuration(), context.platform().files)),
          destPath_(chosenDatabase(options.dest, context.configuration(), Setting::PathsWxdb)),
          dest_(context.databases()), source_(context.databases()), pages_(context), files_(context.pageFiles()),
          disposal_(context.disposal(kForumImportJob)) {}

    void run() {
        open();
        walkRows({.rows = threads_, .connections = {&dest_, &source_}}, host_, summary_,
                 [this](std::size_t) { importThread(); });
        noteWhatWasImpossible();
        threads_.Close();
        articles_.Close();
        source_.Close();
        dest_.Close();
        disposal_->finish();
        host_.message(kProgramTitle, u"完成!");
    }

private:
    void open() {
        // Only a notice page makes this job write to its source.
        const bool deletes = !context_.configuration().text(Setting::ForumBoardName).empty();
        dest_.mode = ado::Connection::Mode::Write;
        source_.mode = deletes ? ado::Connection::Mode::Write : ado::Connection::Mode::Default;
        source_.CommandTimeout = kSourceTimeout;
        dest_.Open(ado::jetConnectionString(destPath_));
        source_.Open(ado::jetConnectionString(sourcePath_));

        TableCheck check;
        check.need(source_, sourcePath_, kForumTable, {u"url", u"content", u"cid", u"sC"});
        check.need(dest_, destPath_, kArticleTable, {u"url", u"cid", u"sT", u"sC", u"sA", u"recTime"});
        check.finish();
        warnWithoutOverflowFolder(context_.platform(), host_);

        articles_.Open(u"select * from " + std::u16string(kArticleTable), dest_, CursorType::Keyset,
                       LockType::Optimistic);
        threads_.Open(u"select * from " + std::u16string(kForumTable) + u" where (cid=" +
                          platform::number(context_.configuration().number(Setting::ForumImportCid)) +
                          u" and url like '%thread%-1-%') ORDER BY url",
                      source_, CursorType::Keyset, LockType::Optimistic);
        urlField_ = threads_.fieldIndex(u"url");
        contentField_ = threads_.fieldIndex(u"content");
        total_ = threads_.RecordCount();
        summary_.source = {sourcePath_, std::u16string(kForumTable), u"url"};
    }

    void importThread() {
        threads_.text(urlField_, url_);
        if (isImported()) {
            summary_.skip(kAlreadyThere, url_);
            return;
        }
        const PageLocation location = host_.pages();
        lanModeSeen_ = lanModeSeen_ || location.lanMode;
        threads_.text(contentField_, storedPath_);
        const std::u16string path = PageFiles::path(location, storedPath_);
        if (!files_.read(path, page_)) {
            summary_.skip(kNoPageFile, url_);
            return;
        }
        reason_.clear();
        title_ = pages_.title(page_, reason_);
        body_ = pages_.content(page_, reason_, ThreadPage::First);
        if (title_.empty() || body_.empty()) {
            fail(path, location);
            return;
        }
        appendLaterPages(location);
        save();
        host_.showProgress(platform::number(static_cast<long long>(++done_)), summary_.rows, total_);
    }

    bool isImported() {
        ado::Recordset found;
        found.Open(u"select top 1 url from " + std::u16string(kArticleTable) + u" where url='" +
                       platform::quoted(url_) + u"'",
                   dest_, CursorType::Keyset, LockType::ReadOnly);
        return !found.Eof();
    }

    /// Pages 2 and 3 in the order of their addresses. A page without a file gives its stored text; the first one that
    /// has none of either ends the search.
    void appendLaterPages(const PageLocation& location) {
        const auto address = [this](std::u16string_view number) {
            return platform::quoted(platform::replaceAll(url_, u"-1-", number));
        };
        ado::Recordset later;
        later.Open(u"select * from " + std::u16string(kForumTable) + u" where url='" + address(u"-2-") + u"' or url='" +
                       address(u"-3-") + u"' ORDER BY url",
                   source_, CursorType::Keyset, LockType::ReadOnly);
        for (; !later.Eof(); later.MoveNext()) {
            host_.showProgress(later.text(u"url"), summary_.rows, total_);
            host_.yield();
            later.text(later.fieldIndex(u"content"), storedPath_);
            std::u16string text;
            if (files_.read(PageFiles::path(location, storedPath_), page_)) {
                text = pages_.content(page_, reason_, ThreadPage::Later);
            } else if (!later.text(later.fieldIndex(u"sC"), text)) {
                return;
            }
            if (!text.empty()) {
                body_ += u"<br><br>";
                body_ += text;
            }
        }
    }

    void save() {
        if (body_.size() >= kArticleEnd) {
            OverflowFiles(context_.storeKeeper(), context_.platform(), summary_)
                .write(body_, u"", {url_, title_}, host_);
            summary_.skip(kOverLong, url_);
            return;
        }
        articles_.AddNew();
        articles_.set(u"url", url_);
        articles_.set(u"cid", threads_.value(u"cid"));
        articles_.set(u"sT", platform::left(title_, kTitleCut));
        articles_.set(u"sC", body_);
        articles_.set(u"sA", u""); // the summary of an article, which this job has not
        articles_.set(u"recTime", ado::fromDateTime(context_.platform().clock.now()));
        articles_.Update();
        summary_.save(url_);
    }

    void fail(const std::u16string& path, const PageLocation& location) {
        const std::string_view why = pages_.failure(page_, title_, reason_);
        rejectPage({.reason = why, .url = url_, .detail = reason_, .shown = reason_}, summary_, host_);
        if (why == kNoticePage) {
            deleteNotice({threads_, source_, sourcePath_, path, location.lanFolder}, *disposal_, summary_);
        }
    }

    void noteWhatWasImpossible() {
        if (!lanModeSeen_ && !host_.pages().lanMode) {
            summary_.note = "LAN mode is off: nothing can be imported";
        } else if (summary_.rows == 0 && !summary_.stopped) {
            summary_.note = "no row of the source is a first thread page of the channel";
        }
    }

    Context& context_;
    JobHost& host_;
    JobSummary& summary_;
    std::u16string sourcePath_, destPath_;
    ado::Connection dest_, source_; // before the record sets, which are closed first
    ado::Recordset articles_, threads_;
    ForumPages pages_;
    PageFiles files_;
    std::unique_ptr<Disposal> disposal_;
    std::size_t urlField_ = 0, contentField_ = 0;
    std::size_t total_ = 0; // rows selected, for the progress
    std::size_t done_ = 0;
    bool lanModeSeen_ = false;
    std::u16string url_, storedPath_, page_, reason_, title_, body_;
};

} // namespace

void importForumThreads(const ForumImportOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    ForumImport(options, context, host, summary).run();
}

} // namespace kelb::jobs
