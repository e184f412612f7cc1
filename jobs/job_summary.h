#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelb::jobs {

enum class RowFate { Saved, Skipped, Failed };

/// A row of a run as the user is told of it.
struct VisitedRow {
    std::u16string name;   ///< the value of RowPlace::field, or the path of a page file
    std::u16string detail; ///< what its reason leaves open; may be empty
};

/// Rows that ended alike.
struct RowGroup {
    RowFate fate = RowFate::Saved;
    std::string reason; ///< of row_reasons.h; "" for saved rows
    std::size_t count = 0;
    std::vector<VisitedRow> rows; ///< the first kRowsTold of them
};

/// Where a run's rows are found again.
struct RowPlace {
    std::u16string database, table; ///< "" when rows are files of a folder
    std::u16string field;           ///< its values name the rows
};

/// What became of a job's rows. Counted while the job runs, so it holds after an error, too.
/// rows = saved + skipped + failed.
struct JobSummary {
    /// A group remembers so many of its rows, and counts the others: a run over a million rows stays small.
    static constexpr std::size_t kRowsTold = 5'000;
    static constexpr std::size_t kDetailLength = 200; ///< UTF-16 code units

    explicit JobSummary(std::string name) : job(std::move(name)) {}

    std::string job;         ///< name of the command
    std::size_t rows = 0;    ///< rows visited
    std::size_t saved = 0;   ///< rows added or filled
    std::size_t skipped = 0; ///< rows passed over without a failure
    std::size_t failed = 0;
    std::size_t deletedRows = 0, deletedFiles = 0;
    std::size_t overflowFiles = 0;                           ///< every file that store2Disk wrote
    std::size_t replacedCharacters = 0;                      ///< written as "?" in those files
    double seconds = 0;                                      ///< set by the host
    bool stopped = false;                                    ///< ended by a stop request
    bool dryRun = false;                                     ///< nothing was changed; set by the host
    std::vector<RowGroup> groups;                            ///< in the order of their first row
    std::vector<std::pair<std::string, std::size_t>> counts; ///< what only this job counts
    std::string note;                                        ///< why the run could do nothing, else empty
    RowPlace source;                                         ///< of the rows that were visited

    // One row each, counted under its reason.
    void save(std::u16string_view row);
    void skip(std::string_view reason, std::u16string_view row);
    void fail(std::string_view reason, std::u16string_view row, std::u16string_view detail);

    /// Reasons with their rows, in the order of their first one.
    [[nodiscard]] std::vector<std::pair<std::string, std::size_t>> because(RowFate fate) const;

private:
    void count(RowFate fate, std::string_view reason, std::u16string_view row, std::u16string_view detail);
};

/// One line: {"job": "forum-import", "rows": 12, …}. The members behind the seconds only where there is something to
/// tell.
[[nodiscard]] std::string toJson(const JobSummary& summary);

} // namespace kelb::jobs
