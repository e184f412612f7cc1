#include "ado/odbc_provider.h"

#include "ado/environment.h"
#include "ado/fixed_row_set.h"
#include "ado/odbc_row_set.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelb::ado {

namespace {

using platform::equalNoCase;

/// The first word of a statement, without regard to remarks in front of it, which nobody writes here.
bool beginsWith(std::u16string_view statement, std::u16string_view word) {
    const std::size_t first = statement.find_first_not_of(u" \t\r\n");
    return first != statement.npos && equalNoCase(statement.substr(first, word.size()), word);
}

bool isRowChange(std::u16string_view statement) {
    constexpr std::array<std::u16string_view, 3> kWords{u"insert", u"update", u"delete"};
    return std::any_of(kWords.begin(), kWords.end(), [&](auto word) { return beginsWith(statement, word); });
}

class OdbcSession final : public Session {
public:
    explicit OdbcSession(std::shared_ptr<OdbcConnection> connection) : connection_(std::move(connection)) {}

    /// The rows are fetched once, which is what every kind of cursor promises at least; those of a set that may be for
    /// adding rows only when they are asked for.
    std::unique_ptr<RowSet> open(std::u16string_view select, CursorType /*cursor*/, LockType lock) override {
        using Fetch = OdbcRowSet::Fetch;
        return std::make_unique<OdbcRowSet>(connection_, select,
                                            lock == LockType::ReadOnly ? Fetch::Now : Fetch::WhenAsked);
    }

    std::size_t execute(std::u16string_view statement) override;
    std::unique_ptr<RowSet> tables() override;

    void beginTransaction() override {
        requireNoDryRun("begin a transaction");
        connection_->begin();
    }
    void commitTransaction() override {
        requireNoDryRun("commit the transaction");
        connection_->commit();
    }
    void rollbackTransaction() override {
        requireNoDryRun("roll the transaction back");
        connection_->rollback();
    }
    void flush() override {}      // outside a transaction every change is on the server when it is made
    void flushIfDue() override {} // likewise
    void setCommandTimeout(int seconds) override { connection_->commandTimeout = seconds; }

private:
    void requireNoDryRun(std::string_view action) const {
        if (connection_->undoesEverything()) {
            throw odbcError(Error::Kind::Refused, connection_->place(), {action, {}, {}},
                            "a dry run is one transaction by itself");
        }
    }

    std::shared_ptr<OdbcConnection> connection_;
};

std::size_t OdbcSession::execute(std::u16string_view statement) {
    constexpr std::string_view kAction = "execute the statement";
    if (beginsWith(statement, u"select")) {
        throw odbcError(Error::Kind::Refused, connection_->place(), {kAction, {}, statement},
                        "a SELECT gives rows: open a record set with it");
    }
    if (connection_->undoesEverything() && !connection_->undoesDefinitions() && !isRowChange(statement)) {
        throw odbcError(Error::Kind::Refused, connection_->place(), {kAction, {}, statement},
                        "a dry run cannot do this, because the server could not take it back");
    }
    OdbcStatement running(connection_, kAction);
    return running.executeDirect(statement).value_or(0);
}

std::unique_ptr<RowSet> OdbcSession::tables() {
    constexpr std::size_t kName = 2, kType = 3;
    OdbcStatement list(connection_, "list the tables");
    list.listTables();
    std::vector<std::vector<Value>> rows;
    while (list.fetch()) {
        Value name = list.read(kName, FieldType::Text);
        Value type = list.read(kType, FieldType::Text);
        rows.push_back({std::move(name), std::move(type)});
    }
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
        return platform::compareNoCase(toText(a[0]), toText(b[0])) < 0;
    });
    return tableRowSet(std::move(rows));
}

} // namespace

/// The driver manager's environment; connections share it and keep it alive.
class OdbcProvider::Manager {
public:
    Manager() : environment(std::make_shared<OdbcHandle>(SQL_HANDLE_ENV, nullptr)) {
        const bool ready =
            environment->get() != nullptr && SQL_SUCCEEDED(SQLSetEnvAttr(environment->get(), SQL_ATTR_ODBC_VERSION,
                                                                         odbcNumber(SQL_OV_ODBC3), SQL_IS_UINTEGER));
        if (!ready) {
            throw Error(Error::Kind::Connection, "cannot open the connection: the ODBC driver manager does not start");
        }
    }
    const std::shared_ptr<OdbcHandle> environment;
};

OdbcProvider::OdbcProvider(std::chrono::seconds loginTimeout) : loginTimeout_(loginTimeout) {}
OdbcProvider::~OdbcProvider() = default;

bool OdbcProvider::accepts(const ConnectionString& connection) const {
    constexpr std::u16string_view kBridge = u"MSDASQL"; // OLE DB's provider for ODBC
    const std::u16string provider = connection.value(u"Provider");
    if (!provider.empty()) {
        return equalNoCase(std::u16string_view(provider).substr(0, kBridge.size()), kBridge);
    }
    return connection.has(u"Driver") || connection.has(u"DSN") || connection.has(u"FILEDSN");
}

std::unique_ptr<Session> OdbcProvider::connect(const ConnectionString& connection, Environment& environment) {
    if (manager_ == nullptr) {
        manager_ = std::make_unique<Manager>();
    }
    const bool dryRun = environment.options().dryRun;
    return std::make_unique<OdbcSession>(std::make_shared<OdbcConnection>(
        manager_->environment, odbcTarget(connection, installedOdbcDrivers(*manager_->environment)),
        OdbcConnection::Options{loginTimeout_,
                                dryRun ? OdbcConnection::Changes::Undone : OdbcConnection::Changes::Kept}));
}

} // namespace kelb::ado
