#include "jet/index_tree.h"

#include "jet/byte_order.h"

#include <algorithm>
#include <string>

namespace kelb::jet {
namespace {

/// Whether one more entry goes into a leaf that is being packed, in constant time for each entry.
class LeafRoom {
public:
    bool take(std::span<const std::byte> first, std::span<const std::byte> entry) {
        const std::size_t bytes = bytes_ + entry.size();
        const std::size_t shortest = count_ == 0 ? entry.size() : std::min(shortest_, entry.size());
        if (bytes > kIndexEntryBytes) {
            const auto differs = std::ranges::mismatch(first, entry).in1;
            const std::size_t prefix = std::min(static_cast<std::size_t>(differs - first.begin()), shortest - 1);
            if (bytes - prefix * count_ > kIndexEntryBytes)
                return false;
        }
        bytes_ = bytes;
        shortest_ = shortest;
        ++count_;
        return true;
    }

private:
    std::size_t bytes_ = 0, shortest_ = 0, count_ = 0;
};

} // namespace

void IndexTree::build(std::span<const Entry> sorted) {
    if (const IndexPageView root = view(place_.root); !root.isLeaf() || root.end() != 0)
        pager_.corrupt(place_.root, 0, "an empty index was expected here");
    std::vector<Child> children = buildLeaves(sorted);
    for (std::uint8_t level = 1; !children.empty(); ++level)
        children = buildNodes(children, level);
}

/// Writes the leaves: the root alone when one page holds all, and then there are no children.
std::vector<IndexTree::Child> IndexTree::buildLeaves(std::span<const Entry> sorted) {
    std::vector<Child> done;
    IndexPageContent leaf(IndexPageContent::Kind::Leaf, 0);
    PageNumber page = kNoPage;
    const auto finish = [&] {
        leaf.write(pager_.edit(page), place_.tablePage);
        const auto last = leaf.entry(leaf.count() - 1);
        done.push_back({page, {last.begin(), last.end()}});
    };
    LeafRoom room;
    std::vector<std::byte> entry;
    for (const Entry& next : sorted) {
        entry.assign(next.key.begin(), next.key.end());
        entry.resize(next.key.size() + kRowPointerBytes);
        storeBig32(entry.data() + next.key.size(), next.row.packed());
        if (entry.size() > kMaxIndexEntry)
            throw Error(Error::Kind::KeyNotPossible,
                        "an index key of " + std::to_string(next.key.size()) + " bytes is too long for an index page");
        if (!room.take(leaf.count() == 0 ? entry : leaf.entry(0), entry)) {
            if (page == kNoPage)
                page = newPage().number();
            leaf.next = newPage().number();
            finish();
            leaf.clear();
            leaf.previous = page;
            page = std::exchange(leaf.next, kNoPage);
            room = {};
            room.take(entry, entry);
        }
        leaf.insert(leaf.count(), entry);
    }
    if (done.empty())
        leaf.write(pager_.edit(place_.root), place_.tablePage);
    else
        finish();
    return done;
}

/// Writes one level of nodes over `children`; the last level is the root alone, and then nothing is left to do.
std::vector<IndexTree::Child> IndexTree::buildNodes(std::span<const Child> children, std::uint8_t level) {
    std::vector<Child> nodes;
    while (!children.empty()) {
        std::size_t count = 1; // the last child of a node is its tail and takes no room
        for (std::size_t bytes = 0; count < children.size(); ++count) {
            bytes += children[count - 1].last.size() + kChildBytes;
            if (bytes > kIndexEntryBytes)
                break;
        }
        if (count + 1 == children.size() && count > 2)
            --count; // not one child alone for the last node
        const bool root = nodes.empty() && count == children.size();
        const PageNumber page = root ? place_.root : newPage().number();
        buildNode(page, children.first(count), level);
        if (root)
            return {};
        nodes.push_back({page, children[count - 1].last});
        children = children.subspan(count);
    }
    return nodes;
}

void IndexTree::buildNode(PageNumber page, std::span<const Child> children, std::uint8_t level) {
    IndexPageContent node(IndexPageContent::Kind::Node, level);
    for (const Child& child : children.first(children.size() - 1))
        node.insertChild(node.count(), child.last, child.page);
    if (children.size() > 1)
        node.tail = children.back().page;
    else
        node.insertChild(0, children.back().last, children.back().page);
    node.write(pager_.edit(page), place_.tablePage);
    for (std::size_t i = 1; i < children.size() && level > 1; ++i) {
        setLink(children[i - 1].page, kIndexNextOffset, children[i].page);
        setLink(children[i].page, kIndexPreviousOffset, children[i - 1].page);
    }
}

} // namespace kelb::jet
