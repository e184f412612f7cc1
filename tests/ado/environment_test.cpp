#include "tests/ado/ado_fixture.h"

#include "ado/shared_database.h"

#include <filesystem>
#include <random>
#include <system_error>
#include <tuple>

namespace kelb::ado::testing {
namespace {

class Connecting : public AdoFixture {
public:
    Connecting() {
        execute(u"create table t (a varchar(20))");
        execute(u"insert into t values ('x')");
    }
    std::optional<Caught> opening(std::u16string_view text, Connection::Mode mode = Connection::Mode::Default) {
        return errorOf([&] {
            Connection other(*environment);
            other.mode = mode;
            other.Open(text);
        });
    }
};

TEST_F(Connecting, TakesEveryWayToNameTheFile) {
    for (const std::u16string& text :
         {jetConnectionString(path), path, u"  " + path + u" ", u"d:/kelbfolder/COMB.MDB" + std::u16string(),
          u"Provider=Microsoft.ACE.OLEDB.12.0;Data Source=" + path,
          u"provider=microsoft.jet.oledb.4.0;data source=" + path + u";Persist Security Info=False",
          jetConnectionString(jetConnectionString(path))}) {
        Connection other(*environment);
        other.Open(text);
        EXPECT_EQ(other.State(), ObjectState::Open);
        EXPECT_EQ(other.Execute(u"update t set a = a"), 1U) << platform::toUtf8(text);
    }
}

TEST_F(Connecting, SaysWhyNot) {
    files.writeFile(u"D:\\text.mdb", "no database, but long enough to have a header to look at");
    const std::tuple<const char16_t*, const char*> cases[] = {
        {u"D:\\nosuch.mdb", "D:\\nosuch.mdb: there is no such file"},
        {u"D:\\text.mdb", "D:\\text.mdb"},
        {u"Provider=Microsoft.Jet.OLEDB.4.0", "names no database"},
        {u"Provider=SQLOLEDB;Server=x;Password=geheim", "Password=***"},
        {u"hello", "no provider"},
    };
    for (const auto& [text, says] : cases) {
        const auto caught = opening(text);
        ASSERT_TRUE(caught) << platform::toUtf8(text);
        EXPECT_EQ(caught->kind, Error::Kind::Connection) << caught->text;
        EXPECT_NE(caught->text.find(says), std::string::npos) << caught->text;
        EXPECT_EQ(caught->text.find("geheim"), std::string::npos);
    }
    Connection closed(*environment);
    EXPECT_EQ(errorOf([&] { closed.Execute(u"delete from t"); })->kind, Error::Kind::Connection);
    EXPECT_EQ(errorOf([&] { connection->Open(path); })->kind, Error::Kind::Connection);
}

TEST_F(Connecting, AnUnmappedDriveNamesTheKey) {
    const auto real = platform::makeSystemFileSystem({});
    platform::Platform onDisk{*real, clock, random, u""};
    Environment run(onDisk, {});
    Connection other(run);
    const auto caught = errorOf([&] { other.Open(u"Q:\\x.mdb"); });
    ASSERT_TRUE(caught);
    EXPECT_EQ(caught->kind, Error::Kind::Connection);
#ifdef _WIN32 // where drives are the system's own
    constexpr std::string_view kAdvice = "there is no drive Q:";
#else
    constexpr std::string_view kAdvice = "[Drives]";
#endif
    EXPECT_NE(caught->text.find(kAdvice), std::string::npos) << caught->text;
}

/// A database that cannot be written is read, and every attempt to change it is told the reason.
TEST_F(Connecting, FallsBackToReading) {
    connection->Close();
    files.writeFile(u"D:\\KelbFolder\\Comb.ldb", "");
    connection->Open(path);
    EXPECT_EQ(rows(u"select * from t"), "x");
    Recordset set = open(u"select * from t");
    for (const auto& caught :
         {errorOf([&] { execute(u"delete from t"); }), errorOf([&] { execute(u"create table u (a int)"); }),
          errorOf([&] { execute(u"alter table t add b int"); }), errorOf([&] { set.AddNew(); }),
          errorOf([&] { set.set(u"a", u"y"); }), errorOf([&] { set.Delete(); })}) {
        ASSERT_TRUE(caught);
        EXPECT_EQ(caught->kind, Error::Kind::ReadOnly) << caught->text;
        EXPECT_NE(caught->text.find("Comb.ldb"), std::string::npos) << caught->text;
    }
    set.Close();
    EXPECT_NE(opening(path, Connection::Mode::Write)->text.find("Comb.ldb"), std::string::npos);
    connection->Close();
    start({.dryRun = false, .ignoreLockFile = true});
    EXPECT_EQ(execute(u"delete from t"), 1U);
}

TEST_F(Connecting, WriteModeRefusesAtOnce) {
    connection->Close();
    files.setReadOnly(path);
    const auto caught = opening(path, Connection::Mode::Write);
    ASSERT_TRUE(caught);
    EXPECT_EQ(caught->kind, Error::Kind::Connection);
    EXPECT_FALSE(opening(path));
    const auto lock = files.open(path, platform::OpenMode::Read);
    EXPECT_FALSE(opening(path, Connection::Mode::Read)); // others may read along
}

/// A job may read its source and write its destination, and both may be one file.
TEST_F(Connecting, AReaderDoesNotKeepAWriterOut) {
    connection->Close();
    connection->mode = Connection::Mode::Read;
    connection->Open(path);
    Recordset read = open(u"select * from t", LockType::ReadOnly), lazy = open(u"t", LockType::ReadOnly);
    EXPECT_EQ(read.text(u"a"), u"x");
    Connection writer(*environment);
    writer.mode = Connection::Mode::Write;
    writer.Open(path);
    writer.Execute(u"insert into t values ('y')");
    writer.Execute(u"update t set a = a & '!'");
    EXPECT_EQ(show(read), "x!");
    EXPECT_EQ(show(lazy), "x!");
    EXPECT_EQ(rows(u"select * from t"), "x! / y!");
}

/// What was opened for writing beside a reader is other programs' to read again when it need not be written any more.
TEST_F(Connecting, LeavesADatabaseToReadersOnceNobodyMayWriteIt) {
    connection->Close();
    Environment otherProgram(platform_, {});
    const auto othersCanRead = [&] {
        Connection other(otherProgram);
        other.mode = Connection::Mode::Read;
        return !errorOf([&] { other.Open(path); });
    };
    connection->mode = Connection::Mode::Read;
    connection->Open(path);
    Recordset read = open(u"select * from t", LockType::ReadOnly);
    {
        Connection writer(*environment);
        writer.Open(path);
        writer.Execute(u"insert into t values ('y')");
        environment->leaveToReaders(path);
        EXPECT_FALSE(othersCanRead());
        writer.Execute(u"update t set a = a & '!'");
    }
    EXPECT_FALSE(othersCanRead());
    environment->leaveToReaders(path);
    EXPECT_TRUE(othersCanRead());
    EXPECT_EQ(show(read), "x!");
    EXPECT_EQ(rows(u"select * from t"), "x! / y!");
}

TEST_F(Connecting, ALentDatabaseKeepsItsAccess) {
    connection->Close();
    const auto lent = environment->openDatabase(path, jet::Pager::Access::Read);
    EXPECT_EQ(opening(path, Connection::Mode::Write)->kind, Error::Kind::Connection);
    EXPECT_EQ(lent->table(u"t").rowCount(), 1U);
    EXPECT_EQ(environment->openDatabase(u"D:/KELBFOLDER/comb.mdb", jet::Pager::Access::Read), lent);
    EXPECT_TRUE(errorOf([&] { environment->openDatabase(path, jet::Pager::Access::Scratch); }));
}

TEST_F(Connecting, ADryRunSeesItsOwnChangesAndLeavesNone) {
    connection->Close();
    const std::string before = files.readFile(path);
    start({.dryRun = true, .ignoreLockFile = false});
    execute(u"insert into t values ('y')");
    execute(u"alter table t add b yesno");
    connection->mode = Connection::Mode::Read;
    connection->Close();
    connection->Open(path);
    EXPECT_EQ(rows(u"select * from t"), "x|False / y|False"); // though every connection was closed in between
    start({.dryRun = true, .ignoreLockFile = false});
    EXPECT_EQ(rows(u"select * from t"), "x"); // the next run
    Connection reader(*environment);
    reader.mode = Connection::Mode::Read;
    reader.Open(path);
    execute(u"insert into t values ('y')");
    environment->flushAll();
    Recordset set;
    set.Open(u"t", reader);
    EXPECT_EQ(show(set), "x / y");
    EXPECT_EQ(files.readFile(path), before);
}

TEST_F(Connecting, CloseAndTheIntervalSave) {
    execute(u"insert into t values ('y')");
    const std::string before = files.readFile(path);
    connection->flushIfDue();
    EXPECT_EQ(files.readFile(path), before);
    clock.seconds += 1;
    connection->flushIfDue();
    const std::string after = files.readFile(path);
    EXPECT_NE(after, before);
    execute(u"insert into t values ('z')");
    connection->Close();
    EXPECT_NE(files.readFile(path), after);
}

TEST_F(Connecting, AFullDiskIsToldAndTakesNothingSaved) {
    connection->Close();
    connection->Open(path);
    execute(u"insert into t values ('y')");
    files.beforeOperation = [](std::string_view operation, std::u16string_view file) {
        if (operation == "write") {
            throw platform::FileError(platform::FileError::Kind::NoSpace, operation, file, 28, "the disk is full");
        }
    };
    const auto caught = errorOf([&] { connection->Close(); });
    ASSERT_TRUE(caught);
    EXPECT_EQ(caught->kind, Error::Kind::Io);
    EXPECT_NE(caught->text.find("the disk is full"), std::string::npos) << caught->text;
    EXPECT_EQ(connection->State(), ObjectState::Closed);
    files.beforeOperation = nullptr;
    connection->Open(path);
    EXPECT_EQ(rows(u"select * from t"), "x");
    EXPECT_EQ(faults(), "");
}

TEST_F(Connecting, ListsTheTables) {
    execute(u"create table 表 (a int)");
    execute(u"create table B (a int)");
    Recordset tables;
    connection->OpenSchema(tables);
    EXPECT_EQ(tables.field(0).name, u"TABLE_NAME");
    EXPECT_EQ(tables.field(1).name, u"TABLE_TYPE");
    const std::string shown = show(tables);
    EXPECT_EQ(shown.find("B|TABLE / "), 0U) << shown;
    EXPECT_NE(shown.find(" / t|TABLE / 表|TABLE"), std::string::npos) << shown;
    EXPECT_NE(shown.find("MSysObjects|SYSTEM TABLE"), std::string::npos) << shown;
    EXPECT_EQ(errorOf([&] { tables.AddNew(); })->kind, Error::Kind::ReadOnly);
}

/// Links and "." lead to the same engine: with two of them the second could not even be opened.
TEST(OnDisk, PathsOfOneFileShareOneEngine) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / ("kelb-ado-" + std::to_string(std::random_device{}()));
    fs::create_directories(folder);
    const auto real = platform::makeSystemFileSystem({});
    StandingClock clock;
    platform::SystemRandom random;
    platform::Platform platform{*real, clock, random, u""};
    const std::u16string file = platform::fromUtf8((folder / "One.mdb").string());
    jet::Database::create(platform, file)->commit();
#ifdef _WIN32 // where this library makes links of one kind only
    fs::create_hard_link(folder / "One.mdb", folder / "link.mdb");
#else
    fs::create_symlink(folder / "One.mdb", folder / "link.mdb");
#endif
    {
        Environment run(platform, {});
        Connection first(run), second(run), third(run);
        first.Open(file);
        second.Open(platform::fromUtf8((folder / "." / "one.MDB").string()));
        third.Open(platform::fromUtf8((folder / "link.mdb").string()));
        first.Execute(u"create table t (a int)");
        second.Execute(u"insert into t values (1)");
        EXPECT_EQ(third.Execute(u"delete from t"), 1U);
        // Another program finds it locked.
        Environment program(platform, {});
        Connection outside(program);
        EXPECT_EQ(errorOf([&] { outside.Open(file); })->kind, Error::Kind::Connection);
    }
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

} // namespace
} // namespace kelb::ado::testing
