#include "platform/windows_path.h"

#include "platform/windows_headers.h"
#include "platform/windows_text.h"

namespace kelb::platform {

namespace {

constexpr std::wstring_view kUnlimited = L"\\\\?\\";
constexpr std::wstring_view kUnlimitedShare = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevice = L"\\\\.\\";
constexpr std::wstring_view kShare = L"\\\\";

/// Where the part behind the prefix begins.
std::size_t plainStart(std::wstring_view path) noexcept {
    return path.starts_with(kUnlimited) ? kUnlimited.size() : 0;
}

} // namespace

std::optional<std::wstring> fullPath(std::u16string_view path) {
    if (path.empty() || path.find(u'\0') != path.npos) {
        return std::nullopt;
    }
    std::wstring given = toWide(path);
    if (given.size() == 2 && given.back() == L':') { // to the system the working folder of the drive, to us its root
        given += L'\\';
    }
    std::wstring full;
    DWORD size = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
    while (size > full.size()) { // the working folder may grow in between
        full.resize(size);
        size = GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    }
    full.resize(size);
    constexpr std::size_t kDriveColon = 1;
    const std::size_t start = plainStart(full);
    if (size == 0 || full.starts_with(kDevice) || full.find(L':', start + kDriveColon + 1) != full.npos) {
        return std::nullopt;
    }
    return full;
}

std::wstring unlimited(const std::wstring& full) {
    if (full.starts_with(kUnlimited)) {
        return full;
    }
    if (full.starts_with(kShare)) {
        return std::wstring(kUnlimitedShare) + full.substr(kShare.size());
    }
    return std::wstring(kUnlimited) + full;
}

std::wstring folderOf(const std::wstring& unlimitedPath) {
    const std::size_t separator = unlimitedPath.rfind(L'\\');
    const bool root = separator == unlimitedPath.find(L'\\', kUnlimited.size());
    return unlimitedPath.substr(0, root ? separator + 1 : separator);
}

std::optional<wchar_t> missingDrive(const std::wstring& path) {
    const std::wstring plain = path.substr(plainStart(path));
    if (plain.size() < 2 || plain[1] != L':') {
        return std::nullopt;
    }
    const std::wstring root = plain.substr(0, 2) + L'\\';
    return GetDriveTypeW(root.c_str()) == DRIVE_NO_ROOT_DIR ? std::optional(plain.front()) : std::nullopt;
}

bool isFolder(const std::wstring& unlimitedPath) noexcept {
    const DWORD attributes = GetFileAttributesW(unlimitedPath.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace kelb::platform
