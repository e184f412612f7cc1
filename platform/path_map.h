#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelb::platform {

/// Where drives and shares of Windows paths lie on this machine ([Drives] and [Shares] of the settings file).
struct PathMap {
    struct Entry {
        std::u16string windows; ///< "d" for a drive letter, `\\host\share` for a share; compared without case
        std::u16string folder;  ///< native folder
    };
    std::vector<Entry> drives;
    std::vector<Entry> shares;
};

/// True for `X:\…`, `X:/…`, `X:` and `\\host\…`.
[[nodiscard]] bool isWindowsPath(std::u16string_view path) noexcept;

/// On Windows the path as it stands. Elsewhere: a path of Windows shape goes through the map; every `\` becomes `/`
/// in it and in a native path that a Windows path was joined to (a name that really holds a backslash and exists as
/// written is left alone by the file system, see PosixFileSystem). Throws FileError (Unmapped), naming the key to
/// set, for a drive or share that is not mapped. Does not touch the disk.
[[nodiscard]] std::u16string translatePath(std::u16string_view path, const PathMap& map);

/// `folder` + separator (unless it ends in one) + `name`; the separator is `\` when `folder` is a Windows path.
[[nodiscard]] std::u16string joinPath(std::u16string_view folder, std::u16string_view name);
/// The last component, after `/` or `\`.
[[nodiscard]] std::u16string_view fileName(std::u16string_view path) noexcept;
/// Everything before the last component, without the separator ("" when there is none; the root keeps its own).
[[nodiscard]] std::u16string_view parentFolder(std::u16string_view path) noexcept;

} // namespace kelb::platform
