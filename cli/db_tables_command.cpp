#include "cli/commands.h"
#include "cli/db_command.h"
#include "cli/text_table.h"
#include "jobs/row_text.h"
#include "platform/text.h"

#include <iostream>

namespace kelb::cli {
namespace {

class DbTablesCommand final : public DatabaseCommand {
public:
    explicit DbTablesCommand(CLI::App& db)
        : DatabaseCommand(db, "tables", "List the tables with their numbers of rows") {
        declared().add_flag("--json", json_, "One JSON array of {\"name\", \"rows\"}");
    }

    int run(Program& program) override {
        ado::Connection connection(program.context().databases());
        open(connection, ado::Connection::Mode::Read);
        ado::Recordset tables;
        connection.OpenSchema(tables);
        TextTable table;
        table.addColumn(u"table");
        table.addColumn(u"rows", TextTable::Align::Right);
        std::string array;
        for (; !tables.Eof(); tables.MoveNext()) {
            if (tables.text(u"TABLE_TYPE") != u"TABLE") {
                continue;
            }
            const std::u16string name = tables.text(u"TABLE_NAME");
            const long long rows = countRows(connection, name);
            table.beginRow();
            table.addCell(name);
            table.addCell(platform::number(rows));
            array += (array.empty() ? "{\"name\": " : ", {\"name\": ") + jobs::jsonText(name) +
                     ", \"rows\": " + std::to_string(rows) + "}";
        }
        if (json_) {
            std::cout << '[' << array << "]\n";
        } else {
            table.write(std::cout);
        }
        return kDone;
    }

private:
    /// By counting: the number that a definition carries is a hint only in files of other programs.
    static long long countRows(ado::Connection& connection, const std::u16string& table) {
        ado::Recordset count;
        count.Open(u"select count(*) from " + bracketed(table), connection);
        return ado::toInteger(count.value(std::size_t{0})).value_or(0);
    }

    bool json_ = false;
};

} // namespace

CommandPointer makeDbTables(CLI::App& db) {
    return std::make_unique<DbTablesCommand>(db);
}

} // namespace kelb::cli
