#include "rewrite/ClsSmart.h"
#include "rewrite/pubProg.h"

#include <gtest/gtest.h>

namespace kelb::rewrite {
namespace {

using Text = std::u16string;

struct TextCase {
    const char* fault; ///< what the case would catch
    Text text, expected;
};

TEST(KillURLText, CutsToTheLastStopWithinReach) {
    const Text address = u"HTTP://";
    const Text x322(322, u'x'), x323(323, u'x'), x400(400, u'x');
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"no address", u"电视", u"电视"},
             {"lower case is not found", u"见http://x 谢谢", u"见http://x 谢谢"},
             {"the end of a short text is a stop", u"见HTTP://x 谢谢", u"见"},
             {"330 units in all: the end is within reach", address + x323, u""},
             {"331 units: the last unit is the last position looked at", address + x323 + u"x", address + x323 + u"x"},
             {"a stop on that last position", u"前" + address + x323 + u"中", u"前中"},
             {"one behind it is out of reach", address + x323 + u"x中", address + x323 + u"x中"},
             {"the last stop decides, not the first", u"HTTP://a b\"c" + x400, u"\"c" + x400},
             {"é is double-byte", u"HTTP://aé" + x400, u"é" + x400},
             {"€ is not", u"HTTP://a€" + x400, u"HTTP://a€" + x400},
             {"only the first address", u"HTTP://a " + x322 + u"HTTP://b", u" " + x322 + u"HTTP://b"},
         }) {
        EXPECT_EQ(ClsSmart::killURLText(c.text), c.expected) << c.fault;
    }
}

TEST(KillTag, TakesTagsAndEntitiesOut) {
    const Text a10239(10239, u'a');
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"both spellings of the quote", u"a<b>c</b>d&nbsp;&quot;x&QUOT;", u"acd\"x\""},
             {"no end of a tag", u"a<b", u"a<b"},
             {"an open tag keeps what follows", u"a<b>c<d&nbsp;e", u"ac<de"},
             {"from the first < to the first >", u"a<<b>>c", u"a>c"},
             {"a blank taken out may join an entity", u"&qu&nbsp;ot;", u"\""},
             {"cut before tags are looked for", a10239 + u"<b>c", a10239 + u"<"},
         }) {
        Text text = c.text;
        EXPECT_TRUE(ClsSmart::killTag(text)) << c.fault;
        EXPECT_EQ(text, c.expected) << c.fault;
    }
}

TEST(KillTagStr, LeavesTheQuoteEntity) {
    EXPECT_EQ(pubProg::killTagStr(u"<a href=1>长虹&nbsp;</a>&quot;<"), u"长虹&quot;<");
    EXPECT_EQ(pubProg::killTagStr(Text(10240, u'a') + u"b"), Text(10240, u'a'));
}

TEST(KillMoreBR, LeavesAtMostThree) {
    const Text eight = u"<br><br><br><br><br><br><br><br>";
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"needs more than one round", u"甲" + eight + u"乙", u"甲<br><br><br>乙"},
             {"three stay", u"<br><br><br>", u"<br><br><br>"},
             {"blanks go in one pass, and no second one follows", u"<br> <br> <br> <br>", u"<br><br> <br><br>"},
             {"what a round joins is shortened in the next", u"<br><br><br> <br>", u"<br><br><br>"},
             {"upper case stays", u"<BR><BR><BR><BR>", u"<BR><BR><BR><BR>"},
         }) {
        EXPECT_EQ(ClsSmart::killMoreBR(c.text), c.expected) << c.fault;
    }
}

TEST(CutTitle, KeepsWhatFollowsTheFirstSeparator) {
    EXPECT_EQ(ClsSmart::cutTitle(u"站名--甲--乙", u"--"), u"甲--乙");
    EXPECT_EQ(ClsSmart::cutTitle(u"站名", u"--"), u"站名");
    EXPECT_EQ(ClsSmart::cutTitle(u"站名--", u"--"), u"");
}

} // namespace
} // namespace kelb::rewrite
