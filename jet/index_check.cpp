#include "jet/index_check.h"

#include "jet/byte_order.h"

#include <algorithm>

namespace kelb::jet {
namespace {

std::string name(PageNumber page) {
    return page == kNoPage ? "none" : "page " + std::to_string(raw(page));
}

class TreeWalk {
public:
    TreeWalk(Pager& pager, const IndexTree::Place& place, IndexVisitor& visitor)
        : pager_(pager), place_(place), visitor_(visitor) {}

    void run() {
        visit(place_.root, 0);
        if (lastLeaf_ != kNoPage && nextOfLastLeaf_ != kNoPage)
            visitor_.error(lastLeaf_, "index leaf: the next leaf should be none, it is " + name(nextOfLastLeaf_));
        compareWithMap();
    }

private:
    using Bytes = std::vector<std::byte>;

    /// Returns the height above the leaves, −1 when it could not be told.
    int visit(PageNumber number, std::size_t depth) {
        if (depth == IndexTree::kMaxDepth) {
            visitor_.error(number, "index node: too many levels lie above this page");
            return -1;
        }
        if (!visitor_.enter(number))
            return -1;
        pages_.push_back(number);
        try {
            const IndexPageView page(pager_, pager_.read(number), place_.tablePage);
            checkPage(page);
            const int height = page.isLeaf() ? 0 : visitNode(page, depth);
            if (page.isLeaf())
                visitLeaf(page, depth);
            const int level = load8(page.bytes().data() + kIndexLevelOffset);
            if (height >= 0 && level != height)
                visitor_.warning(number, "index page: the level should be " + std::to_string(height) + ", it is " +
                                             std::to_string(level));
            return height;
        } catch (const CorruptFile& fault) {
            visitor_.error(fault.page(),
                           "at byte " + std::to_string(fault.offset()) + ": " + std::string(fault.expected()));
            return -1;
        }
    }

    void checkPage(const IndexPageView& page) {
        const unsigned free = load16(page.bytes().data() + kIndexFreeOffset);
        if (free != kIndexEntryBytes - page.end())
            visitor_.error(page.number(), "index page: the free bytes should be " +
                                              std::to_string(kIndexEntryBytes - page.end()) + ", they are " +
                                              std::to_string(free));
    }

    void visitLeaf(const IndexPageView& leaf, std::size_t depth) {
        if (leaf.end() == 0 && depth > 0)
            visitor_.error(leaf.number(), "index leaf: it is empty, though not the root");
        if (leaf.previous() != lastLeaf_)
            visitor_.error(leaf.number(), "index leaf: the previous leaf should be " + name(lastLeaf_) + ", it is " +
                                              name(leaf.previous()));
        if (lastLeaf_ != kNoPage && nextOfLastLeaf_ != leaf.number())
            visitor_.error(lastLeaf_, "index leaf: the next leaf should be " + name(leaf.number()) + ", it is " +
                                          name(nextOfLastLeaf_));
        lastLeaf_ = leaf.number();
        nextOfLastLeaf_ = leaf.next();
        for (std::size_t at = 0; at != leaf.end(); at = leaf.after(at)) {
            const IndexEntryView entry = leaf.entry(at);
            if (!last_.empty() && entry.compare(last_, 0) <= 0)
                visitor_.error(leaf.number(), place(at) + "it is not greater than the entry before it");
            else if (!floor_.empty() && entry.compare(floor_, 0) <= 0)
                visitor_.error(leaf.number(), place(at) + "a node key in front of it is not smaller");
            last_.resize(entry.size());
            entry.copyTo(last_.data());
            visitor_.entry(std::span(last_).first(last_.size() - kRowPointerBytes), RowId::unpack(entry.lastWord()),
                           leaf.number());
        }
    }

    int visitNode(const IndexPageView& node, std::size_t depth) {
        int height = -1;
        if (node.end() == 0)
            visitor_.error(node.number(), "index node: it has no entries");
        for (std::size_t at = 0;; at = node.after(at)) {
            if (at == node.end() && node.tail() == kNoPage)
                break;
            const PageNumber child = node.child(at);
            const int below = visit(child, depth + 1);
            if (height >= 0 && below >= 0 && height != below + 1)
                visitor_.error(node.number(), "index node: its children are not of one level");
            height = below < 0 ? height : below + 1;
            if (at == node.end())
                break;
            if (below >= 0)
                compareKey(node, at);
        }
        return height;
    }

    /// The key of the child just visited against the last leaf entry below it.
    void compareKey(const IndexPageView& node, std::size_t at) {
        const IndexEntryView key = node.entry(at);
        const int order = key.compare(last_, kChildBytes);
        if (order < 0)
            visitor_.error(node.number(), place(at) + "the node key is smaller than the last entry below it");
        if (order > 0)
            visitor_.warning(node.number(), place(at) + "the node key is greater than the last entry below it");
        floor_.resize(key.size());
        key.copyTo(floor_.data());
        floor_.resize(key.size() - kChildBytes);
    }

    void compareWithMap() {
        std::ranges::sort(pages_);
        try {
            const UsageMap map(pager_, place_.ownedMap);
            auto expected = pages_.begin();
            const auto notInMap = [&](PageNumber page) {
                visitor_.error(page, "index page: the page is of the index, but not in its map");
            };
            for (auto page = map.next(kNoPage); page; page = map.next(*page)) {
                for (; expected != pages_.end() && *expected < *page; ++expected)
                    notInMap(*expected);
                if (expected != pages_.end() && *expected == *page)
                    ++expected;
                else
                    visitor_.error(*page, "the map of the index has a page that its tree does not lead to");
            }
            for (; expected != pages_.end(); ++expected)
                notInMap(*expected);
        } catch (const CorruptFile& fault) {
            visitor_.error(fault.page(),
                           "at byte " + std::to_string(fault.offset()) + ": " + std::string(fault.expected()));
        }
    }

    static std::string place(std::size_t at) {
        return "index entry at byte " + std::to_string(kIndexEntriesOffset + at) + ": ";
    }

    Pager& pager_;
    const IndexTree::Place& place_;
    IndexVisitor& visitor_;
    std::vector<PageNumber> pages_;
    Bytes last_;  ///< leaf entry before
    Bytes floor_; ///< node key before, below which no entry may follow
    PageNumber lastLeaf_ = kNoPage;
    PageNumber nextOfLastLeaf_ = kNoPage;
};

} // namespace

void checkIndexTree(Pager& pager, const IndexTree::Place& place, IndexVisitor& visitor) {
    TreeWalk(pager, place, visitor).run();
}

} // namespace kelb::jet
