#include "platform/memory_file_system.h"

#include "platform/file_failures.h"
#include "platform/path_key.h"

#include <algorithm>
#include <cstring>

namespace kelb::platform {

namespace {

constexpr std::size_t kSector = 512; ///< bytes that reach a disk all or not at all

/// A write, or a truncation to `offset`, that no sync has followed.
struct Change {
    std::uint64_t sequence; ///< among the changes of all files
    bool truncates;
    std::uint64_t offset;
    std::string bytes;
};

void replay(const Change& change, std::string& bytes) {
    const auto offset = static_cast<std::size_t>(change.offset);
    if (change.truncates) {
        bytes.resize(offset);
        return;
    }
    bytes.resize(std::max(bytes.size(), offset + change.bytes.size()));
    bytes.replace(offset, change.bytes.size(), change.bytes);
}

std::string_view asText(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

struct MemoryFileSystem::File {
    std::u16string path; ///< as it was first written
    std::uint64_t number = 0;
    std::string bytes;
    std::string durable; ///< what the last sync left
    std::vector<Change> unsynced;
    int readers = 0;
    bool writer = false;
    bool readOnly = false;

    std::string identity() const { return "memory:" + std::to_string(number); }
    void makeDurable() {
        for (const Change& change : unsynced) {
            replay(change, durable);
        }
        unsynced.clear();
    }
};

class MemoryFileSystem::Handle final : public RandomAccessFile {
public:
    /// Takes the lock. Throws FileError (Locked).
    Handle(MemoryFileSystem& owner, std::shared_ptr<File> file, bool writes)
        : owner_(owner), file_(std::move(file)), writes_(writes) {
        if (file_->writer || (writes_ && file_->readers > 0)) {
            throw locked(writes_ ? "open for writing" : "open", file_->path);
        }
        file_->writer = writes_;
        file_->readers += writes_ ? 0 : 1;
    }
    ~Handle() override {
        if (writes_) {
            file_->writer = false;
        } else {
            --file_->readers;
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    std::uint64_t size() const override { return file_->bytes.size(); }

    std::size_t readAt(std::uint64_t offset, std::span<std::byte> buffer) const override {
        owner_.announce("read", file_->path);
        if (offset >= file_->bytes.size()) {
            return 0;
        }
        const std::size_t count = std::min(buffer.size(), file_->bytes.size() - static_cast<std::size_t>(offset));
        if (count != 0) {
            std::memcpy(buffer.data(), file_->bytes.data() + offset, count);
        }
        return count;
    }

    void writeAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
        requireWritable("write");
        owner_.announce("write", file_->path);
        owner_.write(*file_, offset, asText(bytes));
    }

    void truncate(std::uint64_t size) override {
        requireWritable("truncate");
        owner_.announce("truncate", file_->path);
        owner_.truncate(*file_, size);
    }

    void sync() override {
        owner_.announce("sync", file_->path);
        file_->makeDurable();
    }

    std::string identity() const override { return file_->identity(); }

private:
    void requireWritable(std::string_view operation) const {
        if (!writes_) {
            throw readOnly(operation, file_->path);
        }
    }

    MemoryFileSystem& owner_;
    std::shared_ptr<File> file_;
    bool writes_;
};

void MemoryFileSystem::announce(std::string_view operation, std::u16string_view path) const {
    if (beforeOperation) {
        beforeOperation(operation, path);
    }
}

std::shared_ptr<MemoryFileSystem::File> MemoryFileSystem::find(std::u16string_view path) const {
    const auto found = files_.find(pathKey(path));
    return found == files_.end() ? nullptr : found->second;
}

MemoryFileSystem::File& MemoryFileSystem::findOrThrow(std::string_view operation, std::u16string_view path) const {
    const auto found = files_.find(pathKey(path));
    if (found == files_.end()) {
        throw notFound(operation, path);
    }
    return *found->second;
}

std::shared_ptr<MemoryFileSystem::File> MemoryFileSystem::create(std::u16string_view path) {
    auto file = std::make_shared<File>();
    file->path = path;
    file->number = ++created_;
    return file;
}

void MemoryFileSystem::setName(Name name) {
    if (name.file == nullptr) {
        files_.erase(pathKey(name.path));
    } else {
        files_.erase(pathKey(name.movedFrom));
        files_.insert_or_assign(pathKey(name.path), name.file);
    }
    unsyncedNames_.push_back(std::move(name));
}

void MemoryFileSystem::write(File& file, std::uint64_t offset, std::string_view bytes) {
    const std::uint64_t end = offset + bytes.size();
    if (capacity != kAll && end > file.bytes.size()) {
        std::uint64_t used = 0;
        for (const auto& named : files_) {
            used += named.second->bytes.size();
        }
        const std::uint64_t fits = file.bytes.size() + (used < capacity ? capacity - used : 0);
        if (fits < end) {
            if (fits > offset) {
                write(file, offset, bytes.substr(0, static_cast<std::size_t>(fits - offset)));
            }
            throw noSpace("write", file.path);
        }
    }
    replay(file.unsynced.emplace_back(Change{++changes_, false, offset, std::string(bytes)}), file.bytes);
}

void MemoryFileSystem::truncate(File& file, std::uint64_t size) {
    replay(file.unsynced.emplace_back(Change{++changes_, true, size, {}}), file.bytes);
}

bool MemoryFileSystem::fileExists(std::u16string_view path) {
    return files_.contains(pathKey(path));
}

bool MemoryFileSystem::folderExists(std::u16string_view path) {
    const std::u16string front = folderKey(path);
    const auto below = files_.lower_bound(front);
    return folders_.contains(front) || (below != files_.end() && below->first.starts_with(front));
}

bool MemoryFileSystem::isWritable(std::u16string_view path) {
    const auto file = find(path);
    return file != nullptr && !file->readOnly;
}

void MemoryFileSystem::setReadOnly(std::u16string_view path) {
    findOrThrow("change", path).readOnly = true;
}

std::string MemoryFileSystem::readFile(std::u16string_view path) {
    return readFront(path, std::string::npos);
}

std::string MemoryFileSystem::readFront(std::u16string_view path, std::size_t limit) {
    announce("read", path);
    return findOrThrow("read", path).bytes.substr(0, limit);
}

void MemoryFileSystem::writeFile(std::u16string_view path, std::string_view bytes) {
    announce("write", path);
    auto file = find(path);
    if (file == nullptr) {
        setName({std::u16string(path), file = create(path), {}});
    } else if (file->readOnly) {
        throw readOnly("write", path);
    } else {
        truncate(*file, 0);
    }
    write(*file, 0, bytes);
}

void MemoryFileSystem::replaceFile(std::u16string_view path, std::string_view bytes) {
    announce("write", path);
    announce("rename", path);
    auto file = create(path);
    write(*file, 0, bytes);
    file->makeDurable();
    setName({std::u16string(path), std::move(file), {}});
    syncNames();
}

void MemoryFileSystem::appendFile(std::u16string_view path, std::string_view bytes) {
    announce("write", path);
    auto file = find(path);
    if (file == nullptr) {
        setName({std::u16string(path), file = create(path), {}});
    } else if (file->readOnly) {
        throw readOnly("write", path);
    }
    write(*file, file->bytes.size(), bytes);
}

void MemoryFileSystem::removeFile(std::u16string_view path) {
    announce("remove", path);
    findOrThrow("remove", path);
    setName({std::u16string(path), nullptr, {}});
}

void MemoryFileSystem::renameFile(std::u16string_view from, std::u16string_view to) {
    announce("rename", from);
    auto moved = find(from);
    if (moved == nullptr) {
        throw notFound("rename", from);
    }
    moved->path = to;
    setName({std::u16string(to), std::move(moved), std::u16string(from)});
}

void MemoryFileSystem::makeFolders(std::u16string_view path) {
    const std::u16string front = folderKey(path);
    const std::u16string spelled = plainPath(path);
    for (std::size_t end = front.find(u'/'); end != front.npos; end = front.find(u'/', end + 1)) {
        folders_.try_emplace(front.substr(0, end + 1), spelled, 0, end + 1);
    }
}

std::vector<std::u16string> MemoryFileSystem::listFiles(std::u16string_view folder) {
    if (!folderExists(folder)) {
        throw notFound("list", folder);
    }
    const std::u16string front = folderKey(folder);
    std::vector<std::u16string> names; // in the order of the keys, which are in upper case
    for (auto at = files_.lower_bound(front); at != files_.end() && at->first.starts_with(front); ++at) {
        if (at->first.find(u'/', front.size()) == std::u16string::npos) {
            names.emplace_back(fileName(at->second->path));
        }
    }
    return names;
}

std::vector<std::u16string> MemoryFileSystem::listFolders(std::u16string_view folder) {
    if (!folderExists(folder)) {
        throw notFound("list", folder);
    }
    const std::u16string front = folderKey(folder);
    std::map<std::u16string, std::u16string> names; // by key: in the order of names without regard to case
    const auto enter = [&](std::u16string_view key, const std::u16string& spelled) {
        if (const std::size_t end = key.find(u'/', front.size()); end != key.npos) {
            const auto name = key.substr(front.size(), end - front.size());
            names.try_emplace(std::u16string(name), spelled, front.size(), name.size());
        }
    };
    for (auto at = folders_.upper_bound(front); at != folders_.end() && at->first.starts_with(front); ++at) {
        enter(at->first, at->second);
    }
    for (auto at = files_.lower_bound(front); at != files_.end() && at->first.starts_with(front); ++at) {
        enter(at->first, plainPath(at->second->path));
    }
    std::vector<std::u16string> list;
    list.reserve(names.size());
    for (auto& name : names) {
        list.push_back(std::move(name.second));
    }
    return list;
}

std::unique_ptr<RandomAccessFile> MemoryFileSystem::open(std::u16string_view path, OpenMode mode) {
    announce("open", path);
    if (mode == OpenMode::CreateTemp) {
        return std::make_unique<Handle>(*this, create(u"(temporary file)"), true);
    }
    std::shared_ptr<File> file = find(path);
    if (mode == OpenMode::CreateNew) {
        if (file != nullptr) {
            throw alreadyThere("create", path);
        }
        setName({std::u16string(path), file = create(path), {}});
    } else if (file == nullptr) {
        throw notFound("open", path);
    } else if (mode == OpenMode::ReadWrite && file->readOnly) {
        throw readOnly("open for writing", path);
    }
    return std::make_unique<Handle>(*this, std::move(file), mode != OpenMode::Read);
}

void MemoryFileSystem::syncFolder(std::u16string_view folder) {
    announce("sync", folder);
    syncNames();
}

void MemoryFileSystem::syncNames() {
    for (Name& name : unsyncedNames_) {
        durableNames_.erase(pathKey(name.movedFrom));
        durableNames_.insert_or_assign(pathKey(name.path), std::move(name));
    }
    unsyncedNames_.clear();
}

std::u16string MemoryFileSystem::nativePath(std::u16string_view path) {
    return std::u16string(path);
}

std::string MemoryFileSystem::identityOf(std::u16string_view path) {
    return findOrThrow("identify", path).identity();
}

std::map<std::u16string, std::string>
MemoryFileSystem::afterPowerCut(const std::function<bool(std::size_t)>& keepUnsynced, std::uint64_t namesKept) const {
    auto names = durableNames_;
    for (std::size_t i = 0; i < std::min<std::uint64_t>(namesKept, unsyncedNames_.size()); ++i) {
        names.erase(pathKey(unsyncedNames_[i].movedFrom));
        names.insert_or_assign(pathKey(unsyncedNames_[i].path), unsyncedNames_[i]);
    }
    std::map<std::u16string, std::string> left;
    std::vector<std::pair<const Change*, std::string*>> pending;
    for (const auto& [key, name] : names) {
        if (name.file == nullptr) {
            continue;
        }
        std::string& bytes = left[name.path] = name.file->durable;
        for (const Change& change : name.file->unsynced) {
            pending.emplace_back(&change, &bytes);
        }
    }
    std::sort(pending.begin(), pending.end(),
              [](const auto& a, const auto& b) { return a.first->sequence < b.first->sequence; });
    std::size_t asked = 0;
    for (const auto& [change, bytes] : pending) {
        for (std::size_t begin = 0, end = 0; begin == 0 || begin < change->bytes.size(); begin = end) {
            end = begin + kSector - static_cast<std::size_t>((change->offset + begin) % kSector);
            if (keepUnsynced(asked++)) {
                replay({0, change->truncates, change->offset + begin, change->bytes.substr(begin, end - begin)},
                       *bytes);
            }
        }
    }
    return left;
}

} // namespace kelb::platform
