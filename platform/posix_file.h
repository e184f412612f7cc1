#pragma once

#include "platform/file_system.h"

#include <memory>
#include <string>
#include <string_view>

namespace kelb::platform {

/// An open file descriptor. Every call here repeats what a signal interrupted and throws FileError with `operation` and
/// `path`, the path as the caller wrote it.
class Descriptor {
public:
    /// Opens `native` (UTF-8) so that no started program inherits it.
    Descriptor(std::string_view operation, std::u16string_view path, const std::string& native, int flags,
               unsigned mode = 0666);
    /// Takes over an open descriptor.
    Descriptor(std::string_view operation, std::u16string_view path, int number) noexcept;
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const noexcept { return number_; }
    const std::u16string& path() const noexcept { return path_; }

    /// Up to `limit` bytes from where the last call ended. Throws for a folder.
    std::string read(std::size_t limit) const;
    /// At the file's own position, all of it.
    void write(std::string_view bytes) const;
    void syncData() const;
    /// Reports what a share tells only now; the destructor is silent.
    void close();

    [[noreturn]] void fail(int code) const;

private:
    std::string operation_;
    std::u16string path_;
    int number_;
};

/// Takes the system's lock on the whole file, shared for reading, exclusive for writing, without waiting; it goes with
/// the descriptor, so it dies with the process. Throws FileError (Locked). A disk without locks is read without one and
/// not written to.
void lockFile(const Descriptor& file, bool exclusive);

[[nodiscard]] std::unique_ptr<RandomAccessFile> makeRandomAccessFile(Descriptor file);

} // namespace kelb::platform
