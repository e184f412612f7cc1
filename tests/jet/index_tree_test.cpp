#include "jet/index_tree.h"

#include "tests/jet/index_tree_fixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <random>

namespace kelb::jet::testing {
namespace {

using ::testing::HasSubstr;
using Random = std::mt19937;

std::uint32_t below(Random& random, std::uint32_t limit) {
    return static_cast<std::uint32_t>(random() % limit);
}

RowId anyRow(Random& random) {
    return {PageNumber{1 + below(random, 5000)}, static_cast<std::uint8_t>(below(random, 200))};
}

EntryBytes numberEntry(Random& random) {
    return entryOf(longKey(below(random, 1U << 30)), anyRow(random));
}
EntryBytes equalKeysEntry(Random& random) {
    return entryOf(longKey(below(random, 3)), anyRow(random));
}
EntryBytes urlEntry(Random& random) {
    KeyBytes key(16, std::byte{0x57});
    for (std::uint32_t length = 4 + below(random, 80); length > 0; --length)
        key.push_back(static_cast<std::byte>(0x4A + below(random, 4)));
    key.push_back(std::byte{1});
    return entryOf(key, anyRow(random));
}
EntryBytes longEntry(Random& random) {
    KeyBytes key(below(random, 4) == 0 ? 1 + below(random, 10) : 400 + below(random, 600),
                 static_cast<std::byte>(below(random, 5)));
    for (std::size_t i = 0; i < 3 && i < key.size(); ++i)
        key[below(random, static_cast<std::uint32_t>(key.size()))] = static_cast<std::byte>(below(random, 256));
    return entryOf(key, anyRow(random));
}
EntryBytes hugeEntry(Random& random) {
    KeyBytes key(below(random, 3) == 0 ? 3 : kMaxIndexEntry - 4, static_cast<std::byte>(below(random, 250)));
    key[2] = static_cast<std::byte>(below(random, 256));
    return entryOf(key, anyRow(random));
}

struct ModelCase {
    const char* name;
    EntryBytes (*make)(Random&);
    std::size_t size; ///< entries around which the tree grows and shrinks
    std::size_t minLevels;
};
void PrintTo(const ModelCase& c, std::ostream* out) {
    *out << c.name;
}

class IndexTreeModel : public TreeFixture, public ::testing::TestWithParam<ModelCase> {};

// Random inserts and removes against a set, up and down and down to empty.
TEST_P(IndexTreeModel, AgreesWithASet) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    std::set<EntryBytes> model;
    std::vector<EntryBytes> order; // the same, for picking
    std::size_t levels = 0;
    const auto step = [&](std::uint32_t insertsOfTen) {
        if (order.empty() || below(random, 10) < insertsOfTen) {
            const EntryBytes entry = GetParam().make(random);
            if (model.insert(entry).second) {
                order.push_back(entry);
                insert(entry);
            }
            return;
        }
        std::swap(order[below(random, static_cast<std::uint32_t>(order.size()))], order.back());
        remove(order.back());
        model.erase(order.back());
        order.pop_back();
    };
    for (int batch = 0; batch < 6; ++batch) {
        const bool grow = batch % 3 != 2;
        for (std::size_t i = 0; i < GetParam().size; ++i)
            step(grow ? 8 : 2);
        ASSERT_NO_FATAL_FAILURE(expectHolds(model)) << "batch " << batch;
        levels = std::max(levels, this->levels());
        for (int i = 0; i < 20 && !order.empty(); ++i) {
            const EntryBytes& wanted = order[below(random, static_cast<std::uint32_t>(order.size()))];
            const auto found = tree().find(keyOf(wanted));
            ASSERT_TRUE(found && model.contains(entryOf(keyOf(wanted), *found)));
        }
    }
    EXPECT_GE(levels, GetParam().minLevels);
    while (!order.empty())
        step(0);
    expectHolds(model);
    EXPECT_EQ(check().pages.size(), 1U) << "an empty index is its root alone";
}

INSTANTIATE_TEST_SUITE_P(Keys, IndexTreeModel,
                         ::testing::ValuesIn<ModelCase>({
                             {"numbers", numberEntry, 3000, 2},
                             {"equal_keys", equalKeysEntry, 3000, 2},
                             {"urls", urlEntry, 1500, 2},
                             {"long_keys", longEntry, 400, 4},
                             {"keys_of_half_a_page", hugeEntry, 150, 5},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

class IndexTreeTest : public TreeFixture, public ::testing::Test {
protected:
    /// Even numbers, so that there is room between them.
    std::set<EntryBytes> load(std::uint32_t count) {
        std::set<EntryBytes> model;
        for (std::uint32_t i = 0; i < count; ++i) {
            model.insert(entryOf(longKey(2 * i), {PageNumber{20}, 1}));
            insert(entryOf(longKey(2 * i), {PageNumber{20}, 1}));
        }
        return model;
    }
    std::string faultOf(const std::function<void(IndexTree)>& change) {
        try {
            Pager::Operation operation(*pager);
            change(tree());
            operation.done();
        } catch (const Error& e) {
            return e.what();
        }
        return "";
    }
};

// Keys as one appends them: every leaf but the last is full, and the leaf of a new entry holds only that.
TEST_F(IndexTreeTest, AscendingLoadFillsPages) {
    const auto model = load(20000);
    ASSERT_NO_FATAL_FAILURE(expectHolds(model));
    std::size_t leaves = 0, notFull = 0;
    for (const PageNumber page : check().pages) {
        if (!view(page).isLeaf())
            continue;
        ++leaves;
        notFull += view(page).end() + 9 < kIndexEntryBytes ? 1U : 0U;
    }
    EXPECT_GT(leaves, 30U);
    EXPECT_LE(notFull, 1U);
}

TEST_F(IndexTreeTest, DescendingLoad) {
    std::set<EntryBytes> model;
    for (std::uint32_t i = 20000; i > 0; --i) {
        const EntryBytes entry = entryOf(longKey(i), {PageNumber{i}, 0});
        model.insert(entry);
        insert(entry);
    }
    expectHolds(model);
}

// Always the last entry goes: the tail of every node on the right edge is replaced again and again.
TEST_F(IndexTreeTest, RemovalFromTheTail) {
    auto model = load(6000);
    while (!model.empty()) {
        remove(*model.rbegin());
        model.erase(std::prev(model.end()));
        if (model.size() % 500 == 0) {
            ASSERT_NO_FATAL_FAILURE(expectHolds(model));
        }
    }
    expectHolds(model);
}

TEST_F(IndexTreeTest, RemovalFromTheFront) {
    auto model = load(6000);
    while (!model.empty()) {
        remove(*model.begin());
        model.erase(model.begin());
        if (model.size() % 500 == 0) {
            ASSERT_NO_FATAL_FAILURE(expectHolds(model));
        }
    }
}

TEST_F(IndexTreeTest, FindsKeysAndTheirNeighbours) {
    load(3000);
    for (std::uint32_t number : {0U, 2U, 2998U, 5998U})
        EXPECT_EQ(tree().find(longKey(number)), (RowId{PageNumber{20}, 1})) << number;
    for (std::uint32_t number : {1U, 2999U, 5999U, 6000U})
        EXPECT_EQ(tree().find(longKey(number)), std::nullopt) << number;
    const KeyBytes two = longKey(2);
    EXPECT_EQ(tree().find(std::span(two).first(3)), std::nullopt) << "a prefix is no key";
    EXPECT_EQ(tree().lowerBound(longKey(2999)).key().back(), longKey(3000).back());
    EXPECT_FALSE(tree().lowerBound(longKey(6000)).valid());
}

TEST_F(IndexTreeTest, ContainsExceptOneRow) {
    insert(entryOf(longKey(1), {PageNumber{20}, 1}));
    EXPECT_TRUE(tree().contains(longKey(1)));
    EXPECT_FALSE(tree().contains(longKey(1), RowId{PageNumber{20}, 1}));
    insert(entryOf(longKey(1), {PageNumber{20}, 2}));
    EXPECT_TRUE(tree().contains(longKey(1), RowId{PageNumber{20}, 1}));
}

// An empty binary value has a key of its flag byte alone, so its row pointers stand among the data of other keys.
TEST_F(IndexTreeTest, FindsAKeyThatBeginsOthers) {
    const KeyBytes empty(1, std::byte{0x7F});
    std::set<EntryBytes> model;
    for (std::uint32_t i = 0; i < 1000; ++i)
        model.insert(entryOf(longKey(i << 20), {PageNumber{20}, 1}));
    for (const EntryBytes& entry : model)
        insert(entry);
    EXPECT_EQ(tree().find(empty), std::nullopt);
    for (const RowId row : {RowId{PageNumber{0x801234}, 1}, RowId{PageNumber{0x831234}, 1}}) {
        insert(entryOf(empty, row));
        EXPECT_EQ(tree().find(empty), row);
        EXPECT_FALSE(tree().contains(empty, row));
        remove(entryOf(empty, row));
    }
    expectHolds(model);
}

TEST_F(IndexTreeTest, RemovesByRowAlone) {
    auto model = load(2000);
    insert(entryOf(longKey(1001), {PageNumber{77}, 9}));
    EXPECT_EQ(faultOf([](IndexTree t) { t.removeRow({PageNumber{77}, 9}); }), "");
    expectHolds(model);
    EXPECT_THAT(faultOf([](IndexTree t) { t.removeRow({PageNumber{77}, 9}); }), HasSubstr("page 77 slot 9"));
}

TEST_F(IndexTreeTest, RefusesWhatASoundIndexCannotNeed) {
    const auto model = load(2000);
    EXPECT_THAT(faultOf([](IndexTree t) { t.insert(longKey(2), {PageNumber{20}, 1}); }), HasSubstr("already has"));
    EXPECT_THAT(faultOf([](IndexTree t) { t.remove(longKey(3), {PageNumber{20}, 1}); }), HasSubstr("should have"));
    EXPECT_THAT(faultOf([](IndexTree t) { t.remove(longKey(2), {PageNumber{20}, 2}); }), HasSubstr("should have"));
    EXPECT_THAT(faultOf([](IndexTree t) {
                    t.insert(KeyBytes(1797), {PageNumber{20}, 2});
                }),
                HasSubstr("1797 bytes, at most 1796"));
    expectHolds(model);
}

TEST_F(IndexTreeTest, AbortPutsTheTreeBack) {
    const auto model = load(3000);
    const auto before = snapshot();
    {
        Pager::Operation operation(*pager);
        for (std::uint32_t i = 0; i < 3000; ++i)
            tree().insert(longKey(2 * i + 1), {PageNumber{21}, 1});
        for (std::uint32_t i = 0; i < 2900; ++i)
            tree().remove(longKey(2 * i), {PageNumber{20}, 1});
    }
    EXPECT_EQ(snapshot(), before);
    expectHolds(model);
    insert(entryOf(longKey(1), {PageNumber{21}, 1}));
}

TEST_F(IndexTreeTest, BuildEqualsInserting) {
    for (const std::size_t count : {0U, 1U, 400U, 700U, 900U, 60000U}) {
        SCOPED_TRACE(count);
        TreeFixture fresh;
        std::vector<IndexTree::Entry> sorted;
        std::set<EntryBytes> model;
        for (std::uint32_t i = 0; i < count; ++i) {
            sorted.push_back({longKey(3 * i), {PageNumber{20 + i / 100}, static_cast<std::uint8_t>(i % 100)}});
            model.insert(entryOf(sorted.back().key, sorted.back().row));
        }
        Pager::Operation operation(*fresh.pager);
        fresh.tree().build(sorted);
        operation.done();
        ASSERT_NO_FATAL_FAILURE(fresh.expectHolds(model));
        fresh.insert(entryOf(longKey(4), {PageNumber{1}, 1}));
        model.insert(entryOf(longKey(4), {PageNumber{1}, 1}));
        fresh.expectHolds(model);
    }
}

TEST_F(IndexTreeTest, BuildsLongKeys) {
    Random random(7);
    std::set<EntryBytes> model;
    while (model.size() < 500)
        model.insert(longEntry(random));
    std::vector<IndexTree::Entry> sorted;
    for (const EntryBytes& entry : model)
        sorted.push_back({keyOf(entry), rowOf(entry)});
    Pager::Operation operation(*pager);
    tree().build(sorted);
    operation.done();
    ASSERT_NO_FATAL_FAILURE(expectHolds(model));
    EXPECT_GE(levels(), 3U);
    while (!model.empty()) {
        remove(*model.begin());
        model.erase(model.begin());
    }
    expectHolds(model);
}

// Other writers leave node keys that are larger than the last entry below. Readers get along; a change mends them.
TEST_F(IndexTreeTest, NodeKeysMayBeTooLarge) {
    auto model = load(3000);
    {
        Pager::Operation operation(*pager);
        const PageEdit root = pager->edit(kPlace.root);
        root.data()[kIndexEntriesOffset + 4] |= std::byte{1}; // key of an even number + 1
        operation.done();
    }
    EXPECT_THAT(check().text, HasSubstr("W 3 index entry at byte 480: the node key is greater than"));
    const auto key = pager->read(kPlace.root).bytes().subspan(kIndexEntriesOffset, 5);
    const KeyBytes between(key.begin(), key.end());
    const std::uint32_t number = loadBig32(between.data() + 1) ^ 0x80000000U;
    EXPECT_EQ(tree().find(between), std::nullopt);
    EXPECT_EQ(walk().size(), 3000U);
    const auto cursor = tree().lowerBound(between);
    ASSERT_TRUE(cursor.valid());
    EXPECT_TRUE(std::ranges::equal(cursor.key(), longKey(number + 1)));
    const EntryBytes added = entryOf(between, {PageNumber{19}, 0});
    insert(added);
    model.insert(added);
    expectHolds(model);
}

} // namespace
} // namespace kelb::jet::testing
