#pragma once

#include "ado/connection.h"
#include "jobs/configuration.h"
#include "jobs/job_host.h"

#include <string>
#include <string_view>

/// The database that the multi-page import and the parameter import store into: a SQL Server at first, and any other
/// that the user names instead.
namespace kelb::jobs {

/// What the user gave (--connection, --server, the window's fields); both may be empty, and `connection` goes first.
struct SinkOptions {
    /// An ADO connection string, used as it stands (Driver={…};…, DSN=…, Provider=…), or the path of an .mdb file.
    std::u16string connection;
    std::u16string server; ///< address for the built-in string
};

struct Sink {
    std::u16string connectionString;
    std::u16string shown; ///< the same for messages: a path as it stands, and never a password
};

/// The built-in string: database wxDB, login sa, empty password.
[[nodiscard]] std::u16string wxDbConnectionString(std::u16string_view server);
/// The built-in string of the page sink: database mendDB, no login in it.
[[nodiscard]] std::u16string mendDbConnectionString(std::u16string_view server);

/// What the user gave, else [SqlServer] wxDBConnection, else the built-in string with [SqlServer] server.
/// Throws SettingError when nothing says where to store, or when the server cannot stand in the built-in string.
[[nodiscard]] Sink chosenSink(const SinkOptions& options, const Configuration& configuration);

/// Opens `connection` for writing. Once a run: it warns the user when the login is sa with an empty password.
/// Throws ado::Error (Connection).
void openSink(ado::Connection& connection, const Sink& sink, JobHost& host);

} // namespace kelb::jobs
