#include "jobs/export_users.h"

#include "ado/connection_string.h"
#include "jobs/database_paths.h"
#include "jobs/overflow_files.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/table_check.h"
#include "platform/code_page.h"
#include "platform/text.h"

namespace kelb::jobs {
namespace {

constexpr std::u16string_view kUserTable = u"DVUser";
constexpr std::size_t kMostRows = 300;

} // namespace

void exportUsers(const ExportUsersOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    const std::u16string path = chosenDatabase(options.database, context.configuration(), Setting::PathsDvUserDb);
    ado::Connection database(context.databases());
    database.mode = ado::Connection::Mode::Read;
    database.Open(ado::jetConnectionString(path));
    TableCheck check;
    check.need(database, path, kUserTable, {u"userName"});
    check.finish();

    ado::Recordset users;
    users.Open(u"select * from " + std::u16string(kUserTable), database, ado::CursorType::Keyset,
               ado::LockType::ReadOnly);
    const std::size_t nameField = users.fieldIndex(u"userName"), count = users.RecordCount();
    host.message(kProgramTitle, u"共有: " + platform::number(static_cast<long long>(count)) + u" 条");
    summary.source = {path, std::u16string(kUserTable), u"userName"};
    std::u16string stored, list;
    walkRows({.rows = users,
              .connections = {},
              .countLine = RowWalk::CountLine::None,
              .stop = RowWalk::Stop::Ignored,
              .limit = kMostRows},
             host, summary, [&](std::size_t) {
                 users.text(nameField, stored);
                 const std::u16string_view name = platform::trimBlanks(stored);
                 if (name.empty()) {
                     summary.skip(kNoName, stored);
                 } else if (!platform::isDoubleByte(name.front())) {
                     summary.skip(kSingleByteName, stored);
                 } else {
                     list += name;
                     list += u'|';
                     summary.save(stored);
                 }
             });
    users.Close();
    database.Close();
    if (count > kMostRows) {
        summary.note = "only the first " + std::to_string(kMostRows) + " rows were read";
    }
    OverflowFiles(context.storeKeeper(), context.platform(), summary)
        .write(list, u"Command3_Click 提取DVUserName", {u"", u""}, host);
}

} // namespace kelb::jobs
