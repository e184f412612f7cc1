#pragma once

#include "jobs/configuration.h"
#include "platform/file_system.h"

#include <string>
#include <string_view>

namespace kelb::jobs {

/// The database that a job takes: what the user gave, else the settings file's, else the built-in path.
[[nodiscard]] std::u16string chosenDatabase(std::u16string_view given, const Configuration& configuration,
                                            Setting fallback);

/// The program-wide source: what the user gave, else "\Comb.mdb" in [Setup] adultFolder.
/// Throws JobError with the system's own words when no file is there.
[[nodiscard]] std::u16string sourceDatabase(std::u16string_view given, const Configuration& configuration,
                                            platform::FileSystem& files);

} // namespace kelb::jobs
