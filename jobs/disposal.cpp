#include "jobs/disposal.h"

#include "jobs/run_time.h"
#include "jobs/trash_record.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/letter_case.h"
#include "platform/path_map.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <optional>

namespace kelb::jobs {
namespace {

class Deletion final : public Disposal {
public:
    explicit Deletion(platform::FileSystem& files) : files_(files) {}
    void deleteRow(ado::Recordset& rows, const RowOrigin&) override { rows.Delete(); }
    void deleteFile(std::u16string_view path, std::u16string_view) override { files_.removeFile(path); }

private:
    platform::FileSystem& files_;
};

class Trash final : public Disposal {
public:
    Trash(platform::Platform& platform, std::u16string_view trashFolder, std::string_view job)
        : platform_(platform), trashFolder_(trashFolder), job_(platform::fromUtf8(job)) {}

    void deleteRow(ado::Recordset& rows, const RowOrigin& origin) override {
        record().addRow(rows, origin.database, origin.table);
        rows.Delete();
    }

    void deleteFile(std::u16string_view path, std::u16string_view lanFolder) override {
        TrashRecord& record = this->record();
        const std::u16string kept = free(keptPath(path, lanFolder));
        const std::u16string target = inFolder(kept);
        platform_.files.makeFolders(platform::parentFolder(target));
        record.addFile(path, kept);
        platform_.files.renameFile(path, target);
    }

    void finish() override {
        if (record_) {
            record_->addEnd();
            record_.reset();
        }
    }

private:
    /// Of this run, begun with its folder when the first thing goes there.
    TrashRecord& record() {
        if (!record_) {
            const std::u16string folder =
                platform::joinPath(trashFolder_, job_ + u"-" + runTime(platform_.clock.now()));
            std::u16string candidate = folder;
            for (long long n = 2; platform_.files.folderExists(candidate); ++n) {
                candidate = folder + u"-" + platform::number(n);
            }
            platform_.files.makeFolders(candidate);
            runFolder_ = candidate;
            record_.emplace(platform_, runFolder_, job_);
        }
        return *record_;
    }

    std::u16string inFolder(std::u16string_view kept) const {
        std::u16string path = runFolder_;
        for (const std::u16string_view name : platform::split(kept, u"/")) {
            path = platform::joinPath(path, name);
        }
        return path;
    }

    /// Where the file is kept in the run's folder: the names of the path, one by one, so that nothing in the path can
    /// lead out of the folder.
    static std::u16string keptPath(std::u16string_view path, std::u16string_view lanFolder) {
        if (!lanFolder.empty() && path.size() > lanFolder.size() &&
            platform::equalNoCase(path.substr(0, lanFolder.size()), lanFolder)) {
            path.remove_prefix(lanFolder.size());
        }
        std::u16string kept;
        while (!path.empty()) {
            const std::size_t end = std::min(path.find_first_of(u"\\/:"), path.size());
            const std::u16string_view name = path.substr(0, end);
            if (!name.empty() && name != u"." && name != u"..") {
                kept += kept.empty() ? u"" : u"/";
                kept += name;
            }
            path.remove_prefix(std::min(end + 1, path.size()));
        }
        return kept;
    }

    /// The path, numbered when something is kept there already: a file deleted earlier, or the record.
    std::u16string free(const std::u16string& kept) const {
        std::u16string candidate = kept;
        for (long long n = 2; platform_.files.fileExists(inFolder(candidate)); ++n) {
            candidate = kept + u"-" + platform::number(n);
        }
        return candidate;
    }

    platform::Platform& platform_;
    std::u16string trashFolder_;
    std::u16string job_;
    std::u16string runFolder_;
    std::optional<TrashRecord> record_;
};

} // namespace

std::unique_ptr<Disposal> makeDeletion(platform::Platform& platform) {
    return std::make_unique<Deletion>(platform.files);
}

std::unique_ptr<Disposal> makeTrash(platform::Platform& platform, std::u16string_view trashFolder,
                                    std::string_view job) {
    return std::make_unique<Trash>(platform, trashFolder, job);
}

} // namespace kelb::jobs
