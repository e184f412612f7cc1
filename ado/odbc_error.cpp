#include "ado/odbc_error.h"

#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kelb::ado {

namespace {

using Kind = Error::Kind;

constexpr std::size_t kShownStatement = 200; ///< characters
constexpr SQLSMALLINT kMostRecords = 8;      ///< a server may explain itself at length

/// States of the standard and of PostgreSQL; two characters are a whole class. The first that fits counts.
struct StateRow {
    std::string_view state;
    Kind kind;
};
constexpr std::array kStates{
    StateRow{"42S02", Kind::NoSuchTable},
    StateRow{"42P01", Kind::NoSuchTable},
    StateRow{"S0002", Kind::NoSuchTable},
    StateRow{"42S22", Kind::NoSuchColumn},
    StateRow{"42703", Kind::NoSuchColumn},
    StateRow{"S0022", Kind::NoSuchColumn},
    StateRow{"22001", Kind::FieldTooSmall},
    StateRow{"23505", Kind::DuplicateKey},
    StateRow{"23502", Kind::NullNotAllowed},
    StateRow{"25006", Kind::ReadOnly},
    StateRow{"42000", Kind::Syntax},
    StateRow{"42601", Kind::Syntax},
    StateRow{"37000", Kind::Syntax},
    StateRow{"HYT", Kind::Connection},
    StateRow{"57P", Kind::Connection},
    StateRow{"08", Kind::Connection},
    StateRow{"28", Kind::Connection},
    StateRow{"IM", Kind::Connection},
    StateRow{"3D000", Kind::Connection},
    StateRow{"22", Kind::TypeMismatch},
    StateRow{"53", Kind::Io},
    StateRow{"58", Kind::Io},
};

/// SQL Server tells its refusals of keys and of Null under one state; its own numbers part them.
constexpr std::string_view kConstraint = "23000";
constexpr int kNullRefused = 515, kDuplicateInIndex = 2601, kDuplicateKey = 2627;
/// What it says of a value that is too long, under state 22001 or a general one.
constexpr std::array kTruncated{8152, 2628};

struct Record {
    std::string state;
    int native = 0;
    std::u16string text;
};

std::vector<Record> recordsOf(const OdbcHandle& handle) {
    std::vector<Record> records;
    std::u16string text(2048, u'\0');
    std::array<char16_t, 6> state{};
    for (SQLSMALLINT number = 1; number <= kMostRecords && handle.get() != nullptr; ++number) {
        SQLINTEGER native = 0;
        SQLSMALLINT length = 0;
        const SQLRETURN result = SQLGetDiagRecW(handle.type(), handle.get(), number, odbcText(state.data()), &native,
                                                odbcText(text.data()), static_cast<SQLSMALLINT>(text.size()), &length);
        if (!SQL_SUCCEEDED(result)) {
            break;
        }
        const auto units = std::min(static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0)), text.size() - 1);
        records.push_back({platform::toUtf8({state.data(), 5}), native, text.substr(0, units)});
    }
    return records;
}

/// One line: drivers hand on line breaks, and some zeros behind their texts.
std::string shownLine(std::u16string_view text, const OdbcPlace& place) {
    std::u16string line;
    for (const char16_t unit : text) {
        const bool blank = unit <= u' ';
        if (!blank || (!line.empty() && line.back() != u' ')) {
            line += blank ? u' ' : unit;
        }
    }
    platform::replaceAllIn(line, place.password, u"***");
    return platform::toUtf8(platform::trimBlanks(line));
}

/// Loading a driver failed: the driver manager says so under a state that is else a warning.
bool isLoadFailure(const Record& record) {
    return record.state == "IM003" || record.state == "IM004" ||
           (record.state == "01000" && record.text.find(u"open lib") != std::u16string::npos);
}

} // namespace

Error::Kind odbcErrorKind(std::string_view sqlState, int nativeCode) noexcept {
    if (sqlState == kConstraint) {
        const bool duplicate = nativeCode == kDuplicateInIndex || nativeCode == kDuplicateKey;
        return duplicate ? Kind::DuplicateKey : nativeCode == kNullRefused ? Kind::NullNotAllowed : Kind::Refused;
    }
    if (std::find(kTruncated.begin(), kTruncated.end(), nativeCode) != kTruncated.end()) {
        return Kind::FieldTooSmall;
    }
    const auto row = std::find_if(kStates.begin(), kStates.end(),
                                  [&](const StateRow& each) { return sqlState.starts_with(each.state); });
    return row == kStates.end() ? Kind::Refused : row->kind;
}

Error odbcError(Error::Kind kind, const OdbcPlace& place, const OdbcDoing& doing, const std::string& reason,
                const std::string& state) {
    std::string text = "cannot " + std::string(doing.action);
    if (!doing.table.empty()) {
        text += " " + platform::toUtf8(doing.table);
    }
    text += " (" + shownLine(place.shown, place) + "): " + reason;
    if (!doing.statement.empty()) {
        const bool cut = doing.statement.size() > kShownStatement;
        text += "; statement: " + shownLine(doing.statement.substr(0, kShownStatement), place) + (cut ? "…" : "");
    }
    return {kind, text, state};
}

void throwOdbcError(const OdbcHandle& handle, const OdbcPlace& place, const OdbcDoing& doing) {
    const std::vector<Record> records = recordsOf(handle);
    if (records.empty()) {
        throw odbcError(handle.get() == nullptr ? Kind::Connection : Kind::Refused, place, doing,
                        "the driver gives no reason");
    }
    std::string reason;
    bool notLoaded = false;
    for (const Record& record : records) {
        const std::string line = shownLine(record.text, place);
        const std::string shown = line.empty() ? "no reason given" : line;
        if (reason.find(shown) == std::string::npos) { // drivers repeat themselves
            reason += (reason.empty() ? "" : "; ") + shown + " (SQLSTATE " + record.state + ")";
        }
        notLoaded = notLoaded || isLoadFailure(record);
    }
    if (notLoaded && !place.advice.empty()) {
        reason += ". " + place.advice;
    }
    const Record& first = records.front();
    throw odbcError(notLoaded ? Kind::Connection : odbcErrorKind(first.state, first.native), place, doing, reason,
                    first.state);
}

} // namespace kelb::ado
