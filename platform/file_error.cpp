#include "platform/file_error.h"

#include "platform/utf8.h"

#include <algorithm>

namespace kelb::platform {

namespace {

std::string oneLine(std::string_view operation, std::u16string_view path, std::string_view reason) {
    std::string line = "cannot ";
    line += operation;
    if (!path.empty()) {
        line += " \"";
        toUtf8(path, line);
        line += '"';
    }
    line += ": ";
    line += reason;
    // A path out of a damaged row may hold line ends; the message must stay one line of a log.
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return line;
}

} // namespace

FileError::FileError(Kind kind, std::string_view operation, std::u16string_view path, int systemCode,
                     std::string_view reason)
    : std::runtime_error(oneLine(operation, path, reason)), kind_(kind), path_(path), systemCode_(systemCode) {}

} // namespace kelb::platform
