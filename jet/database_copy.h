#pragma once

#include "jet/database.h"
#include "jet/row_appender.h"
#include "jet/table_transfer.h"

#include "platform/platform.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelb::jet {

/// Who is told what happens while one database is made of another.
class CopyObserver {
public:
    virtual ~CopyObserver() = default;
    /// Something of the source is not in the new database as it was, and why. `what`: "query", "field", ….
    virtual void leftOut(std::string_view what, std::u16string_view name, std::string_view why) = 0;
    /// Between rows; `total` is what the definitions of all tables promise.
    virtual void progress(std::u16string_view table, std::size_t done, std::size_t total) = 0;
};

struct CopyCounts {
    std::size_t tables = 0, rows = 0, indexes = 0;
};

/// Where the rows of a source went; for indexes whose keys cannot be made.
using MovedRows = std::vector<std::pair<RowId, RowId>>;

/// Makes a new Access 2000 database of one of any dialect: every user table with its rows and long values, no free
/// pages, indexes built anew (where a key cannot be made and the source is an Access 2000 file: with the source's
/// keys). `target` gets its name when it is whole and verified. Throws Error (Corrupt: the source has a fault that
/// verify() finds, recoverDatabase() saves what it can), CorruptFile, FileError (AlreadyExists, …); nothing is then at
/// `target`.
CopyCounts compactDatabase(platform::Platform& platform, Database& source, std::u16string_view target,
                           CopyObserver& observer);

/// Sort order and code page that a database made of `source` gets.
NewDatabase orderAfter(const Database& source);

/// Tells of an object that is no user table. Containers and what each database has are passed over.
void tellOtherObject(const CatalogEntry& object, CopyObserver& observer);

/// The properties of those columns that the new table has.
Properties propertiesFor(Properties properties, const TableTransfer& transfer);

} // namespace kelb::jet
