#include "tests/jet/verify_damage.h"

// Damage of records, long values and indexes.
namespace kelb::jet::testing {
namespace {

using Form = LongValueHeader::Form;

class DamagedRows : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedRows, AreReported) {
    expectReported(GetParam());
}

// A record ends: end offset, three var offsets in reverse, var count (two bytes each), one byte of null mask.
INSTANTIATE_TEST_SUITE_P(
    Records, DamagedRows,
    ::testing::ValuesIn<Damage>({
        {"more_columns_than_the_table", put(record, 0, {8}), "E", "it should have at most 7 columns, it has 8"},
        {"too_short_for_its_mask", put(record, 0, {0xFF, 0xFF}), "E", "cannot hold its null mask"},
        {"too_many_variable_columns", put(recordEnd, -3, {4}), "E", "at most 3 variable columns, it has 4"},
        {"variable_column_before_the_fixed_ones", put(recordEnd, -5, {3}), "E",
         "variable column 0 should begin between bytes"},
        {"variable_columns_behind_their_offsets", put(recordEnd, -11, {0xA0, 0x0F}), "E",
         "variable column 3 should begin between bytes"},
        {"text_of_odd_length", turn(recordEnd, -7, 1), "E", "bytes are no text"},
        {"text_too_long", seenOn(firstData, put(columnBlock(u"url"), 23, {52, 0})), "E",
         "should have at most 26 characters, it has 27"},
        {"number_too_long", seenOn(firstData, put(columnBlock(u"price"), 11, {0})), "W",
         "the number has more than 0 digits"},
        {"changed_under_its_index", turn(record, 2 + 4, 1), "E",
         "index \"numidx\": the key of the entry is not that of this row"},
        {"deleted_row_revived",
         [](Patient& p) {
             const RowId deleted = p.slot(dataPages(p), SlotKind::Deleted);
             store16(p.slotEntry(deleted), static_cast<std::uint16_t>(p.slotStart(deleted)));
             return deleted.page;
         },
         "E", "its 0 bytes cannot hold its null mask"},
        {"autonumber",
         [](Patient& p) {
             put(definitionPage, 20, {0x57, 2})(p); // 599
             const auto database = p.open();
             Table& items = database->table(u"Items");
             Row row;
             for (TableScan scan = items.scan(); scan.next(row);)
                 if (row.value(*items.definition().findColumn(u"id")) == Value(600))
                     break;
             return row.id().page;
         },
         "W", "the last autonumber should be at least 600, as in this row, it is 599"},
    }),
    kDamageName);

INSTANTIATE_TEST_SUITE_P(
    LongValues, DamagedRows,
    ::testing::ValuesIn<Damage>({
        {"inside_longer_than_its_field", put(memoField(Form::Inline), 0, {200}), "E",
         "its length is 200, the record has 10 bytes of it"},
        {"inside_of_odd_length", put(memoField(Form::Inline), 0, {9}), "E", "its 9 bytes are no text"},
        {"single_longer_than_its_row", put(memoField(Form::Single), 0, {202}), "E", "its length is 202, page"},
        {"chain_longer_than_its_parts", turn(memoField(Form::Chain), 0, 2), "E",
         "its length is 6002, its parts have 6000 bytes"},
        {"pointer_to_a_page_of_others", put(memoField(Form::Single), 4, {0, 14, 0, 0}), "E",
         "it leads to page 14 slot 0, which is no long-value page of the column"},
        {"two_values_share_a_row", turn(memoField(Form::Single), 4, 1), "E",
         "where no long value is or one that another value leads to as well"},
        {"stamp", turn(memoField(Form::Chain), 8, 0x55), "W", "its stamp should be that of its first page"},
        {"row_of_no_value",
         [](Patient& p) {
             const RowId unused = longRow(p, Form::Single);
             put(memoField(Form::Single), 0, {0, 0, 0, 0x80})(p);
             return unused.page;
         },
         "W", "1 rows of long-value pages are used by no value"},
        {"chain_in_a_circle",
         [](Patient& p) {
             const RowId first = longRow(p, Form::Chain);
             store32(p.record(first), first.packed());
             return memoField(Form::Chain)(p).page;
         },
         "E", "where no long value is or one that another value leads to as well"},
        {"moved_slot",
         [](Patient& p) {
             const RowId first = longRow(p, Form::Chain);
             setFlags(p, first, 0x40);
             return first.page;
         },
         "E", "a long value should never move"},
    }),
    kDamageName);

// Entries of the second leaf of numidx have nine bytes each: key, page and slot of the row.
INSTANTIATE_TEST_SUITE_P(
    Indexes, DamagedRows,
    ::testing::ValuesIn<Damage>({
        {"page_type", put(leafOf(u"numidx", 1), 0, {1}), "E", "an index page was expected here"},
        {"owner", put(leafOf(u"numidx", 1), 4, {2}), "E", "index \"numidx\": at byte 4: an index page of the table"},
        {"free_bytes", turn(leafOf(u"numidx", 1), 2, 1), "E", "index page: the free bytes should be"},
        {"prefix", put(leafOf(u"numidx", 1), 24, {9}), "E", "the shared prefix is not shorter"},
        {"level", put(rootOf(u"urlidx"), 26, {0}), "W", "the level should be 1, it is 0"},
        {"order", put(leafOf(u"numidx", 1), 480 + 9 + 1, {0}), "E", "it is not greater than the entry before it"},
        {"previous_leaf", put(leafOf(u"urlidx", 1), 12, {0}), "E", "the previous leaf should be page"},
        {"next_leaf", put(leafOf(u"urlidx", 1), 16, {0}), "E", "the next leaf should be page"},
        {"node_key_too_small", put(rootOf(u"numidx"), 481, {0}), "E",
         "the node key is smaller than the last entry below it"},
        {"node_key_too_large", seenOn(leafOf(u"numidx", 1), put(rootOf(u"numidx"), 481, {0xFF})),
         "E", "a node key in front of it is not smaller"},
        {"node_to_a_page_of_others", seenOn(page(raw(kForeign)), put(rootOf(u"numidx"), 20, {raw(kForeign)})),
         "E", "it belongs to table \"MSysObjects\", rows and to table \"Items\", index \"numidx\""},
        {"page_missing_in_the_map",
         [](Patient& p) {
             const TableDefinition table = p.definition();
             const PageNumber leaf = leafOf(u"numidx", 1)(p).page;
             setMember(p, p.index(table, u"numidx").ownedMap, leaf, false);
             return leaf;
         },
         "E", "the page is of the index, but not in its map"},
        {"map_with_another_page",
         [](Patient& p) {
             const TableDefinition table = p.definition();
             setMember(p, p.index(table, u"numidx").ownedMap, kForeign, true);
             return kForeign;
         },
         "E", "the map of the index has a page that its tree does not lead to"},
        {"entry_of_no_row", put(leafOf(u"numidx", 1), 488, {254}), "E", "slot 254, where no row of the table is"},
        {"row_without_entry",
         [](Patient& p) {
             RowId row;
             changeIndex(p, u"numidx", [&](IndexTree& tree, Table&) {
                 row = tree.begin().row();
                 tree.removeRow(row);
             });
             return row.page;
         },
         "E", "index \"numidx\": the index has no entry for this row"},
        {"two_entries_of_one_row",
         [](Patient& p) {
             changeIndex(p, u"numidx", [&](IndexTree& tree, Table&) {
                 const auto first = tree.begin();
                 KeyBytes key(first.key().begin(), first.key().end());
                 key.back() = std::byte{0x7F};
                 tree.insert(key, first.row());
             });
             return leafOf(u"numidx", 0)(p).page;
         },
         "E", "two entries lead to page"},
        {"unique_key_twice", seenOn(leafOf(u"numidx", 0), turn(indexBlocks, 46, 1)),
         "E", "index \"numidx\": the index is unique, yet page"},
        {"null_in_a_required_index", seenOn(firstData, turn(indexBlocks, 2 * 52 + 46, 8)),
         "E", "the index allows no Null, this row has one"},
        {"null_entered_though_ignored",
         [](Patient& p) {
             RowId row;
             changeIndex(p, u"required", [&](IndexTree& tree, Table& items) {
                 row = insertRow(items, {Null{}, u"all null"});
                 tree.insert(KeyBytes(2), row);
             });
             return leafOf(u"required", 0)(p).page;
         },
         "E", "the index ignores Null, yet it has an entry"},
        {"sharp_s_counted_once",
         [](Patient& p) {
             RowId row;
             changeIndex(p, u"urlidx", [&](IndexTree& tree, Table& items) {
                 row = insertRow(items, {Null{}, u"ßé"});
                 tree.removeRow(row);
                 // complement of 6b 6b 51 01 02 0e 00 behind the flag byte, then 00
                 KeyBytes key;
                 for (const unsigned value : {0x80U, 0x94U, 0x94U, 0xAEU, 0xFEU, 0xFDU, 0xF1U, 0xFFU, 0x00U})
                     key.push_back(static_cast<std::byte>(value));
                 tree.insert(key, row);
             });
             return row.page;
         },
         "W", "counts a letter such as ß once"},
    }),
    kDamageName);

} // namespace
} // namespace kelb::jet::testing
