#include "jobs/w2Table4TVCode.h"

#include "ado/recordset.h"

#include <cstdint>

namespace kelb::jobs {

void w2Table4TVCode(ado::Connection& connection, std::u16string_view code, std::u16string_view recordId,
                    std::u16string_view table) {
    ado::Recordset codes;
    codes.Open(u"select * from " + std::u16string(table) + u" where TVCode='" + std::u16string(code) + u"'", connection,
               ado::CursorType::Keyset, ado::LockType::Optimistic);
    std::int32_t times = 1;
    std::u16string ids(recordId);
    if (codes.Eof()) {
        codes.AddNew();
        codes.set(u"TVCode", std::u16string(code));
    } else {
        times = static_cast<std::int32_t>(ado::toInteger(codes.value(u"occurTimes")).value_or(0)) + 1;
        ids = codes.text(u"fromIDs") + u"," + ids;
    }
    codes.set(u"occurTimes", ado::Value(times));
    codes.set(u"fromIDs", std::move(ids));
    codes.Update();
}

} // namespace kelb::jobs
