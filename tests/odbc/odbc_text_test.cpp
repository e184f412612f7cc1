#include "ado/odbc_column.h"
#include "ado/odbc_driver.h"
#include "ado/odbc_table.h"

#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kelb::ado {
namespace {

using platform::toUtf8;

const std::vector<OdbcDriver> kPlainSystem{{u"FreeTDS", u"/usr/lib/odbc/libtdsodbc.so"},
                                           {u"PostgreSQL Unicode", u"psqlodbcw.so"}};
const std::vector<OdbcDriver> kOwnEntry{{u"SQL Server", u"psqlodbcw.so"}, {u"FreeTDS", u"libtdsodbc.so"}};
const std::vector<OdbcDriver> kEmpty;

TEST(OdbcTarget, MakesTheStringForTheDriverManager) {
    struct Case {
        const char16_t* given;
        const std::vector<OdbcDriver>& installed;
        const char16_t* string;
        const char16_t* place;
    };
    const Case cases[] = {
        {u"driver={sql server};server=h;Database=wxDB;uid=sa;pwd=", kOwnEntry,
         u"driver={sql server};server=h;Database=wxDB;uid=sa;pwd=;", u"driver sql server, server h, database wxDB"},
        {u"driver={sql server};server=h;Database=wxDB;uid=sa;pwd=", kPlainSystem,
         u"driver={FreeTDS};server=h;Database=wxDB;uid=sa;pwd=;TDS_Version=7.4;",
         u"driver sql server, server h, database wxDB (through FreeTDS)"},
        {u"DRIVER=SQL SERVER;server=h", kEmpty, u"DRIVER=libtdsodbc.so;server=h;TDS_Version=7.4;",
         u"driver SQL SERVER, server h (through FreeTDS)"},
        // The user's own choice of protocol stays.
        {u"driver={FreeTDS};server=h;tds_version=8.0", kPlainSystem, u"driver={FreeTDS};server=h;tds_version=8.0;",
         u"driver FreeTDS, server h"},
        // The last value of a key counts; Mode is for files; what holds ";" goes into braces.
        {u"DSN=a;Mode=Read;uid=x;UID=y;pwd=\"a;b}c\"", kPlainSystem, u"DSN=a;uid=y;pwd={a;b}}c};", u"data source a"},
        {u"Provider=MSDASQL.1;Data Source=a;User ID=me;Password=p;Initial Catalog=db", kEmpty,
         u"DSN=a;UID=me;PWD=p;Database=db;", u"data source a, database db"},
        {u"driver=/opt/x/driver.so;server=h", kEmpty, u"driver=/opt/x/driver.so;server=h;",
         u"driver /opt/x/driver.so, server h"},
    };
    for (const Case& each : cases) {
        const OdbcTarget target = odbcTarget(ConnectionString(each.given), each.installed);
        EXPECT_EQ(toUtf8(target.connectionString), toUtf8(each.string));
        EXPECT_EQ(toUtf8(target.place.shown), toUtf8(each.place)) << toUtf8(each.given);
    }
}

TEST(OdbcTarget, RefusesWhatNoDriverCouldUnderstand) {
    const std::tuple<const char16_t*, const char*> cases[] = {
        {u"driver={SQL Anywhere};server=h;pwd=geheim", "installed are: FreeTDS, PostgreSQL Unicode"},
        {u"driver=;server=h;pwd=geheim", "Driver={…}"},
        {u"driver={};pwd=geheim", "installed are"},
        {u"driver={sql server;server=h;pwd=geheim", "installed are"},
    };
    for (const auto& [given, says] : cases) {
        try {
            static_cast<void>(odbcTarget(ConnectionString(given), kPlainSystem));
            ADD_FAILURE() << toUtf8(given);
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), Error::Kind::Connection);
            const std::string text = error.what();
            EXPECT_NE(text.find(says), text.npos) << text;
            EXPECT_EQ(text.find("geheim"), text.npos) << text;
        }
    }
}

TEST(OdbcTable, FindsTheOneTableOfASelect) {
    struct Case {
        const char16_t* select;
        const char* found; ///< as written, then schema and name as the catalog has them; "" = no single table
    };
    const Case cases[] = {
        {u"select * from wxPrinter", "wxPrinter||wxprinter"},
        {u"SELECT a, 'x from y' FROM dbo.[Wx Printer] as p WHERE a='it''s' ORDER BY a",
         "dbo.[Wx Printer]|dbo|Wx Printer"},
        {u"select * from db.\"Own\".t t1;", "db.\"Own\".t|Own|t"},
        {u"select top 1 (select max(a) from b) from c -- from d\nwhere e in (select f from g)", "c||c"},
        {u"select * /* from x */ from 文章", "文章||文章"},
        {u"select * from a, b", ""},
        {u"select * from a join b on a.x=b.x", ""},
        {u"select * from a as x inner join b on 1=1", ""},
        {u"select * from (select * from a) b", ""},
        {u"select distinct a from b", ""},
        {u"select a from b group by a", ""},
        {u"select a from b union select a from c", ""},
        {u"select 1", ""},
        {u"select * from", ""},
        {u"select * from a.", ""},
        {u"select * from [a", "[a||a"}, // the server says what is wrong
        {u"select ((( from a", ""},
        {u"", ""},
    };
    for (const Case& each : cases) {
        const auto table = tableOf(each.select, NameCase::Lower);
        EXPECT_EQ(table ? toUtf8(table->written + u"|" + table->schema + u"|" + table->name) : "", each.found)
            << toUtf8(each.select);
    }
    EXPECT_EQ(tableOf(u"select * from Ab", NameCase::Upper)->name, u"AB");
    EXPECT_EQ(tableOf(u"select * from Ab", NameCase::Kept)->name, u"Ab");
}

OdbcColumn column(SQLSMALLINT type, SQLULEN size, const char16_t* typeName = u"") {
    OdbcColumn made;
    made.info.name = u"f";
    made.sqlType = type;
    made.size = size;
    made.typeName = typeName;
    classify(made);
    return made;
}

TEST(OdbcColumn, TellsMemosAndYesNoFromTexts) {
    EXPECT_EQ(column(SQL_WVARCHAR, 255).info.type, FieldType::Text);
    EXPECT_EQ(column(SQL_WVARCHAR, 255).info.size, 255U);
    EXPECT_EQ(column(SQL_WVARCHAR, 0).info.type, FieldType::Memo); // nvarchar(max)
    EXPECT_EQ(column(SQL_WVARCHAR, 1073741823).info.type, FieldType::Memo);
    EXPECT_EQ(column(SQL_WLONGVARCHAR, 8190).info.type, FieldType::Memo);
    EXPECT_EQ(column(SQL_WLONGVARCHAR, 8190).info.size, 0U);
    EXPECT_EQ(column(SQL_VARCHAR, 5, u"bool").info.type, FieldType::YesNo);
    EXPECT_EQ(column(-150, 8000).info.type, FieldType::Text); // a type of one server alone
}

TEST(OdbcColumn, ConvertsWhatIsGivenOrRefusesIt) {
    const OdbcColumn number = column(SQL_INTEGER, 10), small = column(SQL_SMALLINT, 5), bit = column(SQL_BIT, 1),
                     date = column(SQL_TYPE_TIMESTAMP, 19), money = column(SQL_DECIMAL, 19),
                     text = column(SQL_WVARCHAR, 10), bytes = column(SQL_VARBINARY, 10), real = column(SQL_DOUBLE, 15);
    const auto textValue = [](const char16_t* each) { return Value(std::u16string(each)); };
    const std::tuple<const OdbcColumn&, Value, Value> fitting[] = {
        {number, textValue(u" 12 "), std::int32_t{12}},
        {number, 2.5, std::int32_t{2}}, // halves to the even number
        {number, true, std::int32_t{-1}},
        {number, Null{}, Null{}},
        {small, std::int32_t{-32768}, std::int16_t{-32768}},
        {bit, std::int32_t{-1}, true},
        {bit, textValue(u"false"), false},
        {date, textValue(u"2015-12-2 8:30:00"), fromDateTime({2015, 12, 2, 8, 30, 0})},
        {money, textValue(u"-1.50"), Decimal{true, {0, 0, 0, 150}, 2}},
        {money, 1e3, Decimal{false, {0, 0, 0, 1000}, 0}},
        {money, textValue(u"18446744073709551616"), Decimal{false, {0, 1, 0, 0}, 0}}, // 2^64
        {real, textValue(u"1e2"), 100.0},
        {text, std::int32_t{7}, textValue(u"7")},
    };
    for (const auto& [into, given, expected] : fitting) {
        EXPECT_EQ(odbcValue(into, given), expected) << toUtf8(toText(given));
    }
    const std::tuple<const OdbcColumn&, Value, Error::Kind> refused[] = {
        {number, textValue(u"zwölf"), Error::Kind::TypeMismatch},
        {number, textValue(u""), Error::Kind::TypeMismatch},
        {number, 3e9, Error::Kind::TypeMismatch},
        {number, 1e300, Error::Kind::TypeMismatch},
        {small, std::int32_t{32768}, Error::Kind::TypeMismatch},
        {date, textValue(u"heute"), Error::Kind::TypeMismatch},
        {money, textValue(u"1.2.3"), Error::Kind::TypeMismatch},
        {money, textValue(u"1e101"), Error::Kind::TypeMismatch},
        {money, textValue(u"340282366920938463463374607431768211456"), Error::Kind::TypeMismatch}, // 2^128
        {bytes, textValue(u"x"), Error::Kind::TypeMismatch},
        {text, Value(std::u16string(u"a\0b", 3)), Error::Kind::Refused},
    };
    for (const auto& [into, given, kind] : refused) {
        try {
            static_cast<void>(odbcValue(into, given));
            ADD_FAILURE() << toUtf8(toText(given));
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
            EXPECT_NE(std::string(error.what()).find("field f"), std::string::npos) << error.what();
        }
    }
}

TEST(OdbcError, KnowsTheStatesOfBothServers) {
    const std::tuple<const char*, int, Error::Kind> cases[] = {
        {"42S02", 208, Error::Kind::NoSuchTable},    {"42P01", 1, Error::Kind::NoSuchTable},
        {"42S22", 207, Error::Kind::NoSuchColumn},   {"23505", 1, Error::Kind::DuplicateKey},
        {"23000", 2627, Error::Kind::DuplicateKey},  {"23000", 515, Error::Kind::NullNotAllowed},
        {"23000", 547, Error::Kind::Refused},        {"22001", 8152, Error::Kind::FieldTooSmall},
        {"HY000", 2628, Error::Kind::FieldTooSmall}, {"22007", 0, Error::Kind::TypeMismatch},
        {"08S01", 20009, Error::Kind::Connection},   {"57P01", 1, Error::Kind::Connection},
        {"28000", 18456, Error::Kind::Connection},   {"HYT00", 0, Error::Kind::Connection},
        {"42601", 1, Error::Kind::Syntax},           {"", 0, Error::Kind::Refused},
    };
    for (const auto& [state, native, kind] : cases) {
        EXPECT_EQ(odbcErrorKind(state, native), kind) << state << " " << native;
    }
}

} // namespace
} // namespace kelb::ado
