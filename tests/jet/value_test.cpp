#include "jet/error.h"
#include "jet/value_codec.h"
#include "jet/value_conversion.h"

#include "tests/jet/hex_bytes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kelb::jet {
namespace {

using testing::bytes;
using testing::hex;

Column columnOf(ColumnType type, std::uint16_t length = 0) {
    Column column;
    column.name = u"f";
    column.type = type;
    column.length = length;
    column.precision = 28;
    column.scale = 2;
    return column;
}

template <class Number>
constexpr Number kLow = std::numeric_limits<Number>::lowest();

// ---- Stored bytes ----

struct StoredCase {
    const char* name;
    ColumnType type;
    Value value;
    const char* bytes;
};
class StoredValue : public ::testing::TestWithParam<StoredCase> {};

TEST_P(StoredValue, BothWays) {
    const Column column = columnOf(GetParam().type);
    std::vector<std::byte> out;
    appendStored(out, column, GetParam().value);
    EXPECT_EQ(hex(out), GetParam().bytes);
    EXPECT_EQ(decodeValue({}, column, out), GetParam().value);
    if (fixedSize(column.type) != 0) {
        out.pop_back();
        EXPECT_EQ(decodeValue({}, column, out), std::nullopt) << "a byte short";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Types, StoredValue,
    ::testing::Values(StoredCase{"byte", ColumnType::Byte, std::uint8_t{200}, "c8"},
                      StoredCase{"integer", ColumnType::Integer, std::int16_t{-2}, "fe ff"},
                      StoredCase{"long", ColumnType::Long, kLow<std::int32_t>, "00 00 00 80"},
                      StoredCase{"currency", ColumnType::Currency, Currency{12345}, "39 30 00 00 00 00 00 00"},
                      StoredCase{"currency_low", ColumnType::Currency, Currency{kLow<std::int64_t>},
                                 "00 00 00 00 00 00 00 80"},
                      StoredCase{"single", ColumnType::Single, 1.5F, "00 00 c0 3f"},
                      StoredCase{"double", ColumnType::Double, -1.5, "00 00 00 00 00 00 f8 bf"},
                      StoredCase{"date", ColumnType::DateTime, OleDate{42329.5}, "00 00 00 00 30 ab e4 40"},
                      StoredCase{"guid", ColumnType::Guid,
                                 Guid{{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC,
                                       0xDD, 0xEE, 0xFF}},
                                 "33 22 11 00 55 44 77 66 88 99 aa bb cc dd ee ff"},
                      StoredCase{"numeric", ColumnType::Numeric, Decimal{true, {0, 0, 0, 12345}, 2},
                                 "80 00 00 00 00 00 00 00 00 00 00 00 00 39 30 00 00"},
                      StoredCase{"numeric_words", ColumnType::Numeric, Decimal{false, {1, 2, 3, 4}, 2},
                                 "00 01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00"},
                      StoredCase{"binary", ColumnType::Binary, Binary{std::byte{1}, std::byte{0}}, "01 00"},
                      StoredCase{"text", ColumnType::Text, std::u16string(u"a\u7F51"), "61 00 51 7f"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(StoredValue, TextCompressesWhereTheColumnSays) {
    Column column = columnOf(ColumnType::Text, 20);
    std::vector<std::byte> out;
    appendStored(out, column, std::u16string(u"abc"));
    EXPECT_EQ(hex(out), "61 00 62 00 63 00");
    column.extraFlags = 1;
    out.clear();
    appendStored(out, column, std::u16string(u"abc"));
    EXPECT_EQ(hex(out), "ff fe 61 62 63");
    TableDefinition jet3;
    jet3.dialect = Dialect::Jet3;
    EXPECT_EQ(decodeValue(jet3, column, bytes("ff fe")), Value(std::u16string(u"\u00FF\u00FE"))) << "no marks there";
}

// ---- Conversions ----

struct Conversion {
    ColumnType to;
    Value from;
    Value result; ///< Null: TypeMismatch
};

const std::u16string kGuidText = u"{00112233-4455-6677-8899-AABBCCDDEEFF}";
const Guid kGuid{{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};

Value text(const char16_t* value) {
    return std::u16string(value);
}
Decimal cents(std::uint32_t value, bool negative = false) {
    return {negative, {0, 0, 0, value}, 2};
}

TEST(ConvertValue, KeepsWhatCanBeKeptAndRefusesTheRest) {
    using enum ColumnType;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Conversion cases[] = {
        {Byte, std::int32_t{255}, std::uint8_t{255}},
        {Byte, std::int32_t{256}, Null{}},
        {Byte, true, Null{}}, // -1
        {Integer, std::int32_t{-32768}, std::int16_t{-32768}},
        {Integer, std::int32_t{32768}, Null{}},
        {Integer, true, std::int16_t{-1}},
        {Long, 3.0, std::int32_t{3}},
        {Long, 2.5, Null{}},
        {Long, 2147483647.0, std::int32_t{2147483647}},
        {Long, 2147483648.0, Null{}},
        {Long, nan, Null{}},
        {Long, jet::Currency{30000}, std::int32_t{3}},
        {Long, jet::Currency{30001}, Null{}},
        {Long, cents(500, true), std::int32_t{-5}},
        {Long, text(u" -123 "), std::int32_t{-123}},
        {Long, text(u"1e3"), std::int32_t{1000}},
        {Long, text(u"12a"), Null{}},
        {Long, text(u""), Null{}},
        {Long, text(u"1 2"), Null{}},
        {Long, text(u"\uFF11"), Null{}},
        {Long, jet::Binary{}, Null{}},
        {YesNo, std::int32_t{0}, false},
        {YesNo, std::int32_t{2}, true},
        {YesNo, 0.1, true},
        {YesNo, text(u"TRUE"), true},
        {YesNo, text(u"no"), false},
        {YesNo, text(u"maybe"), Null{}},
        {Currency, 12.34, jet::Currency{123400}},
        {Currency, 0.00001, Null{}},
        {Currency, text(u"922337203685477.5807"), jet::Currency{std::numeric_limits<std::int64_t>::max()}},
        {Currency, text(u"-922337203685477.5808"), jet::Currency{kLow<std::int64_t>}},
        {Currency, text(u"922337203685477.5808"), Null{}},
        {Single, 0.1, 0.1F},
        {Single, 1e39, Null{}},
        {Double, std::int32_t{7}, 7.0},
        {Double, text(u".5"), 0.5},
        {Double, text(u"+1e300"), 1e300},
        {Double, text(u"+-1e300"), Null{}},
        {Double, text(u"1e300"), 1e300},
        {Double, text(u"1e999"), Null{}},
        {Double, cents(10), 0.1},
        {Double, text(u"nan(1)"), Null{}},
        {DateTime, text(u"2015-12-2 12:00:00"), OleDate{42340.5}},
        {DateTime, text(u"2015-13-2"), Null{}},
        {DateTime, std::int32_t{42340}, OleDate{42340}},
        {DateTime, 1e7, Null{}},
        {Guid, std::u16string(kGuidText), kGuid},
        {Guid, text(u"00112233-4455-6677-8899-aabbccddeeff"), kGuid},
        {Guid, text(u"00112233-4455-6677-8899-aabbccddeefg"), Null{}},
        {Guid, std::int32_t{1}, Null{}},
        {Numeric, 12.34, cents(1234)},
        {Numeric, 12.345, Null{}},
        {Numeric, text(u"-0"), cents(0)},
        {Numeric, Decimal{true, {0, 0, 0, 12000}, 4}, cents(120, true)},
        {Numeric, text(u"99999999999999999999999999.99"),
         Decimal{false, {0, 0x204FCE5E, 0x3E250261, 0x0FFFFFFF}, 2}}, // 10^28 - 1
        {Numeric, text(u"100000000000000000000000000"), Null{}},
        {Text, std::int32_t{-5}, text(u"-5")},
        {Text, true, text(u"True")},
        {Text, 0.1, text(u"0.1")},
        {Text, jet::Currency{-500}, text(u"-0.05")},
        {Text, cents(100), text(u"1")},
        {Text, OleDate{42340.5}, text(u"2015-12-2 12:00:00")},
        {Text, kGuid, std::u16string(kGuidText)},
        {Text, jet::Binary{std::byte{1}}, Null{}},
        {Memo, std::int16_t{5}, text(u"5")},
        {Ole, text(u"a"), Null{}},
        {Binary, std::int32_t{1}, Null{}},
    };
    for (const Conversion& each : cases) {
        const Column column = columnOf(each.to, 510);
        SCOPED_TRACE(::testing::Message()
                     << "from alternative " << each.from.index() << " to type " << static_cast<int>(each.to));
        if (isNull(each.result)) {
            try {
                static_cast<void>(convertValue(each.from, column, u"t"));
                ADD_FAILURE() << "nothing refused";
            } catch (const Error& e) {
                EXPECT_EQ(e.kind(), Error::Kind::TypeMismatch) << e.what();
            }
        } else {
            EXPECT_EQ(convertValue(each.from, column, u"t"), each.result);
        }
    }
    EXPECT_EQ(convertValue(Null{}, columnOf(Long), u"t"), Value(Null{}));
}

std::string refusal(const Value& value, const Column& column) {
    try {
        static_cast<void>(convertValue(value, column, u"wxAll"));
    } catch (const Error& e) {
        return std::to_string(static_cast<int>(e.kind())) + " " + e.what();
    }
    return "";
}

TEST(ConvertValue, NamesTableFieldAndLength) {
    Column url = columnOf(ColumnType::Text, 510);
    url.name = u"url";
    const std::string tooSmall = std::to_string(static_cast<int>(Error::Kind::FieldTooSmall)) + " ";
    EXPECT_EQ(refusal(std::u16string(255, u'\u7F51'), url), "");
    EXPECT_EQ(refusal(std::u16string(300, u'a'), url),
              tooSmall + "the field is too small: table wxAll, field url, 255 characters allowed, 300 given");
    url.extraFlags = 1; // what counts is characters, not the compressed bytes
    EXPECT_NE(refusal(std::u16string(256, u'a'), url), "");
    EXPECT_EQ(refusal(Binary(3), columnOf(ColumnType::Binary, 2)),
              tooSmall + "the field is too small: table wxAll, field f, 2 bytes allowed, 3 given");
    EXPECT_EQ(refusal(std::u16string(u"abc"), columnOf(ColumnType::Long)).substr(3),
              "the value does not fit the field: table wxAll, field f (integer of 32 bits), value abc");
}

} // namespace
} // namespace kelb::jet
