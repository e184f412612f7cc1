#include "ado/odbc_provider.h"
#include "tests/odbc/odbc_fixture.h"

#include <chrono>
#include <tuple>

namespace kelb::ado::testing {
namespace {

class OdbcFailures : public OdbcFixture {
protected:
    struct Refusal {
        Error::Kind kind;
        std::string text, state;
        double seconds;
    };
    std::optional<Refusal> opening(const std::u16string& text, std::chrono::seconds loginTimeout) {
        Environment run(platform_, {});
        run.add(std::make_unique<OdbcProvider>(loginTimeout));
        const auto begun = std::chrono::steady_clock::now();
        try {
            Connection other(run);
            other.Open(text);
        } catch (const Error& error) {
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
            return Refusal{error.kind(), error.what(), error.state(), taken.count()};
        }
        return std::nullopt;
    }
    std::u16string withPort(std::u16string_view port) {
        return u"driver={sql server};server=127.0.0.1;port=" + std::u16string(port) +
               u";Database=wxDB;uid=sa;pwd=geheim";
    }
};

TEST_F(OdbcFailures, SayWhoWasAskedAndNeverThePassword) {
    const std::tuple<std::u16string, const char*, const char*> cases[] = {
        {withPort(u"1"), "08001", "driver sql server, server 127.0.0.1, port 1, database wxDB"},
        {u"driver={sql server};server=127.0.0.1;Database=nosuch;uid=sa;pwd=geheim", "08001", "nosuch"},
        {u"driver={sql server};server=127.0.0.1;Database=wxDB;uid=geheimrat;pwd=geheim", "08001", "server 127.0.0.1"},
        {u"driver={no such driver};server=h;pwd=geheim", "IM002", "installed are: SQL Server"},
        {u"driver=/nowhere/libx.so;server=h;pwd=geheim", "01000", "/nowhere/libx.so"},
        {u"DSN=nosuch;pwd=geheim", "IM002", "data source nosuch"},
        {u"driver={sql server;pwd=geheim", "IM002", "installed are: SQL Server"},
        {u"driver={sql server};pwd=geheim" + std::u16string(40'000, u'x'), "", "too long"},
        {u"driver={sql server};pwd=geheim;server=a" + std::u16string(1, u'\0'), "", "character 0"},
    };
    for (const auto& [text, state, says] : cases) {
        const auto caught = opening(text, std::chrono::seconds(5));
        ASSERT_TRUE(caught) << platform::toUtf8(text.substr(0, 100));
        EXPECT_EQ(caught->kind, Error::Kind::Connection) << caught->text;
        EXPECT_EQ(caught->state, state) << caught->text;
        EXPECT_NE(caught->text.find(says), std::string::npos) << caught->text;
        EXPECT_EQ(caught->text.find("geheim"), std::string::npos) << caught->text;
        EXPECT_EQ(caught->text.find('\n'), std::string::npos) << caught->text;
    }
}

TEST_F(OdbcFailures, StatementsAreToldWithTheirState) {
    const std::tuple<const char16_t*, Error::Kind, const char*> cases[] = {
        {u"select * from nosuch", Error::Kind::NoSuchTable, "42P01"},
        {u"select nosuch from wxPrinter", Error::Kind::NoSuchColumn, "42703"},
        {u"select * from wxPrinter where (", Error::Kind::Syntax, "42601"},
    };
    for (const auto& [select, kind, state] : cases) {
        const auto caught = errorOf([&] { open(select); });
        ASSERT_TRUE(caught) << platform::toUtf8(select);
        EXPECT_EQ(caught->kind, kind) << caught->text;
        EXPECT_NE(caught->text.find("SQLSTATE " + std::string(state)), std::string::npos) << caught->text;
        EXPECT_NE(caught->text.find("server 127.0.0.1"), std::string::npos) << caught->text;
    }
    EXPECT_EQ(errorOf([&] { connection->Execute(u"select 1"); })->kind, Error::Kind::Refused);
    EXPECT_EQ(errorOf([&] { connection->Execute(u"insert into wxPrinter (code) values ('x')"); })->kind,
              Error::Kind::TypeMismatch);
}

TEST_F(OdbcFailures, AFailingSelectDoesNotLookEmpty) {
    connection->Execute(u"insert into wxPrinter (cid) values (1), (0)");
    Recordset set = open(u"select 1 / cid as q from wxPrinter order by id");
    EXPECT_TRUE(errorOf([&] { static_cast<void>(set.Eof()); }));
    EXPECT_TRUE(errorOf([&] { static_cast<void>(set.RecordCount()); }));
    connection->Execute(u"update wxPrinter set cid = 1");
    EXPECT_EQ(set.RecordCount(), 2U);
}

TEST_F(OdbcFailures, AStatementEndsWithItsTime) {
    connection->CommandTimeout = 1;
    EXPECT_NE(errorOf([&] { connection->Execute(u"do $$ begin perform pg_sleep(20); end $$"); })->text.find("57014"),
              std::string::npos);
    connection->CommandTimeout = 30;
    EXPECT_EQ(open(u"select * from wxPrinter").RecordCount(), 0U);
}

TEST_F(OdbcFailures, AKilledServerIsToldAndTheNextConnectionWorks) {
    Recordset adding = open(u"select * from wxPrinter");
    const auto add = [&] {
        adding.AddNew();
        adding.set(u"url", u"a");
        adding.Update();
    };
    add();
    PostgresServer::shared().kill();
    for (int attempt = 0; attempt < 2; ++attempt) { // the session's end, then the dead connection
        const auto caught = errorOf(add);
        ASSERT_TRUE(caught);
        EXPECT_EQ(caught->kind, Error::Kind::Connection) << caught->text;
        EXPECT_NE(caught->text.find("SQLSTATE"), std::string::npos) << caught->text;
    }
    EXPECT_TRUE(errorOf([&] { open(u"select * from wxPrinter"); }));
    EXPECT_EQ(opening(std::u16string(kWxDb), std::chrono::seconds(5))->state, "08001");
    adding.Close();
    connection->Close();
    PostgresServer::shared().start();
    start({});
    EXPECT_EQ(rows(u"select url from wxPrinter"), "a");
}

} // namespace
} // namespace kelb::ado::testing
