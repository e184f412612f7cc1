#pragma once

#include "ado/recordset.h"
#include "jobs/line_file.h"
#include "platform/platform.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// What one run keeps in the trash, and how undo reads it. The folder of a run holds the page files and
///   deleted-rows.jsonl  the deleted rows, one a line, as `kelb db query` prints them
///   undo.jsonl          what was deleted, in the order of the deletions, one object a line:
///     {"run": "dedupe-source", "time": "2015-12-02T08:30:00"}             the first line
///     {"bits": "recTime", "value": "40e4acac…"}                           of the row that follows: a value that its
///                                                                         line shows less exactly, as a double
///     {"row": 1, "place": 4096, "database": "/c/Comb.mdb", "table": "t"}  line 1 of deleted-rows.jsonl, and where
///                                                                         the row lay in the file
///     {"file": "/crawl/forum/a.htm", "kept": "forum/a.htm"}               where it was, where it lies in this folder
///     {"end": "2015-12-02T08:31:00"}                                      the run ended, its deletions are stored
///     {"undo": …}, {"undone": …}                                          putting back began, all is put back
/// A line is written before the deletion that it tells, so that a kill leaves at most one too many.
namespace kelb::jobs {

inline constexpr std::u16string_view kDeletedRowsFile = u"deleted-rows.jsonl";
inline constexpr std::u16string_view kTrashRecordFile = u"undo.jsonl";

class TrashRecord {
public:
    /// Begins the files of a run in its folder, which is there. Throws platform::FileError, as the others do.
    TrashRecord(platform::Platform& platform, std::u16string_view folder, std::u16string_view job);

    /// The current row of a set. Paths are noted so that a later program finds them from anywhere.
    void addRow(const ado::Recordset& rows, std::u16string_view database, std::u16string_view table);
    /// `kept`: below the run's folder, parted by "/".
    void addFile(std::u16string_view path, std::u16string_view kept);
    /// Everything that was noted has been deleted for good.
    void addEnd();

private:
    platform::Platform& platform_;
    LineWriter record_, rows_; ///< made in this order: rows without a record would be of an older version
    std::size_t count_ = 0;    ///< of rows
    std::u16string database_, absoluteDatabase_; ///< of the last row
    std::string line_, json_;
};

struct TrashedRow {
    std::u16string database, table;
    std::string json;                                     ///< its line
    std::optional<std::uint32_t> place;                   ///< Recordset::Bookmark
    std::vector<std::pair<std::u16string, double>> exact; ///< values by column that the line shows less exactly
};
struct TrashedFile {
    std::u16string path, kept; ///< both ready to be used
};

/// How far a run and its undoing have come.
struct TrashState {
    std::u16string job, time;
    bool ended = false, undoBegun = false, undone = false;
    std::size_t rows = 0, files = 0;
};

/// Reads one pass over a run's record. Throws platform::FileError (Locked while the run goes on) and JobError when the
/// record is damaged.
class TrashReader {
public:
    TrashReader(platform::FileSystem& files, std::u16string_view folder);
    /// The next thing that was deleted; nothing behind the last one.
    std::optional<std::variant<TrashedRow, TrashedFile>> next();
    /// What the lines read so far tell.
    const TrashState& state() const noexcept { return state_; }

private:
    TrashedRow readRow(std::size_t number);
    std::u16string keptPath(std::u16string_view kept) const;
    [[noreturn]] void fail(const std::string& what) const;

    platform::FileSystem& files_;
    std::u16string folder_;
    LineReader record_;
    std::optional<LineReader> rows_;
    std::size_t line_ = 0, rowLine_ = 0;
    TrashState state_;
};

/// Notes the beginning or the end of putting back.
enum class UndoMark { Begun, Done };
void markUndo(platform::Platform& platform, std::u16string_view folder, UndoMark mark);

} // namespace kelb::jobs
