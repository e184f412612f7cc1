#pragma once

#include "jet/byte_order.h"
#include "jet/data_page.h"
#include "jet/index_check.h"
#include "jet/index_tree.h"

#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelb::jet::testing {

using EntryBytes = std::vector<std::byte>;

inline EntryBytes entryOf(const KeyBytes& key, RowId row) {
    EntryBytes entry = key;
    entry.resize(key.size() + kRowPointerBytes);
    storeBig32(entry.data() + key.size(), row.packed());
    return entry;
}
inline KeyBytes keyOf(const EntryBytes& entry) {
    return {entry.begin(), entry.end() - static_cast<std::ptrdiff_t>(kRowPointerBytes)};
}
inline RowId rowOf(const EntryBytes& entry) {
    return RowId::unpack(loadBig32(entry.data() + entry.size() - kRowPointerBytes));
}
inline KeyBytes longKey(std::uint32_t number) {
    KeyBytes key(5);
    key[0] = std::byte{0x7F};
    storeBig32(key.data() + 1, number ^ 0x80000000U);
    return key;
}

/// Everything that checkIndexTree() said, and the entries it saw.
class Findings final : public IndexVisitor {
public:
    bool enter(PageNumber page) override {
        const bool fresh = pages.insert(page).second;
        if (!fresh)
            error(page, "reached twice");
        return fresh;
    }
    void entry(std::span<const std::byte> key, RowId row, PageNumber) override {
        entries.push_back(entryOf({key.begin(), key.end()}, row));
    }
    void error(PageNumber page, const std::string& what) override { add("E ", page, what); }
    void warning(PageNumber page, const std::string& what) override { add("W ", page, what); }

    std::set<PageNumber> pages;
    std::vector<EntryBytes> entries;
    std::string text; ///< a line each

private:
    void add(const char* severity, PageNumber page, const std::string& what) {
        text += severity + std::to_string(raw(page)) + " " + what + "\n";
    }
};

/// One index in a file in memory: page 1 has the global map, page 2 the map of the index, page 3 is its root.
class TreeFixture : public PagerFixture {
public:
    static constexpr IndexTree::Place kPlace{PageNumber{3}, {PageNumber{2}, 0}, PageNumber{9}};

    TreeFixture() : PagerFixture("") {
        options.maxDirtyBytes = std::size_t{1} << 30;
        open();
        Pager::Operation operation(*pager);
        static_cast<void>(pager->append());
        std::array<std::byte, UsageMap::kNewMapBytes> free{};
        std::fill(free.begin() + 5, free.end(), std::byte{0xFF});
        free[5] = std::byte{0xF0};
        PageEdit global = pager->append();
        DataPageEditor::format(global, 1);
        DataPageEditor(*pager, global).add(SlotKind::Row, free);
        PageEdit maps = pager->append();
        DataPageEditor::format(maps, 0);
        DataPageEditor(*pager, maps).add(SlotKind::Row, std::array<std::byte, UsageMap::kNewMapBytes>{});
        PageEdit root = pager->append();
        IndexTree::formatRoot(root, kPlace.tablePage);
        UsageMap(*pager, kPlace.ownedMap).add(kPlace.root, allocator());
        operation.done();
    }

    PageAllocator& allocator() {
        if (!allocator_)
            allocator_ = std::make_unique<PageAllocator>(*pager);
        return *allocator_;
    }
    IndexTree tree() { return {*pager, allocator(), kPlace}; }

    void insert(const EntryBytes& entry) {
        Pager::Operation operation(*pager);
        tree().insert(keyOf(entry), rowOf(entry));
        operation.done();
    }
    void remove(const EntryBytes& entry) {
        Pager::Operation operation(*pager);
        tree().remove(keyOf(entry), rowOf(entry));
        operation.done();
    }

    Findings check() {
        Findings findings;
        checkIndexTree(*pager, kPlace, findings);
        return findings;
    }
    std::vector<EntryBytes> walk() {
        std::vector<EntryBytes> entries;
        for (auto cursor = tree().begin(); cursor.valid(); cursor.next())
            entries.push_back(entryOf({cursor.key().begin(), cursor.key().end()}, cursor.row()));
        return entries;
    }
    std::size_t levels() {
        std::size_t levels = 1;
        for (IndexPageView page = view(kPlace.root); !page.isLeaf(); page = view(page.child(0)))
            ++levels;
        return levels;
    }
    IndexPageView view(PageNumber page) { return {*pager, pager->read(page), kPlace.tablePage}; }

    /// The tree is sound, holds exactly these entries, and no page is lost.
    void expectHolds(const std::set<EntryBytes>& model) {
        const Findings findings = check();
        ASSERT_EQ(findings.text, "");
        ASSERT_TRUE(std::ranges::equal(findings.entries, model));
        ASSERT_TRUE(std::ranges::equal(walk(), model));
        std::size_t used = 0;
        for (std::uint32_t page = 0; page < pager->pageCount(); ++page)
            used += allocator().isFree(PageNumber{page}) ? 0U : 1U;
        const std::size_t bitmaps = UsageMap(*pager, kPlace.ownedMap).bitmapPages().size();
        ASSERT_EQ(used, findings.pages.size() + bitmaps + 3) << "pages in use that nobody owns";
    }

    std::vector<std::string> snapshot() {
        std::vector<std::string> pages;
        for (std::uint32_t page = 0; page < pager->pageCount(); ++page) {
            const PageRef ref = pager->read(PageNumber{page});
            pages.emplace_back(reinterpret_cast<const char*>(ref.data()), kPageSize);
        }
        return pages;
    }

private:
    std::unique_ptr<PageAllocator> allocator_;
};

} // namespace kelb::jet::testing
