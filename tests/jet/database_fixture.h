#pragma once

#include "jet/database.h"
#include "jet/value_conversion.h"
#include "jet/verify.h"

#include "platform/memory_file_system.h"
#include "platform/random.h"
#include "platform/utf8.h"

#include "tests/jet/pager_fixture.h"

#include <string>

namespace kelb::jet::testing {

class SteadyRandom final : public platform::Random {
public:
    void reseed() override {}
    double next() override { return 0.5; }
    std::uint64_t bits() override { return 0x0123456789ABCDEF + ++drawn_; }

private:
    std::uint64_t drawn_ = 0;
};

/// A machine of its own for a database: files in memory, a clock that stands.
class Machine {
public:
    platform::MemoryFileSystem files;
    ManualClock clock;
    SteadyRandom random;
    platform::Platform platform{files, clock, random, u""};

    std::unique_ptr<Database> create() { return Database::create(platform, kPath); }
    std::unique_ptr<Database> open(Pager::Access access = Pager::Access::Write, bool ignoreLockFile = false) {
        return Database::open(platform, kPath, {access, ignoreLockFile});
    }
};

/// Values in the order of the columns' blocks; missing ones are Null.
inline RowId insertRow(Table& table, std::vector<Value> values) {
    values.resize(table.definition().columns.size(), Null{});
    return table.insert(values);
}

inline Value valueOf(Table& table, RowId id, std::u16string_view column) {
    Row row;
    if (!table.read(id, row))
        return u"(no such row)";
    return row.value(*table.definition().findColumn(column));
}

/// The whole content as text: tables, columns, rows in page order.
inline std::string contentOf(Database& database) {
    std::string text;
    for (const CatalogEntry& entry : database.catalog()) {
        if (!entry.isUserTable())
            continue;
        Table& table = database.table(entry.name);
        text += platform::toUtf8(entry.name) + ":";
        const TableDefinition& definition = table.definition();
        for (const Column& column : definition.columns)
            text += " " + platform::toUtf8(column.name);
        for (const LogicalIndex& index : definition.logicalIndexes)
            text += " /" + platform::toUtf8(index.name);
        text += "\n";
        Row row;
        for (TableScan scan = table.scan(); scan.next(row);) {
            for (const Column& column : definition.columns)
                text += platform::toUtf8(showValue(row.value(column))) + "|";
            text += "\n";
        }
    }
    return text;
}

/// What verify() says, a line each: "E 17/3 text", "W 17 text".
inline std::string faultsOf(Database& database) {
    std::string lines;
    for (const Fault& fault : verify(database)) {
        lines += fault.severity == Fault::Severity::Error ? "E " : "W ";
        lines += std::to_string(raw(fault.page));
        lines += fault.slot < 0 ? " " : "/" + std::to_string(fault.slot) + " ";
        lines += fault.text + "\n";
    }
    return lines;
}

/// "kind: message" of the error that `act` throws; empty when it throws none.
template <class Act>
std::string refusal(Act&& act, Error::Kind kind) {
    try {
        act();
    } catch (const Error& error) {
        return (error.kind() == kind ? "" : "another kind: ") + std::string(error.what());
    }
    return "";
}

} // namespace kelb::jet::testing
