#include "jobs/page_files.h"

#include "extract/Prog_Dz.h"
#include "platform/path_map.h"

namespace kelb::jobs {

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

std::u16string lanFolderText(platform::FileSystem& files, std::u16string_view folder) {
    if (folder.empty() || folder.back() == u'\\' || folder.back() == u'/' || !files.folderExists(folder)) {
        return std::u16string(folder);
    }
    return platform::joinPath(folder, u"");
}

} // namespace kelb::jobs
