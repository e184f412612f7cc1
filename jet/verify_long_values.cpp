#include "jet/verify_table.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"

#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jet {
namespace {

constexpr std::size_t kPointerBytes = 4;

} // namespace

LongValueCheck::LongValueCheck(Verification& verification, const TableDefinition& table)
    : v_(verification), table_(table) {}

void LongValueCheck::claimPages() {
    for (const ColumnMaps& maps : table_.longValueMaps) {
        const Column* const column = table_.columnByNumber(maps.column);
        if (column == nullptr) // of a column that was dropped
            continue;
        const std::string name = tableLabel(table_) + ", long values of \"" + platform::toUtf8(column->name) + "\"";
        PageGroup group = v_.claimGroup(readUsageMap(v_, maps.owned, name + ", owned pages"), name);
        const ColumnPages& pages = columns_.emplace_back(v_, maps.column, name, std::move(group));
        if (maps.free.page != kNoPage)
            checkFreeMap(pages, maps.free);
    }
}

void LongValueCheck::examine(ColumnPages& column, const PageRef& page) {
    const PageNumber number = page.number();
    if (column.examined[v_.ordinal(number)])
        return;
    column.examined[v_.ordinal(number)] = true;
    if (!checkDataPage(v_, page, kLvalOwner, column.name))
        return;
    const DataPageView view(v_.pager, page);
    for (std::size_t slot = 0; slot < view.slotCount(); ++slot) {
        const RowId row{number, static_cast<std::uint8_t>(slot)};
        const SlotKind kind = view.slot(slot).kind;
        if (kind == SlotKind::Row)
            column.unused.add(row);
        else if (kind != SlotKind::Deleted)
            v_.error(row, column.name + ": a long value should never move, this slot is a pointer or its target");
    }
}

void LongValueCheck::checkFreeMap(const ColumnPages& column, RowId freeMap) {
    for (const PageNumber page : readUsageMap(v_, freeMap, column.name + ", pages with room")) {
        if (!v_.owns(column.pages.owner, page))
            v_.error(page, column.name + ": the map of pages with room has a page that the column does not own");
    }
}

LongValueCheck::ColumnPages* LongValueCheck::pagesOf(const Column& column) {
    const auto found = std::ranges::find(columns_, column.number, &ColumnPages::column);
    return found == columns_.end() ? nullptr : &*found;
}

/// Takes one row of a long-value page for a value. False, with a fault, when it is none or was taken before.
bool LongValueCheck::useRow(ColumnPages& pages, RowId longRow, RowId row, PageRef& page,
                            std::span<const std::byte>& bytes) {
    if (!pages.unused.covers(longRow))
        return v_.error(row, pages.name + ": it leads to " + address(longRow) +
                                 ", which is no long-value page of the column"),
               false;
    page = v_.pager.read(longRow.page);
    examine(pages, page);
    if (!pages.unused.remove(longRow))
        return v_.error(row, pages.name + ": it leads to " + address(longRow) +
                                 ", where no long value is or one that another value leads to as well"),
               false;
    bytes = DataPageView(v_.pager, page).slot(longRow.slot).bytes;
    return true;
}

bool LongValueCheck::use(const Column& column, std::span<const std::byte> field, RowId row) {
    const auto wrong = [&](const std::string& text) {
        v_.error(row, tableLabel(table_) + ", long value of \"" + platform::toUtf8(column.name) + "\": " + text);
        return false;
    };
    if (field.size() < kLongValueHeader)
        return wrong("its field should have at least 12 bytes, it has " + std::to_string(field.size()));
    const LongValueHeader header = LongValueHeader::parse(field);
    if (header.form == LongValueHeader::Form::Inline) {
        if (header.length > field.size() - kLongValueHeader)
            return wrong("its length is " + std::to_string(header.length) + ", the record has " +
                         std::to_string(field.size() - kLongValueHeader) + " bytes of it");
        return true;
    }
    ColumnPages* const pages = pagesOf(column);
    if (pages == nullptr)
        return wrong("its column has no usage maps");
    PageRef page;
    std::span<const std::byte> bytes;
    if (!useRow(*pages, header.first, row, page, bytes))
        return false;
    if (header.form == LongValueHeader::Form::Single) {
        if (bytes.size() < header.length)
            return wrong("its length is " + std::to_string(header.length) + ", " + address(header.first) + " has " +
                         std::to_string(bytes.size()) + " bytes");
        return true;
    }
    if (const std::uint32_t stamp = DataPageView(v_.pager, page).chainStamp(); stamp != header.stamp)
        v_.warning(row, pages->name + ": its stamp should be that of its first page, " + std::to_string(stamp) +
                            ", it is " + std::to_string(header.stamp));
    std::uint64_t collected = 0;
    for (;;) {
        if (bytes.size() < kPointerBytes)
            return wrong("a part of it is shorter than its pointer");
        collected += bytes.size() - kPointerBytes;
        const RowId next = RowId::unpack(load32(bytes.data()));
        if (next.packed() == 0)
            break;
        if (!useRow(*pages, next, row, page, bytes))
            return false;
    }
    if (collected != header.length)
        return wrong("its length is " + std::to_string(header.length) + ", its parts have " +
                     std::to_string(collected) + " bytes");
    return true;
}

void LongValueCheck::finish() {
    for (ColumnPages& column : columns_) {
        for (std::size_t i = 0; i < column.pages.pages.size(); ++i) {
            if (!column.examined[i])
                examine(column, v_.pager.read(column.pages.pages[i]));
        }
        if (column.unused.size() == 0)
            continue;
        bool first = true;
        column.unused.forEach([&](RowId row) {
            if (std::exchange(first, false))
                v_.warning(row, column.name + ": " + std::to_string(column.unused.size()) +
                                    " rows of long-value pages are used by no value, this one first");
        });
    }
}

} // namespace kelb::jet
