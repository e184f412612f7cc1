#include "jet/row_store.h"

#include "jet/byte_order.h"

#include <array>
#include <utility>

namespace kelb::jet {

namespace {

constexpr std::size_t kPointerBytes = 4;
constexpr std::size_t kWorthOffering = 256; ///< free bytes with which a page goes back into the free map
constexpr std::size_t kSlotBytes = 2;       ///< with fewer of them free a page leaves the free map at once

bool isDataPage(const PageRef& page) noexcept {
    return load8(page.data()) == 1;
}

} // namespace

bool RowStore::isOwn(const PageRef& page) const noexcept {
    constexpr std::size_t kOwnerOffset = 4;
    return isDataPage(page) && load32(page.data() + kOwnerOffset) == raw(table_);
}

std::optional<PageNumber> RowStore::nextPage(PageNumber after) const {
    const UsageMap owned(*pager_, ownedMap_);
    const std::optional<PageNumber> page = owned.next(after);
    if (!page) {
        if (const std::optional<PageNumber> lost = owned.pastEnd()) {
            pager_->corrupt(*lost, 0, "rows should follow on this page, but the file was cut off before it");
        }
    }
    return page;
}

PageRef RowStore::ownPage(PageNumber page) const {
    PageRef ref = pager_->read(page);
    if (!isOwn(ref)) {
        pager_->corrupt(page, 0,
                        "this is no data page of the table with definition page " + std::to_string(raw(table_)));
    }
    return ref;
}

std::optional<RowStore::Record> RowStore::find(RowId id) const {
    // Pages of deleted rows may be anything by now.
    if (id.page == kNoPage || raw(id.page) >= pager_->pageCount()) {
        return std::nullopt;
    }
    PageRef page = pager_->read(id.page);
    if (!isOwn(page)) {
        return std::nullopt;
    }
    const DataPageView view(*pager_, page);
    if (id.slot >= view.slotCount()) {
        return std::nullopt;
    }
    const Slot slot = view.slot(id.slot);
    switch (slot.kind) {
    case SlotKind::Row:
        return Record{id, id, std::move(page), slot.bytes};
    case SlotKind::Pointer:
        return follow(id, slot.bytes);
    case SlotKind::Target:
    case SlotKind::Deleted:
        break;
    }
    return std::nullopt;
}

RowStore::Record RowStore::follow(RowId first, std::span<const std::byte> pointer) const {
    const auto fail = [&](const char* expected) {
        pager_->corrupt(first.page, 0, "row " + std::to_string(first.slot) + ": " + expected);
    };
    if (pointer.size() < kPointerBytes) {
        fail("the pointer to the moved record is shorter than 4 bytes");
    }
    const RowId place = RowId::unpack(load32(pointer.data()));
    if (place.page == kNoPage || raw(place.page) >= pager_->pageCount()) {
        fail("the pointer leads to no page of the file");
    }
    PageRef page = ownPage(place.page);
    const DataPageView view(*pager_, page);
    if (place.slot >= view.slotCount() || view.slot(place.slot).kind != SlotKind::Target) {
        fail("the pointer leads to no moved record");
    }
    return {first, place, std::move(page), view.slot(place.slot).bytes};
}

RowId RowStore::insert(std::span<const std::byte> row) {
    return place(SlotKind::Row, row);
}

RowId RowStore::insert(std::span<const std::byte> row, RowId wanted) {
    return placeAt(wanted, row) ? wanted : insert(row);
}

void RowStore::reclaimPage(PageNumber page) {
    allocator_->newDataPageAt(page, ownedMap_, freeMap_, raw(table_));
}

bool RowStore::placeAt(RowId wanted, std::span<const std::byte> row) {
    if (raw(wanted.page) <= 1 || raw(wanted.page) >= pager_->pageCount() || wanted.slot >= kMaxSlots ||
        !isOwn(pager_->read(wanted.page)) || !UsageMap(*pager_, ownedMap_).contains(wanted.page)) {
        return false;
    }
    DataPageEditor page(*pager_, pager_->edit(wanted.page));
    const std::size_t slots = page.slotCount();
    if (wanted.slot < slots) {
        return page.kind(wanted.slot) == SlotKind::Deleted && replaceAt(wanted, SlotKind::Row, row);
    }
    if (page.freeBytes() < row.size() + kSlotBytes * (wanted.slot + 1 - slots)) {
        return false;
    }
    while (page.slotCount() < wanted.slot) {
        page.add(SlotKind::Deleted, {});
    }
    page.add(SlotKind::Row, row);
    withdrawFull(page);
    return true;
}

RowId RowStore::place(SlotKind kind, std::span<const std::byte> row) {
    const std::optional<PageNumber> found = allocator_->pageWithRoom(freeMap_, raw(table_), row.size());
    DataPageEditor page(*pager_,
                        found ? pager_->edit(*found) : allocator_->newDataPage(ownedMap_, freeMap_, raw(table_)));
    const RowId placed{page.number(), page.add(kind, row)};
    withdrawFull(page);
    return placed;
}

void RowStore::replace(const Record& record, std::span<const std::byte> row) {
    if (replaceAt(record.place, record.moved() ? SlotKind::Target : SlotKind::Row, row)) {
        return;
    }
    // The page of the pointer may have got room since. If not, no page that has room is that page, so that pointer and
    // target never lie on the same one.
    if (!record.moved() || !replaceAt(record.first, SlotKind::Row, row)) {
        const RowId target = place(SlotKind::Target, row);
        std::array<std::byte, kPointerBytes> pointer;
        store32(pointer.data(), target.packed());
        if (!replaceAt(record.first, SlotKind::Pointer, pointer)) {
            // Rows of ours have 4 bytes at least; this is a shorter one on a page without a byte to spare.
            pager_->corrupt(record.first.page, 0,
                            "there is no room for a pointer to row " + std::to_string(record.first.slot));
        }
    }
    if (record.moved()) {
        eraseSlot(record.place);
    }
}

bool RowStore::replaceAt(RowId slot, SlotKind kind, std::span<const std::byte> row) {
    DataPageEditor page(*pager_, pager_->edit(slot.page));
    if (!page.replace(slot.slot, kind, row)) {
        return false;
    }
    offerSpace(page);
    withdrawFull(page);
    return true;
}

void RowStore::erase(const Record& record) {
    eraseSlot(record.first);
    if (record.moved()) {
        eraseSlot(record.place);
    }
}

/// A page on which nothing lives any more goes back to the file.
void RowStore::eraseSlot(RowId slot) {
    DataPageEditor page(*pager_, pager_->edit(slot.page));
    page.erase(slot.slot);
    if (!page.allDeleted()) {
        offerSpace(page);
        return;
    }
    UsageMap(*pager_, freeMap_).remove(slot.page);
    UsageMap(*pager_, ownedMap_).remove(slot.page);
    allocator_->release(slot.page);
}

void RowStore::offerSpace(const DataPageEditor& page) {
    if (page.freeBytes() >= kWorthOffering && page.slotCount() < kMaxSlots) {
        UsageMap(*pager_, freeMap_).add(page.number(), *allocator_);
    }
}

void RowStore::withdrawFull(const DataPageEditor& page) {
    if (page.freeBytes() < kSlotBytes) {
        UsageMap(*pager_, freeMap_).remove(page.number());
    }
}

} // namespace kelb::jet
