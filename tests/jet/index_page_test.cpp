#include "jet/index_page.h"

#include "tests/jet/index_tree_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jet::testing {
namespace {

using ::testing::HasSubstr;

EntryBytes bytes(std::initializer_list<unsigned> values) {
    EntryBytes out;
    for (const unsigned value : values)
        out.push_back(static_cast<std::byte>(value));
    return out;
}

EntryBytes copy(const IndexEntryView& entry) {
    EntryBytes out(entry.size());
    entry.copyTo(out.data());
    return out;
}

class IndexPage : public TreeFixture, public ::testing::Test {
protected:
    PageEdit root() { return pager->edit(kPlace.root); }
    unsigned at(std::size_t offset) { return load8(pager->read(kPlace.root).data() + offset); }
    /// Reads the whole page; what a fault says, "" without one.
    std::string fault() {
        try {
            const IndexPageView page = view(kPlace.root);
            for (std::size_t at = 0; at != page.end(); at = page.after(at))
                static_cast<void>(page.entry(at).lastWord());
            static_cast<void>(page.lowerBound(bytes({0x7F, 0x80})));
        } catch (const CorruptFile& e) {
            return e.what();
        }
        return "";
    }
    Pager::Operation operation_{*pager};
};

TEST_F(IndexPage, EmptyLeaf) {
    EXPECT_EQ(load16(root().data() + 2), 0x0E20U);
    EXPECT_EQ(view(kPlace.root).end(), 0U);
    EXPECT_TRUE(view(kPlace.root).isLeaf());
}

// Bytes of a real leaf: a descending long column whose later entries lack the three bytes they share.
TEST_F(IndexPage, ReadsSharedPrefix) {
    const PageEdit page = root();
    const EntryBytes stored = bytes({0x80, 0x7F, 0xFF, 0xED, 0x32, 0, 0, 0x14, 0x38, 0xED, 0x33, 0, 0, 0x14, 0x37});
    std::ranges::copy(stored, page.bytes().begin() + 480);
    store16(page.data() + 24, 3);
    page.data()[27 + 1] = std::byte{0x82}; // ends at 9 and 15
    store16(page.data() + 2, 4096 - 480 - 15);

    const IndexPageView leaf = view(kPlace.root);
    EXPECT_EQ(leaf.end(), 15U);
    EXPECT_EQ(copy(leaf.entry(0)), bytes({0x80, 0x7F, 0xFF, 0xED, 0x32, 0, 0, 0x14, 0x38}));
    EXPECT_EQ(copy(leaf.entry(9)), bytes({0x80, 0x7F, 0xFF, 0xED, 0x33, 0, 0, 0x14, 0x37}));
    EXPECT_EQ(leaf.entry(9).lastWord(), 0x1437U);
    EXPECT_EQ(leaf.lowerBound(bytes({0x80, 0x7F, 0xFF, 0xED, 0x32})), 0U);
    EXPECT_EQ(leaf.lowerBound(bytes({0x80, 0x7F, 0xFF, 0xED, 0x33})), 9U);
    EXPECT_EQ(leaf.lowerBound(bytes({0x80, 0x7F, 0xFF, 0xEE})), 15U);
    EXPECT_EQ(leaf.lowerBound({}), 0U);
    EXPECT_EQ(leaf.indexOf(15), 2U);
}

// Bytes of a real root: one entry (key of 19 descending, row in page 17 slot 0) over page 0x20, tail child 0x21.
TEST_F(IndexPage, WritesNode) {
    IndexPageContent node(IndexPageContent::Kind::Node, 1);
    node.insertChild(0, bytes({0x80, 0x7F, 0xFF, 0xFF, 0xEC, 0, 0, 0x11, 0}), PageNumber{0x20});
    node.tail = PageNumber{0x21};
    node.write(root(), PageNumber{15});
    const EntryBytes head = bytes({0x03, 0x01, 0x13, 0x0E, 0x0F, 0, 0, 0, 0, 0, 0, 0,    0,    0, 0, 0,
                                   0,    0,    0,    0,    0x21, 0, 0, 0, 0, 0, 1, 0x00, 0x20, 0, 0, 0});
    const EntryBytes entry = bytes({0x80, 0x7F, 0xFF, 0xFF, 0xEC, 0, 0, 0x11, 0, 0, 0, 0, 0x20, 0, 0, 0});
    const PageRef page = pager->read(kPlace.root);
    EXPECT_TRUE(std::ranges::equal(page.bytes().first(32), head));
    EXPECT_TRUE(std::ranges::equal(page.bytes().subspan(480, 16), entry));
}

// 600 equal keys on three data pages: key and two bytes of the row pointer are shared.
TEST_F(IndexPage, PrefixRunsIntoTheRowPointer) {
    IndexPageContent leaf(IndexPageContent::Kind::Leaf, 0);
    for (std::uint32_t i = 0; i < 600; ++i)
        leaf.insert(i, entryOf(longKey(1), {PageNumber{20 + i / 200}, static_cast<std::uint8_t>(i % 200)}));
    leaf.write(root(), kPlace.tablePage);
    EXPECT_EQ(view(kPlace.root).prefixLength(), 7U);
    EXPECT_EQ(load16(root().data() + 2), 3616U - (9 + 599 * 2));
    std::size_t position = 0;
    for (std::size_t i = 0; i < 600; ++i, position = view(kPlace.root).after(position))
        ASSERT_TRUE(std::ranges::equal(copy(view(kPlace.root).entry(position)), leaf.entry(i))) << i;
}

// The prefix leaves every entry a byte, also one that is a prefix of the others.
TEST_F(IndexPage, PrefixIsShorterThanTheShortestEntry) {
    IndexPageContent leaf(IndexPageContent::Kind::Leaf, 0);
    EntryBytes entry(1000, std::byte{0x41});
    leaf.insert(0, EntryBytes(700, std::byte{0x41}));
    for (std::size_t i = 1; i < 9; ++i) {
        entry.push_back(std::byte{0x42});
        leaf.insert(i, entry);
    }
    EXPECT_TRUE(leaf.fits());
    leaf.write(root(), kPlace.tablePage);
    EXPECT_EQ(view(kPlace.root).prefixLength(), 699U);
}

TEST_F(IndexPage, NodesDoNotShare) {
    IndexPageContent node(IndexPageContent::Kind::Node, 1);
    for (std::uint32_t i = 0; i < 279; ++i)
        node.insertChild(i, entryOf(longKey(i), {PageNumber{20}, 1}), PageNumber{100 + i});
    EXPECT_FALSE(node.fits()) << "279 entries of 13 bytes are more than 3616";
    node.erase(0);
    EXPECT_TRUE(node.fits());
}

struct Damage {
    const char* name;
    std::size_t offset;
    std::uint8_t value;
    const char* message;
};
void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.name;
}

class DamagedIndexPage : public IndexPage, public ::testing::WithParamInterface<Damage> {};

TEST_P(DamagedIndexPage, IsRefused) {
    IndexPageContent leaf(IndexPageContent::Kind::Leaf, 0);
    for (std::uint32_t i = 0; i < 3; ++i)
        leaf.insert(i, entryOf(longKey(i), {PageNumber{20}, 1}));
    leaf.write(root(), kPlace.tablePage);
    ASSERT_EQ(fault(), "");
    root().data()[GetParam().offset] = std::byte{GetParam().value};
    EXPECT_THAT(fault(), HasSubstr(GetParam().message));
    EXPECT_THAT(fault(), HasSubstr("page 3, byte"));
}

INSTANTIATE_TEST_SUITE_P(Bytes, DamagedIndexPage,
                         ::testing::ValuesIn<Damage>({
                             {"type", 0, 0x01, "an index page was expected"},
                             {"owner", 4, 0x0A, "of the table at page 9 was expected, it is of 10"},
                             {"entry_before_the_first_byte", 27, 0x01, "mask ends an entry outside"},
                             {"entry_behind_the_page", 479, 0x02, "mask ends an entry outside"},
                             {"entry_too_short", 27, 0x08, "too short"},
                             {"prefix_as_long_as_the_first_entry", 24, 9, "prefix is not shorter"},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(IndexPage, PageOfAnotherSizeIsRefused) {
    PagerFixture old("ab", kJet3PageSize);
    old.open();
    EXPECT_THROW(IndexPageView(*old.pager, old.pager->read(PageNumber{1}), PageNumber{2}), CorruptFile);
}

} // namespace
} // namespace kelb::jet::testing
