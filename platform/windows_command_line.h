#pragma once

#include <string>
#include <vector>

namespace kelb::platform {

/// One line from which a program reads back its name and the UTF-8 arguments as they are.
[[nodiscard]] std::wstring commandLine(const std::wstring& program, const std::vector<std::string>& arguments);

} // namespace kelb::platform
