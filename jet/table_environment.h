#pragma once

#include "jet/table.h"

#include <functional>

namespace kelb::jet {

/// What a database lends each of its tables. All references outlive the table.
struct Table::Environment {
    Pager& pager;
    PageAllocator& allocator;
    platform::Random& random; ///< GUID autonumbers
    Dialect dialect = Dialect::Jet4;
    std::uint16_t codePage = 1252; ///< of texts in Jet 3 files
    std::u16string name;           ///< as the catalog spells it
    PageNumber page = kNoPage;     ///< first page of the definition

    /// Grows with every definition change (createTable, addColumn, createIndex): a remembered definition is void when
    /// this or Pager::epoch() has changed.
    const std::uint64_t& schemaVersion;

    /// Sets Column::required from the properties in the catalog. May be empty (system tables have none).
    std::function<void(TableDefinition&)> applyProperties;
};

} // namespace kelb::jet
