#pragma once

#include "ado/odbc_api.h"
#include "ado/odbc_column.h"

#include <string>
#include <variant>

namespace kelb::ado {

/// A value on its way into a statement, in the form in which drivers take it. The value must be of the kind that
/// odbcValue gives for the column and must stay where it is until the statement has run, and so must the parameter.
class OdbcParameter {
public:
    OdbcParameter(const OdbcColumn& column, const Value& value);

    SQLRETURN bind(SQLHANDLE statement, SQLUSMALLINT position);

private:
    void take(const OdbcColumn& column, const Value& value);

    SQLSMALLINT cType_ = SQL_C_WCHAR;
    SQLSMALLINT sqlType_ = SQL_WVARCHAR;
    SQLULEN size_ = 0;
    SQLSMALLINT digits_ = 0;
    SQLLEN length_ = 0;          ///< bytes, or SQL_NULL_DATA
    const void* data_ = nullptr; ///< inside the value; null: in held_
    std::variant<std::monostate, unsigned char, SQLINTEGER, SQLBIGINT, double, SQL_TIMESTAMP_STRUCT, std::string> held_;
};

} // namespace kelb::ado
