#include "jobs/sink_connection.h"

#include "ado/connection_string.h"
#include "jobs/job_error.h"
#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace kelb::jobs {
namespace {

/// The address is joined in as it is, so nothing in it may begin another part of the string.
std::u16string builtIn(std::u16string_view server, std::u16string_view rest) {
    constexpr std::u16string_view kBreakers(u";{}=\"'\r\n\0", 9);
    if (server.find_first_of(kBreakers) != server.npos) {
        throw SettingError("the server \"" + platform::toUtf8(server) +
                           "\" is not an address. Give a host name or host\\instance (" +
                           settingName(Setting::SqlServerServer) + "), or a whole connection string (" +
                           settingName(Setting::SqlServerWxDbConnection) + ").");
    }
    std::u16string text = u"driver={sql server};server=";
    text += server;
    return text.append(rest);
}

bool hasEmptyAdministratorPassword(const ado::ConnectionString& connection) {
    return platform::equalNoCase(connection.value(u"uid"), u"sa") && connection.has(u"pwd") &&
           connection.value(u"pwd").empty();
}

} // namespace

std::u16string wxDbConnectionString(std::u16string_view server) {
    return builtIn(server, u";Database=wxDB;uid=sa;pwd=");
}

std::u16string mendDbConnectionString(std::u16string_view server) {
    return builtIn(server, u";Database=mendDB;");
}

Sink chosenSink(const SinkOptions& options, const Configuration& configuration) {
    const auto known = [](std::u16string_view text) {
        return Sink{std::u16string(text), ado::ConnectionString(text).shown()};
    };
    const auto filled = [&known](std::u16string_view server) { return known(wxDbConnectionString(server)); };
    const auto given = [](const std::u16string& text) { return !platform::trimBlanks(text).empty(); };
    if (given(options.connection)) {
        return known(options.connection);
    }
    if (given(options.server)) {
        return filled(platform::trimBlanks(options.server));
    }
    if (const std::u16string& text = configuration.text(Setting::SqlServerWxDbConnection); given(text)) {
        return known(text);
    }
    const std::u16string_view server = platform::trimBlanks(configuration.text(Setting::SqlServerServer));
    if (server.empty()) {
        throw SettingError("nothing says where to store. Name a server or a connection (kelb: --server, --connection), "
                           "or set " +
                           settingName(Setting::SqlServerServer) + " or " +
                           settingName(Setting::SqlServerWxDbConnection) +
                           " in Kelb.ini; the path of an .mdb file is a connection, too");
    }
    return filled(server);
}

void openSink(ado::Connection& connection, const Sink& sink, JobHost& host) {
    if (hasEmptyAdministratorPassword(ado::ConnectionString(sink.connectionString))) {
        host.warning(u"The connection logs in as sa with an empty password: whoever reaches the server can read and "
                     u"change everything on it. Give the login a password, and name the connection in [SqlServer] "
                     u"wxDBConnection of Kelb.ini.");
    }
    connection.mode = ado::Connection::Mode::Write;
    connection.Open(sink.connectionString);
}

} // namespace kelb::jobs
