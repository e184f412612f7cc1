#include "extract/Cls4Article.h"

#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kelb::extract {
namespace {

using platform::toUtf8;
using Texts = std::vector<std::u16string>;

std::u16string letters(std::size_t count) {
    return std::u16string(count, u'文');
}

Cls4Article articleOf(const ArticleMarkers& markers) {
    return {markers, []() -> rewrite::ClsSmart& { throw std::logic_error("nothing here needs the ad marks"); }};
}

struct CutCase {
    const char* name;
    ArticleMarkers markers; ///< the program's
    std::u16string html, start, end;
    std::u16string text;   ///< "" for a miss
    std::u16string reason; ///< of a miss
};

void expectCut(bool found, const std::u16string& text, const std::u16string& reason, const CutCase& c) {
    EXPECT_EQ(found, !c.text.empty());
    EXPECT_EQ(toUtf8(text), toUtf8(c.text));
    EXPECT_EQ(toUtf8(reason), toUtf8(c.text.empty() ? c.reason : u"before"));
}

class ExtContent : public testing::TestWithParam<CutCase> {};

TEST_P(ExtContent, CutsABody) {
    const CutCase& c = GetParam();
    std::u16string body = u"before", reason = u"before";
    const bool found = articleOf(c.markers).extContent(c.html, c.start, c.end, body, reason);
    expectCut(found, body, reason, c);
}

INSTANTIATE_TEST_SUITE_P(
    Markers, ExtContent,
    testing::ValuesIn<CutCase>({
        {"of_201", {}, u"x<s>" + letters(201) + u"<e>", u"<s>", u"<e>", letters(201), u""},
        {"of_200_is_a_miss", {}, u"x<s>" + letters(200) + u"<e>", u"<s>", u"<e>", u"", u"未找到EM: <e>"},
        {"no_start", {}, letters(201) + u"<e>", u"<s>", u"<e>", u"", u"未找到SM: <s>"},
        {"case_counts", {}, u"<S>" + letters(201) + u"<e>", u"<s>", u"<e>", u"", u"未找到SM: <s>"},
        {"the_first_end", {}, u"<e><s>" + letters(201) + u"<e>b<e>", u"<s>", u"<e>", letters(201), u""},
        {"no_end", {}, u"<s>" + letters(201), u"<s>", u"<e>", u"", u"未找到EM: <e>"},
        {"the_programs_end",
         {u"", u"", u"", u"<p>"},
         u"<s>" + letters(201) + u"<p>",
         u"<s>",
         u"<e>",
         letters(201),
         u""},
        {"own_end_goes_first",
         {u"", u"", u"", u"<p>"},
         u"<s>" + letters(201) + u"<p>" + letters(9) + u"<e>",
         u"<s>",
         u"<e>",
         letters(201) + u"<p>" + letters(9),
         u""},
        // found from the start marker's second character on: the length is negative
        {"end_inside_the_start", {}, u"<se>" + letters(300) + u"e>", u"<se>", u"e>", u"", u"未找到EM: e>"},
        {"empty_start_is_the_front", {}, letters(300) + u"<e>", u"", u"<e>", letters(300), u""},
        {"empty_page", {}, u"", u"", u"", u"", u"未找到SM: "},
    }),
    [](const auto& test) { return std::string(test.param.name); });

class ExtTitle : public testing::TestWithParam<CutCase> {};

TEST_P(ExtTitle, CutsATitle) {
    const CutCase& c = GetParam();
    std::u16string title = u"before", reason = u"before";
    const bool found = articleOf(c.markers).extTitle(c.html, c.start, c.end, title, reason);
    expectCut(found, title, reason, c);
}

INSTANTIATE_TEST_SUITE_P(
    Markers, ExtTitle,
    testing::ValuesIn<CutCase>({
        {"of_3", {}, u"<s>题目一<e>", u"<s>", u"<e>", u"题目一", u""},
        {"of_2_is_a_miss", {}, u"<s>题目<e>", u"<s>", u"<e>", u"", u"未找到EM: <e>"},
        // the program's marker has four characters, the cut skips the three of its own
        {"the_programs_start", {u"[st]", u"", u"", u""}, u"x[st]题目<e>", u"<s>", u"<e>", u"]题目", u""},
        {"no_start_at_all", {u"[st]", u"", u"", u""}, u"x题目一<e>", u"<s>", u"<e>", u"", u"未找到SM: <s>"},
        // markers that nobody has set are found at once: the front of the page counts as the start marker
        {"markers_not_set", {}, u"abc题目一<e>", u"<s>", u"<e>", u"题目一", u""},
        {"the_programs_end_for_bodies",
         {u"", u"[te]", u"", u"[ce]"},
         u"<s>题目[te]一[ce]",
         u"<s>",
         u"<e>",
         u"题目[te]一",
         u""},
    }),
    [](const auto& test) { return std::string(test.param.name); });

struct ListCase {
    const char* name;
    std::u16string html;
    Texts starts, ends;
    std::u16string title, reason;
};

class ExtTitleV1 : public testing::TestWithParam<ListCase> {};

TEST_P(ExtTitleV1, TriesMarkersInItsOwnOrder) {
    const ListCase& c = GetParam();
    std::u16string title = u"before", reason;
    EXPECT_EQ(Cls4Article::extTitleV1(c.html, c.starts, c.ends, title, reason), !c.title.empty());
    EXPECT_EQ(toUtf8(title), toUtf8(c.title));
    EXPECT_EQ(toUtf8(reason), toUtf8(c.reason));
}

INSTANTIATE_TEST_SUITE_P(
    Lists, ExtTitleV1,
    testing::ValuesIn<ListCase>({
        {"first_marker", u"<2>乙<1>题目一<e>", {u"<1>", u"<2>"}, {u"<e>"}, u"题目一", u""},
        {"single_marker", u"<1>题目一<e>", {u"<1>"}, {u"<e>"}, u"题目一", u""},
        {"single_marker_missing", u"<2>题目一<e>", {u"<1>"}, {u"<e>"}, u"", u"未找到SM: <1>"},
        {"second_of_two_is_never_tried", u"<2>题目一<e>", {u"<1>", u"<2>"}, {u"<e>"}, u"", u"未找到SM: <2>"},
        {"second_of_three_stays_in_front", u"x<2>题<e>", {u"<1>", u"<2>", u"<3>"}, {u"<e>"}, u"<2>题", u""},
        {"third_of_three_is_never_tried", u"<3>题目一<e>", {u"<1>", u"<2>", u"<3>"}, {u"<e>"}, u"", u"未找到SM: <3>"},
        {"empty_marker_ends_the_list", u"<3>题目一<e>", {u"<1>", u"", u"<3>", u"<4>"}, {u"<e>"}, u"", u"未找到SM: "},
        {"first_end_marker_only", u"<1>题目一<f>", {u"<1>"}, {u"<e>", u"<f>"}, u"", u"未找到EM: <e>"},
        {"of_2_is_a_miss", u"<1>题目<e>", {u"<1>"}, {u"<e>"}, u"", u"未找到EM: <e>"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ExtTitleV1Lists, MustNotBeEmpty) {
    std::u16string title, reason;
    EXPECT_THROW(Cls4Article::extTitleV1(u"a", {}, {u"b"}, title, reason), std::out_of_range);
    EXPECT_THROW(Cls4Article::extTitleV1(u"a", {u"a"}, {}, title, reason), std::out_of_range);
}

struct PageCase {
    const char* name;
    std::u16string (*operation)(std::u16string_view, std::u16string&);
    std::u16string html, text, reason;
};

class SitePages : public testing::TestWithParam<PageCase> {};

TEST_P(SitePages, AreCutByTheirOwnMarkers) {
    const PageCase& c = GetParam();
    std::u16string reason;
    EXPECT_EQ(toUtf8(c.operation(c.html, reason)), toUtf8(c.text));
    EXPECT_EQ(toUtf8(reason), toUtf8(c.reason));
}

constexpr auto kBodyA = &Cls4Article::extContent4SiteA;
constexpr auto kTitleA = &Cls4Article::extTitle4SiteA;
constexpr auto kBodyB = &Cls4Article::extContent4SiteB;
constexpr auto kTitleB = &Cls4Article::extTitle4SiteB;
const std::u16string kNoBody = u"未找到开始标志1，或开始标志2，或结束标志";
const std::u16string kNoTitle = u"未找到开始标志，或结束标志";

INSTANTIATE_TEST_SUITE_P(
    SiteA, SitePages,
    testing::ValuesIn<PageCase>({
        {"a_body", kBodyA, u"<div id=\"content\"><div>头</div>正文<div>页</div></div><script>", u"</div>正文<div>页",
         u""},
        {"a_body_of_nested_blocks", kBodyA,
         u"</div><div id=\"content\">a</div>b<div>c</div>d</div>e</div><script></div><script>", u"</div>b<div>c</div>d",
         u""},
        {"a_one_end_before_the_script", kBodyA, u"<div id=\"content\">a</div>b</div><script>", u"", kNoBody},
        {"a_end_touches_the_script", kBodyA, u"<div id=\"content\"></div></div></div><script", u"</div>", u""},
        {"a_no_script", kBodyA, u"<div id=\"content\"><div>a</div>b</div></div></div>", u"", kNoBody},
        {"a_script_only_before", kBodyA, u"<script><div id=\"content\">a</div>b</div></div>", u"", kNoBody},
        {"a_no_end", kBodyA, u"<div id=\"content\">a<script>", u"", kNoBody},
        {"a_no_content", kBodyA, u"<div>a</div></div></div><script>", u"", kNoBody},
        {"a_empty", kBodyA, u"", u"", u"输入为空。"},
        {"a_title", kTitleA, u"<title>题_目</title>", u"题_目", u""},
        {"a_title_empty", kTitleA, u"<title></title>", u"", u""},
        {"a_title_in_upper_case", kTitleA, u"<TITLE>a</TITLE>", u"", kNoTitle},
        {"a_title_without_end", kTitleA, u"</title><title>a", u"", kNoTitle},
        {"a_title_empty_page", kTitleA, u"", u"", kNoTitle},
        {"b_body_with_its_tag", kBodyB, u"x<div id=\"content\">a<div>b</div>c</div>", u"<div id=\"content\">a<div>b",
         u""},
        {"b_no_end", kBodyB, u"</div><div id=\"content\">a", u"", kNoBody},
        {"b_empty", kBodyB, u"", u"", u"输入为空。"},
        {"b_title_before_the_first_bar", kTitleB, u"<title>题目_站_名</title>", u"题目", u""},
        {"b_title_of_a_bar", kTitleB, u"<title>_站</title>", u"", u""},
        {"b_title_without_a_bar", kTitleB, u"<title>题目</title>", u"", u"找到标题，但未找到 _ "},
        {"b_no_title", kTitleB, u"题_目", u"", kNoTitle},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ReplaceHtmlTag, GoesThroughItsListInOrder) {
    EXPECT_EQ(Cls4Article::replaceHtmlTag(u"a<BR />b<br />c<BR>d<br>e<br/>f<Br>g<BR/>h"),
              u"a\r\nb\r\nc\r\nd\r\ne\r\nf<Br>g<BR/>h");
    EXPECT_EQ(Cls4Article::replaceHtmlTag(u"&NBSP;<o:p>a</o:p>&Nbsp;"), u"&nbsp;a&Nbsp;");
    EXPECT_EQ(Cls4Article::replaceHtmlTag(u"</o<o:p>:p>|<o</o:p>:p>|<b<o:p>r>"), u"|<o:p>|<br>")
        << "only what a later line of the list looks for is found in what an earlier one brought together";
}

TEST(ArticleKillTag, StripsThroughTheList) {
    EXPECT_EQ(Cls4Article::killTag(u"&nbsp;a&quot;b&QUOT;c&Quot;<b>d</b><br>e<img src=1>f"),
              u" a\"b\"c&Quot; d< br>ef");
    EXPECT_EQ(Cls4Article::killTag(u"a<p>b&q&nbsp;uot;"), u"\r\nab\"");
}

TEST(GetPageNum, ReadsTheNumberBehindTheLastBar) {
    struct Case {
        std::u16string_view url;
        std::int16_t number;
    };
    for (const Case& c : {
             Case{u"http://a/news_3.html", 3},
             Case{u"http://a/n_7_12.HTML", 12},
             Case{u"http://a/n_98.html", 98},
             Case{u"http://a/n_99.html", 0},
             Case{u"http://a/n_0.html", 0},
             Case{u"http://a/n_-3.html", 0},
             Case{u"http://a/n_3", 3},
             Case{u"http://a/n_.html3.html", 3},
             Case{u"http://a/n_3.htm", 0},
             Case{u"http://a/n_3.shtml", 0},
             Case{u"http://a/n3.html", 0},
             Case{u"http://a/n_.html", 0},
             Case{u"http://a/n_2.5.html", 2}, // halves to the even number
             Case{u"http://a/n_98.5.html", 98},
             Case{u"http://a/n_98.6.html", 0},
             Case{u"http://a/n_ 4 .html", 4},
             Case{u"http://a/n_1e1.html", 10},
             Case{u"http://a/n_70000.html", 0},
             Case{u"http://a/n_1e99.html", 0},
             Case{u"", 0},
         }) {
        EXPECT_EQ(Cls4Article::getPageNum(c.url), c.number) << toUtf8(c.url);
    }
}

TEST(ArticleTexts, AreThoseOfTheProgramsClsSmart) {
    platform::MemoryFileSystem files;
    files.writeFile(u"/app/ADMarks.txt", platform::encode936(u"广告"));
    rewrite::ClsSmart smart(files, u"/app");
    const ArticleMarkers markers;
    const Cls4Article article(markers, [&]() -> rewrite::ClsSmart& { return smart; });
    std::u16string reason;
    EXPECT_TRUE(smart.blnValue(u"电源坏了", reason));
    EXPECT_FALSE(article.blnValue(u"电源坏了", reason));
    EXPECT_EQ(reason, u"与上次重复|") << "the text judged last is one for both";
    EXPECT_EQ(Cls4Article::killMoreBR(u"<br><br><br><br><br>"), u"<br><br><br>");
    EXPECT_EQ(Cls4Article::cutTitle(u"站-题", u"-"), u"题");
    EXPECT_EQ(Cls4Article::CountGoodChar(u"谢谢楼主"), 0);
}

} // namespace
} // namespace kelb::extract
