#include "platform/windows_failures.h"

#include "platform/file_failures.h"
#include "platform/utf8.h"
#include "platform/windows_headers.h"
#include "platform/windows_text.h"

#include <array>
#include <cerrno>
#include <memory>

namespace kelb::platform {

namespace {

struct SameFault {
    unsigned long windows;
    int code; ///< errno
};

constexpr auto kSameFaults = std::to_array<SameFault>({
    {ERROR_FILE_NOT_FOUND, ENOENT},
    {ERROR_PATH_NOT_FOUND, ENOENT},
    {ERROR_INVALID_DRIVE, ENOENT},
    {ERROR_INVALID_NAME, ENOENT},
    {ERROR_BAD_PATHNAME, ENOENT},
    {ERROR_DIRECTORY, ENOTDIR},
    {ERROR_ACCESS_DENIED, EACCES},
    {ERROR_PRIVILEGE_NOT_HELD, EPERM},
    {ERROR_WRITE_PROTECT, EROFS},
    {ERROR_FILE_EXISTS, EEXIST},
    {ERROR_ALREADY_EXISTS, EEXIST},
    {ERROR_SHARING_VIOLATION, EAGAIN},
    {ERROR_LOCK_VIOLATION, EAGAIN},
    {ERROR_USER_MAPPED_FILE, EAGAIN},
    {ERROR_BUSY, EBUSY},
    {ERROR_DISK_FULL, ENOSPC},
    {ERROR_HANDLE_DISK_FULL, ENOSPC},
    {kQuotaUsedUp, ENOSPC},
    {ERROR_FILE_TOO_LARGE, EFBIG},
    {kIsFolder, EISDIR},
    {ERROR_DIR_NOT_EMPTY, ENOTEMPTY},
    {ERROR_FILENAME_EXCED_RANGE, ENAMETOOLONG},
    {ERROR_TOO_MANY_OPEN_FILES, EMFILE},
    {ERROR_CRC, EIO},
    {ERROR_IO_DEVICE, EIO},
});

std::string wordsOfWindows(unsigned long code) {
    struct Free {
        void operator()(wchar_t* text) const noexcept { LocalFree(text); }
    };
    wchar_t* text = nullptr;
    const DWORD size =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const std::unique_ptr<wchar_t, Free> owner(text);
    std::wstring_view words(text, size);
    words = words.substr(0, words.find_last_not_of(L"\r\n. ") + 1);
    return words.empty() ? "error " + std::to_string(code) + " of Windows" : toUtf8(fromWide(words));
}

} // namespace

FileError windowsFailure(std::string_view operation, std::u16string_view path, unsigned long code) {
    for (const SameFault& fault : kSameFaults) {
        if (fault.windows == code) {
            return systemFailure(operation, path, fault.code);
        }
    }
    return {FileError::Kind::Other, operation, path, static_cast<int>(code), wordsOfWindows(code)};
}

} // namespace kelb::platform
