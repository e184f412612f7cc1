#include "jobs/disposal.h"

#include "jobs/row_text.h"
#include "jobs/run_time.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/letter_case.h"
#include "platform/path_map.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace kelb::jobs {
namespace {

class Deletion final : public Disposal {
public:
    explicit Deletion(platform::FileSystem& files) : files_(files) {}
    void deleteRow(ado::Recordset& rows) override { rows.Delete(); }
    void deleteFile(std::u16string_view path, std::u16string_view) override { files_.removeFile(path); }

private:
    platform::FileSystem& files_;
};

class Trash final : public Disposal {
public:
    Trash(platform::Platform& platform, std::u16string_view trashFolder, std::string_view job)
        : platform_(platform), trashFolder_(trashFolder), job_(platform::fromUtf8(job)) {}

    void deleteRow(ado::Recordset& rows) override {
        std::string line;
        appendJsonRow(rows, line);
        line += '\n';
        platform_.files.appendFile(platform::joinPath(runFolder(), u"deleted-rows.jsonl"), line);
        rows.Delete();
    }

    void deleteFile(std::u16string_view path, std::u16string_view lanFolder) override {
        const std::u16string target = free(keptPath(path, lanFolder));
        platform_.files.makeFolders(platform::parentFolder(target));
        platform_.files.renameFile(path, target);
    }

private:
    const std::u16string& runFolder() {
        if (runFolder_.empty()) {
            const std::u16string folder =
                platform::joinPath(trashFolder_, job_ + u"-" + runTime(platform_.clock.now()));
            std::u16string candidate = folder;
            for (long long n = 2; platform_.files.folderExists(candidate); ++n) {
                candidate = folder + u"-" + platform::number(n);
            }
            platform_.files.makeFolders(candidate);
            runFolder_ = candidate;
        }
        return runFolder_;
    }

    /// Where the file is kept: the run's folder and the names of the path, one by one, so that nothing in the path
    /// can lead out of the folder.
    std::u16string keptPath(std::u16string_view path, std::u16string_view lanFolder) {
        if (!lanFolder.empty() && path.size() > lanFolder.size() &&
            platform::equalNoCase(path.substr(0, lanFolder.size()), lanFolder)) {
            path.remove_prefix(lanFolder.size());
        }
        std::u16string kept = runFolder();
        while (!path.empty()) {
            const std::size_t end = std::min(path.find_first_of(u"\\/:"), path.size());
            const std::u16string_view name = path.substr(0, end);
            if (!name.empty() && name != u"." && name != u"..") {
                kept = platform::joinPath(kept, name);
            }
            path.remove_prefix(std::min(end + 1, path.size()));
        }
        return kept;
    }

    /// The path, numbered when a file that was deleted earlier in this run is kept there.
    std::u16string free(const std::u16string& path) {
        std::u16string candidate = path;
        for (long long n = 2; platform_.files.fileExists(candidate); ++n) {
            candidate = path + u"-" + platform::number(n);
        }
        return candidate;
    }

    platform::Platform& platform_;
    std::u16string trashFolder_;
    std::u16string job_;
    std::u16string runFolder_;
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
