#pragma once

#include "jet/catalog.h"
#include "jet/database.h"
#include "jet/file_header.h"
#include "jet/pager.h"
#include "jet/usage_map.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jet {

/// What an open database consists of (database.cpp opens and reads, database_schema.cpp changes definitions).
struct Database::State {
    State(platform::Platform& environment, std::u16string_view path, const FileHeader& fileHeader,
          std::unique_ptr<platform::RandomAccessFile> file, Pager::Access access);

    /// The one Table of a definition page and name.
    Table& tableAt(std::u16string_view name, PageNumber page);
    /// Throws Error (NoSuchTable), also for system tables, and as Table::requireWritable.
    Table& tableToChange(std::u16string_view name);
    std::unique_ptr<Table> makeTable(std::u16string_view name, PageNumber page, bool hasProperties);
    OleDate now() const;
    /// Remembered definitions and catalog rows are void.
    void noteSchemaChange();

    struct OpenTable {
        std::u16string name;
        PageNumber page;
        std::unique_ptr<Table> table;
    };

    platform::Platform& platform;
    FileHeader header;
    Pager pager;
    PageAllocator allocator;
    std::uint64_t schemaVersion = 1;
    std::unique_ptr<Table> objects, rights;
    Catalog catalog;
    std::vector<OpenTable> tables; ///< never removed from: references to them stay valid
};

} // namespace kelb::jet
