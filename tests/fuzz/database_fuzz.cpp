#include "jet/journal.h"

#include "tests/fuzz/fuzz_machine.h"
#include "tests/jet/damaged_use.h"

#include <span>

/// Databases damaged in any way, opened, checked, read and changed.
///
/// An input is one byte that chooses the database (bit 0) and whether a journal lies beside it (bit 1), then changes to
/// the bytes of both files together: kind, page (2 bytes), offset (2 bytes), count, and for kind 0 `count` bytes.
/// An input that begins with "\x00\x01\x00\x00" is a database as it stands.
namespace kelb::fuzz {
namespace {

using namespace jet;
using namespace jet::testing;

constexpr std::string_view kFileBegin("\x00\x01\x00\x00", 4);

/// A table with a column of every type, small.
std::string everyType() {
    Machine machine;
    const auto database = machine.create();
    NewTable wanted{u"Items", {}, {{.name = u"key", .columns = {{u"url"}, {u"date"}}}}};
    for (const auto& [name, type] : {std::pair{u"url", ColumnType::Text},
                                     {u"note", ColumnType::Memo},
                                     {u"date", ColumnType::DateTime},
                                     {u"flag", ColumnType::YesNo},
                                     {u"byte", ColumnType::Byte},
                                     {u"int", ColumnType::Integer},
                                     {u"float", ColumnType::Single},
                                     {u"double", ColumnType::Double},
                                     {u"money", ColumnType::Currency},
                                     {u"guid", ColumnType::Guid},
                                     {u"num", ColumnType::Numeric},
                                     {u"bin", ColumnType::Binary},
                                     {u"ole", ColumnType::Ole}})
        wanted.columns.push_back(newColumn(name, type));
    Table& table = database->createTable(wanted);
    for (int i = 0; i < 12; ++i)
        insertRow(table, {u"http://" + std::u16string(1, static_cast<char16_t>(u'a' + i)), std::u16string(90, u'记'),
                          OleDate{40000.5}, i % 2 == 0, std::uint8_t{7}, std::int16_t{-3}, 1.5F, 2.5, Currency{12345},
                          Guid{}, Decimal{}, Binary(9, std::byte{1}), Binary(i % 4 == 0 ? 5000U : 30U, std::byte{2})});
    database->commit();
    return machine.files.readFile(kPath);
}

/// The first pages of a database as a journal's: as if a kill had come in the middle of a commit.
std::string journalOf(const std::string& database) {
    platform::MemoryFileSystem files;
    const auto page = [&](std::size_t number) {
        return std::as_bytes(std::span(database)).subspan(number * kPageSize, kPageSize);
    };
    JournalWriter writer(files, kPath,
                         {.pageSize = kPageSize,
                          .pagesBefore = static_cast<std::uint32_t>(database.size() / kPageSize),
                          .entries = 2,
                          .headerPageSum = journalChecksum(page(0), 0)});
    writer.add(PageNumber{2}, page(2));
    writer.add(PageNumber{5}, page(5));
    writer.finish();
    return files.readFile(journalPath(kPath));
}

/// The next bytes of the input; zeros behind its end.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}
    bool empty() const { return bytes_.empty(); }
    std::size_t byte() { return static_cast<unsigned char>(some(1).append(1, '\0')[0]); }
    std::size_t word() { return byte() | byte() << 8; }
    std::string some(std::size_t count) {
        std::string taken(bytes_.substr(0, count));
        bytes_.remove_prefix(taken.size());
        return taken;
    }

private:
    std::string_view bytes_;
};

void damage(std::string& both, Bytes& input) {
    for (int changes = 0; !input.empty() && changes < 64 && !both.empty(); ++changes) {
        const std::size_t kind = input.byte(), page = input.word(), offset = input.word() % kPageSize;
        const std::size_t count = input.byte(), pages = both.size() / kPageSize + 1;
        const std::size_t at = std::min(page % pages * kPageSize + offset, both.size());
        switch (kind % 4) {
        case 0: {
            const std::string bytes = input.some(count);
            both.replace(at, std::min(bytes.size(), both.size() - at), bytes);
            break;
        }
        case 1: // a page takes the place of another one
            both.replace(at / kPageSize * kPageSize, kPageSize, both, count % pages * kPageSize, kPageSize);
            break;
        case 2:
            both.replace(at, std::min(count * 16, both.size() - at), count * 16, static_cast<char>(offset));
            break;
        default:
            both.resize(at); // cut short
            break;
        }
    }
}

void openAndUse(const std::string& database, const std::string& journal, Pager::Access access) {
    Machine machine;
    machine.files.writeFile(kPath, database);
    if (!journal.empty())
        machine.files.writeFile(journalPath(kPath), journal);
    try {
        const auto opened = machine.open(access);
        if (access == Pager::Access::Read) {
            static_cast<void>(verify(*opened));
            readAll(*opened);
            require(machine.files.readFile(kPath) == database, "reading changes nothing");
        } else {
            useDamaged(*opened);
            static_cast<void>(verify(*opened));
            opened->commit();
        }
    } catch (const Error&) { // opening it, or playing back its journal
    }
}

} // namespace
} // namespace kelb::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kelb::fuzz;
    static const std::array<std::string, 2> sound{Patient(40).bytes, everyType()};
    static const std::array<std::string, 2> journals{journalOf(sound[0]), journalOf(sound[1])};
    std::string database, journal;
    if (const std::string_view text = asText(data, size); text.starts_with(kFileBegin)) {
        database = text;
    } else {
        Bytes input(text);
        const std::size_t choice = input.byte();
        database = sound[choice & 1];
        const std::size_t length = database.size();
        if ((choice & 2) != 0)
            database += journals[choice & 1];
        damage(database, input);
        if ((choice & 2) != 0 && database.size() > length) {
            journal = database.substr(length);
            database.resize(length);
        }
    }
    for (const auto access : {Pager::Access::Read, Pager::Access::Write})
        openAndUse(database, journal, access);
    return 0;
}
