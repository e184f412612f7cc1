#include "jet/text_codec.h"

#include "tests/jet/hex_bytes.h"

#include <gtest/gtest.h>

namespace kelb::jet {
namespace {

using testing::bytes;
using testing::hex;

struct Stored {
    const char* name;
    const char* bytes;
    std::u16string text;
};
class DecodeText : public ::testing::TestWithParam<Stored> {};

TEST_P(DecodeText, FromABufferAndInPlace) {
    const auto stored = bytes(GetParam().bytes);
    std::u16string out = u"what was there before";
    decodeText(stored, out);
    EXPECT_EQ(out, GetParam().text);

    out.assign((stored.size() + 1) / 2, u'?');
    std::ranges::copy(stored, std::as_writable_bytes(std::span(out)).begin());
    decodeTextInPlace(out, stored.size());
    EXPECT_EQ(out, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Stored, DecodeText,
    ::testing::Values(Stored{"empty", "", u""},                 //
                      Stored{"raw", "61 00 51 7f", u"a\u7F51"}, //
                      Stored{"raw_odd_byte_dropped", "61 00 62", u"a"},
                      Stored{"raw_unpaired_surrogate", "00 d8 61 00", std::u16string(1, char16_t{0xD800}) + u"a"},
                      Stored{"raw_zero_unit", "61 00 00 00 62 00", std::u16string(u"a\0b", 3)},
                      Stored{"compressed", "ff fe 61 62 63", u"abc"}, //
                      Stored{"compressed_latin", "ff fe e9 61 62", u"\u00E9ab"},
                      Stored{"compressed_empty", "ff fe", u""},
                      Stored{"raw_run_compressed_run_raw_run", "ff fe 00 d2 63 65 51 00 45 78 63 65 6c 00 68 88 3c 68",
                             u"\u63D2\u5165Excel\u8868\u683C"},
                      Stored{"raw_run_cut_in_a_unit", "ff fe 61 00 d2 63 65", u"a\u63D2"},
                      Stored{"zero_pair_in_a_raw_run_switches_once_each", "ff fe 00 00 61", u"a"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(TextCodec, RawTextThatLooksCompressedKeepsItsMarkWhereItCan) {
    std::vector<std::byte> out;
    appendRawText(out, u"a\u7F51");
    EXPECT_EQ(hex(out), "61 00 51 7f");

    // In a raw run; ASCII behind it in a compressed one.
    const std::u16string_view marked = u"\uFEFF\u7F51ab";
    out.clear();
    appendRawText(out, marked);
    EXPECT_EQ(hex(out), "ff fe 00 ff fe 51 7f 00 61 62");
    std::u16string back;
    decodeText(out, back);
    EXPECT_EQ(back, marked);

    // U+4E00 has a zero byte, which no run can hold: the marks in front go, the text stays.
    out.clear();
    appendRawText(out, u"\uFEFF\uFEFF\u4E00");
    EXPECT_EQ(hex(out), "00 4e");
}

/// Texts come from pages of strangers: a look at the whole text for each mark would not end before the time limit.
TEST(TextCodec, ManyMarksInFrontAreTakenOffInOneGo) {
    std::vector<std::byte> out;
    appendRawText(out, std::u16string(3'000'000, u'\uFEFF') + u"\u4E00");
    EXPECT_EQ(hex(out), "00 4e");
}

TEST(TextCodec, CompressesShortWesternTextsOnly) {
    EXPECT_FALSE(isCompressible(u"ab")) << "gains nothing";
    EXPECT_TRUE(isCompressible(u"abc"));
    EXPECT_TRUE(isCompressible(std::u16string(1024, u'\u00FF')));
    EXPECT_FALSE(isCompressible(std::u16string(1025, u'a')));
    EXPECT_FALSE(isCompressible(u"abc\u0100"));
    EXPECT_FALSE(isCompressible(std::u16string_view(u"ab\0", 3)));
    std::vector<std::byte> out;
    appendCompressedText(out, u"ab\u00E9");
    EXPECT_EQ(hex(out), "ff fe 61 62 e9");
}

TEST(TextCodec, CodePages) {
    std::u16string out;
    decodeCodePageText(bytes("61 80 99 a0 e9 ff"), 1252, out);
    EXPECT_EQ(out, u"a\u20AC\u2122\u00A0\u00E9\u00FF");
    decodeCodePageText(bytes("61 cd f8 d2 b3"), 936, out);
    EXPECT_EQ(out, u"a\u7F51\u9875");
    decodeCodePageText({}, 936, out);
    EXPECT_EQ(out, u"");
}

} // namespace
} // namespace kelb::jet
