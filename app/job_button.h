#pragma once

#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <functional>
#include <string>

namespace kelb::app {

/// The switches of the menu "选项", as they stood when a job was started.
struct RunOptions {
    bool dryRun = false;
    std::u16string trashFolder; ///< "" when deleted things are not kept
    std::u16string logFile;     ///< "" when none is written
    bool productRows = false;   ///< the parameter import goes by the rows of a crawl table, not through a folder
};

/// What the window holds when a job button is pressed.
struct JobRequest {
    std::u16string source;      ///< the source box; "" leaves the choice to the settings
    std::u16string destination; ///< `Text3`
    RunOptions options;
    std::function<bool()> savesParameters = [] { return false; }; ///< `Check3` as it stands when asked
};

/// A button of Form1, the box that stops its job, and the job.
struct JobButton {
    const char* button;  ///< object name
    const char* stopBox; ///< object name; "" when no box stops the job
    const char* job;     ///< the job's name, for its summary
    /// Throws what the job throws; the summary then tells how far it got.
    std::function<void(const JobRequest&, jobs::JobHost&, jobs::JobSummary&)> run;
};

} // namespace kelb::app
