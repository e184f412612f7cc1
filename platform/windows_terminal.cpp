#include "platform/terminal.h"

#include "platform/windows_headers.h"

namespace kelb::platform {

namespace {

HANDLE handleOf(StandardStream stream) noexcept {
    return GetStdHandle(stream == StandardStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

} // namespace

bool isTerminal(StandardStream stream) noexcept {
    // A console that does not obey escape sequences (before Windows 10) is written to as a file is.
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0 && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool isRegularFile(StandardStream stream) noexcept {
    return GetFileType(handleOf(stream)) == FILE_TYPE_DISK;
}

std::size_t terminalColumns(StandardStream stream) noexcept {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (GetConsoleScreenBufferInfo(handleOf(stream), &screen) != 0 && screen.srWindow.Right > screen.srWindow.Left) {
        return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left) + 1;
    }
    return kUsualColumns;
}

} // namespace kelb::platform
