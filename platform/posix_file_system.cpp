#include "platform/file_failures.h"
#include "platform/file_system.h"
#include "platform/folder_listings.h"
#include "platform/path_key.h"
#include "platform/posix_file.h"
#include "platform/utf8.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <functional>
#include <optional>

namespace kelb::platform {

namespace {

/// A path on this machine.
struct Place {
    std::string native; ///< UTF-8
    bool exists;        ///< false only when it is certainly not there
};

class PosixFileSystem final : public FileSystem {
public:
    explicit PosixFileSystem(PathMap map) : map_(std::move(map)) {}

    bool fileExists(std::u16string_view path) override;
    bool folderExists(std::u16string_view path) override;
    bool isWritable(std::u16string_view path) override;
    std::string readFile(std::u16string_view path) override { return readFront(path, std::string::npos); }
    std::string readFront(std::u16string_view path, std::size_t limit) override;
    void writeFile(std::u16string_view path, std::string_view bytes) override;
    void replaceFile(std::u16string_view path, std::string_view bytes) override;
    void appendFile(std::u16string_view path, std::string_view bytes) override;
    void removeFile(std::u16string_view path) override;
    void renameFile(std::u16string_view from, std::u16string_view to) override;
    void makeFolders(std::u16string_view path) override;
    std::vector<std::u16string> listFiles(std::u16string_view folder) override { return list(folder, S_IFREG); }
    std::vector<std::u16string> listFolders(std::u16string_view folder) override { return list(folder, S_IFDIR); }
    std::unique_ptr<RandomAccessFile> open(std::u16string_view path, OpenMode mode) override;
    void syncFolder(std::u16string_view folder) override;
    std::u16string nativePath(std::u16string_view path) override;
    std::u16string absolutePath(std::u16string_view path) override;
    std::string identityOf(std::u16string_view path) override;

private:
    std::optional<Place> tryPlace(std::u16string_view path);
    Place place(std::string_view operation, std::u16string_view path);
    Place lookUpWithoutCase(const std::string& native);
    std::optional<struct ::stat> status(std::u16string_view path);
    std::vector<std::u16string> list(std::u16string_view folder, mode_t type);
    Descriptor create(std::string_view operation, std::u16string_view path, int flags);
    void replaceNative(std::string_view operation, std::u16string_view path, const Place& to,
                       const struct ::stat* likeness, const std::function<void(const Descriptor&)>& fill);
    void moveAcrossDisks(std::u16string_view from, std::u16string_view to, const Place& source, const Place& target);

    PathMap map_;
    FolderListings listings_;
};

bool isMissing(int code) noexcept {
    return code == ENOENT || code == ENOTDIR;
}

/// Whether the name is there, be it a link to nothing. What cannot be asked counts as there: the operation itself will
/// then say why.
bool isThere(const std::string& native) noexcept {
    struct ::stat status {};
    return lstat(native.c_str(), &status) == 0 || !isMissing(errno);
}

void syncNativeFolder(std::string_view operation, std::u16string_view path, const std::string& native) {
    const Descriptor folder(operation, path, native, O_RDONLY | O_DIRECTORY);
    // Some shares know no sync of a folder; what they were asked to do is then as durable as they make it.
    if (fsync(folder.number()) != 0 && errno != EINVAL && errno != EBADF) {
        folder.fail(errno);
    }
}

// --- where a path leads ---

/// The native path of `native` with each component that is not there as written replaced by one that differs in case
/// only.
Place PosixFileSystem::lookUpWithoutCase(const std::string& native) {
    // The longest front that is there; mostly all but the last component.
    std::size_t end = native.size();
    std::string known;
    while (end != 0) {
        const std::size_t separator = native.rfind('/', end - 1);
        end = separator == std::string::npos ? 0 : separator;
        known = end == 0 ? (separator == 0 ? "/" : ".") : native.substr(0, end);
        if (isThere(known)) {
            break;
        }
    }
    if (known == "." && native.front() != '/') {
        known.clear();
    }
    while (end < native.size()) {
        const std::size_t start = native[end] == '/' ? end + 1 : end;
        end = std::min(native.find('/', start), native.size());
        const std::string name = native.substr(start, end - start);
        const bool plain = !name.empty() && name != "." && name != "..";
        const auto found = plain ? listings_.find(known.empty() ? "." : known, fromUtf8(name)) : std::nullopt;
        if (plain && !found) {
            return {(known.empty() || known == "/" ? known : known + '/') + native.substr(start), false};
        }
        if (!known.empty() && known.back() != '/') {
            known += '/';
        }
        known += found.value_or(name);
    }
    return {known, isThere(known)};
}

/// No value for a path that no file can have.
std::optional<Place> PosixFileSystem::tryPlace(std::u16string_view path) {
    if (path.empty() || path.find(u'\0') != path.npos) {
        return std::nullopt;
    }
    // A name may really hold a backslash here; such a file is meant when it exists.
    if (!isWindowsPath(path) && path.find(u'\\') != path.npos) {
        if (std::string asWritten = toUtf8(path); isThere(asWritten)) {
            return Place{std::move(asWritten), true};
        }
    }
    std::string native = toUtf8(translatePath(path, map_));
    if (isThere(native)) {
        return Place{std::move(native), true};
    }
    return lookUpWithoutCase(native);
}

Place PosixFileSystem::place(std::string_view operation, std::u16string_view path) {
    auto found = tryPlace(path);
    if (!found) {
        throw notFound(operation, path);
    }
    return *std::move(found);
}

std::u16string PosixFileSystem::nativePath(std::u16string_view path) {
    const auto found = tryPlace(path);
    return found ? fromUtf8(found->native) : std::u16string(path);
}

std::u16string PosixFileSystem::absolutePath(std::u16string_view path) {
    std::u16string native = nativePath(path);
    if (native.starts_with(u'/') || isWindowsPath(native)) { // one that was not found may still be a path of Windows
        return native;
    }
    struct Free {
        void operator()(char* text) const noexcept { std::free(text); }
    };
    const std::unique_ptr<char, Free> folder(getcwd(nullptr, 0));
    if (folder == nullptr) {
        throw systemFailure("find the working folder of", path, errno);
    }
    return joinPath(fromUtf8(folder.get()), native);
}

// --- questions ---

/// No value when nothing is there. Throws when the system cannot tell: a share that is offline must not look like one
/// whose files are gone.
std::optional<struct ::stat> PosixFileSystem::status(std::u16string_view path) {
    const auto found = tryPlace(path);
    if (!found || !found->exists) {
        return std::nullopt;
    }
    struct ::stat status {};
    if (::stat(found->native.c_str(), &status) == 0) {
        return status;
    }
    if (isMissing(errno) || errno == ENAMETOOLONG || errno == ELOOP) {
        return std::nullopt;
    }
    throw systemFailure("look for", path, errno);
}

bool PosixFileSystem::fileExists(std::u16string_view path) {
    const auto found = status(path);
    return found && S_ISREG(found->st_mode);
}

std::string PosixFileSystem::identityOf(std::u16string_view path) {
    const auto found = status(path);
    if (!found) {
        throw notFound("identify", path);
    }
    return std::to_string(found->st_dev) + ":" + std::to_string(found->st_ino);
}

bool PosixFileSystem::folderExists(std::u16string_view path) {
    const auto found = status(path);
    return found && S_ISDIR(found->st_mode);
}

bool PosixFileSystem::isWritable(std::u16string_view path) {
    return fileExists(path) && faccessat(AT_FDCWD, place("look for", path).native.c_str(), W_OK, AT_EACCESS) == 0;
}

/// The names of one type of entry.
std::vector<std::u16string> PosixFileSystem::list(std::u16string_view folder, mode_t type) {
    const Place found = place("list", folder);
    struct CloseFolder {
        void operator()(DIR* open) const noexcept { closedir(open); }
    };
    const std::unique_ptr<DIR, CloseFolder> open(opendir(found.native.c_str()));
    if (open == nullptr) {
        throw systemFailure("list", folder, errno);
    }
    std::vector<std::u16string> names;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(open.get());
        if (entry == nullptr) {
            break;
        }
        const std::string_view name = entry->d_name;
        bool wanted = static_cast<mode_t>(DTTOIF(entry->d_type)) == type;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct ::stat status {};
            wanted = fstatat(dirfd(open.get()), entry->d_name, &status, 0) == 0 && (status.st_mode & S_IFMT) == type;
        }
        if (wanted && name != "." && name != "..") {
            names.push_back(fromUtf8(name));
        }
    }
    if (errno != 0) {
        throw systemFailure("list", folder, errno);
    }
    sortNames(names);
    return names;
}

// --- whole files ---

std::string PosixFileSystem::readFront(std::u16string_view path, std::size_t limit) {
    const Place found = place("read", path);
    // Without O_NONBLOCK a pipe in the folder would stop the program for ever.
    return Descriptor("read", path, found.native, O_RDONLY | O_NONBLOCK).read(limit);
}

/// Opens for writing, and enters a file that was not there into the listing of its folder.
Descriptor PosixFileSystem::create(std::string_view operation, std::u16string_view path, int flags) {
    const Place target = place(operation, path);
    if (target.exists) {
        return {operation, path, target.native, flags};
    }
    FolderListings::OwnChange change(listings_, target.native);
    Descriptor file(operation, path, target.native, flags);
    change.added();
    return file;
}

void PosixFileSystem::writeFile(std::u16string_view path, std::string_view bytes) {
    Descriptor file = create("write", path, O_WRONLY | O_CREAT | O_TRUNC);
    file.write(bytes);
    file.close();
}

void PosixFileSystem::appendFile(std::u16string_view path, std::string_view bytes) {
    Descriptor file = create("append to", path, O_WRONLY | O_CREAT | O_APPEND);
    struct ::stat before {};
    const bool known = fstat(file.number(), &before) == 0 && S_ISREG(before.st_mode);
    try {
        file.write(bytes);
    } catch (const FileError&) {
        // A full disk must not leave half a line. If even that fails, the first error is the one to tell.
        if (known) {
            [[maybe_unused]] const int undone = ftruncate(file.number(), before.st_size);
        }
        throw;
    }
    file.close();
}

/// A new file beside `to`, filled, brought to disk and renamed to it; with the rights and owner of `likeness` if given.
void PosixFileSystem::replaceNative(std::string_view operation, std::u16string_view path, const Place& to,
                                    const struct ::stat* likeness, const std::function<void(const Descriptor&)>& fill) {
    // The process number keeps two programs apart; what a killed one left under that name is overwritten.
    const std::string folder = nativeFolder(to.native);
    const std::string beside = folder + "/.kelb-" + std::to_string(getpid()) + ".tmp";
    FolderListings::OwnChange change(listings_, to.native);
    try {
        Descriptor file(operation, path, beside, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
        if (likeness != nullptr) {
            // Only root can give a file away; for others it stays theirs, which is no reason to refuse.
            if (fchown(file.number(), likeness->st_uid, likeness->st_gid) != 0 && errno != EPERM) {
                file.fail(errno);
            }
            if (fchmod(file.number(), likeness->st_mode & 07777U) != 0) {
                file.fail(errno);
            }
        }
        fill(file);
        file.syncData();
        file.close();
        if (rename(beside.c_str(), to.native.c_str()) != 0) {
            throw systemFailure(operation, path, errno);
        }
    } catch (const FileError&) {
        unlink(beside.c_str());
        throw;
    }
    if (!to.exists) {
        change.added();
    }
    syncNativeFolder(operation, path, folder);
}

void PosixFileSystem::replaceFile(std::u16string_view path, std::string_view bytes) {
    Place target = place("write", path);
    struct ::stat old {};
    const bool replaces = ::stat(target.native.c_str(), &old) == 0;
    if (replaces && S_ISDIR(old.st_mode)) {
        throw systemFailure("write", path, EISDIR);
    }
    if (replaces) { // a link stays a link: the file that it leads to is replaced
        struct Free {
            void operator()(char* text) const noexcept { std::free(text); }
        };
        const std::unique_ptr<char, Free> real(realpath(target.native.c_str(), nullptr));
        if (real == nullptr) {
            throw systemFailure("write", path, errno);
        }
        target.native = real.get();
    }
    replaceNative("write", path, target, replaces ? &old : nullptr,
                  [bytes](const Descriptor& file) { file.write(bytes); });
}

void PosixFileSystem::removeFile(std::u16string_view path) {
    const Place found = place("remove", path);
    FolderListings::OwnChange change(listings_, found.native);
    if (unlink(found.native.c_str()) != 0) {
        throw systemFailure("remove", path, errno);
    }
    change.removed();
}

void PosixFileSystem::moveAcrossDisks(std::u16string_view from, std::u16string_view to, const Place& source,
                                      const Place& target) {
    const Descriptor file("rename", from, source.native, O_RDONLY | O_NONBLOCK);
    struct ::stat status {};
    if (fstat(file.number(), &status) != 0) {
        file.fail(errno);
    }
    replaceNative("rename", to, target, &status, [&file](const Descriptor& copy) {
        constexpr std::size_t kStep = 1'048'576;
        for (std::string piece = file.read(kStep); !piece.empty(); piece = file.read(kStep)) {
            copy.write(piece);
        }
    });
    if (unlink(source.native.c_str()) != 0) {
        file.fail(errno);
    }
}

void PosixFileSystem::renameFile(std::u16string_view from, std::u16string_view to) {
    const Place source = place("rename", from);
    Place target = place("rename", to);
    if (target.native == source.native) { // only the case changes: the new spelling is wanted
        const std::string name = nativeName(toUtf8(translatePath(to, map_)));
        target = {nativeFolder(source.native) + '/' + name, nativeName(source.native) == name};
    }
    FolderListings::OwnChange removal(listings_, source.native);
    FolderListings::OwnChange arrival(listings_, target.native);
    if (rename(source.native.c_str(), target.native.c_str()) != 0) {
        if (errno != EXDEV) {
            throw systemFailure("rename", isMissing(errno) && source.exists ? to : from, errno);
        }
        moveAcrossDisks(from, to, source, target);
    } else if (!target.exists) {
        arrival.added();
    }
    removal.removed();
}

void PosixFileSystem::makeFolders(std::u16string_view path) {
    std::string native = place("make folder", path).native;
    for (std::size_t end = native.find('/', 1);; end = native.find('/', end + 1)) {
        const std::string folder = native.substr(0, end);
        FolderListings::OwnChange change(listings_, folder);
        if (mkdir(folder.c_str(), 0777) == 0) {
            change.added();
        } else if (struct ::stat status{}; errno != EEXIST && errno != EISDIR &&
                                           !(::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode))) {
            throw systemFailure("make folder", path, errno);
        }
        if (end == std::string::npos) {
            break;
        }
    }
    struct ::stat status {};
    if (::stat(native.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw systemFailure("make folder", path, EEXIST);
    }
}

// --- open files ---

Descriptor openTemporary() {
    constexpr std::string_view kOperation = "make a temporary file";
    const char* configured = std::getenv("TMPDIR");
    const std::string folder = configured != nullptr && *configured != '\0' ? configured : "/tmp";
    if (const int number = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); number >= 0) {
        return {kOperation, u"", number};
    }
    std::string name = folder + "/kelb-XXXXXX"; // a disk without nameless files
    const int number = mkostemp(name.data(), O_CLOEXEC);
    if (number < 0) {
        throw systemFailure(kOperation, fromUtf8(folder), errno);
    }
    unlink(name.c_str());
    return {kOperation, u"", number};
}

std::unique_ptr<RandomAccessFile> PosixFileSystem::open(std::u16string_view path, OpenMode mode) {
    switch (mode) {
    case OpenMode::CreateTemp:
        return makeRandomAccessFile(openTemporary());
    case OpenMode::CreateNew: {
        Descriptor file = create("create", path, O_RDWR | O_CREAT | O_EXCL);
        lockFile(file, true);
        return makeRandomAccessFile(std::move(file));
    }
    case OpenMode::Read:
    case OpenMode::ReadWrite:
        break;
    }
    const bool writes = mode == OpenMode::ReadWrite;
    const std::string_view operation = writes ? "open for writing" : "open";
    const std::string native = place(operation, path).native;
    Descriptor file(operation, path, native, (writes ? O_RDWR : O_RDONLY) | O_NONBLOCK);
    struct ::stat status {};
    if (fstat(file.number(), &status) != 0) {
        file.fail(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        file.fail(S_ISDIR(status.st_mode) ? EISDIR : ENODEV);
    }
    lockFile(file, writes);
    // Whoever had the lock before may have renamed another file to this path; what is written here would then be lost.
    struct ::stat named {};
    if (::stat(native.c_str(), &named) != 0 || named.st_ino != status.st_ino || named.st_dev != status.st_dev) {
        file.fail(EAGAIN);
    }
    return makeRandomAccessFile(std::move(file));
}

void PosixFileSystem::syncFolder(std::u16string_view folder) {
    const Place found = place("bring to disk", folder.empty() ? u"." : folder);
    syncNativeFolder("bring to disk", folder, found.native);
}

} // namespace

std::unique_ptr<FileSystem> makeSystemFileSystem(PathMap map) {
    return std::make_unique<PosixFileSystem>(std::move(map));
}

std::u16string executableFolder() {
    std::string path(PATH_MAX, '\0');
    const ssize_t size = readlink("/proc/self/exe", path.data(), path.size());
    if (size < 0) {
        throw systemFailure("find the program's own folder", u"/proc/self/exe", errno);
    }
    return fromUtf8(nativeFolder(std::string_view(path).substr(0, static_cast<std::size_t>(size))));
}

} // namespace kelb::platform
