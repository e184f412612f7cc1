#include "tests/cli/program_fixture.h"

#include <gmock/gmock.h>

namespace kelb::cli {
namespace {

using testing::HasSubstr;

class DbCopyCommands : public ProgramTest {
protected:
    void SetUp() override {
        run({"db", "create", at("a.mdb")});
        run({"db", "exec", at("a.mdb"),
             "create table t (id int identity(1,1) primary key, name varchar(20), body memo)"});
        std::string lines;
        for (int i = 0; i < 300; ++i) {
            lines += "{\"name\": \"" + std::to_string(i) + "\", \"body\": \"" + std::string(2000, 'b') + "\"}\n";
        }
        ASSERT_EQ(run({"db", "import", at("a.mdb"), "t"}, lines).status, 0);
        ASSERT_EQ(run({"db", "exec", at("a.mdb"), "delete from t where id > 20"}).status, 0);
    }
    std::string exported(const std::string& file) { return run({"db", "export", at(file), "t"}).out; }
    /// Noise over every page of long values.
    std::string damaged() {
        std::string bytes = read("a.mdb");
        for (std::size_t page = 0; page < bytes.size(); page += 4096) {
            if (bytes.compare(page, 2, "\x01\x01") == 0 && bytes.compare(page + 4, 4, "LVAL") == 0) {
                bytes.replace(page, 4096, std::string(4096, '\x55'));
            }
        }
        return bytes;
    }
};

TEST_F(DbCopyCommands, CompactWritesASmallerDatabaseOnce) {
    const Outcome done = run({"db", "compact", at("a.mdb"), at("b.mdb"), "--quiet"});
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.err, "");
    EXPECT_EQ(done.out, at("b.mdb") + ": 1 table, 20 rows, 1 index; " + std::to_string(read("a.mdb").size()) +
                            " bytes became " + std::to_string(read("b.mdb").size()) + "\n");
    EXPECT_LT(4 * read("b.mdb").size(), read("a.mdb").size());
    EXPECT_EQ(exported("b.mdb"), exported("a.mdb"));
    EXPECT_EQ(run({"db", "check", at("b.mdb")}).out, at("b.mdb") + ": 0 errors, 0 warnings\n");
    EXPECT_FALSE(exists("b.mdb.part"));
    const Outcome again = run({"db", "compact", at("a.mdb"), at("b.mdb")});
    EXPECT_EQ(again.status, 1);
    EXPECT_THAT(again.err, HasSubstr("b.mdb"));
    EXPECT_EQ(exported("b.mdb"), exported("a.mdb"));
    EXPECT_EQ(run({"db", "compact", at("a.mdb"), at("c.mdb"), "--dry-run", "--quiet"}).status, 0);
    EXPECT_FALSE(exists("c.mdb"));
}

TEST_F(DbCopyCommands, RecoverTellsWhatIsLostAndEndsWithOne) {
    EXPECT_EQ(run({"db", "recover", at("a.mdb"), at("whole.mdb"), "--quiet"}).status, 0);
    EXPECT_EQ(exported("whole.mdb"), exported("a.mdb"));

    write("bad.mdb", damaged());
    EXPECT_EQ(run({"db", "compact", at("bad.mdb"), at("b.mdb"), "--quiet"}).status, 1);
    const Outcome told = run({"db", "recover", at("bad.mdb"), at("b.mdb"), "--quiet"});
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.err, HasSubstr("lost: table t, page "));
    EXPECT_THAT(told.err, HasSubstr(", field body: "));
    EXPECT_THAT(told.out, HasSubstr("1 table, 20 rows, 1 index; lost: 0 pages, 0 rows, 20 fields, 0 other\n"));
    const Outcome reported =
        run({"db", "recover", at("bad.mdb"), at("c.mdb"), "--report", at("lost.jsonl"), "--quiet"});
    EXPECT_EQ(reported.status, 1);
    EXPECT_THAT(reported.err, testing::Not(HasSubstr("lost: ")));
    EXPECT_THAT(read("lost.jsonl"), HasSubstr("{\"kind\": \"field\", \"table\": \"t\", \"page\": "));
    EXPECT_THAT(read("lost.jsonl"), HasSubstr(", \"field\": \"body\", \"reason\": "));
    EXPECT_THAT(read("lost.jsonl"), HasSubstr("\n{\"tables\": "));
    EXPECT_EQ(run({"db", "check", at("c.mdb")}).status, 0);
}

TEST_F(DbCopyCommands, RecoverRefusesWhatIsNoDatabase) {
    write("text.mdb", std::string(30000, 'x'));
    const Outcome outcome = run({"db", "recover", at("text.mdb"), at("b.mdb")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("is not an Access database"));
    EXPECT_FALSE(exists("b.mdb"));
}

} // namespace
} // namespace kelb::cli
