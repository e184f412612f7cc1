#include "tests/jet/verify_damage.h"

#include <gmock/gmock.h>

// Header, usage maps, data pages, definitions and the catalog. Records, long values and indexes: verify_rows_test.cpp.
namespace kelb::jet::testing {
namespace {

class DamagedPages : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedPages, AreReported) {
    expectReported(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Maps, DamagedPages,
    ::testing::ValuesIn<Damage>({
        {"file_ends_inside_a_page",
         [](Patient& p) {
             const PageNumber past{static_cast<std::uint32_t>(p.bytes.size() / kPageSize)};
             p.bytes.append(100, 'x');
             return past;
         },
         "E", "the file should end with a whole page, this one has 100 bytes"},
        {"global_map_elsewhere", turn(page(0), 0x18, 1), "E", "the map of free pages should be on page 1, slot 0"},
        {"page_of_two_owners",
         [](Patient& p) {
             const PageNumber shared = p.pages(memoMaps(p).owned).front();
             setMember(p, p.definition().ownedMap, shared, true);
             return shared;
         },
         "E", "it belongs to table \"Items\", rows and to table \"Items\", long values of \"content\""},
        {"page_in_use_is_free",
         [](Patient& p) {
             const PageNumber used = dataPages(p).back();
             setMember(p, {kGlobal, 0}, used, true);
             return used;
         },
         "E", "the map of free pages has it as free"},
        {"page_of_nobody", addPage, "W", "1 pages are not free, yet nobody uses them"},
        {"page_about_to_become_free",
         [](Patient& p) {
             setMember(p, {kGlobal, 1}, addPage(p), true);
             return kGlobal;
         },
         "W", "about to become free should be empty, it has 1 pages"},
        {"map_of_no_type", put(mapRow, 0, {2}), "E", "usage map expected, other bytes found"},
        {"map_page_past_the_end",
         [](Patient& p) {
             setMember(p, p.definition().freeMap, PageNumber{500}, true);
             return p.definition().freeMap.page;
         },
         "E", "the map has 1 pages past the end of the file"},
        {"map_slot_deleted",
         [](Patient& p) {
             const RowId map = p.definition().ownedMap;
             setFlags(p, map, 0xC0);
             return map.page;
         },
         "E", "usage map expected in row 0, none found"},
        {"map_page_with_an_owner",
         [](Patient& p) {
             const PageNumber map = p.definition().ownedMap.page;
             *p.at(map, 4) = std::byte{7};
             return map;
         },
         "E", "usage maps: the owner of the page should be 0, it is 7"},
        {"room_on_a_page_of_others",
         [](Patient& p) {
             setMember(p, p.definition().freeMap, kForeign, true);
             return kForeign;
         },
         "E", "has a page that the table does not own"},
        {"long_value_room_on_a_page_of_others",
         [](Patient& p) {
             setMember(p, memoMaps(p).free, kForeign, true);
             return kForeign;
         },
         "E", "has a page that the column does not own"},
        {"page_without_room_is_offered",
         [](Patient& p) {
             setMember(p, p.definition().freeMap, dataPages(p).front(), true);
             return put(firstData, 2, {1, 0})(p);
         },
         "W", "has a page without room"},
        {"bitmap_page_of_no_type",
         [](Patient& p) {
             const PageNumber bitmap = makeReference(p, p.definition().ownedMap);
             *p.at(bitmap, 0) = std::byte{4};
             return bitmap;
         },
         "E", "bitmap page of a usage map expected"},
    }),
    kDamageName);

INSTANTIATE_TEST_SUITE_P(DataPages, DamagedPages,
                         ::testing::ValuesIn<Damage>({
                             {"page_type", put(firstData, 0, {9}), "E", "the page type should be 01 01"},
                             {"owner", put(firstData, 4, {2}), "E", "table \"Items\": the owner of the page should be"},
                             {"too_many_slots", put(firstData, 12, {0xFC, 7}), "E", "rows cannot be on one page"},
                             {"rows_not_descending", put(firstData, 16, {0xFF, 0x0F}), "E", "row 1 must start between"},
                             {"free_bytes", turn(firstData, 2, 1), "E", "the free bytes should be"},
                             {"pointer_to_no_target", put(pointer, 0, {200}), "E", "where no moved record is"},
                             {"pointer_to_a_page_of_others", put(pointer, 0, {0, 14, 0, 0}), "E",
                              "moved to page 14 slot 0, which is no page of the table"},
                             {"pointer_too_short",
                              [](Patient& p) { // its row begins three bytes before it ends
                                  const RowId row = pointerRow(p);
                                  store16(p.slotEntry(row), static_cast<std::uint16_t>(0x4000 | (p.slotEnd(row) - 3)));
                                  return row.page;
                              },
                              "E", "should have 4 bytes, it has 3"},
                             {"target_without_pointer",
                              [](Patient& p) {
                                  const RowId target = RowId::unpack(load32(p.record(pointerRow(p))));
                                  setFlags(p, pointerRow(p), 0xC0);
                                  return target.page;
                              },
                              "E", "a moved record that no pointer leads to"},
                             {"target_of_two_pointers",
                              [](Patient& p) {
                                  const RowId other = plainRow(p);
                                  store32(p.record(other), load32(p.record(pointerRow(p))));
                                  setFlags(p, other, 0x40);
                                  return pointerRow(p).page;
                              },
                              "E", "two pointers lead to the moved record"},
                         }),
                         kDamageName);

INSTANTIATE_TEST_SUITE_P(
    Definitions, DamagedPages,
    ::testing::ValuesIn<Damage>({
        {"page_type", put(definitionPage, 0, {9}), "E",
         "table \"Items\", definition: at byte 0: this is no page of a table definition"},
        {"magic_number", turn(definitionPage, 12, 1), "E", "the number at byte 12 should be 1625, it is 1624"},
        {"length", turn(definitionPage, 8, 1), "E", "the length should be"},
        {"free_bytes", turn(definitionPage, 2, 1), "W", "definition: the free bytes of the page should be"},
        {"chain_in_a_circle",
         [](Patient& p) {
             const PageNumber first = p.definition().page;
             store32(p.at(first, 4), raw(first));
             return first;
         },
         "E", "belongs to table \"Items\", definition and to table \"Items\", definition"},
        {"more_columns_than_bytes", put(definitionPage, 45, {250, 0}), "E", "table \"Items\", definition: at byte"},
        {"column_number_twice", put(columnBlock(u"price"), 5, {1}), "E", "column number 1 should stand once"},
        {"column_number_too_high", put(columnBlock(u"price"), 5, {7}), "E",
         "the number of column \"price\" should be below 7, it is 7"},
        {"var_index_twice", put(columnBlock(u"note"), 7, {0}), "E", "var index 0 should stand once"},
        {"var_index_too_high", put(columnBlock(u"note"), 7, {3}), "E",
         "the var index of column \"note\" should be below 3, it is 3"},
        {"fixed_columns_overlap", put(columnBlock(u"num"), 21, {2}), "E",
         "the fixed columns at offsets 0 and 2 overlap"},
        {"unknown_type", put(columnBlock(u"flag"), 0, {0x0D}), "E", "column \"flag\" has the unknown type 13"},
        {"memo_without_maps", put(columnBlock(u"note"), 0, {0x0C}), "E",
         "column \"note\" should have usage maps for its long values"},
        {"names_equal_but_for_case",
         [](Patient& p) {
             const PageNumber first = p.definition().page;
             const std::size_t num = p.bytes.find(std::string("\6\0n\0u\0m\0", 8), raw(first) * kPageSize);
             p.bytes.replace(num + 2, 6, std::string("U\0R\0L\0", 6));
             return first;
         },
         "E", "should stand once, it stands twice"},
        {"columns_out_of_order", put(columnBlock(u"id"), 9, {9}), "W", "the columns are not in the order"},
        {"index_without_tree", put(indexBlocks, 3 * 52 + 8, {3}), "E", "should lead to one of 3 trees"},
        {"index_of_no_column", put(indexBlocks, 4, {99, 0}), "E", "index tree 0 has column number 99"},
        {"index_without_columns", put(indexBlocks, 4, {0xFF, 0xFF}), "E", "index tree 0 has no columns"},
        {"index_root_is_no_index_page",
         [](Patient& p) {
             const PageNumber other = addPage(p);
             put(indexBlocks, 38, {raw(other)})(p);
             return other;
         },
         "E", "an index page was expected here"},
        {"row_count", put(definitionPage, 16, {5, 0}), "W", "its definition counts 5 rows, there are 590"},
        {"distinct_keys", put(definitionPage, 63 + 4, {10, 0}), "W", "counts 10 different keys, there are"},
    }),
    kDamageName);

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

INSTANTIATE_TEST_SUITE_P(Catalog, DamagedPages,
                         ::testing::ValuesIn<Damage>({
                             {"system_column_renamed",
                              [](Patient& p) {
                                  p.bytes[p.bytes.find(std::string("F\0l\0a\0g\0", 8), 4 * kPageSize)] = 'X';
                                  return PageNumber{4};
                              },
                              "E", "should have a column \"Flag\", it has none"},
                             {"table_past_the_end",
                              [](Patient& p) {
                                  store32(p.record(catalogRow(p)) + 2, 900);
                                  return PageNumber{900};
                              },
                              "E",
                              "table \"Items\", definition: a pointer leads to this page, past the end of the file"},
                             {"definition_of_no_name",
                              [](Patient& p) {
                                  const PageNumber first = p.definition().page;
                                  setFlags(p, catalogRow(p), 0xC0);
                                  return first;
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
                         kDamageName);

TEST(Verify, EmptyDatabaseIsSound) {
    Machine machine;
    EXPECT_EQ(faultsOf(*machine.create()), "");
}

TEST(Verify, EveryStructureIsSound) {
    EXPECT_EQ(Patient(soundDatabase()).faults(), "");
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
    for (const PageNumber number : dataPages(patient))
        std::fill(patient.at(number, 2000), patient.at(number, 4096), std::byte{0xEE});
    const std::string faults = patient.faults();
    EXPECT_THAT(faults, ::testing::HasSubstr("more errors not listed"));
    EXPECT_LE(std::count(faults.begin(), faults.end(), '\n'), 1202);
}

} // namespace
} // namespace kelb::jet::testing
