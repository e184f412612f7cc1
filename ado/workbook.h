#pragma once

#include "ado/sheet_cells.h"

#include "platform/file_system.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// An Excel workbook (.xls of Excel 5 to 2003) for reading, as it was when it was opened. The container is checked and
/// laid out anew here; its records are read by freexl, which misreads memory on some damaged files and therefore runs
/// in a process of its own. Not for two threads.
class Workbook {
public:
    /// Throws Error (Connection, Damaged) with the reason, FileError.
    Workbook(platform::FileSystem& files, std::u16string_view path);

    /// Throw Error (Damaged, Refused) with the reason.
    std::vector<std::u16string> sheetNames() const { return read(std::nullopt).sheetNames(); }
    /// The sheet's name without regard to case. Throws Error (NoSuchTable) naming the sheets that are there.
    SheetCells sheet(std::u16string_view name) const;

private:
    SheetCells read(std::optional<std::u16string_view> sheet) const;

    std::string file_; ///< one that freexl reads
    std::shared_ptr<const LongTexts> longTexts_;
};

} // namespace kelb::ado
