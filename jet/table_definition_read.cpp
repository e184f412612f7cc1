#include "jet/table_definition.h"

#include "jet/byte_order.h"
#include "jet/error.h"
#include "jet/table_definition_layout.h"
#include "jet/text_codec.h"

#include <algorithm>
#include <span>

namespace kelb::jet {

namespace {

constexpr std::size_t kMaxChain = 64; ///< pages; 255 columns and 32 indexes with the longest names need 15

/// The pages of a definition as one byte string, read from left to right.
class DefinitionBytes {
public:
    enum class Chain { Whole, AsFarAsItGoes };
    DefinitionBytes(Pager& pager, PageNumber first, Chain chain) : pager_(pager), chain_(chain) {
        try {
            readChain(first);
        } catch (const CorruptFile&) {
            if (chain == Chain::Whole || pages_.empty()) {
                throw;
            }
        }
    }

    bool maybeDamaged() const noexcept { return chain_ == Chain::AsFarAsItGoes; }
    void seek(std::size_t offset) noexcept { at_ = offset; }
    const std::byte* take(std::size_t count) {
        if (count > bytes_.size() - at_) {
            fail("a table definition that holds all that its counts promise");
        }
        at_ += count;
        return bytes_.data() + at_ - count;
    }
    std::uint8_t u8() { return load8(take(1)); }
    std::uint16_t u16() { return load16(take(2)); }
    std::uint32_t u32() { return load32(take(4)); }
    RowId rowId() { return RowId::unpack(u32()); }

    [[noreturn]] void fail(const char* expected) const {
        const std::size_t pageSize = pager_.pageSize();
        if (at_ < pageSize) {
            pager_.corrupt(pages_.front(), at_, expected);
        }
        const std::size_t index =
            std::min((at_ - pageSize) / (pageSize - kDefinitionPageHeader) + 1, pages_.size() - 1);
        pager_.corrupt(pages_[index],
                       at_ - pageSize - (index - 1) * (pageSize - kDefinitionPageHeader) + kDefinitionPageHeader,
                       expected);
    }

private:
    void readChain(PageNumber page) {
        do {
            const PageRef ref = pager_.read(page);
            const std::span<const std::byte> bytes = ref.bytes();
            if (load16(&bytes[0]) != kDefinitionPageType) {
                pager_.corrupt(page, 0, "this is no page of a table definition (02 01)");
            }
            if (pages_.size() == kMaxChain) {
                pager_.corrupt(page, 4, "the pages of a table definition run in a circle");
            }
            const std::size_t from = pages_.empty() ? 0 : kDefinitionPageHeader;
            bytes_.insert(bytes_.end(), bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end());
            pages_.push_back(page);
            page = PageNumber{load32(&bytes[4])};
        } while (page != kNoPage);
    }

    Pager& pager_;
    Chain chain_;
    std::vector<PageNumber> pages_;
    std::vector<std::byte> bytes_;
    std::size_t at_ = 0;
};

struct Counts {
    std::size_t columns, logical, physical;
};

Counts readHead(DefinitionBytes& in, TableDefinition& table) {
    in.seek(kRowCountOffset);
    table.rowCount = in.u32();
    table.lastAutonumber = in.u32();
    table.autonumberStep = in.u32();
    in.seek(kTableTypeOffset);
    table.tableType = in.u8();
    table.maxColumns = in.u16();
    table.varColumns = in.u16();
    Counts counts{};
    counts.columns = in.u16();
    counts.logical = in.u32();
    counts.physical = in.u32();
    table.ownedMap = in.rowId();
    table.freeMap = in.rowId();
    return counts;
}

Column readColumn(DefinitionBytes& in) {
    const std::byte* p = in.take(kColumnBytes);
    if (in.maybeDamaged() && load32(p + 1) != kDefinitionMark) {
        in.fail("a field (59 06)");
    }
    Column column;
    column.type = static_cast<ColumnType>(load8(p));
    column.number = load16(p + 5);
    column.varIndex = load16(p + 7);
    column.position = load16(p + 9);
    if (column.type == ColumnType::Numeric) {
        column.precision = load8(p + 11);
        column.scale = load8(p + 12);
    } else {
        column.sortOrder = {load16(p + 11), load8(p + 14)};
    }
    column.flags = load8(p + 15);
    column.extraFlags = load8(p + 16);
    column.fixedOffset = load16(p + 21);
    column.length = load16(p + 23);
    return column;
}

std::u16string readName(DefinitionBytes& in) {
    const std::size_t bytes = in.u16();
    std::u16string name;
    decodeText({in.take(bytes), bytes}, name);
    return name;
}

/// Columns of the key, owned map, root: in both dialects the same. `p` behind the mark.
void readKeyColumns(const std::byte* p, PhysicalIndex& index) {
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const std::byte* part = p + 3 * i;
        if (load16(part) != kNoColumn) {
            index.columns.push_back({load16(part), load8(part + 2) == 1});
        }
    }
    index.ownedMap = RowId::unpack(load32(p + 30));
    index.root = PageNumber{load32(p + 34)};
}

void readPhysicalIndex(DefinitionBytes& in, PhysicalIndex& index) {
    const std::byte* p = in.take(kPhysicalIndexBytes);
    readKeyColumns(p + 4, index);
    index.flags = load8(p + 46);
}

void readJet3PhysicalIndex(DefinitionBytes& in, PhysicalIndex& index) {
    const std::byte* p = in.take(39);
    readKeyColumns(p, index);
    index.flags = load8(p + 38);
}

/// `p` behind the mark.
LogicalIndex logicalIndexAt(const std::byte* p) {
    LogicalIndex index;
    index.number = load32(p);
    index.physical = load32(p + 4);
    index.relationSide = load8(p + 8);
    index.relationIndex = static_cast<std::int32_t>(load32(p + 9));
    index.relationTable = load32(p + 13);
    index.cascadeUpdate = load8(p + 17);
    index.cascadeDelete = load8(p + 18);
    index.kind = load8(p + 19);
    return index;
}

LogicalIndex readLogicalIndex(DefinitionBytes& in) {
    return logicalIndexAt(in.take(kLogicalIndexBytes) + 4);
}

/// Counts come from the file: each block is taken from the bytes at hand before room for the next is made.
void readBody(DefinitionBytes& in, TableDefinition& table, const Counts& counts) {
    for (std::size_t i = 0; i < counts.physical; ++i) {
        PhysicalIndex index;
        index.entriesAtCompaction = in.u32();
        index.distinctKeys = in.u32();
        in.u32();
        table.physicalIndexes.push_back(std::move(index));
    }
    for (std::size_t i = 0; i < counts.columns; ++i) {
        table.columns.push_back(readColumn(in));
    }
    for (Column& column : table.columns) {
        column.name = readName(in);
    }
    for (PhysicalIndex& index : table.physicalIndexes) {
        readPhysicalIndex(in, index);
    }
    for (std::size_t i = 0; i < counts.logical; ++i) {
        table.logicalIndexes.push_back(readLogicalIndex(in));
    }
    for (LogicalIndex& index : table.logicalIndexes) {
        index.name = readName(in);
    }
    for (std::uint16_t column = in.u16(); column != kNoColumn; column = in.u16()) {
        const RowId owned = in.rowId();
        table.longValueMaps.push_back({column, owned, in.rowId()});
    }
}

Column readJet3Column(DefinitionBytes& in) {
    const std::byte* p = in.take(18);
    Column column;
    column.type = static_cast<ColumnType>(load8(p));
    column.number = load16(p + 1);
    column.varIndex = load16(p + 3);
    column.position = load16(p + 5);
    column.sortOrder = {load16(p + 9), 0};
    if (column.type == ColumnType::Numeric) {
        column.precision = load8(p + 11);
        column.scale = load8(p + 12);
    }
    column.flags = load8(p + 13);
    column.fixedOffset = load16(p + 14);
    column.length = load16(p + 16);
    if (column.type == ColumnType::Text) {
        column.length = static_cast<std::uint16_t>(2 * column.length); // one byte a character there
    }
    return column;
}

void readJet3(DefinitionBytes& in, TableDefinition& table) {
    in.seek(12);
    table.rowCount = in.u32();
    table.lastAutonumber = in.u32();
    table.tableType = in.u8();
    table.maxColumns = in.u16();
    table.varColumns = in.u16();
    const std::size_t columns = in.u16();
    const std::size_t logical = in.u32();
    const std::size_t physical = in.u32();
    table.ownedMap = in.rowId();
    table.freeMap = in.rowId();
    for (std::size_t i = 0; i < physical; ++i) {
        in.take(8);
    }
    for (std::size_t i = 0; i < columns; ++i) {
        table.columns.push_back(readJet3Column(in));
    }
    for (Column& column : table.columns) {
        const std::size_t bytes = in.u8();
        decodeCodePageText({in.take(bytes), bytes}, table.codePage, column.name);
    }
    for (std::size_t i = 0; i < physical; ++i) {
        readJet3PhysicalIndex(in, table.physicalIndexes.emplace_back());
    }
    for (std::size_t i = 0; i < logical; ++i) {
        table.logicalIndexes.push_back(logicalIndexAt(in.take(20)));
    }
    for (LogicalIndex& index : table.logicalIndexes) {
        const std::size_t bytes = in.u8();
        decodeCodePageText({in.take(bytes), bytes}, table.codePage, index.name);
    }
}

TableDefinition emptyDefinition(PageNumber page, Dialect dialect, std::uint16_t codePage) {
    TableDefinition table;
    table.page = page;
    table.dialect = dialect;
    table.codePage = codePage;
    return table;
}

void readParts(DefinitionBytes& in, TableDefinition& table) {
    if (table.dialect == Dialect::Jet3) {
        readJet3(in, table);
    } else {
        const Counts counts = readHead(in, table);
        readBody(in, table, counts);
    }
}

} // namespace

TableDefinition readTableDefinition(Pager& pager, PageNumber page, Dialect dialect, std::uint16_t codePage) {
    DefinitionBytes in(pager, page, DefinitionBytes::Chain::Whole);
    TableDefinition table = emptyDefinition(page, dialect, codePage);
    readParts(in, table);
    return table;
}

TableDefinition readAvailableDefinition(Pager& pager, PageNumber page, Dialect dialect, std::uint16_t codePage,
                                        std::string& fault) {
    DefinitionBytes in(pager, page, DefinitionBytes::Chain::AsFarAsItGoes);
    TableDefinition table = emptyDefinition(page, dialect, codePage);
    try {
        readParts(in, table);
    } catch (const CorruptFile& damage) {
        if (table.columns.empty() || table.columns.back().name.empty()) {
            throw; // names come behind all the columns
        }
        fault = damage.expected();
        table.physicalIndexes.clear();
        table.logicalIndexes.clear();
        table.longValueMaps.clear();
    }
    return table;
}

} // namespace kelb::jet
