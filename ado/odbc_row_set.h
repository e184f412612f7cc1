#pragma once

#include "ado/odbc_statement.h"
#include "ado/odbc_table.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// The rows of a SELECT on a server, fetched into memory all at once; values are those of that moment.
/// Rows added before it are afterwards found where the SELECT puts them, the last one at the end.
class OdbcRowSet final : public RowSet {
public:
    enum class Fetch {
        Now,
        WhenAsked ///< opening only describes the rows, so that a set opened for adding rows never reads the table
    };
    /// Throws Error: NoSuchTable, NoSuchColumn, Syntax, …
    OdbcRowSet(std::shared_ptr<OdbcConnection> connection, std::u16string_view select, Fetch fetch);

    const std::vector<FieldInfo>& fields() const override { return fields_; }
    std::size_t memberCount() const override;
    bool seek(std::size_t member) override;
    Value value(std::size_t field) override { return currentRow()[field]; }
    bool text(std::size_t field, std::u16string& out) override;
    void insert(std::span<const FieldChange> changes) override;
    /// Found again by its key (keyOf). Throws Error (RowDeleted) when it is not there any more.
    void update(std::span<const FieldChange> changes) override;
    void erase() override;
    bool updatable() const override { return table_.has_value(); }
    void requireUpdatable() const override;

private:
    using Row = std::vector<Value>;
    /// What is known of the rows.
    struct Rows {
        std::vector<Row> members;
        std::vector<bool> gone; ///< deleted through this set
        std::optional<std::size_t> current;
        std::optional<Row> added;             ///< the row added last while the others are not fetched: it is current
        std::vector<std::size_t> addedFields; ///< those of its fields that are known
    };

    std::vector<Row> readRows(OdbcStatement& statement) const;
    void load() const;
    void placeAdded() const;
    const Row& currentRow() const;
    Row& changeableRow();
    std::vector<std::size_t> fill(Row& row, std::span<const FieldChange> changes) const;
    std::string tooLong(std::size_t field, const Value& value) const;
    [[noreturn]] void refuseTooLong(const Error& told, std::span<const std::size_t> fields, const Row& row) const;
    void runInsert(const std::vector<std::size_t>& columns, const Row& row);
    std::u16string addPlace(std::u16string statement, const Row& stored, std::vector<OdbcParameter>& parameters) const;
    void changeOneRow(std::u16string front, std::vector<OdbcParameter> parameters, const Row& stored);

    std::shared_ptr<OdbcConnection> connection_;
    std::u16string select_;
    std::vector<OdbcColumn> columns_;
    std::vector<FieldInfo> fields_;
    std::optional<OdbcTable> table_;
    std::optional<OdbcKey> key_;                     ///< looked up at the first change
    mutable std::unique_ptr<OdbcStatement> pending_; ///< the prepared SELECT until its rows are fetched
    mutable Rows rows_;
    std::unique_ptr<OdbcStatement> insert_; ///< kept for the next row with the same fields
    std::vector<std::size_t> insertFields_;
    std::unique_ptr<OdbcStatement> change_; ///< the UPDATE or DELETE run last, kept for the next of the same text
};

} // namespace kelb::ado
