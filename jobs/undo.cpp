#include "jobs/undo.h"

#include "ado/error.h"
#include "jobs/job_error.h"
#include "jobs/row_reading.h"
#include "jobs/row_reasons.h"
#include "jobs/row_return.h"
#include "platform/file_system.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <tuple>

namespace kelb::jobs {
namespace {

std::u16string count(std::size_t number, std::u16string_view what) {
    return platform::number(static_cast<long long>(number)) + u" " + std::u16string(what) + (number == 1 ? u"" : u"s");
}

/// A run's folder in the trash.
struct Run {
    std::u16string folder, name;
    TrashState state;
};

class Undo {
public:
    Undo(const UndoOptions& options, Context& context, JobHost& host, JobSummary& summary)
        : options_(options), trash_(options.trash.empty() ? context.trashFolder() : options.trash), context_(context),
          files_(context.platform().files), host_(host), summary_(summary) {}

    void run() {
        if (trash_.empty()) {
            throw SettingError("no trash folder is named: name it with --trash, or set " +
                               settingName(Setting::SafetyTrash) + " in Kelb.ini");
        }
        const std::vector<Run> runs = findRuns();
        std::size_t undone = 0;
        for (const Run& each : runs) {
            undone += each.state.undone ? 1 : 0;
            if (!each.state.undone && !undo(each)) {
                break;
            }
        }
        summary_.counts = {{"restoredFiles", restoredFiles_}};
        if (undone == runs.size() && stays_ == 0) {
            summary_.note = "nothing in the trash is left to be put back";
        }
        if (stays_ != 0) {
            throw JobError(std::to_string(stays_) + " of the rows and files could not be put back and stay in the "
                                                    "trash; the log says which and why");
        }
    }

private:
    /// Newest first.
    std::vector<Run> findRuns() {
        std::vector<Run> runs;
        if (files_.fileExists(platform::joinPath(trash_, kTrashRecordFile))) {
            look(trash_, std::u16string(platform::fileName(trash_)), runs);
            return runs;
        }
        for (const std::u16string& name : files_.listFolders(trash_)) {
            const std::u16string folder = platform::joinPath(trash_, name);
            if (!options_.run.empty() && name != options_.run) {
                continue;
            }
            if (files_.fileExists(platform::joinPath(folder, kTrashRecordFile))) {
                look(folder, name, runs);
            } else if (files_.fileExists(platform::joinPath(folder, kDeletedRowsFile))) {
                ++stays_;
                host_.log(name + u": has no " + std::u16string(kTrashRecordFile) +
                          u", so nothing tells where its rows and files belong");
            }
        }
        if (runs.empty() && stays_ == 0 && !options_.run.empty()) {
            throw JobError("there is no run " + platform::toUtf8(options_.run) + " in " + platform::toUtf8(trash_));
        }
        // Of two runs of one second the one whose name is longer (by -2) or comes later is the newer.
        std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) {
            return std::tuple(b.state.time, b.name.size(), b.name) < std::tuple(a.state.time, a.name.size(), a.name);
        });
        return runs;
    }

    /// Adds the run unless its record cannot be read.
    void look(const std::u16string& folder, const std::u16string& name, std::vector<Run>& runs) {
        try {
            TrashReader reader(files_, folder);
            while (reader.next()) {
            }
            runs.push_back({folder, name, reader.state()});
        } catch (const JobError& error) {
            failRun(name, error.what());
        } catch (const platform::FileError& error) { // it may be going on at this moment
            failRun(name, error.what());
        }
    }

    void failRun(const std::u16string& name, std::string_view why) {
        ++stays_;
        host_.log(name + u": " + platform::fromUtf8(why));
    }

    /// False at a stop.
    bool undo(const Run& run) {
        const std::size_t staysBefore = stays_, savedBefore = summary_.saved, filesBefore = restoredFiles_;
        const bool wasCut = !run.state.ended || run.state.undoBegun;
        RowReturn rows(context_, wasCut ? RowReturn::Alike::IsThisOne : RowReturn::Alike::IsAnother);
        markUndo(context_.platform(), run.folder, UndoMark::Begun);
        bool whole = false;
        try {
            whole = expect(run, rows) && putBack(run, rows);
            rows.close();
        } catch (const ado::Error& error) { // a database that cannot go on; the other runs may have another
            failRun(run.name, error.what());
        }
        for (const std::string& fault : rows.faults()) {
            host_.log(run.name + u": " + platform::fromUtf8(fault));
        }
        if (whole && stays_ == staysBefore) {
            markUndo(context_.platform(), run.folder, UndoMark::Done);
        }
        host_.log(run.name + u": " + count(summary_.saved - savedBefore, u"row") + u" and " +
                  count(restoredFiles_ - filesBefore, u"file") + u" put back");
        return !summary_.stopped;
    }

    /// Calls `each` for everything that the run deleted; false at a stop.
    template <class Each>
    bool walk(const Run& run, std::u16string_view label, Each&& each) {
        TrashReader reader(files_, run.folder);
        const std::size_t total = run.state.rows + run.state.files;
        for (std::size_t i = 1; auto entry = reader.next(); ++i) {
            host_.yield();
            if (host_.stopRequested()) {
                summary_.stopped = true;
                return false;
            }
            host_.showProgress(run.name + std::u16string(label), i, total);
            each(*entry);
        }
        return true;
    }

    bool expect(const Run& run, RowReturn& rows) {
        const bool whole = walk(run, u": looking", [&](const auto& entry) {
            if (const auto* row = std::get_if<TrashedRow>(&entry)) {
                rows.expect(*row);
            }
        });
        if (whole) {
            rows.look();
        }
        return whole;
    }

    bool putBack(const Run& run, RowReturn& rows) {
        return walk(run, u": putting back", [&](const auto& entry) {
            if (const auto* row = std::get_if<TrashedRow>(&entry)) {
                ++summary_.rows;
                putBackRow(run, rows, *row);
                rows.flushIfDue();
            } else {
                putBackFile(run, std::get<TrashedFile>(entry));
            }
        });
    }

    void putBackRow(const Run& run, RowReturn& rows, const TrashedRow& row) {
        using Outcome = RowReturn::Outcome;
        try {
            switch (rows.put(row)) {
            case Outcome::PutBack:
                summary_.save(shown(row));
                return;
            case Outcome::AlreadyThere:
                summary_.skip(kAlreadyThere, shown(row));
                return;
            case Outcome::NumberTaken:
                failRow(run, row, kNumberTaken, meaningOf(kNumberTaken));
                return;
            case Outcome::NoTable: // told once for all rows of the table
                summary_.fail(kNoTable, shown(row), row.table);
                ++stays_;
                return;
            }
        } catch (const ado::Error& error) {
            failRow(run, row, kRefused, error.what());
        } catch (const RowLineError& error) {
            failRow(run, row, kRefused, error.what());
        }
    }

    static std::u16string shown(const TrashedRow& row) {
        constexpr std::size_t kShown = 200;
        return std::u16string(platform::left(platform::fromUtf8(row.json), kShown));
    }

    void failRow(const Run& run, const TrashedRow& row, std::string_view reason, std::string_view why) {
        summary_.fail(reason, shown(row), platform::fromUtf8(why));
        ++stays_;
        host_.log(run.name + u": table " + row.table + u": a row stays in the trash: " + platform::fromUtf8(why) +
                  u": " + shown(row));
    }

    void putBackFile(const Run& run, const TrashedFile& file) {
        const bool isThere = files_.fileExists(file.path) || files_.folderExists(file.path);
        const bool isKept = files_.fileExists(file.kept);
        if (isThere && !isKept) {
            return; // a kill came before it was moved, or after it was moved back
        }
        if (isThere || !isKept) {
            ++stays_;
            host_.log(run.name + u": " + file.path +
                      (isThere ? u" is there again and is not overwritten; the deleted one stays as " + file.kept
                               : u" cannot be put back: there is no " + file.kept));
            return;
        }
        try {
            files_.makeFolders(platform::parentFolder(file.path));
            files_.renameFile(file.kept, file.path);
            ++restoredFiles_;
        } catch (const platform::FileError& error) {
            ++stays_;
            host_.log(run.name + u": " + platform::fromUtf8(error.what()) + u"; the file stays as " + file.kept);
        }
    }

    const UndoOptions& options_;
    std::u16string trash_;
    Context& context_;
    platform::FileSystem& files_;
    JobHost& host_;
    JobSummary& summary_;
    std::size_t stays_ = 0; ///< rows, files and runs that could not be put back
    std::size_t restoredFiles_ = 0;
};

} // namespace

void undoTrash(const UndoOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    Undo(options, context, host, summary).run();
}

} // namespace kelb::jobs
