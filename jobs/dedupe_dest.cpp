#include "jobs/dedupe_dest.h"

#include "ado/connection_string.h"
#include "jobs/context.h"
#include "jobs/database_paths.h"
#include "jobs/disposal.h"
#include "jobs/page_keys.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/table_check.h"
#include "platform/text.h"

#include <unordered_set>

namespace kelb::jobs {
namespace {

constexpr std::u16string_view kGeneralTable = u"wxGG";

std::u16string label(const JobSummary& summary) {
    return u"Deleted: " + platform::number(static_cast<long long>(summary.deletedRows)) + u" All: " +
           platform::number(static_cast<long long>(summary.rows));
}

} // namespace

void dedupeDest(const DedupeDestOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    const std::u16string path = chosenDatabase(options.dest, context.configuration(), Setting::PathsWxdb);
    const std::u16string table = options.table.empty() ? std::u16string(kGeneralTable) : options.table;
    ado::Connection dest(context.databases());
    dest.mode = ado::Connection::Mode::Write;
    dest.Open(ado::jetConnectionString(path));
    TableCheck check;
    check.need(dest, path, table, {u"url", u"recTime"});
    check.finish();

    ado::Recordset rows;
    rows.Open(u"select * from " + table + u" order by recTime desc", dest, ado::CursorType::Keyset,
              ado::LockType::Optimistic);
    const std::size_t urlField = rows.fieldIndex(u"url"), total = rows.RecordCount();
    summary.source = {path, table, u"url"};
    const std::unique_ptr<Disposal> disposal = context.disposal(kDedupeDestJob);
    std::unordered_set<std::u16string> seen;
    std::u16string url;
    walkRows({.rows = rows,
              .connections = {&dest},
              .countLine = RowWalk::CountLine::None,
              .stop = RowWalk::Stop::Ignored,
              .label = RowWalk::Label::Own},
             host, summary, [&](std::size_t i) {
                 rows.text(urlField, url); // Null counts as ""
                 if (seen.emplace(frontToLastDash(url)).second) {
                     summary.skip(kKept, url);
                 } else {
                     disposal->deleteRow(rows, {path, table});
                     ++summary.deletedRows;
                     summary.skip(kDuplicate, url);
                 }
                 host.showProgress(label(summary), i, total);
             });
    rows.Close();
    dest.Close();
    disposal->finish();
    host.showOutcome(label(summary), summary.rows, total);
    host.message(kProgramTitle, u"输出表的重复问题解决完毕!");
}

} // namespace kelb::jobs
