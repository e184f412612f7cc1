#include "tests/jet/verify_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelb::jet::testing {
namespace {

using ::testing::HasSubstr;

// Each damage changes one thing of a sound database and says where the fault must be reported.

struct Damage {
    const char* name;
    PageNumber (*make)(Patient&);
    const char* severity;
    const char* text; ///< part of the fault's text
};
void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.name;
}

const std::string& soundDatabase() {
    static const std::string bytes = Patient().bytes;
    return bytes;
}

class DamagedDatabase : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedDatabase, IsReported) {
    Patient patient(soundDatabase());
    const PageNumber page = GetParam().make(patient);
    const std::string faults = patient.faults();
    const std::string start = std::string(GetParam().severity) + " " + std::to_string(raw(page));
    bool found = false;
    for (std::size_t at = 0; at < faults.size(); at = faults.find('\n', at) + 1) {
        const std::string line = faults.substr(at, faults.find('\n', at) - at);
        const bool here = line.starts_with(start + " ") || line.starts_with(start + "/");
        found = found || (here && line.find(GetParam().text) != std::string::npos);
    }
    EXPECT_TRUE(found) << start << " …" << GetParam().text << "… expected in:\n" << faults;
}

constexpr auto caseName = [](const auto& test) { return std::string(test.param.name); };

constexpr PageNumber kHeader{0}, kGlobal{1}, kQueries{4};

std::vector<PageNumber> dataPages(Patient& p) {
    return p.pages(p.definition().ownedMap);
}
ColumnMaps memoMaps(Patient& p) {
    return p.definition().longValueMaps.at(0);
}
/// A member of an inline map, set or cleared.
void setMember(Patient& p, RowId map, PageNumber page, bool member) {
    std::byte* const row = p.record(map);
    const std::uint32_t bit = raw(page) - load32(row + 1);
    const auto mask = static_cast<std::byte>(1U << bit % 8);
    row[5 + bit / 8] = member ? row[5 + bit / 8] | mask : row[5 + bit / 8] & ~mask;
}
/// A page at the end of the file that nobody has, in use by the global map.
PageNumber addPage(Patient& p) {
    const PageNumber page{static_cast<std::uint32_t>(p.bytes.size() / kPageSize)};
    p.bytes.resize(p.bytes.size() + kPageSize);
    setMember(p, {kGlobal, 0}, page, false);
    return page;
}
PageNumber rootOf(Patient& p, std::u16string_view index) {
    const TableDefinition table = p.definition();
    return p.index(table, index).root;
}
/// Leaves in tree order below a root of two levels.
std::vector<PageNumber> leavesOf(Patient& p, std::u16string_view index) {
    const auto database = p.open();
    const TableDefinition& table = database->table(u"Items").definition();
    std::vector<PageNumber> leaves;
    PageNumber page = p.index(table, index).root;
    page = IndexPageView(database->pager(), database->pager().read(page), table.page).child(0);
    for (; page != kNoPage; page = IndexPageView(database->pager(), database->pager().read(page), table.page).next())
        leaves.push_back(page);
    return leaves;
}
/// Where a column's block begins in the definition page.
std::size_t block(Patient& p, std::u16string_view column) {
    const TableDefinition table = p.definition();
    const auto index = static_cast<std::size_t>(table.findColumn(column) - table.columns.data());
    return 63 + 12 * table.physicalIndexes.size() + 25 * index;
}
std::size_t indexBlocks(Patient& p) {
    const TableDefinition table = p.definition();
    std::size_t at = 63 + 12 * table.physicalIndexes.size() + 25 * table.columns.size();
    for (const Column& column : table.columns)
        at += 2 + 2 * column.name.size();
    return at;
}
PageNumber tablePage(Patient& p) {
    return p.definition().page;
}
/// The first record with a long value of that form, and the field's place in its page.
std::pair<RowId, std::size_t> memoField(Patient& p, LongValueHeader::Form form) {
    const auto database = p.open();
    Table& table = database->table(u"Items");
    const Column& memo = *table.definition().findColumn(u"content");
    Row row;
    for (TableScan scan = table.scan(); scan.next(row);) {
        const PageRef page = database->pager().read(row.id().page);
        const auto field = row.field(memo);
        const bool here = row.bytes().data() >= page.data() && row.bytes().data() < page.data() + kPageSize;
        if (field && here && LongValueHeader::parse(*field).form == form)
            return {row.id(), static_cast<std::size_t>(field->data() - page.data())};
    }
    throw std::out_of_range("no such long value");
}
/// The row of the catalog that names the table.
RowId catalogRow(Patient& p) {
    const auto database = p.open();
    Table& catalog = database->table(u"MSysObjects");
    Row row;
    for (TableScan scan = catalog.scan(); scan.next(row);)
        if (row.value(*catalog.definition().findColumn(u"Name")) == Value(u"Items"))
            return row.id();
    throw std::out_of_range("no such table");
}
RowId plainRow(Patient& p) {
    return p.slot(dataPages(p), SlotKind::Row);
}

INSTANTIATE_TEST_SUITE_P(
    Maps, DamagedDatabase,
    ::testing::ValuesIn<Damage>({
        {"global_map_elsewhere",
         [](Patient& p) {
             *p.at(kHeader, 0x18) ^= std::byte{1};
             return kHeader;
         },
         "E", "the map of free pages should be on page 1, slot 0"},
        {"system_column_renamed",
         [](Patient& p) {
             const std::size_t name = p.bytes.find(std::string("F\0l\0a\0g\0", 8), 4 * kPageSize);
             p.bytes[name] = 'X';
             return kQueries;
         },
         "E", "should have a column \"Flag\", it has none"},
        {"page_of_two_owners",
         [](Patient& p) {
             const PageNumber page = p.pages(memoMaps(p).owned).front();
             setMember(p, p.definition().ownedMap, page, true);
             return page;
         },
         "E", "it belongs to table \"Items\", rows and to table \"Items\", long values of \"content\""},
        {"page_in_use_is_free",
         [](Patient& p) {
             const PageNumber page = dataPages(p).back();
             setMember(p, {kGlobal, 0}, page, true);
             return page;
         },
         "E", "the map of free pages has it as free"},
        {"page_of_nobody", [](Patient& p) { return addPage(p); }, "W", "1 pages are not free, yet nobody uses them"},
        {"page_about_to_become_free",
         [](Patient& p) {
             setMember(p, {kGlobal, 1}, addPage(p), true);
             return kGlobal;
         },
         "W", "about to become free should be empty, it has 1 pages"},
        {"map_of_no_type",
         [](Patient& p) {
             *p.record(p.definition().ownedMap) = std::byte{2};
             return p.definition().ownedMap.page;
         },
         "E", "usage map expected, other bytes found"},
        {"map_page_past_the_end",
         [](Patient& p) {
             const RowId map = p.definition().freeMap;
             setMember(p, map, PageNumber{500}, true);
             return map.page;
         },
         "E", "the map has 1 pages past the end of the file"},
        {"map_slot_deleted",
         [](Patient& p) {
             const RowId map = p.definition().ownedMap;
             p.slotEntry(map)[1] |= std::byte{0xC0};
             return map.page;
         },
         "E", "usage map expected in row 0, none found"},
        {"map_page_with_an_owner",
         [](Patient& p) {
             const PageNumber page = p.definition().ownedMap.page;
             *p.at(page, 4) = std::byte{7};
             return page;
         },
         "E", "usage maps: the owner of the page should be 0, it is 7"},
        {"room_on_a_page_of_others",
         [](Patient& p) {
             setMember(p, p.definition().freeMap, PageNumber{14}, true);
             return PageNumber{14};
         },
         "E", "has a page that the table does not own"},
        {"long_value_room_on_a_page_of_others",
         [](Patient& p) {
             setMember(p, memoMaps(p).free, PageNumber{14}, true);
             return PageNumber{14};
         },
         "E", "has a page that the column does not own"},
        {"page_without_room_is_offered",
         [](Patient& p) {
             const PageNumber page = dataPages(p).front();
             setMember(p, p.definition().freeMap, page, true);
             store16(p.at(page, 2), 1);
             return page;
         },
         "W", "has a page without room"},
        {"bitmap_page_of_no_type",
         [](Patient& p) {
             const RowId map = p.definition().ownedMap;
             const PageNumber bitmap = addPage(p);
             std::byte* const row = p.record(map);
             std::fill(row, p.recordEnd(map), std::byte{0});
             row[0] = std::byte{1};
             store32(row + 1, raw(bitmap));
             return bitmap;
         },
         "E", "bitmap page of a usage map expected"},
    }),
    caseName);

INSTANTIATE_TEST_SUITE_P(DataPages, DamagedDatabase,
                         ::testing::ValuesIn<Damage>({
                             {"page_type",
                              [](Patient& p) {
                                  *p.at(dataPages(p).front(), 0) = std::byte{9};
                                  return dataPages(p).front();
                              },
                              "E", "the page type should be 01 01"},
                             {"owner",
                              [](Patient& p) {
                                  store32(p.at(dataPages(p).front(), 4), 2);
                                  return dataPages(p).front();
                              },
                              "E", "table \"Items\": the owner of the page should be"},
                             {"too_many_slots",
                              [](Patient& p) {
                                  const PageNumber page = dataPages(p).front();
                                  store16(p.at(page, 12), 2044);
                                  return page;
                              },
                              "E", "rows cannot be on one page"},
                             {"rows_not_descending",
                              [](Patient& p) {
                                  const PageNumber page = dataPages(p).front();
                                  store16(p.slotEntry({page, 1}), 0x0FFF);
                                  return page;
                              },
                              "E", "row 1 must start between"},
                             {"free_bytes",
                              [](Patient& p) {
                                  const PageNumber page = dataPages(p).front();
                                  store16(p.at(page, 2), static_cast<std::uint16_t>(load16(p.at(page, 2)) + 1));
                                  return page;
                              },
                              "E", "the free bytes should be"},
                             {"pointer_to_no_target",
                              [](Patient& p) {
                                  const RowId pointer = p.slot(dataPages(p), SlotKind::Pointer);
                                  *p.record(pointer) = std::byte{200};
                                  return pointer.page;
                              },
                              "E", "where no moved record is"},
                             {"pointer_to_a_page_of_others",
                              [](Patient& p) {
                                  const RowId pointer = p.slot(dataPages(p), SlotKind::Pointer);
                                  store32(p.record(pointer), RowId{PageNumber{14}, 0}.packed());
                                  return pointer.page;
                              },
                              "E", "moved to page 14 slot 0, which is no page of the table"},
                             {"target_without_pointer",
                              [](Patient& p) {
                                  const RowId pointer = p.slot(dataPages(p), SlotKind::Pointer);
                                  const RowId target = RowId::unpack(load32(p.record(pointer)));
                                  p.slotEntry(pointer)[1] |= std::byte{0xC0};
                                  return target.page;
                              },
                              "E", "a moved record that no pointer leads to"},
                             {"target_of_two_pointers",
                              [](Patient& p) {
                                  const RowId pointer = p.slot(dataPages(p), SlotKind::Pointer);
                                  const RowId other = plainRow(p);
                                  p.slotEntry(other)[1] |= std::byte{0x40};
                                  store32(p.record(other), load32(p.record(pointer)));
                                  return pointer.page;
                              },
                              "E", "two pointers lead to the moved record"},
                         }),
                         caseName);

INSTANTIATE_TEST_SUITE_P(Definitions, DamagedDatabase,
                         ::testing::ValuesIn<Damage>({
                             {"magic_number",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  *p.at(page, 12) ^= std::byte{1};
                                  return page;
                              },
                              "E", "the number at byte 12 should be 1625, it is 1624"},
                             {"length",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  *p.at(page, 8) ^= std::byte{1};
                                  return page;
                              },
                              "E", "the length should be"},
                             {"free_bytes",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  *p.at(page, 2) ^= std::byte{1};
                                  return page;
                              },
                              "W", "definition: the free bytes of the page should be"},
                             {"chain_in_a_circle",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store32(p.at(page, 4), raw(page));
                                  return page;
                              },
                              "E", "belongs to table \"Items\", definition and to table \"Items\", definition"},
                             {"more_columns_than_bytes",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store16(p.at(page, 45), 250);
                                  return page;
                              },
                              "E", "table \"Items\", definition: at byte"},
                             {"column_number_twice",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store16(p.at(page, block(p, u"price") + 5), 1);
                                  return page;
                              },
                              "E", "column number 1 should stand once"},
                             {"column_number_too_high",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store16(p.at(page, block(p, u"price") + 5), 7);
                                  return page;
                              },
                              "E", "the number of column \"price\" should be below 7, it is 7"},
                             {"var_index_twice",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store16(p.at(page, block(p, u"note") + 7), 0);
                                  return page;
                              },
                              "E", "var index 0 should stand once"},
                             {"fixed_columns_overlap",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store16(p.at(page, block(p, u"num") + 21), 2);
                                  return page;
                              },
                              "E", "the fixed columns at offsets 0 and 2 overlap"},
                             {"unknown_type",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  *p.at(page, block(p, u"flag")) = std::byte{0x0D};
                                  return page;
                              },
                              "E", "column \"flag\" has the unknown type 13"},
                             {"memo_without_maps",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  *p.at(page, block(p, u"note")) = std::byte{0x0C};
                                  return page;
                              },
                              "E", "column \"note\" should have usage maps for its long values"},
                             {"names_equal_but_for_case",
                              [](Patient& p) {
                                  const std::size_t num =
                                      p.bytes.find(std::string("\6\0n\0u\0m\0", 8), raw(tablePage(p)) * kPageSize);
                                  p.bytes.replace(num + 2, 6, std::string("U\0R\0L\0", 6));
                                  return tablePage(p);
                              },
                              "E", "should stand once, it stands twice"},
                             {"columns_out_of_order",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store16(p.at(page, block(p, u"id") + 9), 9);
                                  return page;
                              },
                              "W", "the columns are not in the order"},
                             {"index_without_tree",
                              [](Patient& p) {
                                  const TableDefinition table = p.definition();
                                  store32(p.at(table.page, indexBlocks(p) + 52 * 3 + 8), 3);
                                  return table.page;
                              },
                              "E", "should lead to one of 3 trees, it leads to number 3"},
                             {"index_of_no_column",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store16(p.at(page, indexBlocks(p) + 4), 99);
                                  return page;
                              },
                              "E", "index tree 0 has column number 99, which does not exist"},
                             {"index_root_is_no_index_page",
                              [](Patient& p) {
                                  const PageNumber page = addPage(p);
                                  store32(p.at(tablePage(p), indexBlocks(p) + 38), raw(page));
                                  return page;
                              },
                              "E", "an index page was expected here"},
                             {"row_count",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store32(p.at(page, 16), 5);
                                  return page;
                              },
                              "W", "its definition counts 5 rows, there are 590"},
                             {"autonumber",
                              [](Patient& p) {
                                  store32(p.at(tablePage(p), 20), 599);
                                  const auto database = p.open();
                                  Table& items = database->table(u"Items");
                                  Row row;
                                  for (TableScan scan = items.scan(); scan.next(row);)
                                      if (row.value(*items.definition().findColumn(u"id")) == Value(600))
                                          break;
                                  return row.id().page;
                              },
                              "W", "the last autonumber should be at least 600, as in this row, it is 599"},
                             {"distinct_keys",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  store32(p.at(page, 63 + 4), 10);
                                  return page;
                              },
                              "W", "counts 10 different keys, there are"},
                         }),
                         caseName);

INSTANTIATE_TEST_SUITE_P(Records, DamagedDatabase,
                         ::testing::ValuesIn<Damage>({
                             {"more_columns_than_the_table",
                              [](Patient& p) {
                                  *p.record(plainRow(p)) = std::byte{8};
                                  return plainRow(p).page;
                              },
                              "E", "it should have at most 7 columns, it has 8"},
                             {"too_short_for_its_mask",
                              [](Patient& p) {
                                  store16(p.record(plainRow(p)), 0xFFFF);
                                  return plainRow(p).page;
                              },
                              "E", "cannot hold its null mask"},
                             {"too_many_variable_columns",
                              [](Patient& p) {
                                  *(p.recordEnd(plainRow(p)) - 3) = std::byte{4};
                                  return plainRow(p).page;
                              },
                              "E", "it should have at most 3 variable columns, it has 4"},
                             {"variable_column_before_the_fixed_ones",
                              [](Patient& p) {
                                  *(p.recordEnd(plainRow(p)) - 5) = std::byte{3};
                                  return plainRow(p).page;
                              },
                              "E", "variable column 0 should begin between bytes"},
                             {"variable_columns_behind_their_offsets",
                              [](Patient& p) {
                                  store16(p.recordEnd(plainRow(p)) - 11, 4000);
                                  return plainRow(p).page;
                              },
                              "E", "variable column 3 should begin between bytes"},
                             {"text_of_odd_length",
                              [](Patient& p) {
                                  std::byte* const start =
                                      p.recordEnd(plainRow(p)) - 7; // of the second variable column
                                  store16(start, static_cast<std::uint16_t>(load16(start) - 1));
                                  return plainRow(p).page;
                              },
                              "E", "column \"url\": its 53 bytes are no text"},
                             {"text_too_long",
                              [](Patient& p) {
                                  store16(p.at(tablePage(p), block(p, u"url") + 23), 52);
                                  return dataPages(p).front();
                              },
                              "E", "column \"url\": the text should have at most 26 characters, it has 27"},
                             {"number_too_long",
                              [](Patient& p) {
                                  *p.at(tablePage(p), block(p, u"price") + 11) = std::byte{0};
                                  return dataPages(p).front();
                              },
                              "W", "column \"price\": the number has more than 0 digits"},
                             {"row_changed_under_its_index",
                              [](Patient& p) {
                                  p.record(plainRow(p))[2 + 4] ^= std::byte{1}; // num
                                  return plainRow(p).page;
                              },
                              "E", "index \"numidx\": the key of the entry is not that of this row"},
                             {"deleted_row_revived",
                              [](Patient& p) {
                                  const RowId deleted = p.slot(dataPages(p), SlotKind::Deleted);
                                  store16(p.slotEntry(deleted), static_cast<std::uint16_t>(p.slotStart(deleted)));
                                  return deleted.page;
                              },
                              "E", "its 0 bytes cannot hold its null mask"},
                         }),
                         caseName);

INSTANTIATE_TEST_SUITE_P(LongValues, DamagedDatabase,
                         ::testing::ValuesIn<Damage>({
                             {"inside_longer_than_its_field",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Inline);
                                  *p.at(row.page, at) = std::byte{200};
                                  return row.page;
                              },
                              "E", "its length is 200, the record has 10 bytes of it"},
                             {"single_longer_than_its_row",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Single);
                                  *p.at(row.page, at) = std::byte{202};
                                  return row.page;
                              },
                              "E", "its length is 202, page"},
                             {"chain_longer_than_its_parts",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Chain);
                                  *p.at(row.page, at) ^= std::byte{2};
                                  return row.page;
                              },
                              "E", "its length is 6002, its parts have 6000 bytes"},
                             {"pointer_to_a_page_of_others",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Single);
                                  store32(p.at(row.page, at + 4), RowId{PageNumber{14}, 0}.packed());
                                  return row.page;
                              },
                              "E", "it leads to page 14 slot 0, which is no long-value page of the column"},
                             {"two_values_share_a_row",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Single);
                                  *p.at(row.page, at + 4) ^= std::byte{1};
                                  return row.page;
                              },
                              "E", "where no long value is or one that another value leads to as well"},
                             {"row_of_no_value",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Single);
                                  const PageNumber longPage = RowId::unpack(load32(p.at(row.page, at + 4))).page;
                                  store32(p.at(row.page, at), 0x80000000);
                                  return longPage;
                              },
                              "W", "1 rows of long-value pages are used by no value"},
                             {"stamp",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Chain);
                                  *p.at(row.page, at + 8) ^= std::byte{0x55};
                                  return row.page;
                              },
                              "W", "its stamp should be that of its first page"},
                             {"chain_in_a_circle",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Chain);
                                  const RowId first = RowId::unpack(load32(p.at(row.page, at + 4)));
                                  store32(p.record(first), first.packed());
                                  return row.page;
                              },
                              "E", "where no long value is or one that another value leads to as well"},
                             {"moved_slot",
                              [](Patient& p) {
                                  const auto [row, at] = memoField(p, LongValueHeader::Form::Chain);
                                  const RowId first = RowId::unpack(load32(p.at(row.page, at + 4)));
                                  p.slotEntry(first)[1] |= std::byte{0x40};
                                  return first.page;
                              },
                              "E", "a long value should never move"},
                         }),
                         caseName);

INSTANTIATE_TEST_SUITE_P(
    Indexes, DamagedDatabase,
    ::testing::ValuesIn<Damage>({
        {"page_type",
         [](Patient& p) {
             const PageNumber leaf = leavesOf(p, u"numidx").at(1);
             *p.at(leaf, 0) = std::byte{1};
             return leaf;
         },
         "E", "an index page was expected here"},
        {"owner",
         [](Patient& p) {
             const PageNumber leaf = leavesOf(p, u"numidx").at(1);
             *p.at(leaf, 4) = std::byte{2};
             return leaf;
         },
         "E", "index \"numidx\": at byte 4: an index page of the table"},
        {"free_bytes",
         [](Patient& p) {
             const PageNumber leaf = leavesOf(p, u"numidx").at(1);
             *p.at(leaf, 2) ^= std::byte{1};
             return leaf;
         },
         "E", "index page: the free bytes should be"},
        {"level",
         [](Patient& p) {
             const PageNumber root = rootOf(p, u"urlidx");
             *p.at(root, 26) = std::byte{0};
             return root;
         },
         "W", "the level should be 1, it is 0"},
        {"order",
         [](Patient& p) {
             const PageNumber leaf = leavesOf(p, u"numidx").at(1);
             std::swap_ranges(p.at(leaf, 480), p.at(leaf, 489), p.at(leaf, 489 + 9));
             return leaf;
         },
         "E", "it is not greater than the entry before it"},
        {"previous_leaf",
         [](Patient& p) {
             const PageNumber leaf = leavesOf(p, u"urlidx").at(1);
             store32(p.at(leaf, 12), 0);
             return leaf;
         },
         "E", "the previous leaf should be page"},
        {"next_leaf",
         [](Patient& p) {
             const PageNumber leaf = leavesOf(p, u"urlidx").at(1);
             store32(p.at(leaf, 16), 0);
             return leaf;
         },
         "E", "the next leaf should be page"},
        {"node_key_too_small",
         [](Patient& p) {
             const PageNumber root = rootOf(p, u"numidx");
             p.at(root, 480)[1] = std::byte{0};
             return root;
         },
         "E", "the node key is smaller than the last entry below it"},
        {"node_key_too_large",
         [](Patient& p) {
             const PageNumber root = rootOf(p, u"numidx");
             p.at(root, 480)[1] = std::byte{0xFF};
             return leavesOf(p, u"numidx").at(1);
         },
         "E", "a node key in front of it is not smaller"},
        {"node_to_a_page_of_others",
         [](Patient& p) {
             const PageNumber root = rootOf(p, u"numidx");
             store32(p.at(root, 20), 14);
             return PageNumber{14};
         },
         "E", "it belongs to table \"MSysObjects\", rows and to table \"Items\", index \"numidx\""},
        {"page_missing_in_the_map",
         [](Patient& p) {
             const TableDefinition table = p.definition();
             const PageNumber leaf = leavesOf(p, u"numidx").at(1);
             setMember(p, p.index(table, u"numidx").ownedMap, leaf, false);
             return leaf;
         },
         "E", "the page is of the index, but not in its map"},
        {"map_with_another_page",
         [](Patient& p) {
             const TableDefinition table = p.definition();
             setMember(p, p.index(table, u"numidx").ownedMap, PageNumber{14}, true);
             return PageNumber{14};
         },
         "E", "the map of the index has a page that its tree does not lead to"},
        {"entry_of_no_row",
         [](Patient& p) {
             const PageNumber leaf = leavesOf(p, u"numidx").at(1);
             *p.at(leaf, 488) = std::byte{254};
             return leaf;
         },
         "E", "slot 254, where no row of the table is"},
        {"row_without_entry",
         [](Patient& p) {
             RowId row;
             p.change([&](Database& database) {
                 Pager::Operation operation(database.pager());
                 const TableDefinition& table = database.table(u"Items").definition();
                 const PhysicalIndex& index = p.index(table, u"numidx");
                 IndexTree tree(database.pager(), database.allocator(), {index.root, index.ownedMap, table.page});
                 row = tree.begin().row();
                 tree.removeRow(row);
                 operation.done();
             });
             return row.page;
         },
         "E", "index \"numidx\": the index has no entry for this row"},
        {"two_entries_of_one_row",
         [](Patient& p) {
             PageNumber root = kNoPage;
             p.change([&](Database& database) {
                 Pager::Operation operation(database.pager());
                 const TableDefinition& table = database.table(u"Items").definition();
                 const PhysicalIndex& index = p.index(table, u"numidx");
                 IndexTree tree(database.pager(), database.allocator(), {index.root, index.ownedMap, table.page});
                 const auto first = tree.begin();
                 KeyBytes key(first.key().begin(), first.key().end());
                 key.back() = std::byte{0x7F};
                 tree.insert(key, first.row());
                 operation.done();
             });
             root = leavesOf(p, u"numidx").front();
             return root;
         },
         "E", "two entries lead to page"},
        {"unique_key_twice",
         [](Patient& p) {
             *p.at(tablePage(p), indexBlocks(p) + 46) |= std::byte{1};
             return leavesOf(p, u"numidx").front();
         },
         "E", "index \"numidx\": the index is unique, yet page"},
        {"null_in_a_required_index",
         [](Patient& p) {
             *p.at(tablePage(p), indexBlocks(p) + 2 * 52 + 46) |= std::byte{8};
             return dataPages(p).front();
         },
         "E", "the index allows no Null, this row has one"},
        {"sharp_s_counted_once",
         [](Patient& p) {
             RowId row;
             p.change([&](Database& database) {
                 Table& items = database.table(u"Items");
                 row = insertRow(items, {Null{}, u"ßé"});
                 Pager::Operation operation(database.pager());
                 const PhysicalIndex& index = p.index(items.definition(), u"urlidx");
                 IndexTree tree(database.pager(), database.allocator(),
                                {index.root, index.ownedMap, items.definition().page});
                 tree.removeRow(row);
                 // complement of 7f | 6b 6b 51 01 02 0e 00, then 00
                 const KeyBytes key = {std::byte{0x80}, std::byte{0x94}, std::byte{0x94},
                                       std::byte{0xAE}, std::byte{0xFE}, std::byte{0xFD},
                                       std::byte{0xF1}, std::byte{0xFF}, std::byte{0x00}};
                 tree.insert(key, row);
                 operation.done();
             });
             return row.page;
         },
         "W", "counts a letter such as ß once"},
    }),
    caseName);

INSTANTIATE_TEST_SUITE_P(Catalog, DamagedDatabase,
                         ::testing::ValuesIn<Damage>({
                             {"table_without_definition",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  *p.at(page, 0) = std::byte{9};
                                  return page;
                              },
                              "E", "table \"Items\", definition: at byte 0: a page of a table definition"},
                             {"table_past_the_end",
                              [](Patient& p) {
                                  store32(p.record(catalogRow(p)) + 2, 900);
                                  return PageNumber{900};
                              },
                              "E",
                              "table \"Items\", definition: a pointer leads to this page, past the end of the file"},
                             {"definition_of_no_name",
                              [](Patient& p) {
                                  const PageNumber page = tablePage(p);
                                  p.slotEntry(catalogRow(p))[1] |= std::byte{0xC0};
                                  return page;
                              },
                              "W", "pages are not free, yet nobody uses them"},
                             {"rights",
                              [](Patient& p) {
                                  p.change([&](Database& database) {
                                      Table& rights = database.table(u"MSysACEs");
                                      const std::size_t object = Patient::columnIndex(rights, u"ObjectId");
                                      const auto id =
                                          static_cast<std::int32_t>(raw(database.table(u"Items").definition().page));
                                      std::vector<RowId> rows;
                                      Row row;
                                      for (TableScan scan = rights.scan(); scan.next(row);)
                                          if (row.value(rights.definition().columns[object]) == Value(id))
                                              rows.push_back(row.id());
                                      for (const RowId found : rows)
                                          rights.erase(found);
                                  });
                                  return PageNumber{3};
                              },
                              "W", "table \"Items\" should have access rights"},
                         }),
                         caseName);

TEST(Verify, EmptyDatabaseIsSound) {
    Machine machine;
    EXPECT_EQ(faultsOf(*machine.create()), "");
}

TEST(Verify, EveryStructureIsSound) {
    EXPECT_EQ(Patient(soundDatabase()).faults(), "");
}

/// Makes an inline map one by reference, with the same members.
void makeReference(Patient& p, RowId map) {
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
}

TEST(Verify, MapsByReferenceAreSound) {
    Patient patient(soundDatabase());
    const TableDefinition table = patient.definition();
    makeReference(patient, table.ownedMap);
    makeReference(patient, table.freeMap);
    makeReference(patient, table.longValueMaps.at(0).owned);
    makeReference(patient, patient.index(table, u"urlidx").ownedMap);
    EXPECT_EQ(patient.faults(), "");
}

TEST(Verify, CountsWhatItDoesNotList) {
    Patient patient(3000);
    for (const PageNumber page : dataPages(patient))
        std::fill(patient.at(page, 2000), patient.at(page, 4096), std::byte{0xEE});
    const std::string faults = patient.faults();
    EXPECT_THAT(faults, HasSubstr("more errors not listed"));
    EXPECT_LE(std::count(faults.begin(), faults.end(), '\n'), 1202);
}

} // namespace
} // namespace kelb::jet::testing
