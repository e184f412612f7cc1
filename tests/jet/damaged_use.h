#pragma once

#include "tests/jet/verify_fixture.h"

#include <string>
#include <vector>

namespace kelb::jet::testing {

/// One step on a damaged database: an error is what it is expected to give.
template <class Step>
void attempt(const Step& step) {
    try {
        step();
    } catch (const Error&) {
    }
}

/// Every value of every row of every table that can be read, system tables too.
inline void readAll(Database& database) {
    attempt([&] {
        for (const CatalogEntry& entry : database.catalog())
            attempt([&] {
                Table& table = database.table(entry.name);
                Row row;
                for (TableScan scan = table.scan(); scan.next(row);)
                    for (const Column& column : table.definition().columns)
                        attempt([&] { static_cast<void>(showValue(row.value(column))); });
            });
    });
}

/// Reads and changes what it can of a table "Items"; damage may end each step.
inline void useDamaged(Database& database) {
    readAll(database);
    Table* items = nullptr;
    attempt([&] {
        items = &database.table(u"Items");
        static_cast<void>(items->definition());
    });
    if (items == nullptr)
        return;
    attempt([&] {
        std::vector<Value> values(items->definition().columns.size(), Null{});
        for (std::size_t i = 0; i < values.size(); ++i) {
            const Column& column = items->definition().columns[i];
            if (column.isLongValue())
                values[i] = column.type == ColumnType::Memo ? Value(std::u16string(3000, u'新'))
                                                            : Value(Binary(3000, std::byte{1}));
            else if (column.type == ColumnType::Text)
                values[i] = u"http://new";
        }
        items->insert(values);
    });
    std::vector<RowId> rows;
    attempt([&] {
        Row row;
        for (TableScan scan = items->scan(); scan.next(row);)
            rows.push_back(row.id());
    });
    for (std::size_t i = 0; i < rows.size(); i += 9) {
        attempt([&] {
            const std::size_t note = Patient::columnIndex(*items, u"note");
            items->update(rows[i], std::vector<Change>{{note, std::u16string(90, u'x')}});
        });
        attempt([&] { items->erase(rows[i]); });
    }
    attempt([&] { database.createTable({u"New", {newColumn(u"a", ColumnType::Memo)}, {}}); });
    attempt([&] { database.addColumn(u"Items", newColumn(u"b", ColumnType::Text)); });
    attempt([&] { database.createIndex(u"Items", {u"noteidx", {{u"note", true}}}); });
}

} // namespace kelb::jet::testing
