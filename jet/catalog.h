#pragma once

#include "jet/database.h"
#include "jet/properties.h"
#include "jet/table.h"

#include "platform/letter_case.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelb::jet {

inline constexpr PageNumber kObjectsPage{2}; ///< definition of MSysObjects, in every file
inline constexpr PageNumber kRightsPage{3};  ///< of MSysACEs
inline constexpr PageNumber kQueriesPage{4};
inline constexpr PageNumber kRelationshipsPage{5};

inline constexpr std::int32_t kRootId = 0x0F000000;
inline constexpr std::int32_t kTablesId = 0x0F000001; ///< the container of tables, queries and links
inline constexpr std::int32_t kDatabasesId = 0x0F000002;
inline constexpr std::int32_t kRelationshipsId = 0x0F000003;

/// Values of Type in the catalog.
enum class ObjectType : std::int16_t { Table = 1, Database = 2, Container = 3, OdbcLink = 4, Query = 5, Link = 6 };

inline constexpr std::uint32_t kHiddenFlag = 8; ///< of CatalogEntry::flags

/// Puts together a row by column names.
class NamedRow {
public:
    explicit NamedRow(const TableDefinition& table);
    /// Throws Error (BadDefinition) when the table has no such column.
    NamedRow& set(std::u16string_view column, Value value);
    const std::vector<Value>& values() const noexcept { return values_; }

private:
    const TableDefinition& table_;
    std::vector<Value> values_;
};

/// The index of MSysObjects by container and name, by its position among the physical ones.
std::optional<std::size_t> nameIndex(const TableDefinition& objects);

struct CatalogObject {
    CatalogEntry entry;
    std::int32_t parent = 0;
    RowId row; ///< in MSysObjects
};

/// What a database says about its tables: the rows of MSysObjects and of MSysACEs. Read by scanning: the name index may
/// be in an order unknown here. Remembers the objects until pages went back to an earlier state or forget().
class Catalog {
public:
    /// Both tables outlive it.
    Catalog(const Pager& pager, Table& objects, Table& rights);

    /// In stored order. Throws CorruptFile, and Error (NotADatabase) when MSysObjects lacks its columns.
    const std::vector<CatalogObject>& objects() const;
    /// Table, query or link of that name, without regard to case; null when there is none.
    const CatalogObject* find(std::u16string_view name) const;
    /// The table whose definition begins on that page; null when no row names it.
    const CatalogObject* findTable(PageNumber definition) const;
    Properties properties(PageNumber definition) const;
    void forget() noexcept { epoch_ = 0; }

    // These require an operation.
    /// Adds a table's row and the access rights that it inherits from the container.
    void addTable(std::u16string_view name, PageNumber definition, const TableOrigin& origin);
    /// Notes a changed definition, with new properties when they are given.
    void noteChange(PageNumber definition, OleDate now, const Properties* properties);

private:
    void load() const;
    Value owner() const;
    void addRights(std::int32_t id, const Value& owner);

    const Pager& pager_;
    Table& objectsTable_;
    Table& rightsTable_;
    mutable std::vector<CatalogObject> objects_;
    mutable std::unordered_map<std::u16string, std::size_t, platform::NoCaseHash, platform::NoCaseEqual> byName_;
    mutable std::uint64_t epoch_ = 0; ///< of the pager at the time of reading, 0 = not read
};

} // namespace kelb::jet
