#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelb::platform {

/// Name of the file that holds the program `name`.
[[nodiscard]] std::u16string programFile(std::u16string_view name);

/// Runs a program with our own streams and environment and waits for its end. `path` is a path of this machine, the
/// arguments (without the program's name) are UTF-8. Returns its exit status, or 128 + the signal that ended it
/// (on Windows the code of the fault).
/// Throws FileError when it cannot be started.
[[nodiscard]] int runProgram(std::u16string_view path, const std::vector<std::string>& arguments);

} // namespace kelb::platform
