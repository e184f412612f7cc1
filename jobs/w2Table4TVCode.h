#pragma once

#include "ado/connection.h"

#include <string_view>

namespace kelb::jobs {

/// Notes in a table of set codes (TVCode, occurTimes, fromIDs) that a record has this code: counts one more and adds
/// the record's id behind the others, or adds the code's first row. The code goes into the statement as it stands, so
/// that one with an apostrophe is an error of the database. Throws ado::Error; the table is then as it was.
void w2Table4TVCode(ado::Connection& connection, std::u16string_view code, std::u16string_view recordId,
                    std::u16string_view table);

} // namespace kelb::jobs
