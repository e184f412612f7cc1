#include "jet/database.h"
#include "jet/database_state.h"
#include "jet/index_entries.h"
#include "jet/index_tree.h"
#include "jet/new_objects.h"
#include "jet/usage_map.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>

/// Changes of definitions. Each is one operation: whatever refuses it on the way leaves the database as it was.
namespace kelb::jet {

namespace {

using platform::toUtf8;

/// Hands out the map rows that were made for a table, one after the other.
class MapRows {
public:
    MapRows(Pager& pager, PageAllocator& allocator, std::size_t count, PageNumber near)
        : rows_(createMaps(pager, allocator, count, near)) {}
    RowId take() { return rows_[next_++]; }

private:
    std::vector<RowId> rows_;
    std::size_t next_ = 0;
};

TableDefinition designTable(const NewTable& wanted, SortOrder sortOrder, platform::Random& random) {
    requireGoodName("table", wanted.name);
    TableDefinition table;
    table.name = wanted.name;
    if (wanted.columns.empty())
        throw Error(Error::Kind::BadDefinition, "table " + toUtf8(wanted.name) + " has no fields");
    for (const NewColumn& column : wanted.columns) {
        if (table.findColumn(column.name) != nullptr)
            throw Error(Error::Kind::AlreadyExists,
                        "table " + toUtf8(wanted.name) + " has the field " + toUtf8(column.name) + " twice");
        table.addColumn(makeColumn(column, wanted.name, sortOrder));
    }
    if (std::count_if(table.columns.begin(), table.columns.end(),
                      [](const Column& column) { return column.isAutonumber(); }) > 1)
        throw Error(Error::Kind::BadDefinition, "table " + toUtf8(wanted.name) + " has more than one autonumber");
    requireRowFits(table);
    for (const NewIndex& index : wanted.indexes)
        jet::addIndex(table, index, random);
    return table;
}

/// An empty leaf that the index's own map knows.
void makeRoot(PhysicalIndex& index, RowId map, Pager& pager, PageAllocator& allocator, PageNumber table) {
    PageEdit root = allocator.allocate();
    IndexTree::formatRoot(root, table);
    UsageMap(pager, map).add(root.number(), allocator);
    index.ownedMap = map;
    index.root = root.number();
}

Properties requiredProperties(const TableDefinition& table) {
    Properties properties;
    for (const std::size_t column : table.displayOrder())
        if (table.columns[column].required)
            properties.setRequired(table.columns[column].name);
    return properties;
}

/// With counts and statistics as they are now; those that a table remembers are of its last look.
TableDefinition freshDefinition(Pager& pager, const Table& table) {
    TableDefinition definition = readTableDefinition(pager, table.definition().page, Dialect::Jet4);
    definition.name = table.name();
    return definition;
}

std::vector<RowId> allRows(const Table& table) {
    std::vector<RowId> rows;
    Row row;
    for (TableScan scan = table.scan(); scan.next(row);)
        rows.push_back(row.id());
    return rows;
}

/// Rows that are older than a new autonumber column are numbered from 1 in their order.
void numberRows(Table& table, std::u16string_view column) {
    const TableDefinition& definition = table.definition();
    const std::size_t place = static_cast<std::size_t>(definition.findColumn(column) - definition.columns.data());
    std::int32_t number = 0;
    for (const RowId row : allRows(table)) {
        const Change change{place, ++number};
        table.update(row, {&change, 1});
    }
}

/// Writes the tree of the last index of `definition`, and the definition.
void buildIndex(Pager& pager, PageAllocator& allocator, TableDefinition& definition, const IndexEntries& entries) {
    PhysicalIndex& index = definition.physicalIndexes.back();
    index.distinctKeys = entries.distinctKeys;
    MapRows maps(pager, allocator, 1, definition.ownedMap.page);
    makeRoot(index, maps.take(), pager, allocator, definition.page);
    writeTableDefinition(pager, allocator, definition);
    IndexTree(pager, allocator, {index.root, index.ownedMap, definition.page}).build(entries.sorted);
}

} // namespace

Table& Database::State::tableToChange(std::u16string_view name) {
    const CatalogObject* object = catalog.find(name);
    if (object == nullptr || object->entry.type != static_cast<std::int16_t>(ObjectType::Table))
        throw Error(Error::Kind::NoSuchTable, "there is no table " + toUtf8(name) + " in " + toUtf8(pager.path()));
    if (!object->entry.isUserTable())
        throw Error(Error::Kind::BadDefinition, "table " + toUtf8(name) + " belongs to Access and is not changed");
    Table& table = tableAt(object->entry.name, PageNumber{static_cast<std::uint32_t>(object->entry.id)});
    table.requireWritable();
    return table;
}

Table& Database::createTable(const NewTable& wanted) {
    State& s = *state_;
    s.objects->requireWritable();
    TableDefinition table = designTable(wanted, s.header.sortOrder, s.platform.random);
    const OleDate now = s.now();
    Properties properties = requiredProperties(table);
    return createTable(std::move(table), {now, now, false, std::move(properties), std::nullopt});
}

Table& Database::createTable(TableDefinition table, const TableOrigin& origin) {
    State& s = *state_;
    s.objects->requireWritable();
    requireGoodName("table", table.name);
    if (const CatalogObject* other = s.catalog.find(table.name))
        throw Error(Error::Kind::AlreadyExists,
                    "there is a table or query " + toUtf8(other->entry.name) + " in " + toUtf8(path()));

    Pager::Operation operation(s.pager);
    table.page = s.allocator.allocate().number();
    std::vector<std::uint16_t> longValues;
    for (const Column& column : table.columns)
        if (column.isLongValue())
            longValues.push_back(column.number);
    MapRows maps(s.pager, s.allocator, 2 + table.physicalIndexes.size() + 2 * longValues.size(), kNoPage);
    table.ownedMap = maps.take();
    table.freeMap = maps.take();
    for (PhysicalIndex& index : table.physicalIndexes)
        makeRoot(index, maps.take(), s.pager, s.allocator, table.page);
    for (const std::uint16_t column : longValues) {
        const RowId owned = maps.take();
        table.longValueMaps.push_back({column, owned, maps.take()});
    }
    writeTableDefinition(s.pager, s.allocator, table);
    s.catalog.addTable(table.name, table.page, origin);
    s.noteSchemaChange();
    operation.done();
    return s.tableAt(table.name, table.page);
}

void Database::addColumn(std::u16string_view tableName, const NewColumn& wanted) {
    State& s = *state_;
    Table& table = s.tableToChange(tableName);
    TableDefinition definition = freshDefinition(s.pager, table);
    if (definition.findColumn(wanted.name) != nullptr)
        throw Error(Error::Kind::AlreadyExists,
                    "table " + toUtf8(definition.name) + " has a field " + toUtf8(wanted.name));
    if (wanted.autonumber && wanted.type == ColumnType::Long &&
        std::any_of(definition.columns.begin(), definition.columns.end(),
                    [](const Column& column) { return column.isAutonumber(); }))
        throw Error(Error::Kind::BadDefinition, "table " + toUtf8(definition.name) + " has an autonumber");
    const bool firstVariable = definition.varColumns == 0;
    const Column& column = definition.addColumn(makeColumn(wanted, definition.name, s.header.sortOrder));
    requireRowFits(definition);

    Pager::Operation operation(s.pager);
    if (column.isLongValue()) {
        MapRows maps(s.pager, s.allocator, 2, definition.ownedMap.page);
        const RowId owned = maps.take();
        definition.longValueMaps.push_back({column.number, owned, maps.take()});
    }
    writeTableDefinition(s.pager, s.allocator, definition);
    Properties properties;
    if (wanted.required) {
        properties = s.catalog.properties(definition.page);
        properties.setRequired(wanted.name);
    }
    s.catalog.noteChange(definition.page, s.now(), wanted.required ? &properties : nullptr);
    s.noteSchemaChange();
    if (wanted.autonumber && wanted.type == ColumnType::Long) {
        numberRows(table, wanted.name);
    } else if (firstVariable && !column.isFixed()) {
        // Rows of a table without variable columns lack the part that says where such values are. We cope, but other
        // readers look for it in every row.
        for (const RowId row : allRows(table))
            table.update(row, {});
    }
    operation.done();
}

void Database::createIndex(std::u16string_view tableName, const NewIndex& wanted) {
    State& s = *state_;
    Table& table = s.tableToChange(tableName);
    TableDefinition definition = freshDefinition(s.pager, table);
    jet::addIndex(definition, wanted, s.platform.random);
    const std::size_t physical = definition.physicalIndexes.size() - 1;
    const IndexEntries entries = makeIndexEntries(table, definition, physical);

    Pager::Operation operation(s.pager);
    buildIndex(s.pager, s.allocator, definition, entries);
    s.catalog.noteChange(definition.page, s.now(), nullptr);
    s.noteSchemaChange();
    operation.done();
}

void Database::addIndex(std::u16string_view tableName, PhysicalIndex index, std::span<const LogicalIndex> names,
                        const IndexEntries& entries) {
    State& s = *state_;
    TableDefinition definition = freshDefinition(s.pager, s.tableToChange(tableName));
    for (const LogicalIndex& name : names) {
        LogicalIndex& added = definition.addLogicalIndex(name);
        added.physical = static_cast<std::uint32_t>(definition.physicalIndexes.size());
    }
    definition.physicalIndexes.push_back(std::move(index));

    Pager::Operation operation(s.pager);
    buildIndex(s.pager, s.allocator, definition, entries);
    s.noteSchemaChange();
    operation.done();
}

} // namespace kelb::jet
