#pragma once

#include "jet/database_copy.h"

#include "platform/platform.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kelb::jet {

/// Something of a damaged file that could not be read, or only in part.
struct Loss {
    enum class Kind {
        File,  ///< of the file or its catalog
        Table, ///< of a table as a whole: its definition, properties, records that are missing
        Page,  ///< records of a whole page
        Row,
        Field, ///< Null or shortened in the new database; the rest of the row is there
        Index  ///< not built anew
    };
    Kind kind;
    std::u16string table; ///< empty: of no table
    PageNumber page = kNoPage;
    int row = -1;        ///< slot on the page; −1: none
    std::u16string name; ///< of the field or index
    std::string reason;
};

class RecoveryObserver : public CopyObserver {
public:
    virtual void lost(const Loss& loss) = 0;
    /// What was done otherwise than the file says, without anything getting lost by it.
    virtual void told(std::u16string_view table, std::string_view what) = 0;
};

struct RecoveryCounts : CopyCounts {
    std::size_t pagesLost = 0, rowsLost = 0, fieldsLost = 0, otherLosses = 0; ///< rows: those whose place is known
    bool everything() const noexcept { return pagesLost + rowsLost + fieldsLost + otherLosses == 0; }
};

/// Saves what can be read of a damaged database of any dialect into a new Access 2000 database: each table whose
/// definition can be read, its records by the usage map or, when that is damaged, by looking at every page, each record
/// and field that is in order; indexes are built anew. Reads `source` only. Every record, field, page and index that
/// does not come over is told. Throws Error (Encrypted, PasswordProtected; NotADatabase: no page of it looks like one),
/// FileError, and what writing `target` throws; nothing is then at `target`.
RecoveryCounts recoverDatabase(platform::Platform& platform, std::u16string_view source, std::u16string_view target,
                               RecoveryObserver& observer);

} // namespace kelb::jet
