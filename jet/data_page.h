#pragma once

#include "jet/pager.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelb::jet {

/// Slotted pages: rows of tables, usage maps, long values.
///
/// | offset | size | meaning |
/// |---|---|---|
/// | 0 | 2 | 01 01 |
/// | 2 | u16 | free bytes between the slot array and the lowest row |
/// | 4 | u32 | owner: definition page of the table, "LVAL", 0 on map pages, 1 on page 1 |
/// | 8 | u32 | chain stamp on the first page of a long-value chain, else 0 |
/// | 12 | u16 | slots |
/// | 14 | u16 each | slot: flags in bits 13 to 15, start of the row in bits 0 to 12 |
///
/// Rows grow down from the end; row i ends where row i-1 starts.
inline constexpr std::uint32_t kLvalOwner = 0x4C41564C; ///< "LVAL" read as u32
inline constexpr std::size_t kMaxSlots = 255;
inline constexpr std::size_t kMaxRowBytes = 4060;
inline constexpr std::size_t kMaxLvalRowBytes = 4076;

enum class SlotKind : std::uint8_t { Row, Pointer /*moved away*/, Target /*of a pointer*/, Deleted };

struct Slot {
    SlotKind kind = SlotKind::Deleted;
    std::span<const std::byte> bytes;
};

/// Reading. Both page sizes (Jet 3 has its slot count at 8 and its slots at 10).
class DataPageView {
public:
    /// Throws CorruptFile unless the page is a data page whose slots are in order and inside the page.
    /// `page` must outlive the view.
    DataPageView(const Pager& pager, const PageRef& page);

    std::uint32_t owner() const noexcept;
    std::uint32_t chainStamp() const noexcept;
    std::size_t slotCount() const noexcept { return slots_; }
    Slot slot(std::size_t index) const noexcept; ///< Requires index < slotCount().
    std::size_t freeBytes() const noexcept;      ///< computed from the slots, not read

private:
    std::span<const std::byte> page_;
    std::size_t slots_ = 0;
    std::size_t slotArray_ = 14;
};

/// Changing a Jet 4 data page in place. Slot numbers never change. Each call leaves a valid page whose gap is zero.
class DataPageEditor {
public:
    /// Throws as DataPageView.
    DataPageEditor(const Pager& pager, PageEdit page);
    /// Makes an empty data page of a zeroed page.
    static void format(PageEdit& page, std::uint32_t owner);

    /// Room for a row of `length` with a new slot.
    bool hasRoom(std::size_t length) const noexcept;
    /// Adds a slot at the end. Requires hasRoom(row.size()). `row` must not lie on this page.
    std::uint8_t add(SlotKind kind, std::span<const std::byte> row);
    /// Gives a slot other bytes, not from this page; rows below move. False, and nothing changed, when the page has no
    /// room.
    [[nodiscard]] bool replace(std::uint8_t slot, SlotKind kind, std::span<const std::byte> row);
    /// The slot stays, deleted and of zero length; its bytes go back to the gap.
    void erase(std::uint8_t slot);
    PageNumber number() const noexcept { return page_.number(); }
    bool allDeleted() const noexcept;
    std::size_t freeBytes() const noexcept;
    std::size_t slotCount() const noexcept;
    SlotKind kind(std::size_t slot) const noexcept;
    std::span<std::byte> row(std::uint8_t slot) noexcept; ///< for changing bytes of a row in place
    std::byte* rowData(std::uint8_t slot) noexcept { return row(slot).data(); }
    void setChainStamp(std::uint32_t stamp) noexcept;

private:
    std::size_t start(std::size_t slot) const noexcept;
    void setSlot(std::size_t slot, SlotKind kind, std::size_t start) noexcept;
    void resize(std::uint8_t slot, SlotKind kind, std::size_t length) noexcept;
    void storeFreeBytes() noexcept;

    PageEdit page_;
};

} // namespace kelb::jet
