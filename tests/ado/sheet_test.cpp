#include "ado/compound_file.h"
#include "ado/sheet_provider.h"
#include "tests/ado/ado_fixture.h"
#include "tests/ado/workbooks.h"

#include <gmock/gmock.h>

#include <random>

namespace kelb::ado::testing {
namespace {

using ::testing::HasSubstr;

class SheetTest : public AdoFixture {
public:
    /// Puts a workbook into the memory disk and connects to it.
    void connect(const std::string& name) { connectTo(workbooks().bytes(name)); }
    void connectTo(const std::string& bytes) {
        files.writeFile(kPath, bytes);
        connection = std::make_unique<Connection>(*environment);
        connection->Open(sheetConnectionString(kPath));
    }
    /// Names and types of the fields, then the rows.
    std::string sheet(std::u16string_view select = u"SELECT * FROM [sheet1$]") {
        Recordset set = open(select, LockType::BatchOptimistic);
        std::string text;
        for (std::size_t i = 0; i < set.fieldCount(); ++i) {
            text += (i == 0 ? "" : "|") + platform::toUtf8(set.field(i).name) + ":" + typeName(set.field(i).type);
        }
        const std::string rows = show(set);
        return rows.empty() ? text : text + " / " + rows;
    }
    static std::string typeName(FieldType type) {
        return type == FieldType::Long       ? "i"
               : type == FieldType::Double   ? "d"
               : type == FieldType::DateTime ? "D"
               : type == FieldType::Memo     ? "m"
               : type == FieldType::Text     ? "t"
                                             : "?";
    }

    static constexpr std::u16string_view kPath = u"D:\\表\\型号.xls";
};

TEST_F(SheetTest, ShowsCellsByTheirKind) {
    connect("cells.xls");
    std::string longText; // 200 characters, 600 bytes
    for (int i = 0; i < 200; ++i) {
        longText += "语";
    }
    EXPECT_EQ(sheet(), "名称:t|数量:i|F31:d|数量1:d|f3:t|日期:D|时间:D|钟:D|有货:i|F10:t"
                       " / 长虹电视机|42|3.25|1E+10|x|2015-12-2 0:00:00|2015-12-2 8:30:59|1899-12-30 12:34:56|1|" +
                           longText +
                           " / ~|~|~|~|~|~|~|~|~|~"
                           " / 𠀀 \"a,b\"|-7|0.1|~|5|1900-1-1 0:00:00|~|~|0|é"
                           " / two\nlines|0|2|1.5|2.5|1900-2-28 0:00:00|~|~|~|~"
                           " / ~|~|~|~|~|2100-3-1 0:00:00|~|~|~|~"
                           " / ~|~|~|~|~|9999-12-31 0:00:00|~|~|~|~");
}

struct SheetCase {
    const char* name;
    const char* file;
    const char* expected;
};
class SheetRows : public SheetTest, public ::testing::WithParamInterface<SheetCase> {};

TEST_P(SheetRows, AreThoseOfTheFile) {
    connect(GetParam().file);
    EXPECT_EQ(sheet(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Files, SheetRows,
    ::testing::ValuesIn<SheetCase>({
        {"results_of_formulas", "formulas.xls",
         "what:t|result:m / number|2.5 / text|结果 / shared|"
         "ssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssss"
         "ssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssss"
         "ssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssss"
         " / yes|1 / error|~ / empty text|~ / after a chart|~ / last|1"},
        {"error_values_are_null", "errors.xls", "a:t|b:t / x|~"},
        {"begin_at_the_first_filled_row", "lower.xls", "F1:t|name:t / ~|a / ~|~ / ~|b"},
        {"none_without_cells", "empty.xls", "F1:t"},
        {"none_under_the_names", "head.xls", "only:t|names:t"},
        {"formatting_over_the_end_of_a_record", "formatted.xls", "name:t / formatted / behind"},
        {"formatting_all_in_the_next_record", "all_formatting.xls", "name:t / formatted / behind"},
        {"short_sectors_and_wrong_dimensions", "short.xls", "name:t / short"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(SheetTest, ShowsThousandsOfRows) {
    connect("many.xls");
    Recordset set = open(u"sheet1$");
    ASSERT_EQ(set.RecordCount(), 5000U);
    set.MoveLast();
    EXPECT_EQ(set.text(u"text"), u"行5000");
    EXPECT_EQ(std::get<std::int32_t>(set.value(u"nr")), 5000);
    EXPECT_EQ(std::get<double>(set.value(u"quarter")), 1250.0);
}

/// Texts of up to 32,000 characters, which go over up to eight records and begin anywhere in them.
TEST_F(SheetTest, ShowsLongTexts) {
    connect("long.xls");
    Recordset set = open(u"sheet1$");
    ASSERT_EQ(set.RecordCount(), 59U);
    EXPECT_EQ(set.field(1).type, FieldType::Memo);
    for (std::size_t i = 1; !set.Eof(); set.MoveNext(), ++i) {
        const std::string piece = "语" + std::to_string(i);
        std::string wide;
        for (std::size_t n = 0; n < i * 401 % 8000; ++n) {
            wide += piece;
        }
        EXPECT_TRUE(platform::toUtf8(set.text(u"a")) == wide) << i;
        EXPECT_TRUE(platform::toUtf8(set.text(u"b")) == std::string(i, 'x') + std::string(i * 97 % 32000, 'y')) << i;
    }
}

TEST_F(SheetTest, AnswersASelect) {
    connect("many.xls");
    EXPECT_EQ(rows(u"select [text] as t, nr from [SHEET1$] where quarter > 1249 and nr <> 4998 order by nr desc"),
              "行5000|5000 / 行4999|4999 / 行4997|4997");
    EXPECT_EQ(rows(u"select top 2 nr from [sheet1$] where [text] like '%99%' order by [text] desc"), "999 / 998");
    EXPECT_EQ(rows(u"select top 1 nr from [sheet1$]"), "1");
    EXPECT_EQ(rows(u"select count(*) from [sheet1$] where nr <= 10"), "10");
    connect("cells.xls"); // a column of texts and numbers goes by its texts; Null comes first
    EXPECT_EQ(rows(u"select top 3 f3, 数量 from [sheet1$] where 数量 is not null order by f3"), "2.5|0 / 5|-7 / x|42");
    EXPECT_EQ(rows(u"select 数量 from [sheet1$] where f3 in ('5')"), "-7");
    EXPECT_EQ(rows(u"select * from [second$]"), "x");
    Recordset sheets;
    connection->OpenSchema(sheets);
    EXPECT_EQ(show(sheets), "second$|TABLE / SHEET1$|TABLE");
}

TEST_F(SheetTest, IsRecognisedHoweverItsStringIsWritten) {
    files.writeFile(kPath, workbooks().bytes("head.xls"));
    const std::u16string workbook(kPath);
    for (const std::u16string& text :
         {u"dbq=" + workbook + u";driver={MICROSOFT excel driver (*.XLS)}",
          u"Driver={Microsoft Excel Driver (*.xls, *.xlsx, *.xlsm, *.xlsb)};DriverId=790;Dbq=" + workbook}) {
        Connection other(*environment);
        other.Open(text);
        Recordset set;
        set.Open(u"[sheet1$]", other);
        EXPECT_EQ(set.fieldCount(), 2U) << platform::toUtf8(text);
    }
}

TEST_F(SheetTest, IsNeverChanged) {
    connect("cells.xls");
    for (const char16_t* change :
         {u"update [sheet1$] set 数量=1", u"create table [x$] (a int)", u"delete from [sheet1$]"}) {
        const auto caught = errorOf([&] { execute(change); });
        ASSERT_TRUE(caught.has_value());
        EXPECT_EQ(caught->kind, Error::Kind::ReadOnly);
        EXPECT_THAT(caught->text, HasSubstr("型号.xls"));
    }
    Recordset set = open(u"[sheet1$]", LockType::BatchOptimistic);
    for (const auto& change :
         {std::function<void()>([&] { set.AddNew(); }), std::function<void()>([&] { set.Delete(); }),
          std::function<void()>([&] { set.set(u"名称", u"x"); }),
          std::function<void()>([&] { connection->BeginTrans(); })}) {
        const auto caught = errorOf(change);
        ASSERT_TRUE(caught.has_value());
        EXPECT_EQ(caught->kind, Error::Kind::ReadOnly);
    }
    Connection writer(*environment);
    writer.mode = Connection::Mode::Write;
    EXPECT_TRUE(errorOf([&] { writer.Open(sheetConnectionString(kPath)); }).has_value());
    EXPECT_EQ(files.readFile(kPath), workbooks().bytes("cells.xls"));
}

// Errors

struct Refusal {
    const char* name;
    std::string (*bytes)();
    const char* told;
};
class SheetRefusal : public SheetTest, public ::testing::WithParamInterface<Refusal> {};

TEST_P(SheetRefusal, NamesTheFileAndTheReason) {
    const auto caught = errorOf([&] {
        connectTo(GetParam().bytes());
        sheet();
    });
    ASSERT_TRUE(caught.has_value());
    EXPECT_THAT(caught->text, HasSubstr("D:\\表\\型号.xls"));
    EXPECT_THAT(caught->text, HasSubstr(GetParam().told));
}

INSTANTIATE_TEST_SUITE_P(
    Files, SheetRefusal,
    ::testing::ValuesIn<Refusal>({
        {"empty", [] { return std::string(); }, "the file is empty"},
        {"xlsx", [] { return std::string("PK\3\4\24\0\6\0", 8); }, ".xlsx file or another archive; save it as"},
        {"html", [] { return std::string("\xEF\xBB\xBF <HTML><table>"); }, "a page of HTML; save it as"},
        {"xml", [] { return std::string("<?xml version=\"1.0\"?><Workbook>"); }, "an XML file"},
        {"excel_4", [] { return std::string("\x09\x04\x06\0\0\4\x10\0", 8); }, "a sheet of Excel 4 or earlier"},
        {"text", [] { return std::string("a,b\r\n1,2\r\n"); }, "no .xls file but something else"},
        {"header_only", [] { return workbooks().bytes("cells.xls").substr(0, 100); }, "its header is cut off"},
        {"word", [] { return workbooks().bytes("word.doc"); }, "holds no workbook"},
        {"encrypted_xlsx", [] { return workbooks().bytes("encrypted.xls"); }, ".xlsx file protected with a password"},
        {"password", [] { return workbooks().bytes("password.xls"); }, "protected with a password"},
        {"other_sheets", [] { return workbooks().bytes("other.xls"); },
         "there is no sheet \"sheet1\" in it, only \"资料\", \"Tabelle1\""},
        {"texts_claimed", [] { return workbooks().bytes("texts_claimed.xls"); }, "claims to hold more than it can"},
        {"texts_cut_off", [] { return workbooks().bytes("texts_cut_off.xls"); }, "table of texts is cut off"},
        {"column_behind_the_last", [] { return workbooks().bytes("wide.xls"); }, "behind the last column"},
        {"cut_text", [] { return workbooks().bytes("cut_text.xls"); }, "a text is cut off"},
        {"no_dimensions", [] { return workbooks().bytes("no_dimensions.xls"); }, "does not tell its dimensions"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(SheetTest, TellsWhatIsMissing) {
    const auto noFile = errorOf([&] { Connection(*environment).Open(sheetConnectionString(u"D:\\none.xls")); });
    ASSERT_TRUE(noFile.has_value());
    EXPECT_EQ(noFile->kind, Error::Kind::Connection);
    EXPECT_EQ(noFile->text, "cannot open the workbook (D:\\none.xls): there is no such file");
    const auto noPath = errorOf([&] { Connection(*environment).Open(sheetConnectionString(u"")); });
    ASSERT_TRUE(noPath.has_value());
    EXPECT_THAT(noPath->text, HasSubstr("DBQ="));
    connect("cells.xls");
    EXPECT_EQ(errorOf([&] { rows(u"select nobody from [sheet1$]"); }).value().kind, Error::Kind::NoSuchColumn);
    EXPECT_EQ(errorOf([&] { rows(u"select * from"); }).value().kind, Error::Kind::Syntax);
}

// Damage: rows or an Error, whatever the bytes are, and never anything else

class DamagedSheet : public SheetTest {
public:
    /// Whether it gave rows.
    bool reads(const std::string& bytes) {
        return !errorOf([&] {
                    connectTo(bytes);
                    sheet();
                }).has_value();
    }
};

TEST_F(DamagedSheet, IsAnErrorWhereverItIsCutOff) {
    for (const char* name : {"cells.xls", "short.xls"}) {
        const std::string whole = workbooks().bytes(name);
        ASSERT_TRUE(reads(whole));
        for (std::size_t size = 0; size < whole.size(); size += 512) {
            // Of the short one only filling is cut off with the last sectors.
            EXPECT_FALSE(reads(whole.substr(0, size)) && size + 512 < whole.size()) << name << " cut at " << size;
        }
    }
}

TEST_F(DamagedSheet, IsReadOrRefusedWhateverBytesAreWrong) {
    std::mt19937 dice(20151202); // NOLINT(cert-msc51-cpp): the same bytes in every run
    std::size_t readable = 0, refused = 0;
    for (const char* name : {"cells.xls", "formulas.xls", "formatted.xls"}) {
        const std::string whole = workbooks().bytes(name);
        for (int run = 0; run < 150; ++run) {
            std::string bytes = whole;
            for (unsigned flips = 1 + dice() % 8; flips > 0; --flips) {
                bytes[dice() % bytes.size()] = static_cast<char>(dice() & 0xFF);
            }
            ++(reads(bytes) ? readable : refused);
        }
    }
    EXPECT_GT(readable, 20U);
    EXPECT_GT(refused, 20U);
}

/// Behind a sound container, where only the library's own reading is left to go wrong.
TEST_F(DamagedSheet, IsReadOrRefusedWhateverItsRecordsHold) {
    const std::string file = workbooks().bytes("cells.xls");
    const auto stream = CompoundFile(std::as_bytes(std::span(file.data(), file.size()))).read(u"Workbook");
    std::mt19937 dice(4711); // NOLINT(cert-msc51-cpp)
    std::size_t refused = 0;
    for (int run = 0; run < 200; ++run) {
        auto damaged = stream;
        for (unsigned flips = 1 + dice() % 4; flips > 0; --flips) {
            damaged[dice() % damaged.size()] = std::byte{static_cast<unsigned char>(dice() & 0xFF)};
        }
        refused += reads(makeCompoundFile(u"Workbook", damaged)) ? 0U : 1U;
    }
    EXPECT_GT(refused, 20U);
}

struct Circle {
    const char* name;
    std::size_t at; ///< a number of four bytes in short.xls
    std::uint32_t value;
    const char* told;
};
class CircularSheet : public SheetTest, public ::testing::WithParamInterface<Circle> {};

TEST_P(CircularSheet, IsToldAsDamaged) {
    std::string bytes = workbooks().bytes("short.xls");
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[GetParam().at + i] = static_cast<char>(GetParam().value >> (8 * i) & 0xFF);
    }
    const auto caught = errorOf([&] { connectTo(bytes); });
    ASSERT_TRUE(caught.has_value());
    EXPECT_EQ(caught->kind, Error::Kind::Damaged);
    EXPECT_THAT(caught->text, HasSubstr(GetParam().told));
}

INSTANTIATE_TEST_SUITE_P(Chains, CircularSheet,
                         ::testing::ValuesIn<Circle>({
                             {"directory", 512 + 4 * 2, 1, "its directory runs in a circle"},
                             {"short_sectors", 512 + 4 * 4, 4, "its store of short sectors runs in a circle"},
                             {"short_table", 512 * 4, 0, "its stream Workbook runs in a circle"},
                             {"far_sector", 512 + 4 * 2, 0x7FFFFFFF, "leads to a sector that is not there"},
                             {"table_behind_the_end", 76, 0x00FFFFFF, "lies behind its end"},
                             {"more_tables", 68, 0, "lies behind its end"},
                             {"stream_longer_than_its_chain", 512 * 3 + 120, 4000, "of which only"},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace kelb::ado::testing
