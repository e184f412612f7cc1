#include "rewrite/ClsSmart.h"

#include <gtest/gtest.h>

namespace kelb::rewrite {
namespace {

using Text = std::u16string;

const Text kNine = u"\r\n=========\r\n";

TEST(ReplaceGarbage, RemovesBracketedMarkUp) {
    struct Case {
        const char* fault;
        Text text, cleaned, log;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"the closing size tag stays", u"[size=4]标题[/size]", u"标题[/size]", kNine + u"[size=4]"},
             {"box tags", u"[box=1]a[/box][boxes]", u"a[boxes]", kNine + u"[box=1]" + kNine + u"[/box]"},
             {"the stamp of an edited post", u"[此帖由甲于今天编辑过]乙", u"乙", kNine + u"[此帖由甲于今天编辑过]"},
             {"its words in the wrong order", u"[编辑此帖]", u"[编辑此帖]", u""},
             {"its words across two brackets", u"[此帖][编辑]", u"[此帖][编辑]", u""},
             {"a ] without [", u"a]b", u"a]b", u""},
             {"the start outlives a ]", u"[size=4]a]b", u"a]b", kNine + u"[size=4]" + kNine + u"[size=4]a]"},
             {"a stamp that ends at a later ]", u"[甲]本帖乙编辑]丙", u"丙", kNine + u"[甲]本帖乙编辑]"},
             {"what a removal joins goes at a later turn", u"[size=[size=1]1]x[size=1]", u"x",
              kNine + u"[size=1]" + kNine + u"[size=1]1]" + kNine + u"[size=1]"},
             {"a span found absent may be joined again", u"[size=1][size=1][size=[size=2]1][size=1]", u"",
              kNine + u"[size=1]" + kNine + u"[size=1]" + kNine + u"[size=2]" + kNine + u"[size=2]1]" + kNine +
                  u"[size=1]"},
         }) {
        Text cleaned = u"old", log;
        EXPECT_EQ(ClsSmart::replaceGarbage(c.text, cleaned, log), !c.log.empty()) << c.fault;
        EXPECT_EQ(cleaned, c.cleaned) << c.fault;
        EXPECT_EQ(log, c.log) << c.fault;
    }
}

TEST(ReplaceGarbage, AFilledLogGivesTrue) {
    Text cleaned, log = u"x";
    EXPECT_TRUE(ClsSmart::replaceGarbage(u"a", cleaned, log));
    EXPECT_EQ(log, u"x");
}

TEST(ReplaceGarbage, ManyBracketEndsAreWalkedOnce) {
    const Text text = u"[" + Text(1'000'000, u']');
    Text cleaned, log;
    EXPECT_FALSE(ClsSmart::replaceGarbage(text, cleaned, log));
    EXPECT_EQ(cleaned, text);
}

TEST(ReplaceGarbageTag, RemovesTheFirstRegion) {
    struct Case {
        const char* fault;
        Text text, opening, closing, cleaned, log;
    };
    const Text two = u"[attach]1[/attach] t [attach]2[/attach]";
    for (const Case& c : std::initializer_list<Case>{
             {"the second entry starts where the first did", two, u"[attach]", u"[/attach]", u" t [attach]2[/attach]",
              kNine + u"[attach]1[/attach]" + kNine + two},
             {"equal regions all go", u"<a><a> ", u"<", u">", u" ", kNine + u"<a>" + kNine + u"<a><a>"},
             {"a longer region may stand once halves are joined", u"<a>b><<a>a>b> ", u"<", u">", u"b> ",
              kNine + u"<a>" + kNine + u"<a>b>" + kNine + u"<a>b><<a>" + kNine + u"<a>b><<a>a>" + kNine +
                  u"<a>b><<a>a>b>"},
             {"a short closing marker at the very end is not looked at", u"[attach]a[/x]", u"[attach]", u"[/x]",
              u"[attach]a[/x]", u""},
             {"the same marker opens and closes at once", u"||", u"|", u"|", u"", kNine + u"|"},
             {"an opening marker as long as the text", u"[a]", u"[a]", u"]", u"[a]", u""},
         }) {
        Text cleaned, log;
        EXPECT_EQ(ClsSmart::replaceGarbageTag(c.text, cleaned, log, c.opening, c.closing), !c.log.empty()) << c.fault;
        EXPECT_EQ(cleaned, c.cleaned) << c.fault;
        EXPECT_EQ(log, c.log) << c.fault;
    }
}

TEST(ReplaceGarbageTags, LogsEachPairUnderEightSigns) {
    Text cleaned, log = u"x";
    EXPECT_TRUE(ClsSmart::replaceGarbageTags(u"[url=u]t[/url] a [attach]1[/attach]", cleaned, log));
    EXPECT_EQ(cleaned, u" a ");
    EXPECT_EQ(log, u"x\r\n========\r\n" + kNine + u"[attach]1[/attach]\r\n========\r\n" + kNine + u"[url=u]t[/url]");

    log = u"x";
    EXPECT_FALSE(ClsSmart::replaceGarbageTags(u"[local]a", cleaned, log)) << "the log of before does not count here";
    EXPECT_EQ(cleaned, u"[local]a");
    EXPECT_EQ(log, u"x");
}

} // namespace
} // namespace kelb::rewrite
