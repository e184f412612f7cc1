#include "segment/ClsFenCi.h"

#include <gtest/gtest.h>

namespace kelb::segment {
namespace {

TEST(SplitPrepare, LeavesRunsOfChineseText) {
    struct Case {
        const char* fault;
        std::u16string text, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"letters, marks, blanks and digits", u"abc电视，坏了 123", u"<|split|>电视<|split|>坏了<|split|>"},
             {"a run of separators is one", u"电视，。 \r\n！《坏》", u"电视<|split|>坏<|split|>"},
             {"each listed mark", u"一，二。三！四…五“六”七：八《九》十",
              u"一<|split|>二<|split|>三<|split|>四<|split|>五<|split|>六<|split|>七<|split|>八<|split|>九<|split|>十"},
             {"other full-width marks stay", u"电、视；（坏）？\u3000Ａ１", u"电、视；（坏）？\u3000Ａ１"},
             {"what the code page holds in two bytes stays", u"é α①℃", u"é<|split|>α①℃"},
             {"what it does not hold goes", u"电€ñ\u00A0\U0001F4FA视", u"电<|split|>视"},
             {"the separator's own text", u"<|split|>", u"<|split|>"},
             {"nothing to keep", u" 12\n", u"<|split|>"},
             {"nothing", u"", u""},
         }) {
        EXPECT_EQ(ClsFenCi::splitPrepare(c.text), c.expected) << c.fault;
    }
}

} // namespace
} // namespace kelb::segment
