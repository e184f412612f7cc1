#include "jobs/undo.h"

#include "jobs/dedupe_dest.h"
#include "jobs/dedupe_source.h"
#include "jobs/job_error.h"
#include "jobs/trash_record.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

#include <limits>

namespace kelb::jobs {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

/// A clock that tells another second every time, so that runs are in order.
class TickingClock final : public platform::Clock {
public:
    platform::DateTime now() const override {
        ++second_;
        return {2015, 12, 2, 8, second_ / 60, second_ % 60};
    }
    double steadySeconds() const override { return 0; }

private:
    mutable int second_ = 0;
};

class UndoTest : public JobTest {
protected:
    UndoTest() { files.makeFolders(u"X:\\lan\\crawl"); }
    void TearDown() override { files.beforeOperation = nullptr; }

    Context& machine() {
        if (!machine_) {
            machine_.emplace(platform::Platform{files, ticking, random, u"X:\\home"},
                             configuration({{u"Dedup.forumSite1", u"/b/"}, {u"Safety.maxDeletePercent", u"100"}}),
                             ado::Environment::Options{});
            machine_->setTrashFolder(trash);
        }
        return *machine_;
    }
    /// A new program.
    void restart() { machine_.reset(); }

    JobSummary undo(const UndoOptions& options = {}) {
        JobSummary summary(kUndoJob);
        undoTrash(options, machine(), host, summary);
        return summary;
    }
    /// As undo(), for runs that leave something; what was told.
    std::string undoFails() {
        host.entries.clear();
        EXPECT_THROW(undo(), JobError);
        std::string told;
        for (const std::u16string& entry : host.entries) {
            told += platform::toUtf8(entry) + "\n";
        }
        return told;
    }

    /// Deletes rows of a table as a job does.
    void deleteRows(std::u16string_view database, const std::u16string& table, const std::u16string& where) {
        const auto disposal = machine().disposal("test-job");
        ado::Connection connection(machine().databases());
        connection.Open(ado::jetConnectionString(database));
        ado::Recordset set;
        set.Open(u"select * from " + table + where, connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
        for (; !set.Eof(); set.MoveNext()) {
            disposal->deleteRow(set, {database, table});
        }
        set.Close();
        connection.Close();
        disposal->finish();
    }
    void dedupe() {
        JobSummary summary(kDedupeSourceJob);
        dedupeSource({std::u16string(kSource)}, machine(), host, summary);
    }
    /// In the order in which they lie in the file.
    std::vector<std::string> crawlRows() { return rows(kSource, u"select * from bbsforum"); }

    /// Every page file with its text.
    std::map<std::u16string, std::string> pages() {
        std::map<std::u16string, std::string> all;
        for (const std::u16string& name : files.listFiles(u"X:\\lan\\crawl")) {
            all[name] = files.readFile(u"X:\\lan\\crawl\\" + name);
        }
        return all;
    }

    TickingClock ticking;
    std::u16string trash = u"X:\\trash";

private:
    std::optional<Context> machine_;
};

TEST_F(UndoTest, PutsRowsAndPageFilesOfAJobBack) {
    crawl(u"1-1-1", {u"甲"});
    crawl(u"1-1-1", {u"乙"}); // the same file: it goes once
    crawl(u"2-1-1", {});      // no file
    crawl(u"3-1-1", {u"丙"});
    execute(kSource, {u"insert into bbsforum (content) values ('D:\\crawl\\3-1-1.htm')"});
    const auto rowsBefore = crawlRows();
    const auto pagesBefore = pages();
    dedupe();
    ASSERT_EQ(crawlRows().size(), 1U);
    ASSERT_EQ(pages().size(), 0U);
    host.entries.clear();
    const JobSummary summary = undo();
    EXPECT_EQ(crawlRows(), rowsBefore);
    EXPECT_EQ(pages(), pagesBefore);
    EXPECT_EQ(summary.saved, 4U);
    EXPECT_EQ(summary.counts, (std::vector<std::pair<std::string, std::size_t>>{{"restoredFiles", 2}}));
    EXPECT_THAT(host.entries, ElementsAre(u"dedupe-source-20151202-080001: 4 rows and 2 files put back"));

    const JobSummary again = undo();
    EXPECT_EQ(again.note, "nothing in the trash is left to be put back");
    EXPECT_EQ(crawlRows(), rowsBefore);
    execute(kSource, {u"insert into bbsforum (url) values ('new')"}); // the table counts on
    EXPECT_THAT(rows(kSource, u"select id from bbsforum where url='new'"), ElementsAre("6"));
}

TEST_F(UndoTest, RestoresEveryValueExactly) {
    using namespace ado;
    execute(kDest, {u"create table v (id int identity(1,1), a varchar(20), m memo, y yesno, b byte, s short, l long, "
                    u"c currency, f single, d double, t datetime, x longbinary, g guid, n decimal(20,5))"});
    const std::vector<std::vector<Value>> values{
        {u"", std::u16string(5000, u'长'), true, std::uint8_t{255}, std::int16_t{-32768}, std::int32_t{-5},
         Currency{-1}, 0.1F, 0.1, OleDate{42340.354166666664}, ado::Binary{std::byte{0}, std::byte{255}},
         u"{00112233-4455-6677-8899-AABBCCDDEEFF}", u"-123456.78901"},
        {std::u16string{u'x', char16_t{0xD842}}, std::u16string{u'a', u'\0', u'"', u'\\', u'\r', u'\n'}, false,
         std::uint8_t{0}, std::int16_t{0}, std::numeric_limits<std::int32_t>::max(), Currency{922337203685477}, -0.0F,
         -0.0, OleDate{42340.12345678901}, ado::Binary{std::byte{7}}, Null{}, Null{}},
        {Null{}, Null{}, false, Null{}, Null{}, Null{}, Null{}, std::numeric_limits<float>::denorm_min(),
         std::numeric_limits<double>::max(), OleDate{-0.75}, Null{}, Null{}, u"0.00001"},
    };
    const auto readAll = [&] {
        std::vector<std::string> lines; // by the bits, so that 0 and -0 differ
        ado::Connection connection(machine().databases());
        connection.Open(ado::jetConnectionString(kDest));
        for (Recordset set =
                 [&] {
                     Recordset all;
                     all.Open(u"select * from v order by id", connection);
                     return all;
                 }();
             !set.Eof(); set.MoveNext()) {
            std::string line;
            for (std::size_t i = 0; i < set.fieldCount(); ++i) {
                const Value value = set.value(i);
                if (const auto* number = std::get_if<double>(&value)) {
                    line += std::to_string(std::bit_cast<std::uint64_t>(*number));
                } else if (const auto* single = std::get_if<float>(&value)) {
                    line += std::to_string(std::bit_cast<std::uint32_t>(*single));
                } else if (const auto* date = std::get_if<OleDate>(&value)) {
                    line += std::to_string(std::bit_cast<std::uint64_t>(date->days));
                } else if (const auto* text = std::get_if<std::u16string>(&value)) {
                    for (const char16_t unit : *text) {
                        line += std::to_string(static_cast<unsigned>(unit)) + " ";
                    }
                } else {
                    line += std::to_string(value.index()) + platform::toUtf8(toText(value));
                }
                line += "|";
            }
            lines.push_back(line);
        }
        return lines;
    };
    {
        ado::Connection connection(machine().databases());
        connection.Open(ado::jetConnectionString(kDest));
        Recordset set;
        set.Open(u"v", connection, CursorType::Keyset, LockType::Optimistic);
        for (const auto& row : values) {
            set.AddNew();
            for (std::size_t i = 0; i < row.size(); ++i) {
                if (!isNull(row[i])) {
                    set.set(i + 1, row[i]);
                }
            }
            set.Update();
        }
    }
    const std::vector<std::string> before = readAll();
    deleteRows(kDest, u"v", u"");
    ASSERT_TRUE(readAll().empty());
    EXPECT_EQ(undo().saved, 3U);
    EXPECT_EQ(readAll(), before);
}

TEST_F(UndoTest, TheNewestRunComesFirstAndNothingIsOverwritten) {
    crawl(u"1-1-1", {});
    saveFile(u"1-1-1", u"first");
    execute(kSource, {u"update bbsforum set url=NULL"});
    dedupe();
    execute(kSource, {u"insert into bbsforum (content) values ('D:\\crawl\\1-1-1.htm')"});
    saveFile(u"1-1-1", u"second");
    dedupe();
    const std::string told = undoFails();
    EXPECT_THAT(told, HasSubstr("dedupe-source-20151202-080004: 1 row and 1 file put back\n"
                                "dedupe-source-20151202-080001: X:\\lan\\crawl\\1-1-1.htm is there again and is not "
                                "overwritten; the deleted one stays as "
                                "X:\\trash\\dedupe-source-20151202-080001\\crawl\\1-1-1.htm\n"));
    EXPECT_EQ(files.readFile(filePath(u"1-1-1")), "second");
    EXPECT_THAT(rows(kSource, u"select id from bbsforum order by id"), ElementsAre("1", "2"));
    files.removeFile(filePath(u"1-1-1")); // the way is free now
    undo();
    EXPECT_EQ(files.readFile(filePath(u"1-1-1")), "first");
    EXPECT_EQ(crawlRows().size(), 2U) << "no row twice";
}

TEST_F(UndoTest, OneRunCanBeChosen) {
    execute(kSource, {u"insert into bbsforum (url) values ('a')", u"insert into bbsforum (url) values ('b')"});
    deleteRows(kSource, u"bbsforum", u" where url='a'");
    deleteRows(kSource, u"bbsforum", u" where url='b'");
    undo({.trash = u"", .run = u"test-job-20151202-080001"});
    EXPECT_THAT(rows(kSource, u"select url from bbsforum"), ElementsAre("a"));
    undo({.trash = u"X:\\trash\\test-job-20151202-080004", .run = u""});
    EXPECT_EQ(crawlRows().size(), 2U);
    EXPECT_THROW(undo({.trash = u"", .run = u"none"}), JobError);
}

TEST_F(UndoTest, ARowWhoseNumberIsTakenStaysInTheTrash) {
    execute(kSource, {u"insert into bbsforum (url) values ('a')", u"insert into bbsforum (url) values ('b')"});
    deleteRows(kSource, u"bbsforum", u"");
    execute(kSource, {u"insert into bbsforum (id, url) values (1, 'other')"});
    EXPECT_THAT(undoFails(), HasSubstr("table bbsforum: a row stays in the trash: another row has its number now: "
                                       "{\"id\": 1, \"url\": \"a\""));
    EXPECT_THAT(rows(kSource, u"select id, url from bbsforum order by id"), ElementsAre("1|other", "2|b"));
}

TEST_F(UndoTest, AUniqueIndexRefusesARowAndTheOthersGoOn) {
    execute(kDest, {u"create table u (url varchar(20))", u"create unique index i on u(url)",
                    u"insert into u values ('a')", u"insert into u values ('b')"});
    deleteRows(kDest, u"u", u"");
    execute(kDest, {u"insert into u values ('a')"});
    undoFails();
    EXPECT_THAT(rows(kDest, u"select url from u order by url"), ElementsAre("a", "b"));
}

TEST_F(UndoTest, EqualRowsOfATableWithoutNumbersAllComeBack) {
    execute(kDest, {u"create table wxGG (url varchar(20), recTime datetime)", u"insert into wxGG (url) values ('a-1')",
                    u"insert into wxGG (url) values ('a-1')", u"insert into wxGG (url) values ('a-1')"});
    JobSummary summary(kDedupeDestJob);
    dedupeDest({std::u16string(kDest), u""}, machine(), host, summary);
    ASSERT_EQ(rows(kDest, u"select * from wxGG").size(), 1U);
    undo();
    EXPECT_EQ(rows(kDest, u"select * from wxGG").size(), 3U);
}

TEST_F(UndoTest, AMissingTableOrDatabaseIsToldOnceAndKeepsTheRun) {
    execute(kDest, {u"create table t (n int)", u"insert into t values (1)", u"insert into t values (2)"});
    deleteRows(kDest, u"t", u"");
    const std::string database = files.readFile(kDest);
    restart();
    files.removeFile(kDest);
    EXPECT_THAT(undoFails(), HasSubstr("table t: 2 rows stay in the trash: cannot open the database X:\\wxdb.mdb"));
    files.writeFile(kDest, database);
    EXPECT_EQ(undo().saved, 2U);
    EXPECT_THAT(rows(kDest, u"select n from t order by n"), ElementsAre("1", "2"));
}

TEST_F(UndoTest, ARunThatGoesOnOrIsDamagedIsLeftAlone) {
    files.makeFolders(u"X:\\trash\\going-on");
    files.makeFolders(u"X:\\trash\\older");
    files.writeFile(u"X:\\trash\\older\\deleted-rows.jsonl", "{}\n");
    for (const auto& [name, record] : std::map<std::u16string, std::string>{
             {u"garbled", "{\"run\": \"j\"\n{\"file\": \"X:\\\\a\", \"kept\": \"a\"}\n"},
             {u"escape", "{\"file\": \"X:\\\\a\", \"kept\": \"../a\"}\n"},
             {u"no-row", "{\"row\": 1, \"database\": \"d\", \"table\": \"t\"}\n"}}) {
        files.writeFile(u"X:\\trash\\" + name + u"\\undo.jsonl", record);
        files.writeFile(u"X:\\trash\\" + name + u"\\deleted-rows.jsonl", "");
    }
    const TrashRecord running(machine().platform(), u"X:\\trash\\going-on", u"job");
    const std::string told = undoFails();
    for (const char* part : {"going-on: ", "older: has no undo.jsonl", "undo.jsonl, line 1: the line cannot be read",
                             "\"kept\" leads out of the folder", "row 1 is missing in deleted-rows.jsonl"}) {
        EXPECT_THAT(told, HasSubstr(part));
    }
}

TEST_F(UndoTest, ARunThatCannotBeReadIsNotToldAsMissingOrDone) {
    files.writeFile(u"X:\\trash\\garbled\\undo.jsonl", "?\n{\"end\": \"\"}\n");
    JobSummary summary(kUndoJob);
    for (const UndoOptions& options : {UndoOptions{}, UndoOptions{.trash = u"", .run = u"garbled"}}) {
        host.entries.clear();
        try {
            undoTrash(options, machine(), host, summary);
            FAIL() << "the run stays in the trash";
        } catch (const JobError& error) {
            EXPECT_THAT(error.what(), HasSubstr("could not be put back and stay in the trash"));
        }
        ASSERT_EQ(host.entries.size(), 1U);
        EXPECT_THAT(platform::toUtf8(host.entries.front()), HasSubstr("garbled: "));
        EXPECT_EQ(summary.note, "");
    }
}

TEST_F(UndoTest, NeedsATrashFolder) {
    machine().setTrashFolder(u"");
    EXPECT_THROW(undo(), SettingError);
    EXPECT_THROW(undo({.trash = u"X:\\none", .run = u""}), platform::FileError);
}

struct Kill : std::exception {};

/// What a killed job or undo leaves, for a kill before the nth operation on the disk; undoing once more must restore
/// everything exactly once.
class UndoAfterAKill : public UndoTest {
protected:
    /// Runs `work` until its nth operation; false when it got through.
    bool killed(std::size_t nth, const std::function<void()>& work) {
        std::size_t done = 0;
        bool dead = false;
        files.beforeOperation = [&](std::string_view, std::u16string_view) {
            dead = dead || done++ == nth;
            if (dead) {
                throw Kill();
            }
        };
        try {
            work();
        } catch (const std::exception&) { // what a dying program tells is of no matter
        }
        restart(); // nothing that is not on the disk yet gets there
        files.beforeOperation = nullptr;
        return dead;
    }
    /// A trash of its own for each round, so that a round has no more to do than the one before.
    void beginRound(std::size_t nth) {
        restart();
        trash = u"X:\\trash" + platform::fromUtf8(std::to_string(nth));
    }
    void fill() {
        for (const char16_t* page : {u"1-1-1", u"2-1-1", u"1-1-1"}) {
            crawl(page, {u"内容"});
        }
        execute(kSource, {u"insert into bbsforum (content) values ('D:\\crawl\\2-1-1.htm')"});
        execute(kDest, {u"create table wxGG (url varchar(20), recTime datetime)",
                        u"insert into wxGG (url) values ('a-1')", u"insert into wxGG (url) values ('a-2')"});
    }
    void deleteAll() {
        dedupe();
        JobSummary summary(kDedupeDestJob);
        dedupeDest({std::u16string(kDest), u""}, machine(), host, summary);
    }
    std::string state() {
        std::string text;
        for (const auto& [database, table] : {std::pair(kSource, u"bbsforum"), std::pair(kDest, u"wxGG")}) {
            for (const std::string& row : rows(database, u"select * from " + std::u16string(table))) {
                text += row + "\n";
            }
        }
        for (const auto& [name, page] : pages()) {
            text += platform::toUtf8(name) + ": " + page + "\n";
        }
        return text;
    }
};

TEST_F(UndoAfterAKill, OfAJob) {
    fill();
    const std::string before = state();
    std::size_t nth = 0;
    for (;; ++nth) {
        beginRound(nth);
        if (!killed(nth, [this] { deleteAll(); })) {
            break;
        }
        if (files.folderExists(trash)) {
            undo();
        }
        ASSERT_EQ(state(), before) << "operation " << nth;
    }
    EXPECT_GT(nth, 30U);
    EXPECT_NE(state(), before);
}

TEST_F(UndoAfterAKill, OfItself) {
    fill();
    const std::string before = state();
    std::size_t nth = 0;
    for (;; ++nth) {
        beginRound(nth);
        deleteAll();
        ASSERT_NE(state(), before);
        if (!killed(nth, [this] { undo(); })) {
            break;
        }
        undo();
        ASSERT_EQ(state(), before) << "operation " << nth;
    }
    EXPECT_EQ(state(), before);
    EXPECT_GT(nth, 20U);
}

} // namespace
} // namespace kelb::jobs
