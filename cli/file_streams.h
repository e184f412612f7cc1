#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

/// Files of the program's file system as standard streams, for what is read or written piece by piece. A dry run lays
/// its overlay under them as under everything else. Both throw platform::FileError from stream operations, too.
namespace kelb::cli {

/// Bytes between a stream and an open file.
class FileBuffer final : public std::streambuf {
public:
    explicit FileBuffer(std::unique_ptr<platform::RandomAccessFile> file);
    platform::RandomAccessFile& file() { return *file_; }

protected:
    int_type underflow() override;
    int_type overflow(int_type unit) override;
    int sync() override;

private:
    std::unique_ptr<platform::RandomAccessFile> file_;
    std::uint64_t position_ = 0; ///< of the next read or write
    std::vector<char> bytes_;
};

class FileReader final : public std::istream {
public:
    FileReader(platform::FileSystem& files, std::u16string_view path);

private:
    FileBuffer buffer_;
};

/// Writes beside the file, under its name with ".part" behind it, until finish() puts the whole in its place. Without
/// finish() the file is as it was.
class FileWriter final : public std::ostream {
public:
    FileWriter(platform::FileSystem& files, std::u16string_view path);
    void finish();

private:
    platform::FileSystem& files_;
    std::u16string path_, part_;
    std::unique_ptr<FileBuffer> buffer_;
};

} // namespace kelb::cli
