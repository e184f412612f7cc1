#pragma once

#include "tests/jet/verify_fixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kelb::jet::testing {

/// A byte of the database.
struct Spot {
    PageNumber page;
    std::size_t offset;
};
using Where = std::function<Spot(Patient&)>;

/// One thing of a sound database changed, and the fault that verify() must report on the page that comes back.
struct Damage {
    const char* name;
    std::function<PageNumber(Patient&)> make;
    const char* severity;
    const char* text; ///< part of the fault's text
};
inline void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.name;
}
inline constexpr auto kDamageName = [](const auto& test) { return std::string(test.param.name); };

inline const std::string& soundDatabase() {
    static const std::string bytes = Patient().bytes;
    return bytes;
}

inline void expectReported(const Damage& damage) {
    Patient patient(soundDatabase());
    const PageNumber page = damage.make(patient);
    const std::string faults = patient.faults();
    const std::string start = std::string(damage.severity) + " " + std::to_string(raw(page));
    bool found = false;
    for (std::size_t at = 0; at < faults.size(); at = faults.find('\n', at) + 1) {
        const std::string line = faults.substr(at, faults.find('\n', at) - at);
        const bool here = line.starts_with(start + " ") || line.starts_with(start + "/");
        found = found || (here && line.find(damage.text) != std::string::npos);
    }
    EXPECT_TRUE(found) << start << " …" << damage.text << "… expected in:\n" << faults;
}

/// Overwrites bytes at a distance from the spot.
inline std::function<PageNumber(Patient&)> put(Where where, std::ptrdiff_t distance, std::vector<unsigned> values) {
    return [=](Patient& p) {
        const Spot spot = where(p);
        std::byte* at = p.at(spot.page, spot.offset) + distance;
        for (const unsigned value : values)
            *at++ = static_cast<std::byte>(value);
        return spot.page;
    };
}
/// Turns bits of one byte over.
inline std::function<PageNumber(Patient&)> turn(Where where, std::ptrdiff_t distance, unsigned bits) {
    return [=](Patient& p) {
        const Spot spot = where(p);
        p.at(spot.page, spot.offset)[distance] ^= static_cast<std::byte>(bits);
        return spot.page;
    };
}

/// A change whose fault shows up on another page.
inline std::function<PageNumber(Patient&)> seenOn(Where where, std::function<PageNumber(Patient&)> change) {
    return [=](Patient& p) {
        const PageNumber page = where(p).page;
        change(p);
        return page;
    };
}

// Places

inline constexpr PageNumber kGlobal{1};
/// The data page of the catalog: somebody else's, seen from the table.
inline constexpr PageNumber kForeign{14};

inline Where page(std::uint32_t number) {
    return [=](Patient&) { return Spot{PageNumber{number}, 0}; };
}
inline std::vector<PageNumber> dataPages(Patient& p) {
    return p.pages(p.definition().ownedMap);
}
inline ColumnMaps memoMaps(Patient& p) {
    return p.definition().longValueMaps.at(0);
}
inline Spot firstData(Patient& p) {
    return {dataPages(p).front(), 0};
}
inline Spot definitionPage(Patient& p) {
    return {p.definition().page, 0};
}
inline Spot mapRow(Patient& p) {
    const RowId map = p.definition().ownedMap;
    return {map.page, p.slotStart(map)};
}
inline RowId plainRow(Patient& p) {
    return p.slot(dataPages(p), SlotKind::Row);
}
inline RowId pointerRow(Patient& p) {
    return p.slot(dataPages(p), SlotKind::Pointer);
}
inline Spot record(Patient& p) {
    return {plainRow(p).page, p.slotStart(plainRow(p))};
}
inline Spot recordEnd(Patient& p) {
    return {plainRow(p).page, p.slotEnd(plainRow(p))};
}
inline Spot pointer(Patient& p) {
    return {pointerRow(p).page, p.slotStart(pointerRow(p))};
}
inline std::size_t blocksOffset(const TableDefinition& table) {
    return 63 + 12 * table.physicalIndexes.size();
}
/// A column's block in the definition.
inline Where columnBlock(std::u16string_view name) {
    return [=](Patient& p) {
        const TableDefinition table = p.definition();
        const auto index = static_cast<std::size_t>(table.findColumn(name) - table.columns.data());
        return Spot{table.page, blocksOffset(table) + 25 * index};
    };
}
/// The blocks of the indexes: three physical ones, then the logical ones.
inline Spot indexBlocks(Patient& p) {
    const TableDefinition table = p.definition();
    std::size_t at = blocksOffset(table) + 25 * table.columns.size();
    for (const Column& column : table.columns)
        at += 2 + 2 * column.name.size();
    return {table.page, at};
}
inline Where rootOf(std::u16string_view index) {
    return [=](Patient& p) {
        const TableDefinition table = p.definition();
        return Spot{p.index(table, index).root, 0};
    };
}
/// The nth leaf, in tree order, below a root of two levels.
inline Where leafOf(std::u16string_view index, std::size_t n) {
    return [=](Patient& p) {
        const auto database = p.open();
        const TableDefinition& table = database->table(u"Items").definition();
        const auto view = [&](PageNumber number) {
            return IndexPageView(database->pager(), database->pager().read(number), table.page);
        };
        PageNumber leaf = view(p.index(table, index).root).child(0);
        for (std::size_t i = 0; i < n; ++i)
            leaf = view(leaf).next();
        return Spot{leaf, 0};
    };
}
/// The field of the first record with a long value of that form.
inline Where memoField(LongValueHeader::Form form) {
    return [=](Patient& p) {
        const auto database = p.open();
        Table& table = database->table(u"Items");
        const Column& memo = *table.definition().findColumn(u"content");
        Row row;
        for (TableScan scan = table.scan(); scan.next(row);) {
            const PageRef page = database->pager().read(row.id().page);
            const auto field = row.field(memo);
            const bool here = row.bytes().data() >= page.data() && row.bytes().data() < page.data() + kPageSize;
            if (field && here && LongValueHeader::parse(*field).form == form)
                return Spot{row.id().page, static_cast<std::size_t>(field->data() - page.data())};
        }
        throw std::out_of_range("no such long value");
    };
}
/// The first row of such a value's own.
inline RowId longRow(Patient& p, LongValueHeader::Form form) {
    const Spot field = memoField(form)(p);
    return RowId::unpack(load32(p.at(field.page, field.offset + 4)));
}

// Changes

/// A member of an inline map, set or cleared.
inline void setMember(Patient& p, RowId map, PageNumber page, bool member) {
    std::byte* const row = p.record(map);
    const std::uint32_t bit = raw(page) - load32(row + 1);
    const auto mask = static_cast<std::byte>(1U << bit % 8);
    row[5 + bit / 8] = member ? row[5 + bit / 8] | mask : row[5 + bit / 8] & ~mask;
}
/// A page at the end of the file that nobody has, in use by the global map.
inline PageNumber addPage(Patient& p) {
    const PageNumber page{static_cast<std::uint32_t>(p.bytes.size() / kPageSize)};
    p.bytes.resize(p.bytes.size() + kPageSize);
    setMember(p, {kGlobal, 0}, page, false);
    return page;
}
/// Makes an inline map one by reference, with the same members.
inline PageNumber makeReference(Patient& p, RowId map) {
    const PageNumber bitmap = addPage(p);
    std::byte* const page = p.at(bitmap, 0);
    page[0] = std::byte{5};
    page[1] = std::byte{1};
    std::byte* const row = p.record(map);
    std::copy(row + 5, p.recordEnd(map), page + 4 + load32(row + 1) / 8);
    std::fill(row, p.recordEnd(map), std::byte{0});
    row[0] = std::byte{1};
    store32(row + 1, raw(bitmap));
    store32(row + 1 + 4 * 16, 0x12345678); // junk in a word for pages that the file does not have
    return bitmap;
}
/// Gives a slot other flags.
inline void setFlags(Patient& p, RowId row, unsigned flags) {
    p.slotEntry(row)[1] |= static_cast<std::byte>(flags);
}
/// Changes an index of the table behind the table's back.
inline void changeIndex(Patient& p, std::u16string_view name, const std::function<void(IndexTree&, Table&)>& act) {
    p.change([&](Database& database) {
        Table& items = database.table(u"Items");
        Pager::Operation operation(database.pager());
        const PhysicalIndex& index = p.index(items.definition(), name);
        IndexTree tree(database.pager(), database.allocator(), {index.root, index.ownedMap, items.definition().page});
        act(tree, items);
        operation.done();
    });
}

} // namespace kelb::jet::testing
