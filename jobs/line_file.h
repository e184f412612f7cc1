#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// Files of lines too long to be held in memory.
namespace kelb::jobs {

/// A new file that gets one line after the other. Locked while it is open.
class LineWriter {
public:
    /// Throws platform::FileError, also when the file is there.
    LineWriter(platform::FileSystem& files, std::u16string_view path)
        : file_(files.open(path, platform::OpenMode::CreateNew)) {}

    /// `lines`: each with its line end. After a throw a piece of them may stand behind the last whole line.
    void add(std::string_view lines);
    void sync() { file_->sync(); }

private:
    std::unique_ptr<platform::RandomAccessFile> file_;
    std::uint64_t end_ = 0;
};

/// Reads whole lines; a last one without its end was cut off by a kill and is left out.
class LineReader {
public:
    /// Throws platform::FileError, also while a LineWriter has the file.
    LineReader(platform::FileSystem& files, std::u16string_view path)
        : file_(files.open(path, platform::OpenMode::Read)) {}

    /// The next line without its end; false behind the last one. The view holds until the next call.
    bool next(std::string_view& line);

private:
    bool readMore();

    std::unique_ptr<platform::RandomAccessFile> file_;
    std::uint64_t position_ = 0; ///< of what is read next
    std::string buffer_;
    std::size_t used_ = 0; ///< bytes at the front of the buffer that were given out
};

} // namespace kelb::jobs
