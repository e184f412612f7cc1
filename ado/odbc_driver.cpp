#include "ado/odbc_driver.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>

namespace kelb::ado {

namespace {

using platform::equalNoCase;

constexpr std::u16string_view kSqlServer = u"SQL Server";
/// The driver manager looks for it where the system keeps its drivers.
constexpr std::u16string_view kFreeTdsLibrary = u"libtdsodbc.so";
constexpr std::u16string_view kFreeTdsMark = u"tdsodbc";
/// With its own choice of protocol FreeTDS waits for a silent server past every login time-out.
constexpr std::u16string_view kTdsVersionKey = u"TDS_Version";
constexpr std::u16string_view kTdsVersion = u"7.4";

/// What OLE DB calls the parts of an ODBC string.
struct OleDbName {
    std::u16string_view oleDb, odbc;
};
constexpr std::array kOleDbNames{OleDbName{u"Data Source", u"DSN"}, OleDbName{u"User ID", u"UID"},
                                 OleDbName{u"Password", u"PWD"}, OleDbName{u"Initial Catalog", u"Database"}};

std::u16string odbcName(std::u16string_view key, bool oleDb) {
    for (const OleDbName& name : kOleDbNames) {
        if (oleDb && equalNoCase(name.oleDb, key)) {
            return std::u16string(name.odbc);
        }
    }
    return std::u16string(key);
}

/// The value in braces when it would not end where it should.
std::u16string asValue(std::u16string_view value) {
    if (value.starts_with(u'{') || value.find_first_of(u";}") == value.npos) {
        return std::u16string(value);
    }
    std::u16string braced = u"{";
    for (const char16_t unit : value) {
        braced.append(unit == u'}' ? 2 : 1, unit);
    }
    return braced + u'}';
}

std::u16string withoutBraces(std::u16string_view value) {
    const bool braced = value.size() >= 2 && value.starts_with(u'{') && value.ends_with(u'}');
    return std::u16string(braced ? value.substr(1, value.size() - 2) : value);
}

bool isLibrary(std::u16string_view driver) {
    return driver.find_first_of(u"/\\") != driver.npos || driver.ends_with(u".so") || driver.ends_with(u".dylib");
}

std::string listed(const std::vector<OdbcDriver>& installed) {
    std::string names;
    for (const OdbcDriver& driver : installed) {
        names += (names.empty() ? "" : ", ") + platform::toUtf8(driver.name);
    }
    return names.empty() ? "none is installed" : "installed are: " + names;
}

bool isFreeTds(std::u16string_view library) {
    return library.find(kFreeTdsMark) != library.npos;
}

/// The parts that go to the driver manager, each key once, in the order of their first occurrence.
class Parts {
public:
    explicit Parts(const ConnectionString& connection) {
        const bool oleDb = connection.has(u"Provider");
        for (const auto& [key, value] : connection.parts()) {
            if (!equalNoCase(key, u"Mode") && !equalNoCase(key, u"Provider")) {
                set(odbcName(key, oleDb), value);
            }
        }
    }

    const std::u16string* find(std::u16string_view key) const {
        const auto part =
            std::find_if(parts_.begin(), parts_.end(), [&](const auto& each) { return equalNoCase(each.first, key); });
        return part == parts_.end() ? nullptr : &part->second;
    }
    std::u16string value(std::u16string_view key) const {
        const std::u16string* found = find(key);
        return found == nullptr ? std::u16string() : *found;
    }
    void set(std::u16string_view key, std::u16string_view value) {
        const auto part =
            std::find_if(parts_.begin(), parts_.end(), [&](const auto& each) { return equalNoCase(each.first, key); });
        if (part == parts_.end()) {
            parts_.emplace_back(key, value);
        } else {
            part->second = value;
        }
    }
    std::u16string joined() const {
        std::u16string text;
        for (const auto& [key, value] : parts_) {
            text += key + u"=" + asValue(value) + u";";
        }
        return text;
    }

private:
    std::vector<std::pair<std::u16string, std::u16string>> parts_;
};

std::u16string shownPlace(const Parts& parts) {
    std::u16string shown;
    const auto add = [&](std::u16string_view label, std::u16string_view key) {
        if (const std::u16string value = withoutBraces(parts.value(key)); !value.empty()) {
            shown += shown.empty() ? u"" : u", ";
            shown.append(label) += value;
        }
    };
    add(u"driver ", u"Driver");
    add(u"data source ", u"DSN");
    add(u"data source file ", u"FILEDSN");
    add(u"server ", parts.find(u"Server") == nullptr ? u"Servername" : u"Server");
    add(u"port ", u"Port");
    add(u"database ", u"Database");
    return shown;
}

/// Puts the library or installed name of the driver in place; result: whether it is FreeTDS.
bool resolveDriver(Parts& parts, const std::vector<OdbcDriver>& installed, OdbcPlace& place) {
    const std::u16string name = withoutBraces(parts.value(u"Driver"));
    const auto byName = [&](const OdbcDriver& driver) { return equalNoCase(driver.name, name); };
    if (const auto driver = std::find_if(installed.begin(), installed.end(), byName); driver != installed.end()) {
        return isFreeTds(driver->library);
    }
    if (isLibrary(name)) {
        return isFreeTds(name);
    }
    if (!equalNoCase(name, kSqlServer)) {
        throw odbcError(Error::Kind::Connection, place, {"open the connection", {}, {}},
                        "there is no ODBC driver \"" + platform::toUtf8(name) + "\"; " + listed(installed) +
                            ". Install it or name another one (Driver={…}).",
                        "IM002");
    }
    const auto freeTds = std::find_if(installed.begin(), installed.end(),
                                      [](const OdbcDriver& driver) { return isFreeTds(driver.library); });
    const bool registered = freeTds != installed.end();
    parts.set(u"Driver", registered ? u"{" + freeTds->name + u"}" : std::u16string(kFreeTdsLibrary));
    place.shown += registered ? u" (through " + freeTds->name + u")" : u" (through FreeTDS)";
    place.advice = "No driver for SQL Server is installed (" + listed(installed) +
                   "): install FreeTDS (package tdsodbc), or add a driver \"SQL Server\" to odbcinst.ini.";
    return true;
}

} // namespace

std::vector<OdbcDriver> installedOdbcDrivers(const OdbcHandle& environment) {
    std::vector<OdbcDriver> drivers;
    std::u16string name(256, u'\0'), attributes(4096, u'\0');
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    for (;; direction = SQL_FETCH_NEXT) {
        SQLSMALLINT nameLength = 0, attributeLength = 0;
        const SQLRETURN result =
            SQLDriversW(environment.get(), direction, odbcText(name.data()), odbcLength(name), &nameLength,
                        odbcText(attributes.data()), odbcLength(attributes), &attributeLength);
        if (!SQL_SUCCEEDED(result)) {
            return drivers;
        }
        const auto within = [](const std::u16string& buffer, SQLSMALLINT length) {
            const auto units = static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0));
            return std::u16string_view(buffer).substr(0, std::min(units, buffer.size() - 1));
        };
        OdbcDriver& driver = drivers.emplace_back();
        driver.name = within(name, nameLength);
        driver.name.resize(std::min(driver.name.size(), driver.name.find(u'\0')));
        // Key=value pairs, each with a zero behind it.
        std::u16string_view pairs = within(attributes, attributeLength);
        constexpr std::u16string_view kDriver = u"Driver=";
        while (!pairs.empty()) {
            const std::u16string_view pair = pairs.substr(0, pairs.find(u'\0'));
            if (equalNoCase(pair.substr(0, kDriver.size()), kDriver)) {
                driver.library = pair.substr(kDriver.size());
            }
            pairs.remove_prefix(std::min(pairs.size(), pair.size() + 1));
        }
    }
}

OdbcTarget odbcTarget(const ConnectionString& connection, const std::vector<OdbcDriver>& installed) {
    Parts parts(connection);
    OdbcTarget target;
    target.place.shown = shownPlace(parts);
    target.place.password = withoutBraces(parts.value(parts.find(u"PWD") == nullptr ? u"Password" : u"PWD"));
    const bool byDriver = parts.find(u"DSN") == nullptr && parts.find(u"FILEDSN") == nullptr;
    if (byDriver && withoutBraces(parts.value(u"Driver")).empty()) {
        throw odbcError(Error::Kind::Connection, target.place, {"open the connection", {}, {}},
                        "the connection string \"" + platform::toUtf8(connection.shown()) +
                            "\" names no driver (Driver={…}) and no data source (DSN=…); " + listed(installed));
    }
    const bool freeTds = parts.find(u"Driver") != nullptr && resolveDriver(parts, installed, target.place);
    if (freeTds && parts.find(kTdsVersionKey) == nullptr && parts.find(u"Servername") == nullptr) {
        parts.set(kTdsVersionKey, kTdsVersion);
    }
    target.connectionString = parts.joined();
    return target;
}

} // namespace kelb::ado
