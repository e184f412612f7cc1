#pragma once

#include "ado/connection.h"
#include "ado/environment.h"
#include "jobs/result_listing.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jobs {

/// What leads to one row: its number, its address, or both.
struct RowName {
    std::u16string database; ///< path of an Access database
    std::u16string table;    ///< "": whichever table has the address, those with page contents first
    std::optional<std::int64_t> id;
    std::u16string url; ///< "" when the number is enough
};

/// A row of a crawl table with all its fields.
struct SourceRow {
    std::u16string database, table;
    std::vector<RowField> fields;

    /// Names without regard to case; nullptr when there is no such field.
    const RowField* field(std::u16string_view name) const noexcept;
};

/// Finds rows by number and address. A database stays open for reading between two questions, so that the look-up
/// index that the first one had to make serves the next.
class SourceRows {
public:
    explicit SourceRows(ado::Environment& environment) : environment_(environment) {}

    /// No value when no row has that name (any more), or nothing is named. Throws ado::Error: the database cannot be
    /// read, there is no such table, or it has no such column.
    std::optional<SourceRow> find(const RowName& name);
    void close() noexcept;

private:
    void open(const std::u16string& database);
    std::optional<SourceRow> findIn(const std::u16string& table, const RowName& name);

    ado::Environment& environment_;
    std::optional<ado::Connection> connection_;
    std::u16string database_; ///< that is open
    std::vector<std::u16string> withUrl_;
};

} // namespace kelb::jobs
