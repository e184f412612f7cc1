#include "ado/jet_provider.h"

#include "ado/environment.h"
#include "ado/error.h"
#include "ado/jet_errors.h"
#include "ado/jet_schema_row_set.h"
#include "ado/jet_select.h"
#include "ado/shared_database.h"
#include "ado/sql_change.h"
#include "ado/sql_definition.h"
#include "ado/sql_parser.h"

#include "platform/letter_case.h"

#include <array>
#include <utility>

namespace kelb::ado {

namespace {

struct Execution {
    SharedDatabase& database;

    std::size_t operator()(const SelectStatement& /*select*/) const {
        throw Error(Error::Kind::Refused, "a SELECT gives rows: open a record set with it");
    }
    std::size_t operator()(const UpdateStatement& statement) const { return run(database, statement); }
    std::size_t operator()(const DeleteStatement& statement) const { return run(database, statement); }
    std::size_t operator()(const InsertStatement& statement) const { return run(database, statement); }
    template <class Definition>
    std::size_t operator()(const Definition& statement) const {
        run(database, statement);
        return 0;
    }
};

class JetSession final : public Session {
public:
    JetSession(std::shared_ptr<SharedDatabase> database, AccessWish wish)
        : database_(std::move(database)), mayWrite_(wish != AccessWish::Read) {
        if (mayWrite_) {
            database_->writerCame();
        }
    }
    ~JetSession() override;
    JetSession(const JetSession&) = delete;
    JetSession& operator=(const JetSession&) = delete;

    /// Every cursor is a keyset: it shows what the others promise as well.
    std::unique_ptr<RowSet> open(std::u16string_view select, CursorType /*cursor*/, LockType /*lock*/) override {
        return during({"open a record set", {}, database_->path(), select}, [&] {
            const Statement statement = parseStatement(select);
            const auto* parsed = std::get_if<SelectStatement>(&statement);
            if (parsed == nullptr) {
                throw Error(Error::Kind::Syntax, "a record set is opened with SELECT or the name of a table");
            }
            return openSelect(database_, *parsed);
        });
    }

    std::size_t execute(std::u16string_view statement) override {
        return during({"execute the statement", {}, database_->path(), statement},
                      [&] { return std::visit(Execution{*database_}, parseStatement(statement)); });
    }

    std::unique_ptr<RowSet> tables() override {
        return during({"list the tables", {}, database_->path(), {}}, [&] { return tablesOf(*database_->database()); });
    }

    void beginTransaction() override {
        during({"begin a transaction", {}, database_->path(), {}}, [&] { database_->beginTransaction(); });
        ++transactions_;
    }
    void commitTransaction() override {
        endTransaction("commit the transaction", [&] { database_->commitTransaction(); });
    }
    void rollbackTransaction() override {
        endTransaction("roll the transaction back", [&] { database_->rollbackTransaction(); });
    }
    void atomically(const std::function<void()>& changes) override {
        during({"save changes that belong together", {}, database_->path(), {}},
               [&] { database_->changeTogether(changes); });
    }
    void flush() override {
        during({"save the database", {}, database_->path(), {}}, [&] { database_->database()->commit(); });
    }
    void flushIfDue() override {
        during({"save the database", {}, database_->path(), {}}, [&] { database_->database()->commitIfDue(); });
    }
    void setCommandTimeout(int /*seconds*/) override {} // statements run to their end: there is no server to wait for

private:
    template <class End>
    void endTransaction(std::string_view action, End&& end) {
        during({action, {}, database_->path(), {}}, [&] {
            if (transactions_ == 0) {
                throw Error(Error::Kind::Refused, "no transaction was begun on this connection");
            }
            --transactions_;
            end();
        });
    }

    std::shared_ptr<SharedDatabase> database_;
    bool mayWrite_;
    unsigned transactions_ = 0;
};

/// A transaction that nobody committed did not happen.
JetSession::~JetSession() {
    if (mayWrite_) {
        database_->writerLeft();
    }
    for (; transactions_ > 0; --transactions_) {
        try {
            database_->rollbackTransaction();
        } catch (const std::exception&) {
            // Nothing more can be told here, and nothing of the transaction has reached the file.
            return;
        }
    }
}

AccessWish wishOf(const ConnectionString& connection) {
    const std::u16string mode = connection.value(u"Mode");
    if (platform::equalNoCase(mode, u"Read")) {
        return AccessWish::Read;
    }
    const bool write = platform::equalNoCase(mode, u"ReadWrite") || platform::equalNoCase(mode, u"Write");
    return write ? AccessWish::Write : AccessWish::WriteIfPossible;
}

} // namespace

bool JetProvider::accepts(const ConnectionString& connection) const {
    constexpr std::array<std::u16string_view, 2> kNames = {u"Microsoft.Jet.OLEDB", u"Microsoft.ACE.OLEDB"};
    const std::u16string provider = connection.value(u"Provider");
    for (const std::u16string_view name : kNames) {
        const auto front = std::u16string_view(provider).substr(0, name.size());
        const bool end = provider.size() <= name.size() || provider[name.size()] == u'.';
        if (end && platform::equalNoCase(front, name)) {
            return true;
        }
    }
    return false;
}

std::unique_ptr<Session> JetProvider::connect(const ConnectionString& connection, Environment& environment) {
    const std::u16string path = connection.value(u"Data Source");
    if (path.empty()) {
        throw Error(Error::Kind::Connection, "the connection string names no database (Data Source=…)");
    }
    const AccessWish wish = wishOf(connection);
    return std::make_unique<JetSession>(environment.share(path, wish), wish);
}

} // namespace kelb::ado
