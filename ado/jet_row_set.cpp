#include "ado/jet_row_set.h"

#include "ado/error.h"
#include "ado/jet_errors.h"
#include "ado/jet_fields.h"

#include "platform/utf8.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace kelb::ado {

JetRowSet::JetRowSet(std::shared_ptr<SharedDatabase> database, jet::Table& table,
                     std::span<const SelectedColumn> columns)
    : database_(std::move(database)), tableName_(table.name()), tablePage_(table.definition().page) {
    const std::vector<FieldInfo> all = fieldsOf(table.definition());
    for (const SelectedColumn& selected : columns) {
        FieldInfo& field = fields_.emplace_back(all[selected.column]);
        field.name = selected.name;
        numbers_.push_back(table.definition().columns[selected.column].number);
    }
    columns_.resize(numbers_.size());
    database_->attach(*this);
}

JetRowSet::JetRowSet(std::shared_ptr<SharedDatabase> database, jet::Table& table,
                     std::span<const SelectedColumn> columns, std::vector<std::uint32_t> members)
    : JetRowSet(std::move(database), table, columns) {
    members_ = std::move(members);
    listed_ = true;
}

JetRowSet::~JetRowSet() {
    database_->detach(*this);
}

// What the database tells

void JetRowSet::fixMembers() {
    if (!listed_) {
        listMembers();
    }
}

void JetRowSet::transactionBegun() {
    mark_ = {added_.size(), reused_};
}

void JetRowSet::transactionRolledBack() {
    std::fill(added_.begin() + static_cast<std::ptrdiff_t>(std::min(mark_.added, added_.size())), added_.end(), 0U);
    reused_ = mark_.reused;
}

void JetRowSet::releasePages() noexcept {
    row_ = jet::Row();
    rowVersion_ = 0;
}

// Members

/// The rows that were there at opening: all of the table but those added through this set.
void JetRowSet::listMembers() const {
    const std::unordered_set<std::uint32_t> own(added_.begin(), added_.end());
    std::vector<std::uint32_t> found; // taken over when it is whole: a failed scan begins anew the next time
    jet::TableScan scan = table().scan();
    jet::Row row;
    while (scan.next(row)) {
        if (own.empty() || !own.contains(row.id().packed())) {
            found.push_back(row.id().packed());
        }
    }
    members_ = std::move(found);
    listed_ = true;
}

std::size_t JetRowSet::memberCount() const {
    if (!listed_) {
        during({"read table", tableName_, database_->path(), {}}, [this] { listMembers(); });
    }
    return members_.size() + added_.size();
}

jet::RowId JetRowSet::idOf(const Member& member) const {
    return jet::RowId::unpack((member.added ? added_ : members_)[member.index]);
}

bool JetRowSet::isGone(const Member& member) const {
    const auto reused = reused_.find(idOf(member).packed());
    return reused != reused_.end() && (!member.added || member.index < reused->second);
}

/// The table, and the places of the columns in it, as they are now.
jet::Table& JetRowSet::table() const {
    if (version_ != database_->definitionVersion()) {
        table_ = &database_->table(tableName_);
        const auto& columns = table_->definition().columns;
        for (std::size_t i = 0; i < numbers_.size(); ++i) {
            const auto found = std::find_if(columns.begin(), columns.end(),
                                            [&](const jet::Column& column) { return column.number == numbers_[i]; });
            if (found == columns.end()) {
                throw Error(Error::Kind::NoSuchColumn, "table " + platform::toUtf8(tableName_) + " has no column \"" +
                                                           platform::toUtf8(fields_[i].name) + "\" any more");
            }
            columns_[i] = static_cast<std::size_t>(found - columns.begin());
        }
        version_ = database_->definitionVersion();
    }
    return *table_;
}

// The current row

bool JetRowSet::load() {
    jet::Table& source = table();
    if (rowVersion_ == database_->changeCount()) {
        return true;
    }
    if (isGone(current_) || !source.read(idOf(current_), row_)) {
        rowVersion_ = 0;
        return false;
    }
    rowVersion_ = database_->changeCount();
    return true;
}

bool JetRowSet::seek(std::size_t member) {
    return during({"read table", tableName_, database_->path(), {}}, [&] {
        fixMembers();
        const bool added = member >= members_.size();
        current_ = {added, added ? member - members_.size() : member};
        hasCurrent_ = true;
        rowVersion_ = 0;
        return load();
    });
}

void JetRowSet::requireRow() {
    if (!hasCurrent_) {
        throw Error(Error::Kind::NoCurrentRow, "there is no current row");
    }
    if (!load()) {
        throw Error(Error::Kind::RowDeleted, "the current row was deleted");
    }
}

Value JetRowSet::value(std::size_t field) {
    return during({"read table", tableName_, database_->path(), {}}, [&] {
        requireRow();
        return row_.value(table().definition().columns[columnOf(field)]);
    });
}

bool JetRowSet::text(std::size_t field, std::u16string& out) {
    return during({"read table", tableName_, database_->path(), {}}, [&] {
        requireRow();
        return row_.text(table().definition().columns[columnOf(field)], out);
    });
}

// Changes

bool JetRowSet::updatable() const {
    return database_->writable();
}

void JetRowSet::requireUpdatable() const {
    during({"change table", tableName_, database_->path(), {}}, [this] { database_->requireWritable(table()); });
}

std::optional<std::uint32_t> JetRowSet::place() {
    return during({"read table", tableName_, database_->path(), {}}, [this] {
        requireRow();
        return std::optional(idOf(current_).packed());
    });
}

void JetRowSet::reservePlaces(std::span<const std::uint32_t> places) {
    during({"change table", tableName_, database_->path(), {}}, [&] {
        std::vector<jet::RowId> rows;
        rows.reserve(places.size());
        for (const std::uint32_t place : places) {
            rows.push_back(jet::RowId::unpack(place));
        }
        jet::Table& target = table();
        database_->requireWritable(target);
        target.reclaimPages(rows);
    });
}

void JetRowSet::insertWanting(std::optional<jet::RowId> place, std::span<const FieldChange> changes) {
    during({"save a new row in table", tableName_, database_->path(), {}}, [&] {
        jet::Table& target = table();
        std::vector<Value> values(target.definition().columns.size());
        for (const FieldChange& change : changes) {
            values[columnOf(change.field)] = change.value;
        }
        row_ = jet::Row();                        // its page would only be held in memory
        if (added_.size() == added_.capacity()) { // nothing may fail once the row is there
            added_.reserve(std::max<std::size_t>(16, 2 * added_.size()));
        }
        const jet::RowId id = database_->insert(target, values, this, place);
        added_.push_back(id.packed());
        current_ = {true, added_.size() - 1};
        hasCurrent_ = true;
        rowVersion_ = 0;
    });
}

void JetRowSet::update(std::span<const FieldChange> changes) {
    during({"save changes in table", tableName_, database_->path(), {}}, [&] {
        requireRow();
        std::vector<jet::Change> columns;
        columns.reserve(changes.size());
        for (const FieldChange& change : changes) {
            columns.push_back({columnOf(change.field), change.value});
        }
        database_->update(table(), idOf(current_), columns);
    });
}

void JetRowSet::erase() {
    during({"delete a row of table", tableName_, database_->path(), {}}, [&] {
        requireRow();
        database_->erase(table(), idOf(current_), this);
    });
}

} // namespace kelb::ado
