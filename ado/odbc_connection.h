#pragma once

#include "ado/odbc_driver.h"

#include <chrono>
#include <memory>
#include <string>

namespace kelb::ado {

/// What a server's catalog makes of names that stand in statements without quotes.
enum class NameCase { Kept, Lower, Upper };

/// An open connection. Every statement is a transaction of its own unless begin() opens a longer one.
/// One thread. Record sets share it with their session, so that closing order does not matter.
class OdbcConnection {
public:
    enum class Changes {
        Kept,
        Undone ///< dry run: one transaction from end to end, which is never committed
    };
    struct Options {
        std::chrono::seconds loginTimeout{15};
        Changes changes = Changes::Kept;
    };

    /// Throws Error (Connection).
    OdbcConnection(std::shared_ptr<OdbcHandle> environment, OdbcTarget target, Options options);
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    const OdbcHandle& handle() const noexcept { return handle_; }
    const OdbcPlace& place() const noexcept { return target_.place; }
    const std::u16string& serverProduct() const noexcept { return serverProduct_; } ///< "PostgreSQL", …
    /// A column or table name as the server takes it whatever its characters are.
    std::u16string quotedName(std::u16string_view name) const;
    NameCase nameCase() const noexcept { return nameCase_; }

    int commandTimeout = 30; ///< seconds, 0 = none; of statements begun from now on

    bool undoesEverything() const noexcept { return options_.changes == Changes::Undone; }
    /// Whether definitions (CREATE TABLE …) are part of transactions here.
    bool undoesDefinitions() const noexcept { return transactions_ == SQL_TC_ALL; }
    bool inTransaction() const noexcept { return inTransaction_; }
    /// Throw Error; begin also when one is open already.
    void begin();
    void commit();
    void rollback();

private:
    void learn(); ///< what kind of server it is
    void setAutocommit(bool on, std::string_view action);
    void endTransaction(SQLSMALLINT how, std::string_view action);
    std::u16string infoText(SQLUSMALLINT what) const;
    SQLUSMALLINT infoNumber(SQLUSMALLINT what) const;

    std::shared_ptr<OdbcHandle> environment_;
    OdbcTarget target_;
    Options options_;
    OdbcHandle handle_;
    std::u16string serverProduct_;
    std::u16string quote_;
    NameCase nameCase_ = NameCase::Kept;
    SQLUSMALLINT transactions_ = SQL_TC_NONE;
    bool inTransaction_ = false;
};

} // namespace kelb::ado
