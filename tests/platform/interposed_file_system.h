#pragma once

#include "platform/file_system.h"

#include <functional>
#include <limits>
#include <memory>
#include <utility>

namespace kelb::platform {

/// Files of another file system with something in between: `before` is asked ahead of every call that may change files,
/// and of every open, read and sync; it may throw, kill the program, or let a write through in part.
class InterposedFileSystem final : public FileSystem {
public:
    static constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
    /// The operation ("open", "read", "write", "truncate", "sync", "remove", "rename") and the path. Result: kAll, or
    /// how many bytes of the write are written before `halfway` is called.
    using Before = std::function<std::size_t(std::string_view operation, std::u16string_view path)>;

    explicit InterposedFileSystem(FileSystem& base) : base_(base) {}
    Before before = [](std::string_view, std::u16string_view) { return kAll; };
    std::function<void()> halfway; ///< must not return

    bool fileExists(std::u16string_view path) override { return base_.fileExists(path); }
    bool folderExists(std::u16string_view path) override { return base_.folderExists(path); }
    bool isWritable(std::u16string_view path) override { return base_.isWritable(path); }
    std::string readFile(std::u16string_view path) override { return before("read", path), base_.readFile(path); }
    std::string readFront(std::u16string_view path, std::size_t limit) override {
        return before("read", path), base_.readFront(path, limit);
    }
    void writeFile(std::u16string_view path, std::string_view bytes) override {
        inPart(before("write", path), bytes, [&](std::string_view part) { base_.writeFile(path, part); });
    }
    /// Its temporary file is the base file system's own: a stop comes before the first or after the last step.
    void replaceFile(std::u16string_view path, std::string_view bytes) override {
        if (before("write", path) != kAll)
            halfway();
        base_.replaceFile(path, bytes);
        before("rename", path);
    }
    void appendFile(std::u16string_view path, std::string_view bytes) override {
        inPart(before("write", path), bytes, [&](std::string_view part) { base_.appendFile(path, part); });
    }
    void removeFile(std::u16string_view path) override { before("remove", path), base_.removeFile(path); }
    void renameFile(std::u16string_view from, std::u16string_view to) override {
        before("rename", from);
        base_.renameFile(from, to);
    }
    void makeFolders(std::u16string_view path) override { base_.makeFolders(path); }
    std::vector<std::u16string> listFiles(std::u16string_view folder) override { return base_.listFiles(folder); }
    std::vector<std::u16string> listFolders(std::u16string_view folder) override { return base_.listFolders(folder); }
    std::unique_ptr<RandomAccessFile> open(std::u16string_view path, OpenMode mode) override {
        before("open", path);
        return std::make_unique<Handle>(*this, path, base_.open(path, mode));
    }
    void syncFolder(std::u16string_view folder) override { before("sync", folder), base_.syncFolder(folder); }
    std::u16string nativePath(std::u16string_view path) override { return base_.nativePath(path); }
    std::string identityOf(std::u16string_view path) override { return base_.identityOf(path); }

private:
    class Handle final : public RandomAccessFile {
    public:
        Handle(InterposedFileSystem& owner, std::u16string_view path, std::unique_ptr<RandomAccessFile> file)
            : owner_(owner), path_(path), file_(std::move(file)) {}
        std::uint64_t size() const override { return file_->size(); }
        std::size_t readAt(std::uint64_t offset, std::span<std::byte> buffer) const override {
            owner_.before("read", path_);
            return file_->readAt(offset, buffer);
        }
        void writeAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
            owner_.inPart(owner_.before("write", path_), bytes, [&](auto part) { file_->writeAt(offset, part); });
        }
        void truncate(std::uint64_t size) override { owner_.before("truncate", path_), file_->truncate(size); }
        void sync() override { owner_.before("sync", path_), file_->sync(); }
        std::string identity() const override { return file_->identity(); }

    private:
        InterposedFileSystem& owner_;
        std::u16string path_;
        std::unique_ptr<RandomAccessFile> file_;
    };

    template <class Bytes, class Write>
    void inPart(std::size_t count, Bytes bytes, const Write& write) {
        if (count == kAll)
            return write(bytes);
        write(Bytes(bytes.data(), std::min(count, bytes.size())));
        halfway();
    }

    FileSystem& base_;
};

} // namespace kelb::platform
