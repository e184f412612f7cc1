#pragma once

#include "ado/provider.h"

namespace kelb::ado {

/// Excel workbooks (.xls) as Microsoft's ODBC driver shows them: "DRIVER=Microsoft Excel Driver (*.xls);DBQ=" + path.
/// A sheet is a table of its name with a "$" behind it, its first row names the columns (SheetTable). Read as they were
/// when the connection was opened; every change is refused.
class SheetProvider final : public Provider {
public:
    bool accepts(const ConnectionString& connection) const override;
    std::unique_ptr<Session> connect(const ConnectionString& connection, Environment& environment) override;
};

/// "DRIVER=Microsoft Excel Driver (*.xls);DBQ=" + path. Kept: the path stands as it is, so one with ";" is cut there.
[[nodiscard]] std::u16string sheetConnectionString(std::u16string_view path);

} // namespace kelb::ado
