#pragma once

#include "jet/file_header.h"
#include "jet/recovery.h"
#include "jet/salvage_pages.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelb::jet {

/// A table of a damaged file.
struct FoundTable {
    std::u16string name; ///< "Recovered_" and its page where the catalog does not say
    PageNumber page;
    TableOrigin origin;
};

struct FoundObjects {
    std::vector<FoundTable> tables;
    std::vector<CatalogEntry> others; ///< that are no user tables
};

/// "Recovered_" and the page of the definition: for tables whose name is lost.
std::u16string recoveredName(PageNumber page);

/// Tables and other objects by the catalog. When the catalog has losses itself, every definition of a user table in the
/// file that is not free and that the catalog does not name counts as a table, too. `standard`: definition of
/// MSysObjects in a sound Access 2000 file, for files whose own cannot be read. `now`: for dates that are lost.
FoundObjects findObjects(Pager& pager, const FileHeader& header, const PageSurvey& survey,
                         const TableDefinition& standard, OleDate now, const std::function<void(const Loss&)>& lost);

} // namespace kelb::jet
