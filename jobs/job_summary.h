#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelb::jobs {

/// What became of a job's rows. Counted while the job runs, so it holds after an error, too.
/// rows = saved + skipped + failed.
struct JobSummary {
    explicit JobSummary(std::string name) : job(std::move(name)) {}

    std::string job;         ///< name of the command
    std::size_t rows = 0;    ///< rows visited
    std::size_t saved = 0;   ///< rows added or filled
    std::size_t skipped = 0; ///< rows passed over without a failure
    std::size_t failed = 0;
    std::size_t deletedRows = 0, deletedFiles = 0;
    std::size_t overflowFiles = 0;                                   ///< every file that store2Disk wrote
    std::size_t replacedCharacters = 0;                              ///< written as "?" in those files
    double seconds = 0;                                              ///< set by the host
    bool stopped = false;                                            ///< ended by a stop request
    bool dryRun = false;                                             ///< nothing was changed; set by the host
    std::vector<std::pair<std::string, std::size_t>> skippedBecause; ///< in the order of their first occurrence
    std::vector<std::pair<std::string, std::size_t>> counts;         ///< what only this job counts
    std::string note;                                                ///< why the run could do nothing, else empty

    void skip(std::string_view reason); ///< one row, counted under its reason
};

/// One line: {"job": "forum-import", "rows": 12, …}. The members behind the seconds only where there is something to
/// tell.
[[nodiscard]] std::string toJson(const JobSummary& summary);

} // namespace kelb::jobs
