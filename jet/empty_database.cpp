#include "jet/empty_database.h"

#include "jet/byte_order.h"
#include "jet/catalog.h"
#include "jet/data_page.h"
#include "jet/file_header.h"
#include "jet/index_tree.h"
#include "jet/table_definition_layout.h"
#include "jet/table_environment.h"
#include "jet/usage_map.h"

#include <array>
#include <cassert>
#include <initializer_list>
#include <memory>
#include <span>
#include <vector>

namespace kelb::jet {

namespace {

constexpr std::uint32_t kPages = 16;
constexpr PageNumber kMapPage{6};
constexpr PageNumber kObjectRows{14}, kRightRows{15};

constexpr std::uint8_t kFixed = 0x13, kVariable = 0x12, kAccount = 0x32; ///< flags of columns in system tables
constexpr std::uint16_t kLongText = 510;

struct SystemColumn {
    const char16_t* name;
    ColumnType type;
    std::uint16_t length;
    std::uint8_t flags;
};
struct SystemIndex {
    const char16_t* name;
    std::initializer_list<std::uint16_t> columns; ///< numbers
    std::uint8_t flags;
    std::uint8_t kind;
};

constexpr SystemColumn kObjectColumns[] = {
    {u"Id", ColumnType::Long, 4, kFixed},
    {u"ParentId", ColumnType::Long, 4, kFixed},
    {u"Name", ColumnType::Text, kLongText, kVariable},
    {u"Type", ColumnType::Integer, 2, kFixed},
    {u"DateCreate", ColumnType::DateTime, 8, kFixed},
    {u"DateUpdate", ColumnType::DateTime, 8, kFixed},
    {u"Owner", ColumnType::Binary, kLongText, kAccount},
    {u"Flags", ColumnType::Long, 4, kFixed},
    {u"Database", ColumnType::Memo, 0, kVariable},
    {u"Connect", ColumnType::Memo, 0, kVariable},
    {u"ForeignName", ColumnType::Text, kLongText, kVariable},
    {u"RmtInfoShort", ColumnType::Binary, kLongText, kVariable},
    {u"RmtInfoLong", ColumnType::Ole, 0, kVariable},
    {u"Lv", ColumnType::Ole, 0, kVariable},
    {u"LvProp", ColumnType::Ole, 0, kVariable},
    {u"LvModule", ColumnType::Ole, 0, kVariable},
    {u"LvExtra", ColumnType::Ole, 0, kVariable},
};
constexpr SystemColumn kRightColumns[] = {
    {u"ObjectId", ColumnType::Long, 4, kFixed},
    {u"SID", ColumnType::Binary, kLongText, kAccount},
    {u"ACM", ColumnType::Long, 4, kFixed},
    {u"FInheritable", ColumnType::YesNo, 1, kFixed},
};
constexpr SystemColumn kQueryColumns[] = {
    {u"ObjectId", ColumnType::Long, 4, kFixed},
    {u"Attribute", ColumnType::Byte, 1, kFixed},
    {u"Order", ColumnType::Binary, kLongText, kVariable},
    {u"Name1", ColumnType::Text, kLongText, kVariable},
    {u"Name2", ColumnType::Text, kLongText, kVariable},
    {u"Expression", ColumnType::Memo, 0, kVariable},
    {u"Flag", ColumnType::Integer, 2, kFixed},
    {u"LvExtra", ColumnType::Long, 4, kFixed},
};
constexpr SystemColumn kRelationshipColumns[] = {
    {u"szRelationship", ColumnType::Text, kLongText, kVariable},
    {u"grbit", ColumnType::Long, 4, kFixed},
    {u"ccolumn", ColumnType::Long, 4, kFixed},
    {u"icolumn", ColumnType::Long, 4, kFixed},
    {u"szObject", ColumnType::Text, kLongText, kVariable},
    {u"szColumn", ColumnType::Text, kLongText, kVariable},
    {u"szReferencedObject", ColumnType::Text, kLongText, kVariable},
    {u"szReferencedColumn", ColumnType::Text, kLongText, kVariable},
};

/// Accounts as stored under the fixed header (see file_header.cpp).
using Account = std::array<std::byte, 2>;
constexpr Account kAdministrator{std::byte{0x64}, std::byte{0x8B}};
constexpr Account kUsers{std::byte{0x65}, std::byte{0x8B}};
constexpr Account kEngine{std::byte{0x65}, std::byte{0x89}};
constexpr Account kCreatorOwner{std::byte{0x65}, std::byte{0x8E}};

/// Makes the system tables one after the other; their maps fill page 6 and their roots the pages behind it.
class SystemTables {
public:
    SystemTables(Pager& pager, PageAllocator& allocator, platform::Random& random, SortOrder sortOrder)
        : pager_(pager), allocator_(allocator), random_(random), sortOrder_(sortOrder) {
        PageEdit maps = pager_.edit(kMapPage);
        DataPageEditor::format(maps, 0);
    }

    /// `rows`: its first data page, or none.
    void add(const char16_t* name, PageNumber page, std::span<const SystemColumn> columns,
             std::initializer_list<SystemIndex> indexes, PageNumber rows);
    std::unique_ptr<Table> open(const char16_t* name, PageNumber page);

private:
    RowId newMap(PageNumber member);
    void addIndex(TableDefinition& table, const SystemIndex& index);

    Pager& pager_;
    PageAllocator& allocator_;
    platform::Random& random_;
    SortOrder sortOrder_;
    PageNumber nextRoot_{7};
    std::uint64_t version_ = 0;
};

RowId SystemTables::newMap(PageNumber member) {
    const RowId map = createMaps(pager_, allocator_, 1, kMapPage).front();
    if (member != kNoPage)
        UsageMap(pager_, map).add(member, allocator_);
    return map;
}

void SystemTables::addIndex(TableDefinition& table, const SystemIndex& index) {
    const PageNumber root = nextRoot_;
    nextRoot_ = PageNumber{raw(root) + 1};
    PageEdit page = pager_.edit(root);
    IndexTree::formatRoot(page, table.page);

    PhysicalIndex physical;
    for (const std::uint16_t column : index.columns)
        physical.columns.push_back({column, true});
    physical.ownedMap = newMap(root);
    physical.root = root;
    physical.flags = index.flags;
    table.physicalIndexes.push_back(physical);

    LogicalIndex logical;
    logical.name = index.name;
    logical.physical = static_cast<std::uint32_t>(table.physicalIndexes.size() - 1);
    logical.kind = index.kind;
    table.addLogicalIndex(logical);
}

void SystemTables::add(const char16_t* name, PageNumber page, std::span<const SystemColumn> columns,
                       std::initializer_list<SystemIndex> indexes, PageNumber rows) {
    TableDefinition table;
    table.name = name;
    table.page = page;
    table.tableType = kSystemTable;
    table.ownedMap = newMap(rows);
    table.freeMap = newMap(rows);
    std::vector<ColumnMaps> maps;
    for (const SystemColumn& each : columns) {
        Column column;
        column.name = each.name;
        column.type = each.type;
        column.length = each.length;
        column.flags = each.flags;
        column.sortOrder = sortOrder_;
        const std::uint16_t number = table.addColumn(column).number;
        if (column.isLongValue()) {
            const RowId owned = newMap(kNoPage);
            maps.push_back({number, owned, newMap(kNoPage)});
        }
    }
    for (const Column& column : table.columns) // listed in the order of the blocks, made in the order of the numbers
        for (const ColumnMaps& each : maps)
            if (each.column == column.number)
                table.longValueMaps.push_back(each);
    for (const SystemIndex& index : indexes)
        addIndex(table, index);
    writeTableDefinition(pager_, allocator_, table);
    if (rows != kNoPage) {
        PageEdit data = pager_.edit(rows);
        DataPageEditor::format(data, raw(page));
    }
}

std::unique_ptr<Table> SystemTables::open(const char16_t* name, PageNumber page) {
    return std::make_unique<Table>(std::make_unique<Table::Environment>(
        Table::Environment{pager_, allocator_, random_, Dialect::Jet4, 1252, name, page, version_, {}}));
}

void writeGlobalMaps(Pager& pager) {
    PageEdit page = pager.edit(kGlobalMap.page);
    DataPageEditor::format(page, 1);
    DataPageEditor editor(pager, page);
    std::vector<std::byte> row(UsageMap::kNewMapBytes, std::byte{0xFF});
    store8(row.data(), 0);
    store32(&row[1], 0);
    store16(&row[5], 0); // the 16 pages are in use
    editor.add(SlotKind::Row, row);
    editor.add(SlotKind::Row, std::vector<std::byte>(UsageMap::kNewMapBytes));
}

void addObjectRows(Table& objects, OleDate created) {
    struct Object {
        std::int32_t id, parent;
        const char16_t* name;
        ObjectType type;
        Account owner;
    };
    const Object rows[] = {
        {kTablesId, kRootId, u"Tables", ObjectType::Container, kEngine},
        {kDatabasesId, kRootId, u"Databases", ObjectType::Container, kEngine},
        {kRelationshipsId, kRootId, u"Relationships", ObjectType::Container, kEngine},
        {0x10000000, kDatabasesId, u"MSysDb", ObjectType::Database, kAdministrator},
        {2, kTablesId, u"MSysObjects", ObjectType::Table, kEngine},
        {3, kTablesId, u"MSysACEs", ObjectType::Table, kEngine},
        {4, kTablesId, u"MSysQueries", ObjectType::Table, kEngine},
        {5, kTablesId, u"MSysRelationships", ObjectType::Table, kEngine},
    };
    for (const Object& each : rows) {
        NamedRow row(objects.definition());
        row.set(u"Id", each.id)
            .set(u"ParentId", each.parent)
            .set(u"Name", std::u16string(each.name))
            .set(u"Type", static_cast<std::int16_t>(each.type))
            .set(u"DateCreate", created)
            .set(u"DateUpdate", created)
            .set(u"Owner", Binary(each.owner.begin(), each.owner.end()))
            .set(u"Flags", static_cast<std::int32_t>(0x80000000U));
        objects.insert(row.values());
    }
}

void addRightRows(Table& rights) {
    struct Right {
        std::int32_t object, mask;
        Account account;
        bool inheritable;
    };
    const Right rows[] = {
        {2, 0x60000, kAdministrator, false},
        {3, 0x60000, kAdministrator, false},
        {4, 0x60000, kAdministrator, false},
        {5, 0xE0000, kAdministrator, false},
        {kTablesId, 0xF00FE, kCreatorOwner, true},
        {kTablesId, 0x60001, kAdministrator, false},
        {kRelationshipsId, 0xF00FE, kCreatorOwner, true},
        {kRelationshipsId, 0x60001, kAdministrator, false},
        {kDatabasesId, 0x60000, kAdministrator, false},
        {0x10000000, 0x6000E, kAdministrator, false},
        {0x10000000, 0x0000E, kUsers, false},
        {4, 0x14, kUsers, false},
        {5, 0x14, kUsers, false},
        {2, 0x14, kUsers, false},
        {kTablesId, 0xFFEFF, kUsers, true},
        {kRelationshipsId, 0xFFFFF, kUsers, true},
    };
    for (const Right& each : rows) {
        NamedRow row(rights.definition());
        row.set(u"ObjectId", each.object)
            .set(u"SID", Binary(each.account.begin(), each.account.end()))
            .set(u"ACM", each.mask)
            .set(u"FInheritable", each.inheritable);
        rights.insert(row.values());
    }
}

} // namespace

void writeEmptyDatabase(Pager& pager, PageAllocator& allocator, platform::Random& random,
                        const EmptyDatabase& options) {
    assert(pager.pageCount() == 0);
    for (std::uint32_t page = 0; page < kPages; ++page)
        pager.append();
    writeFileHeader(pager.edit(PageNumber{0}).bytes(), options.codePage, options.sortOrder);
    writeGlobalMaps(pager);

    SystemTables tables(pager, allocator, random, options.sortOrder);
    tables.add(u"MSysObjects", kObjectsPage, kObjectColumns,
               {{u"ParentIdName", {1, 2}, 0x81, 0}, {u"Id", {0}, 0x81, 1}}, kObjectRows);
    tables.add(u"MSysACEs", kRightsPage, kRightColumns, {{u"ObjectId", {0}, 0x88, 0}}, kRightRows);
    tables.add(u"MSysQueries", kQueriesPage, kQueryColumns, {{u"ObjectIdAttribute", {0, 1, 2}, 0x81, 1}}, kNoPage);
    tables.add(u"MSysRelationships", kRelationshipsPage, kRelationshipColumns,
               {{u"szRelationship", {0}, 0x82, 0}, {u"szObject", {4}, 0x82, 0}, {u"szReferencedObject", {6}, 0x82, 0}},
               kNoPage);

    addObjectRows(*tables.open(u"MSysObjects", kObjectsPage), options.created);
    addRightRows(*tables.open(u"MSysACEs", kRightsPage));
}

} // namespace kelb::jet
