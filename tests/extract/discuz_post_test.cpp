#include "extract/Cls4Discuz.h"

#include <gtest/gtest.h>

namespace kelb::extract {
namespace {

using Text = std::u16string;

TEST(ExtDiscuzTitle, CutsTheLinkInTheHeading) {
    struct Case {
        const char* fault;
        Text html, title, reason;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"the last link before the end",
              u"<h1 class=\"ts\"><a href=\"f\">[彩电]</a> <a href=\"t\">标题</a></h1><h1>x</h1>", u"标题", u"old"},
             {"prefixes in both kinds of brackets, the first of each",
              u"<h1 class=\"ts\"><a>[求助]a<a b>[原\r\n创] 【长虹】【急】 不\r\n开机&nbsp;</a></h1>", u"【急】 不开机",
              u"old"},
             {"a 】 before the ] goes with it", u"<h1 class=\"ts\"><a b>【长虹】[求助]甲】乙</a></h1>", u"乙", u"old"},
             {"blanks are trimmed before tags go", u"<h1 class=\"ts\"><a b>[x]  甲 <em> 乙</em> </h1>", u"甲  乙 ",
              u"old"},
             {"the older heading; its link may stand before it",
              u"<a href=\"b\">版块</a><div id=\"threadtitle\"><h1>标题</h1></div>", u"版块标题", u"old|未找到SM"},
             {"no heading", u"<h1 class=\"tt\"><a b>标题</a></h1>", u"", u"old|未找到SM|未找到SM1"},
             {"no link", u"<h1 class=\"ts\">标题</h1><a b>", u"", u"old"},
             {"no end", u"<h1 class=\"ts\"><a b>标题</a>", u"", u"old"},
         }) {
        Text reason = u"old";
        EXPECT_EQ(Cls4Discuz::extDiscuzTitle(c.html, reason), c.title) << c.fault;
        EXPECT_EQ(reason, c.reason) << c.fault;
    }
}

struct TextCase {
    const char* fault;
    Text text, expected;
};

TEST(ExtFloorContent, CutsTheMessageCell) {
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"the first end behind the start",
              u"</td></tr></table><td class=\"t_f\" id=\"1\">甲</td></tr></table>乙</td></tr></table>",
              u"<td class=\"t_f\" id=\"1\">甲</td></tr></table>"},
             {"the older cell", u"a<td class=\"t_msgfont\">甲</td></tr></table>b",
              u"<td class=\"t_msgfont\">甲</td></tr></table>"},
             {"a cell without end does not fall back",
              u"<td class=\"t_msgfont\">甲</td></tr></table><td class=\"t_f\">乙", u""},
             {"no cell", u"<td>甲</td></tr></table>", u""},
         }) {
        EXPECT_EQ(Cls4Discuz::extFloorContent(c.text), c.expected) << c.fault;
    }
}

TEST(KillDiscuzMark, DropsHeaderAndNotice) {
    const Text x44(44, u'x');
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"a header at the third unit", u"  回复 2# 甲<br />乙<br />丙", u"乙<br />丙"},
             {"one at the fourth stays", u"   回复甲<br />乙", u"   回复甲<br />乙"},
             {"a header without its line break stays", u"回复甲<br>乙", u"回复甲<br>乙"},
             {"the first one counts", u"回复<br />  回复<br />乙", u"  回复<br />乙"},
             {"a notice of 49 units", u"甲本帖最后由" + x44 + u"编辑乙", u"甲 乙"},
             {"50 are too many", u"甲本帖最后由" + x44 + u"x编辑乙", u"甲本帖最后由" + x44 + u"x编辑乙"},
             {"its word, not one before it", u"编辑甲本帖最后由乙编辑丙编辑", u"编辑甲 丙编辑"},
             {"only one notice", u"本帖最后由编辑本帖最后由编辑", u" 本帖最后由编辑"},
             {"both", u"回复甲<br />本帖最后由编辑乙", u" 乙"},
         }) {
        EXPECT_EQ(Cls4Discuz::killDiscuzMark(c.text), c.expected) << c.fault;
    }
}

TEST(KillBeginGR, BeginsWithALetterOrCharacter) {
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"line breaks of both kinds", u"<br />\r\n 甲<br />乙\r\n丙<br>", u"甲<br>乙<br>丙<br>"},
             {"a digit", u"--9-", u"9-"},
             {"a full-width mark is double-byte", u"--，甲", u"，甲"},
             {"a euro sign is not", u"€z", u"z"},
             {"nothing to begin with", u"--\r\n--", u"--<br>--"},
         }) {
        EXPECT_EQ(Cls4Discuz::killBeginGR(c.text), c.expected) << c.fault;
    }
}

} // namespace
} // namespace kelb::extract
