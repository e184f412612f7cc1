#include "rewrite/ClsSmart.h"
#include "rewrite/problem_table.h"
#include "rewrite/synonym_table.h"

#include "platform/text.h"

#include <gtest/gtest.h>

namespace kelb::rewrite {
namespace {

using Text = std::u16string;

TEST(SmartReplaceTitle, TurnsACryForHelpIntoAQuestion) {
    struct Case {
        const char* fault;
        Text title, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"bracketed help becomes a question at the end", u"[求助]长虹 29寸, 无图像!", u"长虹29寸无图像，求详解？"},
             {"every bracketed help goes, one question comes", u"[求助]甲[求助]", u"甲，求详解？"},
             {"help without brackets", u"求助：长虹", u"请教：长虹"},
             {"both kinds", u"求助[求助]甲", u"请教甲，求详解？"},
             {"every mark, and no other", u"a|b-c，d,e。f？g?h！i!j k\u3000l\r\nm\rn\no：p、q.r",
              u"abcdefghijklmno：p、q.r"},
             {"brackets are found when the marks are gone", u"[求-助] ", u"，求详解？"},
             {"what the removal of brackets joins", u"求[求助]助", u"请教，求详解？"},
         }) {
        EXPECT_EQ(ClsSmart::smartReplaceTitle(c.title), c.expected) << c.fault;
    }
}

TEST(SmartReplaceContent, AsksPolitely) {
    EXPECT_EQ(ClsSmart::smartReplaceContent(u"求助：[求助]", u"长虹电视"), u"请教大虾：请教大虾");
    EXPECT_EQ(ClsSmart::smartReplaceContent(u"求助：[求助]", u""), u"请教大虾：请教大虾") << "the brand has no effect";
}

TEST(SmartReplaceNormal, RewritesAWholePost) {
    struct Case {
        const char* fault;
        Text text, brand, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"only the first of the two first-only rows", u"王师傅怎么了？怎么了？", u"长虹",
              u"王修长虹的超哥出了什么故障或毛病 …高手回答怎么了？"},
             {"upper case", u"tclｃｈé", u"长虹", u"TCLCHÉ"},
             {"tags go; an entity is in upper case by then", u"<p>甲</p>&nbsp;&quot;乙", u"", u"甲&NBSP;\"乙"},
             {"the set code is marked up", u"我的SF2111，坏了", u"长虹", u"我的长虹电视SF2111，坏了"},
             {"each plain row", u"四川长红国产请教[原创]用户已被锁定那里实用电原前驴技穷问提", u"",
              u"长虹中国请问哪里使用电源黔驴技穷问题"},
             {"the brands and the thanks", u"夏华飞利蒲飞利普谢谢，甲谢谢！乙谢谢", u"", u"厦华飞利浦飞利浦甲乙谢谢"},
             {"in upper case only a search without case finds it", u"甲bingxiangBingXiang乙", u"", u"甲乙"},
             {"line breaks", u"甲\r\n乙\n丙\r丁", u"", u"甲<br>乙\n丙\r丁"},
             {"the brand goes in as it is …", u"师傅", u"abc", u"修abc的超哥"},
             {"… and later rows rewrite it", u"师傅", u"长红", u"修长虹的超哥"},
             {"rows see what rows before them left", u"电四川原", u"", u"电源"},
             {"but not those behind them", u"师谢谢，傅", u"长虹", u"师傅"},
             {"what lies behind 10,240 units goes", Text(10240, u'甲') + u"乙", u"", Text(10240, u'甲')},
         }) {
        EXPECT_EQ(ClsSmart::smartReplaceNormal(c.text, c.brand), c.expected) << c.fault;
    }
}

TEST(RewritingTables, KeepTheirRowNumbers) {
    EXPECT_EQ(kSynonyms[12].term, u"") << "row 13";
    EXPECT_EQ(kSynonyms[16].term, u"") << "row 17";
    EXPECT_EQ(kSynonyms[17].term, u"行流") << "row 18";
    EXPECT_EQ(platform::split(kSynonyms[2].alternatives, u"|").back(), u"") << "row 3 ends in a bar";
    EXPECT_EQ(platform::split(kProblems[9].alternatives, u"|").size(), 1U) << "row 10: a full-width bar parts nothing";
    EXPECT_EQ(platform::split(kProblems[10].alternatives, u"|").size(), 2U) << "row 11";
}

} // namespace
} // namespace kelb::rewrite
