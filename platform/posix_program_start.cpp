#include "platform/program_start.h"

#include "platform/utf8.h"

#include <cstdlib>

namespace kelb::platform {

std::vector<std::string> programArguments(int count, const char* const* arguments) {
    return {arguments, arguments + count};
}

std::optional<std::u16string> environmentVariable(const std::string& name) {
    const char* const value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional(fromUtf8(value));
}

// Streams are bytes here, and terminals speak UTF-8.
StandardStreams::StandardStreams() = default;
StandardStreams::~StandardStreams() = default;

} // namespace kelb::platform
