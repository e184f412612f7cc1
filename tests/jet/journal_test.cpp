#include "jet/journal.h"

#include "jet/byte_order.h"

#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace kelb::jet {
namespace {

using testing::kPath;
using testing::PagerFixture;

/// A database "aXcXe" as a kill left it: pages 1 and 3 of "abcd" were changed, one page was added, and the journal
/// still lies beside it.
class JournalTest : public ::testing::Test {
protected:
    JournalTest() : f("aXcXe") {
        const auto page = [](char letter) { return std::vector<std::byte>(kPageSize, static_cast<std::byte>(letter)); };
        JournalWriter writer(
            f.files, kPath,
            {.pageSize = kPageSize, .pagesBefore = 4, .entries = 2, .headerPageSum = journalChecksum(page('a'), 0)});
        writer.add(PageNumber{1}, page('b'));
        writer.add(PageNumber{3}, page('d'));
        writer.finish();
        journal = f.files.readFile(path);
    }
    PagerFixture f;
    std::u16string path = journalPath(kPath);
    std::string journal;
};

TEST_F(JournalTest, AWholeOneIsPlayedBackByAWriter) {
    f.open();
    EXPECT_EQ(f.seen(), "abcd");
    f.close();
    EXPECT_EQ(f.inFile(), "abcd");
    EXPECT_FALSE(f.files.fileExists(path));
}

TEST_F(JournalTest, AWholeOneIsLaidOverTheFileForReadersAndDryRuns) {
    for (const auto access : {Pager::Access::Read, Pager::Access::Scratch}) {
        f.open(access);
        EXPECT_EQ(f.seen(), "abcd");
        f.close();
        EXPECT_EQ(f.inFile(), "aXcXe");
        EXPECT_EQ(f.files.readFile(path), journal);
    }
}

TEST_F(JournalTest, ADryRunGoesOnFromTheOldState) {
    f.open(Pager::Access::Scratch);
    Pager::Operation operation(*f.pager);
    f.put(3, 'D');
    f.append('n');
    operation.done();
    f.pager->commit();
    EXPECT_EQ(f.seen(), "abcDn");
    f.close();
    EXPECT_EQ(f.inFile(), "aXcXe");
}

TEST_F(JournalTest, OneCutShortBelongsToACommitThatHadNotBegun) {
    const std::size_t entry = 4 + kPageSize + 8;
    std::set<std::size_t> cuts;
    for (std::size_t i = 0; i <= kJournalHeader; ++i)
        cuts.insert(i);
    for (const std::size_t end : {kJournalHeader + entry, kJournalHeader + 2 * entry})
        for (std::size_t back = 1; back < 16; ++back)
            cuts.insert(end - back);
    for (const std::size_t cut : cuts) {
        f.files.writeFile(path, std::string_view(journal).substr(0, cut));
        f.open();
        EXPECT_EQ(f.seen(), "aXcXe") << cut;
        EXPECT_FALSE(f.files.fileExists(path)) << cut;
    }
}

TEST_F(JournalTest, AChangedByteAnywhereMakesItVoid) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < kJournalHeader + 4; ++i)
        places.push_back(i);
    for (std::size_t i = kJournalHeader + 4; i < journal.size(); i += 97)
        places.push_back(i);
    for (std::size_t i = journal.size() - 16; i < journal.size(); ++i)
        places.push_back(i);
    for (const std::size_t place : places) {
        std::string damaged = journal;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x20);
        f.files.writeFile(path, damaged);
        f.open();
        EXPECT_EQ(f.seen(), "aXcXe") << place;
        f.close();
    }
}

TEST_F(JournalTest, OneThatATornWriteMixedUpIsVoid) {
    const std::size_t entry = 4 + kPageSize + 8;
    const std::string swapped = journal.substr(0, kJournalHeader) + journal.substr(kJournalHeader + entry, entry) +
                                journal.substr(kJournalHeader, entry);
    f.files.writeFile(path, swapped);
    f.open();
    EXPECT_EQ(f.seen(), "aXcXe");
}

TEST_F(JournalTest, AReaderLeavesATornOneAlone) {
    f.files.writeFile(path, "half");
    f.open(Pager::Access::Read);
    EXPECT_EQ(f.seen(), "aXcXe");
    EXPECT_TRUE(f.files.fileExists(path));
}

TEST_F(JournalTest, OneOfAReplacedDatabaseIsRefusedAndNothingTouched) {
    for (const std::string letters : {"BXcXe", "aX"}) { // another first page; shorter than it can have been
        std::string bytes;
        for (const char letter : letters)
            bytes.append(kPageSize, letter);
        f.files.writeFile(kPath, bytes);
        for (const auto access : {Pager::Access::Write, Pager::Access::Read}) {
            try {
                f.open(access);
                FAIL() << letters;
            } catch (const Error& error) {
                EXPECT_EQ(error.kind(), Error::Kind::Corrupt);
                EXPECT_NE(std::string(error.what()).find("kelb-journal"), std::string::npos);
            }
        }
        EXPECT_EQ(f.inFile(), letters);
        EXPECT_EQ(f.files.readFile(path), journal);
    }
}

TEST_F(JournalTest, OneOfPagesOfAnotherSizeIsRefusedAndNothingTouched) {
    f.files.removeFile(path);
    JournalWriter writer(f.files, kPath,
                         {.pageSize = kJet3PageSize, .pagesBefore = 4, .entries = 1, .headerPageSum = 0});
    writer.add(PageNumber{1}, std::vector<std::byte>(kJet3PageSize, std::byte{'b'}));
    writer.finish();
    for (const auto access : {Pager::Access::Write, Pager::Access::Read}) {
        EXPECT_THROW(
            {
                f.open(access);
                static_cast<void>(f.seen());
            },
            Error);
        EXPECT_EQ(f.inFile(), "aXcXe");
        EXPECT_TRUE(f.files.fileExists(path));
    }
}

/// Once with a disk that fails a single time, once with one that is off from then on and loses what was not synced.
TEST_F(JournalTest, PlayingBackMayItselfBeCutOffAnywhere) {
    for (const bool powerCut : {false, true}) {
        for (int nth = 0;; ++nth) {
            PagerFixture again("aXcXe");
            again.files.writeFile(path, journal);
            for (const std::u16string& file : {kPath, path})
                again.files.open(file, platform::OpenMode::ReadWrite)->sync();
            int left = nth;
            std::map<std::u16string, std::string> disk;
            again.files.beforeOperation = [&](std::string_view operation, std::u16string_view where) {
                if (left-- > 0 || (left < -1 && !powerCut))
                    return;
                if (disk.empty())
                    disk = again.files.afterPowerCut([](std::size_t) { return false; });
                throw platform::FileError(platform::FileError::Kind::Other, operation, where, 5, "input/output error");
            };
            bool failed = false;
            try {
                again.open();
            } catch (const platform::FileError&) {
                failed = true;
            }
            again.files.beforeOperation = nullptr;
            again.close();
            if (failed && powerCut)
                for (const std::u16string& file : {kPath, path}) {
                    if (again.files.fileExists(file))
                        again.files.removeFile(file);
                    if (const auto kept = disk.find(file); kept != disk.end())
                        again.files.writeFile(file, kept->second);
                }
            again.open();
            EXPECT_EQ(again.seen(), "abcd") << nth;
            ASSERT_LT(nth, 100);
            if (!failed)
                break;
        }
    }
}

} // namespace
} // namespace kelb::jet
