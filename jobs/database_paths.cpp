#include "jobs/database_paths.h"

#include "jobs/job_error.h"
#include "platform/utf8.h"

namespace kelb::jobs {

std::u16string chosenDatabase(std::u16string_view given, const Configuration& configuration, Setting fallback) {
    return given.empty() ? configuration.text(fallback) : std::u16string(given);
}

std::u16string sourceDatabase(std::u16string_view given, const Configuration& configuration,
                              platform::FileSystem& files) {
    const std::u16string& folder = configuration.text(Setting::SetupAdultFolder);
    std::u16string path = given.empty() ? folder + u"\\Comb.mdb" : std::u16string(given);
    if (!files.fileExists(path)) {
        throw JobError(platform::toUtf8(u"找不到源数据库: " + path) +
                       (given.empty() ? ". Name the source database, or set " + settingName(Setting::SetupAdultFolder) +
                                            " to its folder."
                                      : ". There is no such file."));
    }
    return path;
}

} // namespace kelb::jobs
