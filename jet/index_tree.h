#pragma once

#include "jet/index_key.h"
#include "jet/pager.h"
#include "jet/usage_map.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace kelb::jet {

/// One physical index: a B+ tree of entries (key bytes, row) in plain byte order. Nodes hold for each child its last
/// leaf entry; the last child may have no entry ("tail"). Remembers nothing between calls.
class IndexTree {
public:
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

    /// All three require an operation.
    void insert(std::span<const std::byte> key, RowId row); ///< CorruptFile when that very entry exists
    void remove(std::span<const std::byte> key, RowId row); ///< CorruptFile when it does not
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
        std::span<const std::byte> key() const noexcept { return {entry_.data(), entry_.size() - 4}; }
        RowId row() const noexcept;
        void next();

    private:
        friend class IndexTree;
        Pager* pager_ = nullptr;
        PageRef page_;
        std::size_t position_ = 0; ///< byte offset of the next entry
        std::vector<std::byte> entry_;
        bool valid_ = false;
        std::size_t leavesLeft_ = 0; ///< guards against a leaf chain that runs in a circle
    };
    Cursor begin() const;
    /// First entry whose key is >= `key` (a prefix of keys will do).
    Cursor lowerBound(std::span<const std::byte> key) const;

private:
    Pager& pager_;
    PageAllocator& allocator_;
    Place place_;
};

} // namespace kelb::jet
