#include "jet/index_tree.h"

#include <algorithm>

namespace kelb::jet {

// Looking up. Changes are in index_tree_insert.cpp, index_tree_remove.cpp and index_tree_build.cpp.

void IndexTree::formatRoot(PageEdit& page, PageNumber tablePage) {
    formatIndexLeaf(page, tablePage);
}

IndexPageView IndexTree::view(PageNumber page) const {
    return {pager_, pager_.read(page), place_.tablePage};
}

IndexPageView IndexTree::leafFor(std::span<const std::byte> target, std::size_t& position) const {
    IndexPageView page = view(place_.root);
    for (std::size_t depth = 1;; ++depth) {
        position = page.lowerBound(target);
        if (page.isLeaf())
            return page;
        if (depth == kMaxDepth)
            pager_.corrupt(page.number(), 0, "the index has no leaf below this node: its pages run in a circle");
        if (position == page.end() && page.tail() == kNoPage && page.end() != 0)
            position = page.before(page.end());
        page = view(page.child(position));
    }
}

IndexTree::Cursor IndexTree::begin() const {
    return lowerBound({});
}

IndexTree::Cursor IndexTree::lowerBound(std::span<const std::byte> key) const {
    std::size_t position = 0;
    IndexPageView leaf = leafFor(key, position);
    return {pager_, place_.tablePage, std::move(leaf), position};
}

std::optional<RowId> IndexTree::find(std::span<const std::byte> key) const {
    std::size_t position = 0;
    const IndexPageView leaf = leafFor(key, position);
    // A node key larger than the last entry below it leads behind the end of a leaf.
    if (position != leaf.end()) {
        const IndexEntryView entry = leaf.entry(position);
        if (entry.size() == key.size() + kRowPointerBytes && entry.compare(key, kRowPointerBytes) == 0)
            return RowId::unpack(entry.lastWord());
        if (entry.size() < key.size() || entry.compare(key, entry.size() - key.size()) != 0)
            return std::nullopt; // it does not even begin with the key, so no entry does
    }
    Cursor cursor(pager_, place_.tablePage, leaf, position);
    if (!cursor.seek(key))
        return std::nullopt;
    return cursor.row();
}

bool IndexTree::contains(std::span<const std::byte> key, std::optional<RowId> except) const {
    if (!except)
        return find(key).has_value();
    for (Cursor cursor = lowerBound(key); cursor.seek(key); cursor.next()) {
        if (cursor.row() != *except)
            return true;
    }
    return false;
}

// Cursor

IndexTree::Cursor::Cursor(Pager& pager, PageNumber tablePage, IndexPageView leaf, std::size_t position)
    : pager_(&pager), tablePage_(tablePage), leaf_(std::move(leaf)), position_(position),
      leavesLeft_(pager.pageCount()) {
    load();
}

void IndexTree::Cursor::next() {
    position_ = leaf_.after(position_);
    load();
}

bool IndexTree::Cursor::seek(std::span<const std::byte> key) {
    for (; valid_ && entry_.size() >= key.size() && std::equal(key.begin(), key.end(), entry_.begin()); next()) {
        if (entry_.size() == key.size() + kRowPointerBytes)
            return true;
    }
    return false;
}

/// Shows the entry at the position, which may lie on a further leaf.
void IndexTree::Cursor::load() {
    while (position_ == leaf_.end()) {
        valid_ = leaf_.next() != kNoPage;
        if (!valid_)
            return;
        const PageNumber from = leaf_.number();
        if (leavesLeft_-- == 0)
            pager_->corrupt(from, kIndexNextOffset, "the leaves of the index run in a circle");
        leaf_ = IndexPageView(*pager_, pager_->read(leaf_.next()), tablePage_);
        if (!leaf_.isLeaf())
            pager_->corrupt(from, kIndexNextOffset, "the next leaf of the index is not a leaf");
        position_ = 0;
    }
    const IndexEntryView entry = leaf_.entry(position_);
    entry_.resize(entry.size());
    entry.copyTo(entry_.data());
    row_ = RowId::unpack(entry.lastWord());
    valid_ = true;
}

} // namespace kelb::jet
