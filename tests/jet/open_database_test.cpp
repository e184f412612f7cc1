#include "jet/database.h"

#include "jet/journal.h"

#include "tests/jet/database_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace kelb::jet {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using namespace testing;
using Kind = Error::Kind;
using Access = Pager::Access;

std::string emptyFile() {
    Machine machine;
    machine.create();
    return machine.files.readFile(kPath);
}

struct BadFile {
    const char* name;
    std::function<void(std::string&)> change; ///< of an empty database
    Access access;
    Kind kind;
    const char* text;
};
class RefusedFile : public ::testing::TestWithParam<BadFile> {};

TEST_P(RefusedFile, SaysWhyAndLeavesItAlone) {
    Machine machine;
    std::string bytes = emptyFile();
    GetParam().change(bytes);
    machine.files.writeFile(kPath, bytes);
    const std::string text = refusal([&] { machine.open(GetParam().access); }, GetParam().kind);
    EXPECT_THAT(text, StartsWith("base.mdb "));
    EXPECT_THAT(text, HasSubstr(GetParam().text));
    EXPECT_EQ(machine.files.readFile(kPath), bytes);
}

void setVersion(std::string& bytes, char version) {
    bytes[0x14] = version;
}
/// An Access 97 header whose masked block is all zero in the clear.
void makeJet3(std::string& bytes) {
    setVersion(bytes, 0);
    constexpr unsigned char kPassword[20] = {0x86, 0xFB, 0xEC, 0x37, 0x5D, 0x44, 0x9C, 0xFA, 0xC6, 0x5E,
                                             0x28, 0xE6, 0x13, 0xB6, 0x8A, 0x60, 0x54, 0x94, 0x7B, 0x36};
    for (std::size_t i = 0; i < sizeof kPassword; ++i)
        bytes[0x42 + i] = static_cast<char>(kPassword[i]);
}

const BadFile kBadFiles[] = {
    BadFile{"empty", [](std::string& b) { b.clear(); }, Access::Read, Kind::NotADatabase, "is empty"},
    BadFile{"cut_in_the_header", [](std::string& b) { b.resize(100); }, Access::Write, Kind::NotADatabase, "too short"},
    BadFile{"cut_in_the_first_page", [](std::string& b) { b.resize(4095); }, Access::Read, Kind::NotADatabase,
            "too short"},
    BadFile{"a_text", [](std::string& b) { b.assign(5000, 'x'); }, Access::Read, Kind::NotADatabase,
            "is not an Access database"},
    BadFile{"another_magic", [](std::string& b) { b[1] = 2; }, Access::Read, Kind::NotADatabase,
            "is not an Access database"},
    BadFile{"money", [](std::string& b) { b.replace(4, 15, "MSISAM Database"); }, Access::Read,
            Kind::UnsupportedVersion, "Money"},
    BadFile{"unknown_version", [](std::string& b) { setVersion(b, 7); }, Access::Read, Kind::UnsupportedVersion,
            "version 7"},
    BadFile{"encrypted", [](std::string& b) { b[0x3F] = static_cast<char>(b[0x3F] ^ 1); }, Access::Read,
            Kind::Encrypted, "encrypted"},
    BadFile{"with_password", [](std::string& b) { b[0x42] = static_cast<char>(b[0x42] ^ 'p'); }, Access::Read,
            Kind::PasswordProtected, "password"},
    BadFile{"password_of_twenty", [](std::string& b) { b[0x68] = static_cast<char>(b[0x68] ^ 'p'); }, Access::Read,
            Kind::PasswordProtected, "password"},
    BadFile{"access_97_for_writing", makeJet3, Access::Write, Kind::UnsupportedVersion,
            "Access 97: it can be read but not written; convert it to the Access 2000 format"},
    BadFile{"access_2010_for_writing",
            [](std::string& b) {
                setVersion(b, 3);
                b.replace(4, 15, "Standard ACE DB");
            },
            Access::Write, Kind::UnsupportedVersion, "Access 2007 or later"},
    BadFile{"access_2010_for_a_dry_run", [](std::string& b) { setVersion(b, 3); }, Access::Scratch,
            Kind::UnsupportedVersion, "Access 2007 or later"}};

INSTANTIATE_TEST_SUITE_P(Headers, RefusedFile, ::testing::ValuesIn(kBadFiles),
                         [](const auto& file) { return std::string(file.param.name); });

TEST(OpenDatabase, OneWriterOrManyReaders) {
    Machine machine;
    auto writer = machine.create();
    for (const Access access : {Access::Write, Access::Read, Access::Scratch})
        EXPECT_THAT(refusal([&] { machine.open(access); }, Kind::InUse),
                    StartsWith("base.mdb is open in another program; close it there"));
    writer.reset();
    auto reader = machine.open(Access::Read), other = machine.open(Access::Scratch);
    EXPECT_THAT(refusal([&] { machine.open(Access::Write); }, Kind::InUse), HasSubstr("open in another program"));
}

TEST(OpenDatabase, ALockFileOfAccessForbidsWritingUnlessItIsIgnored) {
    for (const std::u16string lock : {u"BASE.LDB", u"base.laccdb"}) {
        Machine machine;
        machine.create();
        machine.files.writeFile(lock, "");
        EXPECT_THAT(refusal([&] { machine.open(); }, Kind::InUse), HasSubstr("--force"));
        machine.open(Access::Read);
        EXPECT_TRUE(machine.open(Access::Write, true)->writable());
    }
}

TEST(OpenDatabase, AReadOnlyFileIsReadAndNotWritten) {
    Machine machine;
    machine.create();
    machine.files.setReadOnly(kPath);
    EXPECT_EQ(machine.open(Access::Read)->catalog().size(), 8U);
    try {
        machine.open();
        FAIL();
    } catch (const platform::FileError& error) {
        EXPECT_EQ(error.kind(), platform::FileError::Kind::AccessDenied);
    }
}

TEST(OpenDatabase, AJournalOfAKillIsPlayedBackBeforeTheHeaderIsRead) {
    Machine machine;
    machine.create();
    const std::string good = machine.files.readFile(kPath);
    const auto pages = std::as_bytes(std::span(good));
    JournalWriter journal(machine.files, kPath,
                          {.pageSize = kPageSize,
                           .pagesBefore = 16,
                           .entries = 1,
                           .headerPageSum = journalChecksum(pages.first(kPageSize), 0)});
    journal.add(PageNumber{2}, pages.subspan(2 * kPageSize, kPageSize));
    journal.finish();
    std::string torn = good + std::string(kPageSize + 100, 'n');
    torn.replace(2 * kPageSize, kPageSize, std::string(kPageSize, 't'));
    machine.files.writeFile(kPath, torn);
    EXPECT_EQ(machine.open(Access::Read)->catalog().size(), 8U);
    EXPECT_EQ(machine.open(Access::Write)->catalog().size(), 8U);
    EXPECT_EQ(machine.files.readFile(kPath), good);
}

TEST(CreateDatabase, DoesNotOverwriteAndForgetsTheJournalOfADeletedOne) {
    Machine machine;
    machine.files.writeFile(journalPath(kPath), "of a database that is gone");
    machine.create();
    try {
        machine.create();
        FAIL();
    } catch (const platform::FileError& error) {
        EXPECT_EQ(error.kind(), platform::FileError::Kind::AlreadyExists);
    }
    const auto database = machine.open(Access::Read);
    EXPECT_EQ(database->dialect(), Dialect::Jet4);
    EXPECT_EQ(database->codePage(), 1252);
    EXPECT_EQ(database->sortOrder(), SortOrder{});
    EXPECT_FALSE(database->writable());
    for (const CatalogEntry& entry : database->catalog())
        EXPECT_FALSE(entry.isUserTable());
    EXPECT_TRUE(database->hasTable(u"msysOBJECTS"));
}

} // namespace
} // namespace kelb::jet
