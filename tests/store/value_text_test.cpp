#include "store/value_text.h"

#include <gtest/gtest.h>

namespace kelb::store {
namespace {

TEST(ParseNumber, TakesDecimalNumbersOnly) {
    struct Case {
        const char16_t* text;
        std::optional<double> number;
    };
    for (const Case& c : std::initializer_list<Case>{
             {u"0", 0},
             {u" 12 ", 12},
             {u"+5", 5},
             {u"-1.5", -1.5},
             {u"1e3", 1000},
             {u".5", 0.5},
             {u"", std::nullopt},
             {u" ", std::nullopt},
             {u"+", std::nullopt},
             {u"+-5", std::nullopt},
             {u"12a", std::nullopt},
             {u"inf", std::nullopt},
             {u"nan", std::nullopt},
             {u"１２", std::nullopt},
         }) {
        EXPECT_EQ(parseNumber(c.text), c.number) << std::string(c.text, c.text + std::u16string_view(c.text).size());
    }
}

TEST(ToLong, RoundsHalvesToTheEvenNumberWithin32Bits) {
    EXPECT_EQ(toLong(0.5), 0);
    EXPECT_EQ(toLong(1.5), 2);
    EXPECT_EQ(toLong(-2.5), -2);
    EXPECT_EQ(toLong(2147483647.0), 2147483647);
    EXPECT_EQ(toLong(2147483648.0), std::nullopt);
    EXPECT_EQ(toLong(-2147483648.0), -2147483647 - 1);
}

TEST(ParseBoolean, TakesWordsAndNumbers) {
    EXPECT_EQ(parseBoolean(u"true"), true);
    EXPECT_EQ(parseBoolean(u"FALSE"), false);
    EXPECT_EQ(parseBoolean(u"-1"), true);
    EXPECT_EQ(parseBoolean(u"0"), false);
    EXPECT_EQ(parseBoolean(u"yes"), std::nullopt);
}

} // namespace
} // namespace kelb::store
