#include "cli/commands.h"
#include "cli/db_command.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
namespace {

class DbExecCommand final : public DatabaseCommand {
public:
    explicit DbExecCommand(CLI::App& db)
        : DatabaseCommand(db, "exec", "Carry out one statement that changes the database") {
        declared()
            .add_option("SQL", sql_,
                        "CREATE TABLE, CREATE [UNIQUE] INDEX, ALTER TABLE ... ADD, INSERT, UPDATE or DELETE")
            ->required()
            ->type_name("");
        declared().footer("Prints the number of rows that were changed.");
    }

    int run(Program& program) override {
        ado::Connection connection(program.context().databases());
        open(connection, ado::Connection::Mode::Write);
        const std::size_t rows = connection.Execute(platform::fromUtf8(sql_));
        connection.Close();
        std::cout << rows << (rows == 1 ? " row\n" : " rows\n");
        return kDone;
    }

private:
    std::string sql_;
};

} // namespace

CommandPointer makeDbExec(CLI::App& db) {
    return std::make_unique<DbExecCommand>(db);
}

} // namespace kelb::cli
