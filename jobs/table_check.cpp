#include "jobs/table_check.h"

#include "ado/error.h"
#include "ado/recordset.h"
#include "jobs/job_error.h"
#include "platform/utf8.h"

namespace kelb::jobs {

void TableCheck::need(ado::Connection& connection, std::u16string_view path, std::u16string_view table,
                      std::initializer_list<std::u16string_view> columns) {
    const std::string where = platform::toUtf8(path) + ": ";
    ado::Recordset row;
    try {
        // Understood by every server, which reads no row of a set that could be for adding some.
        row.Open(u"select * from " + std::u16string(table), connection, ado::CursorType::Keyset,
                 ado::LockType::Optimistic);
    } catch (const ado::Error& error) {
        if (error.kind() != ado::Error::Kind::NoSuchTable) {
            throw;
        }
        missing_.push_back(where + "no table " + platform::toUtf8(table));
        return;
    }
    std::string names;
    for (const std::u16string_view column : columns) {
        if (!row.hasField(column)) {
            names += (names.empty() ? "" : ", ") + platform::toUtf8(column);
        }
    }
    if (!names.empty()) {
        missing_.push_back(where + "table " + platform::toUtf8(table) + " has no column " + names);
    }
}

void TableCheck::finish() const {
    if (missing_.empty()) {
        return;
    }
    std::string text;
    for (const std::string& what : missing_) {
        text += (text.empty() ? "" : "; ") + what;
    }
    throw JobError(text + ". Add what is missing (kelb db exec: CREATE TABLE, ALTER TABLE ... ADD) or name another "
                          "database.");
}

} // namespace kelb::jobs
