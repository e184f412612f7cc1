#pragma once

#include "jet/long_field.h"
#include "jet/new_values.h"
#include "jet/table.h"
#include "jet/table_keys.h"
#include "jet/table_state.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelb::jet {

/// What one index loses and gains by a change.
struct KeyChange {
    std::size_t index; ///< its position among the physical ones
    std::optional<KeyBytes> removed;
    bool removedByRow = false; ///< the old key cannot be made for certain: its entry is looked for by the row
    std::optional<KeyBytes> added;
    bool addedIsNew = false; ///< no row has that key yet
};

/// One change to one row of a table: planned and checked in full before the first page is touched. One of the plans is
/// made once; the parts of the change are then asked for in the order that its row store wants.
class RowChange {
public:
    /// Both outlive it, and so do the values and the old row of the plan.
    RowChange(Table::State& state, const TableDefinition& table)
        : state_(state), table_(table), longs_(table), fields_(table.columns.size()) {}

    // Change nothing. Throw Error (NullNotAllowed, DuplicateKey, KeyNotPossible, RecordTooLarge, …) and CorruptFile.

    /// `values` has a value for every column; autonumbers are put into those that are Null. `known`: see Table::insert.
    void planInsert(NewValues& values, std::span<const Table::KnownKey> known);
    /// Columns without a new value keep theirs.
    void planUpdate(const NewValues& values, const Row& old);
    void planErase(const Row& old);

    // Require an operation, which must be aborted after a throw.

    /// Writes the long values and gives the bytes of the new record.
    std::vector<std::byte> buildNewRow();
    /// Frees the long values that the old record referred to.
    void freeOldValues();
    void changeIndexes(RowId id);
    /// Also notes the highest autonumber.
    void countRows(std::int64_t difference);

private:
    struct OldValue {
        const Column* column;
        std::vector<std::byte> field;
    };
    void fillAutonumbers(NewValues& values);
    std::int32_t nextAutonumber(const Column& column);
    void noteAutonumber(const NewValues& values);
    void keepOldValue(const Column& column, const Row& old);

    Table::State& state_;
    const TableDefinition& table_;
    LongFields longs_;
    std::vector<StoredField> fields_;
    std::vector<KeyChange> keys_;
    std::vector<OldValue> freed_;
    std::optional<std::int32_t> autonumber_; ///< to be noted as given out
};

} // namespace kelb::jet
