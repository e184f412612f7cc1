#pragma once

#include "jet/error.h"
#include "jet/properties.h"
#include "jet/table.h"
#include "jet/table_definition.h"

#include "platform/platform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jet {

struct NewColumn {
    std::u16string name;
    ColumnType type = ColumnType::Text;
    std::uint16_t characters = 255; ///< text, binary: their length
    std::uint8_t precision = 18, scale = 0;
    bool autonumber = false;
    bool required = false;   ///< NOT NULL
    bool compressed = false; ///< WITH COMPRESSION
};
struct NewIndex {
    std::u16string name; ///< empty: one is made up
    struct Part {
        std::u16string column;
        bool ascending = true;
    };
    std::vector<Part> columns;
    bool unique = false, primary = false, ignoreNulls = false, disallowNulls = false;
};
struct NewTable {
    std::u16string name;
    std::vector<NewColumn> columns;
    std::vector<NewIndex> indexes;
};

/// What a table that is made after another one takes over beside its definition.
struct TableOrigin {
    OleDate created, updated; ///< as the catalog shows them
    bool hidden = false;
    Properties properties;
    /// Key of the container of tables and the name in the other catalog's index, when both files have one sort order:
    /// for names whose keys cannot be made.
    std::optional<std::vector<std::byte>> nameKey;
};

/// What a new database sorts by.
struct NewDatabase {
    SortOrder sortOrder;
    std::uint16_t codePage = 1252;
};

struct IndexEntries;

/// One object of the catalog.
struct CatalogEntry {
    std::u16string name;
    std::int16_t type = 0; ///< 1 table, 4 and 6 linked tables, 5 query, …
    std::uint32_t flags = 0;
    std::int32_t id = 0;
    bool isUserTable() const noexcept { return type == 1 && (flags & 0x80000002U) == 0; }
};

/// An open Access database. Owns its file, lock and pages. One thread.
class Database {
public:
    struct OpenOptions {
        Pager::Access access = Pager::Access::Read;
        bool ignoreLockFile = false; ///< write although an .ldb or .laccdb lies beside it
    };

    /// Plays back a journal left by a kill, then checks header, version, encryption and password.
    /// Throws Error (NotADatabase, Encrypted, PasswordProtected, InUse, UnsupportedVersion), CorruptFile, FileError.
    static std::unique_ptr<Database> open(platform::Platform& platform, std::u16string_view path, OpenOptions options);
    /// An empty Access 2000 database, open for writing. Throws FileError (AlreadyExists) when something is at the path.
    static std::unique_ptr<Database> create(platform::Platform& platform, std::u16string_view path,
                                            const NewDatabase& options = {});

    ~Database(); ///< commits nothing; call commit() first
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    const std::u16string& path() const noexcept;
    Dialect dialect() const noexcept;
    bool writable() const noexcept;
    std::uint16_t codePage() const noexcept;
    SortOrder sortOrder() const noexcept;

    std::vector<CatalogEntry> catalog() const; ///< every object, system ones too, in catalog order
    /// Any table of the catalog, system tables too; names without regard to case. Throws Error (NoSuchTable), which for
    /// linked tables and queries says what they are. The reference stays valid.
    Table& table(std::u16string_view name);
    bool hasTable(std::u16string_view name) const;

    Table& createTable(const NewTable& table); ///< Throws Error (AlreadyExists, BadName, BadDefinition, ReadOnly, …).
    /// A table by a definition that TableDefinition::addColumn put together, without indexes; pages and maps are made
    /// here, numbers of rows and autonumbers are taken over. Throws as above.
    Table& createTable(TableDefinition design, const TableOrigin& origin);
    void addColumn(std::u16string_view table, const NewColumn& column); ///< rows that are there get Null, or numbers
    void createIndex(std::u16string_view table, const NewIndex& index); ///< throws also DuplicateKey, KeyNotPossible
    /// An index whose entries are made already (jet/index_entries.h), under all the names given. Changes no date.
    void addIndex(std::u16string_view table, PhysicalIndex index, std::span<const LogicalIndex> names,
                  const IndexEntries& entries);

    void beginTransaction();
    void commitTransaction();
    void rollbackTransaction();
    void commit();
    void commitIfDue();

    Pager& pager() noexcept;
    PageAllocator& allocator() noexcept;

private:
    struct State;
    explicit Database(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace kelb::jet
