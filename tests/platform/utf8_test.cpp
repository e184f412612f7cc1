#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelb::platform {
namespace {

struct Utf8Case {
    const char* name;
    std::string bytes;
    std::u16string text;
    bool valid;
};
class FromUtf8 : public testing::TestWithParam<Utf8Case> {};

TEST_P(FromUtf8, GivesTextAndVerdict) {
    const Utf8Case& c = GetParam();
    const std::vector<char> exact(c.bytes.begin(), c.bytes.end());
    const std::string_view bytes(exact.data(), exact.size());
    EXPECT_EQ(fromUtf8(bytes), c.text);
    EXPECT_EQ(checkUtf8(bytes).valid, c.valid);
    if (c.valid) {
        EXPECT_EQ(toUtf8(c.text), c.bytes);
        EXPECT_EQ(checkUtf8(bytes).multiByte, c.bytes.size() != c.text.size());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sequences, FromUtf8,
    testing::ValuesIn(std::vector<Utf8Case>{
        {"empty", "", u"", true},
        {"ascii_of_nine", "abcdefghi", u"abcdefghi", true},
        {"two_three_four_bytes", "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80", u"é中\U0001F600", true},
        {"after_eight_ascii", "abcdefgh\xE4\xB8\xAD", u"abcdefgh中", true},
        {"edges", "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF",
         u"\u0080\u07FF\u0800\uD7FF\uE000\U0010FFFF", true},
        {"overlong_slash", "\xC0\xAF", u"\uFFFD\uFFFD", false},
        {"overlong_of_three", "\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD", false},
        {"surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", false},
        {"past_the_last_plane", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", false},
        {"stray_continuation", "a\x80z", u"a\uFFFDz", false},
        // The front of a good sequence is one replacement (maximal subpart), the next byte is read anew.
        {"cut_short", "\xE4\xB8z\xF0\x9F\x98", u"\uFFFDz\uFFFD", false},
        {"lead_then_lead", "\xE4\xE4\xB8\xAD", u"\uFFFD中", false},
        {"chinese_of_the_code_page", "\xD6\xD0", u"\uFFFD\uFFFD", false},
    }),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(ToUtf8, UnpairedSurrogatesAreReplaced) {
    const std::u16string text{u'a', 0xD83D, u'b', 0xDE00, 0xD83D};
    EXPECT_EQ(toUtf8(text), "a\xEF\xBF\xBD"
                            "b\xEF\xBF\xBD\xEF\xBF\xBD");
    std::string out = "x";
    toUtf8(u"中", out);
    EXPECT_EQ(out, "x\xE4\xB8\xAD");
}

} // namespace
} // namespace kelb::platform
