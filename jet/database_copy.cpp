#include "jet/database_copy.h"

#include "jet/catalog.h"
#include "jet/index_entries.h"
#include "jet/long_value.h"
#include "jet/new_database_file.h"
#include "jet/verification.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>

namespace kelb::jet {
namespace {

using platform::toUtf8;

/// Its row in the catalog says more of a table than its entry.
struct SourceTable {
    CatalogEntry entry;
    TableOrigin origin;
};

void requireSound(Database& source) {
    const std::vector<Fault> faults = verify(source);
    const Fault* first = firstError(faults);
    if (first == nullptr)
        return;
    const auto errors = std::ranges::count(faults, Fault::Severity::Error, &Fault::severity);
    throw Error(Error::Kind::Corrupt, toUtf8(source.path()) + " is damaged (" + std::to_string(errors) +
                                          " errors, the first on page " + std::to_string(raw(first->page)) + ": " +
                                          first->text + "); \"kelb db recover\" saves what can be read of it");
}

template <class T>
T valueOr(const Row& row, const Column* column, T otherwise) {
    const Value value = column == nullptr ? Value{} : row.value(*column);
    const T* held = std::get_if<T>(&value);
    return held != nullptr ? *held : otherwise;
}

/// Keys of the catalog's index by container and name, by row: in orders that are not known here no others can be had.
std::map<RowId, KeyBytes> nameKeys(Database& source) {
    std::map<RowId, KeyBytes> keys;
    const TableDefinition& objects = source.table(u"MSysObjects").definition();
    const std::optional<std::size_t> index = nameIndex(objects);
    if (source.dialect() != Dialect::Jet4 || !index)
        return keys;
    const PhysicalIndex& physical = objects.physicalIndexes[*index];
    const IndexTree tree(source.pager(), source.allocator(), {physical.root, physical.ownedMap, objects.page});
    for (auto cursor = tree.begin(); cursor.valid(); cursor.next())
        keys.emplace(cursor.row(), KeyBytes(cursor.key().begin(), cursor.key().end()));
    return keys;
}

std::vector<SourceTable> userTables(Database& source, CopyObserver& observer) {
    Table& objects = source.table(u"MSysObjects");
    const TableDefinition& definition = objects.definition();
    const Column* created = definition.findColumn(u"DateCreate");
    const Column* updated = definition.findColumn(u"DateUpdate");
    const Column* properties = definition.findColumn(u"LvProp");
    const std::map<RowId, KeyBytes> keys = nameKeys(source);

    std::vector<SourceTable> tables;
    const std::vector<CatalogEntry> entries = source.catalog();
    std::size_t next = 0; // the catalog lists its rows in the order of a scan
    Row row;
    for (TableScan scan = objects.scan(); scan.next(row) && next < entries.size(); ++next) {
        SourceTable table{entries[next], {}};
        if (!table.entry.isUserTable())
            continue;
        table.origin.created = valueOr(row, created, OleDate{});
        table.origin.updated = valueOr(row, updated, OleDate{});
        table.origin.hidden = (table.entry.flags & kHiddenFlag) != 0;
        try {
            table.origin.properties = Properties(valueOr(row, properties, Binary{}), source.codePage());
        } catch (const Error& damage) {
            observer.leftOut("properties of table", table.entry.name, damage.what());
        }
        if (const auto key = keys.find(row.id()); key != keys.end())
            table.origin.nameKey = key->second;
        tables.push_back(std::move(table));
    }
    return tables;
}

bool hasTextIndex(const TableTransfer& transfer) {
    return std::ranges::any_of(transfer.indexes(), [&](const TableTransfer::IndexPlan& plan) {
        return std::ranges::any_of(plan.physical.columns, [&](const IndexColumn& part) {
            const Column& column = *transfer.design().columnByNumber(part.column);
            return column.type == ColumnType::Text || column.type == ColumnType::Memo;
        });
    });
}

/// The entries of a source's index, leading to the rows of the new table. `moved` is sorted.
IndexEntries takenOver(Database& source, const TableDefinition& table, std::size_t physical, const MovedRows& moved) {
    const PhysicalIndex& index = table.physicalIndexes[physical];
    const IndexTree tree(source.pager(), source.allocator(), {index.root, index.ownedMap, table.page});
    IndexEntries entries;
    for (auto cursor = tree.begin(); cursor.valid(); cursor.next()) {
        const auto row = std::ranges::lower_bound(moved, cursor.row(), {}, &MovedRows::value_type::first);
        if (row == moved.end() || row->first != cursor.row())
            source.pager().corrupt(cursor.row().page, 0, "an entry of the index leads to no record");
        entries.sorted.push_back({KeyBytes(cursor.key().begin(), cursor.key().end()), row->second});
    }
    std::ranges::sort(entries.sorted, [](const IndexTree::Entry& a, const IndexTree::Entry& b) {
        return std::tie(a.key, a.row) < std::tie(b.key, b.row);
    });
    for (std::size_t i = 0; i < entries.sorted.size(); ++i)
        entries.distinctKeys += i == 0 || entries.sorted[i].key != entries.sorted[i - 1].key ? 1U : 0U;
    return entries;
}

/// Copies table after table.
class Copy {
public:
    Copy(Database& source, Database& target, CopyObserver& observer)
        : source_(source), target_(target), observer_(observer) {}

    CopyCounts run() {
        std::vector<SourceTable> tables = userTables(source_, observer_);
        for (const SourceTable& table : tables)
            total_ += source_.table(table.entry.name).rowCount();
        for (SourceTable& table : tables)
            copyTable(table);
        return counts_;
    }

private:
    void copyTable(SourceTable& from) {
        Table& source = source_.table(from.entry.name);
        const TableTransfer transfer(source.definition(), target_.sortOrder(), TableTransfer::Orders::Kept);
        for (const TableTransfer::Note& note : transfer.notes())
            observer_.leftOut("field", from.entry.name + u"." + note.name, note.text);
        if (transfer.columns().empty()) {
            observer_.leftOut("table", from.entry.name, "none of its fields can be carried over");
            return;
        }
        from.origin.properties = propertiesFor(std::move(from.origin.properties), transfer);
        Table& table = target_.createTable(transfer.design(), from.origin);
        const MovedRows moved = copyRows(source, transfer, table);
        for (const TableTransfer::IndexPlan& plan : transfer.indexes())
            copyIndex(source.definition(), plan, table, moved);
        ++counts_.tables;
    }

    MovedRows copyRows(const Table& source, const TableTransfer& transfer, Table& table) {
        MovedRows moved;
        const bool remembers = source_.dialect() == Dialect::Jet4 && hasTextIndex(transfer);
        RowAppender appender(target_, table);
        const auto readLong = [this](std::span<const std::byte> field) {
            std::vector<std::byte> bytes;
            readLongValue(source_.pager(), field, bytes);
            return bytes;
        };
        Row row;
        for (TableScan scan = source.scan(); scan.next(row);) {
            std::vector<StoredField> fields(table.definition().columns.size());
            for (const TableTransfer::ColumnPlan& plan : transfer.columns())
                fields[plan.to] = transfer.field(plan, row.view(), readLong);
            const RowId to = appender.append(std::move(fields));
            if (remembers)
                moved.emplace_back(row.id(), to);
            observer_.progress(table.name(), ++counts_.rows, total_);
        }
        appender.finish();
        return moved; // a scan goes through the source's rows in ascending order
    }

    void copyIndex(const TableDefinition& source, const TableTransfer::IndexPlan& plan, Table& table,
                   const MovedRows& moved) {
        TableDefinition definition = table.definition();
        definition.physicalIndexes.push_back(plan.physical);
        for (const LogicalIndex& name : plan.names)
            definition.addLogicalIndex(name).physical =
                static_cast<std::uint32_t>(definition.physicalIndexes.size() - 1);
        IndexEntries entries;
        try {
            entries = makeIndexEntries(table, definition, definition.physicalIndexes.size() - 1);
        } catch (const Error& refusal) {
            // Keys of orders and characters that are not known here, and texts that other orders tell apart.
            if (refusal.kind() != Error::Kind::KeyNotPossible && refusal.kind() != Error::Kind::DuplicateKey)
                throw;
            if (moved.empty()) {
                for (const LogicalIndex& name : plan.names)
                    observer_.leftOut("index", table.name() + u"." + name.name, refusal.what());
                return;
            }
            entries = takenOver(source_, source, plan.source, moved);
        }
        PhysicalIndex physical = plan.physical;
        physical.entriesAtCompaction = static_cast<std::uint32_t>(entries.sorted.size());
        target_.addIndex(table.name(), std::move(physical), plan.names, entries);
        ++counts_.indexes;
    }

    Database& source_;
    Database& target_;
    CopyObserver& observer_;
    CopyCounts counts_;
    std::size_t total_ = 0;
};

/// What an object is called that is no table; empty for those that every database has or makes anew.
std::string_view objectKind(const CatalogEntry& entry) {
    struct Kind {
        std::int16_t type;
        std::string_view name;
    };
    // Those that are no ObjectType are of the user interface of Access, or serve relations.
    constexpr Kind kKinds[] = {{4, "linked table"}, {5, "query"},         {6, "linked table"},
                               {8, "relationship"}, {9, "constraint"},    {-32768, "form"},
                               {-32766, "macro"},   {-32764, "report"},   {-32761, "module"},
                               {-32758, "user"},    {-32757, "document"}, {-32756, "data access page"}};
    if (entry.type == 1)
        return entry.id > 5 || entry.id < 2 ? "system table" : "";
    const auto kind = std::ranges::find(kKinds, entry.type, &Kind::type);
    if (kind != std::end(kKinds))
        return kind->name;
    return entry.type == 2 || entry.type == 3 ? "" : "object";
}

} // namespace

NewDatabase orderAfter(const Database& source) {
    if (source.dialect() != Dialect::Jet4)
        return {};
    return {source.sortOrder(), source.codePage()};
}

Properties propertiesFor(Properties properties, const TableTransfer& transfer) {
    constexpr std::uint16_t kColumnOwner = 1;
    std::erase_if(properties.owners,
                  [&](const PropertyOwner& owner) { return owner.kind == kColumnOwner && !transfer.has(owner.name); });
    for (PropertyOwner& owner : properties.owners) {
        const auto plan = std::ranges::find_if(transfer.columns(), [&](const TableTransfer::ColumnPlan& each) {
            return platform::equalNoCase(each.from->name, owner.name);
        });
        if (owner.kind != kColumnOwner || plan == transfer.columns().end() || !plan->from->isCalculated())
            continue;
        std::erase_if(owner.properties, [](const Property& property) {
            return property.name == u"Expression" || property.name == u"ResultType";
        });
    }
    return properties;
}

void tellOtherObject(const CatalogEntry& object, CopyObserver& observer) {
    if (const std::string_view kind = objectKind(object); !object.isUserTable() && !kind.empty())
        observer.leftOut(kind, object.name, "only tables are carried over");
}

CopyCounts compactDatabase(platform::Platform& platform, Database& source, std::u16string_view target,
                           CopyObserver& observer) {
    NewDatabaseFile file(platform, target, orderAfter(source)); // first: a target that is there costs no check
    requireSound(source);
    for (const CatalogEntry& entry : source.catalog())
        tellOtherObject(entry, observer);
    const CopyCounts counts = Copy(source, file.database(), observer).run();
    file.finish();
    return counts;
}

} // namespace kelb::jet
