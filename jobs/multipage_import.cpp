#include "jobs/multipage_import.h"

#include "ado/connection_string.h"
#include "extract/Cls4Article.h"
#include "jobs/database_paths.h"
#include "jobs/overflow_files.h"
#include "jobs/rejected_page.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/stored_page.h"
#include "jobs/table_check.h"
#include "platform/clock.h"
#include "platform/text.h"

#include <array>

namespace kelb::jobs {

using ado::CursorType;
using ado::LockType;
using extract::Cls4Article;

namespace {

constexpr std::u16string_view kDestTable = u"wxPrinter";
constexpr std::size_t kArticleEnd = 8000; // UTF-16 code units: the first length that is too long for a row
constexpr std::size_t kArticlesPerRun = 10;
constexpr std::u16string_view kExtension = u".htm";

struct WorkField {
    std::u16string_view name, definition;
};
constexpr std::array<WorkField, 4> kWorkFields{{
    {u"pagenum", u" ADD pagenum Short"},
    {u"sT", u" ADD sT varchar(255)"},
    {u"sC", u" ADD sC memo"},
    {u"blnPass", u" ADD blnPass YESNO"},
}};

class MultipageImport {
public:
    MultipageImport(const MultipageImportOptions& options, Context& context, JobHost& host, JobSummary& summary)
        : context_(context), host_(host), summary_(summary),
          prefix_(context.configuration().required(Setting::ArticlesSiteAPrefix)),
          sink_(chosenSink(options.sink, context.configuration())),
          sourcePath_(chosenDatabase(options.source, context.configuration(), Setting::PathsMultiDb)),
          table_(options.sourceTable.empty() ? context.configuration().text(Setting::ArticlesMultiTable)
                                             : options.sourceTable),
          dest_(context.databases()), source_(context.databases()), files_(context.pageFiles()) {}

    void run() {
        open();
        if (addMissingFields()) {
            return;
        }
        const auto count = static_cast<long long>(firstPages_.RecordCount());
        host_.log(u"共有: " + platform::number(count) + u"条记录。");
        // What is cleared in the crawl table belongs together: a run that cannot go on leaves the table as it was.
        source_.BeginTrans();
        walkRows({.rows = firstPages_,
                  .connections = {&dest_},
                  .countLine = RowWalk::CountLine::None,
                  .stop = RowWalk::Stop::Ignored,
                  .limit = kArticlesPerRun},
                 host_, summary_, [this](std::size_t) { importArticle(); });
        firstPages_.Close();
        articles_.Close();
        dest_.Close();
        source_.CommitTrans();
        source_.Close();
        if (summary_.rows == 0) {
            summary_.note = "no row of the source is the first page of an article of the site";
        }
        host_.log(u"Count4multiPage: " + platform::number(static_cast<long long>(merged_)) + u",");
    }

private:
    void open() {
        openSink(dest_, sink_, host_);
        source_.mode = ado::Connection::Mode::Write;
        source_.Open(ado::jetConnectionString(sourcePath_));
        TableCheck check;
        check.need(source_, sourcePath_, table_, {u"url", u"content"});
        check.need(dest_, sink_.shown, kDestTable, {u"sT", u"sC", u"sA", u"recTime"});
        check.finish();
        summary_.source = {sourcePath_, table_, u"url"};
        articles_.Open(u"select * from " + std::u16string(kDestTable), dest_, CursorType::Keyset, LockType::Optimistic);
        firstPages_.Open(u"select * from " + table_ + u" where url like '" + platform::quoted(prefix_) +
                             u"/%[!p][!p]_.htm'",
                         source_, CursorType::Keyset, LockType::Optimistic);
    }

    /// Result: fields were missing, and the run is over.
    bool addMissingFields() {
        std::vector<std::u16string> statements;
        for (const WorkField& field : kWorkFields) {
            if (!firstPages_.hasField(field.name)) {
                statements.push_back(u"ALTER TABLE " + table_ + std::u16string(field.definition));
            }
        }
        if (statements.empty()) {
            return false;
        }
        firstPages_.Close();
        for (const std::u16string& statement : statements) {
            source_.Execute(statement);
        }
        articles_.Close();
        source_.Close();
        dest_.Close();
        summary_.note = "fields were added to the source table: start the job again";
        constexpr std::u16string_view kStartAgain = u"没有Field: pagenum or sT or sC,已创建，请重新开始";
        host_.log(kStartAgain);
        host_.message(kProgramTitle, kStartAgain);
        return true;
    }

    void importArticle() {
        const std::u16string url = firstPages_.text(u"url");
        firstPages_.set(u"blnPass", ado::Value(false));
        firstPages_.set(u"sT", u"");
        firstPages_.set(u"sC", u"");
        firstPages_.Update();

        std::u16string titleReason, bodyReason;
        const std::u16string page = storedPage(firstPages_.text(u"content"), files_);
        const std::u16string title = Cls4Article::extTitle4SiteA(page, titleReason);
        std::u16string body = Cls4Article::extContent4SiteA(page, bodyReason);
        std::u16string observed = u"+++++++++++\r\n" + url + u"\r\n" + body;
        appendLaterPages(url, body, observed);
        OverflowFiles overflow(context_.storeKeeper(), context_.platform(), summary_);
        overflow.write(observed + u"\r\n+++++++++++++", u"多页合并观察", {url, title}, host_);

        if (title.empty() || body.empty()) {
            rejectArticle(url, {!title.empty(), titleReason}, {!body.empty(), bodyReason}, summary_, host_);
            return;
        }
        ++merged_;
        if (title.size() >= kArticleEnd || body.size() >= kArticleEnd) {
            overflow.write(u"文章过长!\r\n" + body + u"\r\n\r\n" + title, u"", {url, title}, host_);
            summary_.skip(kOverLong, url);
            return;
        }
        add(title, body);
        summary_.save(url);
    }

    /// The pages from 2 on in the order of their addresses as texts, so that page 10 comes before page 2. Kept.
    void appendLaterPages(std::u16string_view url, std::u16string& body, std::u16string& observed) {
        const std::u16string base =
            u"url like '%" + platform::quoted(url.substr(0, url.size() - kExtension.size())) + u"p";
        ado::Recordset later;
        later.Open(u"select * from " + table_ + u" where " + base + u"[23456789].htm' or " + base +
                       u"[123456789][0123456789].htm' ORDER BY url",
                   source_, CursorType::Keyset, LockType::ReadOnly);
        std::u16string reason; // of a page that gives nothing; an empty one joins the article all the same
        for (; !later.Eof(); later.MoveNext()) {
            host_.yield();
            const std::u16string text =
                Cls4Article::extContent4SiteA(storedPage(later.text(u"content"), files_), reason);
            body += u"<br>";
            body += text;
            observed += u"<br>--------<br>";
            observed += text;
        }
    }

    void add(const std::u16string& title, const std::u16string& body) {
        articles_.AddNew();
        for (const std::u16string_view field : {u"url", u"cid", u"refimgurl"}) {
            if (articles_.hasField(field) && firstPages_.hasField(field)) {
                articles_.set(field, firstPages_.value(field));
            }
        }
        articles_.set(u"sT", title);
        articles_.set(u"sC", body);
        articles_.set(u"sA", u"");
        articles_.set(u"recTime", ado::fromDateTime(context_.platform().clock.now()));
        articles_.Update();
    }

    Context& context_;
    JobHost& host_;
    JobSummary& summary_;
    std::u16string prefix_;
    Sink sink_;
    std::u16string sourcePath_, table_;
    ado::Connection dest_, source_; // before the record sets, which are closed first
    ado::Recordset articles_, firstPages_;
    PageFiles files_;
    std::size_t merged_ = 0;
};

} // namespace

void importMultipageArticles(const MultipageImportOptions& options, Context& context, JobHost& host,
                             JobSummary& summary) {
    MultipageImport(options, context, host, summary).run();
}

} // namespace kelb::jobs
