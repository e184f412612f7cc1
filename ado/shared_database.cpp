#include "ado/shared_database.h"

#include "ado/error.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace kelb::ado {

namespace {

/// Room made at once for the rows that a definition page claims to have: a damaged one may claim anything.
constexpr std::size_t kMaxRowsBelieved = std::size_t{1} << 20;

/// The text that a row has got in a column: straight from the new value when that is a text, else as the engine
/// converted it. False for Null.
bool storedText(jet::Table& table, jet::RowId id, std::size_t column, const jet::Value& value, std::u16string& out) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        out = *text;
        return true;
    }
    jet::Row row;
    return !jet::isNull(value) && table.read(id, row) && row.text(table.definition().columns[column], out);
}

} // namespace

SharedDatabase::SharedDatabase(platform::Platform& platform, std::u16string path, std::string identity,
                               jet::Database::OpenOptions options)
    : platform_(platform), path_(std::move(path)), identity_(std::move(identity)), options_(options),
      database_(jet::Database::open(platform_, path_, options_)) {}

SharedDatabase::~SharedDatabase() {
    for ([[maybe_unused]] const auto& entry : tables_) {
        assert(entry.second.live.empty()); // keysets hold the shared object
    }
}

const std::shared_ptr<jet::Database>& SharedDatabase::database() const {
    if (database_ == nullptr) {
        throw Error(Error::Kind::Connection, platform::toUtf8(path_) + " could not be opened again; reconnect");
    }
    return database_;
}

void SharedDatabase::requireWritable() const {
    if (!writable()) {
        throw Error(Error::Kind::ReadOnly, "the database is open for reading only" +
                                               (readOnlyReason_.empty() ? std::string() : ": " + readOnlyReason_));
    }
}

void SharedDatabase::requireWritable(const jet::Table& table) const {
    constexpr std::uint8_t kSystemTable = 0x53;
    requireWritable();
    if (table.definition().tableType == kSystemTable) {
        throw Error(Error::Kind::ReadOnly, "table " + platform::toUtf8(table.name()) +
                                               " belongs to Access; a change would break the database");
    }
    table.requireWritable();
}

template <class Tell>
void SharedDatabase::tellAll(Tell&& tell) const {
    for (const auto& entry : tables_) {
        for (LiveRows* rows : entry.second.live) {
            tell(*rows);
        }
    }
}

void SharedDatabase::reopen(jet::Pager::Access access) {
    assert(!isHeld());
    tellAll([](LiveRows& rows) { rows.releasePages(); });
    ++changeCount_;
    ++definitionVersion_;
    const jet::Pager::Access before = std::exchange(options_.access, access);
    database_.reset(); // its lock would be in the way
    try {
        database_ = jet::Database::open(platform_, path_, options_);
    } catch (const std::exception&) {
        options_.access = before;
        database_ = jet::Database::open(platform_, path_, options_);
        throw;
    }
    readOnlyReason_.clear();
}

SharedDatabase::TableState* SharedDatabase::stateOf(const jet::Table& table) {
    const auto found = tables_.find(table.definition().page);
    return found == tables_.end() ? nullptr : &found->second;
}

void SharedDatabase::fixOthers(const TableState& state, const LiveRows* by) {
    for (LiveRows* rows : state.live) {
        if (rows != by) {
            rows->fixMembers();
        }
    }
}

jet::RowId SharedDatabase::insert(jet::Table& table, std::span<const jet::Value> values, const LiveRows* by,
                                  std::optional<jet::RowId> wanted) {
    requireWritable(table);
    TableState* state = stateOf(table);
    if (state != nullptr) {
        fixOthers(*state, by);
    }
    ++changeCount_;
    const jet::RowId id = table.insert(values, wanted);
    if (state == nullptr) {
        return id;
    }
    if (state->erased.erase(id.packed()) != 0) {
        for (LiveRows* rows : state->live) {
            rows->rowIdReused(id);
        }
    }
    const auto& columns = table.definition().columns;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto index = state->indexes.find(columns[i].number);
        if (index != state->indexes.end() && storedText(table, id, i, values[i], text_)) {
            index->second.add(text_, id);
        }
    }
    return id;
}

void SharedDatabase::update(jet::Table& table, jet::RowId id, std::span<const jet::Change> changes) {
    requireWritable(table);
    ++changeCount_;
    table.update(id, changes);
    TableState* state = stateOf(table);
    if (state == nullptr || state->indexes.empty()) {
        return;
    }
    for (const jet::Change& change : changes) {
        const auto index = state->indexes.find(table.definition().columns[change.column].number);
        if (index == state->indexes.end()) {
            continue;
        }
        index->second.noteVoid();
        if (storedText(table, id, change.column, change.value, text_)) {
            index->second.add(text_, id);
        }
    }
}

void SharedDatabase::erase(jet::Table& table, jet::RowId id, const LiveRows* by) {
    requireWritable(table);
    TableState* state = stateOf(table);
    if (state != nullptr) {
        fixOthers(*state, by);
    }
    ++changeCount_;
    table.erase(id);
    if (state == nullptr) {
        return;
    }
    if (!state->live.empty()) {
        state->erased.insert(id.packed());
    }
    for (auto& index : state->indexes) {
        index.second.noteVoid();
    }
}

void SharedDatabase::beginTransaction() {
    database()->beginTransaction();
    if (transactions_++ == 0) {
        tellAll([](LiveRows& rows) { rows.transactionBegun(); });
    }
}

void SharedDatabase::commitTransaction() {
    assert(transactions_ > 0);
    --transactions_;
    database()->commitTransaction();
}

void SharedDatabase::rollbackTransaction() {
    assert(transactions_ > 0);
    --transactions_;
    ++definitionVersion_;
    database()->rollbackTransaction();
    forgetTakenBack();
}

void SharedDatabase::forgetTakenBack() {
    ++changeCount_;
    for (auto& entry : tables_) {
        entry.second.indexes.clear(); // one built since the beginning lacks the rows that are back now
    }
    tellAll([](LiveRows& rows) { rows.transactionRolledBack(); });
}

void SharedDatabase::changeTogether(const std::function<void()>& changes) {
    assert(transactions_ == 0);
    tellAll([](LiveRows& rows) { rows.transactionBegun(); });
    try {
        atomically(changes);
    } catch (const std::exception&) {
        forgetTakenBack();
        throw;
    }
}

const HashIndex& SharedDatabase::hashIndex(jet::Table& table, const jet::Column& column) {
    auto& indexes = tables_[table.definition().page].indexes;
    const auto known = indexes.find(column.number);
    if (known != indexes.end() && !known->second.isWorn()) {
        return known->second;
    }
    HashIndex index(std::min<std::size_t>(table.rowCount(), kMaxRowsBelieved));
    jet::TableScan scan = table.scan();
    jet::Row row;
    while (scan.next(row)) {
        if (row.text(column, text_)) {
            index.add(text_, row.id());
        }
    }
    return indexes.insert_or_assign(column.number, std::move(index)).first->second;
}

bool SharedDatabase::hasHashIndex(const jet::Table& table, const jet::Column& column) const {
    const auto found = tables_.find(table.definition().page);
    return found != tables_.end() && found->second.indexes.contains(column.number);
}

void SharedDatabase::attach(LiveRows& rows) {
    tables_[rows.tablePage()].live.push_back(&rows);
}

void SharedDatabase::detach(LiveRows& rows) noexcept {
    TableState& state = tables_.find(rows.tablePage())->second;
    std::erase(state.live, &rows);
    if (state.live.empty()) {
        state.erased.clear();
    }
}

} // namespace kelb::ado
