#pragma once

#include "app/job_button.h"

#include <vector>

namespace kelb::app {

class JobContexts;

/// The buttons of Form1 that start something, with the jobs of this build. `Command14` and `Command7` are not among
/// them: they do nothing. Kept.
[[nodiscard]] std::vector<JobButton> jobButtons(JobContexts& contexts);

} // namespace kelb::app
