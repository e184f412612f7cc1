#pragma once

#include "platform/file_system.h"

#include <functional>
#include <limits>
#include <map>

namespace kelb::platform {

/// Files in memory, for tests and for fault injection: `beforeOperation` runs before every read, write, sync,
/// truncate, remove, rename and open, and may throw to play a failing disk.
/// Paths are compared without regard to case, with `\` and `/` alike; every parent folder counts as existing. Open
/// files are locked as on disk, also within one program; they may not outlive the file system.
class MemoryFileSystem final : public FileSystem {
public:
    /// Name of the operation ("read", "write", "sync", "truncate", "remove", "rename", "open") and the path.
    std::function<void(std::string_view operation, std::u16string_view path)> beforeOperation;

    /// Bytes that all files together may hold. A write past it writes what fits, as a full disk does, and throws
    /// FileError (NoSpace).
    std::uint64_t capacity = kAll;
    static constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

    bool fileExists(std::u16string_view path) override;
    bool folderExists(std::u16string_view path) override;
    bool isWritable(std::u16string_view path) override;
    std::string readFile(std::u16string_view path) override;
    std::string readFront(std::u16string_view path, std::size_t limit) override;
    void writeFile(std::u16string_view path, std::string_view bytes) override;
    void replaceFile(std::u16string_view path, std::string_view bytes) override;
    void appendFile(std::u16string_view path, std::string_view bytes) override;
    void removeFile(std::u16string_view path) override;
    void renameFile(std::u16string_view from, std::u16string_view to) override;
    void makeFolders(std::u16string_view path) override;
    std::vector<std::u16string> listFiles(std::u16string_view folder) override;
    std::vector<std::u16string> listFolders(std::u16string_view folder) override;
    std::unique_ptr<RandomAccessFile> open(std::u16string_view path, OpenMode mode) override;
    void syncFolder(std::u16string_view folder) override;
    std::u16string nativePath(std::u16string_view path) override;
    std::string identityOf(std::u16string_view path) override;

    /// Bytes of every file as a power cut would leave them. Of the writes that no sync followed, each 512 bytes may be
    /// lost: `keepUnsynced` tells for the nth such sector (or truncation) whether it reached the disk. Of the
    /// creations, removals and renamings that no syncFolder() followed, the first `namesKept` reached it.
    std::map<std::u16string, std::string> afterPowerCut(const std::function<bool(std::size_t)>& keepUnsynced,
                                                        std::uint64_t namesKept = kAll) const;
    std::size_t unsyncedNames() const noexcept { return unsyncedNames_.size(); }

    /// Makes a file one that cannot be opened for writing (AccessDenied).
    void setReadOnly(std::u16string_view path);

    struct File; ///< one file's bytes, locks and unsynced writes (memory_file_system.cpp)

private:
    class Handle;
    struct Name {
        std::u16string path;        ///< as spelled
        std::shared_ptr<File> file; ///< none: removed
        std::u16string movedFrom;   ///< the name that it loses in the same moment
    };

    void announce(std::string_view operation, std::u16string_view path) const;
    std::shared_ptr<File> find(std::u16string_view path) const;
    File& findOrThrow(std::string_view operation, std::u16string_view path) const;
    std::shared_ptr<File> create(std::u16string_view path);
    void setName(Name name);
    void syncNames();
    void write(File& file, std::uint64_t offset, std::string_view bytes);
    void truncate(File& file, std::uint64_t size);

    std::map<std::u16string, std::shared_ptr<File>> files_; ///< by path in upper case with "/"
    std::map<std::u16string, std::u16string> folders_;      ///< those that makeFolders made, by key, as spelled
    std::map<std::u16string, Name> durableNames_;           ///< by key, as the last sync of a folder left them
    std::vector<Name> unsyncedNames_;
    std::uint64_t changes_ = 0; ///< writes and truncations so far, of all files
    std::uint64_t created_ = 0;
};

/// Sees a base file system with changes laid over it that never reach it: what a dry run wrote is read back, what
/// it removed is gone. Reading goes through. Keeps written bytes in memory.
[[nodiscard]] std::unique_ptr<FileSystem> makeDryRunFileSystem(FileSystem& base);

} // namespace kelb::platform
