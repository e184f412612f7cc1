#include "jet/salvage_rows.h"

#include "jet/byte_order.h"
#include "jet/record_check.h"
#include "jet/text_codec.h"

#include <algorithm>
#include <iterator>

namespace kelb::jet {
namespace {

constexpr std::size_t kPointerBytes = 4;

std::string pages(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " page" : " pages");
}

} // namespace

TableSalvage::TableSalvage(Pager& pager, const TableDefinition& table, const PageSurvey& survey, Sinks sinks)
    : pager_(pager), table_(table), survey_(survey), sinks_(std::move(sinks)) {}

bool TableSalvage::isOwn(const PageRef& page) const noexcept {
    return load16(page.data()) == 0x0101 && load32(page.data() + 4) == raw(table_.page);
}

void TableSalvage::loseRow(RowId row, const std::string& reason) {
    damaged_ = true;
    sinks_.lost({Loss::Kind::Row, table_.name, row.page, row.slot, u"", reason});
}

/// A page of the file that is in order and somebody else's.
bool TableSalvage::isOthers(PageNumber number) {
    if (raw(number) >= pager_.pageCount())
        return false;
    try {
        const PageRef page = pager_.read(number);
        const std::uint16_t type = load16(page.data());
        return !isOwn(page) && type > 0x0100 && type <= 0x0105;
    } catch (const platform::FileError&) { // told as a page that the disk does not give
        return false;
    }
}

/// Rows that a reader would see on these pages.
std::size_t TableSalvage::countRows(std::span<const PageNumber> pages) {
    std::size_t rows = 0;
    for (const PageNumber number : pages) {
        const PageRef page = pager_.read(number);
        for (const SalvagedSlot& slot : salvageSlots(page, table_))
            rows += slot.fault.empty() && (slot.kind == SlotKind::Row || slot.kind == SlotKind::Pointer) ? 1U : 0U;
    }
    return rows;
}

/// The pages of the table's map. Pages that name the table as theirs without being in the map are taken as well when
/// the map cannot be read, or when the table counts more rows than the map leads to: else they are left over from rows
/// that were deleted.
std::vector<PageNumber> TableSalvage::choosePages() {
    bool readable = false;
    const std::vector<PageNumber> members = availableMembers(pager_, table_.ownedMap, readable);
    const std::span<const PageNumber> own = survey_.pagesOf(raw(table_.page));
    std::vector<PageNumber> chosen, others, inUse, missing;
    std::ranges::set_intersection(own, members, std::back_inserter(chosen));
    std::ranges::set_difference(own, members, std::back_inserter(others));
    std::ranges::set_difference(members, own, std::back_inserter(missing));
    // A map that leads to pages of others more often than to its own is none any more.
    if (missing.size() > chosen.size() &&
        std::ranges::any_of(missing, [&](PageNumber page) { return isOthers(page); })) {
        readable = false;
        missing.clear();
    }
    std::ranges::copy_if(others, std::back_inserter(inUse), [&](PageNumber page) { return !survey_.isFree(page); });

    if (!readable)
        sinks_.told("its map of pages cannot be read; its pages were found by looking at every page of the file");
    const auto takeToo = [&](const std::vector<PageNumber>& more, const char* which) {
        std::vector<PageNumber> both;
        std::ranges::set_union(chosen, more, std::back_inserter(both));
        if (both.size() == chosen.size())
            return;
        if (readable)
            sinks_.told(pages(both.size() - chosen.size()) + which + " read too: it should have " +
                        std::to_string(table_.rowCount) + " rows");
        chosen = std::move(both);
    };
    if (!inUse.empty() && (!readable || countRows(chosen) < table_.rowCount))
        takeToo(inUse, " that its map does not name were");
    // Free pages hold deleted rows, unless rows are missing for which nothing else accounts.
    if (missing.empty() && others.size() > inUse.size() && countRows(chosen) < table_.rowCount)
        takeToo(others, " that are called free were");
    for (const PageNumber page : missing) {
        damaged_ = true;
        const bool past = raw(page) >= pager_.pageCount();
        sinks_.lost({Loss::Kind::Page, table_.name, page, -1, u"",
                     past ? "the file ends before this page" : "the page holds no rows of the table any more"});
    }
    return chosen;
}

void TableSalvage::readRows(const Take& take) {
    const std::vector<PageNumber> pages = choosePages();
    for (const PageNumber page : pages)
        readPage(page, take);
    // Other programs leave such records of deleted rows behind; only where pointers are lost are they rows.
    if (damaged_)
        readOrphans(pages, take);
}

void TableSalvage::readPage(PageNumber number, const Take& take) {
    const PageRef page = pager_.read(number);
    for (const SalvagedSlot& slot : salvageSlots(page, table_)) {
        const RowId row{number, slot.slot};
        if (!slot.fault.empty())
            loseRow(row, slot.fault);
        else if (slot.kind == SlotKind::Row)
            takeRecord(row, page, slot.bytes, take);
        else if (slot.kind == SlotKind::Pointer)
            readMoved(row, slot.bytes, take);
    }
}

void TableSalvage::readMoved(RowId row, std::span<const std::byte> pointer, const Take& take) {
    if (pointer.size() < kPointerBytes)
        return loseRow(row, "it moved, and the pointer to its new place is too short");
    const RowId target = RowId::unpack(load32(pointer.data()));
    const std::string where =
        "it moved to page " + std::to_string(raw(target.page)) + " slot " + std::to_string(target.slot);
    try {
        if (target.page == kNoPage || raw(target.page) >= pager_.pageCount())
            return loseRow(row, where + ", which is not in the file");
        const PageRef page = pager_.read(target.page);
        const std::vector<SalvagedSlot> slots = isOwn(page) ? salvageSlots(page, table_) : std::vector<SalvagedSlot>{};
        const bool there = target.slot < slots.size() && slots[target.slot].fault.empty() &&
                           slots[target.slot].kind == SlotKind::Target;
        if (!there)
            return loseRow(row, where + ", where no moved record is");
        if (!pointedTo_.insert(target).second)
            return loseRow(row, where + ", as another row did");
        takeRecord(row, page, slots[target.slot].bytes, take);
    } catch (const platform::FileError& failure) {
        loseRow(row, where + ": " + failure.what());
    }
}

void TableSalvage::readOrphans(std::span<const PageNumber> pages, const Take& take) {
    std::size_t found = 0;
    for (const PageNumber number : pages) {
        const PageRef page = pager_.read(number);
        for (const SalvagedSlot& slot : salvageSlots(page, table_)) {
            const RowId row{number, slot.slot};
            if (!slot.fault.empty() || slot.kind != SlotKind::Target || pointedTo_.contains(row))
                continue;
            ++found;
            takeRecord(row, page, slot.bytes, take);
        }
    }
    if (found != 0)
        sinks_.told(std::to_string(found) + " moved records were read that no pointer leads to any more");
}

void TableSalvage::takeRecord(RowId row, const PageRef& page, std::span<const std::byte> bytes, const Take& take) {
    if (const auto fault = recordFault(table_, bytes))
        return loseRow(row, *fault);
    try {
        const RowView record(bytes, table_,
                             {pager_.path(), page.number(), static_cast<std::size_t>(bytes.data() - page.data())});
        take(row, record);
        ++rowsRead_;
    } catch (const CorruptFile& damage) {
        loseRow(row, std::string(damage.expected()));
    }
}

AvailableValue salvageLongValue(Pager& pager, const TableDefinition& table, const Column& column,
                                std::span<const std::byte> field) {
    AvailableValue value = readAvailableValue(pager, field);
    if (column.type != ColumnType::Memo || table.dialect == Dialect::Jet3 || column.isCalculated())
        return value;
    if (textUnits(value.bytes) && (value.fault.empty() || value.bytes.size() % 2 == 0))
        return value;
    const std::size_t before = value.bytes.size();
    std::u16string text;
    decodeText(value.bytes, text);
    value.bytes.clear();
    appendRawText(value.bytes, text);
    if (value.fault.empty())
        value.fault = "its " + std::to_string(before) + " bytes are no text";
    return value;
}

SalvagedField salvageField(const TableDefinition& table, const Column& column, std::span<const std::byte> stored) {
    const std::optional<std::string> fault = fieldFault(table, column, stored);
    if (!fault)
        return {{stored.begin(), stored.end()}, true, ""};
    if (column.type != ColumnType::Text || table.dialect == Dialect::Jet3)
        return {{}, false, *fault};
    std::u16string text;
    decodeText(stored, text);
    text.resize(std::min<std::size_t>(text.size(), column.length / 2U));
    SalvagedField field{{}, true, *fault};
    appendRawText(field.bytes, text);
    return field;
}

} // namespace kelb::jet
