#pragma once

namespace kelb::cli {

/// The program: reads the arguments, runs the command, prints an error as one line on standard error.
/// Result: exit status.
int runKelb(int count, const char* const* arguments);

} // namespace kelb::cli
