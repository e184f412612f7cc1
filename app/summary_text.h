#pragma once

#include "app/texts.h"
#include "jobs/job_summary.h"

#include <QString>

namespace kelb::app {

/// A finished job in one paragraph: rows, what became of them, silent passes by reason, time. Counts that are zero are
/// left out. `job` names it, may be null.
[[nodiscard]] QString summaryText(const jobs::JobSummary& summary, const texts::JobText* job);

/// A bar of the chart: "跳过：过长 12".
[[nodiscard]] QString groupText(const jobs::RowGroup& group);

} // namespace kelb::app
