#include "platform/text.h"

#include "platform/clock.h"
#include "platform/random.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelb::platform {
namespace {

using Pieces = std::vector<std::u16string_view>;

TEST(Text, SplitGivesOnePieceMoreThanSeparators) {
    EXPECT_EQ(split(u"", u"|"), Pieces{});
    EXPECT_EQ(split(u"甲", u"|"), Pieces{u"甲"});
    EXPECT_EQ(split(u"|a||b|", u"|"), (Pieces{u"", u"a", u"", u"b", u""}));
    EXPECT_EQ(split(u"a\r\nb\nc", u"\r\n"), (Pieces{u"a", u"b\nc"}));
    EXPECT_EQ(split(u"aaa", u"aa"), (Pieces{u"", u"a"})); // separators do not overlap
}

TEST(Text, JoinPutsTheSeparatorBetween) {
    EXPECT_EQ(join({}, u", "), u"");
    EXPECT_EQ(join({u"a"}, u", "), u"a");
    EXPECT_EQ(join({u"a", u"", u"b"}, u", "), u"a, , b");
}

struct ReplaceCase {
    const char16_t *text, *wanted, *with, *expected;
};

TEST(Text, ReplaceAllGoesOnceFromLeftToRight) {
    for (const ReplaceCase& c : {
             ReplaceCase{u"a-1-b-1-", u"-1-", u"-2-", u"a-2-b-2-"},
             {u"aaa", u"aa", u"b", u"ba"},  // none overlapping
             {u"xx", u"x", u"xx", u"xxxx"}, // what was put in is not searched again
             {u"<br><br>", u"<br>", u"", u""},
             {u"abc", u"", u"x", u"abc"},
             {u"abc", u"d", u"x", u"abc"},
             {u"Ab", u"a", u"x", u"Ab"}, // case counts
         }) {
        EXPECT_EQ(replaceAll(c.text, c.wanted, c.with), c.expected);
        std::u16string inPlace = c.text;
        replaceAllIn(inPlace, c.wanted, c.with);
        EXPECT_EQ(inPlace, c.expected);
    }
}

TEST(Text, TrimTakesBlanksOnly) {
    EXPECT_EQ(trimBlanks(u"  a b  "), u"a b");
    EXPECT_EQ(trimBlanks(u" \t\u3000\r\n "), u"\t\u3000\r\n");
    EXPECT_EQ(trimBlanks(u"   "), u"");
}

TEST(Text, LeftAndRightStopAtTheEnds) {
    EXPECT_EQ(left(u"abc", 2), u"ab");
    EXPECT_EQ(left(u"abc", 9), u"abc");
    EXPECT_EQ(right(u"abc", 2), u"bc");
    EXPECT_EQ(right(u"abc", 9), u"abc");
    EXPECT_EQ(right(u"abc", 0), u"");
}

TEST(Text, NumbersAndQuotes) {
    EXPECT_EQ(number(0), u"0");
    EXPECT_EQ(number(std::numeric_limits<long long>::min()), u"-9223372036854775808");
    EXPECT_EQ(quoted(u"it's ''"), u"it''s ''''");
}

TEST(Clock, NowIsAValidTimeAndSecondsNeverGoBack) {
    const SystemClock clock;
    EXPECT_TRUE(isValid(clock.now()));
    EXPECT_GE(clock.now().year, 2020);
    const double before = clock.steadySeconds();
    EXPECT_GE(clock.steadySeconds(), before);
}

TEST(Random, FillsTheUnitIntervalAndStartsAnew) {
    SystemRandom random;
    SystemRandom other;
    EXPECT_NE(random.bits(), other.bits());
    int lowHalf = 0;
    for (int i = 0; i < 1000; ++i) {
        const double value = random.next();
        ASSERT_GE(value, 0.0);
        ASSERT_LT(value, 1.0);
        lowHalf += value < 0.5 ? 1 : 0;
    }
    EXPECT_NEAR(lowHalf, 500, 150); // nine standard deviations
}

} // namespace
} // namespace kelb::platform
