#include "tests/jet/damaged_use.h"
#include "tests/jet/index_tree_fixture.h"

#include <gtest/gtest.h>

#include <random>

namespace kelb::jet::testing {
namespace {

// Bytes changed anywhere must end in an Error or in a result, in bounded time, with nothing read or written outside a
// page: the sanitizers watch. Everything is drawn from fixed seeds.

using Random = std::mt19937;

std::uint32_t below(Random& random, std::size_t limit) {
    return static_cast<std::uint32_t>(random() % limit);
}

/// Offsets that hold structure: headers, slot arrays, masks, the first and last entries or rows.
std::size_t offsetOfInterest(Random& random) {
    switch (below(random, 5)) {
    case 0:
        return below(random, 32);
    case 1:
        return below(random, 128);
    case 2:
        return 480 + below(random, 64);
    case 3:
        return kPageSize - 1 - below(random, 256);
    default:
        return below(random, kPageSize);
    }
}

std::byte anyByte(Random& random) {
    constexpr std::byte kSpecial[] = {std::byte{0}, std::byte{1}, std::byte{0x7F}, std::byte{0x80}, std::byte{0xFF}};
    return below(random, 2) == 0 ? kSpecial[below(random, std::size(kSpecial))]
                                 : static_cast<std::byte>(below(random, 256));
}

class DamagedBytes : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(DamagedBytes, NeverBringItDown) {
    static const std::string sound = Patient(80).bytes;
    Random random(GetParam());
    const std::size_t pages = sound.size() / kPageSize;
    for (std::uint32_t page = 1; page < pages; ++page) {
        Patient patient(sound);
        for (std::uint32_t changes = 1 + below(random, 3); changes > 0; --changes)
            *patient.at(PageNumber{page}, offsetOfInterest(random)) = anyByte(random);
        SCOPED_TRACE("page " + std::to_string(page));
        try {
            const auto database = patient.open(Pager::Access::Write);
            static_cast<void>(verify(*database));
            useDamaged(*database);
            static_cast<void>(verify(*database));
        } catch (const Error& error) { // opening it
            EXPECT_STRNE(error.what(), "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, DamagedBytes, ::testing::Range(1U, 9U));

// What neither the check of a tree nor a walk over it can tell from a sound tree must work as one.
class DamagedTree : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(DamagedTree, WorksOrIsReported) {
    Random random(GetParam());
    std::set<EntryBytes> model;
    TreeFixture sound;
    while (model.size() < 400) {
        KeyBytes key(6 + below(random, 60), std::byte{0x55});
        key[5] = static_cast<std::byte>(below(random, 256));
        key.back() = static_cast<std::byte>(below(random, 256));
        const EntryBytes entry = entryOf(key, {PageNumber{1 + below(random, 900)}, 3});
        if (model.insert(entry).second)
            sound.insert(entry);
    }
    const std::vector<std::string> pages = sound.snapshot();
    std::size_t unseen = 0;
    for (std::uint32_t round = 0; round < 150; ++round) {
        Pager::Operation damage(*sound.pager); // left without done(): the next round starts from the sound tree
        const PageNumber page{3 + below(random, pages.size() - 3)};
        sound.pager->edit(page).data()[offsetOfInterest(random)] = anyByte(random);
        SCOPED_TRACE("round " + std::to_string(round) + " page " + std::to_string(raw(page)));
        const Findings findings = sound.check();
        const bool clean = findings.text.find("E ") == std::string::npos && std::ranges::equal(findings.entries, model);
        unseen += clean ? 1U : 0U;
        for (const EntryBytes& entry : model) {
            if (below(random, 10) != 0)
                continue;
            try {
                const auto found = sound.tree().find(keyOf(entry));
                if (clean) {
                    ASSERT_TRUE(found && model.contains(entryOf(keyOf(entry), *found)));
                }
                Pager::Operation change(*sound.pager);
                sound.tree().remove(keyOf(entry), rowOf(entry));
                sound.tree().insert(keyOf(entry), {PageNumber{1000}, 1});
                sound.tree().removeRow({PageNumber{1000}, 1});
                sound.tree().insert(keyOf(entry), rowOf(entry));
                change.done();
            } catch (const CorruptFile&) {
                ASSERT_FALSE(clean);
            }
        }
        if (clean) {
            ASSERT_TRUE(std::ranges::equal(sound.walk(), model));
        }
    }
    EXPECT_GT(unseen, 0U) << "some bytes of an index page mean nothing";
    EXPECT_LT(unseen, 100U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DamagedTree, ::testing::Range(1U, 5U));

std::size_t rowsIn(Database& database) {
    std::size_t rows = 0;
    Row row;
    for (TableScan scan = database.table(u"Items").scan(); scan.next(row);)
        ++rows;
    return rows;
}

// The file cut at every page.
TEST(CutDatabase, IsRefusedOrReportedAndNeverGivesLess) {
    const std::string sound = Patient(80).bytes;
    const std::size_t all = rowsIn(*Patient(sound).open());
    for (std::size_t pages = 1; pages < sound.size() / kPageSize; ++pages) {
        SCOPED_TRACE(pages);
        Patient patient(sound.substr(0, pages * kPageSize));
        try {
            const auto database = patient.open();
            EXPECT_NE(faultsOf(*database), "");
            EXPECT_EQ(rowsIn(*database), all);
        } catch (const Error& error) {
            EXPECT_STRNE(error.what(), "");
        }
    }
}

} // namespace
} // namespace kelb::jet::testing
