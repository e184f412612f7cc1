#include "jet/salvage_pages.h"

#include "jet/byte_order.h"
#include "jet/map_row.h"
#include "jet/record_check.h"
#include "jet/table_definition_layout.h"
#include "jet/usage_map.h"

#include <algorithm>
#include <optional>

namespace kelb::jet {
namespace {

constexpr std::uint16_t kStartMask = 0x1FFF;
constexpr unsigned kKindShift = 14;
constexpr PageNumber kFirstTablePage{2}, kLastSystemTable{5};

bool beginsDefinition(std::span<const std::byte> page, Dialect dialect) {
    if (load16(page.data()) != kDefinitionPageType)
        return false;
    constexpr std::size_t kJet3TableTypeOffset = 20;
    const bool jet3 = dialect == Dialect::Jet3;
    const std::uint8_t type = load8(&page[jet3 ? kJet3TableTypeOffset : kTableTypeOffset]);
    return (jet3 || load32(&page[kDefinitionMarkOffset]) == kDefinitionMark) &&
           (type == kUserTable || type == kSystemTable);
}

/// Which pages are free; nothing when the map contradicts what is certain: the system tables' definitions are in use.
std::vector<bool> readFreePages(Pager& pager) {
    std::vector<bool> free(pager.pageCount());
    bool readable = false;
    for (const PageNumber page : availableMembers(pager, kGlobalMap, readable))
        if (raw(page) < free.size())
            free[raw(page)] = true;
    if (!readable)
        return {};
    // Another writer moves the window of an inline map on: behind it every page is free.
    const MapRow map(pager, kGlobalMap);
    if (!map.byReference())
        for (std::size_t page = map.firstPage() + 8 * map.window().size(); page < free.size(); ++page)
            free[page] = true;
    const std::size_t certain = std::min<std::size_t>(raw(kLastSystemTable) + 1, free.size());
    const auto end = free.begin() + static_cast<std::ptrdiff_t>(certain);
    return std::find(free.begin(), end, true) == end ? free : std::vector<bool>{};
}

/// Where the slots of a page lie.
struct SlotArray {
    std::size_t begin, count;
    std::span<const std::byte> page;

    std::size_t gap() const noexcept { return begin + 2 * count; }
    std::uint16_t entry(std::size_t slot) const noexcept { return load16(&page[begin + 2 * slot]); }
    std::size_t start(std::size_t slot) const noexcept { return entry(slot) & kStartMask; }
};

/// A count that no page can have is replaced by that of the slots which are in order.
SlotArray findSlots(std::span<const std::byte> page, Dialect dialect) {
    const bool jet3 = dialect == Dialect::Jet3;
    SlotArray slots{jet3 ? 10U : 14U, load16(&page[jet3 ? 8 : 12]), page};
    if (slots.count <= kMaxSlots && slots.gap() <= page.size())
        return slots;
    slots.count = 0;
    for (std::size_t end = page.size(); slots.count < kMaxSlots; ++slots.count) {
        const std::size_t start = slots.start(slots.count);
        if (start > end || start < slots.gap() + 2)
            break;
        end = start;
    }
    return slots;
}

/// The slots of the longest run of starts that never ascend: one wrong start does not make those behind it wrong.
std::vector<bool> slotsInOrder(const SlotArray& slots) {
    std::size_t sound = 0;
    for (std::size_t end = slots.page.size(); sound < slots.count; end = slots.start(sound++))
        if (slots.start(sound) > end || slots.start(sound) < slots.gap())
            break;
    if (sound == slots.count) // nearly every page
        return std::vector<bool>(slots.count, true);

    std::vector<std::size_t> length(slots.count, 0), before(slots.count, slots.count);
    std::size_t best = slots.count;
    for (std::size_t i = 0; i < slots.count; ++i) {
        if (slots.start(i) < slots.gap() || slots.start(i) > slots.page.size())
            continue;
        length[i] = 1;
        for (std::size_t j = 0; j < i; ++j)
            if (length[j] >= length[i] && slots.start(j) >= slots.start(i)) {
                length[i] = length[j] + 1;
                before[i] = j;
            }
        if (best == slots.count || length[i] > length[best])
            best = i;
    }
    std::vector<bool> good(slots.count, false);
    for (std::size_t i = best; i < slots.count; i = before[i])
        good[i] = true;
    return good;
}

/// Whether the end of a record says where it begins: no byte is too many.
bool isTight(const TableDefinition& table, std::span<const std::byte> record) {
    const std::size_t mask = (load16(record.data()) + std::size_t{7}) / 8;
    if (table.varColumns == 0)
        return record.size() == std::max<std::size_t>(2 + table.fixedBytes() + mask, 4);
    const std::size_t end = record.size() - mask;
    const std::size_t tail = 4 + 2 * std::size_t{load16(&record[end - 2])};
    // A record from before the first variable column has no such part: what lies there may be anything.
    return tail <= end && load16(&record[end - tail]) == end - tail;
}

bool isSound(const TableDefinition& table, std::span<const std::byte> record) {
    return record.size() >= 4 && load16(record.data()) != 0 && !recordFault(table, record) && isTight(table, record);
}

/// Length of the record that ends with `bytes`, told by its end. Records of Access 97 do not tell it.
std::optional<std::size_t> lengthOfLast(const TableDefinition& table, std::span<const std::byte> bytes) {
    if (table.dialect == Dialect::Jet3)
        return std::nullopt;
    for (std::size_t mask = (table.maxColumns + std::size_t{7}) / 8; mask > 0; --mask) {
        std::size_t length = std::max<std::size_t>(2 + table.fixedBytes() + mask, 4);
        if (table.varColumns != 0) {
            if (bytes.size() < mask + 2)
                continue;
            const std::size_t tail = mask + 4 + 2 * std::size_t{load16(&bytes[bytes.size() - mask - 2])};
            if (bytes.size() < tail)
                continue;
            length = load16(&bytes[bytes.size() - tail]) + tail;
        }
        if (length <= bytes.size() && isSound(table, bytes.last(length)) &&
            (load16(&bytes[bytes.size() - length]) + std::size_t{7}) / 8 == mask)
            return length;
    }
    return std::nullopt;
}

/// Puts the slots between good ones right again, where the ends of the records tell their places.
class SlotRepair {
public:
    SlotRepair(const SlotArray& slots, const TableDefinition& table)
        : slots_(slots), table_(table), found_(slots.count) {}

    std::vector<SalvagedSlot> run() {
        const std::vector<bool> good = slotsInOrder(slots_);
        std::size_t end = slots_.page.size(); // of the slot at hand
        for (std::size_t slot = 0; slot < slots_.count;) {
            std::size_t next = slot; // the first good one from here on
            while (next < slots_.count && !good[next])
                ++next;
            end = findLost(slot, next, end);
            if (next == slots_.count)
                break;
            found_[next] = at(next, slots_.start(next), end);
            if (end == kUnknown) {
                found_[next].bytes = slots_.page.subspan(slots_.start(next));
                if (found_[next].kind == SlotKind::Row || found_[next].kind == SlotKind::Target)
                    found_[next].fault = "its end in the page is not known";
            }
            end = slots_.start(next);
            slot = next + 1;
        }
        return std::move(found_);
    }

private:
    static constexpr std::size_t kUnknown = std::size_t{0} - 1;

    SalvagedSlot at(std::size_t slot, std::size_t start, std::size_t end) const {
        const std::size_t length = end == kUnknown ? 0 : end - start;
        return {static_cast<std::uint8_t>(slot), static_cast<SlotKind>(slots_.entry(slot) >> kKindShift),
                slots_.page.subspan(start, length), ""};
    }

    /// The slots from `slot` to before `next` have no place, their records end at `end`, one below the other. Result:
    /// the end of `next`.
    std::size_t findLost(std::size_t slot, std::size_t next, std::size_t end) {
        const std::size_t low = next < slots_.count ? slots_.start(next) : slots_.gap();
        for (; slot < next; ++slot) {
            const auto length = lengthOfLast(table_, slots_.page.subspan(low, end - low));
            if (!length)
                break;
            if (next < slots_.count && end - *length == low) { // the record of `next`: these had no bytes
                for (; slot < next; ++slot)
                    found_[slot] = {static_cast<std::uint8_t>(slot), SlotKind::Deleted, {}, ""};
                return end;
            }
            found_[slot] = {static_cast<std::uint8_t>(slot), SlotKind::Row, slots_.page.subspan(end - *length, *length),
                            ""};
            end -= *length;
        }
        if (slot == next)
            return end;
        for (; slot < next; ++slot)
            found_[slot] = {static_cast<std::uint8_t>(slot), SlotKind::Row, {}, "its place in the page is not known"};
        return kUnknown;
    }

    const SlotArray slots_;
    const TableDefinition& table_;
    std::vector<SalvagedSlot> found_;
};

} // namespace

std::span<const PageNumber> PageSurvey::pagesOf(std::uint32_t owner) const noexcept {
    const auto found = rows.find(owner);
    return found == rows.end() ? std::span<const PageNumber>{} : std::span(found->second);
}

PageSurvey surveyPages(Pager& pager, Dialect dialect) {
    PageSurvey survey;
    for (std::uint32_t number = raw(kFirstTablePage); number < pager.pageCount(); ++number) {
        try {
            const PageRef page = pager.read(PageNumber{number});
            if (beginsDefinition(page.bytes(), dialect))
                survey.definitions.push_back(page.number());
            const std::uint32_t owner = load32(page.data() + 4);
            if (load16(page.data()) == 0x0101 && owner > 1 && owner < pager.pageCount())
                survey.rows[owner].push_back(page.number());
        } catch (const platform::FileError& failure) {
            survey.unreadable.push_back({PageNumber{number}, failure.what()});
        } catch (const CorruptFile& damage) { // shorter than it was
            survey.unreadable.push_back({PageNumber{number}, damage.what()});
        }
    }
    survey.free = readFreePages(pager);
    return survey;
}

std::vector<SalvagedSlot> salvageSlots(const PageRef& page, const TableDefinition& table) {
    const SlotArray slots = findSlots(page.bytes(), table.dialect);
    return SlotRepair(slots, table).run();
}

std::vector<PageNumber> availableMembers(Pager& pager, RowId map, bool& readable) {
    std::vector<PageNumber> members;
    const auto add = [&](std::span<const std::byte> bits, std::uint64_t first) {
        for (auto bit = findBit(bits, 0); bit; bit = findBit(bits, *bit + 1))
            if (first + *bit < kMaxPages)
                members.push_back(PageNumber{static_cast<std::uint32_t>(first + *bit)});
    };
    readable = false;
    try {
        const MapRow row(pager, map);
        readable = true;
        if (!row.byReference()) {
            add(row.window(), row.firstPage());
            return members;
        }
        for (std::size_t word = 0; word < row.words(); ++word)
            if (const auto bitmap = row.bitmapPage(pager, word))
                add(readBitmap(pager, *bitmap).bits(), std::uint64_t{word} * bitsPerBitmapPage(pager));
    } catch (const Error&) {
        readable = false;
    } catch (const platform::FileError&) {
        readable = false;
    }
    return members;
}

} // namespace kelb::jet
