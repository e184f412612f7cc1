#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelb::platform {

/// The path from its drive or share on, with `\` for every separator and without "." and "..". No value for what no
/// file can have: an empty path, one with a zero, with a ":" behind the drive (a stream of another file), or the name
/// of a device ("NUL", "CON", a pipe), from which a program would wait for ever.
[[nodiscard]] std::optional<std::wstring> fullPath(std::u16string_view path);

/// A full path in the form that is not limited to 260 characters.
[[nodiscard]] std::wstring unlimited(const std::wstring& full);

/// Folder of an unlimited path, without separator at its end; the root keeps its own.
[[nodiscard]] std::wstring folderOf(const std::wstring& unlimitedPath);

/// The letter of a full or unlimited path's drive when this machine has no such drive now.
[[nodiscard]] std::optional<wchar_t> missingDrive(const std::wstring& path);

/// False also when nothing is there.
[[nodiscard]] bool isFolder(const std::wstring& unlimitedPath) noexcept;

} // namespace kelb::platform
