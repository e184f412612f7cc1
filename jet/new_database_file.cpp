#include "jet/new_database_file.h"

#include "jet/journal.h"
#include "jet/verification.h"

#include "platform/file_failures.h"
#include "platform/utf8.h"

namespace kelb::jet {
namespace {

constexpr std::string_view kOperation = "make the new database";

void removeIfThere(platform::FileSystem& files, std::u16string_view path) {
    if (files.fileExists(path))
        files.removeFile(path);
}

void requireSound(platform::Platform& platform, std::u16string_view part, std::u16string_view path) {
    const auto database = Database::open(platform, part, {});
    const std::vector<Fault> faults = verify(*database);
    if (const Fault* error = firstError(faults))
        throw Error(Error::Kind::Corrupt, platform::toUtf8(path) + " was not written, it would have a fault: page " +
                                              std::to_string(raw(error->page)) + ": " + error->text);
}

} // namespace

NewDatabaseFile::NewDatabaseFile(platform::Platform& platform, std::u16string_view path, const NewDatabase& options)
    : platform_(platform), path_(path), part_(path_ + u".part") {
    platform::FileSystem& files = platform_.files;
    if (files.fileExists(path_) || files.folderExists(path_))
        throw platform::alreadyThere(kOperation, path_);
    if (files.fileExists(part_)) {
        static_cast<void>(files.open(part_, platform::OpenMode::ReadWrite)); // refused while another program fills it
        files.removeFile(part_);
    }
    database_ = Database::create(platform_, part_, options);
}

NewDatabaseFile::~NewDatabaseFile() {
    database_.reset();
    try {
        removeIfThere(platform_.files, part_);
        removeIfThere(platform_.files, journalPath(part_));
    } catch (const platform::FileError&) {
        // The fault that ended the work is told; the next run throws the rest away.
    }
}

void NewDatabaseFile::finish() {
    platform::FileSystem& files = platform_.files;
    database_->commit();
    database_.reset();
    requireSound(platform_, part_, path_);
    if (files.fileExists(path_))
        throw platform::alreadyThere(kOperation, path_);
    files.renameFile(part_, path_);
    files.syncFolder(platform::parentFolder(path_));
}

} // namespace kelb::jet
