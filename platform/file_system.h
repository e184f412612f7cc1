#pragma once

#include "platform/file_error.h"
#include "platform/path_map.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::platform {

/// An open file read and written at offsets. Owns its handle and its lock; closing never throws.
class RandomAccessFile {
public:
    virtual ~RandomAccessFile() = default;
    virtual std::uint64_t size() const = 0;
    /// Reads up to buffer.size() bytes; fewer only at the end of the file. Throws FileError.
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::byte> buffer) const = 0;
    /// Writes all bytes, extending the file. Throws FileError; what was written before the fault is in doubt.
    virtual void writeAt(std::uint64_t offset, std::span<const std::byte> bytes) = 0;
    virtual void truncate(std::uint64_t size) = 0;
    /// On return everything written has reached the disk.
    virtual void sync() = 0;
    /// Identity of the file itself (device and inode, or the like), equal for two paths of one file.
    virtual std::string identity() const = 0;
};

enum class OpenMode {
    Read,       ///< shared lock; refused (Locked) while another process writes
    ReadWrite,  ///< exclusive lock; refused (Locked) while another process has it open
    CreateNew,  ///< as ReadWrite; AlreadyExists when the file is there
    CreateTemp, ///< an anonymous file for reading and writing in the system's temporary folder; the path is ignored
};

/// Files by path text. A path is a UTF-16 text as rows, settings and options hold it, Windows-shaped or native; it is
/// translated here and nowhere else. Errors are FileError and name the path as given.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// False also for a folder and for a path that cannot be translated to anything that exists.
    /// Throws FileError (Unmapped) for a drive or share without a mapping, and when the system cannot tell (a share
    /// that is offline, a folder that may not be entered), so that rows are not taken for orphans.
    virtual bool fileExists(std::u16string_view path) = 0;
    virtual bool folderExists(std::u16string_view path) = 0;
    virtual bool isWritable(std::u16string_view path) = 0; ///< an existing file that could be opened for writing
    virtual std::string readFile(std::u16string_view path) = 0;
    /// At most `limit` bytes from the front.
    virtual std::string readFront(std::u16string_view path, std::size_t limit) = 0;
    virtual void writeFile(std::u16string_view path, std::string_view bytes) = 0; ///< creates or overwrites
    /// Writes beside and renames, so that a kill leaves the old or the new file whole.
    virtual void replaceFile(std::u16string_view path, std::string_view bytes) = 0;
    virtual void appendFile(std::u16string_view path, std::string_view bytes) = 0; ///< creates when missing
    virtual void removeFile(std::u16string_view path) = 0;
    virtual void renameFile(std::u16string_view from,
                            std::u16string_view to) = 0; ///< replaces `to`; across devices copies
    virtual void makeFolders(std::u16string_view path) = 0;
    /// Names (not paths) of the regular files of a folder, in the order of their names without regard to case.
    virtual std::vector<std::u16string> listFiles(std::u16string_view folder) = 0;
    /// Names of the folders in a folder, in the same order.
    virtual std::vector<std::u16string> listFolders(std::u16string_view folder) = 0;
    virtual std::unique_ptr<RandomAccessFile> open(std::u16string_view path, OpenMode mode) = 0;
    /// Makes a creation, removal or rename in that folder durable.
    virtual void syncFolder(std::u16string_view folder) = 0;
    /// The path on this machine, for messages and for programs that are started. Throws as translatePath.
    virtual std::u16string nativePath(std::u16string_view path) = 0;
    /// nativePath() that means the same wherever a later program is started.
    virtual std::u16string absolutePath(std::u16string_view path) { return nativePath(path); }
    /// Equal for all paths of one existing file, whatever their case, links and drive letters, and only for those. The
    /// file systems here ask without opening the file, so that one with an exclusive lock can be told as well.
    virtual std::string identityOf(std::u16string_view path) { return open(path, OpenMode::Read)->identity(); }
};

/// The operating system's files. A component that is not there as written is looked for without regard to case.
[[nodiscard]] std::unique_ptr<FileSystem> makeSystemFileSystem(PathMap map);

/// Folder of the running program.
[[nodiscard]] std::u16string executableFolder();

} // namespace kelb::platform
