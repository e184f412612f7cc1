#pragma once

#include "ado/recordset.h"
#include "platform/platform.h"

#include <memory>
#include <string>
#include <string_view>

namespace kelb::jobs {

/// How a job deletes. Rows and page files are gone, or kept in a trash folder; the job does not know which.
class Disposal {
public:
    /// Where a row lies, for the one who puts it back.
    struct RowOrigin {
        std::u16string_view database; ///< path of the file
        std::u16string_view table;
    };
    virtual ~Disposal() = default;
    /// Deletes the current row of the set. Throws ado::Error, platform::FileError; the row is then still there.
    virtual void deleteRow(ado::Recordset& rows, const RowOrigin& origin) = 0;
    /// Deletes a page file that exists. Throws platform::FileError.
    virtual void deleteFile(std::u16string_view path, std::u16string_view lanFolder) = 0;
    /// To be called when the databases are closed: every deletion is stored. Throws platform::FileError.
    virtual void finish() {}
};

/// Deletes for good.
[[nodiscard]] std::unique_ptr<Disposal> makeDeletion(platform::Platform& platform);

/// Keeps what is deleted in one new folder a run, `trashFolder`/JOB-TIME/, made when the first thing goes there:
/// page files with the path that they had below the LAN folder (else their whole path, the drive letter or server as
/// first folder), rows and what undo needs in the files of jobs/trash_record.h.
[[nodiscard]] std::unique_ptr<Disposal> makeTrash(platform::Platform& platform, std::u16string_view trashFolder,
                                                  std::string_view job);

} // namespace kelb::jobs
