#include "app/program.h"

#include "app/RWIni.h"
#include "app/qt_text.h"
#include "platform/path_map.h"

#include <QtGlobal>

namespace kelb::app {
namespace {

std::u16string homeFolder(const QString& given) {
    QString folder = given.isEmpty() ? qEnvironmentVariable("KELB_HOME") : given;
    while (folder.size() > 1 && (folder.endsWith(u'/') || folder.endsWith(u'\\'))) {
        folder.chop(1);
    }
    return folder.isEmpty() ? platform::executableFolder() : fromQt(folder);
}

[[noreturn]] void missing(std::string_view operation, std::u16string_view path, std::string_view reason) {
    throw platform::FileError(platform::FileError::Kind::NotFound, operation, path, 0, reason);
}

} // namespace

Program::Program(const StartOptions& options) : home_(homeFolder(options.home)) {
    settingsFile_ = options.ini.isEmpty() ? platform::joinPath(home_, u"Kelb.ini") : fromQt(options.ini);
    readSettings(!options.ini.isEmpty());
    files_ = platform::makeSystemFileSystem(configuration_.pathMap());
    if (!files_->folderExists(home_)) {
        missing("open the application folder", home_, "there is no such folder; name one with --home or KELB_HOME");
    }
    platform_ = std::make_unique<platform::Platform>(platform::Platform{*files_, clock_, random_, home_});
    contexts_ = std::make_unique<JobContexts>(*platform_, configuration_);
}

/// Drives are mapped by the settings file itself, so it is read by its path on this machine.
void Program::readSettings(bool mustExist) {
    const std::unique_ptr<platform::FileSystem> files = platform::makeSystemFileSystem({});
    if (mustExist && !files->fileExists(settingsFile_)) {
        missing("read the settings file", settingsFile_, "there is no such file");
    }
    const RWIni::IniFile ini(*files, settingsFile_);
    configuration_ = jobs::Configuration(
        [&ini](std::u16string_view section, std::u16string_view key) { return ini.ReadIni(key, section); });
}

} // namespace kelb::app
