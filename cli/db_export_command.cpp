#include "cli/commands.h"
#include "cli/db_command.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
namespace {

class DbExportCommand final : public DatabaseCommand {
public:
    explicit DbExportCommand(CLI::App& db)
        : DatabaseCommand(db, "export", "Print all rows of a table"),
          format_(declared(), FormatOption::Choices::WithoutTable) {
        declared().add_option("TABLE", table_, "The table")->required()->type_name("");
        declared().footer("\"kelb db import\" reads JSON lines back.");
    }

    int run(Program& program) override {
        ado::Connection connection(program.context().databases());
        open(connection, ado::Connection::Mode::Read);
        ado::Recordset rows;
        rows.Open(u"select * from " + bracketed(platform::fromUtf8(table_)), connection);
        writeRows(rows, format_.chosen(), std::cout);
        return kDone;
    }

private:
    std::string table_;
    FormatOption format_;
};

} // namespace

CommandPointer makeDbExport(CLI::App& db) {
    return std::make_unique<DbExportCommand>(db);
}

} // namespace kelb::cli
