#include "ado/connection.h"
#include "ado/recordset.h"
#include "ado/sql_parser.h"

#include "platform/utf8.h"

#include "tests/fuzz/fuzz_machine.h"

#include <algorithm>

/// Any text as a statement: read, and carried out when it can be read, on a small database that it does not reach.
namespace kelb::fuzz {
namespace {

constexpr std::u16string_view kSource = u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/app/base.mdb";

std::string smallDatabase() {
    FuzzMachine machine;
    {
        jet::Database::create(machine.platform, u"/app/base.mdb");
        ado::Environment environment(machine.platform, {});
        ado::Connection connection(environment);
        connection.Open(kSource);
        for (const auto* statement :
             {u"CREATE TABLE t (id COUNTER PRIMARY KEY, url TEXT(60), n INTEGER, d DATETIME, b BIT, m MEMO)",
              u"CREATE INDEX n ON t (n)", u"INSERT INTO t (url, n, d, b, m) VALUES ('a', 1, #2015-12-02#, True, 'x')",
              u"INSERT INTO t (url, n, m) VALUES ('B''b', 2, 'memo')", u"INSERT INTO t (url, n) VALUES (NULL, -3)"})
            connection.Execute(statement);
        connection.Close();
    }
    return machine.files.readFile(u"/app/base.mdb");
}

void carryOut(std::u16string_view statement) {
    static const std::string sound = smallDatabase();
    FuzzMachine machine;
    machine.files.writeFile(u"/app/base.mdb", sound);
    ado::Environment environment(machine.platform, {.dryRun = true});
    ado::Connection connection(environment);
    connection.Open(kSource);
    try {
        ado::Recordset rows;
        rows.Open(statement, connection);
        std::u16string text;
        for (int i = 0; i < 100 && !rows.Eof(); ++i, rows.MoveNext())
            for (std::size_t field = 0; field < rows.fieldCount(); ++field)
                rows.text(field, text);
        rows.Close();
    } catch (const ado::Error&) { // not a SELECT
        try {
            connection.Execute(statement);
        } catch (const ado::Error&) {
        }
    }
    connection.Close();
    require(machine.files.readFile(u"/app/base.mdb") == sound, "a dry run leaves the file as it was");
}

} // namespace
} // namespace kelb::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kelb;
    const std::u16string statement = platform::fromUtf8(fuzz::asText(data, size));
    try {
        static_cast<void>(ado::parseStatement(statement));
    } catch (const ado::Error& error) {
        fuzz::require(*error.what() != '\0', "a refused statement is refused with a reason");
        return 0;
    }
    fuzz::carryOut(statement);
    return 0;
}
