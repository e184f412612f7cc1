#include "jobs/row_return.h"

#include "ado/connection_string.h"
#include "ado/error.h"
#include "jobs/row_reading.h"
#include "jobs/row_text.h"
#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jobs {
namespace {

std::size_t hashOf(std::string_view line) {
    return std::hash<std::string_view>()(line);
}

std::optional<std::int32_t> numberOf(const ado::Value& value) {
    const auto* number = std::get_if<std::int32_t>(&value);
    return number == nullptr ? std::nullopt : std::optional(*number);
}

/// The value that a column gets back: the exact one where the line shows less.
ado::Value valueToReturn(const TrashedRow& row, const RowMember& member, const ado::FieldInfo& field) {
    const auto exact =
        std::find_if(row.exact.begin(), row.exact.end(), [&](const auto& each) { return each.first == member.name; });
    if (exact == row.exact.end()) {
        return valueOf(member, field);
    }
    switch (field.type) {
    case ado::FieldType::DateTime:
        return ado::OleDate{exact->second};
    case ado::FieldType::Single:
        return static_cast<float>(exact->second);
    default:
        return exact->second;
    }
}

} // namespace

void RowReturn::expect(const TrashedRow& row) {
    Table& table = tableOf(row);
    ++table.announced;
    if (table.fault) {
        return;
    }
    if (row.place) {
        table.places.push_back(*row.place);
    }
    if (!table.autonumber) {
        if (alike_ == Alike::IsThisOne) {
            table.alike.emplace(hashOf(row.json), 0);
        }
        return;
    }
    const ado::FieldInfo& field = table.rows->field(*table.autonumber);
    try {
        const auto members = readRowLine(row.json);
        const RowMember* member = findMember(members, field.name);
        if (const auto number = member == nullptr ? std::nullopt : numberOf(valueOf(*member, field))) {
            table.numbers.emplace(*number, std::nullopt);
        }
    } catch (const RowLineError&) {
        return; // put() tells it
    }
}

RowReturn::Table& RowReturn::tableOf(const TrashedRow& row) {
    const auto [entry, isNew] = tables_.try_emplace({row.database, row.table});
    Table& table = entry->second;
    if (isNew) {
        table.database = row.database;
        table.name = row.table;
        try {
            open(table);
        } catch (const ado::Error& error) {
            table.fault = error.what();
        }
    }
    return table;
}

void RowReturn::open(Table& table) {
    ado::Connection& connection = connections_.try_emplace(table.database, context_.databases()).first->second;
    if (connection.State() == ado::ObjectState::Closed) {
        connection.mode = ado::Connection::Mode::Write;
        connection.Open(ado::jetConnectionString(table.database));
    }
    auto rows = std::make_unique<ado::Recordset>();
    rows->Open(u"select * from " + table.name, connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
    for (std::size_t i = 0; i < rows->fieldCount(); ++i) {
        if (rows->field(i).autonumber && rows->field(i).type == ado::FieldType::Long) {
            table.autonumber = i;
        }
    }
    table.rows = std::move(rows);
}

void RowReturn::look() {
    for (auto& entry : tables_) {
        Table& table = entry.second;
        if (!table.fault) {
            lookThrough(table);
            table.rows->Reserve(table.places);
            table.places = {};
        }
    }
}

void RowReturn::lookThrough(Table& table) const {
    if (!table.autonumber && alike_ == Alike::IsAnother) {
        return;
    }
    std::string line;
    for (ado::Recordset& rows = *table.rows; !rows.Eof(); rows.MoveNext()) {
        auto number = table.numbers.end();
        if (table.autonumber) {
            const auto value = numberOf(rows.value(*table.autonumber));
            number = value ? table.numbers.find(*value) : number;
            if (number == table.numbers.end()) {
                continue;
            }
        }
        line.clear();
        appendJsonRow(rows, line);
        if (table.autonumber) {
            number->second = hashOf(line);
        } else if (const auto alike = table.alike.find(hashOf(line)); alike != table.alike.end()) {
            ++alike->second;
        }
    }
}

RowReturn::Outcome RowReturn::put(const TrashedRow& row) {
    Table& table = tableOf(row);
    if (table.fault) {
        return Outcome::NoTable;
    }
    ado::Recordset& rows = *table.rows;
    std::optional<Hash>* owner = nullptr; // of the row's autonumber
    std::vector<std::pair<std::size_t, ado::Value>> values;
    for (const RowMember& member : readRowLine(row.json)) {
        const std::size_t field = rows.fieldIndex(member.name);
        values.emplace_back(field, valueToReturn(row, member, rows.field(field)));
        if (table.autonumber == field) {
            const auto number = numberOf(values.back().second);
            owner = number ? &table.numbers[*number] : nullptr;
        }
    }
    const Hash hash = hashOf(row.json);
    if (owner != nullptr && *owner) {
        return *owner == hash ? Outcome::AlreadyThere : Outcome::NumberTaken;
    }
    if (const auto alike = table.alike.find(hash); alike != table.alike.end() && alike->second > 0) {
        --alike->second;
        return Outcome::AlreadyThere;
    }
    if (row.place) {
        rows.AddNewAt(*row.place);
    } else {
        rows.AddNew();
    }
    try {
        for (auto& [field, value] : values) {
            if (!(ado::isNull(value) && rows.field(field).type == ado::FieldType::YesNo)) {
                rows.set(field, std::move(value));
            }
        }
        rows.Update();
    } catch (const ado::Error&) {
        rows.CancelUpdate();
        throw;
    }
    if (owner != nullptr) {
        *owner = hash;
    }
    return Outcome::PutBack;
}

void RowReturn::flushIfDue() {
    for (auto& entry : connections_) {
        if (entry.second.State() == ado::ObjectState::Open) {
            entry.second.flushIfDue();
        }
    }
}

void RowReturn::close() {
    for (auto& entry : tables_) {
        entry.second.rows.reset();
    }
    for (auto& entry : connections_) {
        entry.second.Close();
    }
}

std::vector<std::string> RowReturn::faults() const {
    std::vector<std::string> lines;
    for (const auto& entry : tables_) {
        const Table& table = entry.second;
        if (table.fault) {
            lines.push_back("table " + platform::toUtf8(table.name) + ": " + std::to_string(table.announced) +
                            (table.announced == 1 ? " row stays" : " rows stay") + " in the trash: " + *table.fault);
        }
    }
    return lines;
}

} // namespace kelb::jobs
