#include "jet/long_value.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"

#include <algorithm>
#include <cassert>
#include <optional>

namespace kelb::jet {

namespace {

constexpr std::uint32_t kLengthMask = 0x3FFFFFFF;
constexpr std::uint32_t kInlineFlag = 0x80000000;
constexpr std::uint32_t kSingleFlag = 0x40000000;
constexpr std::size_t kPointerBytes = 4; ///< of the next row, in front of each part of a chain
constexpr std::size_t kChainPart = kMaxLvalRowBytes - kPointerBytes;

std::array<std::byte, kLongValueHeader> makeHeader(std::size_t length, std::uint32_t form, RowId first,
                                                   std::uint32_t stamp) {
    std::array<std::byte, kLongValueHeader> header{};
    store32(&header[0], static_cast<std::uint32_t>(length) | form);
    store32(&header[4], first.packed());
    store32(&header[8], stamp);
    return header;
}

/// The bytes of a long-value row; they live as long as `page`.
std::span<const std::byte> longValueRow(Pager& pager, RowId id, PageRef& page) {
    page = pager.read(id.page);
    const DataPageView view(pager, page);
    if (view.owner() != kLvalOwner)
        pager.corrupt(id.page, 4, "page of long values expected");
    if (id.slot >= view.slotCount() || view.slot(id.slot).kind != SlotKind::Row)
        pager.corrupt(id.page, 0, "a long value expected in row " + std::to_string(id.slot) + ", none found");
    return view.slot(id.slot).bytes;
}

/// Walks the rows of a chain. Ends with CorruptFile when it runs in a circle.
class Chain {
public:
    Chain(Pager& pager, RowId first) : pager_(pager), next_(first) {}
    bool atEnd() const noexcept { return next_.packed() == 0; }
    /// Data of the next row; valid until the call after. Requires !atEnd().
    std::span<const std::byte> next() {
        row_ = next_;
        const std::span<const std::byte> bytes = longValueRow(pager_, row_, page_);
        if (bytes.size() < kPointerBytes)
            pager_.corrupt(row_.page, 0, "part of a long value is shorter than its pointer");
        next_ = RowId::unpack(load32(bytes.data()));
        // Brent's cycle search: remember a row at every power of two of steps.
        if (next_ == remembered_)
            pager_.corrupt(row_.page, 0, "the parts of a long value run in a circle");
        if (++steps_ == 2 * rememberedAt_) {
            remembered_ = row_;
            rememberedAt_ = steps_;
        }
        return bytes.subspan(kPointerBytes);
    }
    RowId row() const noexcept { return row_; }

private:
    Pager& pager_;
    PageRef page_;
    RowId row_, next_;
    RowId remembered_{PageNumber{0xFFFFFFFF}, 0};
    std::size_t steps_ = 0, rememberedAt_ = 1;
};

void readChain(Pager& pager, const LongValueHeader& header, std::span<std::byte> out) {
    Chain chain(pager, header.first);
    while (!out.empty()) {
        if (chain.atEnd())
            pager.corrupt(chain.row().page, 0,
                          "the parts of a long value end " + std::to_string(out.size()) + " bytes before its length");
        const std::span<const std::byte> part = chain.next();
        const std::size_t take = std::min(part.size(), out.size());
        std::copy_n(part.begin(), take, out.begin());
        out = out.subspan(take);
    }
}

/// Length of a value, checked against what its field or the file can hold, before anybody makes room for it.
std::size_t checkedLength(Pager& pager, std::span<const std::byte> field) {
    if (field.size() < kLongValueHeader)
        pager.corrupt(kNoPage, 0, "a long value needs a field of 12 bytes, " + std::to_string(field.size()) + " found");
    const LongValueHeader header = LongValueHeader::parse(field);
    if (header.form == LongValueHeader::Form::Inline && header.length > field.size() - kLongValueHeader)
        pager.corrupt(kNoPage, 0,
                      "a long value of " + std::to_string(header.length) + " bytes in a field that holds " +
                          std::to_string(field.size() - kLongValueHeader));
    if (header.form != LongValueHeader::Form::Inline &&
        header.length > std::uint64_t{pager.pageCount()} * pager.pageSize())
        pager.corrupt(header.first.page, 0,
                      "a long value of " + std::to_string(header.length) + " bytes is longer than the file");
    return header.length;
}

std::uint8_t addReusingSlots(DataPageEditor& page, std::span<const std::byte> bytes) {
    for (std::size_t i = 0; i < page.slotCount(); ++i) {
        const auto slot = static_cast<std::uint8_t>(i);
        if (page.kind(i) == SlotKind::Deleted && page.replace(slot, SlotKind::Row, bytes))
            return slot;
    }
    return page.add(SlotKind::Row, bytes);
}

std::array<std::byte, kLongValueHeader> writeSingle(Pager& pager, PageAllocator& allocator, const LongValueMaps& maps,
                                                    std::span<const std::byte> bytes) {
    std::optional<PageNumber> found;
    if (maps.free.page != kNoPage)
        found = allocator.pageWithRoom(maps.free, kLvalOwner, bytes.size());
    DataPageEditor page(pager, found ? pager.edit(*found) : allocator.newDataPage(maps.owned, maps.free, kLvalOwner));
    const RowId row{page.number(), addReusingSlots(page, bytes)};
    return makeHeader(bytes.size(), kSingleFlag, row, 0);
}

/// Pages of a chain hold one row each and are never in the free-space map.
std::array<std::byte, kLongValueHeader> writeChain(Pager& pager, PageAllocator& allocator, const LongValueMaps& maps,
                                                   std::span<const std::byte> bytes) {
    constexpr RowId kNoMap{};
    const std::size_t parts = (bytes.size() + kChainPart - 1) / kChainPart;
    std::vector<PageNumber> pages(parts);
    for (PageNumber& page : pages)
        page = allocator.newDataPage(maps.owned, kNoMap, kLvalOwner).number();

    const std::uint32_t stamp = raw(pages.front()); // any number that other chains do not have
    std::vector<std::byte> row;
    for (std::size_t i = 0; i < parts; ++i) {
        const auto part = bytes.subspan(i * kChainPart, std::min(kChainPart, bytes.size() - i * kChainPart));
        row.resize(kPointerBytes);
        store32(row.data(), i + 1 < parts ? RowId{pages[i + 1], 0}.packed() : 0);
        row.insert(row.end(), part.begin(), part.end());
        DataPageEditor page(pager, pager.edit(pages[i]));
        page.add(SlotKind::Row, row);
        if (i == 0)
            page.setChainStamp(stamp);
    }
    return makeHeader(bytes.size(), 0, {pages.front(), 0}, stamp);
}

void requireOwned(Pager& pager, const LongValueMaps& maps, PageNumber page) {
    if (!UsageMap(pager, maps.owned).contains(page))
        pager.corrupt(page, 4, "a row refers to a long value on this page, which is not one of its column's");
}

void releasePage(Pager& pager, PageAllocator& allocator, const LongValueMaps& maps, PageNumber page) {
    UsageMap(pager, maps.owned).remove(page);
    if (maps.free.page != kNoPage)
        UsageMap(pager, maps.free).remove(page);
    allocator.release(page);
}

void freeSingle(Pager& pager, PageAllocator& allocator, const LongValueMaps& maps, RowId row) {
    requireOwned(pager, maps, row.page);
    PageRef pin;
    longValueRow(pager, row, pin); // that there is one
    DataPageEditor page(pager, pager.edit(row.page));
    page.erase(row.slot);
    if (page.allDeleted())
        releasePage(pager, allocator, maps, row.page);
    else if (maps.free.page != kNoPage)
        UsageMap(pager, maps.free).add(row.page, allocator);
}

} // namespace

LongValueHeader LongValueHeader::parse(std::span<const std::byte> field) noexcept {
    const std::uint32_t word = load32(field.data());
    LongValueHeader header;
    header.form = (word & kInlineFlag) != 0 ? Form::Inline : (word & kSingleFlag) != 0 ? Form::Single : Form::Chain;
    header.length = word & kLengthMask;
    header.first = RowId::unpack(load32(&field[4]));
    header.stamp = load32(&field[8]);
    return header;
}

void readLongValue(Pager& pager, std::span<const std::byte> field, std::vector<std::byte>& out) {
    const std::size_t at = out.size();
    out.resize(at + checkedLength(pager, field));
    readLongValue(pager, field, std::span(out).subspan(at));
}

void readLongValue(Pager& pager, std::span<const std::byte> field, std::span<std::byte> out) {
    [[maybe_unused]] const std::size_t length = checkedLength(pager, field);
    assert(out.size() == length);
    const LongValueHeader header = LongValueHeader::parse(field);
    if (header.form == LongValueHeader::Form::Chain) {
        readChain(pager, header, out);
        return;
    }
    PageRef page;
    std::span<const std::byte> stored = field.subspan(kLongValueHeader);
    if (header.form == LongValueHeader::Form::Single)
        stored = longValueRow(pager, header.first, page);
    if (stored.size() < out.size())
        pager.corrupt(header.first.page, 0,
                      "a long value of " + std::to_string(header.length) + " bytes in a row of " +
                          std::to_string(stored.size()));
    std::copy_n(stored.begin(), out.size(), out.begin());
}

AvailableValue readAvailableValue(Pager& pager, std::span<const std::byte> field) {
    AvailableValue value;
    try {
        const std::size_t length = checkedLength(pager, field);
        const LongValueHeader header = LongValueHeader::parse(field);
        if (header.form != LongValueHeader::Form::Chain) {
            readLongValue(pager, field, value.bytes);
            return value;
        }
        for (Chain chain(pager, header.first); value.bytes.size() < length;) {
            if (chain.atEnd())
                pager.corrupt(chain.row().page, 0,
                              "the parts of a long value end " + std::to_string(length - value.bytes.size()) +
                                  " bytes before its length");
            const std::span<const std::byte> part = chain.next();
            const std::size_t take = std::min(part.size(), length - value.bytes.size());
            value.bytes.insert(value.bytes.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(take));
        }
    } catch (const CorruptFile& damage) {
        value.fault = damage.expected();
        value.page = damage.page();
        if (value.bytes.empty() && field.size() >= kLongValueHeader &&
            LongValueHeader::parse(field).form == LongValueHeader::Form::Inline)
            value.bytes.assign(field.begin() + kLongValueHeader,
                               field.end()); // its length is wrong, its bytes are there
    } catch (const platform::FileError& failure) {
        value.fault = failure.what();
    }
    return value;
}

std::array<std::byte, kLongValueHeader> writeLongValue(Pager& pager, PageAllocator& allocator,
                                                       const LongValueMaps& maps, std::span<const std::byte> bytes) {
    assert(!bytes.empty());
    if (bytes.size() > kMaxLongValue)
        throw Error(Error::Kind::RecordTooLarge, "a field value of " + std::to_string(bytes.size()) +
                                                     " bytes is too long: at most " + std::to_string(kMaxLongValue) +
                                                     " fit");
    return bytes.size() <= kMaxLvalRowBytes ? writeSingle(pager, allocator, maps, bytes)
                                            : writeChain(pager, allocator, maps, bytes);
}

void freeLongValue(Pager& pager, PageAllocator& allocator, const LongValueMaps& maps,
                   std::span<const std::byte> field) {
    if (field.size() < kLongValueHeader)
        pager.corrupt(kNoPage, 0, "a long value needs a field of 12 bytes, " + std::to_string(field.size()) + " found");
    const LongValueHeader header = LongValueHeader::parse(field);
    if (header.form == LongValueHeader::Form::Single)
        freeSingle(pager, allocator, maps, header.first);
    if (header.form != LongValueHeader::Form::Chain)
        return;
    Chain chain(pager, header.first);
    while (!chain.atEnd()) {
        chain.next();
        requireOwned(pager, maps, chain.row().page); // also ends a circle: released pages are owned no more
        releasePage(pager, allocator, maps, chain.row().page);
    }
}

} // namespace kelb::jet
