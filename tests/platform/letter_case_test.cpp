#include "platform/letter_case.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace kelb::platform {
namespace {

/// ICU's simple mapping where it stays within one code unit.
char16_t icuMapped(UChar32 unit, UChar32 mapped) {
    const bool surrogate = unit >= 0xD800 && unit <= 0xDFFF;
    return static_cast<char16_t>(surrogate || mapped > 0xFFFF ? unit : mapped);
}

TEST(LetterCase, EveryUnitMapsAsIcuMapsIt) {
    for (UChar32 unit = 0; unit <= 0xFFFF; ++unit) {
        EXPECT_EQ(upper(static_cast<char16_t>(unit)), icuMapped(unit, u_toupper(unit))) << unit;
        EXPECT_EQ(lower(static_cast<char16_t>(unit)), icuMapped(unit, u_tolower(unit))) << unit;
    }
}

TEST(LetterCase, TextsMapUnitByUnit) {
    EXPECT_EQ(upperCase(u"ｃｈ é я ß 中 a1"), u"ＣＨ É Я ß 中 A1");
    EXPECT_EQ(lowerCase(u"ＣＨ É Я ß 中 A1"), u"ｃｈ é я ß 中 a1");
}

TEST(LetterCase, EveryUnitIsFoundByItsTwinAndByNothingElse) {
    // Catches a first unit with three forms (s S ſ) and one whose lower case leads elsewhere (İ, the Kelvin sign).
    std::unordered_map<char16_t, std::vector<char16_t>> groups;
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
        groups[upper(static_cast<char16_t>(unit))].push_back(static_cast<char16_t>(unit));
    }
    for (const auto& [mapped, members] : groups) {
        for (const char16_t wanted : members) {
            for (const char16_t there : members) {
                const std::u16string text = std::u16string(9, u'\0') + there;
                EXPECT_EQ(findNoCase(text, {&wanted, 1}), 9U) << static_cast<int>(wanted) << static_cast<int>(there);
            }
        }
    }
    EXPECT_EQ(findNoCase(u"i", u"\u0130"), std::u16string_view::npos);
    EXPECT_EQ(findNoCase(u"k", u"\u212A"), std::u16string_view::npos);
}

struct FindCase {
    const char* name;
    std::u16string text, wanted;
    std::size_t from, position;
};
class FindNoCase : public testing::TestWithParam<FindCase> {};

TEST_P(FindNoCase, GivesTheFirstPosition) {
    const FindCase& c = GetParam();
    EXPECT_EQ(findNoCase(c.text, c.wanted, c.from), c.position);
}

constexpr std::size_t kNone = std::u16string_view::npos;
INSTANTIATE_TEST_SUITE_P(Texts, FindNoCase,
                         testing::ValuesIn(std::vector<FindCase>{
                             {"first_of_two", u"xxThreadTHREAD", u"thread", 0, 2},
                             {"from_behind_the_first", u"xxThreadTHREAD", u"thread", 3, 8},
                             {"first_unit_repeats", u"aaaaaaaaaaaaaaaab", u"AAB", 0, 14},
                             {"at_the_very_end", u"0123456789</TD>", u"</td>", 0, 10},
                             {"cut_off_at_the_end", u"0123456789</T", u"</td>", 0, kNone},
                             {"longer_than_the_text", u"ab", u"abc", 0, kNone},
                             {"empty_at_from", u"abc", u"", 3, 3},
                             {"empty_past_the_end", u"abc", u"", 4, kNone},
                             {"from_past_the_end", u"abc", u"a", 9, kNone},
                             {"full_width", u"型号ＬＣ－３２", u"ｌｃ", 0, 2},
                             {"s_has_a_third_form", u"pa\u017Ft", u"S", 0, 2},
                         }),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(LetterCase, ComparesAfterUpperCasing) {
    EXPECT_EQ(compareNoCase(u"wxAll", u"WXALL"), 0);
    EXPECT_LT(compareNoCase(u"wxall", u"wxALLs"), 0);
    EXPECT_GT(compareNoCase(u"_", u"a"), 0); // 5F lies above A (41), though below a (61)
    EXPECT_LT(compareNoCase(u"", u"a"), 0);
    EXPECT_TRUE(equalNoCase(u"РУС", u"рус"));
    EXPECT_FALSE(equalNoCase(u"ab", u"abc"));
}

TEST(LetterCase, MapsFindKeysOfOtherCase) {
    std::unordered_map<std::u16string, int, NoCaseHash, NoCaseEqual> columns{{u"recTime", 7}};
    EXPECT_EQ(columns.count(std::u16string_view(u"RECTIME")), 1U);
    EXPECT_EQ(columns.count(std::u16string_view(u"recTimes")), 0U);
}

} // namespace
} // namespace kelb::platform
