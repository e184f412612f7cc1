#pragma once

#include "ado/odbc_column.h"
#include "ado/odbc_connection.h"
#include "ado/odbc_parameter.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// One statement on a connection. Errors are Error, with the action that the constructor was given.
/// Results are read to their end, or closed, before the next statement runs: some drivers carry one at a time.
class OdbcStatement {
public:
    /// `action` and `table` as in OdbcDoing; `action` is a literal.
    OdbcStatement(std::shared_ptr<OdbcConnection> connection, std::string_view action, std::u16string_view table = {});

    void prepare(std::u16string_view text);
    const std::u16string& text() const noexcept { return text_; }
    /// What the prepared or executed statement gives; none for one without rows.
    std::vector<OdbcColumn> columns();
    /// Runs the prepared statement with these values in place of its question marks. Result: rows affected, unless the
    /// server does not tell.
    std::optional<std::size_t> execute(std::span<OdbcParameter> parameters = {});
    /// Runs a text at once: one message to the server where a prepared statement takes three.
    std::optional<std::size_t> executeDirect(std::u16string_view text);

    /// The tables of the connection's database / the key columns of one table; rows as the standard lays them out.
    void listTables();
    void listPrimaryKey(const std::u16string& schema, const std::u16string& table);
    void listUniqueIndexes(const std::u16string& schema, const std::u16string& table);

    bool fetch(); ///< the next row; false behind the last one
    /// A field of the row; columns are numbered from 0 and read in their order, each once.
    Value read(std::size_t column, FieldType type);
    std::u16string readText(std::size_t column) { return toText(read(column, FieldType::Memo)); }
    void closeRows() noexcept;

private:
    SQLHANDLE get() const noexcept { return handle_.get(); }
    OdbcDoing doing() const { return {action_, table_, text_}; }
    void require(SQLRETURN result) const;
    void requireRun(SQLRETURN result) const;
    void take(std::u16string_view text);
    std::optional<std::size_t> rowsAffected();
    template <class Number>
    std::optional<Number> readNumber(SQLUSMALLINT position, SQLSMALLINT cType);
    template <class Unit>
    bool readChunks(SQLUSMALLINT position, SQLSMALLINT cType, std::vector<Unit>& buffer, auto&& append);
    Value readDate(SQLUSMALLINT position);
    std::optional<std::u16string> readCharacters(SQLUSMALLINT position);
    std::u16string attributeText(SQLUSMALLINT position, SQLUSMALLINT attribute) const;

    std::shared_ptr<OdbcConnection> connection_;
    OdbcHandle handle_;
    std::string_view action_;
    std::u16string table_;
    std::u16string text_;
    std::vector<char16_t> characters_; ///< one chunk; kept from field to field
    std::vector<std::byte> bytes_;
};

} // namespace kelb::ado
