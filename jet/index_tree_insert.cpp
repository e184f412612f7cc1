#include "jet/index_tree.h"

#include "jet/byte_order.h"

#include <algorithm>
#include <string>

namespace kelb::jet {

/// As leafFor(), with the way noted.
IndexTree::Path IndexTree::pathTo(std::span<const std::byte> target) const {
    Path path;
    PageNumber page = place_.root;
    for (;;) {
        IndexPageView here = view(page);
        Step& step = path.steps[path.depth++];
        step = {page, here.lowerBound(target), false};
        if (here.isLeaf()) {
            path.leaf = std::move(here);
            return path;
        }
        if (path.depth == kMaxDepth)
            pager_.corrupt(page, 0, "the index has no leaf below this node: its pages run in a circle");
        if (step.position == here.end()) {
            step.tail = here.tail() != kNoPage || here.end() == 0;
            if (!step.tail)
                step.position = here.before(here.end());
        }
        page = here.child(step.position);
    }
}

PageEdit IndexTree::newPage() {
    PageEdit page = allocator_.allocate();
    UsageMap(pager_, place_.ownedMap).add(page.number(), allocator_);
    return page;
}

/// Points a page of the tree to another one of its level.
void IndexTree::setLink(PageNumber page, std::size_t offset, PageNumber target) {
    static_cast<void>(view(page)); // whatever else stands there must not be written to
    setIndexLink(pager_.edit(page), offset, target);
}

void IndexTree::insert(std::span<const std::byte> key, RowId row) {
    std::array<std::byte, kMaxIndexEntry> buffer;
    if (key.size() + kRowPointerBytes > buffer.size())
        throw Error(Error::Kind::KeyNotPossible, "the index key of the row has " + std::to_string(key.size()) +
                                                     " bytes, at most " +
                                                     std::to_string(buffer.size() - kRowPointerBytes) +
                                                     " are possible: shorten the texts in the columns of the index");
    std::ranges::copy(key, buffer.begin());
    storeBig32(buffer.data() + key.size(), row.packed());
    const auto entry = std::span(buffer).first(key.size() + kRowPointerBytes);

    const Path path = pathTo(entry);
    const IndexPageView& leaf = path.leaf;
    const std::size_t position = path.position();
    const bool last = position == leaf.end();
    if (!last && leaf.entry(position).compare(entry, 0) == 0)
        pager_.corrupt(leaf.number(), kIndexEntriesOffset + position,
                       "the index already has the entry of the row that is being added");
    Rise rise;
    if (last && path.depth > 1)
        rise.last.assign(entry.begin(), entry.end());
    const PageEdit page = pager_.edit(leaf.number());
    if (!insertInPlace(leaf, page, position, entry)) {
        IndexPageContent content(leaf);
        const std::size_t index = leaf.indexOf(position);
        content.insert(index, entry);
        if (content.fits())
            content.write(page, place_.tablePage);
        else
            splitLeaf(content, path, index, rise);
    }
    raise(path, path.depth - 1, std::move(rise));
}

/// Brings what a change of the page at `level` of the path means into the nodes above, as far up as it goes. Every node
/// key stays the last leaf entry below its child.
void IndexTree::raise(const Path& path, std::size_t level, Rise rise) {
    while (level-- > 0 && (rise.right != kNoPage || !rise.last.empty())) {
        const Step& step = path.steps[level];
        if (step.tail && rise.right == kNoPage)
            continue; // a tail has no key here, but its last entry is also the node's
        const IndexPageView before = view(step.page);
        const std::size_t index = before.indexOf(step.position);
        IndexPageContent node(before);
        node.level = path.levelOf(level);
        const bool lastChild = step.tail || (index + 1 == node.count() && node.tail == kNoPage);
        if (rise.right == kNoPage) {
            node.setKey(index, rise.last);
        } else if (step.tail) {
            node.insertChild(node.count(), rise.leftLast, node.tail);
            node.tail = rise.right;
        } else {
            const auto old = node.key(index);
            const auto rightLast = rise.last.empty() ? std::vector(old.begin(), old.end()) : rise.last;
            node.setKey(index, rise.leftLast);
            node.insertChild(index + 1, rightLast, rise.right);
        }
        rise.right = kNoPage;
        if (!lastChild)
            rise.last.clear();
        if (node.fits())
            node.write(pager_.edit(step.page), place_.tablePage);
        else
            splitNode(std::move(node), path, level, rise);
    }
}

void IndexTree::splitLeaf(const IndexPageContent& content, const Path& path, std::size_t inserted, Rise& rise) {
    // Ascending keys: the old page stays full and the new one begins with the new entry, so pages fill up.
    rise.ascending = inserted + 1 == content.count() && content.next == kNoPage;
    const std::size_t cut = rise.ascending ? content.count() - 1 : content.leafCut();
    if (cut == 0 || cut == content.count())
        pager_.corrupt(path.leaf.number(), kIndexEntriesOffset,
                       "the entries of an index leaf are too long to split it");
    const auto last = content.entry(cut - 1);
    rise.leftLast.assign(last.begin(), last.end());
    placeHalves(content.part(0, cut), content.part(cut, content.count()), content, path, path.depth - 1, rise);
}

void IndexTree::splitNode(IndexPageContent content, const Path& path, std::size_t level, Rise& rise) {
    if (content.tail == kNoPage) {
        content.tail = content.child(content.count() - 1);
        content.erase(content.count() - 1);
        if (content.fits())
            return content.write(pager_.edit(path.steps[level].page), place_.tablePage);
    }
    const std::size_t cut =
        rise.ascending && path.steps[level].tail && content.count() > 2 ? content.count() - 2 : content.nodeCut();
    if (cut == content.count())
        pager_.corrupt(path.steps[level].page, kIndexEntriesOffset,
                       "the entries of an index node are too long to split it");
    IndexPageContent left = content.part(0, cut);
    left.tail = content.child(cut);
    IndexPageContent right = content.part(cut + 1, content.count());
    right.tail = content.tail;
    const PageNumber leftLastChild = left.tail, rightFirstChild = right.child(0);
    const auto key = content.key(cut);
    rise.leftLast.assign(key.begin(), key.end());
    placeHalves(std::move(left), std::move(right), content, path, level, rise);
    cutLink(leftLastChild, rightFirstChild);
}

/// Writes the halves of a page: into it and a new page on its right or, the root's, into two new pages below it.
void IndexTree::placeHalves(IndexPageContent left, IndexPageContent right, const IndexPageContent& whole,
                            const Path& path, std::size_t level, Rise& rise) {
    const PageNumber page = path.steps[level].page;
    const bool root = level == 0;
    const PageEdit leftPage = root ? newPage() : pager_.edit(page);
    const PageEdit rightPage = newPage();
    left.previous = whole.previous;
    left.next = rightPage.number();
    right.previous = leftPage.number();
    right.next = whole.next;
    left.write(leftPage, place_.tablePage);
    right.write(rightPage, place_.tablePage);
    if (whole.next != kNoPage)
        setLink(whole.next, kIndexPreviousOffset, rightPage.number());
    if (!root) {
        rise.right = rightPage.number();
        return;
    }
    IndexPageContent above(IndexPageContent::Kind::Node, static_cast<std::uint8_t>(path.levelOf(0) + 1));
    above.insertChild(0, rise.leftLast, leftPage.number());
    above.tail = rightPage.number();
    above.write(pager_.edit(page), place_.tablePage);
    rise = {};
}

/// Nodes are chained among children of one parent only.
void IndexTree::cutLink(PageNumber left, PageNumber right) {
    const IndexPageView page = view(left);
    if (page.isLeaf() || page.next() != right)
        return;
    setLink(left, kIndexNextOffset, kNoPage);
    setLink(right, kIndexPreviousOffset, kNoPage);
}

} // namespace kelb::jet
