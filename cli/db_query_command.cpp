#include "cli/commands.h"
#include "cli/db_command.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
namespace {

class DbQueryCommand final : public DatabaseCommand {
public:
    explicit DbQueryCommand(CLI::App& db)
        : DatabaseCommand(db, "query", "Print the rows of a SELECT"), format_(declared(), FormatOption::Choices::All) {
        declared().add_option("SQL", sql_, "SELECT statement, or the name of a table")->required()->type_name("");
        declared().footer("JSON: Null is null, yes/no true or false, currency and decimal texts, date-times\n"
                          "\"2015-12-02T08:30:00\", binary base64.");
    }

    int run(Program& program) override {
        ado::Connection connection(program.context().databases());
        open(connection, ado::Connection::Mode::Read);
        ado::Recordset rows;
        rows.Open(platform::fromUtf8(sql_), connection);
        writeRows(rows, format_.chosen(), std::cout);
        return kDone;
    }

private:
    std::string sql_;
    FormatOption format_;
};

} // namespace

CommandPointer makeDbQuery(CLI::App& db) {
    return std::make_unique<DbQueryCommand>(db);
}

} // namespace kelb::cli
