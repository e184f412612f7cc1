#include "jet/error.h"
#include "jet/new_values.h"
#include "jet/row_change.h"
#include "jet/table.h"
#include "jet/table_state.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace kelb::jet {

namespace {

RowStore::Record requireRecord(Table::State& state, RowId id) {
    std::optional<RowStore::Record> record = state.rows.find(id);
    if (!record) {
        throw Error(Error::Kind::RowDeleted, "the record was deleted: table " + platform::toUtf8(state.current().name));
    }
    return *std::move(record);
}

} // namespace

RowId Table::insert(std::span<const Value> values) {
    return insert(values, {}, std::nullopt);
}

RowId Table::insert(std::span<const Value> values, std::optional<RowId> wanted) {
    return insert(values, {}, wanted);
}

RowId Table::insert(std::span<const Value> values, std::span<const KnownKey> known) {
    return insert(values, known, std::nullopt);
}

RowId Table::insert(std::span<const Value> values, std::span<const KnownKey> known, std::optional<RowId> wanted) {
    requireWritable();
    const TableDefinition& table = state_->current();
    assert(values.size() == table.columns.size());
    NewValues row(table);
    for (std::size_t i = 0; i < values.size(); ++i) {
        row.set(i, values[i]);
    }
    RowChange change(*state_, table);
    change.planInsert(row, known);

    Pager::Operation operation(state_->pager());
    const auto record = change.buildNewRow();
    const RowId id = wanted ? state_->rows.insert(record, *wanted) : state_->rows.insert(record);
    change.changeIndexes(id);
    change.countRows(+1);
    operation.done();
    return id;
}

void Table::reclaimPages(std::span<const RowId> rows) {
    requireWritable();
    std::vector<PageNumber> pages;
    for (const RowId& row : rows) {
        pages.push_back(row.page);
    }
    std::sort(pages.begin(), pages.end());
    pages.erase(std::unique(pages.begin(), pages.end()), pages.end());
    Pager::Operation operation(state_->pager());
    for (const PageNumber page : pages) {
        state_->rows.reclaimPage(page);
    }
    operation.done();
}

void Table::update(RowId id, std::span<const Change> changes) {
    requireWritable();
    const TableDefinition& table = state_->current();
    const RowStore::Record record = requireRecord(*state_, id);
    Row old;
    point(old, id, record.page, record.bytes);
    NewValues row(table);
    for (const Change& each : changes) {
        assert(each.column < table.columns.size());
        row.set(each.column, each.value);
    }
    RowChange change(*state_, table);
    change.planUpdate(row, old);

    Pager::Operation operation(state_->pager());
    state_->rows.replace(record, change.buildNewRow());
    change.freeOldValues();
    change.changeIndexes(id);
    change.countRows(0);
    operation.done();
}

void Table::erase(RowId id) {
    requireWritable();
    const TableDefinition& table = state_->current();
    const RowStore::Record record = requireRecord(*state_, id);
    Row old;
    point(old, id, record.page, record.bytes);
    RowChange change(*state_, table);
    change.planErase(old);

    Pager::Operation operation(state_->pager());
    change.changeIndexes(id);
    change.freeOldValues();
    state_->rows.erase(record);
    change.countRows(-1);
    operation.done();
}

} // namespace kelb::jet
