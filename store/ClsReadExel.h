#pragma once

#include "ado/environment.h"
#include "ado/recordset.h"

#include <string_view>

namespace kelb::store {

/// Opens a sheet of an Excel workbook (.xls) as a record set, so that its rows are walked like those of a table.
class ClsReadExel {
public:
    /// Kept: the sheet is known by its name, not as the first one, so a workbook whose first sheet is called otherwise
    /// is not read unless it is named.
    static constexpr std::u16string_view kSheet = u"sheet1";

    explicit ClsReadExel(ado::Environment& environment) : environment_(&environment) {}

    /// The whole sheet, one record a row, the fields named by the first row; the first record is current. The caller
    /// walks and closes it. Throws ado::Error: no such file, no such sheet, no workbook, damaged.
    ado::Recordset Read_Excel(std::u16string_view workbook, std::u16string_view sheet = kSheet);

private:
    ado::Environment* environment_;
};

} // namespace kelb::store
