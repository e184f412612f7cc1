#include "store/ClsSQL.h"

#include "ado/error.h"
#include "ado/recordset.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <string>

namespace kelb::store {

namespace {

constexpr std::int16_t kNotReady = 0, kStored = 1, kKept = 2;
/// A page that grew by less is the same page with another advertisement.
constexpr long long kLongerBy = 300; // characters

} // namespace

ClsSQL::ClsSQL(ado::Environment& environment, platform::Clock& clock, std::u16string_view connectionString)
    : clock_(clock), connection_(environment) {
    try {
        connection_.Open(connectionString);
    } catch (const ado::Error& error) {
        errorText_ = platform::fromUtf8(error.what());
    }
    ready_ = connection_.State() == ado::ObjectState::Open;
}

std::int16_t ClsSQL::Save2DBStomach(std::u16string_view url, std::u16string_view refurl, std::u16string_view content,
                                    std::int32_t contentLength) {
    if (!ready_) {
        return kNotReady;
    }
    ado::Recordset page;
    page.Open(u"select * from qiche where url='" + platform::quoted(url) + u"'", connection_, ado::CursorType::Keyset,
              ado::LockType::Optimistic);
    if (page.Bof() || page.Eof()) {
        page.AddNew();
    } else if (contentLength - ado::toInteger(page.value(u"contentlength")).value_or(0) < kLongerBy) {
        return kKept;
    }
    page.set(u"url", url);
    page.set(u"refurl", refurl);
    page.set(u"content", content);
    page.set(u"recdate", ado::fromDateTime(clock_.now()));
    page.set(u"contentLength", ado::Value(contentLength));
    page.Update();
    return kStored;
}

} // namespace kelb::store
