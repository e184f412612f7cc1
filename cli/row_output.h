#pragma once

#include "ado/recordset.h"

#include <iosfwd>

namespace kelb::cli {

enum class RowFormat {
    Table, ///< columns under each other, long cells cut: for reading
    Jsonl, ///< one JSON object a line
    Csv    ///< RFC 4180 with a line of names
};

/// Writes the rows from the current one to the last. JSON lines and CSV are written as they are read.
void writeRows(ado::Recordset& rows, RowFormat format, std::ostream& out);

} // namespace kelb::cli
