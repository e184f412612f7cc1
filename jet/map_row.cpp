#include "jet/map_row.h"

#include "jet/byte_order.h"

#include <algorithm>
#include <bit>

namespace kelb::jet {

bool testBit(std::span<const std::byte> bits, std::size_t bit) noexcept {
    return (load8(&bits[bit / 8]) >> bit % 8 & 1) != 0;
}

void setBit(std::span<std::byte> bits, std::size_t bit, bool value) noexcept {
    const auto mask = static_cast<std::byte>(1U << bit % 8);
    std::byte& at = bits[bit / 8];
    at = value ? at | mask : at & ~mask;
}

std::optional<std::size_t> findBit(std::span<const std::byte> bits, std::size_t from) noexcept {
    std::size_t at = from / 8;
    if (at >= bits.size())
        return std::nullopt;
    if (const unsigned rest = unsigned{load8(&bits[at])} >> from % 8; rest != 0)
        return from + static_cast<std::size_t>(std::countr_zero(rest));
    for (++at; at < bits.size() && at % 8 != 0; ++at)
        if (bits[at] != std::byte{0})
            return 8 * at + static_cast<std::size_t>(std::countr_zero(unsigned{load8(&bits[at])}));
    for (; at + 8 <= bits.size(); at += 8)
        if (const std::uint64_t word = load64(&bits[at]); word != 0)
            return 8 * at + static_cast<std::size_t>(std::countr_zero(word));
    for (; at < bits.size(); ++at)
        if (bits[at] != std::byte{0})
            return 8 * at + static_cast<std::size_t>(std::countr_zero(unsigned{load8(&bits[at])}));
    return std::nullopt;
}

std::optional<std::size_t> findBitBefore(std::span<const std::byte> bits, std::size_t end) noexcept {
    end = std::min(end, 8 * bits.size());
    if (end % 8 != 0) {
        const unsigned rest = load8(&bits[end / 8]) & ((1U << end % 8) - 1);
        if (rest != 0)
            return end / 8 * 8 + static_cast<std::size_t>(std::bit_width(rest)) - 1;
    }
    for (std::size_t at = end / 8; at > 0;) {
        if (at % 8 == 0 && load64(&bits[at - 8]) == 0) {
            at -= 8;
        } else if (const unsigned value = load8(&bits[--at]); value != 0) {
            return 8 * at + static_cast<std::size_t>(std::bit_width(value)) - 1;
        }
    }
    return std::nullopt;
}

std::size_t bitsPerBitmapPage(const Pager& pager) noexcept {
    return 8 * (pager.pageSize() - kBitmapOffset);
}

namespace {

/// Checks the row of a map and gives its place in the page.
std::pair<std::size_t, std::size_t> checkedRow(Pager& pager, RowId row, const PageRef& page) {
    const DataPageView view(pager, page);
    if (row.slot >= view.slotCount() || view.slot(row.slot).kind != SlotKind::Row)
        pager.corrupt(row.page, 0, "usage map expected in row " + std::to_string(row.slot) + ", none found");
    const std::span<const std::byte> bytes = view.slot(row.slot).bytes;
    const bool sound = bytes.size() > kWindowOffset &&
                       (bytes[0] == std::byte{1} ||
                        (bytes[0] == std::byte{0} && load32(&bytes[1]) <= kMaxPages && load32(&bytes[1]) % 8 == 0));
    if (!sound)
        pager.corrupt(row.page, static_cast<std::size_t>(bytes.data() - page.data()),
                      "usage map expected, other bytes found");
    return {static_cast<std::size_t>(bytes.data() - page.data()), bytes.size()};
}

void requireBitmap(const Pager& pager, const PageRef& page) {
    if (load16(page.data()) != kBitmapPageType)
        pager.corrupt(page.number(), 0,
                      "bitmap page of a usage map expected, page type " + std::to_string(load8(page.data())) +
                          " found");
}

} // namespace

MapRow::MapRow(Pager& pager, RowId row) : page_(pager.read(row.page)) {
    const auto [offset, length] = checkedRow(pager, row, page_);
    bytes_ = page_.bytes().subspan(offset, length);
}

std::uint32_t MapRow::firstPage() const noexcept {
    return load32(&bytes_[1]);
}

bool MapRow::covers(std::uint32_t page) const noexcept {
    return page >= firstPage() && page - firstPage() < 8 * window().size();
}

std::optional<PageNumber> MapRow::bitmapPage(const Pager& pager, std::size_t word) const noexcept {
    if (word >= words())
        return std::nullopt;
    const std::uint32_t page = load32(&bytes_[1 + 4 * word]);
    if (page == 0 || page >= pager.pageCount())
        return std::nullopt;
    return PageNumber{page};
}

MapRowEdit::MapRowEdit(Pager& pager, RowId row) : page_(pager.edit(row.page)) {
    const auto [offset, length] = checkedRow(pager, row, page_);
    bytes_ = page_.bytes().subspan(offset, length);
}

BitmapRef readBitmap(Pager& pager, PageNumber page) {
    BitmapRef bitmap{pager.read(page)};
    requireBitmap(pager, bitmap.page);
    return bitmap;
}

BitmapEdit editBitmap(Pager& pager, PageNumber page) {
    BitmapEdit bitmap{pager.edit(page)};
    requireBitmap(pager, bitmap.page);
    return bitmap;
}

} // namespace kelb::jet
