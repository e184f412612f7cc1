#pragma once

#include "platform/file_error.h"

/// The errors that every file system here raises, so that a memory disk and a real one speak alike.
namespace kelb::platform {

[[nodiscard]] FileError notFound(std::string_view operation, std::u16string_view path);
[[nodiscard]] FileError alreadyThere(std::string_view operation, std::u16string_view path);
[[nodiscard]] FileError locked(std::string_view operation, std::u16string_view path);
[[nodiscard]] FileError readOnly(std::string_view operation, std::u16string_view path);
[[nodiscard]] FileError noSpace(std::string_view operation, std::u16string_view path);

/// The error of a system call that failed with `code` (errno).
[[nodiscard]] FileError systemFailure(std::string_view operation, std::u16string_view path, int code);

} // namespace kelb::platform
