#include "jet/properties.h"

#include "jet/byte_order.h"
#include "jet/error.h"

#include "tests/jet/hex_bytes.h"

#include <gtest/gtest.h>

namespace kelb::jet {
namespace {

using testing::bytes;
using testing::hex;

/// NOT NULL on a column "id", as the original engine stores it.
const char* kRequiredId = "4d 52 32 00 "
                          "18 00 00 00 80 00 10 00 52 00 65 00 71 00 75 00 69 00 72 00 65 00 64 00 "
                          "19 00 00 00 01 00 0a 00 00 00 04 00 69 00 64 00 09 00 01 01 00 00 01 00 01";

TEST(Properties, RequiredIsBuiltAndReadBack) {
    Properties made;
    made.setRequired(u"id");
    EXPECT_EQ(hex(made.build()), kRequiredId);

    Properties read(bytes(kRequiredId));
    EXPECT_TRUE(read.isRequired(u"ID"));
    EXPECT_FALSE(read.isRequired(u"url"));
    EXPECT_EQ(hex(read.build()), kRequiredId);
    read.setRequired(u"id"); // already there: nothing twice
    EXPECT_EQ(hex(read.build()), kRequiredId);
}

TEST(Properties, OthersAreCarriedAlong) {
    // A table property "Aa" (text "x"), a column "url" with Required = false, a chunk of a type unknown here.
    const auto stored =
        bytes("4d 52 32 00"
              "1e 00 00 00 80 00 | 04 00 41 00 61 00 | 10 00 52 00 65 00 71 00 75 00 69 00 72 00 65 00 64 00"
              "16 00 00 00 00 00 | 06 00 00 00 00 00 | 0a 00 00 0a 00 00 02 00 78 00"
              "1b 00 00 00 01 00 | 0c 00 00 00 06 00 75 00 72 00 6c 00 | 09 00 00 01 01 00 01 00 00"
              "08 00 00 00 77 00 | aa bb");
    Properties properties(stored);
    EXPECT_EQ(hex(properties.build()), hex(stored));
    EXPECT_FALSE(properties.isRequired(u"url"));
    properties.setRequired(u"url");
    auto expected = stored;
    expected[expected.size() - 9] = std::byte{1};
    EXPECT_EQ(hex(properties.build()), hex(expected)) << "only the value itself changes";
}

TEST(Properties, OfAccess97ComeInUtf16) {
    // "Required" of a column 网 (CD F8 in code page 936), and its DefaultValue, the text 页 (D2 B3).
    const Properties read(
        bytes("4b 4b 44 00"
              "1e 00 00 00 80 00 | 08 00 52 65 71 75 69 72 65 64 | 0c 00 44 65 66 61 75 6c 74 56 61 6c"
              "75 65 | 21 00 00 00 01 00 | 08 00 00 00 02 00 cd f8 | 09 00 01 01 00 00 01 00 01"
              "0a 00 00 0a 01 00 02 00 d2 b3"),
        936);
    EXPECT_TRUE(read.isRequired(u"\u7F51"));
    ASSERT_EQ(read.owners.size(), 1U);
    ASSERT_EQ(read.owners[0].properties.size(), 2U);
    EXPECT_EQ(hex(read.owners[0].properties[1].value), hex(bytes("75 98"))) << "U+9875";
}

// In UTF-16 a text takes twice its bytes, and their number must fit 16 bits.
TEST(Properties, OfAccess97ThatAreTooLongForAccess2000AreRefused) {
    for (const auto& [length, fits] : {std::pair(30000U, true), {33000U, false}}) {
        auto stored = bytes("4b 4b 44 00 | 0a 00 00 00 80 00 02 00 41 61 | 00 00 00 00 01 00 07 00 00 00 01 00 63 |"
                            "00 00 00 0c 00 00 00 00");
        store16(&stored[27], static_cast<std::uint16_t>(8 + length));
        store16(&stored[33], static_cast<std::uint16_t>(length));
        stored.insert(stored.end(), length, std::byte{'x'});
        store32(&stored[14], static_cast<std::uint32_t>(stored.size() - 14));
        if (!fits) {
            EXPECT_THROW(Properties(stored, 1252), Error);
            continue;
        }
        const Properties again(Properties(stored, 1252).build());
        ASSERT_EQ(again.owners.size(), 1U);
        EXPECT_EQ(again.owners[0].properties.at(0).value.size(), 2 * length);
    }
}

TEST(Properties, NoneAndDamaged) {
    EXPECT_FALSE(Properties(std::span<const std::byte>()).isRequired(u"id"));
    const auto whole = bytes(kRequiredId);
    for (std::size_t length = 1; length < whole.size(); ++length) {
        if (length == 4 || length == 28)
            continue; // ends at a chunk: less, but sound
        EXPECT_THROW(Properties(std::span(whole).first(length)), Error) << length << " bytes";
    }
    EXPECT_THROW(Properties(bytes("4d 52 32 00 05 00 00 00 80 00")), Error) << "a length shorter than itself";
    auto strange = whole;
    strange[strange.size() - 5] = std::byte{1};
    EXPECT_THROW(Properties{strange}, Error) << "a value whose name is not in the list";
}

} // namespace
} // namespace kelb::jet
