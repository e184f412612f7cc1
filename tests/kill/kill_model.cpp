#include "tests/kill/kill_model.h"

#include <algorithm>
#include <stdexcept>

namespace kelb::kill {

using namespace jet;

namespace {

constexpr std::size_t kColumns = 5; ///< num, url, content, version, date; then those that were added

std::u16string extraName(std::size_t number) {
    return u"extra" + platform::fromUtf8(std::to_string(number));
}

std::u16string number(std::int64_t value) {
    return platform::fromUtf8(std::to_string(value));
}

/// Added columns are memos and numbers by turns.
bool isMemo(std::size_t extra) {
    return extra % 2 == 0;
}

/// What the column holds in a row of that key and version.
Value valueOf(std::size_t column, std::int32_t key, int version) {
    const auto mixed = static_cast<std::uint32_t>(key * 7919 + version * 104729 + static_cast<int>(column) * 31);
    switch (column) {
    case 0:
        return key;
    case 1:
        return u"http://site/" + number(key) + u"-" + number(version % 3);
    case 2: // inside the row, on one page, on several
        return std::u16string(mixed % 5 == 0 ? 3000 + mixed % 6000 : mixed % 400,
                              static_cast<char16_t>(0x4E00 + mixed % 500));
    case 3:
        return std::int32_t{version};
    case 4:
        return OleDate{40000.0 + mixed % 3000};
    default:
        return isMemo(column - kColumns) ? Value(std::u16string(1 + mixed % 90, u'x'))
                                         : Value(static_cast<std::int32_t>(mixed % 1000));
    }
}

} // namespace

Step Model::draw(std::mt19937_64& random) const {
    const std::uint64_t what = random() % 1000;
    const auto anyKey = [&] {
        const auto found = rows.lower_bound(static_cast<std::int32_t>(random() % static_cast<std::uint64_t>(nextKey)));
        return found == rows.end() ? rows.begin()->first : found->first;
    };
    if (what < 6 && extras < kMostExtras)
        return {Step::Kind::AddColumn, 0};
    if (what < 12 && indexes < kMostIndexes)
        return {Step::Kind::BuildIndex, 0};
    if (what < 40)
        return {Step::Kind::Save, 0};
    if (rows.empty() || (what < 520 && rows.size() < kMostRows))
        return {Step::Kind::Insert, nextKey};
    if (what < 800)
        return {Step::Kind::Update, anyKey()};
    return {Step::Kind::Erase, anyKey()};
}

void Model::set(std::int32_t key, std::optional<RowState> state) {
    const auto mixed = [key](const RowState& row) {
        std::uint64_t sum =
            (static_cast<std::uint64_t>(key) << 32U) + static_cast<std::uint64_t>(row.version) * 64 + row.extras + 1;
        sum *= 0x9E3779B97F4A7C15;
        return (sum ^ (sum >> 29U)) * 0xBF58476D1CE4E5B9;
    };
    if (const auto old = rows.find(key); old != rows.end()) {
        digest -= mixed(old->second);
        rows.erase(old);
    }
    if (state) {
        digest += mixed(*state);
        rows.emplace(key, *state);
    }
}

void Model::apply(const Step& step) {
    switch (step.kind) {
    case Step::Kind::Insert:
        set(step.key, RowState{0, extras});
        nextKey = step.key + 1;
        break;
    case Step::Kind::Update:
        set(step.key, RowState{rows[step.key].version + 1, extras});
        break;
    case Step::Kind::Erase:
        set(step.key, std::nullopt);
        break;
    case Step::Kind::AddColumn:
        ++extras;
        break;
    case Step::Kind::BuildIndex:
        ++indexes;
        break;
    case Step::Kind::Save:
        break;
    }
}

void ModelTable::create() {
    database_.createTable({.name = u"Items",
                           .columns = {{.name = u"num", .type = ColumnType::Long},
                                       {.name = u"url"},
                                       {.name = u"content", .type = ColumnType::Memo},
                                       {.name = u"version", .type = ColumnType::Long},
                                       {.name = u"recTime", .type = ColumnType::DateTime}},
                           .indexes = {{.name = u"key", .columns = {{u"num"}}, .primary = true},
                                       {.name = u"urlidx", .columns = {{u"url"}}, .unique = true}}});
    database_.commit();
}

std::vector<Value> ModelTable::valuesOf(std::int32_t key, const RowState& state) {
    std::vector<Value> values;
    for (std::size_t i = 0; i < table().definition().columns.size(); ++i)
        values.push_back(i < kColumns + state.extras ? valueOf(i, key, state.version) : Value(Null{}));
    return values;
}

RowId ModelTable::rowOf(std::int32_t key) {
    return table().lookUp(*table().indexOn(table().definition().columns[0]), key).at(0);
}

void ModelTable::apply(const Step& step, const Model& model) {
    switch (step.kind) {
    case Step::Kind::Insert:
        table().insert(valuesOf(step.key, {0, model.extras}));
        break;
    case Step::Kind::Update: {
        std::vector<Change> changes;
        for (Value& value : valuesOf(step.key, {model.rows.at(step.key).version + 1, model.extras}))
            changes.push_back({changes.size(), std::move(value)});
        table().update(rowOf(step.key), changes);
        break;
    }
    case Step::Kind::Erase:
        table().erase(rowOf(step.key));
        break;
    case Step::Kind::AddColumn:
        database_.addColumn(u"Items", {.name = extraName(model.extras),
                                       .type = isMemo(model.extras) ? ColumnType::Memo : ColumnType::Long});
        break;
    case Step::Kind::BuildIndex:
        database_.createIndex(u"Items", {.name = u"built" + number(static_cast<std::int64_t>(model.indexes)),
                                         .columns = {{model.indexes % 2 == 0 ? u"recTime" : u"url"}, {u"version"}}});
        break;
    case Step::Kind::Save:
        database_.commit();
        break;
    }
}

Model ModelTable::read() {
    const TableDefinition& definition = table().definition();
    Model found;
    found.extras = definition.columns.size() - kColumns;
    found.indexes = definition.logicalIndexes.size() - 2;
    Row row;
    for (TableScan scan = table().scan(); scan.next(row);) {
        const auto key = std::get<std::int32_t>(row.value(definition.columns[0]));
        RowState state{std::get<std::int32_t>(row.value(definition.columns[3])), found.extras};
        while (state.extras > 0 && row.isNull(definition.columns[kColumns + state.extras - 1]))
            --state.extras;
        for (std::size_t i = 0; i < kColumns + state.extras; ++i)
            if (row.value(definition.columns[i]) != valueOf(i, key, state.version))
                throw std::runtime_error("row " + std::to_string(key) +
                                         " is mixed: " + platform::toUtf8(definition.columns[i].name) +
                                         " is not of version " + std::to_string(state.version));
        if (found.rows.contains(key))
            throw std::runtime_error("row " + std::to_string(key) + " is there twice");
        found.set(key, state);
    }
    return found;
}

} // namespace kelb::kill
