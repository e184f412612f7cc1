#pragma once

#include "jet/data_page.h"
#include "jet/pager.h"
#include "jet/usage_map.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelb::jet {

/// The records of one table on its data pages. A record's address is its first slot for ever: when it outgrows its page
/// the bytes go to a target slot on another page and the first slot points there, never to a further pointer; no target
/// is left without its pointer, since other readers take such a one for a live row.
/// Changes require an operation. Remembers nothing.
class RowStore {
public:
    RowStore(Pager& pager, PageAllocator& allocator, PageNumber table, RowId ownedMap, RowId freeMap)
        : pager_(&pager), allocator_(&allocator), table_(table), ownedMap_(ownedMap), freeMap_(freeMap) {}

    struct Record {
        RowId first;  ///< the record's address
        RowId place;  ///< where its bytes are; other than `first` for a moved record
        PageRef page; ///< holds `bytes`
        std::span<const std::byte> bytes;
        bool moved() const noexcept { return first != place; }
    };

    /// No value when no record has this address (any more). Throws CorruptFile for a pointer that leads nowhere.
    std::optional<Record> find(RowId id) const;
    /// The record behind a pointer slot.
    Record follow(RowId first, std::span<const std::byte> pointer) const;
    /// The page, checked to be a data page of this table. Throws CorruptFile.
    PageRef ownPage(PageNumber page) const;

    RowId insert(std::span<const std::byte> row);
    /// The same at the address of an erased record, if that is still free and its page has room.
    RowId insert(std::span<const std::byte> row, RowId wanted);
    /// Makes the page of an erased record one of the table's again, if it has become free since.
    void reclaimPage(PageNumber page);
    /// `record` as find() gave it; its bytes are void afterwards. `row` must not lie on a page of the table.
    void replace(const Record& record, std::span<const std::byte> row);
    void erase(const Record& record);

    /// Throws CorruptFile at the end when there should be pages behind the end of the file.
    std::optional<PageNumber> nextPage(PageNumber after) const;

private:
    bool isOwn(const PageRef& page) const noexcept;
    RowId place(SlotKind kind, std::span<const std::byte> row);
    bool placeAt(RowId wanted, std::span<const std::byte> row);
    bool replaceAt(RowId slot, SlotKind kind, std::span<const std::byte> row);
    void eraseSlot(RowId slot);
    void offerSpace(const DataPageEditor& page);
    void withdrawFull(const DataPageEditor& page);

    Pager* pager_;
    PageAllocator* allocator_;
    PageNumber table_;
    RowId ownedMap_, freeMap_;
};

} // namespace kelb::jet
