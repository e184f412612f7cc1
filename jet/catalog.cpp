#include "jet/catalog.h"

#include "jet/error.h"

#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jet {

namespace {

/// Columns of MSysObjects that are read.
struct ObjectColumns {
    const Column &id, &parent, &name, &type, &flags;
};

const Column& columnOf(const TableDefinition& table, std::u16string_view name) {
    const Column* column = table.findColumn(name);
    if (column == nullptr)
        throw Error(Error::Kind::NotADatabase, "the catalog lacks its column " + platform::toUtf8(table.name) + "." +
                                                   platform::toUtf8(name) + ": not an Access database, or damaged");
    return *column;
}

template <class T>
T valueOr(const Row& row, const Column& column, T otherwise) {
    const Value value = row.value(column);
    const T* held = std::get_if<T>(&value);
    return held != nullptr ? *held : otherwise;
}

bool isNamedByTables(const CatalogObject& object) {
    return object.parent == kTablesId || object.entry.type == static_cast<std::int16_t>(ObjectType::Table);
}

/// Ids of accounts are stored XORed with a stream that differs from file to file, so only their relation is known:
/// "creator owner" is the administrator's id XOR 01 05.
Binary creatorOwner(const Binary& administrator) {
    Binary id = administrator;
    if (id.size() == 2) {
        id[0] ^= std::byte{0x01};
        id[1] ^= std::byte{0x05};
    }
    return id;
}

Value propertyValue(const Properties& properties) {
    if (properties.owners.empty())
        return Null{};
    return properties.build();
}

} // namespace

std::optional<std::size_t> nameIndex(const TableDefinition& objects) {
    const Column* parent = objects.findColumn(u"ParentId");
    const Column* name = objects.findColumn(u"Name");
    for (std::size_t i = 0; i < objects.physicalIndexes.size(); ++i) {
        const std::vector<IndexColumn>& parts = objects.physicalIndexes[i].columns;
        if (parent != nullptr && name != nullptr && parts.size() == 2 && parts[0].column == parent->number &&
            parts[1].column == name->number)
            return i;
    }
    return std::nullopt;
}

NamedRow::NamedRow(const TableDefinition& table) : table_(table), values_(table.columns.size(), Null{}) {}

NamedRow& NamedRow::set(std::u16string_view column, Value value) {
    const Column* found = table_.findColumn(column);
    if (found == nullptr)
        throw Error(Error::Kind::BadDefinition,
                    "table " + platform::toUtf8(table_.name) + " lacks its field " + platform::toUtf8(column));
    values_[static_cast<std::size_t>(found - table_.columns.data())] = std::move(value);
    return *this;
}

Catalog::Catalog(const Pager& pager, Table& objects, Table& rights)
    : pager_(pager), objectsTable_(objects), rightsTable_(rights) {}

const std::vector<CatalogObject>& Catalog::objects() const {
    if (epoch_ != pager_.epoch())
        load();
    return objects_;
}

void Catalog::load() const {
    const TableDefinition& table = objectsTable_.definition();
    const ObjectColumns columns{columnOf(table, u"Id"), columnOf(table, u"ParentId"), columnOf(table, u"Name"),
                                columnOf(table, u"Type"), columnOf(table, u"Flags")};
    objects_.clear();
    byName_.clear();
    Row row;
    for (TableScan scan = objectsTable_.scan(); scan.next(row);) {
        CatalogObject object;
        row.text(columns.name, object.entry.name);
        object.entry.id = valueOr<std::int32_t>(row, columns.id, 0);
        object.entry.type = valueOr<std::int16_t>(row, columns.type, 0);
        object.entry.flags = static_cast<std::uint32_t>(valueOr<std::int32_t>(row, columns.flags, 0));
        object.parent = valueOr<std::int32_t>(row, columns.parent, 0);
        object.row = row.id();
        if (isNamedByTables(object))
            byName_.try_emplace(object.entry.name, objects_.size());
        objects_.push_back(std::move(object));
    }
    epoch_ = pager_.epoch();
}

const CatalogObject* Catalog::find(std::u16string_view name) const {
    const std::vector<CatalogObject>& all = objects();
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : &all[found->second];
}

const CatalogObject* Catalog::findTable(PageNumber definition) const {
    const std::vector<CatalogObject>& all = objects();
    const auto found = std::find_if(all.begin(), all.end(), [&](const CatalogObject& object) {
        return object.entry.type == static_cast<std::int16_t>(ObjectType::Table) &&
               object.entry.id == static_cast<std::int32_t>(raw(definition));
    });
    return found == all.end() ? nullptr : &*found;
}

Properties Catalog::properties(PageNumber definition) const {
    const CatalogObject* object = findTable(definition);
    const Column* column = objectsTable_.definition().findColumn(u"LvProp");
    Row row;
    if (object == nullptr || column == nullptr || !objectsTable_.read(object->row, row))
        return {};
    const Value value = row.value(*column);
    const auto* stored = std::get_if<Binary>(&value);
    return stored == nullptr ? Properties{} : Properties(*stored, objectsTable_.definition().codePage);
}

/// What the object for the database itself says; new objects belong to the same account.
Value Catalog::owner() const {
    for (const CatalogObject& object : objects()) {
        Row row;
        if (object.entry.type == static_cast<std::int16_t>(ObjectType::Database) && objectsTable_.read(object.row, row))
            return row.value(columnOf(objectsTable_.definition(), u"Owner"));
    }
    return Null{};
}

void Catalog::addTable(std::u16string_view name, PageNumber definition, const TableOrigin& origin) {
    const auto id = static_cast<std::int32_t>(raw(definition));
    const Value account = owner();
    NamedRow row(objectsTable_.definition());
    row.set(u"Id", id)
        .set(u"ParentId", kTablesId)
        .set(u"Name", std::u16string(name))
        .set(u"Type", static_cast<std::int16_t>(ObjectType::Table))
        .set(u"DateCreate", origin.created)
        .set(u"DateUpdate", origin.updated)
        .set(u"Owner", account)
        .set(u"Flags", static_cast<std::int32_t>(origin.hidden ? kHiddenFlag : 0))
        .set(u"LvProp", propertyValue(origin.properties));
    std::vector<Table::KnownKey> known;
    if (const auto index = nameIndex(objectsTable_.definition()); index && origin.nameKey)
        known.push_back({*index, *origin.nameKey});
    objectsTable_.insert(row.values(), known);
    addRights(id, account);
    forget();
}

/// A new table gets what the container hands down; what it hands down to "creator owner" goes to the table's owner.
void Catalog::addRights(std::int32_t id, const Value& owner) {
    const TableDefinition& table = rightsTable_.definition();
    const Column& object = columnOf(table, u"ObjectId");
    const Column& account = columnOf(table, u"SID");
    const Column& mask = columnOf(table, u"ACM");
    const Column& inheritable = columnOf(table, u"FInheritable");
    const auto* administrator = std::get_if<Binary>(&owner);

    std::vector<NamedRow> added;
    Row row;
    for (TableScan scan = rightsTable_.scan(); scan.next(row);) {
        if (row.value(object) != Value(kTablesId) || row.value(inheritable) != Value(true))
            continue;
        Value holder = row.value(account);
        if (administrator != nullptr && holder == Value(creatorOwner(*administrator)))
            holder = owner;
        added.emplace_back(table)
            .set(u"ObjectId", id)
            .set(u"SID", std::move(holder))
            .set(u"ACM", row.value(mask))
            .set(u"FInheritable", false);
    }
    for (const NamedRow& right : added)
        rightsTable_.insert(right.values());
}

void Catalog::noteChange(PageNumber definition, OleDate now, const Properties* properties) {
    const CatalogObject* object = findTable(definition);
    if (object == nullptr)
        return;
    const TableDefinition& table = objectsTable_.definition();
    const auto place = [&table](std::u16string_view name) {
        return static_cast<std::size_t>(&columnOf(table, name) - table.columns.data());
    };
    std::vector<Change> changes{{place(u"DateUpdate"), now}};
    if (properties != nullptr)
        changes.push_back({place(u"LvProp"), propertyValue(*properties)});
    objectsTable_.update(object->row, changes);
}

} // namespace kelb::jet
