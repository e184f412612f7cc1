#pragma once

#include "jet/pager.h"
#include "jet/table_definition.h"
#include "jet/usage_map.h"
#include "jet/value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelb::platform {
class Random;
}

namespace kelb::jet {

/// One record as it lies on its page, columns decoded on demand. Valid while nothing is changed in the database.
class Row {
public:
    RowId id() const noexcept { return id_; }
    bool isNull(const Column& column) const;
    Value value(const Column& column) const;
    /// Text and memo columns: decoded into `out` (cleared first; keeps its capacity). False for Null.
    bool text(const Column& column, std::u16string& out) const;
    std::span<const std::byte> bytes() const noexcept { return bytes_; }
    /// The stored bytes of a column; no value for Null. Requires a column that is not yes/no.
    std::optional<std::span<const std::byte>> field(const Column& column) const;

private:
    friend class Table;
    friend class TableScan;
    Pager* pager_ = nullptr;
    const TableDefinition* definition_ = nullptr;
    Dialect dialect_ = Dialect::Jet4;
    RowId id_;
    PageRef page_;
    std::span<const std::byte> bytes_;
};

/// Rows in page order. Void after a change to the table.
class TableScan {
public:
    bool next(Row& row); ///< false at the end. Throws CorruptFile

private:
    friend class Table;
    class Table* table_ = nullptr;
    PageNumber current_ = kNoPage;
    PageRef page_;
    std::size_t slot_ = 0, slots_ = 0;
};

/// A column and the value it gets.
struct Change {
    std::size_t column; ///< index into definition().columns
    Value value;
};

/// One table of an open database; stays valid as long as the database. Every change is one operation: on a throw the
/// table and all its indexes are as before.
class Table {
public:
    struct Environment; ///< what the database lends its tables (table.cpp, database.cpp)

    const TableDefinition& definition() const;
    const std::u16string& name() const { return definition().name; }
    std::uint32_t rowCount() const; ///< as the definition page says; scanning is the truth in foreign files
    /// Refuses with the reason why this table cannot be written (unknown column type, read-only dialect, …).
    void requireWritable() const;

    TableScan scan();
    /// False when the row was deleted.
    bool read(RowId id, Row& row);

    /// `values` in the order of definition().columns; Null takes the next autonumber in autonumber columns and False in
    /// yes/no columns. Numbers are converted where nothing is lost. Throws Error.
    RowId insert(std::span<const Value> values);
    void update(RowId id, std::span<const Change> changes); ///< the row keeps its id
    void erase(RowId id);
    /// Last autonumber given out.
    std::int32_t lastAutonumber() const;

    /// An index whose key is exactly this one text or number column, for look-ups; its position among the physical
    /// indexes. No value when there is none.
    std::optional<std::size_t> indexOn(const Column& column) const;
    /// Rows whose index key equals the key of `value`, in row order. KeyNotPossible as in index_key.h.
    std::vector<RowId> lookUp(std::size_t physicalIndex, const Value& value);

    explicit Table(std::unique_ptr<Environment> environment);
    ~Table();

private:
    friend class TableScan;
    std::unique_ptr<Environment> environment_;
};

} // namespace kelb::jet
