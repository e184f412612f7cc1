#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace kelb::platform {

/// A file operation that the system refused. what() is one line: operation, path, reason, what to do where we know.
class FileError : public std::runtime_error {
public:
    enum class Kind { NotFound, AccessDenied, Locked, AlreadyExists, NoSpace, Unmapped, Other };

    FileError(Kind kind, std::string_view operation, std::u16string_view path, int systemCode, std::string_view reason);

    Kind kind() const noexcept { return kind_; }
    const std::u16string& path() const noexcept { return path_; } ///< as the caller wrote it
    int systemCode() const noexcept { return systemCode_; }       ///< errno, else the system's own code; 0 when none

private:
    Kind kind_;
    std::u16string path_;
    int systemCode_;
};

} // namespace kelb::platform
