#include "jet/catalog.h"
#include "jet/file_header.h"
#include "jet/salvage_pages.h"

#include "platform/file_failures.h"

#include "tests/jet/copy_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>

namespace kelb::jet::testing {
namespace {

using ::testing::HasSubstr;

constexpr int kRows = 80;

const std::string& sound() {
    static const std::string bytes = Patient(kRows).bytes;
    return bytes;
}

void overwrite(Patient& patient, PageNumber page, std::uint32_t seed = 1) {
    std::mt19937 random(seed);
    for (std::size_t i = 0; i < kPageSize; ++i)
        *patient.at(page, i) = static_cast<std::byte>(random() % 256);
}

/// Rows of Items as text, by id.
std::map<std::string, std::string> rowsById(Database& database) {
    std::map<std::string, std::string> rows;
    for (const CatalogEntry& entry : database.catalog()) {
        if (!entry.isUserTable())
            continue;
        Table& table = database.table(entry.name);
        Row row;
        for (TableScan scan = table.scan(); scan.next(row);) {
            std::string text;
            for (const char16_t* name : {u"url", u"num", u"price", u"flag", u"note", u"content"})
                text += platform::toUtf8(showValue(row.value(*table.definition().findColumn(name)))) + "|";
            const auto id = platform::toUtf8(showValue(row.value(*table.definition().findColumn(u"id"))));
            EXPECT_TRUE(rows.emplace(id, text).second) << "row " << id << " twice";
        }
    }
    return rows;
}

const std::map<std::string, std::string>& soundRows() {
    static const auto rows = rowsById(*Patient(sound()).open());
    return rows;
}

struct Damage {
    const char* name;
    void (*act)(Patient& patient);
    std::size_t rowsMissing;                 ///< of the sound file's
    std::size_t pages, rows, fields, others; ///< losses told
    const char* told;                        ///< in a loss or note
};
class Recovery : public ::testing::TestWithParam<Damage> {};

TEST_P(Recovery, SavesWhatIsLeftAndTellsTheRest) {
    Patient patient(sound());
    const Damage& damage = GetParam();
    damage.act(patient);
    CopyMachine machine(patient.bytes);
    const RecoveryCounts counts = machine.recover();
    SCOPED_TRACE(machine.told.lossText() + machine.told.notes);
    EXPECT_EQ(machine.files.readFile(kPath), patient.bytes);
    const auto target = machine.target();
    EXPECT_EQ(faultsOf(*target), "");
    const auto rows = rowsById(*target);
    EXPECT_EQ(soundRows().size() - rows.size(), damage.rowsMissing);
    EXPECT_EQ(rows.size(), counts.rows);
    std::size_t changed = 0;
    for (const auto& [id, text] : rows)
        changed += soundRows().at(id) != text ? 1U : 0U;
    EXPECT_EQ(changed, damage.fields);
    EXPECT_EQ(counts.pagesLost, damage.pages);
    EXPECT_EQ(counts.rowsLost, damage.rows);
    EXPECT_EQ(counts.fieldsLost, damage.fields);
    EXPECT_EQ(counts.otherLosses, damage.others);
    EXPECT_THAT(machine.told.lossText() + machine.told.notes, HasSubstr(damage.told));
}

PageNumber firstPage(Patient& patient) {
    return patient.pages(patient.definition().ownedMap).front();
}
PageNumber firstChainPage(Patient& patient) {
    const TableDefinition items = patient.definition();
    for (const PageNumber page : patient.pages(items.longValueMaps.at(0).owned))
        if (load32(patient.at(page, 8)) != 0)
            return page;
    throw std::out_of_range("no chain");
}
/// A row in the middle of the first page whose neighbours are plain rows, too.
RowId middleRow(Patient& patient) {
    const PageNumber page = firstPage(patient);
    for (std::uint8_t slot = 2; slot < 60; ++slot) {
        bool plain = true;
        for (int near = -1; near <= 1; ++near)
            plain = plain && load16(patient.slotEntry({page, static_cast<std::uint8_t>(slot + near)})) < 0x1000;
        if (plain)
            return {page, slot};
    }
    throw std::out_of_range("no such row");
}

INSTANTIATE_TEST_SUITE_P(
    Files, Recovery,
    ::testing::ValuesIn<Damage>({
        {"none", [](Patient&) {}, 0, 0, 0, 0, 0, ""},
        {"header", [](Patient& p) { overwrite(p, PageNumber{0}); }, 0, 0, 0, 0, 1, "header is damaged"},
        {"global_maps", [](Patient& p) { overwrite(p, PageNumber{1}); }, 0, 0, 0, 0, 0, ""},
        {"definition_of_the_catalog", [](Patient& p) { overwrite(p, kObjectsPage); }, 0, 0, 0, 0, 1,
         "the usual one is taken"},
        {"rows_of_the_catalog",
         [](Patient& p) { overwrite(p, p.pages(p.definition(u"MSysObjects").ownedMap).front()); }, 0, 1, 0, 0, 2,
         "its name is lost"},
        {"definition_of_the_table", [](Patient& p) { overwrite(p, p.definition().page); }, std::size_t{kRows} - 2, 0, 0,
         0, 1, "its definition cannot be read"},
        {"map_without_members",
         [](Patient& p) {
             const RowId map = p.definition().ownedMap;
             std::fill(p.record(map) + 5, p.recordEnd(map), std::byte{0});
         },
         0, 0, 0, 0, 0, "that its map does not name were read too"},
        {"name_of_an_index",
         [](Patient& p) {
             std::u16string_view from = u"urlidx", to = u"numidx";
             const std::string wanted(reinterpret_cast<const char*>(from.data()), 2 * from.size());
             p.bytes.replace(p.bytes.find(wanted), wanted.size(), reinterpret_cast<const char*>(to.data()),
                             wanted.size());
         },
         0, 0, 0, 0, 1, "the name that it had is lost"},
        {"map_of_others",
         [](Patient& p) {
             const RowId map = p.definition().ownedMap;
             std::fill(p.record(map) + 5, p.record(map) + 9, std::byte{0x7E}); // pages 1 to 30
         },
         0, 0, 0, 0, 0, "by looking at every page"},
        {"map_of_no_form", [](Patient& p) { *p.record(p.definition().ownedMap) = std::byte{77}; }, 0, 0, 0, 0, 0,
         "by looking at every page"},
        {"roots_of_indexes",
         [](Patient& p) {
             for (const PhysicalIndex& index : p.definition().physicalIndexes)
                 overwrite(p, index.root);
         },
         0, 0, 0, 0, 0, ""},
        {"place_of_a_row_found_by_its_layout", [](Patient& p) { store16(p.slotEntry(middleRow(p)), 0x0FFF); }, 0, 0, 0,
         0, 0, ""},
        {"places_of_two_rows",
         [](Patient& p) {
             const RowId row = middleRow(p);
             store16(p.slotEntry(row), 0x0FFF);
             store16(p.slotEntry({row.page, static_cast<std::uint8_t>(row.slot - 1)}), 0x0003);
         },
         0, 0, 0, 0, 0, ""},
        {"place_and_end_of_a_row",
         [](Patient& p) {
             const RowId row = middleRow(p);
             store16(p.recordEnd(row) - 3, 0x7777); // its number of variable columns, before one byte of null mask
             store16(p.slotEntry(row), 0x0003);
         },
         2, 0, 2, 0, 1, "its place in the page is not known"},
        {"layout_of_a_row",
         [](Patient& p) {
             const RowId row = middleRow(p);
             store16(p.record(row), 0x7777); // its number of columns
         },
         1, 0, 1, 0, 1, "null mask"},
        {"end_of_a_chain",
         [](Patient& p) {
             const PageNumber page = firstChainPage(p);
             const RowId next = RowId::unpack(load32(p.record({page, 0})));
             overwrite(p, next.page);
         },
         0, 0, 0, 1, 0, "shortened to 4072 bytes"},
        {"beginning_of_a_chain", [](Patient& p) { overwrite(p, firstChainPage(p)); }, 0, 0, 0, 1, 0,
         "nothing of it can be read"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

// What comes out of a file with a page of noise was in it: no row is made up, doubled or mixed, and what is missing is
// told.
TEST(Recovery, OfAnyPageLostMakesNothingUp) {
    for (std::uint32_t page = 0; page < sound().size() / kPageSize; ++page) {
        SCOPED_TRACE("page " + std::to_string(page));
        Patient patient(sound());
        overwrite(patient, PageNumber{page}, page);
        CopyMachine machine(patient.bytes);
        const RecoveryCounts counts = machine.recover();
        const auto rows = rowsById(*machine.target());
        std::size_t changed = 0;
        for (const auto& [id, text] : rows) {
            const auto before = soundRows().find(id);
            ASSERT_NE(before, soundRows().end());
            changed += before->second != text ? 1U : 0U;
        }
        EXPECT_EQ(changed, counts.fieldsLost) << machine.told.lossText();
        EXPECT_TRUE(rows.size() == soundRows().size() || !counts.everything());
    }
}

TEST(Recovery, OfAFileCutShortSavesThePagesBeforeTheCut) {
    const std::string large = Patient(600).bytes;
    const std::size_t all = CopyMachine(large).recover().rows;
    std::size_t before = 0, cuts = 0;
    for (std::size_t size = 3 * kPageSize; size < large.size(); size += 7 * kPageSize + 700) {
        SCOPED_TRACE(size);
        CopyMachine machine(large.substr(0, size));
        const RecoveryCounts counts = machine.recover();
        EXPECT_GE(counts.rows, before);
        EXPECT_LE(counts.rows, all);
        EXPECT_FALSE(counts.everything());
        before = counts.rows;
        cuts += counts.rows > 0 ? 1 : 0;
    }
    EXPECT_GT(cuts, 4U);
}

class RecoveryOfDamagedBytes : public ::testing::TestWithParam<std::uint32_t> {};

// Sanitizers watch; the new database is verified before it gets its name, so that a throw is the only way to fail.
TEST_P(RecoveryOfDamagedBytes, EndsInASoundDatabase) {
    std::mt19937 random(GetParam());
    for (int round = 0; round < 25; ++round) {
        Patient patient(sound());
        for (int change = 0; change < 200; ++change) {
            const PageNumber page{static_cast<std::uint32_t>(1 + random() % (sound().size() / kPageSize - 1))};
            const std::size_t at = random() % 2 == 0 ? random() % 96 : random() % kPageSize;
            *patient.at(page, at) = static_cast<std::byte>(random() % 256);
        }
        CopyMachine machine(patient.bytes);
        SCOPED_TRACE("round " + std::to_string(round));
        EXPECT_NO_THROW(machine.recover());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RecoveryOfDamagedBytes, ::testing::Range(1U, 5U));

// A disk that cannot give one page: the pages around it, read in the same go, are saved.
TEST(Recovery, GoesOnBehindAPageThatTheDiskDoesNotGive) {
    class BadSector final : public platform::RandomAccessFile {
    public:
        BadSector(std::unique_ptr<RandomAccessFile> file, std::uint64_t bad) : file_(std::move(file)), bad_(bad) {}
        std::uint64_t size() const override { return file_->size(); }
        std::size_t readAt(std::uint64_t offset, std::span<std::byte> buffer) const override {
            if (offset <= bad_ && bad_ < offset + buffer.size())
                throw platform::systemFailure("reading", kPath, 5);
            return file_->readAt(offset, buffer);
        }
        void writeAt(std::uint64_t, std::span<const std::byte>) override {}
        void truncate(std::uint64_t) override {}
        void sync() override {}
        std::string identity() const override { return file_->identity(); }

    private:
        std::unique_ptr<RandomAccessFile> file_;
        std::uint64_t bad_;
    };
    Machine machine;
    machine.files.writeFile(kPath, sound());
    Pager pager(machine.files, machine.clock, kPath,
                std::make_unique<BadSector>(machine.files.open(kPath, platform::OpenMode::Read), 20 * kPageSize + 9),
                {});
    std::size_t refused = 0;
    for (std::uint32_t page = 0; page < pager.pageCount(); ++page) {
        try {
            EXPECT_EQ(std::memcmp(pager.read(PageNumber{page}).data(), &sound()[page * kPageSize], kPageSize), 0);
        } catch (const platform::FileError&) {
            EXPECT_EQ(page, 20U);
            ++refused;
        }
    }
    EXPECT_EQ(refused, 1U);
}

// The place of slot 0 is lost, so records are looked for from the end of the page. What lies there has the layout of
// one with a null mask of three bytes, but says itself that its mask has one, and before that one stands a count of
// 65,535.
TEST(SalvageSlots, ARecordThatContradictsItsOwnEndIsNone) {
    TableDefinition table;
    table.maxColumns = 20;
    table.varColumns = 1;
    table.columns.resize(2);
    table.columns[0].type = ColumnType::Long;
    table.columns[0].flags = 3;
    table.columns[0].length = 4;
    table.columns[1].number = 19;
    table.columns[1].flags = 2;

    PagerFixture f;
    f.open();
    Pager::Operation operation(*f.pager);
    PageEdit page = f.pager->append();
    DataPageEditor::format(page, 7);
    store16(page.data() + 12, 1);
    store16(page.data() + 14, 3);
    constexpr std::size_t kRecord = 4096 - 20;
    store16(page.data() + kRecord, 8);           // columns
    store16(page.data() + kRecord + 13, 13);     // end of the variable data
    store16(page.data() + kRecord + 17, 0xFFFF); // variable columns, for a mask of one byte
    const auto slots = salvageSlots(page, table);
    ASSERT_EQ(slots.size(), 1U);
    EXPECT_EQ(slots[0].fault, "its place in the page is not known");
}

TEST(Recovery, RefusesWhatIsNoDatabaseAndWhatIsSealed) {
    std::string noise(20 * kPageSize, 'x');
    std::string withPassword = sound();
    withPassword[0x42] = static_cast<char>(withPassword[0x42] ^ 1);
    std::string encrypted = noise;
    encrypted.replace(0, kPageSize, sound(), 0, kPageSize);
    encrypted[0x3E] = static_cast<char>(encrypted[0x3E] ^ 1);
    for (const auto& [bytes, kind] : {std::pair(noise, Error::Kind::NotADatabase),
                                      {withPassword, Error::Kind::PasswordProtected},
                                      {encrypted, Error::Kind::Encrypted}}) {
        CopyMachine machine(bytes);
        const std::string message = refusal([&] { machine.recover(); }, kind);
        EXPECT_THAT(message, HasSubstr("base.mdb"));
        EXPECT_THAT(message, ::testing::Not(HasSubstr("another kind")));
        EXPECT_TRUE(machine.leftNothing());
    }
}

} // namespace
} // namespace kelb::jet::testing
