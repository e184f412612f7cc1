#pragma once

#include "ado/provider.h"

namespace kelb::ado {

/// Rows that nobody changes: every attempt ends in requireUpdatable(), which says why.
class ReadOnlyRowSet : public RowSet {
public:
    void insert(std::span<const FieldChange> /*changes*/) final { requireUpdatable(); }
    void update(std::span<const FieldChange> /*changes*/) final { requireUpdatable(); }
    void erase() final { requireUpdatable(); }
    bool updatable() const final { return false; }
};

} // namespace kelb::ado
