#pragma once

#include "tests/ado/ado_fixture.h"
#include "tests/odbc/postgres_server.h"

namespace kelb::ado::testing {

/// A connection to the shared server by the built-in string, and a table that holds every kind of column.
class OdbcFixture : public ::testing::Test {
public:
    static constexpr std::u16string_view kWxDb = u"driver={sql server};server=127.0.0.1;Database=wxDB;uid=sa;pwd=";

    OdbcFixture() {
        PostgresServer::shared();
        start({});
        connection->Execute(u"drop table if exists wxPrinter; drop table if exists bare; drop table if exists qiche");
        connection->Execute(u"create table wxPrinter (id serial primary key, url varchar(255), recTime timestamp, "
                            u"sT varchar(250), sC text, cid int, blnPass boolean, price numeric(18,4), size float8, "
                            u"raw bytea, big bigint, code smallint, day date, note varchar)");
    }

    void start(Environment::Options options) {
        connection.reset();
        environment = std::make_unique<Environment>(platform_, options);
        connection = std::make_unique<Connection>(*environment);
        connection->Open(kWxDb);
    }
    Recordset open(std::u16string_view select, LockType lock = LockType::Optimistic) {
        Recordset set;
        set.Open(select, *connection, CursorType::Keyset, lock);
        return set;
    }
    /// As another program sees the rows: fields joined by "|", rows by " / ", Null is "~".
    std::string rows(std::u16string_view select) {
        Environment other(platform_, {});
        Connection beside(other);
        beside.Open(kWxDb);
        Recordset set;
        set.Open(select, beside);
        return AdoFixture::show(set);
    }

    platform::MemoryFileSystem files;
    StandingClock clock;
    platform::SystemRandom random;
    platform::Platform platform_{files, clock, random, u"D:\\Program"};
    std::unique_ptr<Environment> environment;
    std::unique_ptr<Connection> connection;
};

} // namespace kelb::ado::testing
