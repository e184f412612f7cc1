#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelb::platform {

enum class StandardStream { Output, Error };

/// True when the stream goes to a terminal, which obeys escape sequences, rather than to a file or a pipe.
[[nodiscard]] bool isTerminal(StandardStream stream) noexcept;

/// True when the stream goes to a file on disk: nobody waits at its other end.
[[nodiscard]] bool isRegularFile(StandardStream stream) noexcept;

inline constexpr std::size_t kUsualColumns = 80;

/// Columns of the terminal behind the stream; kUsualColumns when it does not tell.
[[nodiscard]] std::size_t terminalColumns(StandardStream stream) noexcept;

/// Columns that a terminal gives the text: two for wide East Asian characters, none for combining marks.
[[nodiscard]] std::size_t displayColumns(std::u16string_view text) noexcept;

/// The longest front of the text that needs at most `columns`.
[[nodiscard]] std::u16string_view cutToColumns(std::u16string_view text, std::size_t columns) noexcept;

} // namespace kelb::platform
