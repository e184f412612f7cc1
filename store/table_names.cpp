#include "store/table_names.h"

#include "ado/recordset.h"

namespace kelb::store {

bool tableExists(std::u16string_view sTable, ado::Connection& conn) {
    ado::Recordset tables;
    for (conn.OpenSchema(tables); !tables.Eof(); tables.MoveNext()) {
        if (tables.text(u"TABLE_NAME") == sTable) {
            return true;
        }
    }
    return false;
}

} // namespace kelb::store
