#pragma once

#include "ado/connection.h"
#include "ado/environment.h"
#include "ado/recordset.h"
#include "ado/value.h"
#include "platform/date_time.h"
#include "platform/platform.h"
#include "platform/ui_pump.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelb::store {

/// The record store: the tables of the crawling side in one Access file, and the numbered overflow files.
/// Operations on tables do nothing and return false, "" or nothing until iniStoreKeeper has succeeded; store2Disk works
/// always. One instance serves a whole program run, since its file counter goes on from job to job. There is no close:
/// connection and record sets stay open until the instance goes. Lengths count code units.
/// Throws ado::Error and platform::FileError except where an operation says that it catches.
class ClsStoreKeeper {
public:
    ClsStoreKeeper(platform::Platform& platform, ado::Environment& environment);

    /// Both table names are known and the connection is open.
    bool IsReady() const;
    /// Compares exactly, letter case included, with the names that the database tells. Needs an open connection only.
    bool tableExists(std::u16string_view tableName);
    /// Appends a page to the main table: addresses and link text cut to 254, content to 204,800. Database errors give
    /// false, the row is abandoned.
    bool Save2DB(std::u16string_view content, std::u16string_view url, std::u16string_view refurl,
                 std::u16string_view reftxt);
    /// True when a row with this url exists; the database compares, so letter case does not count.
    bool IsRecExists(std::u16string_view url, std::u16string_view tableName);
    /// Opens the database, creates the tables that are missing and opens the writing record sets. False, and nothing
    /// changed, without the file. A store that was open on another file is closed first. After a throw: not ready.
    bool iniStoreKeeper(std::u16string_view dbPath, std::u16string_view tableName, std::u16string_view learnTableName);
    /// Adds or overwrites the row of `url`, which must begin with "http://" and have fewer than 1025 units.
    bool updateSexHoney(std::u16string_view url, std::u16string_view refurl, std::u16string_view reftxt,
                        std::u16string_view sonpics, std::u16string_view sonmvs, std::int32_t numsonpics,
                        std::int32_t numsonmvs);
    /// The same on the link-statistics table.
    bool updateLearn(std::u16string_view url, std::int32_t numson1, std::int32_t numson2, std::int32_t numpic,
                     std::int32_t nummv);
    /// Appends a media address to the table of its type. Date, size and flag come as texts; database errors and a flag
    /// that is none give false. A guard that fails is told in errorText(), six times at most.
    bool Save2DBURLsSrc(std::u16string_view url, std::u16string_view refurl, std::u16string_view reftxt,
                        std::u16string_view lastcheckdate, std::u16string_view srcsize, std::u16string_view srctype,
                        std::u16string_view blndown);
    /// Appends a user unless one of that name or e-mail is stored; the first such clash is told in errorText().
    bool Save2DBDVUser(std::u16string_view userName, std::u16string_view userEmail, std::u16string_view userID);
    /// Adds the row of this board and article, or overwrites it when its date is Null or more than 7 days before
    /// `recdate`; else false.
    bool Save2DBbbsforum(std::u16string_view url, std::u16string_view boardid, std::u16string_view articleid,
                         std::u16string_view start, std::u16string_view content, const platform::DateTime& recdate);
    /// Appends "address<||>" for each row of the query ("" asks for the default one) until 302 addresses or until
    /// outList is longer than 30,000.
    bool ReadFromDBURLsMV(std::u16string_view sql, std::u16string& outList);
    /// Sets one field when exactly one row has this url, and saves it.
    void UpdateRec(std::u16string_view url, std::u16string_view tableName, std::u16string_view fieldName,
                   const ado::Value& value);
    /// `content` of the main table's row with this url, or "".
    std::u16string getSpecHtml(std::u16string_view url);
    /// Writes the text to the next free "TestRec\StoreN.txt" of the application folder (code page 936; what it cannot
    /// hold becomes "?" and is counted). The folder must be there. An empty extension means ".txt".
    /// Throws std::overflow_error when numbers up to 32,767 are taken.
    void store2Disk(std::u16string_view content, std::u16string_view caption, std::u16string_view extension,
                    platform::UiPump& events);

    const std::u16string& errorText() const noexcept { return errorText_; }
    /// Path of the file that store2Disk wrote last, and characters replaced by "?" in all of them.
    const std::u16string& lastStoredFile() const noexcept { return lastStoredFile_; }
    std::size_t replacedCharacters() const noexcept { return replacedCharacters_; }

private:
    void closeStore();
    void createMissingTables(std::u16string_view tableName, std::u16string_view learnTableName);
    void createIfMissing(std::u16string_view tableName, std::u16string_view columns);
    ado::Recordset* mediaTable(std::u16string_view srctype);
    std::u16string overflowPath(std::u16string_view extension) const;
    void noteGuardFailure(std::u16string_view url);

    platform::Platform& platform_;
    ado::Connection connection_; // before the record sets, which must go first
    ado::Recordset mainRows_;
    ado::Recordset urlsMv_;
    ado::Recordset urlsPic_;
    ado::Recordset urlsMp3_;
    std::u16string mainTable_;
    std::u16string learnTable_;
    std::int16_t guardFailures_ = 0;
    std::int16_t fileNumber_ = 0;
    std::u16string errorText_;
    std::u16string lastStoredFile_;
    std::size_t replacedCharacters_ = 0;
};

} // namespace kelb::store
