#include "platform/like.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelb::platform {
namespace {

struct LikeCase {
    std::u16string pattern, text;
    bool matches;
};

void expectAll(bool (*match)(std::u16string_view, std::u16string_view) noexcept, const std::vector<LikeCase>& cases) {
    for (const LikeCase& c : cases) {
        EXPECT_EQ(match(c.text, c.pattern), c.matches)
            << testing::PrintToString(c.pattern) << " on " << testing::PrintToString(c.text);
    }
}

TEST(MatchesPattern, Wildcards) {
    expectAll(matchesPattern, {
                                  {u"*thread*-[1-9]-*", u"http://h/thread-12-1-1.html", true},
                                  {u"*thread*-[1-9]-*", u"http://h/Thread-12-1-1.html", false},
                                  {u"*thread*-[1-9]-*", u"http://h/thread-12-10.html", false},
                                  {u"", u"", true},
                                  {u"", u"a", false},
                                  {u"*", u"", true},
                                  {u"**a**", u"a", true},
                                  {u"a?c", u"a中c", true},
                                  {u"a?", u"a", false},
                                  {u"##", u"07", true},
                                  {u"#", u"７", false}, // ASCII digits only
                                  {u"a%_", u"a%_", true},
                                  {u"*ab*abc", u"xababc", true}, // the last run has to grow past a half match
                                  {u"*b*d", u"abcde", false},
                              });
}

TEST(MatchesPattern, Sets) {
    expectAll(matchesPattern, {
                                  {u"[abc]", u"b", true},  {u"[abc]", u"B", false},   {u"[!abc]", u"d", true},
                                  {u"[!abc]", u"", false}, {u"[a-cx-z]", u"y", true}, {u"[a-c]", u"d", false},
                                  {u"[c-a]", u"b", false}, // backwards: holds nothing
                                  {u"[-a]", u"-", true},   {u"[a-]", u"-", true},     {u"[[]", u"[", true},
                                  {u"[*?#]", u"?", true},  {u"]", u"]", true},        {u"a!", u"a!", true},
                                  {u"[!]", u"!", true}, // nothing is negated: the mark itself
                                  {u"[a!]", u"!", true},   {u"a[]b", u"ab", true}, // the empty set is the empty text
                                  {u"[]", u"", true},      {u"*[]", u"abc", true},    {u"*[]c", u"abc", true},
                                  {u"[]a]", u"a]", true},  {u"[ab", u"a", false}, // not closed: matches nothing
                                  {u"*[", u"[", false},
                              });
}

TEST(MatchesSqlLike, WildcardsWithoutRegardToCase) {
    expectAll(matchesSqlLike, {
                                  {u"%THREAD%", u"http://h/thread-1", true},
                                  {u"%thread%-[a-c]-%", u"Thread-1-B-x", true},
                                  {u"%[!p]", u"xP", false},
                                  {u"%[!p]", u"xq", true},
                                  {u"[A-C]", u"b", true},
                                  {u"_", u"中", true},
                                  {u"_", u"", false},
                                  {u"*?#", u"*?#", true}, // ordinary characters here
                                  {u"*", u"abc", false},
                                  {u"#", u"1", false},
                                  {u"ABC", u"abc", true},
                                  {u"abc", u"abcd", false},
                                  {u"%ｃ%", u"型号Ｃ", true},
                                  {u"", u"", true},
                                  {u"%", u"", true},
                              });
}

TEST(MatchesPattern, ManyRunsOnALongTextEnd) {
    // Nested tries over 20 runs would not end in the test's time.
    std::u16string pattern;
    for (int i = 0; i < 20; ++i) {
        pattern += u"*?a";
    }
    const std::u16string text = std::u16string(50'000, u'a') + u"b";
    EXPECT_FALSE(matchesPattern(text, pattern));
    EXPECT_TRUE(matchesPattern(text, pattern + u"*"));
}

} // namespace
} // namespace kelb::platform
