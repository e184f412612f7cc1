#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the system hands to a program: words, environment, streams.
namespace kelb::platform {

/// The words of the command line in UTF-8, the program's own name first. Takes what main was given.
[[nodiscard]] std::vector<std::string> programArguments(int count, const char* const* arguments);

/// No value when it is not set. The name is ASCII.
[[nodiscard]] std::optional<std::u16string> environmentVariable(const std::string& name);

/// While it lives, the standard streams carry bytes as they are, and a console shows UTF-8 and obeys escape sequences.
/// One at a time in a program, made before the first byte is read or written.
class StandardStreams {
public:
    StandardStreams();
    ~StandardStreams(); ///< a console is again as it was NOLINT(performance-trivially-destructible): not on Windows
    StandardStreams(const StandardStreams&) = delete;
    StandardStreams& operator=(const StandardStreams&) = delete;

private:
    [[maybe_unused]] unsigned inputCodePage_ = 0, outputCodePage_ = 0; ///< 0: there is no console
};

} // namespace kelb::platform
