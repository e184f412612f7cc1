#include "extract/Prog_Kelb.h"
#include "extract/myGuard.h"
#include "platform/utf8.h"

#include <gtest/gtest.h>

namespace kelb::extract {
namespace {

struct LinkCase {
    const char* name;
    std::u16string_view page, link, full;
};

class GetFullURL : public testing::TestWithParam<LinkCase> {};

TEST_P(GetFullURL, ResolvesALinkOfAPage) {
    const LinkCase& c = GetParam();
    EXPECT_EQ(platform::toUtf8(Prog_Kelb::getFullURL(c.page, c.link)), platform::toUtf8(c.full));
}

constexpr std::u16string_view kPage = u"http://h.cn/x/y/z.htm";

INSTANTIATE_TEST_SUITE_P(
    Links, GetFullURL,
    testing::ValuesIn<LinkCase>({
        // the page's address
        {"ten_characters_are_too_few", u"http://a.c", u"k.htm", u""},
        {"eleven_characters", u"http://a.cn", u"k.htm", u"http://a.cn/k.htm"},
        {"no_path", u"http://host.cn", u"k.htm", u"http://host.cn/k.htm"},
        {"no_path_but_a_slash", u"http://host.cn/", u"k.htm", u"http://host.cn/k.htm"},
        {"no_scheme", u"www.host.cn/a/b.htm", u"k.htm", u"www.host.cn/a/k.htm"},
        // "https:/" is the host, "host.cn" the first folder
        {"https_page", u"https://host.cn/a/b.htm", u"/k.htm", u"https://k.htm"},
        {"https_page_relative", u"https://host.cn/a/b.htm", u"k.htm", u"https://host.cn/a/k.htm"},
        {"empty_first_folder", u"http://host.cn//a.htm", u"k.htm", u"http://host.cn//k.htm"},
        // the query
        {"query_at_18_is_cut", u"http://host.cn/ab?u=/c/", u"k.htm", u"http://host.cn/k.htm"},
        {"query_at_17_stays", u"http://host.cn/a?u=/c/d", u"k.htm", u"http://host.cn/a?u=/c/k.htm"},
        {"only_the_first_query_counts", u"http://host.cn/a?u=/c?d/e", u"k.htm", u"http://host.cn/a?u=/c?d/k.htm"},
        // the link
        {"absolute", kPage, u"HTTP://Other/a", u"HTTP://Other/a"},
        {"https_counts_as_relative", kPage, u"https://other/a", u"http://h.cn/x/y/https://other/a"},
        {"httpx_counts_as_relative", kPage, u"HTTPx://o", u"http://h.cn/x/y/HTTPx://o"},
        {"other_scheme", kPage, u"ftp://other/a", u""},
        {"scheme_in_the_middle", kPage, u"go?to=http://other/", u""},
        {"script", kPage, u"javascript:f()", u"http://h.cn/x/y/javascript:f()"},
        {"empty", kPage, u"", u"http://h.cn/x/y/"},
        {"from_the_root", kPage, u"/k.htm", u"http://h.cn/k.htm"},
        {"other_host_without_scheme", kPage, u"//other/k.htm", u"http://h.cn//other/k.htm"},
        {"same_folder", kPage, u"k.htm", u"http://h.cn/x/y/k.htm"},
        {"dot_folder", kPage, u"./k.htm", u"http://h.cn/x/y/./k.htm"},
        {"one_up", kPage, u"../k.htm", u"http://h.cn/x/k.htm"},
        {"one_up_of_two_parts", u"http://h.cn/x/z.htm", u"../k.htm", u"http://h.cn/k.htm"},
        {"one_up_of_one_part", u"http://h.cn/z.htm", u"../k.htm", u"http://h.cn/k.htm"},
        {"two_up", kPage, u"../../k.htm", u"http://h.cn/k.htm"},
        {"two_up_of_four_parts", u"http://h.cn/w/x/y/z.htm", u"../../k.htm", u"http://h.cn/w/k.htm"},
        {"two_up_of_one_part", u"http://h.cn/z.htm", u"../../k.htm", u"http://h.cn/k.htm"},
        {"three_up_go_two", u"http://h.cn/v/w/x/y/z.htm", u"../../../k.htm", u"http://h.cn/v/w/../k.htm"},
        {"up_from_no_path", u"http://host.cn", u"../k.htm", u"http://host.cn/k.htm"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST(InStrNoCase, CountsFromOneAndGivesZeroForAnyFault) {
    struct Case {
        std::int64_t start;
        std::u16string_view text, wanted;
        std::size_t position;
    };
    for (const Case& c : {
             Case{1, u"aSRC=b", u"src=", 2},
             Case{2, u"src=src=", u"SRC=", 5},
             Case{5, u"src=ｓrc=", u"ＳRC=", 5}, // full-width letters have case as well
             Case{6, u"src=src=", u"src=", 0},
             Case{0, u"src=", u"src=", 0},
             Case{-1, u"src=", u"src=", 0},
             Case{5, u"src=", u"", 0},
             Case{4, u"src=", u"", 4},
             Case{1, u"", u"", 0},
             Case{std::numeric_limits<std::int64_t>::max(), u"src=", u"s", 0},
         }) {
        EXPECT_EQ(Prog_Kelb::InStrNoCase(c.start, c.text, c.wanted), c.position)
            << c.start << " " << platform::toUtf8(c.text);
    }
}

TEST(MyGuard, HoldsTheSuffixes) {
    EXPECT_EQ(myGuard().suffixes(), u".com|.net|.org|.gov|.edu|.cn");
}

} // namespace
} // namespace kelb::extract
