#pragma once

#include "ado/read_only_row_set.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelb::ado {

/// Rows that are all in memory, for reading: COUNT(*), the list of tables.
class FixedRowSet final : public ReadOnlyRowSet {
public:
    /// Each row has a value for each field.
    FixedRowSet(std::vector<FieldInfo> fields, std::vector<std::vector<Value>> rows)
        : fields_(std::move(fields)), rows_(std::move(rows)) {}

    const std::vector<FieldInfo>& fields() const override { return fields_; }
    std::size_t memberCount() const override { return rows_.size(); }
    bool seek(std::size_t member) override {
        current_ = member;
        return true;
    }
    Value value(std::size_t field) override { return rows_[current_][field]; }
    bool text(std::size_t field, std::u16string& out) override;

private:
    std::vector<FieldInfo> fields_;
    std::vector<std::vector<Value>> rows_;
    std::size_t current_ = 0;
};

/// The answer to SELECT COUNT(*): one row, or none with TOP 0. `name` "" when none was written.
[[nodiscard]] std::unique_ptr<RowSet> countRowSet(std::u16string_view name, std::size_t count,
                                                  std::optional<std::size_t> top);
/// Rows of TABLE_NAME and TABLE_TYPE.
[[nodiscard]] std::unique_ptr<RowSet> tableRowSet(std::vector<std::vector<Value>> rows);

} // namespace kelb::ado
