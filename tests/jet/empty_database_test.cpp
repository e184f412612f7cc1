#include "jet/empty_database.h"

#include "jet/usage_map.h"

#include "platform/random.h"

#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

namespace kelb::jet {
namespace {

std::uint32_t crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char c : bytes) {
        crc ^= static_cast<std::uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320U : 0);
    }
    return ~crc;
}

/// Checksums of the pages of a database that the original engine made on that day, unused bytes set to zero.
TEST(EmptyDatabase, IsWhatTheOriginalEngineMakes) {
    testing::PagerFixture f;
    Pager& pager = f.open();
    PageAllocator allocator(pager);
    platform::SystemRandom random;
    {
        Pager::Operation operation(pager);
        writeEmptyDatabase(pager, allocator, random, {.created = {42329.94480322917}, .sortOrder = {}});
        operation.done();
    }
    pager.commit();
    constexpr std::array<std::uint32_t, 16> kPages = {
        0x69aaabe6, 0xf627d4c0, 0xbb9cc2ec, 0x5a5da9a2, 0xcc462a2a, 0xbc028c0a, 0xd2088285, 0xeaa9fde4,
        0xf4c8cfc5, 0x589e9da0, 0x40ef71e4, 0x5313d8fa, 0x5313d8fa, 0x5313d8fa, 0xacc06680, 0x8f1821fe};
    const std::string file = f.files.readFile(testing::kPath);
    ASSERT_EQ(file.size(), kPages.size() * kPageSize);
    for (std::size_t page = 0; page < kPages.size(); ++page)
        EXPECT_EQ(crc32(std::string_view(file).substr(page * kPageSize, kPageSize)), kPages[page]) << "page " << page;
}

} // namespace
} // namespace kelb::jet
