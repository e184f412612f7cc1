#pragma once

#include "jet/byte_order.h"
#include "jet/data_page.h"
#include "jet/index_check.h"
#include "jet/long_value.h"
#include "jet/table_environment.h"
#include "jet/table_keys.h"

#include "platform/random.h"

#include "tests/jet/index_tree_fixture.h"
#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kelb::jet::testing {

/// A column as CREATE TABLE makes it; `characters` for text and binary.
inline Column column(std::u16string name, ColumnType type, std::uint16_t characters = 255) {
    const bool variable = type == ColumnType::Text || type == ColumnType::Memo || type == ColumnType::Ole ||
                          type == ColumnType::Binary || type == ColumnType::Guid;
    Column column;
    column.name = std::move(name);
    column.type = type;
    column.flags = variable ? 2 : 3;
    column.length = static_cast<std::uint16_t>(fixedSize(type));
    if (type == ColumnType::Text)
        column.length = static_cast<std::uint16_t>(2 * characters);
    if (type == ColumnType::Binary)
        column.length = characters;
    if (type == ColumnType::YesNo)
        column.length = 1;
    column.precision = type == ColumnType::Numeric ? 18 : 0;
    return column;
}
inline Column autonumber(std::u16string name) {
    Column made = column(std::move(name), ColumnType::Long);
    made.flags = 7;
    return made;
}

struct NewIndexOf {
    std::u16string name;
    std::vector<std::u16string> columns;
    std::uint8_t flags = 0x80; ///< 81 unique, 82 ignores nulls, 88 required
};

class CountingRandom final : public platform::Random {
public:
    void reseed() override {}
    double next() override { return 0; }
    std::uint64_t bits() override { return ++count; }
    std::uint64_t count = 0;
};

/// Tables in a file in memory: page 0 empty, page 1 with the global map.
class TableFixture : public PagerFixture {
public:
    explicit TableFixture(std::string_view letters = "", std::size_t pageSize = kPageSize)
        : PagerFixture(letters, pageSize) {
        options.maxDirtyBytes = std::size_t{1} << 30;
        allocator_.emplace(open());
        if (pageSize == kPageSize)
            formatGlobalMap();
    }

    /// Puts a definition's bytes on a page of their own.
    PageNumber putDefinition(const std::vector<std::byte>& definition) {
        Pager::Operation operation(*pager);
        const PageEdit page = pager->append();
        std::ranges::copy(definition, page.data());
        operation.done();
        return page.number();
    }

    Table& make(std::u16string name, std::vector<Column> columns, const std::vector<NewIndexOf>& indexes = {}) {
        Pager::Operation operation(*pager);
        TableDefinition made;
        made.name = std::move(name);
        made.page = allocator().allocate().number();
        for (Column& each : columns) {
            if (each.required)
                required.insert(each.name);
            made.addColumn(std::move(each));
        }
        std::vector<const Column*> longs;
        for (const Column& each : made.columns)
            if (each.isLongValue())
                longs.push_back(&each);
        const auto maps = createMaps(*pager, allocator(), 2 + 2 * longs.size() + indexes.size(), kNoPage);
        auto next = maps.begin();
        made.ownedMap = *next++;
        made.freeMap = *next++;
        for (const Column* each : longs) {
            const RowId owned = *next++;
            made.longValueMaps.push_back({each->number, owned, *next++});
        }
        for (const NewIndexOf& wanted : indexes)
            addIndex(made, wanted, *next++);
        writeTableDefinition(*pager, allocator(), made);
        operation.done();
        definitionPage = made.page;
        tableName = made.name;
        return lend();
    }
    /// The table again, from what reached the file.
    Table& reopen() {
        pager->commit();
        table.reset();
        allocator_.emplace(open());
        return lend();
    }
    /// Changes the definition behind the table's back.
    template <class Change>
    void alter(Change change) {
        Pager::Operation operation(*pager);
        TableDefinition definition = readTableDefinition(*pager, definitionPage, Dialect::Jet4);
        change(definition);
        writeTableDefinition(*pager, allocator(), definition);
        operation.done();
        ++schema;
    }

    /// Everything that holds for a sound table, by walking all it consists of. Empty: no fault.
    std::string faults();

    PageAllocator& allocator() { return *allocator_; }

    CountingRandom random;
    std::uint64_t schema = 1;
    std::set<std::u16string> required;
    PageNumber definitionPage = kNoPage;
    std::u16string tableName;
    std::unique_ptr<Table> table;

private:
    std::optional<PageAllocator> allocator_;

    void formatGlobalMap() {
        Pager::Operation operation(*pager);
        static_cast<void>(pager->append());
        PageEdit page = pager->append();
        DataPageEditor::format(page, 1);
        std::array<std::byte, UsageMap::kNewMapBytes> map{};
        DataPageEditor editor(*pager, page);
        std::fill(map.begin() + 5, map.end(), std::byte{0xFF});
        map[5] = std::byte{0xFC};
        editor.add(SlotKind::Row, map);
        editor.add(SlotKind::Row, std::array<std::byte, UsageMap::kNewMapBytes>{});
        operation.done();
    }
    void addIndex(TableDefinition& made, const NewIndexOf& wanted, RowId map) {
        PhysicalIndex physical;
        for (const std::u16string& name : wanted.columns)
            physical.columns.push_back({made.findColumn(name)->number, true});
        physical.flags = wanted.flags;
        physical.ownedMap = map;
        PageEdit root = allocator().allocate();
        IndexTree::formatRoot(root, made.page);
        UsageMap(*pager, map).add(root.number(), allocator());
        physical.root = root.number();
        LogicalIndex logical;
        logical.name = wanted.name;
        logical.physical = static_cast<std::uint32_t>(made.physicalIndexes.size());
        made.physicalIndexes.push_back(physical);
        made.addLogicalIndex(logical);
    }
    Table& lend() {
        const auto apply = [this](TableDefinition& definition) {
            for (Column& each : definition.columns)
                each.required = required.contains(each.name);
        };
        table = std::make_unique<Table>(std::unique_ptr<Table::Environment>(new Table::Environment{
            *pager, allocator(), random, Dialect::Jet4, 1252, tableName, definitionPage, schema, apply}));
        return *table;
    }
};

inline std::string TableFixture::faults() {
    std::string text;
    const TableDefinition& definition = table->definition();
    const auto fault = [&](bool there, const std::string& what) { text += there ? what + "\n" : ""; };

    // Slots: each target has exactly one pointer; no page of deleted rows only; free pages are owned ones.
    std::set<RowId> targets, pointed, live;
    const UsageMap owned(*pager, definition.ownedMap), free(*pager, definition.freeMap);
    for (auto page = owned.next(kNoPage); page; page = owned.next(*page)) {
        const PageRef ref = pager->read(*page);
        const DataPageView view(*pager, ref);
        std::size_t deleted = 0;
        for (std::size_t i = 0; i < view.slotCount(); ++i) {
            const RowId id{*page, static_cast<std::uint8_t>(i)};
            const Slot slot = view.slot(i);
            deleted += slot.kind == SlotKind::Deleted ? 1 : 0;
            if (slot.kind == SlotKind::Target)
                targets.insert(id);
            if (slot.kind == SlotKind::Row || slot.kind == SlotKind::Pointer)
                live.insert(id);
            if (slot.kind == SlotKind::Pointer) {
                const RowId target = RowId::unpack(load32(slot.bytes.data()));
                fault(!pointed.insert(target).second, "two pointers to one record");
                fault(target.page == *page, "a pointer to its own page");
            }
        }
        fault(deleted == view.slotCount(), "page " + std::to_string(raw(*page)) + " has no live row");
    }
    fault(targets != pointed, "pointers and moved records do not match");
    for (auto page = free.next(kNoPage); page; page = free.next(*page))
        fault(!owned.contains(*page), "a page with free space is not owned");

    // Rows, and what their long values occupy.
    std::set<RowId> used, stored, scanned;
    std::map<std::size_t, std::vector<EntryBytes>> expected;
    Row row;
    for (TableScan scan = table->scan(); scan.next(row);) {
        scanned.insert(row.id());
        for (std::size_t i = 0; i < definition.physicalIndexes.size(); ++i) {
            const RowKey key = makeRowKey(definition, i, [&](const Column& c) -> Value { return row.value(c); });
            if (key.isEntered(definition.physicalIndexes[i]))
                expected[i].push_back(entryOf(key.bytes, row.id()));
        }
        for (const Column& each : definition.columns) {
            const auto field = each.isLongValue() ? row.field(each) : std::nullopt;
            if (!field)
                continue;
            const LongValueHeader header = LongValueHeader::parse(*field);
            fault(header.form == LongValueHeader::Form::Inline && header.length > kMaxInlineLongValue,
                  "too long inside");
            for (RowId at = header.first; at.page != kNoPage;) {
                fault(!used.insert(at).second, "a long value is shared");
                const PageRef ref = pager->read(at.page);
                const DataPageView view(*pager, ref);
                at = header.form == LongValueHeader::Form::Chain
                         ? RowId::unpack(load32(view.slot(at.slot).bytes.data()))
                         : RowId{};
            }
        }
    }
    for (const ColumnMaps& maps : definition.longValueMaps) {
        const UsageMap pages(*pager, maps.owned);
        for (auto page = pages.next(kNoPage); page; page = pages.next(*page)) {
            const PageRef ref = pager->read(*page);
            const DataPageView view(*pager, ref);
            for (std::size_t i = 0; i < view.slotCount(); ++i)
                if (view.slot(i).kind == SlotKind::Row)
                    stored.insert({*page, static_cast<std::uint8_t>(i)});
        }
    }
    fault(used != stored, "long values and the rows that use them do not match");
    fault(scanned != live, "the scan misses rows or makes some up");
    fault(table->rowCount() != live.size(), "the definition counts " + std::to_string(table->rowCount()) + " rows");

    for (std::size_t i = 0; i < definition.physicalIndexes.size(); ++i) {
        const PhysicalIndex& index = definition.physicalIndexes[i];
        Findings findings;
        checkIndexTree(*pager, {index.root, index.ownedMap, definition.page}, findings);
        text += findings.text;
        std::ranges::sort(expected[i]);
        fault(findings.entries != expected[i], "index " + std::to_string(i) + " and the rows do not match");
    }
    return text;
}

} // namespace kelb::jet::testing
