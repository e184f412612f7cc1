#pragma once

#include "ado/sheet_row_set.h"
#include "ado/sql_syntax.h"

#include <memory>

namespace kelb::ado {

/// The rows of a SELECT on a sheet, found and put in order now. Columns whose values differ in kind are compared as
/// texts. Throws Error (NoSuchColumn, TypeMismatch).
[[nodiscard]] std::unique_ptr<RowSet> openSheetSelect(const std::shared_ptr<const SheetTable>& table,
                                                      const SelectStatement& select);

} // namespace kelb::ado
