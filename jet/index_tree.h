#pragma once

#include "jet/index_key.h"
#include "jet/index_page.h"
#include "jet/pager.h"
#include "jet/usage_map.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelb::jet {

/// One physical index: a B+ tree of entries (key bytes, row) in plain byte order. Nodes hold for each child its last
/// leaf entry; the last child may have no entry ("tail"). Remembers nothing between calls. Reading relies on nothing
/// but that node keys are not smaller than what is below them; whatever is damaged gives CorruptFile.
class IndexTree {
public:
    static constexpr std::size_t kMaxDepth = 40; ///< levels; a deeper tree is a circle

    struct Place {
        PageNumber root;      ///< never changes
        RowId ownedMap;       ///< exactly the pages of the tree
        PageNumber tablePage; ///< definition page, owner field of every index page
    };
    IndexTree(Pager& pager, PageAllocator& allocator, Place place)
        : pager_(pager), allocator_(allocator), place_(place) {}

    /// An empty leaf as root on a fresh page; the caller puts it into the owned map.
    static void formatRoot(PageEdit& page, PageNumber tablePage);

    /// Any row whose key is exactly `key`.
    std::optional<RowId> find(std::span<const std::byte> key) const;
    /// Whether an entry with this key exists, `except` aside.
    bool contains(std::span<const std::byte> key, std::optional<RowId> except = std::nullopt) const;

    /// All require an operation, which must be aborted after a throw.
    /// CorruptFile when that very entry exists; Error (KeyNotPossible) when it is longer than kMaxIndexEntry.
    void insert(std::span<const std::byte> key, RowId row);
    void remove(std::span<const std::byte> key, RowId row); ///< CorruptFile when it does not exist
    void removeRow(RowId row);                              ///< by walking the leaves: for keys that cannot be made
    /// Fills an empty tree from entries sorted by (key, row): leaves packed, linear time.
    struct Entry {
        KeyBytes key;
        RowId row;
    };
    void build(std::span<const Entry> sorted);

    /// Walks the leaf chain forward. Void after any change to the tree.
    class Cursor {
    public:
        bool valid() const noexcept { return valid_; }
        std::span<const std::byte> key() const noexcept { return {entry_.data(), entry_.size() - kRowPointerBytes}; }
        RowId row() const noexcept { return row_; }
        void next();
        /// Goes on, from the entry shown, to one whose key is exactly `key`; false when there is none. Longer keys
        /// that begin alike are passed over: the key of an empty binary value begins those of all others.
        bool seek(std::span<const std::byte> key);

    private:
        friend class IndexTree;
        Cursor(Pager& pager, PageNumber tablePage, IndexPageView leaf, std::size_t position);
        void load();

        Pager* pager_;
        PageNumber tablePage_;
        IndexPageView leaf_;
        std::size_t position_;     ///< of the entry shown
        std::uint32_t leavesLeft_; ///< guards against a leaf chain that runs in a circle
        std::vector<std::byte> entry_;
        RowId row_;
        bool valid_ = false;
    };
    Cursor begin() const;
    /// First entry whose key is >= `key` (a prefix of keys will do).
    Cursor lowerBound(std::span<const std::byte> key) const;

private:
    struct Step {
        PageNumber page = kNoPage;
        std::size_t position = 0; ///< of the entry taken in the page
        bool tail = false;        ///< the tail child was taken
    };
    /// The way from the root to the place of an entry in its leaf.
    struct Path {
        std::array<Step, kMaxDepth> steps;
        std::size_t depth = 0;
        IndexPageView leaf;

        std::size_t position() const noexcept { return steps[depth - 1].position; }
        std::uint8_t levelOf(std::size_t step) const noexcept { return static_cast<std::uint8_t>(depth - 1 - step); }
    };
    /// What a change of a page means for the node above it.
    struct Rise {
        std::vector<std::byte> last;     ///< new last leaf entry below the page; empty: as before
        PageNumber right = kNoPage;      ///< page split off on its right side, which then has that last entry
        std::vector<std::byte> leftLast; ///< with `right`: last leaf entry below what stayed
        bool ascending = false;          ///< split by an entry behind all others
    };
    struct Child {
        PageNumber page;
        std::vector<std::byte> last; ///< last leaf entry below it
    };

    IndexPageView view(PageNumber page) const;
    IndexPageView leafFor(std::span<const std::byte> target, std::size_t& position) const;
    Path pathTo(std::span<const std::byte> target) const;

    PageEdit newPage();
    void releasePage(PageNumber page);
    void setLink(PageNumber page, std::size_t offset, PageNumber target);
    void cutLink(PageNumber left, PageNumber right);

    void raise(const Path& path, std::size_t level, Rise rise);
    void splitLeaf(const IndexPageContent& content, const Path& path, std::size_t inserted, Rise& rise);
    void splitNode(IndexPageContent content, const Path& path, std::size_t level, Rise& rise);
    void placeHalves(IndexPageContent left, IndexPageContent right, const IndexPageContent& whole, const Path& path,
                     std::size_t level, Rise& rise);

    void removePage(const Path& path, std::size_t level);
    void collapseRoot(PageNumber child);
    std::vector<std::byte> lastEntryBelow(PageNumber page) const;

    std::vector<Child> buildLeaves(std::span<const Entry> sorted);
    std::vector<Child> buildNodes(std::span<const Child> children, std::uint8_t level);
    void buildNode(PageNumber page, std::span<const Child> children, std::uint8_t level);

    Pager& pager_;
    PageAllocator& allocator_;
    Place place_;
};

} // namespace kelb::jet
