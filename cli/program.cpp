#include "cli/program.h"

#include "app/RWIni.h"
#include "platform/memory_file_system.h"
#include "platform/path_map.h"
#include "platform/program_start.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

std::u16string homeFolder(const std::string& given) {
    std::u16string folder = platform::fromUtf8(given);
    if (folder.empty()) {
        folder = platform::environmentVariable("KELB_HOME").value_or(u"");
    }
    if (folder.empty()) {
        return platform::executableFolder();
    }
    while (folder.size() > 1 && (folder.back() == u'/' || folder.back() == u'\\')) {
        folder.pop_back();
    }
    return folder;
}

} // namespace

Program::Program(const CommonOptions& options) : options_(options) {
    const std::u16string home = homeFolder(options_.home);
    jobs::Configuration configuration = readSettings(home);
    disk_ = platform::makeSystemFileSystem(configuration.pathMap());
    if (!disk_->folderExists(home)) {
        throw platform::FileError(platform::FileError::Kind::NotFound, "open the application folder", home, 0,
                                  "there is no such folder; name one with --home or KELB_HOME");
    }
    if (options_.dryRun) {
        overlay_ = platform::makeDryRunFileSystem(*disk_);
    }
    context_ = std::make_unique<jobs::Context>(
        platform::Platform{overlay_ ? *overlay_ : *disk_, clock_, random_, home}, std::move(configuration),
        ado::Environment::Options{.dryRun = options_.dryRun, .ignoreLockFile = options_.force});
    if (!options_.trash.empty()) {
        context_->setTrashFolder(platform::fromUtf8(options_.trash));
    }
}

/// Drives are mapped by the settings file itself, so it is read by its path on this machine.
jobs::Configuration Program::readSettings(const std::u16string& applicationFolder) const {
    const auto files = platform::makeSystemFileSystem({});
    const bool named = !options_.ini.empty();
    const std::u16string path =
        named ? platform::fromUtf8(options_.ini) : platform::joinPath(applicationFolder, u"Kelb.ini");
    if (!files->fileExists(path)) {
        if (named) {
            throw platform::FileError(platform::FileError::Kind::NotFound, "read the settings file", path, 0,
                                      "there is no such file");
        }
        return {};
    }
    const app::RWIni::IniFile ini(*files, path);
    return jobs::Configuration(
        [&ini](std::u16string_view section, std::u16string_view key) { return ini.ReadIni(key, section); });
}

} // namespace kelb::cli
