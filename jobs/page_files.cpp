#include "jobs/page_files.h"

#include "extract/Prog_Dz.h"
#include "platform/path_map.h"

#include <algorithm>

namespace kelb::jobs {
namespace {

/// Bytes in which nearly every page has its title.
constexpr std::size_t kTitleFront = 16384;

std::size_t findAsciiNoCase(std::string_view bytes, std::string_view wanted, std::size_t from) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    const auto found = std::search(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(), wanted.begin(),
                                   wanted.end(), [lower](char a, char b) { return lower(a) == b; });
    return found == bytes.end() ? bytes.npos : static_cast<std::size_t>(found - bytes.begin());
}

/// Behind the end tag of the title. No second byte of code page 936 is a "<", so bytes can be searched.
std::size_t titleEnd(std::string_view page) {
    constexpr std::string_view kEndTag = "</title>";
    const std::size_t start = findAsciiNoCase(page, "<title>", 0);
    const std::size_t end = start == page.npos ? page.npos : findAsciiNoCase(page, kEndTag, start);
    return end == page.npos ? page.npos : end + kEndTag.size();
}

} // namespace

std::u16string PageFiles::path(const PageLocation& location, std::u16string_view storedPath) {
    using extract::Prog_Dz::LanMode;
    return extract::Prog_Dz::localPagePath(location.lanMode ? LanMode::On : LanMode::Off, location.lanFolder,
                                           storedPath);
}

bool PageFiles::read(std::u16string_view path, std::u16string& page) {
    page.clear();
    if (path.empty() || !files_.fileExists(path)) {
        return false;
    }
    page = platform::decodePage(files_.readFile(path), encoding_);
    return true;
}

std::u16string PageFiles::title(std::u16string_view path) {
    std::string front = files_.readFront(path, kTitleFront);
    std::size_t end = titleEnd(front);
    if (end == front.npos && front.size() == kTitleFront) {
        front = files_.readFile(path);
        end = titleEnd(front);
    }
    const platform::PageEncoding encoding = platform::encodingOf(front, encoding_);
    return extract::Prog_Dz::extTitleTag(
        platform::decodePage(std::string_view(front).substr(0, std::min(end, front.size())), encoding));
}

std::u16string lanFolderText(platform::FileSystem& files, std::u16string_view folder) {
    if (folder.empty() || folder.back() == u'\\' || folder.back() == u'/' || !files.folderExists(folder)) {
        return std::u16string(folder);
    }
    return platform::joinPath(folder, u"");
}

} // namespace kelb::jobs
