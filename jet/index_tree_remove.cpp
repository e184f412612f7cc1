#include "jet/index_tree.h"

#include "jet/byte_order.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace kelb::jet {
namespace {

std::string describe(RowId row) {
    return "the row in page " + std::to_string(raw(row.page)) + " slot " + std::to_string(row.slot);
}

/// Takes a child out of a node. Returns the new last leaf entry below the node when it changed.
std::vector<std::byte> takeOut(IndexPageContent& node, bool tail, std::size_t index) {
    std::vector<std::byte> last;
    if (tail) {
        node.tail = kNoPage;
        if (node.count() == 0)
            return last;
        const auto key = node.key(node.count() - 1);
        last.assign(key.begin(), key.end());
        node.tail = node.child(node.count() - 1);
        node.erase(node.count() - 1);
        return last;
    }
    if (index > 0 && index + 1 == node.count() && node.tail == kNoPage) {
        const auto key = node.key(index - 1);
        last.assign(key.begin(), key.end());
    }
    node.erase(index);
    return last;
}

} // namespace

void IndexTree::remove(std::span<const std::byte> key, RowId row) {
    std::vector<std::byte> entry(key.begin(), key.end());
    entry.resize(key.size() + kRowPointerBytes);
    storeBig32(entry.data() + key.size(), row.packed());

    const Path path = pathTo(entry);
    const IndexPageView& leaf = path.leaf;
    const std::size_t position = path.position();
    if (position == leaf.end() || leaf.entry(position).compare(entry, 0) != 0)
        pager_.corrupt(leaf.number(), kIndexEntriesOffset + position,
                       "the index should have an entry for " + describe(row) + " here");
    const bool last = leaf.after(position) == leaf.end();
    if (last && position == 0 && path.depth > 1)
        return removePage(path, path.depth - 1);
    Rise rise;
    if (last && path.depth > 1) {
        const IndexEntryView before = leaf.entry(leaf.before(position));
        rise.last.resize(before.size());
        before.copyTo(rise.last.data());
    }
    eraseInPlace(leaf, pager_.edit(leaf.number()), position);
    raise(path, path.depth - 1, std::move(rise));
}

void IndexTree::removeRow(RowId row) {
    for (Cursor cursor = begin(); cursor.valid(); cursor.next()) {
        if (cursor.row() == row)
            return remove(KeyBytes(cursor.key().begin(), cursor.key().end()), row);
    }
    pager_.corrupt(place_.root, 0, "the index should have an entry for " + describe(row));
}

/// The page at `level` of the path, below the root, has nothing left: out of the tree with it, and with every node
/// above that thereby has no child.
void IndexTree::removePage(const Path& path, std::size_t level) {
    for (;; --level) {
        const IndexPageView empty = view(path.steps[level].page);
        if (empty.previous() != kNoPage)
            setLink(empty.previous(), kIndexNextOffset, empty.next());
        if (empty.next() != kNoPage)
            setLink(empty.next(), kIndexPreviousOffset, empty.previous());
        releasePage(empty.number());

        const Step& step = path.steps[level - 1];
        const bool root = level == 1;
        const IndexPageView before = view(step.page);
        IndexPageContent node(before);
        node.level = path.levelOf(level - 1);
        Rise rise;
        rise.last = takeOut(node, step.tail, before.indexOf(step.position));
        if (node.children() == 0 && !root)
            continue;
        const PageEdit page = pager_.edit(step.page);
        if (node.children() == 0)
            return formatIndexLeaf(page, place_.tablePage);
        if (node.children() == 1 && root)
            return collapseRoot(node.count() == 0 ? node.tail : node.child(0));
        if (node.count() == 0) { // a node other than the root never has a tail alone
            node.insertChild(0, rise.last.empty() ? lastEntryBelow(node.tail) : rise.last, node.tail);
            node.tail = kNoPage;
        }
        node.write(page, place_.tablePage);
        return raise(path, level - 1, std::move(rise));
    }
}

/// The root has one child left: its content moves up, as often as that is so.
void IndexTree::collapseRoot(PageNumber child) {
    for (std::size_t depth = 0; depth < kMaxDepth; ++depth) {
        const IndexPageView below = view(child);
        if (child == place_.root)
            break;
        const PageEdit root = pager_.edit(place_.root);
        std::ranges::copy(below.bytes(), root.bytes().begin());
        setIndexLink(root, kIndexPreviousOffset, kNoPage);
        setIndexLink(root, kIndexNextOffset, kNoPage);
        releasePage(child);
        const IndexPageView now = view(place_.root);
        const bool tailOnly = now.end() == 0;
        const bool entryOnly = !tailOnly && now.after(0) == now.end() && now.tail() == kNoPage;
        if (now.isLeaf() || (!tailOnly && !entryOnly))
            return;
        child = now.child(0);
    }
    pager_.corrupt(place_.root, 0, "the nodes of the index run in a circle");
}

void IndexTree::releasePage(PageNumber page) {
    UsageMap(pager_, place_.ownedMap).remove(page);
    allocator_.release(page);
}

std::vector<std::byte> IndexTree::lastEntryBelow(PageNumber page) const {
    for (std::size_t depth = 0; depth < kMaxDepth; ++depth) {
        const IndexPageView here = view(page);
        const std::size_t last = here.end() == 0 ? 0 : here.before(here.end());
        if (!here.isLeaf()) {
            page = here.child(here.tail() != kNoPage ? here.end() : last);
            continue;
        }
        if (here.end() == 0)
            pager_.corrupt(page, kIndexEntriesOffset, "a leaf below a node of the index has no entries");
        const IndexEntryView entry = here.entry(last);
        std::vector<std::byte> bytes(entry.size());
        entry.copyTo(bytes.data());
        return bytes;
    }
    pager_.corrupt(page, 0, "the nodes of the index run in a circle");
}

} // namespace kelb::jet
