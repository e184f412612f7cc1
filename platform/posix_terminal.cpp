#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelb::platform {

namespace {

int descriptorOf(StandardStream stream) noexcept {
    return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

} // namespace

bool isTerminal(StandardStream stream) noexcept {
    return isatty(descriptorOf(stream)) != 0;
}

bool isRegularFile(StandardStream stream) noexcept {
    struct ::stat status {};
    return fstat(descriptorOf(stream), &status) == 0 && S_ISREG(status.st_mode);
}

std::size_t terminalColumns(StandardStream stream) noexcept {
    winsize size{};
    if (ioctl(descriptorOf(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return kUsualColumns;
}

} // namespace kelb::platform
