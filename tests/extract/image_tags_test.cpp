#include "extract/image_tags.h"

#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <vector>

namespace kelb::extract {
namespace {

using Replacement = std::function<std::u16string(std::u16string_view)>;

/// The same, done to the letter: the first tag, all its occurrences, from the start again.
std::u16string byTheLetter(std::u16string html, const Replacement& replacement) {
    while (true) {
        const std::size_t begin = platform::findNoCase(html, u"<img");
        const std::size_t close = begin == html.npos ? html.npos : html.find(u'>', begin);
        if (close == html.npos) {
            return html;
        }
        const std::u16string tag = html.substr(begin, close + 1 - begin);
        html = platform::replaceAll(html, tag, replacement(tag));
    }
}

/// Short texts for some tags and marks without ">" for others, as stored and missing images get them.
std::u16string standIn(std::u16string_view tag, std::vector<std::u16string>& asked) {
    asked.emplace_back(tag);
    return tag.find(u'a') == tag.npos ? u"<br>x<br>"
                                      : u"[" + platform::number(static_cast<long long>(tag.size())) + u"]";
}

TEST(ReplaceImageTags, GivesWhatReplacingTagAfterTagGives) {
    const std::vector<std::u16string> pieces{u"<img", u"<IMG", u">", u" ", u"a", u"b", u"<br>", u"<im", u"g", u"x"};
    constexpr unsigned kSeed = 20160301;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 60'000; ++round) {
        const std::size_t kinds = 3 + random() % (pieces.size() - 2);
        std::u16string html;
        for (std::size_t i = random() % 40; i > 0; --i) {
            html += pieces[random() % kinds];
        }
        std::vector<std::u16string> asked, expectedAsked;
        const std::u16string expected =
            byTheLetter(html, [&](std::u16string_view tag) { return standIn(tag, expectedAsked); });
        const std::u16string given =
            replaceImageTags(html, [&](std::u16string_view tag) { return standIn(tag, asked); });
        ASSERT_EQ(platform::toUtf8(given), platform::toUtf8(expected)) << platform::toUtf8(html);
        ASSERT_EQ(asked, expectedAsked) << platform::toUtf8(html);
    }
}

struct HostileCase {
    const char* name;
    std::u16string_view piece, end;
    std::size_t asked;
};

class HostilePages : public testing::TestWithParam<HostileCase> {};

/// Each of these would take minutes if its work grew with the square of the page.
TEST_P(HostilePages, OfMegabytesTakeNoTime) {
    const HostileCase& c = GetParam();
    std::u16string html;
    while (html.size() < 2'000'000) {
        html += c.piece;
    }
    html += c.end;
    std::size_t asked = 0;
    const auto begun = std::chrono::steady_clock::now();
    (void)replaceImageTags(html, [&](std::u16string_view) {
        ++asked;
        return u"[stored]";
    });
    EXPECT_EQ(asked, c.asked);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20)) << "sanitizers included";
}

INSTANTIATE_TEST_SUITE_P(Pages, HostilePages,
                         testing::ValuesIn<HostileCase>({
                             {"openings_without_an_end", u"<img", u"", 0},
                             {"openings_before_one_end", u"<img", u">", 1},
                             {"one_tag_again_and_again", u"<img src=1>", u"", 1},
                             {"nested_pairs", u"<img <img>", u"", 1},
                             {"ends_that_go_with_the_tag_inside", u"<img b><img a ", u"", 1},
                             {"angle_brackets", u"<>", u"", 0},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace kelb::extract
