#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct UndoOptions {
    std::u16string trash; ///< empty: the context's trash folder; the folder of one run is taken as well
    std::u16string run;   ///< name of the only run to be undone; empty: all
};

inline constexpr const char* kUndoJob = "undo";

/// Puts back what jobs moved to the trash, the newest run first: files to their old places, rows into their tables with
/// the autonumbers that they had. Nothing is overwritten; what cannot be put back is told and stays in the trash. Runs
/// that are undone are passed over, so that it may be repeated, also after a kill. Ends with the runs or at a stop.
/// Throws SettingError without a trash folder, platform::FileError when it or a run's record cannot be read or written,
/// and JobError when there is no such run or something could not be put back; what was put back until then stays.
void undoTrash(const UndoOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
