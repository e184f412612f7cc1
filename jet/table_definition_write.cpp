#include "jet/table_definition.h"

#include "jet/byte_order.h"
#include "jet/error.h"
#include "jet/table_definition_layout.h"

#include <algorithm>
#include <cassert>

namespace kelb::jet {

namespace {

/// Appends little-endian fields.
class Out {
public:
    void u8(std::uint8_t v) { store8(grow(1), v); }
    void u16(std::uint16_t v) { store16(grow(2), v); }
    void u32(std::uint32_t v) { store32(grow(4), v); }
    void rowId(RowId v) { u32(v.packed()); }
    void zeros(std::size_t count) { bytes_.resize(bytes_.size() + count); }
    void name(const std::u16string& text) {
        u16(static_cast<std::uint16_t>(2 * text.size()));
        for (const char16_t unit : text) {
            u16(unit);
        }
    }
    std::vector<std::byte> take() && { return std::move(bytes_); }

private:
    std::byte* grow(std::size_t count) {
        bytes_.resize(bytes_.size() + count);
        return bytes_.data() + bytes_.size() - count;
    }
    std::vector<std::byte> bytes_;
};

void writeHead(Out& out, const TableDefinition& table) {
    out.u16(kDefinitionPageType);
    out.zeros(6); // free field and next page: see writeTableDefinition
    out.u32(0);   // length, known at the end
    out.u32(kDefinitionMark);
    out.u32(table.rowCount);
    out.u32(table.lastAutonumber);
    out.u32(table.autonumberStep);
    out.zeros(12);
    out.u8(table.tableType);
    out.u16(table.maxColumns);
    out.u16(table.varColumns);
    out.u16(static_cast<std::uint16_t>(table.columns.size()));
    out.u32(static_cast<std::uint32_t>(table.logicalIndexes.size()));
    out.u32(static_cast<std::uint32_t>(table.physicalIndexes.size()));
    out.rowId(table.ownedMap);
    out.rowId(table.freeMap);
}

void writeColumn(Out& out, const Column& column) {
    out.u8(static_cast<std::uint8_t>(column.type));
    out.u32(kDefinitionMark);
    out.u16(column.number);
    out.u16(column.varIndex);
    out.u16(column.position);
    if (column.type == ColumnType::Numeric) {
        out.u8(column.precision);
        out.u8(column.scale);
        out.u16(0);
    } else {
        out.u16(column.sortOrder.lcid);
        out.u8(0);
        out.u8(column.sortOrder.version);
    }
    out.u8(column.flags);
    out.u8(column.extraFlags);
    out.u32(0);
    out.u16(column.isFixed() ? column.fixedOffset : std::uint16_t{0});
    out.u16(column.length);
}

void writePhysicalIndex(Out& out, const PhysicalIndex& index) {
    assert(index.columns.size() <= kMaxIndexColumns);
    out.u32(kIndexMark);
    for (const IndexColumn& part : index.columns) {
        out.u16(part.column);
        out.u8(part.ascending ? 1 : 0);
    }
    for (std::size_t i = index.columns.size(); i < kMaxIndexColumns; ++i) {
        out.u16(kNoColumn);
        out.u8(0);
    }
    out.rowId(index.ownedMap);
    out.u32(raw(index.root));
    out.u32(0);
    out.u8(index.flags);
    out.zeros(5);
}

void writeLogicalIndex(Out& out, const LogicalIndex& index) {
    out.u32(kDefinitionMark);
    out.u32(index.number);
    out.u32(index.physical);
    out.u8(index.relationSide);
    out.u32(static_cast<std::uint32_t>(index.relationIndex));
    out.u32(index.relationTable);
    out.u8(index.cascadeUpdate);
    out.u8(index.cascadeDelete);
    out.u8(index.kind);
    out.u32(0);
}

/// The pages that hold the definition now; just the first when nothing is there yet.
std::vector<PageNumber> chainOf(Pager& pager, PageNumber first) {
    std::vector<PageNumber> chain = {first};
    for (;;) {
        const PageRef page = pager.read(chain.back());
        if (load8(page.data()) != 2) {
            if (chain.size() > 1) {
                pager.corrupt(chain.back(), 0, "this is no further page of a table definition (02 01)");
            }
            return chain;
        }
        const PageNumber next{load32(page.data() + 4)};
        if (next == kNoPage) {
            return chain;
        }
        if (std::find(chain.begin(), chain.end(), next) != chain.end()) {
            pager.corrupt(chain.back(), 4, "the pages of a table definition run in a circle");
        }
        chain.push_back(next);
    }
}

} // namespace

std::vector<std::byte> buildTableDefinition(const TableDefinition& definition) {
    Out out;
    writeHead(out, definition);
    for (const PhysicalIndex& index : definition.physicalIndexes) {
        out.u32(index.entriesAtCompaction);
        out.u32(index.distinctKeys);
        out.u32(0);
    }
    for (const Column& column : definition.columns) {
        writeColumn(out, column);
    }
    for (const Column& column : definition.columns) {
        out.name(column.name);
    }
    for (const PhysicalIndex& index : definition.physicalIndexes) {
        writePhysicalIndex(out, index);
    }
    for (const LogicalIndex& index : definition.logicalIndexes) {
        writeLogicalIndex(out, index);
    }
    for (const LogicalIndex& index : definition.logicalIndexes) {
        out.name(index.name);
    }
    for (const ColumnMaps& maps : definition.longValueMaps) {
        out.u16(maps.column);
        out.rowId(maps.owned);
        out.rowId(maps.free);
    }
    out.u16(kNoColumn);

    std::vector<std::byte> bytes = std::move(out).take();
    store32(&bytes[kDefinitionLengthOffset], static_cast<std::uint32_t>(bytes.size()));
    // The free field of the first page; of further ones see writeTableDefinition.
    const std::size_t used = std::min(bytes.size(), kPageSize);
    store16(&bytes[2], static_cast<std::uint16_t>(kPageSize - used - std::min<std::size_t>(kPageSize - used, 8)));
    return bytes;
}

void writeTableDefinition(Pager& pager, PageAllocator& allocator, const TableDefinition& definition) {
    const std::vector<std::byte> bytes = buildTableDefinition(definition);
    constexpr std::size_t kPayload = kPageSize - kDefinitionPageHeader;
    const std::size_t pages = (bytes.size() - kDefinitionPageHeader + kPayload - 1) / kPayload;

    std::vector<PageNumber> chain = chainOf(pager, definition.page);
    while (chain.size() > pages) {
        allocator.release(chain.back());
        chain.pop_back();
    }
    while (chain.size() < pages) {
        chain.push_back(allocator.allocate().number());
    }
    for (std::size_t i = 0; i < pages; ++i) {
        const std::size_t from = kDefinitionPageHeader + i * kPayload;
        const std::size_t count = std::min(kPayload, bytes.size() - from);
        const std::size_t rest = kPayload - count;
        const PageEdit page = pager.editZeroed(chain[i]);
        store16(page.data(), kDefinitionPageType);
        store16(page.data() + 2, static_cast<std::uint16_t>(rest - std::min<std::size_t>(rest, 8)));
        store32(page.data() + 4, i + 1 < pages ? raw(chain[i + 1]) : 0);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(from), count, page.data() + kDefinitionPageHeader);
    }
}

} // namespace kelb::jet
