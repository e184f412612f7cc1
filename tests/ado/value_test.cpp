#include "ado/value.h"

#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelb::ado {
namespace {

Guid guid() {
    Guid value;
    for (std::size_t i = 0; i < 16; ++i) {
        value.bytes[i] = static_cast<std::uint8_t>(i * 17);
    }
    return value;
}

struct TextCase {
    const char* what;
    Value value;
    const char* text;
};

TEST(ValueText, ShowsEveryKind) {
    const TextCase cases[] = {
        {"null", Null{}, ""},
        {"yes", true, "True"},
        {"no", false, "False"},
        {"byte", std::uint8_t{255}, "255"},
        {"short", std::int16_t{-32768}, "-32768"},
        {"long", std::int32_t{-1}, "-1"},
        {"currency drops zeros", Currency{12500}, "1.25"},
        {"currency below one", Currency{-5}, "-0.0005"},
        {"currency whole", Currency{70000}, "7"},
        {"currency lowest", Currency{std::numeric_limits<std::int64_t>::min()}, "-922337203685477.5808"},
        {"double", 1.5, "1.5"},
        {"double whole", 3.0, "3"},
        {"double large", 1e20, "1E+20"},
        {"single keeps its own digits", 0.1F, "0.1"},
        {"date", OleDate{42340.354166666664}, "2015-12-2 8:30:00"},
        {"decimal of more than 64 bits", Decimal{false, {1, 0, 0, 0}, 0}, "79228162514264337593543950336"},
        {"decimal scaled", Decimal{true, {0, 0, 0, 12340}, 3}, "-12.34"},
        {"decimal zero has no sign", Decimal{true, {0, 0, 0, 0}, 2}, "0"},
        {"guid", guid(), "{00112233-4455-6677-8899-AABBCCDDEEFF}"},
        {"binary", Binary{std::byte{0}, std::byte{0xAB}}, "0x00AB"},
        {"text", std::u16string(u"网页"), "网页"},
    };
    for (const TextCase& c : cases) {
        EXPECT_EQ(platform::toUtf8(toText(c.value)), c.text) << c.what;
    }
}

TEST(ValueInteger, OnlyOfWholeNumbers) {
    const std::pair<Value, std::optional<long long>> cases[] = {
        {true, -1},
        {false, 0},
        {std::int32_t{7}, 7},
        {2.0, 2},
        {2.5, std::nullopt},
        {1e300, std::nullopt},
        {-9223372036854775808.0, std::numeric_limits<long long>::min()},
        {9223372036854775808.0, std::nullopt},
        {Currency{20000}, 2},
        {Currency{20001}, std::nullopt},
        {std::u16string(u" 28 "), 28},
        {std::u16string(u"-5"), -5},
        {std::u16string(u"+5"), 5},
        {std::u16string(u"28a"), std::nullopt},
        {std::u16string(u""), std::nullopt},
        {std::u16string(u"２８"), std::nullopt},
        {Null{}, std::nullopt},
        {OleDate{1}, std::nullopt},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(toInteger(value), expected) << platform::toUtf8(toText(value));
    }
}

TEST(ValueDate, GoesThereAndBack) {
    const platform::DateTime time{2015, 12, 2, 8, 30, 1};
    EXPECT_EQ(toDateTime(fromDateTime(time)), time);
    EXPECT_EQ(toDateTime(std::u16string(u"2015-12-2 8:30:01")), time);
    EXPECT_EQ(toDateTime(std::int32_t{1}), std::nullopt);
}

} // namespace
} // namespace kelb::ado
