#include "extract/ClsWebExtractor.h"

#include <gtest/gtest.h>

namespace kelb::extract {
namespace {

/// First line and content of one call, parted by "|".
std::u16string extract(ClsWebExtractor& extractor, const std::vector<std::u16string>& lines) {
    std::u16string first, content;
    EXPECT_FALSE(extractor.extC(lines, first, content));
    return first + u"|" + content;
}

TEST(ClsWebExtractor, TakesTheFirstLineOffAndJoinsTheRest) {
    ClsWebExtractor extractor(u"");
    EXPECT_EQ(extract(extractor, {u"标题", u"甲", u"  ", u"", u" 乙 "}), u"标题|甲<br> 乙 "); // untrimmed
    std::u16string first = u"old", content = u"old";
    extractor.extC({u"单独一行"}, first, content);
    EXPECT_EQ(first, u"单独一行");
    EXPECT_EQ(content, u"old"); // left as it was
}

TEST(ClsWebExtractor, BlanksALineFromItsThirdTimeOn) {
    ClsWebExtractor extractor(u"");
    EXPECT_EQ(extract(extractor, {u"a", u"首页"}), u"a|首页");
    EXPECT_EQ(extract(extractor, {u"b", u"首页"}), u"b|首页");
    EXPECT_EQ(extract(extractor, {u"c", u"首页", u"d"}), u"c|d");
    // Within one page as well; keys mind blanks and case.
    EXPECT_EQ(extract(extractor, {u"x", u"X", u"x ", u"x", u"x", u"X"}), u"x|X<br>x <br>x<br>X");
}

TEST(ClsWebExtractor, PutsLinesThatDifferByArticleIntoOneForm) {
    struct Case {
        std::u16string_view line, becomes;
    };
    const Case cases[] = {
        {u"日期：2015-12-02 作者：张", u"发表日期"}, // the first rule that fits
        {u"责任作者：张", u"文章作者"},
        {u"来源：", u"文章来源"},
        {u"字体：大 中 小", u"文章字体"},
        {u"背景：", u"文章背景"},
        {u"广电电器城", u"广告内容"},
        {u"阅读全文>>", u"阅读全文"},
        {u"时间:8:30", u"发表日期"}, // an ASCII colon
        {u"时间：8:30", u"时间：8:30"},
        {u"作者:张", u"作者:张"},
        {u"第3页", u"页码"},
        {u"第页", u"页码"},
        {u"第3页 ", u"第3页 "}, // the whole line
        {u"共第3页", u"共第3页"},
    };
    for (const Case& each : cases) {
        ClsWebExtractor extractor(u"");
        EXPECT_EQ(extract(extractor, {std::u16string(each.line)}), std::u16string(each.becomes) + u"|");
    }
    ClsWebExtractor extractor(u"");
    EXPECT_EQ(extract(extractor, {u"t", u"作者：甲", u"作者：乙", u"作者：丙", u"u"}), u"t|文章作者<br>文章作者<br>u");
}

TEST(ClsWebExtractor, LeavesLongLinesAloneAndBlanksItsOwnSite) {
    const std::u16string hundred(100, u'长'), longer = u"本站" + std::u16string(99, u'长');
    ClsWebExtractor extractor(u"本站");
    EXPECT_EQ(extract(extractor, {u"t", u"来自本站", longer}), u"t|" + longer);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(extract(extractor, {longer, longer}), longer + u"|" + longer);
    }
    EXPECT_EQ(extract(extractor, {hundred, hundred, u"e", hundred}), hundred + u"|" + hundred + u"<br>e");
    ClsWebExtractor nameless(u""); // an empty name is in no line
    EXPECT_EQ(extract(nameless, {u"a", u"b"}), u"a|b");
}

/// After 50 calls a line that was seen fewer than three times is forgotten, one that was is not; the lines of the 50th
/// call itself are counted before.
TEST(ClsWebExtractor, ForgetsWhatDidNotRepeatEvery50Calls) {
    ClsWebExtractor extractor(u"");
    const auto call = [&extractor](std::initializer_list<std::u16string> lines) {
        std::vector<std::u16string> all{
            u"一个很长的开头一个很长的开头一个很长的开头一个很长的开头一个很长的开头一个很长的开头"
            u"一个很长的开头一个很长的开头一个很长的开头一个很长的开头一个很长的开头一个很长的开头"
            u"一个很长的开头一个很长的开头一个很长的开头"};
        all.insert(all.end(), lines);
        std::u16string first, content;
        extractor.extC(all, first, content);
        return content;
    };
    call({u"twice", u"thrice", u"atTheEnd"});
    call({u"twice", u"thrice", u"atTheEnd"});
    call({u"thrice"});
    for (int i = 4; i <= 49; ++i) {
        call({u"only" + std::u16string(1, static_cast<char16_t>(u'一' + i))});
    }
    EXPECT_EQ(extractor.linesKnown(), 3U + 46U);
    EXPECT_EQ(call({u"atTheEnd"}), u"");
    EXPECT_EQ(extractor.linesKnown(), 2U);
    EXPECT_EQ(call({u"twice", u"thrice", u"atTheEnd"}), u"twice");
    for (int i = 52; i <= 120; ++i) {
        call({u"only" + std::u16string(1, static_cast<char16_t>(u'一' + i))});
    }
    EXPECT_EQ(extractor.linesKnown(), 2U + 20U); // calls 101 to 120
}

} // namespace
} // namespace kelb::extract
