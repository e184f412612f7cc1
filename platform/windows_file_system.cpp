#include "platform/file_failures.h"
#include "platform/file_system.h"
#include "platform/path_key.h"
#include "platform/utf8.h"
#include "platform/windows_failures.h"
#include "platform/windows_file.h"
#include "platform/windows_path.h"
#include "platform/windows_text.h"

#include <array>
#include <functional>
#include <limits>
#include <optional>

namespace kelb::platform {

namespace {

constexpr std::u16string_view kNoPath;
constexpr DWORD kFolderToo = FILE_FLAG_BACKUP_SEMANTICS; ///< without it a folder cannot be opened

/// Paths as they stand, made whole and unlimited for each call. The system finds names without regard to case. A file
/// opened for writing is open to no other program; one opened for reading, to readers.
class WindowsFileSystem final : public FileSystem {
public:
    bool fileExists(std::u16string_view path) override;
    bool folderExists(std::u16string_view path) override;
    bool isWritable(std::u16string_view path) override;
    std::string readFile(std::u16string_view path) override {
        return readFront(path, std::numeric_limits<std::size_t>::max());
    }
    std::string readFront(std::u16string_view path, std::size_t limit) override;
    void writeFile(std::u16string_view path, std::string_view bytes) override;
    void replaceFile(std::u16string_view path, std::string_view bytes) override;
    void appendFile(std::u16string_view path, std::string_view bytes) override;
    void removeFile(std::u16string_view path) override;
    void renameFile(std::u16string_view from, std::u16string_view to) override;
    void makeFolders(std::u16string_view path) override;
    std::vector<std::u16string> listFiles(std::u16string_view folder) override { return list(folder, Entry::File); }
    std::vector<std::u16string> listFolders(std::u16string_view folder) override { return list(folder, Entry::Folder); }
    std::unique_ptr<RandomAccessFile> open(std::u16string_view path, OpenMode mode) override;
    void syncFolder(std::u16string_view folder) override;
    std::u16string nativePath(std::u16string_view path) override { return std::u16string(path); }
    std::u16string absolutePath(std::u16string_view path) override;
    std::string identityOf(std::u16string_view path) override;

private:
    enum class Entry { File, Folder };

    std::vector<std::u16string> list(std::u16string_view folder, Entry wanted);
};

bool isMissing(DWORD code) noexcept {
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND || code == ERROR_INVALID_NAME ||
           code == ERROR_BAD_PATHNAME || code == ERROR_DIRECTORY || code == ERROR_FILENAME_EXCED_RANGE;
}

/// A drive that is not there (a disk that was pulled out, a share that is not connected) is told as such: its files
/// must not look as if they were gone.
void requireDrive(std::string_view operation, std::u16string_view path, const std::wstring& native) {
    if (const auto letter = missingDrive(native)) {
        throw FileError(FileError::Kind::Unmapped, operation, path, 0,
                        std::string("there is no drive ") + static_cast<char>(*letter) +
                            ": on this machine now; connect it and try again");
    }
}

[[noreturn]] void fail(std::string_view operation, std::u16string_view path, const std::wstring& native, DWORD code) {
    if (isMissing(code)) {
        requireDrive(operation, path, native);
    }
    throw windowsFailure(operation, path, code);
}

std::wstring place(std::string_view operation, std::u16string_view path) {
    const auto full = fullPath(path);
    if (!full) {
        throw notFound(operation, path);
    }
    return unlimited(*full);
}

FileHandle openHandle(std::string_view operation, std::u16string_view path, const FileHandle::Access& access) {
    const std::wstring native = place(operation, path);
    requireDrive(operation, path, native);
    return {operation, path, native, access};
}

/// Attributes of what a link leads to; no value when nothing is there. Throws when the system cannot tell.
std::optional<DWORD> attributesOf(std::u16string_view path) {
    constexpr std::string_view kOperation = "look for";
    const auto full = fullPath(path);
    if (!full) {
        return std::nullopt;
    }
    const std::wstring native = unlimited(*full);
    DWORD attributes = GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD code = GetLastError();
        if (!isMissing(code)) {
            fail(kOperation, path, native, code);
        }
        requireDrive(kOperation, path, native);
        return std::nullopt;
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        const HANDLE target =
            CreateFileW(native.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING, kFolderToo, nullptr);
        BY_HANDLE_FILE_INFORMATION found{};
        const bool known = target != INVALID_HANDLE_VALUE && GetFileInformationByHandle(target, &found) != 0;
        const DWORD code = GetLastError();
        if (target != INVALID_HANDLE_VALUE) {
            CloseHandle(target);
        }
        if (!known && !isMissing(code)) {
            fail(kOperation, path, native, code);
        }
        return known ? std::optional(found.dwFileAttributes) : std::nullopt;
    }
    return attributes;
}

bool isFolderBits(DWORD attributes) noexcept {
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Repeats a removal or renaming that is refused at first: virus scanners and indexers hold a new file for moments.
/// Result: 0 or the code of the last refusal.
template <class Call>
DWORD patiently(Call call) {
    constexpr std::array<DWORD, 7> kWaits{1, 2, 5, 10, 30, 70, 130}; // milliseconds
    for (const DWORD wait : kWaits) {
        const DWORD code = call() != 0 ? 0 : GetLastError();
        if (code != ERROR_SHARING_VIOLATION && code != ERROR_ACCESS_DENIED) {
            return code;
        }
        Sleep(wait);
    }
    return call() != 0 ? 0 : GetLastError();
}

/// "Access denied" is also what Windows says of a file that another program has open: the code that tells which.
DWORD whyDenied(DWORD code, const std::wstring& native) {
    if (code != ERROR_ACCESS_DENIED) {
        return code;
    }
    if (isFolder(native)) {
        return kIsFolder;
    }
    const HANDLE probe = CreateFileW(native.c_str(), DELETE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (probe != INVALID_HANDLE_VALUE) {
        CloseHandle(probe);
        return code;
    }
    return GetLastError() == ERROR_SHARING_VIOLATION ? DWORD{ERROR_SHARING_VIOLATION} : code;
}

void flushFolder(std::string_view operation, std::u16string_view path, const std::wstring& native) {
    const HANDLE folder =
        CreateFileW(native.c_str(), FILE_ADD_FILE, kShareAll, nullptr, OPEN_EXISTING, kFolderToo, nullptr);
    if (folder == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        if (code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION) { // who may not write has changed nothing
            fail(operation, path, native, code);
        }
        return;
    }
    // Some disks and shares know no sync of a folder; what they were asked to do is then as durable as they make it.
    const DWORD code = FlushFileBuffers(folder) != 0 ? 0 : GetLastError();
    CloseHandle(folder);
    if (code != 0 && code != ERROR_INVALID_FUNCTION && code != ERROR_ACCESS_DENIED && code != ERROR_INVALID_HANDLE &&
        code != ERROR_NOT_SUPPORTED && code != ERROR_INVALID_PARAMETER) {
        fail(operation, path, native, code);
    }
}

// --- questions ---

bool WindowsFileSystem::fileExists(std::u16string_view path) {
    const auto attributes = attributesOf(path);
    return attributes && !isFolderBits(*attributes);
}

bool WindowsFileSystem::folderExists(std::u16string_view path) {
    const auto attributes = attributesOf(path);
    return attributes && isFolderBits(*attributes);
}

bool WindowsFileSystem::isWritable(std::u16string_view path) {
    const auto attributes = attributesOf(path);
    if (!attributes || isFolderBits(*attributes) || (*attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        return false;
    }
    const HANDLE probe = CreateFileW(place("look for", path).c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (probe == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_SHARING_VIOLATION; // in use, which is not asked here
    }
    CloseHandle(probe);
    return true;
}

std::u16string WindowsFileSystem::absolutePath(std::u16string_view path) {
    const auto full = fullPath(path);
    return full ? fromWide(*full) : std::u16string(path);
}

std::string WindowsFileSystem::identityOf(std::u16string_view path) {
    // Attributes may be read whatever others do with the file.
    return openHandle("identify", path, {FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING, kFolderToo}).identity();
}

std::vector<std::u16string> WindowsFileSystem::list(std::u16string_view folder, Entry wanted) {
    constexpr std::string_view kOperation = "list";
    const std::wstring native = place(kOperation, folder);
    const std::wstring pattern = native + (native.ends_with(L'\\') ? L"*" : L"\\*");
    struct CloseSearch {
        using pointer = HANDLE;
        void operator()(HANDLE search) const noexcept { FindClose(search); }
    };
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr,
                                           FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        if (code == ERROR_FILE_NOT_FOUND && isFolder(native)) { // an empty root has not even "."
            return {};
        }
        fail(kOperation, folder, native, code);
    }
    const std::unique_ptr<HANDLE, CloseSearch> owner(search);
    std::vector<std::u16string> names;
    do {
        const std::wstring_view name = entry.cFileName;
        if (isFolderBits(entry.dwFileAttributes) == (wanted == Entry::Folder) && name != L"." && name != L"..") {
            names.push_back(fromWide(name));
        }
    } while (FindNextFileW(search, &entry) != 0);
    if (const DWORD code = GetLastError(); code != ERROR_NO_MORE_FILES) {
        fail(kOperation, folder, native, code);
    }
    sortNames(names);
    return names;
}

// --- whole files ---

std::string WindowsFileSystem::readFront(std::u16string_view path, std::size_t limit) {
    return openHandle("read", path, {GENERIC_READ, kShareAll}).read(limit);
}

void WindowsFileSystem::writeFile(std::u16string_view path, std::string_view bytes) {
    // Not created anew but emptied: a hidden file would be refused.
    FileHandle file = openHandle("write", path, {GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS});
    file.resize(0);
    file.write(bytes);
    file.close();
}

void WindowsFileSystem::appendFile(std::u16string_view path, std::string_view bytes) {
    FileHandle file = openHandle("append to", path, {GENERIC_WRITE, kShareAll, OPEN_ALWAYS});
    const std::uint64_t before = file.size();
    try {
        file.append(bytes);
    } catch (const FileError&) {
        try { // A full disk must not leave half a line. If even that fails, the first error is the one to tell.
            file.resize(before);
        } catch (const FileError&) {
        }
        throw;
    }
    file.close();
}

/// The file that a link leads to, which is the one to be replaced.
std::wstring behindLinks(std::string_view operation, std::u16string_view path, const std::wstring& native) {
    const DWORD attributes = GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return native;
    }
    const FileHandle target(operation, path, native, {FILE_READ_ATTRIBUTES, kShareAll});
    std::wstring real(32'768, L'\0'); // the longest path that there is
    const DWORD size = GetFinalPathNameByHandleW(target.get(), real.data(), static_cast<DWORD>(real.size()), 0);
    if (size == 0 || size > real.size()) {
        target.fail(GetLastError());
    }
    real.resize(size);
    return real;
}

/// A new file beside `to`, filled, brought to disk and renamed to it. Its rights are those that the folder gives to new
/// files; hidden stays hidden.
void replaceNative(std::string_view operation, std::u16string_view path, const std::wstring& to,
                   const std::function<void(const FileHandle&)>& fill) {
    // The process number keeps two programs apart; what a killed one left under that name is overwritten.
    const std::wstring folder = folderOf(to);
    const std::wstring beside =
        folder + (folder.ends_with(L'\\') ? L"" : L"\\") + L".kelb-" + std::to_wstring(GetCurrentProcessId()) + L".tmp";
    const DWORD old = GetFileAttributesW(to.c_str());
    constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    const DWORD attributes = old == INVALID_FILE_ATTRIBUTES ? 0 : old & kKept;
    try {
        FileHandle file(operation, path, beside,
                        {GENERIC_WRITE, 0, CREATE_ALWAYS, attributes == 0 ? DWORD{FILE_ATTRIBUTE_NORMAL} : attributes});
        fill(file);
        file.sync();
        file.close();
        constexpr DWORD kHow = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
        if (const DWORD code = patiently([&] { return MoveFileExW(beside.c_str(), to.c_str(), kHow); }); code != 0) {
            throw windowsFailure(operation, path, whyDenied(code, to));
        }
    } catch (const FileError&) {
        DeleteFileW(beside.c_str());
        throw;
    }
    flushFolder(operation, path, folder);
}

void WindowsFileSystem::replaceFile(std::u16string_view path, std::string_view bytes) {
    constexpr std::string_view kOperation = "write";
    const std::wstring native = place(kOperation, path);
    requireDrive(kOperation, path, native);
    if (isFolder(native)) {
        throw windowsFailure(kOperation, path, kIsFolder);
    }
    replaceNative(kOperation, path, behindLinks(kOperation, path, native),
                  [bytes](const FileHandle& file) { file.write(bytes); });
}

void removeNative(std::string_view operation, std::u16string_view path, const std::wstring& native) {
    if (const DWORD code = patiently([&] { return DeleteFileW(native.c_str()); }); code != 0) {
        fail(operation, path, native, whyDenied(code, native));
    }
}

void WindowsFileSystem::removeFile(std::u16string_view path) {
    removeNative("remove", path, place("remove", path));
}

void moveAcrossDisks(std::u16string_view from, std::u16string_view to, const std::wstring& source,
                     const std::wstring& target) {
    {
        const FileHandle file("rename", from, source, {GENERIC_READ, FILE_SHARE_READ});
        replaceNative("rename", to, target, [&file](const FileHandle& copy) {
            constexpr std::size_t kStep = 1'048'576;
            for (std::string piece = file.read(kStep); !piece.empty(); piece = file.read(kStep)) {
                copy.write(piece);
            }
        });
    }
    removeNative("rename", from, source);
}

void WindowsFileSystem::renameFile(std::u16string_view from, std::u16string_view to) {
    constexpr std::string_view kOperation = "rename";
    const std::wstring source = place(kOperation, from);
    const std::wstring target = place(kOperation, to);
    constexpr DWORD kHow = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    const DWORD code = patiently([&] { return MoveFileExW(source.c_str(), target.c_str(), kHow); });
    if (code == ERROR_NOT_SAME_DEVICE) {
        moveAcrossDisks(from, to, source, target);
    } else if (code != 0) {
        const bool sourceThere = GetFileAttributesW(source.c_str()) != INVALID_FILE_ATTRIBUTES;
        if (!sourceThere) {
            fail(kOperation, from, source, code);
        }
        if (isMissing(code)) {
            fail(kOperation, to, target, code);
        }
        const DWORD sourceReason = whyDenied(code, source);
        if (sourceReason != code) {
            fail(kOperation, from, source, sourceReason);
        }
        fail(kOperation, to, target, whyDenied(code, target));
    }
}

void makeNativeFolders(std::u16string_view path, const std::wstring& native) {
    constexpr std::string_view kOperation = "make folder";
    const DWORD code = CreateDirectoryW(native.c_str(), nullptr) != 0 ? 0 : GetLastError();
    if (code == 0 || isFolder(native)) {
        return;
    }
    const std::wstring above = folderOf(native);
    if (code != ERROR_PATH_NOT_FOUND || above == native) {
        fail(kOperation, path, native, code);
    }
    if (GetFileAttributesW(above.c_str()) != INVALID_FILE_ATTRIBUTES && !isFolder(above)) {
        fail(kOperation, path, native, ERROR_DIRECTORY);
    }
    makeNativeFolders(path, above);
    if (CreateDirectoryW(native.c_str(), nullptr) == 0) {
        if (const DWORD again = GetLastError(); !isFolder(native)) { // another program may have made it just now
            fail(kOperation, path, native, again);
        }
    }
}

void WindowsFileSystem::makeFolders(std::u16string_view path) {
    std::wstring native = place("make folder", path);
    requireDrive("make folder", path, native);
    while (native.ends_with(L'\\') && folderOf(native) != native) {
        native.pop_back();
    }
    makeNativeFolders(path, native);
}

// --- open files ---

FileHandle openTemporary() {
    constexpr std::string_view kOperation = "make a temporary file";
    std::wstring folder(MAX_PATH + 1, L'\0');
    std::wstring name(MAX_PATH + 1, L'\0');
    folder.resize(GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()));
    if (folder.empty() || GetTempFileNameW(folder.c_str(), L"klb", 0, name.data()) == 0) {
        throw windowsFailure(kOperation, fromWide(folder), GetLastError());
    }
    name.resize(name.find(L'\0'));
    return {kOperation,
            kNoPath,
            name,
            {GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE}};
}

std::unique_ptr<RandomAccessFile> WindowsFileSystem::open(std::u16string_view path, OpenMode mode) {
    switch (mode) {
    case OpenMode::CreateTemp:
        return makeRandomAccessFile(openTemporary());
    case OpenMode::CreateNew:
        return makeRandomAccessFile(openHandle("create", path, {GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW}));
    case OpenMode::ReadWrite:
        return makeRandomAccessFile(openHandle("open for writing", path, {GENERIC_READ | GENERIC_WRITE, 0}));
    case OpenMode::Read:
        break;
    }
    return makeRandomAccessFile(openHandle("open", path, {GENERIC_READ, FILE_SHARE_READ}));
}

void WindowsFileSystem::syncFolder(std::u16string_view folder) {
    const std::u16string_view named = folder.empty() ? u"." : folder;
    flushFolder("bring to disk", folder, place("bring to disk", named));
}

} // namespace

std::unique_ptr<FileSystem> makeSystemFileSystem(PathMap /*map*/) {
    return std::make_unique<WindowsFileSystem>();
}

std::u16string executableFolder() {
    std::wstring path(MAX_PATH, L'\0');
    DWORD size = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    while (size == path.size()) {
        path.resize(path.size() * 2);
        size = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    }
    if (size == 0) {
        throw windowsFailure("find the program's own folder", kNoPath, GetLastError());
    }
    return std::u16string(parentFolder(fromWide(std::wstring_view(path).substr(0, size))));
}

} // namespace kelb::platform
