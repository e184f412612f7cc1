#include "jet/verify.h"

#include "jet/catalog.h"
#include "jet/verification.h"

#include "platform/utf8.h"

#include <array>
#include <string_view>
#include <unordered_set>

namespace kelb::jet {
namespace {

struct SystemTable {
    PageNumber page;
    std::u16string_view name;
    std::u16string_view columns; ///< each with a blank behind it
};
constexpr std::array<SystemTable, 4> kSystemTables = {{
    {kObjectsPage, u"MSysObjects",
     u"Id ParentId Name Type DateCreate DateUpdate Owner Flags Database Connect ForeignName RmtInfoShort RmtInfoLong "
     u"Lv "
     u"LvProp LvModule LvExtra "},
    {kRightsPage, u"MSysACEs", u"ObjectId SID ACM FInheritable "},
    {kQueriesPage, u"MSysQueries", u"ObjectId Attribute Order Name1 Name2 Expression Flag LvExtra "},
    {kRelationshipsPage, u"MSysRelationships",
     u"szRelationship grbit ccolumn icolumn szObject szColumn szReferencedObject szReferencedColumn "},
}};

void checkSystemColumns(Verification& v, const TableDefinition& table, std::u16string_view names) {
    for (; !names.empty(); names.remove_prefix(names.find(u' ') + 1)) {
        const std::u16string_view name = names.substr(0, names.find(u' '));
        if (table.findColumn(name) == nullptr)
            v.error(table.page,
                    tableLabel(table) + " should have a column \"" + platform::toUtf8(name) + "\", it has none");
    }
}

std::vector<CatalogEntry> tablesOfCatalog(Verification& v) {
    std::vector<CatalogEntry> tables;
    v.guarded(kObjectsPage, "catalog", [&] {
        for (CatalogEntry& entry : v.database.catalog()) {
            if (entry.type == static_cast<std::int16_t>(ObjectType::Table))
                tables.push_back(std::move(entry));
        }
    });
    return tables;
}

/// Access refuses a table for which nobody has rights.
void checkRights(Verification& v, const std::vector<CatalogEntry>& tables) {
    v.guarded(kRightsPage, "table \"MSysACEs\"", [&] {
        Table& rights = v.database.table(u"MSysACEs");
        const Column* const column = rights.definition().findColumn(u"ObjectId");
        if (column == nullptr)
            return;
        std::unordered_set<std::int32_t> objects;
        Row row;
        for (TableScan scan = rights.scan(); scan.next(row);) {
            if (const Value value = row.value(*column); const auto* const id = std::get_if<std::int32_t>(&value))
                objects.insert(*id);
        }
        for (const CatalogEntry& table : tables) {
            if (!objects.contains(table.id))
                v.warning(kRightsPage, tableLabel(table.name) + " should have access rights in MSysACEs, it has none");
        }
    });
}

void checkTables(Verification& v, const std::vector<CatalogEntry>& tables) {
    for (const SystemTable& system : kSystemTables) {
        if (const auto table = checkDefinition(v, system.page, system.name)) {
            if (v.database.dialect() == Dialect::Jet4)
                checkSystemColumns(v, *table, system.columns);
            checkTable(v, *table);
        }
    }
    for (const CatalogEntry& entry : tables) {
        const PageNumber page{static_cast<std::uint32_t>(entry.id)};
        const bool system = page >= kSystemTables.front().page && page <= kSystemTables.back().page;
        if (system)
            continue;
        if (const auto table = checkDefinition(v, page, entry.name))
            checkTable(v, *table);
    }
}

/// Access 97: every record and long value must be readable; maps and indexes are not looked at.
void checkReadable(Verification& v, const std::vector<CatalogEntry>& tables) {
    for (const CatalogEntry& entry : tables) {
        const PageNumber page{static_cast<std::uint32_t>(entry.id)};
        v.guarded(page, tableLabel(entry.name), [&] {
            Table& table = v.database.table(entry.name);
            Row row;
            for (TableScan scan = table.scan(); scan.next(row);) {
                for (const Column& column : table.definition().columns)
                    static_cast<void>(row.value(column));
            }
        });
    }
}

} // namespace

std::vector<Fault> verify(Database& database) {
    Verification v(database);
    if (const std::size_t stray = v.pager.strayBytes(); stray != 0)
        v.error(PageNumber{v.pager.pageCount()},
                "the file should end with a whole page, this one has " + std::to_string(stray) + " bytes");
    const std::vector<CatalogEntry> tables = tablesOfCatalog(v);
    if (database.dialect() == Dialect::Jet3) {
        checkReadable(v, tables);
        return v.takeFaults();
    }
    checkGlobalMaps(v);
    checkTables(v, tables);
    checkRights(v, tables);
    checkFreePages(v);
    return v.takeFaults();
}

} // namespace kelb::jet
