#pragma once

#include "jet/index_tree.h"
#include "jet/row_store.h"
#include "jet/table_environment.h"

namespace kelb::jet {

/// What a table remembers between calls: its definition as of the last look, and where its rows go.
struct Table::State {
    explicit State(std::unique_ptr<Environment> lent);

    /// Read again when a definition changed or pages went back to an earlier state.
    const TableDefinition& current();
    /// Throws Error (BadDefinition) when rows of this definition cannot be written without damage.
    void requireWritableDefinition();
    Pager& pager() const noexcept { return environment->pager; }
    IndexTree tree(std::size_t physicalIndex);
    /// A field of the definition's first page that row operations keep up to date.
    std::uint32_t headField(std::size_t offset) const;
    void setHeadField(std::size_t offset, std::uint32_t value);

    std::unique_ptr<Environment> environment;
    RowStore rows;

private:
    TableDefinition load() const;

    TableDefinition definition_;
    bool loaded_ = false, checked_ = false; ///< checked: fit for writing
    std::uint64_t epoch_ = 0, schema_ = 0;
};

} // namespace kelb::jet
