#include "platform/page_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelb::platform {
namespace {

TEST(PageText, NamesOfEncodings) {
    EXPECT_EQ(parsePageEncoding(u"Auto"), PageEncoding::Auto);
    EXPECT_EQ(parsePageEncoding(u"936"), PageEncoding::CodePage936);
    EXPECT_EQ(parsePageEncoding(u"UTF-8"), PageEncoding::Utf8);
    EXPECT_EQ(parsePageEncoding(u"utf8"), std::nullopt);
    EXPECT_EQ(parsePageEncoding(u""), std::nullopt);
}

struct PageCase {
    const char* name;
    std::string bytes;
    PageEncoding encoding;
    std::u16string text;
};
class DecodePage : public testing::TestWithParam<PageCase> {};

TEST_P(DecodePage, GivesTheText) {
    EXPECT_EQ(decodePage(GetParam().bytes, GetParam().encoding), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, DecodePage,
    testing::ValuesIn(std::vector<PageCase>{
        {"auto_code_page", "<p>\xD6\xD0", PageEncoding::Auto, u"<p>中"},
        {"auto_utf8", "<p>\xE4\xB8\xAD", PageEncoding::Auto, u"<p>中"},
        {"auto_asks_not_what_the_page_declares", "charset=utf-8 \xD6\xD0", PageEncoding::Auto, u"charset=utf-8 中"},
        {"auto_mark_decides_even_when_ill_formed",
         "\xEF\xBB\xBF"
         "a\xD6\xD0",
         PageEncoding::Auto, u"a\uFFFD\uFFFD"},
        {"auto_mark_alone", "\xEF\xBB\xBF", PageEncoding::Auto, u""},
        {"auto_one_bad_byte_turns_to_the_code_page", "\xE4\xB8\xAD\x80", PageEncoding::Auto, u"涓瓈"},
        {"code_page_always", "\xE4\xB8\xAD\xE4", PageEncoding::CodePage936, u"涓\uE15D"},
        {"utf8_always", "\xD6\xD0", PageEncoding::Utf8, u"\uFFFD\uFFFD"},
        {"ascii", "plain", PageEncoding::Auto, u"plain"},
    }),
    [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace kelb::platform
