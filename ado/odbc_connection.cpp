#include "ado/odbc_connection.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelb::ado {

namespace {

constexpr OdbcDoing kOpen{"open the connection", {}, {}};

} // namespace

OdbcConnection::OdbcConnection(std::shared_ptr<OdbcHandle> environment, OdbcTarget target, Options options)
    : environment_(std::move(environment)), target_(std::move(target)), options_(options),
      handle_(SQL_HANDLE_DBC, environment_->get()) {
    if (handle_.get() == nullptr) {
        throwOdbcError(*environment_, place(), kOpen);
    }
    const auto seconds = static_cast<std::uintptr_t>(options_.loginTimeout.count());
    SQLSetConnectAttrW(handle_.get(), SQL_ATTR_LOGIN_TIMEOUT, odbcNumber(seconds), SQL_IS_UINTEGER);
    const std::u16string& text = target_.connectionString;
    constexpr std::size_t kLongest = 32'000; // lengths have 16 bits
    if (text.size() > kLongest || text.find(u'\0') != text.npos) {
        throw odbcError(Error::Kind::Connection, place(), kOpen,
                        "the connection string is too long or holds the character 0");
    }
    const SQLRETURN result = SQLDriverConnectW(handle_.get(), nullptr, odbcText(text.data()), odbcLength(text), nullptr,
                                               0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result)) {
        throwOdbcError(handle_, place(), kOpen);
    }
    try {
        learn();
    } catch (const Error&) {
        SQLDisconnect(handle_.get());
        throw;
    }
}

void OdbcConnection::learn() {
    serverProduct_ = infoText(SQL_DBMS_NAME);
    quote_ = infoText(SQL_IDENTIFIER_QUOTE_CHAR);
    const SQLUSMALLINT names = infoNumber(SQL_IDENTIFIER_CASE);
    nameCase_ = names == SQL_IC_LOWER ? NameCase::Lower : names == SQL_IC_UPPER ? NameCase::Upper : NameCase::Kept;
    transactions_ = infoNumber(SQL_TXN_CAPABLE);
    if (undoesEverything()) {
        if (transactions_ == SQL_TC_NONE) {
            throw odbcError(Error::Kind::Connection, place(), kOpen,
                            "a dry run is not possible: the server cannot take changes back");
        }
        begin();
    }
}

OdbcConnection::~OdbcConnection() {
    if (inTransaction_) { // nobody committed it, so it did not happen; the server says the same when we are gone
        SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
    }
    SQLDisconnect(handle_.get());
}

std::u16string OdbcConnection::infoText(SQLUSMALLINT what) const {
    std::array<char16_t, 128> text{};
    SQLSMALLINT bytes = 0;
    const auto room = static_cast<SQLSMALLINT>(sizeof(text));
    if (!SQL_SUCCEEDED(SQLGetInfoW(handle_.get(), what, text.data(), room, &bytes))) {
        return {};
    }
    const auto units = static_cast<std::size_t>(std::max<SQLSMALLINT>(bytes, 0)) / sizeof(char16_t);
    return {text.data(), std::min(units, text.size() - 1)};
}

SQLUSMALLINT OdbcConnection::infoNumber(SQLUSMALLINT what) const {
    SQLUSMALLINT number = 0;
    SQLGetInfoW(handle_.get(), what, &number, sizeof(number), nullptr);
    return number;
}

std::u16string OdbcConnection::quotedName(std::u16string_view name) const {
    if (quote_.empty() || quote_ == u" ") { // the server knows no quotes
        return std::u16string(name);
    }
    std::u16string quoted = quote_;
    for (const char16_t unit : name) {
        quoted.append(unit == quote_.front() ? 2 : 1, unit);
    }
    return quoted + quote_;
}

void OdbcConnection::setAutocommit(bool on, std::string_view action) {
    const SQLRETURN result = SQLSetConnectAttrW(
        handle_.get(), SQL_ATTR_AUTOCOMMIT, odbcNumber(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), SQL_IS_UINTEGER);
    if (!SQL_SUCCEEDED(result)) {
        throwOdbcError(handle_, place(), {action, {}, {}});
    }
}

void OdbcConnection::begin() {
    constexpr std::string_view kAction = "begin a transaction";
    if (inTransaction_) {
        throw odbcError(Error::Kind::Refused, place(), {kAction, {}, {}}, "one is open already");
    }
    setAutocommit(false, kAction);
    inTransaction_ = true;
}

/// A lost connection has ended the transaction, too: what is left is to say so, and not to try it again.
void OdbcConnection::endTransaction(SQLSMALLINT how, std::string_view action) {
    if (!inTransaction_) {
        throw odbcError(Error::Kind::Refused, place(), {action, {}, {}}, "no transaction was begun on this connection");
    }
    inTransaction_ = false;
    if (!SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, handle_.get(), how))) {
        throwOdbcError(handle_, place(), {action, {}, {}});
    }
    setAutocommit(true, action);
}

void OdbcConnection::commit() {
    endTransaction(SQL_COMMIT, "commit the transaction");
}

void OdbcConnection::rollback() {
    endTransaction(SQL_ROLLBACK, "roll the transaction back");
}

} // namespace kelb::ado
