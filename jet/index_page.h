#pragma once

#include "jet/pager.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelb::jet {

/// Pages of an index.
///
/// | offset | size | meaning |
/// |---|---|---|
/// | 0 | 2 | 03 01 node, 04 01 leaf |
/// | 2 | u16 | free bytes behind the last entry |
/// | 4 | u32 | definition page of the table |
/// | 12 | u32 | previous page of the level, 0 = none |
/// | 16 | u32 | next page of the level, 0 = none |
/// | 20 | u32 | nodes: tail child, the last one, which has no entry; 0 = none |
/// | 24 | u16 | prefix: bytes that every entry shares with the first one and does not store |
/// | 26 | u8 | level, 0 = leaf |
/// | 27 | 453 | mask: bit i (lowest first) = an entry ends at 480 + i |
/// | 480 | 3616 | entries, back to back |
///
/// Leaf entry: key, row pointer (page and slot, big endian). Node entry: the last leaf entry below a child, number of
/// the child (u32, big endian). The order is that of the plain bytes.
inline constexpr std::size_t kIndexFreeOffset = 2;
inline constexpr std::size_t kIndexOwnerOffset = 4;
inline constexpr std::size_t kIndexPreviousOffset = 12;
inline constexpr std::size_t kIndexNextOffset = 16;
inline constexpr std::size_t kIndexTailOffset = 20;
inline constexpr std::size_t kIndexPrefixOffset = 24;
inline constexpr std::size_t kIndexLevelOffset = 26;
inline constexpr std::size_t kIndexMaskOffset = 27;
inline constexpr std::size_t kIndexEntriesOffset = 480;
inline constexpr std::size_t kIndexEntryBytes = kPageSize - kIndexEntriesOffset;
inline constexpr std::size_t kRowPointerBytes = 4;
inline constexpr std::size_t kChildBytes = 4;
/// Bytes of a leaf entry; two must fit a page.
inline constexpr std::size_t kMaxIndexEntry = 1800;

/// One entry where it lies: what it shares with the first entry of the page, and the rest.
struct IndexEntryView {
    std::span<const std::byte> shared;
    std::span<const std::byte> rest;

    std::size_t size() const noexcept { return shared.size() + rest.size(); }
    /// The last four bytes: row pointer of a leaf entry (page << 8 | slot), child page of a node entry.
    std::uint32_t lastWord() const noexcept;
    /// Order of the entry without its last `without` bytes against `other`: negative, 0, positive.
    int compare(std::span<const std::byte> other, std::size_t without) const noexcept;
    /// Writes size() bytes.
    void copyTo(std::byte* out) const noexcept;
};

/// Reading an index page. Positions are byte offsets of entries from the first one; position end() is behind the last.
class IndexPageView {
public:
    IndexPageView() = default;
    /// Throws CorruptFile unless it is an index page of that table whose mask and prefix make sense.
    IndexPageView(const Pager& pager, PageRef page, PageNumber tablePage);

    PageNumber number() const noexcept { return page_.number(); }
    std::span<const std::byte> bytes() const noexcept { return page_.bytes(); }
    bool isLeaf() const noexcept;
    PageNumber previous() const noexcept { return link(kIndexPreviousOffset); }
    PageNumber next() const noexcept { return link(kIndexNextOffset); }
    PageNumber tail() const noexcept { return link(kIndexTailOffset); }
    std::size_t prefixLength() const noexcept { return prefix_; }

    std::size_t end() const noexcept { return end_; }
    std::size_t after(std::size_t position) const noexcept;   ///< of the next entry. Requires position < end().
    std::size_t before(std::size_t position) const noexcept;  ///< of the previous entry. Requires position > 0.
    std::size_t indexOf(std::size_t position) const noexcept; ///< entries before the position
    /// Requires position < end(). Throws CorruptFile for an entry too short for its pointers; so do the next two.
    IndexEntryView entry(std::size_t position) const;
    /// First entry >= `target`; of node entries the child number does not count.
    std::size_t lowerBound(std::span<const std::byte> target) const;
    /// Page below an entry, the tail child for end(). Throws CorruptFile when there is none.
    PageNumber child(std::size_t position) const;

private:
    PageNumber link(std::size_t offset) const noexcept;
    IndexEntryView between(std::size_t begin, std::size_t end) const;
    std::size_t trailer() const noexcept; ///< bytes of a node entry that do not take part in the order

    const Pager* pager_ = nullptr;
    PageRef page_;
    std::size_t end_ = 0;
    std::size_t prefix_ = 0;
};

/// Adds an entry where it stands in order. False, and nothing changed, when the page has no room or the entry does not
/// share the prefix. `view` shows `page`; positions in it are void afterwards.
bool insertInPlace(const IndexPageView& view, const PageEdit& page, std::size_t position,
                   std::span<const std::byte> entry);
void eraseInPlace(const IndexPageView& view, const PageEdit& page, std::size_t position);
/// Makes the page an empty leaf.
void formatIndexLeaf(const PageEdit& page, PageNumber tablePage);
void setIndexLink(const PageEdit& page, std::size_t offset, PageNumber target);

/// An index page taken apart, for changes that lay it out anew.
class IndexPageContent {
public:
    enum class Kind { Leaf, Node };

    IndexPageContent(Kind kind, std::uint8_t pageLevel) : level(pageLevel), kind_(kind) {}
    explicit IndexPageContent(const IndexPageView& view);

    std::uint8_t level = 0;
    PageNumber previous = kNoPage, next = kNoPage, tail = kNoPage;

    bool isLeaf() const noexcept { return kind_ == Kind::Leaf; }
    std::size_t count() const noexcept { return ends_.size(); }
    std::span<const std::byte> entry(std::size_t index) const noexcept;
    /// A node entry without the child, and the child.
    std::span<const std::byte> key(std::size_t index) const noexcept;
    PageNumber child(std::size_t index) const noexcept;
    /// Children of a node, the tail included.
    std::size_t children() const noexcept { return count() + (tail == kNoPage ? 0 : 1); }

    void insert(std::size_t index, std::span<const std::byte> entry);
    void insertChild(std::size_t index, std::span<const std::byte> key, PageNumber child);
    void setKey(std::size_t index, std::span<const std::byte> key);
    void erase(std::size_t index);
    void clear() noexcept;
    /// Entries [first, last) with the page's kind, level and prefix rule; no links.
    IndexPageContent part(std::size_t first, std::size_t last) const;

    /// Whether entries [first, last) fit one page.
    bool fits(std::size_t first, std::size_t last) const noexcept { return layout(first, last).fits; }
    bool fits() const noexcept { return fits(0, count()); }
    /// Where to cut a leaf that does not fit: entries before it stay. Both parts fit and have an entry.
    /// No value (count()) when no cut does it.
    std::size_t leafCut() const noexcept;
    /// Entry of a node that goes up when the node is split: those before it and those behind it each fit a page and are
    /// not empty. count() when there is none.
    std::size_t nodeCut() const noexcept;

    /// Lays the page out. Throws Error (KeyNotPossible), and changes nothing, unless it fits.
    void write(const PageEdit& page, PageNumber tablePage) const;

private:
    struct Layout {
        bool fits;
        std::size_t prefix;
    };
    Layout layout(std::size_t first, std::size_t last) const noexcept;
    std::size_t begin(std::size_t index) const noexcept { return index == 0 ? 0 : ends_[index - 1]; }
    template <typename Good>
    std::size_t nearestToMiddle(std::size_t first, std::size_t last, const Good& good) const noexcept;

    Kind kind_;
    /// Leaves share prefixes when they must. Nodes do so only where they already did: the original engine never
    /// compresses them, so whether it would read them is not known.
    bool mayShare_ = kind_ == Kind::Leaf;
    std::vector<std::byte> bytes_;
    std::vector<std::size_t> ends_;
};

} // namespace kelb::jet
