#include "tests/ado/ado_fixture.h"

#include <algorithm>

namespace kelb::ado::testing {
namespace {

using SqlDefinition = AdoFixture;

std::string typeName(const jet::Column& column) {
    switch (column.type) {
    case jet::ColumnType::YesNo:
        return "yesno";
    case jet::ColumnType::Byte:
        return "byte";
    case jet::ColumnType::Integer:
        return "short";
    case jet::ColumnType::Long:
        return column.isAutonumber() ? "autonumber" : "long";
    case jet::ColumnType::Currency:
        return "currency";
    case jet::ColumnType::Single:
        return "single";
    case jet::ColumnType::Double:
        return "double";
    case jet::ColumnType::DateTime:
        return "date";
    case jet::ColumnType::Text:
        return "text" + std::to_string(column.length / 2);
    case jet::ColumnType::Memo:
        return "memo";
    case jet::ColumnType::Guid:
        return "guid";
    case jet::ColumnType::Binary:
        return "binary" + std::to_string(column.length);
    case jet::ColumnType::Ole:
        return "ole";
    case jet::ColumnType::Numeric:
        return "decimal" + std::to_string(column.precision) + "," + std::to_string(column.scale);
    default:
        return "?";
    }
}

/// "name type[!]" in display order, "!" for NOT NULL; then the indexes as "name(columns)" with their flags in hex.
std::string schemaOf(jet::Table& table) {
    const jet::TableDefinition& definition = table.definition();
    std::string text;
    for (const std::size_t i : definition.displayOrder()) {
        const jet::Column& column = definition.columns[i];
        text += (text.empty() ? "" : ", ") + platform::toUtf8(column.name) + " " + typeName(column) +
                (column.required ? "!" : "");
    }
    for (const jet::LogicalIndex& index : definition.logicalIndexes) {
        const jet::PhysicalIndex& physical = definition.physicalIndexes[index.physical];
        text += "; " + platform::toUtf8(index.name) + "(";
        for (const jet::IndexColumn& part : physical.columns) {
            text += (text.back() == '(' ? "" : ",") + platform::toUtf8(definition.columnByNumber(part.column)->name) +
                    (part.ascending ? "" : " down");
        }
        constexpr std::string_view kHex = "0123456789abcdef";
        text += std::string(")") + kHex[physical.flags >> 4U] + kHex[physical.flags & 15U];
    }
    return text;
}

struct TableCase {
    const char16_t* name;
    const char16_t* statement;
    const char* schema;
};

TEST_F(SqlDefinition, MakesTheTablesOfTheProgram) {
    const TableCase cases[] = {
        {u"main",
         u"create table main (id int identity(1,1) NOT NULL,url varchar(255),refurl varchar(255),reftxt varchar(255),"
         u"content Memo)",
         "id autonumber!, url text255, refurl text255, reftxt text255, content memo"},
        {u"learn",
         u"create table learn (id int identity(1,1) not null,url memo,numson1 integer,numson2 integer,numpic "
         u"integer,nummv integer)",
         "id autonumber!, url memo, numson1 long, numson2 long, numpic long, nummv long"},
        {u"myhoney",
         u"create table myhoney (id int identity(1,1) not null,url varchar(255),linktext varchar(255),refurl "
         u"varchar(255),srcurl varchar(255),content memo,lastmodify datetime,lastcheck datetime)",
         "id autonumber!, url text255, linktext text255, refurl text255, srcurl text255, content memo, lastmodify "
         "date, lastcheck date"},
        {u"URLsMV",
         u"create table URLsMV (id int identity(1,1) NOT NULL,url varchar(255),refurl varchar(255),reftxt "
         u"varchar(255),lastcheckdate datetime,srcsize long,srctype varchar(5),blndown YESNO)",
         "id autonumber!, url text255, refurl text255, reftxt text255, lastcheckdate date, srcsize long, srctype "
         "text5, blndown yesno"},
        {u"sexhoney",
         u"create table sexhoney (id int identity(1,1) not null,url memo,refurl memo,reftxt varchar(255),sonpics "
         u"memo,sonmvs memo,numsonpics integer,numsonmvs integer)",
         "id autonumber!, url memo, refurl memo, reftxt text255, sonpics memo, sonmvs memo, numsonpics long, "
         "numsonmvs long"},
        {u"DVUser",
         u"create table DVUser (id int identity(1,1) not null,userName varchar(255),userEmail varchar(255),userID "
         u"varchar(255))",
         "id autonumber!, userName text255, userEmail text255, userID text255"},
        {u"bbsforum",
         u"create table bbsforum (url varchar(255),boardid varchar(255),articleid varchar(255),start "
         u"varchar(255),content memo,recdate date)",
         "url text255, boardid text255, articleid text255, start text255, content memo, recdate date"},
        {u"wxAll",
         u"create table wxAll (id int identity(1,1) NOT NULL,url varchar(255),recTime datetime,sT varchar(255),sC "
         u"text,sA text,beginPos int,beginStr varchar(255),endPos int,endStr varchar(255), cid int,sT1 "
         u"varchar(255),sC1 Memo,sA1 Memo,sT9 varchar(255),sC9 Memo,sA9 Memo)",
         "id autonumber!, url text255, recTime date, sT text255, sC memo, sA memo, beginPos long, beginStr text255, "
         "endPos long, endStr text255, cid long, sT1 text255, sC1 memo, sA1 memo, sT9 text255, sC9 memo, sA9 memo"},
        {u"kinds",
         u"create table kinds (a counter, b tinyint, c smallint, d money, e real, f number, g time, h nchar(7), i "
         u"note, j uniqueidentifier, k varbinary(9), l image, m decimal(20,4), n numeric, o bit, p text(3) not null "
         u"with compression)",
         "a autonumber, b byte, c short, d currency, e single, f double, g date, h text7, i memo, j guid, k binary9, "
         "l ole, m decimal20,4, n decimal18,0, o yesno, p text3!"},
        {u"keys",
         u"create table keys (id int primary key, a varchar(9) constraint ua unique, b short, c int, constraint kbc "
         u"unique (b, c), [d e] int)",
         "id long, a text9, b short, c long, d e long; kbc(b,c)81; ua(a)81"},
    };
    for (const TableCase& c : cases) {
        execute(c.statement);
        std::string schema = schemaOf(environment->openDatabase(path, jet::Pager::Access::Read)->table(c.name));
        if (const auto made = schema.find("; Index_"); made != schema.npos) { // a name with random parts: the key
            EXPECT_EQ(schema.substr(schema.find(")", made)).substr(0, 3), ")89");
            schema.erase(made, schema.find(")", made) + 3 - made);
        }
        EXPECT_EQ(schema, c.schema);
    }
    execute(u"create unique index urlidx on myhoney(url)");
    execute(u"create index two on bbsforum (boardid asc, articleid desc) with disallow null");
    const auto database = environment->openDatabase(path, jet::Pager::Access::Read);
    EXPECT_NE(schemaOf(database->table(u"myhoney")).find("; urlidx(url)81"), std::string::npos);
    EXPECT_NE(schemaOf(database->table(u"bbsforum")).find("; two(boardid,articleid down)88"), std::string::npos);
}

TEST_F(SqlDefinition, AddsColumnsToRowsThatAreThere) {
    execute(u"create table wxhx (url varchar(255))");
    execute(u"insert into wxhx values ('a')");
    Recordset open = this->open(u"select * from wxhx");
    for (const char16_t* statement :
         {u"ALTER TABLE wxhx ADD blnPass YESNO", u"ALTER TABLE wxhx ADD blnPosted YESNO",
          u"ALTER TABLE wxhx ADD sT memo", u"ALTER TABLE wxhx ADD sC memo", u"ALTER TABLE wxhx ADD pagenum Short",
          u"ALTER TABLE wxhx ADD COLUMN x varchar(5), y int"}) {
        EXPECT_EQ(execute(statement), 0U);
    }
    EXPECT_EQ(rows(u"select * from wxhx"), "a|False|False|~|~|~|~|~");
    EXPECT_EQ(schemaOf(environment->openDatabase(path, jet::Pager::Access::Read)->table(u"wxhx")),
              "url text255, blnPass yesno, blnPosted yesno, sT memo, sC memo, pagenum short, x text5, y long");
    // A set that was open keeps its fields and goes on reading and writing.
    EXPECT_EQ(open.fieldCount(), 1U);
    open.set(u"url", u"b");
    open.Update();
    open.AddNew();
    open.set(u"url", u"c");
    open.Update();
    EXPECT_EQ(rows(u"select url, blnPass from wxhx"), "b|False / c|False");
    EXPECT_EQ(faults(), "");
}

struct RefusedCase {
    const char16_t* statement;
    Error::Kind kind;
    const char* says;
};

TEST_F(SqlDefinition, RefusesAndLeavesNothingBehind) {
    execute(u"create table t (a int, b varchar(9))");
    execute(u"insert into t values (1, 'x')");
    execute(u"insert into t values (1, 'y')");
    const RefusedCase cases[] = {
        {u"create table T (a int)", Error::Kind::Refused, "there is a table"},
        {u"create table u (a int, A int)", Error::Kind::Refused, "twice"},
        {u"create table u (a blob)", Error::Kind::Syntax, "expected a column type"},
        {u"create table u (a varchar(256))", Error::Kind::Refused, "1 to 255 characters, not 256"},
        {u"create table u (a int(4))", Error::Kind::Syntax, "takes no such size"},
        {u"create table u (a varchar(4,2))", Error::Kind::Syntax, "takes no such size"},
        {u"create table u (a decimal(4,5))", Error::Kind::Refused, "behind the point"},
        {u"create table u (a varchar(9) identity)", Error::Kind::Refused, "only INT"},
        {u"alter table t add b int", Error::Kind::Refused, "has a field b"},
        {u"alter table t add c int, a int", Error::Kind::Refused, "has a field a"},
        {u"alter table nosuch add c int", Error::Kind::NoSuchTable, "nosuch"},
        {u"create unique index i on t (a)", Error::Kind::DuplicateKey, ""},
        {u"create index i on t (nosuch)", Error::Kind::NoSuchColumn, "nosuch"},
        {u"select * from t", Error::Kind::Refused, "open a record set"},
    };
    for (const RefusedCase& c : cases) {
        const auto caught = errorOf([&] { execute(c.statement); });
        ASSERT_TRUE(caught) << platform::toUtf8(c.statement);
        EXPECT_EQ(caught->kind, c.kind) << caught->text;
        EXPECT_NE(caught->text.find(c.says), std::string::npos) << caught->text;
        EXPECT_NE(caught->text.find("Comb.mdb"), std::string::npos) << caught->text;
        EXPECT_NE(caught->text.find(platform::toUtf8(c.statement)), std::string::npos) << caught->text;
    }
    EXPECT_EQ(schemaOf(environment->openDatabase(path, jet::Pager::Access::Read)->table(u"t")), "a long, b text9");
    EXPECT_EQ(rows(u"select * from t"), "1|x / 1|y");
    EXPECT_EQ(faults(), "");
}

} // namespace
} // namespace kelb::ado::testing
