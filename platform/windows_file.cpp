#include "platform/windows_file.h"

#include "platform/windows_failures.h"
#include "platform/windows_path.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelb::platform {

namespace {

constexpr std::size_t kMostAtOnce = std::size_t{1} << 30; ///< bytes; calls take 32 bits
constexpr std::size_t kReadStep = 65'536;                 ///< bytes asked for where the size says nothing

DWORD atOnce(std::size_t size) noexcept {
    return static_cast<DWORD>(std::min(size, kMostAtOnce));
}

OVERLAPPED at(std::uint64_t offset) noexcept {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    return place;
}

constexpr std::uint64_t kEnd = 0xFFFF'FFFF'FFFF'FFFF; ///< as an offset: behind the last byte

class WindowsFile final : public RandomAccessFile {
public:
    explicit WindowsFile(FileHandle file) : file_(std::move(file)) {}

    std::uint64_t size() const override { return file_.size(); }

    std::size_t readAt(std::uint64_t offset, std::span<std::byte> buffer) const override {
        std::size_t done = 0;
        while (done < buffer.size()) {
            OVERLAPPED place = at(offset + done);
            DWORD count = 0;
            if (ReadFile(file_.get(), buffer.data() + done, atOnce(buffer.size() - done), &count, &place) == 0) {
                if (const DWORD code = GetLastError(); code != ERROR_HANDLE_EOF) {
                    throw windowsFailure("read", file_.path(), code);
                }
            }
            if (count == 0) {
                break;
            }
            done += count;
        }
        return done;
    }

    void writeAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
        std::size_t done = 0;
        while (done < bytes.size()) {
            OVERLAPPED place = at(offset + done);
            DWORD count = 0;
            if (WriteFile(file_.get(), bytes.data() + done, atOnce(bytes.size() - done), &count, &place) == 0) {
                throw windowsFailure("write", file_.path(), GetLastError());
            }
            done += count;
        }
    }

    void truncate(std::uint64_t size) override { file_.resize(size); }
    void sync() override { file_.sync(); }
    std::string identity() const override { return file_.identity(); }

private:
    FileHandle file_;
};

} // namespace

FileHandle::FileHandle(std::string_view operation, std::u16string_view path, const std::wstring& unlimitedPath,
                       const Access& access)
    : operation_(operation), path_(path), handle_(CreateFileW(unlimitedPath.c_str(), access.rights, access.sharing,
                                                              nullptr, access.creation, access.attributes, nullptr)) {
    if (handle_ == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        fail(code == ERROR_ACCESS_DENIED && isFolder(unlimitedPath) ? kIsFolder : code);
    }
}

FileHandle::FileHandle(FileHandle&& other) noexcept
    : operation_(std::move(other.operation_)), path_(std::move(other.path_)),
      handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}

FileHandle::~FileHandle() {
    if (handle_ != INVALID_HANDLE_VALUE) {
        CloseHandle(handle_);
    }
}

void FileHandle::fail(DWORD code) const {
    throw windowsFailure(operation_, path_, code);
}

void FileHandle::close() {
    if (CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) == 0) {
        fail(GetLastError());
    }
}

std::string FileHandle::read(std::size_t limit) const {
    const std::uint64_t whole = size();
    // One byte more than the size is asked for: not to get it tells the end without another call.
    std::size_t step = whole > 0 ? static_cast<std::size_t>(whole) + 1 : kReadStep;
    std::string bytes;
    while (bytes.size() < limit) {
        const std::size_t before = bytes.size();
        const DWORD wanted = atOnce(std::min(limit - before, step));
        bytes.resize(before + wanted);
        DWORD count = 0;
        if (ReadFile(handle_, bytes.data() + before, wanted, &count, nullptr) == 0) {
            fail(GetLastError());
        }
        bytes.resize(before + count);
        if (count == 0 || (bytes.size() == whole && count < wanted)) {
            break;
        }
        step = kReadStep;
    }
    return bytes;
}

void FileHandle::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        DWORD count = 0;
        if (WriteFile(handle_, bytes.data(), atOnce(bytes.size()), &count, nullptr) == 0) {
            fail(GetLastError());
        }
        bytes.remove_prefix(count);
    }
}

void FileHandle::append(std::string_view bytes) const {
    while (!bytes.empty()) {
        OVERLAPPED place = at(kEnd);
        DWORD count = 0;
        if (WriteFile(handle_, bytes.data(), atOnce(bytes.size()), &count, &place) == 0) {
            fail(GetLastError());
        }
        bytes.remove_prefix(count);
    }
}

std::uint64_t FileHandle::size() const {
    LARGE_INTEGER size{};
    if (GetFileSizeEx(handle_, &size) == 0) {
        throw windowsFailure("find the size of", path_, GetLastError());
    }
    return static_cast<std::uint64_t>(size.QuadPart);
}

void FileHandle::resize(std::uint64_t size) const {
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    if (SetFileInformationByHandle(handle_, FileEndOfFileInfo, &end, sizeof end) == 0) {
        throw windowsFailure("set the size of", path_, GetLastError());
    }
}

void FileHandle::sync() const {
    if (FlushFileBuffers(handle_) == 0) {
        throw windowsFailure("bring to disk", path_, GetLastError());
    }
}

std::string FileHandle::identity() const {
    // The newer question first: the older one's 64 bits do not tell all files of a ReFS volume apart.
    FILE_ID_INFO id{};
    if (GetFileInformationByHandleEx(handle_, FileIdInfo, &id, sizeof id) != 0) {
        std::string text = std::to_string(id.VolumeSerialNumber) + ':';
        for (const BYTE byte : id.FileId.Identifier) {
            constexpr std::string_view kDigits = "0123456789abcdef";
            text += {kDigits[byte >> 4U], kDigits[byte & 15U]};
        }
        return text;
    }
    BY_HANDLE_FILE_INFORMATION found{};
    if (GetFileInformationByHandle(handle_, &found) == 0) {
        throw windowsFailure("identify", path_, GetLastError());
    }
    const std::uint64_t number = std::uint64_t{found.nFileIndexHigh} << 32U | found.nFileIndexLow;
    return std::to_string(found.dwVolumeSerialNumber) + ':' + std::to_string(number);
}

std::unique_ptr<RandomAccessFile> makeRandomAccessFile(FileHandle file) {
    return std::make_unique<WindowsFile>(std::move(file));
}

} // namespace kelb::platform
