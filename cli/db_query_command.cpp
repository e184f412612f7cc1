#include "cli/commands.h"
#include "cli/db_command.h"
#include "jobs/job_error.h"
#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>

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
        refuseChanges();
        ado::Connection connection(program.context().databases());
        open(connection, ado::Connection::Mode::Read);
        ado::Recordset rows;
        rows.Open(platform::fromUtf8(sql_), connection);
        writeRows(rows, format_.chosen(), std::cout);
        return kDone;
    }

private:
    /// What is no SELECT is the name of a table, and names may hold blanks; those that begin like a statement are not
    /// worth the riddle that "there is no table delete from …" would be.
    void refuseChanges() const {
        std::istringstream words(sql_);
        std::string first, second;
        words >> first >> second;
        const std::u16string verb = platform::lowerCase(platform::fromUtf8(first));
        constexpr std::array<std::u16string_view, 6> kChanges{u"insert", u"update", u"delete",
                                                              u"create", u"alter",  u"drop"};
        if (!second.empty() && std::find(kChanges.begin(), kChanges.end(), verb) != kChanges.end()) {
            throw jobs::Refused("db query prints the rows of a SELECT and changes nothing; for this statement take "
                                "kelb db exec");
        }
    }

    std::string sql_;
    FormatOption format_;
};

} // namespace

CommandPointer makeDbQuery(CLI::App& db) {
    return std::make_unique<DbQueryCommand>(db);
}

} // namespace kelb::cli
