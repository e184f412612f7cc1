#pragma once

#include "ado/connection_string.h"
#include "ado/odbc_error.h"

#include <string>
#include <vector>

namespace kelb::ado {

/// A driver that the system's driver manager knows.
struct OdbcDriver {
    std::u16string name;
    std::u16string library; ///< its file, as registered; may be empty
};

[[nodiscard]] std::vector<OdbcDriver> installedOdbcDrivers(const OdbcHandle& environment);

/// What a connection string asks of ODBC: the string for the driver manager, and what messages say of it.
struct OdbcTarget {
    std::u16string connectionString;
    OdbcPlace place;
};

/// Of a key that stands twice the last value counts; Mode and Provider are ours and left out; values that hold ";" are
/// put in braces. "SQL Server" is looked for among the installed drivers without regard to case; where the system has
/// none of that name, FreeTDS is taken: our own entry, which hides none of the system's drivers and data sources.
/// Throws Error (Connection) for a driver that is not installed, naming those that are.
[[nodiscard]] OdbcTarget odbcTarget(const ConnectionString& connection, const std::vector<OdbcDriver>& installed);

} // namespace kelb::ado
