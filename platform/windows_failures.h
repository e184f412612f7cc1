#pragma once

#include "platform/file_error.h"

namespace kelb::platform {

// Codes of the system that the headers of mingw-w64 10 do not name.
inline constexpr unsigned long kIsFolder = 336;     ///< ERROR_DIRECTORY_NOT_SUPPORTED
inline constexpr unsigned long kQuotaUsedUp = 1295; ///< ERROR_DISK_QUOTA_EXCEEDED

/// The error of a call that failed with `code` (GetLastError), in the words that every other system gets where there
/// are such, else in those of Windows.
[[nodiscard]] FileError windowsFailure(std::string_view operation, std::u16string_view path, unsigned long code);

} // namespace kelb::platform
