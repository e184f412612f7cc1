#pragma once

#include "ado/connection.h"
#include "ado/recordset.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

namespace kelb::jobs {

/// What a job's walk goes over, and how it differs from the usual one.
struct RowWalk {
    enum class CountLine { TotalRec, None }; ///< "totalRec: " + count, or whatever the job logs itself
    enum class Stop { Watched, Ignored };
    enum class Label { Usual, Own }; ///< "已处理: …", or whatever the job shows itself

    ado::Recordset& rows;                      ///< open, at its first row
    std::vector<ado::Connection*> connections; ///< whose finished changes are brought to the disk when they are due
    CountLine countLine = CountLine::TotalRec;
    Stop stop = Stop::Watched;
    Label label = Label::Usual;
    std::size_t limit = std::numeric_limits<std::size_t>::max(); ///< rows visited at most
};

/// The loop that all jobs share: count line; then for each row yield, stop test, progress, yield, `step` (given the
/// row's number from 1), next row. Ends with the rows that were counted at the start, at the end of the set or at a
/// stop request, which leaves the current row untouched and is noted in the summary. Counts the summary's rows.
void walkRows(const RowWalk& walk, JobHost& host, JobSummary& summary, const std::function<void(std::size_t)>& step);

} // namespace kelb::jobs
