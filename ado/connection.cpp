#include "ado/connection.h"

#include "ado/recordset.h"

#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <utility>

namespace kelb::ado {

namespace {

/// A bare path to an Access file stands for the connection string that names it.
bool isDatabasePath(std::u16string_view text, const ConnectionString& parsed) {
    if (parsed.has(u"Provider") || parsed.has(u"Driver") || parsed.has(u"DSN")) {
        return false;
    }
    const auto endsWith = [&](std::u16string_view ending) {
        return text.size() > ending.size() && platform::equalNoCase(text.substr(text.size() - ending.size()), ending);
    };
    return endsWith(u".mdb") || endsWith(u".accdb");
}

ConnectionString parse(std::u16string_view text) {
    const std::u16string_view trimmed = platform::trimBlanks(text);
    const ConnectionString parsed(trimmed);
    return isDatabasePath(trimmed, parsed) ? ConnectionString(jetConnectionString(trimmed)) : parsed;
}

} // namespace

/// Close() tells what went wrong when the last changes are saved; here nobody could be told, and the rows that were
/// committed before stay whole.
Connection::~Connection() {
    try {
        Close();
    } catch (const std::exception&) {
        session_.reset();
    }
}

void Connection::Open(std::u16string_view connectionString, std::u16string_view user, std::u16string_view password) {
    if (session_ != nullptr) {
        throw Error(Error::Kind::Connection, "the connection is open already; close it first");
    }
    ConnectionString parsed = parse(connectionString);
    const bool oleDb = parsed.has(u"Provider");
    if (!user.empty()) {
        parsed.add(oleDb ? u"User ID" : u"UID", user);
    }
    if (!password.empty()) {
        parsed.add(oleDb ? u"Password" : u"PWD", password);
    }
    if (mode != Mode::Default) {
        parsed.add(u"Mode", mode == Mode::Read ? u"Read" : u"ReadWrite");
    }
    const auto& providers = environment_->providers();
    for (auto provider = providers.rbegin(); provider != providers.rend(); ++provider) {
        if ((*provider)->accepts(parsed)) {
            session_ = (*provider)->connect(parsed, *environment_);
            session_->setCommandTimeout(CommandTimeout);
            return;
        }
    }
    throw Error(Error::Kind::Connection, "no provider for the connection string \"" + platform::toUtf8(parsed.shown()) +
                                             "\": expected Provider=Microsoft.Jet.OLEDB.4.0;Data Source=… or the path "
                                             "of an .mdb file" +
                                             (providers.size() > 1 ? ", or Driver={…};Server=…" : ""));
}

Session& Connection::session() {
    if (session_ == nullptr) {
        throw Error(Error::Kind::Connection, "the connection is closed");
    }
    return *session_;
}

std::size_t Connection::Execute(std::u16string_view statement) {
    session().setCommandTimeout(CommandTimeout);
    return session().execute(statement);
}

void Connection::OpenSchema(Recordset& tables) {
    tables.attach(session().tables(), false);
}

ObjectState Connection::State() const noexcept {
    return session_ == nullptr ? ObjectState::Closed : ObjectState::Open;
}

void Connection::Close() {
    if (session_ != nullptr) {
        const std::unique_ptr<Session> closing = std::move(session_);
        closing->flush();
    }
}

void Connection::BeginTrans() {
    session().beginTransaction();
}

void Connection::CommitTrans() {
    session().commitTransaction();
}

void Connection::RollbackTrans() {
    session().rollbackTransaction();
}

void Connection::atomically(const std::function<void()>& changes) {
    session().atomically(changes);
}

void Connection::flush() {
    session().flush();
}

void Connection::flushIfDue() {
    session().flushIfDue();
}

} // namespace kelb::ado
