#pragma once

#include "platform/date_time.h"

#include <string>

namespace kelb::jobs {

/// `20151202-083000`: the time of a run in names of files and folders; they sort by time.
[[nodiscard]] std::u16string runTime(const platform::DateTime& time);

} // namespace kelb::jobs
