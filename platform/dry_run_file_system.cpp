#include "platform/file_failures.h"
#include "platform/letter_case.h"
#include "platform/memory_file_system.h"
#include "platform/path_key.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <unordered_map>

namespace kelb::platform {

namespace {

constexpr std::size_t kBlockSize = 4096;
using Block = std::array<std::byte, kBlockSize>;

/// A file of the layer: blocks that were written, over the file of the base system that it began as (or over nothing).
/// So a database of gigabytes costs only the pages that a dry run changes.
struct LayeredFile {
    std::u16string path;                    ///< as the caller wrote it
    std::u16string basePath;                ///< "" when nothing lies below
    std::unique_ptr<RandomAccessFile> base; ///< with its shared lock; open while a handle or a change needs it
    std::uint64_t baseSize = 0;             ///< bytes of the base that still show
    std::uint64_t size = 0;
    std::unordered_map<std::uint64_t, std::unique_ptr<Block>> blocks;
    std::uint64_t number = 0;
    int readers = 0;
    bool writer = false;

    std::string identity() const { return "dry run:" + std::to_string(number); } ///< where nothing lies below
};

void openBase(LayeredFile& file, FileSystem& base) {
    if (file.base == nullptr && !file.basePath.empty()) {
        file.base = base.open(file.basePath, OpenMode::Read);
        file.baseSize = file.size = file.base->size();
    }
}

/// Lets go of a base that nothing was laid over.
void closeBaseIfUnchanged(LayeredFile& file) {
    const bool unchanged =
        file.base != nullptr && file.blocks.empty() && file.size == file.base->size() && file.baseSize == file.size;
    if (unchanged && file.readers == 0 && !file.writer) {
        file.base.reset();
    }
}

void readBase(const LayeredFile& file, std::uint64_t offset, std::span<std::byte> buffer) {
    std::size_t got = 0;
    if (file.base != nullptr && offset < file.baseSize) {
        const auto shown = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), file.baseSize - offset));
        got = file.base->readAt(offset, buffer.first(shown));
    }
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(got), buffer.end(), std::byte{0});
}

std::size_t readLayered(const LayeredFile& file, std::uint64_t offset, std::span<std::byte> buffer) {
    if (offset >= file.size) {
        return 0;
    }
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), file.size - offset));
    for (std::size_t done = 0; done < count;) {
        const std::uint64_t at = offset + done;
        const auto inBlock = static_cast<std::size_t>(at % kBlockSize);
        const std::size_t piece = std::min(count - done, kBlockSize - inBlock);
        if (const auto block = file.blocks.find(at / kBlockSize); block != file.blocks.end()) {
            std::memcpy(buffer.data() + done, block->second->data() + inBlock, piece);
        } else {
            readBase(file, at, buffer.subspan(done, piece));
        }
        done += piece;
    }
    return count;
}

Block& blockToChange(LayeredFile& file, std::uint64_t number) {
    auto& block = file.blocks[number];
    if (block == nullptr) {
        auto fresh = std::make_unique<Block>();
        readBase(file, number * kBlockSize, *fresh);
        block = std::move(fresh);
    }
    return *block;
}

void writeLayered(LayeredFile& file, std::uint64_t offset, std::span<const std::byte> bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const std::uint64_t at = offset + done;
        const auto inBlock = static_cast<std::size_t>(at % kBlockSize);
        const std::size_t piece = std::min(bytes.size() - done, kBlockSize - inBlock);
        std::memcpy(blockToChange(file, at / kBlockSize).data() + inBlock, bytes.data() + done, piece);
        done += piece;
    }
    file.size = std::max(file.size, offset + bytes.size());
}

void truncateLayered(LayeredFile& file, std::uint64_t size) {
    if (size < file.size) {
        std::erase_if(file.blocks, [size](const auto& block) { return block.first * kBlockSize >= size; });
        if (const auto last = file.blocks.find(size / kBlockSize); last != file.blocks.end()) {
            std::fill(last->second->begin() + static_cast<std::ptrdiff_t>(size % kBlockSize), last->second->end(),
                      std::byte{0});
        }
        file.baseSize = std::min(file.baseSize, size);
    }
    file.size = size;
}

std::span<const std::byte> asBytes(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// Handle of a layered file. Locks work as on disk.
class LayeredHandle final : public RandomAccessFile {
public:
    LayeredHandle(std::shared_ptr<LayeredFile> file, bool writes) : file_(std::move(file)), writes_(writes) {
        if (file_->writer || (writes_ && file_->readers > 0)) {
            throw locked(writes_ ? "open for writing" : "open", file_->path);
        }
        file_->writer = writes_;
        file_->readers += writes_ ? 0 : 1;
    }
    ~LayeredHandle() override {
        if (writes_) {
            file_->writer = false;
        } else {
            --file_->readers;
        }
        closeBaseIfUnchanged(*file_);
    }
    LayeredHandle(const LayeredHandle&) = delete;
    LayeredHandle& operator=(const LayeredHandle&) = delete;

    std::uint64_t size() const override { return file_->size; }
    std::size_t readAt(std::uint64_t offset, std::span<std::byte> buffer) const override {
        return readLayered(*file_, offset, buffer);
    }
    void writeAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
        requireWritable("write");
        writeLayered(*file_, offset, bytes);
    }
    void truncate(std::uint64_t size) override {
        requireWritable("truncate");
        truncateLayered(*file_, size);
    }
    void sync() override {} // there is no disk behind it
    std::string identity() const override {
        return file_->base != nullptr ? file_->base->identity() : file_->identity();
    }

private:
    void requireWritable(std::string_view operation) const {
        if (!writes_) {
            throw readOnly(operation, file_->path);
        }
    }

    std::shared_ptr<LayeredFile> file_;
    bool writes_;
};

/// Names count without regard to case throughout, as on the disks that the paths come from.
class DryRunFileSystem final : public FileSystem {
public:
    explicit DryRunFileSystem(FileSystem& base) : base_(base) {}

    bool fileExists(std::u16string_view path) override {
        const FilePtr* change = findChange(path);
        return change != nullptr ? *change != nullptr : base_.fileExists(path);
    }
    bool folderExists(std::u16string_view path) override;
    bool isWritable(std::u16string_view path) override {
        const FilePtr* change = findChange(path);
        return change != nullptr ? *change != nullptr : base_.isWritable(path);
    }
    std::string readFile(std::u16string_view path) override { return readFront(path, std::string::npos); }
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
    void syncFolder(std::u16string_view) override {}
    std::u16string nativePath(std::u16string_view path) override { return base_.nativePath(path); }
    std::u16string absolutePath(std::u16string_view path) override { return base_.absolutePath(path); }
    std::string identityOf(std::u16string_view path) override;

private:
    using FilePtr = std::shared_ptr<LayeredFile>;

    std::u16string keyOf(std::u16string_view path) { return pathKey(base_.nativePath(path)); }
    FilePtr* findChange(std::u16string_view path);
    FilePtr layered(std::string_view operation, std::u16string_view path);
    FilePtr writable(std::string_view operation, std::u16string_view path);
    FilePtr fresh(std::string_view operation, std::u16string_view path);

    FileSystem& base_;
    std::map<std::u16string, FilePtr> changes_;        ///< by key; null stands for a removed file
    std::map<std::u16string, std::u16string> folders_; ///< made here, by key, as spelled
    std::uint64_t created_ = 0;
};

DryRunFileSystem::FilePtr* DryRunFileSystem::findChange(std::u16string_view path) {
    const auto found = changes_.find(keyOf(path));
    return found == changes_.end() ? nullptr : &found->second;
}

/// A new, empty file that is not in the map yet.
DryRunFileSystem::FilePtr DryRunFileSystem::fresh(std::string_view operation, std::u16string_view path) {
    const auto folder = parentFolder(path);
    if (!folder.empty() && !folderExists(folder)) {
        throw notFound(operation, path);
    }
    auto file = std::make_shared<LayeredFile>();
    file->path = path;
    file->number = ++created_;
    return file;
}

/// The existing file at `path`, taken into the layer. Throws NotFound.
DryRunFileSystem::FilePtr DryRunFileSystem::layered(std::string_view operation, std::u16string_view path) {
    if (FilePtr* change = findChange(path); change != nullptr) {
        if (*change == nullptr) {
            throw notFound(operation, path);
        }
        return *change;
    }
    if (!base_.fileExists(path)) {
        throw notFound(operation, path);
    }
    auto file = std::make_shared<LayeredFile>();
    file->path = file->basePath = path;
    file->number = ++created_;
    return changes_[keyOf(path)] = file;
}

/// As layered, ready to be changed; makes a file that is missing. Throws AccessDenied where the base would.
DryRunFileSystem::FilePtr DryRunFileSystem::writable(std::string_view operation, std::u16string_view path) {
    if (!fileExists(path)) {
        return changes_[keyOf(path)] = fresh(operation, path);
    }
    if (!isWritable(path)) {
        throw readOnly(operation, path);
    }
    FilePtr file = layered(operation, path);
    openBase(*file, base_);
    return file;
}

std::string DryRunFileSystem::identityOf(std::u16string_view path) {
    const FilePtr* change = findChange(path);
    if (change == nullptr) {
        return base_.identityOf(path);
    }
    if (*change == nullptr) {
        throw notFound("identify", path);
    }
    const LayeredFile& file = **change;
    return file.basePath.empty() ? file.identity() : base_.identityOf(file.basePath);
}

bool DryRunFileSystem::folderExists(std::u16string_view path) {
    if (base_.folderExists(path)) {
        return true;
    }
    const std::u16string front = folderKey(base_.nativePath(path));
    if (folders_.contains(front)) {
        return true;
    }
    const auto below = std::find_if(changes_.lower_bound(front), changes_.end(), [&front](const auto& change) {
        return change.second != nullptr || !change.first.starts_with(front);
    });
    return below != changes_.end() && below->first.starts_with(front);
}

std::string DryRunFileSystem::readFront(std::u16string_view path, std::size_t limit) {
    FilePtr* change = findChange(path);
    if (change == nullptr) {
        return base_.readFront(path, limit);
    }
    if (*change == nullptr) {
        throw notFound("read", path);
    }
    const LayeredFile& file = **change;
    if (file.base == nullptr && !file.basePath.empty()) {
        return base_.readFront(file.basePath, limit); // renamed, not changed
    }
    std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(limit, file.size)), '\0');
    readLayered(file, 0, std::as_writable_bytes(std::span(bytes.data(), bytes.size())));
    return bytes;
}

void DryRunFileSystem::writeFile(std::u16string_view path, std::string_view bytes) {
    const FilePtr file = writable("write", path);
    truncateLayered(*file, 0);
    writeLayered(*file, 0, asBytes(bytes));
}

void DryRunFileSystem::replaceFile(std::u16string_view path, std::string_view bytes) {
    const FilePtr file = fresh("write", path); // one that is open elsewhere keeps its bytes
    writeLayered(*file, 0, asBytes(bytes));
    changes_[keyOf(path)] = file;
}

void DryRunFileSystem::appendFile(std::u16string_view path, std::string_view bytes) {
    const FilePtr file = writable("write", path);
    writeLayered(*file, file->size, asBytes(bytes));
}

void DryRunFileSystem::removeFile(std::u16string_view path) {
    if (!fileExists(path)) {
        throw notFound("remove", path);
    }
    changes_[keyOf(path)] = nullptr;
}

void DryRunFileSystem::renameFile(std::u16string_view from, std::u16string_view to) {
    const FilePtr file = layered("rename", from);
    if (const auto folder = parentFolder(to); !folder.empty() && !folderExists(folder)) {
        throw notFound("rename", to);
    }
    const std::u16string target = keyOf(to);
    changes_[keyOf(from)] = nullptr;
    file->path = to;
    changes_[target] = file;
}

void DryRunFileSystem::makeFolders(std::u16string_view path) {
    const std::u16string native = base_.nativePath(path);
    const std::u16string front = folderKey(native), spelled = plainPath(native);
    for (std::size_t end = front.find(u'/'); end != front.npos; end = front.find(u'/', end + 1)) {
        folders_.try_emplace(front.substr(0, end + 1), spelled, 0, end + 1);
    }
}

std::vector<std::u16string> DryRunFileSystem::listFiles(std::u16string_view folder) {
    if (!folderExists(folder)) {
        throw notFound("list", folder);
    }
    const std::u16string front = folderKey(base_.nativePath(folder));
    std::vector<std::u16string> names;
    if (base_.folderExists(folder)) {
        names = base_.listFiles(folder);
        std::erase_if(names, [&](const std::u16string& name) { return changes_.contains(front + upperCase(name)); });
    }
    for (auto at = changes_.lower_bound(front); at != changes_.end() && at->first.starts_with(front); ++at) {
        if (at->second != nullptr && at->first.find(u'/', front.size()) == std::u16string::npos) {
            names.emplace_back(fileName(at->second->path));
        }
    }
    std::stable_sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return compareNoCase(a, b) < 0; });
    return names;
}

std::vector<std::u16string> DryRunFileSystem::listFolders(std::u16string_view folder) {
    if (!folderExists(folder)) {
        throw notFound("list", folder);
    }
    const std::u16string front = folderKey(base_.nativePath(folder));
    std::map<std::u16string, std::u16string> names; // by key: in the order of names without regard to case
    if (base_.folderExists(folder)) {
        for (std::u16string& name : base_.listFolders(folder)) {
            names.try_emplace(upperCase(name), std::move(name));
        }
    }
    for (auto at = folders_.upper_bound(front); at != folders_.end() && at->first.starts_with(front); ++at) {
        const std::size_t length = at->first.find(u'/', front.size()) - front.size();
        names.try_emplace(at->first.substr(front.size(), length), at->second, front.size(), length);
    }
    std::vector<std::u16string> list;
    list.reserve(names.size());
    for (auto& name : names) {
        list.push_back(std::move(name.second));
    }
    return list;
}

std::unique_ptr<RandomAccessFile> DryRunFileSystem::open(std::u16string_view path, OpenMode mode) {
    switch (mode) {
    case OpenMode::CreateTemp:
        return std::make_unique<LayeredHandle>(fresh("make a temporary file", u""), true);
    case OpenMode::CreateNew:
        if (fileExists(path)) {
            throw alreadyThere("create", path);
        }
        return std::make_unique<LayeredHandle>(changes_[keyOf(path)] = fresh("create", path), true);
    case OpenMode::ReadWrite:
        if (fileExists(path) && !isWritable(path)) {
            throw readOnly("open for writing", path);
        }
        break;
    case OpenMode::Read:
        break;
    }
    const FilePtr file = layered("open", path);
    openBase(*file, base_);
    return std::make_unique<LayeredHandle>(file, mode == OpenMode::ReadWrite);
}

} // namespace

std::unique_ptr<FileSystem> makeDryRunFileSystem(FileSystem& base) {
    return std::make_unique<DryRunFileSystem>(base);
}

} // namespace kelb::platform
