#include "extract/ClsSpecSheet.h"

#include <gtest/gtest.h>

namespace kelb::extract {
namespace {

using Text = std::u16string;

TEST(ExtTable, ReachesFromItsTagToTheEndOfThePage) {
    struct Case {
        const char* fault;
        Text html, key, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"the nearest table before the key, and all that follows",
              u"<table 1></table><TABLE 2><th>甲</th></TABLE><table 3>", u"<th>甲</th>",
              u"<TABLE 2><th>甲</th></TABLE><table 3>"},
             {"no table before the key", u"<th>甲</th><table>", u"<th>甲</th>", u""},
             {"the key minds case", u"<table><TH>甲</TH>", u"<th>甲</th>", u""},
             {"the first place of the key", u"甲<table>甲", u"甲", u""},
             {"nothing", u"", u"", u""},
         }) {
        EXPECT_EQ(ClsSpecSheet::extTable(c.html, c.key), c.expected) << c.fault;
    }
}

TEST(Table2TR, GivesRowsAndAnEmptyOne) {
    std::vector<Text> rows{u"old"};
    EXPECT_EQ(ClsSpecSheet::Table2TR(u"<table>a<tr x>1</TR>b<TR>2</tr></table>", rows), 2);
    EXPECT_EQ(rows, (std::vector<Text>{u"<tr x>1</TR>", u"<TR>2</tr>", u""}));
    EXPECT_EQ(ClsSpecSheet::Table2TR(u"<table>", rows), 0);
    EXPECT_EQ(rows, std::vector<Text>{u""});
}

TEST(Table2TR, ARowWithoutItsEndRepeatsTheOneBefore) {
    std::vector<Text> rows;
    EXPECT_EQ(ClsSpecSheet::Table2TR(u"<tr>1</tr><tr>2", rows), 100);
    EXPECT_EQ(rows, [] {
        std::vector<Text> expected(100, u"<tr>1</tr>");
        expected.emplace_back();
        return expected;
    }());
    EXPECT_EQ(ClsSpecSheet::Table2TR(u"<tr>1", rows), 100);
    EXPECT_EQ(rows, std::vector<Text>(101, u"")) << "no row before it";
}

TEST(Table2TR, TakesAHundredRows) {
    Text table;
    for (int row = 0; row < 101; ++row) {
        table += row == 99 ? u"<tr>hundredth</tr>" : u"<tr></tr>";
    }
    std::vector<Text> rows;
    EXPECT_EQ(ClsSpecSheet::Table2TR(table, rows), 100);
    EXPECT_EQ(rows.size(), 101U);
    EXPECT_EQ(rows[99], u"<tr>hundredth</tr>");
}

TEST(ExtSpePara, FindsTheValueBehindTheName) {
    struct Case {
        const char* fault;
        std::vector<Text> rows;
        Text expected;
    };
    const Text twoCells = u"<td></td><td></td>";
    for (const Case& c : std::initializer_list<Case>{
             {"behind the last heading", {u"<tr><th>甲<td>乙</td><th>屏幕尺寸<td>42英寸</td></tr>"}, u"42英寸"},
             {"one cell", {u"<th>屏幕尺寸<td>42</td>"}, u""},
             {"three cells", {u"<th>屏幕尺寸<td>42</td><td></td><td></td>"}, u""},
             {"cells count in either case, headings in one", {u"<TH><th>屏幕尺寸<TD>42<td>"}, u"42"},
             {"no heading to cut at", {u"<tr>屏幕尺寸<td>42<td></tr>", u"<th>屏幕尺寸<td>37<td>"}, u"37"},
             {"in both parts: the first", {u"屏幕尺寸 1" + twoCells + u"<th>屏幕尺寸 2"}, u"1"},
             {"an empty value in the first: the second", {u"屏幕尺寸" + twoCells + u"<th>屏幕尺寸 2"}, u"2"},
             {"the first row that has one", {twoCells + u"<th>甲", twoCells + u"<th>屏幕尺寸 3"}, u"3"},
             {"only the last heading cuts, so the first part has one, too",
              {twoCells + u"<th>屏幕尺寸 1<th>屏幕尺寸 2"},
              u"1"},
             {"lines stay apart, pairs of blanks and lone line ends go",
              {twoCells + u"<th>屏幕尺寸 a   b\r\n    c\nd\re \r\n"},
              u"a b\r\ncde \r\n"},
         }) {
        EXPECT_EQ(ClsSpecSheet::extSpePara(u"屏幕尺寸", c.rows), c.expected) << c.fault;
    }
}

TEST(SpecSheetTitle, IsTakenApart) {
    EXPECT_EQ(ClsSpecSheet::extTitle(u"x<title>甲</title>乙</title>"), u"甲");
    EXPECT_EQ(ClsSpecSheet::extTitle(u"</title><title>甲"), u"");
    EXPECT_EQ(ClsSpecSheet::extTitle(u"<TITLE>甲</TITLE>"), u"");
    struct Case {
        const char* fault;
        Text title, name, code;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"full-width parentheses and the suffix", u"长虹电视（LT42）参数_报价", u"长虹电视", u"LT42"},
             {"blanks in front of the code stay", u"长虹 (LT42) 型", u"长虹 ", u"LT42"},
             {"mixed parentheses", u"长虹（LT42)", u"长虹", u"LT42"},
             {"no code", u"长虹LT42参数_", u"长虹LT42", u""},
             {"never closed", u"长虹(LT42", u"长虹(LT42", u""},
             {"closed before it is opened", u"长虹)(LT42", u"长虹)(LT42", u""},
             {"closed behind the suffix only", u"长虹(LT42参数_)", u"长虹(LT42", u""},
             {"the first pair", u"甲(乙(丙)丁)", u"甲", u"乙(丙"},
         }) {
        Text name = u"old", code = u"old";
        ClsSpecSheet::extNameAndCode(c.title, name, code);
        EXPECT_EQ(name, c.name) << c.fault;
        EXPECT_EQ(code, c.code) << c.fault;
    }
}

} // namespace
} // namespace kelb::extract
