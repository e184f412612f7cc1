#include "ado/workbook.h"

#include "ado/error.h"

namespace kelb::ado {

// In place of workbook_read.cpp in builds without freexl (KELB_WITH_SHEETS).
SheetCells Workbook::read(std::optional<std::u16string_view> /*sheet*/) const {
    throw Error(Error::Kind::Refused, "this build of KelbExtractor reads no workbooks; use one that was built with "
                                      "freexl, or bring the sheet into an Access table");
}

} // namespace kelb::ado
