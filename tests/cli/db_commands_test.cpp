#include "tests/cli/program_fixture.h"

#include <gmock/gmock.h>

namespace kelb::cli {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class DbCommands : public ProgramTest {
protected:
    void make(const std::string& columns) {
        ASSERT_EQ(run({"db", "create", at("a.mdb")}).status, 0);
        const Outcome made = run({"db", "exec", at("a.mdb"), "create table t (" + columns + ")"});
        ASSERT_EQ(made.status, 0) << made.err;
    }
    Outcome import(const std::string& lines) { return run({"db", "import", at("a.mdb"), "t"}, lines); }
    std::string exported() { return run({"db", "export", at("a.mdb"), "t"}).out; }
};

constexpr const char* kEveryKind =
    "id int identity(1,1) not null, flag yesno, small byte, short smallint, long integer, "
    "money currency, single real, float double, time datetime, name varchar(20), body memo";

TEST_F(DbCommands, ImportTakesWhatExportGives) {
    make(kEveryKind);
    const std::string lines =
        R"({"id": 1, "flag": true, "small": 255, "short": -32768, "long": 2147483647, "money": "12.5", "single": 0.5, )"
        R"("float": 0.1, "time": "2015-12-02T08:30:00", "name": "洗衣机", "body": "一\r\n\"二\""})"
        "\n"
        R"({"id": 2, "flag": false, "small": null, "short": null, "long": null, "money": null, "single": null, )"
        R"("float": null, "time": null, "name": "", "body": null})"
        "\n";
    const Outcome imported = import(lines);
    EXPECT_EQ(imported.out, "2 rows\n") << imported.err;
    EXPECT_EQ(exported(), lines);
    EXPECT_EQ(import("\n{\"name\": \"autonumber\"}\r\n\n").out, "1 row\n");
    EXPECT_EQ(run({"db", "query", at("a.mdb"), "select id, name, flag from t where id>2"}).out,
              "{\"id\": 3, \"name\": \"autonumber\", \"flag\": false}\n");
    EXPECT_EQ(run({"db", "check", at("a.mdb")}).status, 0);
}

struct BadLine {
    const char* name;
    const char* line;
    const char* told;
};

class DbImportRefuses : public DbCommands, public testing::WithParamInterface<BadLine> {};

TEST_P(DbImportRefuses, NamingTheLineAndStoringNothing) {
    make("flag yesno, small byte, name varchar(4), time datetime");
    const Outcome outcome = import("{\"name\": \"ok\"}\n" + std::string(GetParam().line) + "\n{\"name\": \"ok\"}\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, StartsWith("kelb: line 2: "));
    EXPECT_THAT(outcome.err, HasSubstr(GetParam().told));
    EXPECT_THAT(outcome.err, HasSubstr("nothing was stored"));
    EXPECT_EQ(exported(), "");
}

INSTANTIATE_TEST_SUITE_P(Lines, DbImportRefuses,
                         testing::ValuesIn<BadLine>({
                             {"no_json", "{\"name\": ", "not JSON"},
                             {"no_object", "[1]", "not a JSON object"},
                             {"unknown_column", "{\"nam\": \"x\"}", "no column nam"},
                             {"text_for_flag", "{\"flag\": \"true\"}", "column flag takes true or false"},
                             {"number_too_large", "{\"small\": 256}",
                              "column small takes a whole number from 0 to 255"},
                             {"fraction", "{\"small\": 1.5}", "column small"},
                             {"text_too_long", "{\"name\": \"12345\"}", "name"},
                             {"no_date", "{\"time\": \"2015-13-01T00:00:00\"}", "column time takes a date-time"},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(DbCommands, AFailedImportEndsBetweenTwoBatches) {
    make("n integer");
    std::string lines;
    for (int i = 1; i <= 1500; ++i) {
        lines += "{\"n\": " + std::to_string(i) + "}\n";
    }
    const Outcome outcome = import(lines + "oops\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, StartsWith("kelb: line 1501: not JSON"));
    EXPECT_THAT(outcome.err, HasSubstr("lines 1 to 1000 are stored, none after them"));
    EXPECT_EQ(run({"db", "query", at("a.mdb"), "select count(*) as n from t"}).out, "{\"n\": 1000}\n");
    EXPECT_EQ(run({"db", "check", at("a.mdb")}).status, 0);
}

TEST_F(DbCommands, PrintsRowsInThreeForms) {
    make("n integer, name varchar(20), body memo");
    import("{\"n\": 7, \"name\": \"电视\", \"body\": \"a,b\"}\n{\"n\": 12, \"name\": \"\"}\n");
    const std::string sql = "select n, name, body from t order by n";
    EXPECT_EQ(run({"db", "query", at("a.mdb"), sql}).out, "{\"n\": 7, \"name\": \"电视\", \"body\": \"a,b\"}\n"
                                                          "{\"n\": 12, \"name\": \"\", \"body\": null}\n");
    EXPECT_EQ(run({"db", "query", at("a.mdb"), sql, "--format", "csv"}).out,
              "n,name,body\r\n7,电视,\"a,b\"\r\n12,\"\",\r\n");
    EXPECT_EQ(run({"db", "query", "--format", "table", at("a.mdb"), sql}).out, " n  name  body\n"
                                                                               "--  ----  ----\n"
                                                                               " 7  电视  a,b\n"
                                                                               "12        \n"
                                                                               "(2 rows)\n");
    EXPECT_EQ(run({"db", "export", at("a.mdb"), "t", "--format", "csv"}).out,
              "n,name,body\r\n7,电视,\"a,b\"\r\n12,\"\",\r\n");
}

TEST_F(DbCommands, TellsTablesAndSchema) {
    make("id int identity(1,1), url varchar(255) not null, price decimal(10,2), body memo");
    run({"db", "exec", at("a.mdb"), "create unique index byUrl on t (url desc)"});
    import("{\"url\": \"a\"}\n{\"url\": \"b\"}\n");
    EXPECT_EQ(run({"db", "tables", at("a.mdb")}).out, "table  rows\n-----  ----\nt         2\n");
    EXPECT_EQ(run({"db", "tables", at("a.mdb"), "--json"}).out, "[{\"name\": \"t\", \"rows\": 2}]\n");
    EXPECT_EQ(run({"db", "schema", at("a.mdb"), "T"}).out, "t\n\n"
                                                           "column  type\n"
                                                           "------  ------------------\n"
                                                           "id      long autonumber\n"
                                                           "url     text(255) not null\n"
                                                           "price   decimal(10,2)\n"
                                                           "body    memo\n"
                                                           "\n"
                                                           "index  on        kind\n"
                                                           "-----  --------  ------\n"
                                                           "byUrl  url desc  unique\n");
    EXPECT_EQ(run({"db", "schema", at("a.mdb"), "--json"}).out,
              "[{\"name\": \"t\", \"columns\": ["
              "{\"name\": \"id\", \"type\": \"long\", \"autonumber\": true, \"required\": false}, "
              "{\"name\": \"url\", \"type\": \"text\", \"size\": 255, \"autonumber\": false, \"required\": true}, "
              "{\"name\": \"price\", \"type\": \"decimal\", \"precision\": 10, \"scale\": 2, \"autonumber\": false, "
              "\"required\": false}, "
              "{\"name\": \"body\", \"type\": \"memo\", \"autonumber\": false, \"required\": false}], "
              "\"indexes\": [{\"name\": \"byUrl\", \"columns\": [{\"name\": \"url\", \"ascending\": false}], "
              "\"unique\": true, \"primary\": false}]}]\n");
}

TEST_F(DbCommands, ExecTellsHowManyRowsChanged) {
    make("n integer");
    import("{\"n\": 1}\n{\"n\": 2}\n");
    EXPECT_EQ(run({"db", "exec", at("a.mdb"), "update t set n=3 where n=1"}).out, "1 row\n");
    EXPECT_EQ(run({"db", "exec", at("a.mdb"), "delete from t"}).out, "2 rows\n");
}

TEST_F(DbCommands, ADryRunChangesNoByte) {
    make("n integer");
    const std::string before = read("a.mdb");
    EXPECT_EQ(run({"--dry-run", "db", "exec", at("a.mdb"), "insert into t (n) values (1)"}).out, "1 row\n");
    EXPECT_EQ(run({"db", "import", at("a.mdb"), "t", "--dry-run"}, "{\"n\": 1}\n").out, "1 row\n");
    EXPECT_EQ(run({"db", "create", at("new.mdb"), "--dry-run"}).status, 0);
    EXPECT_EQ(read("a.mdb"), before);
    EXPECT_FALSE(exists("new.mdb"));
}

TEST_F(DbCommands, CheckListsFaults) {
    make("n integer, name varchar(20)");
    import("{\"n\": 1, \"name\": \"x\"}\n");
    EXPECT_EQ(run({"db", "check", at("a.mdb")}).out, at("a.mdb") + ": 0 errors, 0 warnings\n");
    std::string bytes = read("a.mdb");
    // The type byte of the last page that holds rows.
    std::size_t page = bytes.size() - 4096;
    while (static_cast<unsigned char>(bytes[page]) != 1) {
        page -= 4096;
    }
    bytes[page] = 9;
    write("a.mdb", bytes);
    const Outcome outcome = run({"db", "check", at("a.mdb")});
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("error: page "));
}

struct BadCall {
    const char* name;
    std::vector<std::string> arguments;
    int status;
    const char* told;
};

class DbErrors : public DbCommands, public testing::WithParamInterface<BadCall> {};

TEST_P(DbErrors, AreOneLine) {
    make("n integer");
    std::vector<std::string> arguments = GetParam().arguments;
    for (std::string& word : arguments) {
        if (word.ends_with(".mdb")) {
            word = at(word);
        }
    }
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, GetParam().status);
    EXPECT_THAT(outcome.err, StartsWith("kelb: "));
    EXPECT_THAT(outcome.err, HasSubstr(GetParam().told));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
    EXPECT_EQ(outcome.out, "");
}

INSTANTIATE_TEST_SUITE_P(
    Calls, DbErrors,
    testing::ValuesIn<BadCall>({
        {"missing_file", {"db", "tables", "none.mdb"}, 1, "none.mdb"},
        {"create_over_a_file", {"db", "create", "a.mdb"}, 1, "a.mdb"},
        {"no_such_table", {"db", "query", "a.mdb", "select * from nope"}, 1, "nope"},
        {"change_as_query", {"db", "query", "a.mdb", "Delete  from t"}, 2, "kelb db exec"},
        {"bad_sql", {"db", "exec", "a.mdb", "create tabel x"}, 1, "tabel"},
        {"no_command", {}, 2, "subcommand"},
        {"no_db_command", {"db"}, 2, "subcommand"},
        {"unknown_db_command", {"db", "frob"}, 2, "no command frob"},
        {"unknown_command", {"frobnicate"}, 2, "no command frobnicate"},
        {"unknown_option", {"db", "tables", "a.mdb", "--frob"}, 2, "--frob"},
        {"missing_argument", {"db", "query", "a.mdb"}, 2, "SQL"},
        {"bad_format", {"db", "query", "a.mdb", "t", "--format", "xml"}, 2, "xml"},
        {"missing_home", {"--home", "/no/such/folder", "db", "tables", "a.mdb"}, 1, "/no/such/folder"},
        {"missing_settings", {"db", "tables", "a.mdb", "--ini", "/no/such.ini"}, 1, "/no/such.ini"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(DbCommands, ABadSettingIsAUsageError) {
    write("home/Kelb.ini", "[Forum]\r\nimportCid=many\r\n");
    const Outcome outcome = run({"db", "tables", at("a.mdb")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "kelb: [Forum] importCid: \"many\" is not a number\n");
}

TEST_F(DbCommands, HelpAndVersionGoToStandardOutput) {
    for (const auto& [arguments, told] : std::initializer_list<std::pair<std::vector<std::string>, const char*>>{
             {{"--version"}, "kelb 0."},
             {{"--help"}, "forum-import"},
             {{"forum-import", "--help"}, "--lan-folder"},
             {{"db", "query", "--help"}, "--format"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.out, HasSubstr(told));
        EXPECT_EQ(outcome.err, "");
    }
}

} // namespace
} // namespace kelb::cli
