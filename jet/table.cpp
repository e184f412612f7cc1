#include "jet/table.h"

#include "jet/byte_order.h"
#include "jet/error.h"
#include "jet/table_keys.h"
#include "jet/table_state.h"
#include "jet/value_codec.h"
#include "jet/value_conversion.h"

#include "platform/utf8.h"

#include <algorithm>
#include <utility>

namespace kelb::jet {

namespace {

/// Everything but the counts that each row operation changes.
bool sameShape(const TableDefinition& a, const TableDefinition& b) {
    const auto shape = [](TableDefinition table) {
        table.rowCount = table.lastAutonumber = 0;
        for (PhysicalIndex& index : table.physicalIndexes) {
            index.distinctKeys = 0;
        }
        return buildTableDefinition(table);
    };
    const auto sameRequired = [](const Column& x, const Column& y) { return x.required == y.required; };
    return shape(a) == shape(b) &&
           std::equal(a.columns.begin(), a.columns.end(), b.columns.begin(), b.columns.end(), sameRequired);
}

[[noreturn]] void refuse(Error::Kind kind, const TableDefinition& table, const std::string& reason) {
    throw Error(kind, "table " + platform::toUtf8(table.name) + " cannot be written: " + reason);
}

void requireKnownColumns(const TableDefinition& table) {
    for (const Column& column : table.columns) {
        const std::string name = "field " + platform::toUtf8(column.name);
        if (!isWritableType(column.type) || column.isCalculated()) {
            refuse(Error::Kind::BadDefinition, table, name + " has a type that is only read here");
        }
        if (column.isLongValue() && (column.isFixed() || table.mapsOf(column) == nullptr)) {
            refuse(Error::Kind::BadDefinition, table, name + " does not say where its long values are kept");
        }
    }
}

void requireKnownIndexes(const TableDefinition& table) {
    for (const PhysicalIndex& index : table.physicalIndexes) {
        const bool known = !index.columns.empty() &&
                           std::all_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& part) {
                               return table.columnByNumber(part.column) != nullptr;
                           });
        if (!known) {
            refuse(Error::Kind::BadDefinition, table, "an index names a field that is not there");
        }
    }
}

constexpr std::size_t kJet3RowCountOffset = 12, kJet3AutonumberOffset = 16;

} // namespace

// State

Table::State::State(std::unique_ptr<Environment> lent)
    : environment(std::move(lent)), rows(environment->pager, environment->allocator, environment->page, {}, {}) {}

const TableDefinition& Table::State::current() {
    if (loaded_ && epoch_ == pager().epoch() && schema_ == environment->schemaVersion) {
        return definition_;
    }
    TableDefinition fresh = load();
    // Callers hold addresses of columns: an aborted operation elsewhere must not move them.
    if (!loaded_ || !sameShape(definition_, fresh)) {
        rows = RowStore(pager(), environment->allocator, fresh.page, fresh.ownedMap, fresh.freeMap);
        definition_ = std::move(fresh);
        checked_ = false;
    }
    loaded_ = true;
    epoch_ = pager().epoch();
    schema_ = environment->schemaVersion;
    return definition_;
}

void Table::State::requireWritableDefinition() {
    const TableDefinition& table = current();
    if (!checked_) {
        requireKnownColumns(table);
        requireKnownIndexes(table);
        requireConsistent(table);
        checked_ = true;
    }
}

TableDefinition Table::State::load() const {
    const Environment& lent = *environment;
    TableDefinition table = readTableDefinition(lent.pager, lent.page, lent.dialect, lent.codePage);
    table.name = lent.name;
    if (lent.applyProperties) {
        lent.applyProperties(table);
    }
    return table;
}

IndexTree Table::State::tree(std::size_t physicalIndex) {
    const PhysicalIndex& index = current().physicalIndexes[physicalIndex];
    return {pager(), environment->allocator, {index.root, index.ownedMap, environment->page}};
}

std::uint32_t Table::State::headField(std::size_t offset) const {
    return load32(pager().read(environment->page).data() + offset);
}

void Table::State::setHeadField(std::size_t offset, std::uint32_t value) {
    store32(pager().edit(environment->page).data() + offset, value);
}

// Reading

Table::Table(std::unique_ptr<Environment> environment) : state_(std::make_unique<State>(std::move(environment))) {}
Table::~Table() = default;

const TableDefinition& Table::definition() const {
    return state_->current();
}

std::uint32_t Table::rowCount() const {
    return state_->headField(state_->environment->dialect == Dialect::Jet3 ? kJet3RowCountOffset : kRowCountOffset);
}

std::int32_t Table::lastAutonumber() const {
    const bool jet3 = state_->environment->dialect == Dialect::Jet3;
    return static_cast<std::int32_t>(state_->headField(jet3 ? kJet3AutonumberOffset : kAutonumberOffset));
}

void Table::requireWritable() const {
    const TableDefinition& table = definition();
    if (table.dialect != Dialect::Jet4) {
        refuse(Error::Kind::UnsupportedVersion, table, "files of Access 97 and of Access 2007 and later are only read");
    }
    if (state_->pager().access() == Pager::Access::Read) {
        refuse(Error::Kind::ReadOnly, table,
               "the database " + platform::toUtf8(state_->pager().path()) + " is open for reading only");
    }
    state_->requireWritableDefinition();
}

void Table::point(Row& row, RowId id, PageRef page, std::span<const std::byte> bytes) const {
    const RowPlace place{state_->pager().path(), page.number(), static_cast<std::size_t>(bytes.data() - page.data())};
    row.view_ = RowView(bytes, definition(), place);
    row.pager_ = &state_->pager();
    row.definition_ = &definition();
    row.id_ = id;
    row.page_ = std::move(page);
}

TableScan Table::scan() const {
    TableScan scan;
    scan.table_ = this;
    return scan;
}

bool TableScan::next(Row& row) {
    Table::State& state = *table_->state_;
    state.current();
    for (;;) {
        for (; view_ && slot_ < view_->slotCount(); ++slot_) {
            const Slot slot = view_->slot(slot_);
            const RowId id{current_, static_cast<std::uint8_t>(slot_)};
            if (slot.kind == SlotKind::Row) {
                ++slot_;
                table_->point(row, id, page_, slot.bytes);
                return true;
            }
            if (slot.kind == SlotKind::Pointer) {
                ++slot_;
                RowStore::Record record = state.rows.follow(id, slot.bytes);
                table_->point(row, id, std::move(record.page), record.bytes);
                return true;
            }
        }
        const std::optional<PageNumber> page = state.rows.nextPage(current_);
        if (!page) {
            view_.reset();
            return false;
        }
        current_ = *page;
        page_ = state.rows.ownPage(current_);
        view_.emplace(state.pager(), page_);
        slot_ = 0;
    }
}

bool Table::read(RowId id, Row& row) const {
    state_->current();
    std::optional<RowStore::Record> record = state_->rows.find(id);
    if (!record) {
        return false;
    }
    point(row, id, std::move(record->page), record->bytes);
    return true;
}

// Looking up

std::optional<std::size_t> Table::indexOn(const Column& column) const {
    const TableDefinition& table = definition();
    // Index pages of Access 97 are laid out in another way. Numeric keys of ACE follow another rule; its General order
    // and other sort orders have keys unknown here.
    const bool textual = column.type == ColumnType::Text || column.type == ColumnType::Memo;
    if (table.dialect == Dialect::Jet3 || (textual && textKeysOf(column) == TextKeys::None) ||
        (column.type == ColumnType::Numeric && table.dialect != Dialect::Jet4)) {
        return std::nullopt;
    }
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < table.physicalIndexes.size(); ++i) {
        const PhysicalIndex& index = table.physicalIndexes[i];
        const bool serves = index.columns.size() == 1 && index.columns[0].column == column.number;
        if (serves && (!found || (index.unique() && !table.physicalIndexes[*found].unique()))) {
            found = i;
        }
    }
    return found;
}

std::vector<RowId> Table::lookUp(std::size_t physicalIndex, const Value& value) const {
    const TableDefinition& table = definition();
    const Column& keyed = *table.columnByNumber(table.physicalIndexes[physicalIndex].columns[0].column);
    const auto* text = std::get_if<std::u16string>(&value);
    if (text != nullptr && keyed.type == ColumnType::Text && 2 * text->size() > keyed.length) {
        return {}; // no row can hold it
    }
    const RowKey key = makeRowKey(
        table, physicalIndex, [&](const Column& column) -> Value { return convertValue(value, column, table.name); });
    std::vector<RowId> found;
    for (auto cursor = state_->tree(physicalIndex).lowerBound(key.bytes); cursor.seek(key.bytes); cursor.next()) {
        found.push_back(cursor.row());
    }
    return found;
}

} // namespace kelb::jet
