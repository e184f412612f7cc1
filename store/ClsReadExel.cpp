#include "store/ClsReadExel.h"

#include "ado/connection.h"
#include "ado/sheet_provider.h"

#include <string>

namespace kelb::store {

ado::Recordset ClsReadExel::Read_Excel(std::u16string_view workbook, std::u16string_view sheet) {
    ado::Connection connection(*environment_);
    connection.Open(ado::sheetConnectionString(workbook));
    ado::Recordset rows;
    rows.cursorLocation = ado::CursorLocation::Client;
    rows.cursorType = ado::CursorType::Keyset;
    rows.lockType = ado::LockType::BatchOptimistic;
    rows.Open(u"SELECT * FROM [" + std::u16string(sheet) + u"$]", connection);
    return rows; // what a workbook's record set shows is its own: it needs the connection no more
}

} // namespace kelb::store
