#include "jet/data_page.h"

#include "jet/byte_order.h"

#include <cassert>
#include <cstring>

namespace kelb::jet {

namespace {

constexpr std::byte kDataPage{0x01};
constexpr std::size_t kFreeOffset = 2;
constexpr std::size_t kOwnerOffset = 4;
constexpr std::size_t kStampOffset = 8;
constexpr std::size_t kCountOffset = 12;
constexpr std::size_t kSlotArray = 14;
constexpr std::size_t kJet3CountOffset = 8;
constexpr std::size_t kJet3SlotArray = 10;
constexpr std::uint16_t kStartMask = 0x1FFF; ///< 13 bits: an empty row at the very end starts at 4096
constexpr unsigned kKindShift = 14;          ///< bit 13 is never set

SlotKind kindOf(std::uint16_t slot) noexcept {
    constexpr SlotKind kKinds[] = {SlotKind::Row, SlotKind::Pointer, SlotKind::Target, SlotKind::Deleted};
    return kKinds[slot >> kKindShift];
}

std::uint16_t flagsOf(SlotKind kind) noexcept {
    return static_cast<std::uint16_t>(static_cast<unsigned>(kind) << kKindShift);
}

} // namespace

DataPageView::DataPageView(const Pager& pager, const PageRef& page) : page_(page.bytes()) {
    const bool jet3 = pager.pageSize() == kJet3PageSize;
    slotArray_ = jet3 ? kJet3SlotArray : kSlotArray;
    const std::size_t countOffset = jet3 ? kJet3CountOffset : kCountOffset;
    slots_ = load16(&page_[countOffset]);
    if (page_[0] != kDataPage)
        pager.corrupt(page.number(), 0, "data page expected, page type " + std::to_string(load8(&page_[0])) + " found");
    const std::size_t gap = slotArray_ + 2 * slots_;
    if (gap > page_.size())
        pager.corrupt(page.number(), countOffset, std::to_string(slots_) + " rows cannot be on one page");
    std::size_t end = page_.size();
    for (std::size_t at = slotArray_; at < gap; at += 2) {
        const std::size_t start = load16(&page_[at]) & kStartMask;
        if (start > end || start < gap)
            pager.corrupt(page.number(), at,
                          "row " + std::to_string((at - slotArray_) / 2) + " must start between " +
                              std::to_string(gap) + " and " + std::to_string(end) + " but starts at " +
                              std::to_string(start));
        end = start;
    }
}

std::uint32_t DataPageView::owner() const noexcept {
    return load32(&page_[kOwnerOffset]);
}

std::uint32_t DataPageView::chainStamp() const noexcept {
    return load32(&page_[kStampOffset]);
}

Slot DataPageView::slot(std::size_t index) const noexcept {
    assert(index < slots_);
    const std::byte* entry = &page_[slotArray_ + 2 * index];
    const std::uint16_t slot = load16(entry);
    const std::size_t start = slot & kStartMask;
    const std::size_t end = index == 0 ? page_.size() : load16(entry - 2) & kStartMask;
    return {kindOf(slot), page_.subspan(start, end - start)};
}

std::size_t DataPageView::freeBytes() const noexcept {
    const std::size_t gap = slotArray_ + 2 * slots_;
    const std::size_t lowest = slots_ == 0 ? page_.size() : load16(&page_[gap - 2]) & kStartMask;
    return lowest - gap;
}

DataPageEditor::DataPageEditor(const Pager& pager, PageEdit page) : page_(std::move(page)) {
    assert(pager.pageSize() == kPageSize);
    [[maybe_unused]] const DataPageView check(pager, page_);
}

void DataPageEditor::format(PageEdit& page, std::uint32_t owner) {
    store16(page.data(), 0x0101);
    store16(page.data() + kFreeOffset, kPageSize - kSlotArray);
    store32(page.data() + kOwnerOffset, owner);
}

std::size_t DataPageEditor::slotCount() const noexcept {
    return load16(page_.data() + kCountOffset);
}

/// Where a row starts; for slot number −1, which wraps round, the end of the page.
std::size_t DataPageEditor::start(std::size_t slot) const noexcept {
    return slot + 1 == 0 ? kPageSize : load16(page_.data() + kSlotArray + 2 * slot) & kStartMask;
}

void DataPageEditor::setSlot(std::size_t slot, SlotKind kind, std::size_t start) noexcept {
    store16(page_.data() + kSlotArray + 2 * slot, static_cast<std::uint16_t>(flagsOf(kind) | start));
}

SlotKind DataPageEditor::kind(std::size_t slot) const noexcept {
    return kindOf(load16(page_.data() + kSlotArray + 2 * slot));
}

std::size_t DataPageEditor::freeBytes() const noexcept {
    const std::size_t slots = slotCount();
    return start(slots - 1) - kSlotArray - 2 * slots;
}

void DataPageEditor::storeFreeBytes() noexcept {
    store16(page_.data() + kFreeOffset, static_cast<std::uint16_t>(freeBytes()));
}

bool DataPageEditor::hasRoom(std::size_t length) const noexcept {
    return slotCount() < kMaxSlots && freeBytes() >= length + 2;
}

std::uint8_t DataPageEditor::add(SlotKind kind, std::span<const std::byte> row) {
    assert(hasRoom(row.size()));
    const std::size_t slot = slotCount();
    const std::size_t at = start(slot - 1) - row.size();
    store16(page_.data() + kCountOffset, static_cast<std::uint16_t>(slot + 1));
    setSlot(slot, kind, at);
    if (!row.empty())
        std::memcpy(page_.data() + at, row.data(), row.size());
    storeFreeBytes();
    return static_cast<std::uint8_t>(slot);
}

bool DataPageEditor::replace(std::uint8_t slot, SlotKind kind, std::span<const std::byte> row) {
    assert(slot < slotCount());
    if (row.size() > freeBytes() + this->row(slot).size())
        return false;
    resize(slot, kind, row.size());
    if (!row.empty())
        std::memcpy(rowData(slot), row.data(), row.size());
    return true;
}

void DataPageEditor::erase(std::uint8_t slot) {
    assert(slot < slotCount());
    resize(slot, SlotKind::Deleted, 0);
}

/// Moves the rows below so that the slot has `length` bytes, whose content is then anything.
void DataPageEditor::resize(std::uint8_t slot, SlotKind kind, std::size_t length) noexcept {
    const std::size_t slots = slotCount();
    const std::size_t oldStart = start(slot);
    const std::size_t newStart = start(std::size_t{slot} - 1) - length;
    const std::size_t lowest = start(slots - 1);
    const std::size_t newLowest = lowest + newStart - oldStart;
    std::memmove(page_.data() + newLowest, page_.data() + lowest, oldStart - lowest);
    if (newLowest > lowest)
        std::memset(page_.data() + lowest, 0, newLowest - lowest);
    for (std::size_t i = slot + std::size_t{1}; i < slots; ++i)
        setSlot(i, this->kind(i), start(i) + newStart - oldStart);
    setSlot(slot, kind, newStart);
    storeFreeBytes();
}

bool DataPageEditor::allDeleted() const noexcept {
    const std::size_t slots = slotCount();
    for (std::size_t i = 0; i < slots; ++i)
        if (kind(i) != SlotKind::Deleted)
            return false;
    return true;
}

std::span<std::byte> DataPageEditor::row(std::uint8_t slot) noexcept {
    const std::size_t begin = start(slot);
    return page_.bytes().subspan(begin, start(std::size_t{slot} - 1) - begin);
}

void DataPageEditor::setChainStamp(std::uint32_t stamp) noexcept {
    store32(page_.data() + kStampOffset, stamp);
}

} // namespace kelb::jet
