#pragma once

#include "platform/file_system.h"
#include "platform/windows_headers.h"

#include <memory>
#include <string>
#include <string_view>

namespace kelb::platform {

/// Who may have the file open besides us.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// An open file or folder. Every call here throws FileError with `operation` and `path`, the path as the caller wrote
/// it.
class FileHandle {
public:
    /// What CreateFileW is asked for.
    struct Access {
        DWORD rights;
        DWORD sharing;
        DWORD creation = OPEN_EXISTING;
        DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    };

    /// Opens `unlimitedPath` so that no started program inherits it.
    FileHandle(std::string_view operation, std::u16string_view path, const std::wstring& unlimitedPath,
               const Access& access);
    ~FileHandle();
    FileHandle(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    HANDLE get() const noexcept { return handle_; }
    const std::u16string& path() const noexcept { return path_; }

    /// Up to `limit` bytes from where the last call ended.
    std::string read(std::size_t limit) const;
    /// At the file's own position, all of it.
    void write(std::string_view bytes) const;
    /// At the end of the file, wherever other programs have moved it, all of it.
    void append(std::string_view bytes) const;
    std::uint64_t size() const;
    void resize(std::uint64_t size) const;
    void sync() const;
    /// Volume and number of the file.
    std::string identity() const;
    /// Reports what a share tells only now; the destructor is silent.
    void close();

    [[noreturn]] void fail(DWORD code) const;

private:
    std::string operation_;
    std::u16string path_;
    HANDLE handle_;
};

/// Reads and writes at offsets. Whether others may open the file meanwhile was said when `file` was opened: Windows
/// itself keeps them out, also programs that know nothing of our locks.
[[nodiscard]] std::unique_ptr<RandomAccessFile> makeRandomAccessFile(FileHandle file);

} // namespace kelb::platform
