#include "platform/path_map.h"

#include "platform/file_error.h"
#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>

namespace kelb::platform {

namespace {

bool isLetter(char16_t unit) noexcept {
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

bool isSeparator(char16_t unit) noexcept {
    return unit == u'\\' || unit == u'/';
}

bool hasDrive(std::u16string_view path) noexcept {
    return path.size() >= 2 && isLetter(path[0]) && path[1] == u':' && (path.size() == 2 || isSeparator(path[2]));
}

bool isShare(std::u16string_view path) noexcept {
    return path.size() > 2 && path[0] == u'\\' && path[1] == u'\\' && !isSeparator(path[2]);
}

#ifdef _WIN32
constexpr bool kPathsStand = true; ///< drives and shares are the system's own
#else
constexpr bool kPathsStand = false;
#endif

std::u16string withSlashes(std::u16string_view path) {
    std::u16string native(path);
    std::replace(native.begin(), native.end(), u'\\', u'/');
    return native;
}

std::u16string_view withoutEndSeparators(std::u16string_view path) noexcept {
    while (!path.empty() && isSeparator(path.back())) {
        path.remove_suffix(1);
    }
    return path;
}

/// `folder` with `rest` (empty, or beginning with a separator) behind it.
std::u16string below(std::u16string_view folder, std::u16string_view rest) {
    std::u16string native(rest.empty() ? folder : withoutEndSeparators(folder));
    native += withSlashes(rest);
    return native;
}

std::u16string translateDrive(std::u16string_view path, const PathMap& map) {
    const auto letter = path.substr(0, 1);
    for (const PathMap::Entry& entry : map.drives) {
        const auto name = std::u16string_view(entry.windows).substr(0, entry.windows.find(u':'));
        if (equalNoCase(name, letter) && !entry.folder.empty()) {
            return below(entry.folder, path.substr(2));
        }
    }
    const std::string key = toUtf8(upperCase(letter));
    throw FileError(FileError::Kind::Unmapped, "find", path, 0,
                    "drive " + key + ": is not mapped; set " + key + "=<folder> in section [Drives] of Kelb.ini");
}

/// Whether `share` is a whole front of `path`, with "\" and "/" alike.
bool leads(std::u16string_view share, std::u16string_view path) noexcept {
    if (share.empty() || share.size() > path.size() ||
        (share.size() < path.size() && !isSeparator(path[share.size()]))) {
        return false;
    }
    return std::equal(share.begin(), share.end(), path.begin(), [](char16_t a, char16_t b) {
        return (isSeparator(a) && isSeparator(b)) || upper(a) == upper(b);
    });
}

/// `\\host\share` of a path, or all of it when it is shorter.
std::u16string_view shareOf(std::u16string_view path) noexcept {
    std::size_t end = path.find_first_of(u"\\/", 2);
    if (end != path.npos) {
        end = path.find_first_of(u"\\/", end + 1);
    }
    return path.substr(0, end);
}

std::u16string translateShare(std::u16string_view path, const PathMap& map) {
    const PathMap::Entry* best = nullptr; // the longest front, so that a folder of a share may lie elsewhere
    std::size_t bestSize = 0;
    for (const PathMap::Entry& entry : map.shares) {
        const auto share = withoutEndSeparators(entry.windows);
        if (!entry.folder.empty() && leads(share, path) && (best == nullptr || share.size() > bestSize)) {
            best = &entry;
            bestSize = share.size();
        }
    }
    if (best == nullptr) {
        const std::string share = toUtf8(shareOf(path));
        throw FileError(FileError::Kind::Unmapped, "find", path, 0,
                        "share " + share + " is not mapped; set share1=" + share +
                            "|<folder> in section [Shares] of Kelb.ini");
    }
    return below(best->folder, path.substr(bestSize));
}

} // namespace

bool isWindowsPath(std::u16string_view path) noexcept {
    return hasDrive(path) || isShare(path);
}

std::u16string translatePath(std::u16string_view path, const PathMap& map) {
    if constexpr (kPathsStand) {
        return std::u16string(path);
    }
    if (hasDrive(path)) {
        return translateDrive(path, map);
    }
    if (isShare(path)) {
        return translateShare(path, map);
    }
    return withSlashes(path);
}

std::u16string joinPath(std::u16string_view folder, std::u16string_view name) {
    std::u16string path(folder);
    if (!path.empty() && !isSeparator(path.back())) {
        path += isWindowsPath(folder) ? u'\\' : u'/';
    }
    path += name;
    return path;
}

std::u16string_view fileName(std::u16string_view path) noexcept {
    const std::size_t separator = path.find_last_of(u"\\/");
    return separator == path.npos ? path : path.substr(separator + 1);
}

std::u16string_view parentFolder(std::u16string_view path) noexcept {
    const std::size_t separator = path.find_last_of(u"\\/");
    if (separator == path.npos) {
        return {};
    }
    return path.substr(0, separator == 0 ? 1 : separator); // the root is its own separator
}

} // namespace kelb::platform
