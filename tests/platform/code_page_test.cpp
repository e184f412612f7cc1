#include "platform/code_page.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <array>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kelb::platform {
namespace {

/// ICU's converter of the same page: the independent source that the tables are compared with.
class IcuPage {
public:
    IcuPage() {
        UErrorCode error = U_ZERO_ERROR;
        converter_.reset(ucnv_open("windows-936", &error));
        ucnv_setFromUCallBack(converter_.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setToUCallBack(converter_.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFallback(converter_.get(), true);
        EXPECT_TRUE(U_SUCCESS(error));
    }
    /// "" when the bytes are not valid.
    std::u16string decode(const std::string& bytes) const {
        std::array<UChar, 16> units{};
        UErrorCode error = U_ZERO_ERROR;
        const int count =
            ucnv_toUChars(converter_.get(), units.data(), 16, bytes.data(), static_cast<int>(bytes.size()), &error);
        return U_SUCCESS(error) ? std::u16string(units.data(), static_cast<std::size_t>(count)) : std::u16string();
    }
    /// "" when the page does not hold the unit.
    std::string encode(char16_t unit) const {
        std::array<char, 16> bytes{};
        UErrorCode error = U_ZERO_ERROR;
        const UChar text = unit;
        const int count = ucnv_fromUChars(converter_.get(), bytes.data(), 16, &text, 1, &error);
        return U_SUCCESS(error) ? std::string(bytes.data(), static_cast<std::size_t>(count)) : std::string();
    }

private:
    struct Close {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    std::unique_ptr<UConverter, Close> converter_;
};

std::string pairOf(int lead, int trail) {
    return {static_cast<char>(lead), static_cast<char>(trail)};
}

bool isLead(int byte) {
    return byte >= 0x81 && byte <= 0xFE;
}

TEST(CodePage936, EverySingleByteDecodesAsIcuDoes) {
    const IcuPage icu;
    for (int byte = 0; byte < 0x100; ++byte) {
        const std::string bytes(1, static_cast<char>(byte));
        const std::u16string expected = isLead(byte) ? u"\uFFFD" : icu.decode(bytes);
        EXPECT_EQ(decode936(bytes), expected) << byte;
    }
}

TEST(CodePage936, EveryPairDecodesAsIcuDoesOrIsOneReplacement) {
    const IcuPage icu;
    int valid = 0;
    for (int lead = 0x81; lead <= 0xFE; ++lead) {
        for (int trail = 0; trail < 0x100; ++trail) {
            const std::string bytes = pairOf(lead, trail);
            std::u16string expected = icu.decode(bytes);
            if (trail < 0x40) { // the byte stays
                EXPECT_EQ(expected, u"") << lead << ' ' << trail;
                expected = {u'\uFFFD', static_cast<char16_t>(trail)};
            } else if (expected.empty()) {
                expected = u"\uFFFD";
            } else {
                ++valid;
            }
            EXPECT_EQ(decode936(bytes), expected) << lead << ' ' << trail;
        }
    }
    EXPECT_EQ(valid, 23940); // 126 leads, 190 trails
}

TEST(CodePage936, EveryUnitEncodesAsIcuDoesOrIsAQuestionMark) {
    const IcuPage icu;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto text = static_cast<char16_t>(unit);
        const std::string expected = icu.encode(text);
        std::size_t replaced = 0;
        EXPECT_EQ(encode936({&text, 1}, &replaced), expected.empty() ? "?" : expected) << unit;
        EXPECT_EQ(replaced, expected.empty() ? 1U : 0U) << unit;
    }
}

TEST(CodePage936, DoubleByteAreExactlyTheUnitsThatAPairDecodesTo) {
    const IcuPage icu;
    std::set<char16_t> expected;
    for (int lead = 0x81; lead <= 0xFE; ++lead) {
        for (int trail = 0x40; trail < 0xFF; ++trail) {
            const std::u16string unit = icu.decode(pairOf(lead, trail));
            expected.insert(unit.begin(), unit.end());
        }
    }
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto text = static_cast<char16_t>(unit);
        EXPECT_EQ(isDoubleByte(text), expected.count(text) == 1) << unit;
    }
}

TEST(CodePage936, NamedCharactersAreDoubleByteOrNot) {
    for (const char16_t unit : std::u16string(u"中éüαя℃①·\u3000，Ａ")) {
        EXPECT_TRUE(isDoubleByte(unit)) << static_cast<int>(unit);
    }
    for (const char16_t unit : std::u16string(u"a €ñ©\u00A0\uFFFDÉ")) {
        EXPECT_FALSE(isDoubleByte(unit)) << static_cast<int>(unit);
    }
    EXPECT_TRUE(hasDoubleByte(u"<td>价</td>"));
    EXPECT_FALSE(hasDoubleByte(u"price: 5 €"));
    EXPECT_FALSE(hasDoubleByte(u""));
}

struct DecodeCase {
    const char* name;
    std::string bytes;
    std::u16string text;
};
class Decode936 : public testing::TestWithParam<DecodeCase> {};

TEST_P(Decode936, GivesTheText) {
    const DecodeCase& c = GetParam();
    // A copy of exactly its size, so that a read past the end is seen.
    const std::vector<char> exact(c.bytes.begin(), c.bytes.end());
    EXPECT_EQ(decode936({exact.data(), exact.size()}), c.text);
}

INSTANTIATE_TEST_SUITE_P(Pages, Decode936,
                         testing::ValuesIn(std::vector<DecodeCase>{
                             {"empty", "", u""},
                             {"ascii_of_a_whole_block", "0123456789abcdef", u"0123456789abcdef"},
                             {"pair_across_a_block", "0123456789abcde\xD6\xD0x", u"0123456789abcde中x"},
                             {"chinese_then_ascii", "\xD6\xD0\xCE\xC4<br>", u"中文<br>"},
                             {"lead_before_a_tag_leaves_the_tag", "\xD6<td>0123456789abcdef",
                              u"\uFFFD<td>0123456789abcdef"},
                             {"lead_before_a_line_end", "\xD6\r\n", u"\uFFFD\r\n"},
                             {"lead_at_the_end", "a\xD6", u"a\uFFFD"},
                             {"invalid_pair_is_one_replacement",
                              "\x81\x7F\x81\xFF"
                              "a",
                              u"\uFFFD\uFFFDa"},
                             {"trail_that_is_a_bracket", "\x81]\x81[", u"乚乕"},
                             {"euro_and_ff", "\x80\xFF", u"\u20AC\uF8F5"},
                             {"user_defined_pair", "\xAA\xA1", u"\uE000"},
                         }),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(CodePage936, DecodeAppends) {
    std::u16string text = u"甲";
    decode936("\xD2\xD2", text);
    EXPECT_EQ(text, u"甲乙");
}

TEST(CodePage936, ReplacedUnitsAreCountedOnTopOfEarlierOnes) {
    std::size_t replaced = 2;
    EXPECT_EQ(encode936(u"ñ\U0001F600中", &replaced), "???\xD6\xD0"); // a surrogate pair is two units
    EXPECT_EQ(replaced, 5U);
}

} // namespace
} // namespace kelb::platform
