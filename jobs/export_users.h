#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct ExportUsersOptions {
    std::u16string database; ///< empty: [Paths] dvUserDb
};

inline constexpr const char* kExportUsersJob = "export-users";

/// Writes the names of the first 300 rows of DVUser that begin with a double-byte character to an overflow file, each
/// with "|" behind it: the form of "userNames.txt". Cannot be stopped.
/// Throws JobError, ado::Error and platform::FileError (no folder TestRec); no file is written then.
void exportUsers(const ExportUsersOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
