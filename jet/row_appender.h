#pragma once

#include "jet/database.h"
#include "jet/row_record.h"
#include "jet/row_store.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kelb::jet {

/// Appends records to a table that has no index, by the stored bytes of their fields: no value is converted or checked.
/// For tables of a database open for writing that nobody else changes meanwhile.
class RowAppender {
public:
    RowAppender(Database& database, Table& table);

    /// `fields` in the order of definition().columns; of memo and OLE columns their stored bytes, wherever they are to
    /// lie. One operation. Throws Error (RecordTooLarge, FileFull), FileError; the table is then as before.
    RowId append(std::vector<StoredField> fields);
    /// Notes the number of rows and the highest autonumber in the definition.
    void finish();

private:
    Database& database_;
    const TableDefinition& definition_;
    RowStore rows_;
    std::optional<std::size_t> autonumber_; ///< its place among the columns
    std::int32_t highest_ = 0;
    std::uint32_t appended_ = 0;
};

} // namespace kelb::jet
