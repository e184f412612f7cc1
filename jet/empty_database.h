#pragma once

#include "jet/pager.h"
#include "jet/table_definition.h"
#include "jet/value.h"

#include <cstdint>

namespace kelb::platform {
class Random;
}

namespace kelb::jet {

class PageAllocator;

/// Of a new database. Sort order and code page are those of Western editions of Access; other ones are for tests.
struct EmptyDatabase {
    OleDate created; ///< shown in the catalog
    SortOrder sortOrder;
    std::uint16_t codePage = 1252;
};

/// Writes the 16 pages of a database without tables into an empty file: header, global maps, definitions, maps and
/// index roots of the four system tables, their rows. Byte for byte what the original engine makes, but for junk in
/// unused bytes. Requires an operation and a pager without pages.
void writeEmptyDatabase(Pager& pager, PageAllocator& allocator, platform::Random& random, const EmptyDatabase& options);

} // namespace kelb::jet
