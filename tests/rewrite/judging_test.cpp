#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "rewrite/ClsSmart.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kelb::rewrite {
namespace {

using Text = std::u16string;

TEST(CountGoodChar, CountsWhatPunctuationAndThanksLeave) {
    struct Case {
        const char* fault;
        Text text;
        int expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"nothing", u"", 0},
             {"thanks alone", u"谢谢楼主", 0},
             {"letters", u"abcd", 4},
             {"dropped marks", u"a|b-c—d/e", 5},
             {"every separator", u"a，b,c。d？e?f！g!h i\u3000j\r\nk", 11},
             {"lone CR and LF count", u"甲\r乙\n丙", 5},
             {"CR LF parts segments also where a dropped mark stood between", u"甲\r-\n乙", 2},
             {"a short segment without a phrase stays", u"图纸", 2},
             {"six units left go", u"收下这张图纸了啊", 0},
             {"seven units left stay", u"收下这张图纸了啊好", 7},
             {"each segment is judged alone", u"多谢，这个办法管用吗", 7},
             // 谢谢, 楼主 and 资料 go one by one, before the whole phrase has its turn
             {"phrases in their order", u"谢谢楼主的宝贵资料真是太好了啊", 9},
             {"another phrase after a removal", u"感谢分享这么好的电路图给大家", 10},
         }) {
        EXPECT_EQ(ClsSmart::CountGoodChar(c.text), c.expected) << c.fault;
    }
}

TEST(CountGoodChar, IsASixteenBitNumber) {
    EXPECT_EQ(ClsSmart::CountGoodChar(Text(32767, u'a')), 32767);
    EXPECT_THROW(ClsSmart::CountGoodChar(Text(32768, u'a')), std::overflow_error);
}

class BlnValue : public testing::Test {
protected:
    explicit BlnValue(std::u16string_view marks = u"") {
        files_.writeFile(u"/app/ADMarks.txt", platform::encode936(marks));
    }
    /// The reason added in front of "old", or "kept".
    Text judge(ClsSmart& smart, const Text& text) {
        Text reason = u"old";
        const bool kept = smart.blnValue(text, reason);
        EXPECT_TRUE(reason.ends_with(u"old"));
        EXPECT_EQ(kept, reason == u"old");
        return kept ? u"kept" : reason.substr(0, reason.size() - 3);
    }

    platform::MemoryFileSystem files_;
};

TEST_F(BlnValue, GivesItsReasonInFront) {
    ClsSmart smart(files_, u"/app");
    EXPECT_EQ(judge(smart, u""), u"空|");
    EXPECT_EQ(judge(smart, u"电源坏"), u"无有效字符|");
    EXPECT_EQ(judge(smart, u"电源坏了"), u"kept");
    EXPECT_EQ(judge(smart, u"abc"), u"无有效字符|") << "counted before letters are looked at";
    EXPECT_EQ(judge(smart, u"abcdef"), u"纯字母|");
    EXPECT_EQ(judge(smart, u"ñabcdef"), u"纯字母|") << "not in the code page";
    EXPECT_EQ(judge(smart, u"abcdefα"), u"kept") << "two bytes in the code page";
    EXPECT_EQ(judge(smart, Text(40000, u'好')), u"kept") << "past what CountGoodChar can tell";
}

TEST_F(BlnValue, RemembersTheTextJudgedLast) {
    ClsSmart smart(files_, u"/app");
    EXPECT_EQ(judge(smart, u"谢谢"), u"无有效字符|");
    EXPECT_EQ(judge(smart, u""), u"空|") << "an empty text is not remembered";
    EXPECT_EQ(judge(smart, u"谢谢"), u"与上次重复|") << "a rejected one is";
    EXPECT_EQ(judge(smart, u"电源坏了"), u"kept");
    EXPECT_EQ(judge(smart, u"谢谢"), u"无有效字符|") << "only the last one";
}

class AdMarksFile : public BlnValue {
protected:
    AdMarksFile() : BlnValue(u"\r\n广告位招租\r\n广告\r\n拍卖\nQQ\r\n 出售\r\nwww.ADS.example\r\nｃｈ店\r\n广告\r\n") {}
};

TEST_F(AdMarksFile, RejectsATextWithAMark) {
    ClsSmart smart(files_, u"/app");
    struct Case {
        const char* fault;
        Text text, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"empty lines are no marks", u"电源坏了", u"kept"},
             {"the file's order, not the text's", u"有WWW.ads.EXAMPLE的广告", u"Include: 广告|"},
             {"the longer mark is the earlier line", u"此广告位招租了", u"Include: 广告位招租|"},
             {"the shorter one where the longer breaks off", u"这里是广告位招", u"Include: 广告|"},
             {"lines end at CR LF only", u"这台机器拍卖了", u"kept"},
             {"… so that LF is part of a mark", u"甲拍卖\nqq乙", u"Include: 拍卖\nQQ|"},
             {"lines are not trimmed", u"这台机器出售", u"kept"},
             {"… so that a blank is part of a mark", u"这台机器 出售", u"Include:  出售|"},
             {"case by Unicode, the line as the file has it", u"到ＣＨ店去买", u"Include: ｃｈ店|"},
             {"a mark may be the end of the text", u"电源坏了广", u"kept"},
         }) {
        EXPECT_EQ(judge(smart, c.text), c.expected) << c.fault;
    }
}

TEST(AdMarksFileMissing, MakesNoObject) {
    platform::MemoryFileSystem files;
    try {
        ClsSmart smart(files, u"/app");
        FAIL() << "made without its file";
    } catch (const platform::FileError& error) {
        EXPECT_EQ(error.kind(), platform::FileError::Kind::NotFound);
        EXPECT_EQ(error.path(), u"/app/ADMarks.txt");
    }
}

TEST(BlnValue2, AllowsFourDrawings) {
    EXPECT_TRUE(ClsSmart::blnValue2(u""));
    EXPECT_TRUE(ClsSmart::blnValue2(u"图纸图纸图纸图纸图"));
    EXPECT_FALSE(ClsSmart::blnValue2(u"图纸图纸图纸图纸图纸"));
}

} // namespace
} // namespace kelb::rewrite
