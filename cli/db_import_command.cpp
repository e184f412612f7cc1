#include "ado/error.h"
#include "cli/commands.h"
#include "cli/db_command.h"
#include "cli/json_values.h"
#include "jobs/job_error.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
namespace {

constexpr std::size_t kBatch = 1000; // rows a transaction

/// Reads JSON lines into a table. Rows are stored in batches, each in one transaction: a line that is wrong takes its
/// batch back, so that the table ends between two lines.
class LineImport {
public:
    LineImport(ado::Connection& connection, const std::u16string& table) : connection_(connection) {
        rows_.Open(u"select * from " + bracketed(table), connection, ado::CursorType::Keyset,
                   ado::LockType::Optimistic);
    }

    /// Result: rows stored.
    std::size_t read(std::istream& in) {
        std::string text;
        while (std::getline(in, text)) {
            ++line_;
            if (text.find_first_not_of(" \t\r") == std::string::npos) {
                continue;
            }
            if (inBatch_ == 0) {
                connection_.BeginTrans();
            }
            ++inBatch_;
            storeOrExplain(text);
            if (inBatch_ == kBatch) {
                commit();
            }
        }
        if (inBatch_ > 0) {
            commit();
        }
        rows_.Close();
        return stored_;
    }

private:
    void storeOrExplain(const std::string& text) {
        try {
            store(text);
        } catch (const nlohmann::json::exception& error) {
            fail(std::string("not JSON: ") + error.what());
        } catch (const JsonValueError& error) {
            fail(error.what());
        } catch (const ado::Error& error) {
            fail(error.what());
        }
    }

    void store(const std::string& text) {
        const nlohmann::json row = nlohmann::json::parse(text);
        if (!row.is_object()) {
            throw JsonValueError("not a JSON object");
        }
        rows_.AddNew();
        for (const auto& [key, value] : row.items()) {
            const std::u16string name = platform::fromUtf8(key);
            if (!rows_.hasField(name)) {
                throw JsonValueError("the table has no column " + key);
            }
            const std::size_t field = rows_.fieldIndex(name);
            // Null in an autonumber column means, as a missing key does, that it counts on.
            if (!(value.is_null() && rows_.field(field).autonumber)) {
                rows_.set(field, fromJson(value, rows_.field(field)));
            }
        }
        rows_.Update();
    }

    [[noreturn]] void fail(const std::string& what) {
        rows_.CancelUpdate();
        connection_.RollbackTrans();
        const std::string before =
            committedLine_ == 0 ? "nothing was stored"
                                : "lines 1 to " + std::to_string(committedLine_) + " are stored, none after them";
        throw jobs::JobError("line " + std::to_string(line_) + ": " + what + "; " + before);
    }

    void commit() {
        connection_.CommitTrans();
        stored_ += inBatch_;
        inBatch_ = 0;
        committedLine_ = line_;
    }

    ado::Connection& connection_;
    ado::Recordset rows_;
    std::size_t line_ = 0, committedLine_ = 0;
    std::size_t inBatch_ = 0, stored_ = 0;
};

class DbImportCommand final : public DatabaseCommand {
public:
    explicit DbImportCommand(CLI::App& db)
        : DatabaseCommand(db, "import", "Add rows to a table: JSON lines from standard input") {
        declared().add_option("TABLE", table_, "The table")->required()->type_name("");
        declared().footer("Keys are names of columns; a missing key is Null, an autonumber counts on.\n"
                          "Example:\n"
                          "  kelb db export old.mdb bbsforum | kelb db import new.mdb bbsforum");
    }

    int run(Program& program) override {
        ado::Connection connection(program.context().databases());
        open(connection, ado::Connection::Mode::Write);
        const std::size_t rows = LineImport(connection, platform::fromUtf8(table_)).read(std::cin);
        connection.Close();
        std::cout << rows << (rows == 1 ? " row\n" : " rows\n");
        return kDone;
    }

private:
    std::string table_;
};

} // namespace

CommandPointer makeDbImport(CLI::App& db) {
    return std::make_unique<DbImportCommand>(db);
}

} // namespace kelb::cli
