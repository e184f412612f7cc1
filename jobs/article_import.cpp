#include "jobs/article_import.h"

#include "ado/connection_string.h"
#include "extract/Cls4Article.h"
#include "jobs/article_sites.h"
#include "jobs/database_paths.h"
#include "jobs/job_error.h"
#include "jobs/overflow_files.h"
#include "jobs/rejected_page.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/stored_page.h"
#include "jobs/table_check.h"
#include "platform/clock.h"
#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace kelb::jobs {

using ado::CursorType;
using ado::LockType;

namespace {

constexpr std::size_t kBodyEnd = 8000; // UTF-16 code units: the first length that is too long for a row
/// A text carried over from row to row gets its apostrophes doubled each time. This is far above any page.
constexpr std::size_t kLongestCarriedText = std::size_t{4} << 20U;

/// One run. Title and body stay from row to row: nothing but an extraction changes them.
class ArticleImport {
public:
    ArticleImport(const ArticleImportOptions& options, Context& context, JobHost& host, JobSummary& summary)
        : options_(options), context_(context), host_(host), summary_(summary), sites_(context.configuration()),
          sourcePath_(sourceDatabase(options.source, context.configuration(), context.platform().files)),
          destPath_(chosenDatabase(options.dest, context.configuration(), Setting::PathsWxdb)),
          dest_(context.databases()), source_(context.databases()), files_(context.pageFiles()),
          extractor_(context.markers(), [&context]() -> rewrite::ClsSmart& { return context.smart(); }) {}

    void run() {
        open();
        walkRows({.rows = pages_, .connections = {&dest_}}, host_, summary_, [this](std::size_t) { importPage(); });
        if (summary_.rows == 0 && !summary_.stopped) {
            summary_.note = "the source table has no rows";
        }
        pages_.Close();
        articles_.Close();
        source_.Close();
        dest_.Close();
    }

private:
    void open() {
        dest_.mode = ado::Connection::Mode::Write;
        source_.mode = ado::Connection::Mode::Read;
        dest_.Open(ado::jetConnectionString(destPath_));
        source_.Open(ado::jetConnectionString(sourcePath_));

        TableCheck check;
        check.need(source_, sourcePath_, options_.sourceTable, {u"url", u"content"});
        check.need(dest_, destPath_, options_.destTable, {u"url", u"cid", u"sT", u"sC", u"recTime"});
        check.finish();
        warnWithoutOverflowFolder(context_.platform(), host_);

        articles_.Open(u"select * from " + options_.destTable, dest_, CursorType::Keyset, LockType::Optimistic);
        pages_.Open(u"select * from " + options_.sourceTable, source_, CursorType::Keyset, LockType::ReadOnly);
        urlField_ = pages_.fieldIndex(u"url");
        contentField_ = pages_.fieldIndex(u"content");
        hasChannel_ = pages_.hasField(u"cid");
        summary_.source = {sourcePath_, options_.sourceTable, u"url"};
    }

    void importPage() {
        pages_.text(urlField_, url_);
        if (const ArticleSite* site = sites_.of(platform::lowerCase(url_)); site != nullptr && !extract(*site)) {
            return;
        }
        // A page of no site comes here with what the page before it left. Kept.
        platform::replaceAllIn(body_, u"<\r\n", u"<");
        host_.logAlone(title_ + u"\r\n\r\n" + body_);
        doubleApostrophes(title_);
        doubleApostrophes(body_);
        save();
    }

    /// Cuts title and body; what is not found is "". Both are tried; false, and the page rejected, without one of them.
    bool extract(const ArticleSite& site) {
        pages_.text(contentField_, content_);
        const std::u16string page = storedPage(content_, files_);
        std::u16string_view html = page;
        if (const std::size_t body = html.find(u"<body>"); body != html.npos) {
            html.remove_prefix(body);
        }
        context_.markers() = {std::u16string(site.titleStart), std::u16string(site.titleEnd),
                              std::u16string(site.contentStart), std::u16string(site.contentEnd)};
        std::u16string titleReason, bodyReason;
        const bool hasTitle =
            site.title == ArticleSite::TitleOperation::MarkerList
                ? extract::Cls4Article::extTitleV1(
                      html, context_.configuration().texts(Setting::ArticlesRow5TitleStarts),
                      context_.configuration().texts(Setting::ArticlesRow5TitleEnds), title_, titleReason)
                : extractor_.extTitle(html, site.titleStart, site.titleEnd, title_, titleReason);
        const bool hasBody = extractor_.extContent(html, site.contentStart, site.contentEnd, body_, bodyReason);
        if (hasTitle && hasBody) {
            return true;
        }
        rejectArticle(url_, {hasTitle, titleReason}, {hasBody, bodyReason}, summary_, host_);
        return false;
    }

    /// In place, so that a text which is carried over is doubled again with every row. Kept.
    void doubleApostrophes(std::u16string& text) const {
        if (text.find(u'\'') == text.npos) {
            return;
        }
        text = platform::quoted(text);
        if (text.size() > kLongestCarriedText) {
            throw JobError("the text carried over to the page " + platform::toUtf8(url_) + " has grown to " +
                           std::to_string(text.size()) +
                           " characters, since its apostrophes double with each row of no known site; name the site "
                           "of these rows in [Articles] of Kelb.ini, or take the rows out of the source table");
        }
    }

    void save() {
        // Only the body's length counts. Kept.
        if (body_.size() >= kBodyEnd) {
            OverflowFiles(context_.storeKeeper(), context_.platform(), summary_)
                .write(body_ + u"\r\n\r\n", u"", {url_, title_}, host_);
            summary_.skip(kOverLong, url_);
            return;
        }
        articles_.AddNew();
        articles_.set(u"url", pages_.value(urlField_));
        articles_.set(u"cid", hasChannel_ ? pages_.value(u"cid") : ado::Value());
        articles_.set(u"sT", title_);
        articles_.set(u"sC", body_);
        articles_.set(u"recTime", ado::fromDateTime(context_.platform().clock.now()));
        articles_.Update();
        summary_.save(url_);
    }

    const ArticleImportOptions& options_;
    Context& context_;
    JobHost& host_;
    JobSummary& summary_;
    ArticleSites sites_;
    std::u16string sourcePath_, destPath_;
    ado::Connection dest_, source_; // before the record sets, which are closed first
    ado::Recordset articles_, pages_;
    PageFiles files_;
    extract::Cls4Article extractor_;
    std::size_t urlField_ = 0, contentField_ = 0;
    bool hasChannel_ = false;
    std::u16string url_, content_, title_, body_;
};

} // namespace

void importArticles(const ArticleImportOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    ArticleImport(options, context, host, summary).run();
}

} // namespace kelb::jobs
