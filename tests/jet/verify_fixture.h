#pragma once

#include "jet/byte_order.h"
#include "jet/index_tree.h"
#include "jet/long_value.h"
#include "jet/row_store.h"
#include "jet/verify.h"

#include "tests/jet/database_fixture.h"

#include <functional>
#include <string>
#include <vector>

namespace kelb::jet::testing {

inline NewColumn newColumn(std::u16string name, ColumnType type) {
    NewColumn column;
    column.name = std::move(name);
    column.type = type;
    return column;
}

/// A sound database in bytes, with a table that has every structure: indexes of two levels, records that moved, long
/// values of all three forms, deleted rows, decimals, a yes/no column.
class Patient {
public:
    explicit Patient(std::string database) : bytes(std::move(database)) {}
    explicit Patient(int rows = 600) {
        auto database = machine_.create();
        NewTable table{u"Items", {}, {}};
        table.columns = {newColumn(u"id", ColumnType::Long),       newColumn(u"url", ColumnType::Text),
                         newColumn(u"num", ColumnType::Long),      newColumn(u"content", ColumnType::Memo),
                         newColumn(u"price", ColumnType::Numeric), newColumn(u"flag", ColumnType::YesNo),
                         newColumn(u"note", ColumnType::Text)};
        table.columns[0].autonumber = true;
        table.columns[4].scale = 2;
        table.indexes.push_back({u"numidx", {{u"num", true}}});
        NewIndex unique{u"urlidx", {{u"url", false}}};
        unique.unique = true;
        table.indexes.push_back(unique);
        NewIndex required{u"required", {{u"num", true}, {u"note", true}}};
        required.ignoreNulls = true;
        table.indexes.push_back(required);
        Table& items = database->createTable(table);
        std::vector<RowId> ids;
        for (int i = 0; i < rows; ++i)
            ids.push_back(insertRow(items, row(i)));
        const std::size_t note = columnIndex(items, u"note");
        for (std::size_t i = 0; i < ids.size(); i += 50)
            items.update(ids[i], std::vector<Change>{{note, std::u16string(200, u'n')}});
        for (std::size_t i = 7; i < ids.size(); i += 60)
            items.erase(ids[i]);
        database->commit();
        database.reset();
        bytes = machine_.files.readFile(kPath);
    }

    std::string bytes;

    /// Opens what `bytes` are now.
    std::unique_ptr<Database> open(Pager::Access access = Pager::Access::Read) {
        machine_.files.writeFile(kPath, bytes);
        return machine_.open(access, true);
    }
    /// Changes made through the engine.
    void change(const std::function<void(Database&)>& act) {
        auto database = open(Pager::Access::Write);
        act(*database);
        database->commit();
        database.reset();
        bytes = machine_.files.readFile(kPath);
    }
    std::string faults() { return faultsOf(*open()); }

    TableDefinition definition(std::u16string_view table = u"Items") { return open()->table(table).definition(); }
    const PhysicalIndex& index(const TableDefinition& table, std::u16string_view name) const {
        for (const LogicalIndex& logical : table.logicalIndexes)
            if (logical.name == name)
                return table.physicalIndexes[logical.physical];
        throw std::out_of_range("no such index");
    }
    /// Pages of a usage map.
    std::vector<PageNumber> pages(RowId map) {
        const auto database = open();
        std::vector<PageNumber> members;
        const UsageMap usage(database->pager(), map);
        for (auto page = usage.next(kNoPage); page; page = usage.next(*page))
            members.push_back(*page);
        return members;
    }
    /// First slot of that kind on the pages.
    RowId slot(const std::vector<PageNumber>& onPages, SlotKind kind) {
        const auto database = open();
        for (const PageNumber number : onPages) {
            const PageRef page = database->pager().read(number);
            const DataPageView view(database->pager(), page);
            for (std::size_t i = 0; i < view.slotCount(); ++i)
                if (view.slot(i).kind == kind)
                    return {number, static_cast<std::uint8_t>(i)};
        }
        throw std::out_of_range("no such slot");
    }

    // Bytes
    std::byte* at(PageNumber page, std::size_t offset) {
        return reinterpret_cast<std::byte*>(bytes.data()) + raw(page) * kPageSize + offset;
    }
    std::byte* slotEntry(RowId row) { return at(row.page, 14U + 2U * row.slot); }
    std::size_t slotStart(RowId row) { return load16(slotEntry(row)) & 0x1FFFU; }
    std::size_t slotEnd(RowId row) {
        return row.slot == 0 ? kPageSize : slotStart({row.page, static_cast<std::uint8_t>(row.slot - 1)});
    }
    std::byte* record(RowId row) { return at(row.page, slotStart(row)); }
    std::byte* recordEnd(RowId row) { return at(row.page, slotEnd(row)); }

    static std::size_t columnIndex(const Table& table, std::u16string_view name) {
        return static_cast<std::size_t>(table.definition().findColumn(name) - table.definition().columns.data());
    }

private:
    static std::vector<Value> row(int i) {
        std::u16string url = u"http://www.example.com/";
        for (int digit = 1000; digit > 0; digit /= 10)
            url.push_back(static_cast<char16_t>(u'0' + i / digit % 10));
        const std::size_t length = i % 40 == 0 ? 3000U : i % 10 == 0 ? 100U : 5U;
        return {Null{},
                url,
                std::int32_t{i / 2 * 100003}, // keys that share one byte only, so that they need two leaves
                std::u16string(length, u'网'),
                Decimal{i % 2 == 1, {0, 0, 0, static_cast<std::uint32_t>(i)}, 2},
                i % 3 == 0,
                i % 5 == 0 ? Value(Null{}) : Value(u"note")};
    }

    Machine machine_;
};

} // namespace kelb::jet::testing
