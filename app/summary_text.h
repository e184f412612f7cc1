#pragma once

#include "app/texts.h"
#include "jobs/job_summary.h"

#include <QString>

namespace kelb::app {

/// A finished job in one paragraph: rows, what became of them, silent passes by reason, time. Counts that are zero are
/// left out. `job` names it, may be null.
[[nodiscard]] QString summaryText(const jobs::JobSummary& summary, const texts::JobText* job);

} // namespace kelb::app
