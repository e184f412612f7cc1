#include "extract/Cls4Discuz.h"
#include "platform/like.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <random>

namespace kelb::extract {
namespace {

using Text = std::u16string;

TEST(KillGR, RemovesNoiseRuns) {
    struct Case {
        const char* fault;
        Text text, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"a run between characters", u"他说 ab cd ef 好", u"他说好"},
             {"a run at the end of the text", u"甲x y1 z2 33 ", u"甲"},
             {"two groups of two are none", u"甲 ab cd 乙", u"甲 ab cd 乙"},
             {"a group of three is none", u"甲 ab cde fg 乙", u"甲 ab cde fg 乙"},
             {"nine blanks stay", u"甲         乙", u"甲         乙"},
             {"ten blanks are groups of blanks", u"甲          乙", u"甲乙"},
             {"unit 127 ends a run", u"甲 ab cd ef\u007f 乙", u"甲 ab cd ef\u007f 乙"},
             {"a run is removed inside later ones, whose own turn then finds nothing", u"甲 ab cd ef 乙x ab cd ef y",
              u"甲乙xy"},
             {"and inside earlier ones, which are gone by then", u"甲x ab cd ef y乙 ab cd ef ", u"甲乙"},
             {"a second turn of the same run takes what the first one joined",
              u"甲 ab cd ef 乙x ab c ab cd ef d ef y丙 ab cd ef ", u"甲乙xy丙"},
         }) {
        EXPECT_EQ(Cls4Discuz::killGR(c.text), c.expected) << c.fault;
    }
}

/// The rule word by word: each run of the text as given is removed from the whole of a copy.
Text removeRunByRun(const Text& text) {
    Text kept = text, run;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] >= 1 && text[i] <= 126) {
            run += text[i];
            continue;
        }
        if (platform::matchesPattern(run, u"* ?? ?? ?? *")) {
            kept = platform::replaceAll(kept, run, u"");
        }
        run.clear();
    }
    return kept;
}

TEST(KillGR, AgreesWithRemovingRunByRun) {
    std::mt19937 random(20110803);
    for (int round = 0; round < 3000; ++round) {
        // Few different pieces, so that runs hold, repeat and rejoin one another.
        static const std::vector<Text> kPieces{u" ab cd ef ", u" ab", u" cd ef ", u"a", u" ", u" a ab cd ef b", u"中"};
        Text text;
        for (std::uint32_t i = 0; i < 3 + random() % 20; ++i) {
            text += kPieces[random() % kPieces.size()];
        }
        ASSERT_EQ(Cls4Discuz::killGR(text), removeRunByRun(text)) << "round " << round;
    }
}

TEST(KillGR, ManyDifferentRunsTakeOneWalk) {
    Text text, kept;
    for (int i = 0; i < 50'000; ++i) {
        text += u"中 aa bb cc " + platform::number(i * 7919 % 1'000'003) + u" dd";
        kept += u"中";
    }
    EXPECT_EQ(Cls4Discuz::killGR(text), kept);
}

} // namespace
} // namespace kelb::extract
