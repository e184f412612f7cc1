#include "jobs/add_fields.h"

#include "ado/connection_string.h"
#include "jobs/table_check.h"

namespace kelb::jobs {

void addFields(const AddFieldsOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    const Configuration& configuration = context.configuration();
    const std::u16string path =
        options.database.empty()
            ? u"D:\\KelbFolder\\Comb(" + configuration.required(Setting::AddFieldsSiteLabel) + u"2).mdb"
            : options.database;
    const std::u16string table = options.table.empty() ? configuration.text(Setting::AddFieldsTable) : options.table;
    ado::Connection database(context.databases());
    database.mode = ado::Connection::Mode::Write;
    database.Open(ado::jetConnectionString(path));
    TableCheck check;
    check.need(database, path, table, {});
    check.finish();
    std::size_t added = 0;
    for (const std::u16string_view column : {u"blnPass YESNO", u"blnPosted YESNO", u"sT memo", u"sC memo"}) {
        // Nothing guards against a second run: it fails at the first column. Kept.
        database.Execute(u"ALTER TABLE " + table + u" ADD " + std::u16string(column));
        summary.counts = {{"fields", ++added}};
    }
    database.Close();
    host.message(kProgramTitle, u"ok");
}

} // namespace kelb::jobs
