#include "jet/pager.h"

#include "jet/journal.h"

#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace kelb::jet {
namespace {

using testing::kPath;
using testing::PagerFixture;
using Access = Pager::Access;

TEST(Pager, ChangesReachTheFileAtCommitAndNotBefore) {
    PagerFixture f("abc");
    f.open();
    {
        Pager::Operation operation(*f.pager);
        f.put(1, 'B');
        f.append('d');
        operation.done();
    }
    EXPECT_EQ(f.seen(), "aBcd");
    EXPECT_EQ(f.inFile(), "abc");
    f.pager->commit();
    EXPECT_EQ(f.inFile(), "aBcd");
    EXPECT_FALSE(f.files.fileExists(journalPath(kPath)));
    EXPECT_FALSE(f.pager->hasChanges());
}

TEST(Pager, ClosingDropsWhatWasNotCommitted) {
    PagerFixture f("ab");
    f.open();
    Pager::Operation(*f.pager).done();
    {
        Pager::Operation operation(*f.pager);
        f.put(0, 'X');
        operation.done();
    }
    f.close();
    EXPECT_EQ(f.inFile(), "ab");
}

TEST(Pager, AnAbortedOperationPutsBackPagesLengthAndCleanliness) {
    PagerFixture f("abc");
    f.open();
    {
        Pager::Operation operation(*f.pager);
        f.put(2, 'C');
        operation.done();
    }
    const std::uint64_t epoch = f.pager->epoch();
    {
        Pager::Operation operation(*f.pager);
        f.put(0, 'X');
        f.put(0, 'Y');
        f.put(2, 'Z');
        f.append('e');
        PagerFixture::fill(f.pager->editZeroed(PageNumber{1}), 'W');
    }
    EXPECT_EQ(f.seen(), "abC");
    EXPECT_GT(f.pager->epoch(), epoch);
    f.pager->commit();
    EXPECT_EQ(f.inFile(), "abC");
}

TEST(Pager, AnInnerOperationIsUndoneAloneOrWithTheOuterOne) {
    PagerFixture f("abc");
    f.open();
    {
        Pager::Operation outer(*f.pager);
        f.put(0, 'A');
        {
            Pager::Operation inner(*f.pager);
            f.put(0, 'X');
            f.put(1, 'X');
            f.append('X');
        }
        EXPECT_EQ(f.seen(), "Abc");
        {
            Pager::Operation inner(*f.pager);
            f.put(0, '1');
            f.put(1, '2');
            f.append('3');
            inner.done();
        }
        f.put(1, '4');
        outer.done();
    }
    EXPECT_EQ(f.seen(), "14c3");
    {
        Pager::Operation outer(*f.pager);
        {
            Pager::Operation inner(*f.pager);
            f.put(0, 'X');
            f.put(2, 'X');
            f.append('X');
            inner.done();
        }
        f.put(2, 'Y');
    }
    EXPECT_EQ(f.seen(), "14c3");
}

TEST(Pager, RollbackGoesBackToTheOutermostBegin) {
    PagerFixture f("abc");
    f.open();
    const auto put = [&f](std::uint32_t page, char letter) {
        Pager::Operation operation(*f.pager);
        f.put(page, letter);
        operation.done();
    };
    put(0, 'A');
    f.pager->beginTransaction();
    EXPECT_EQ(f.inFile(), "Abc") << "what was there before is kept";
    put(1, 'B');
    f.pager->beginTransaction();
    put(2, 'C');
    f.pager->commitTransaction();
    f.pager->commit();
    EXPECT_EQ(f.inFile(), "Abc") << "an inner end and a commit inside save nothing";
    f.pager->rollbackTransaction();
    EXPECT_EQ(f.seen(), "Abc");
    f.pager->beginTransaction();
    put(2, 'C');
    f.pager->commitTransaction();
    EXPECT_EQ(f.inFile(), "AbC");
}

TEST(Pager, OldChangesAreSavedByTheNextOperationOutsideATransaction) {
    PagerFixture f("ab");
    f.options.commitSeconds = 0.5;
    f.open();
    const auto put = [&f](char letter) {
        Pager::Operation operation(*f.pager);
        f.put(0, letter);
        operation.done();
    };
    put('1');
    f.clock.seconds += 0.4;
    put('2');
    EXPECT_EQ(f.inFile(), "ab");
    f.clock.seconds += 0.2; // the age counts from the first change
    put('3');
    EXPECT_EQ(f.inFile(), "3b");
    f.pager->beginTransaction();
    put('4');
    f.clock.seconds += 9;
    put('5');
    f.pager->commitIfDue();
    EXPECT_EQ(f.inFile(), "3b");
    f.pager->commitTransaction();
    EXPECT_EQ(f.inFile(), "5b");
}

TEST(Pager, ManyChangesAreSavedEarlyButNeverInsideATransaction) {
    PagerFixture f("a");
    f.options.maxDirtyBytes = 3 * kPageSize;
    f.open();
    f.pager->beginTransaction();
    const auto append = [&f] {
        Pager::Operation operation(*f.pager);
        f.append('x');
        operation.done();
    };
    for (int i = 0; i < 5; ++i)
        append();
    EXPECT_EQ(f.inFile(), "a");
    f.pager->commitTransaction();
    for (int i = 0; i < 3; ++i)
        append();
    EXPECT_EQ(f.inFile(), "axxxxx");
    append();
    EXPECT_EQ(f.inFile(), "axxxxxxxxx");
}

TEST(Pager, ReadingForwardTakesFewReadsAndBoundedMemory) {
    PagerFixture f(std::string(1000, 'p'));
    f.options.cacheBytes = 64 * kPageSize;
    f.open(Access::Read);
    std::size_t reads = 0;
    f.files.beforeOperation = [&reads](std::string_view operation, std::u16string_view) {
        reads += operation == "read";
    };
    EXPECT_EQ(f.seen(), std::string(1000, 'p'));
    EXPECT_LT(reads, 1000U / 8);
    reads = 0;
    f.pager->read(PageNumber{0});
    EXPECT_EQ(reads, 1U) << "64 of 1000 pages are kept, the first is not among them";
    f.pager->read(PageNumber{0});
    EXPECT_EQ(reads, 1U);
}

TEST(Pager, APinnedPageStaysWhereItIs) {
    PagerFixture f(std::string(500, 'p'));
    f.options.cacheBytes = 16 * kPageSize;
    f.open();
    const PageRef pinned = f.pager->read(PageNumber{3});
    const std::byte* place = pinned.data();
    EXPECT_EQ(f.seen().size(), 500U);
    Pager::Operation operation(*f.pager);
    f.put(3, 'Q');
    EXPECT_EQ(pinned.data(), place);
    EXPECT_EQ(PagerFixture::letterOf(pinned.bytes()), 'Q');
    operation.done();
}

TEST(Pager, ScratchChangesAreReadBackAndNeverReachTheFile) {
    PagerFixture f("abcd");
    f.options.cacheBytes = 0;
    f.open(Access::Scratch);
    for (int round = 0; round < 2; ++round) {
        Pager::Operation operation(*f.pager);
        f.put(1, round == 0 ? 'x' : 'y');
        f.append('n');
        operation.done();
        f.pager->commit();
    }
    for (int i = 0; i < 100; ++i) { // pushes the changed pages out of the cache
        Pager::Operation operation(*f.pager);
        f.append('m');
        operation.done();
        f.pager->commit();
    }
    EXPECT_EQ(f.seen(), "aycdnn" + std::string(100, 'm'));
    EXPECT_EQ(f.inFile(), "abcd");
    EXPECT_FALSE(f.files.fileExists(journalPath(kPath)));
}

TEST(Pager, RefusesChangesWhenOpenForReading) {
    PagerFixture f("ab");
    f.open(Access::Read);
    Pager::Operation operation(*f.pager);
    try {
        f.put(0, 'x');
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), Error::Kind::ReadOnly);
        EXPECT_NE(std::string(error.what()).find("base.mdb"), std::string::npos);
    }
}

TEST(Pager, APartialPageIsIgnoredInReadingAndRefusedInWriting) {
    PagerFixture f("ab");
    f.files.appendFile(kPath, "torn");
    f.open(Access::Read);
    EXPECT_EQ(f.seen(), "ab");
    f.close();
    EXPECT_THROW(f.open(Access::Write), CorruptFile);
}

TEST(Pager, APageNumberPastTheEndIsDamage) {
    PagerFixture f("ab");
    f.open();
    try {
        f.pager->read(PageNumber{2});
        FAIL();
    } catch (const CorruptFile& error) {
        EXPECT_EQ(error.page(), PageNumber{2});
    }
    Pager::Operation operation(*f.pager);
    EXPECT_THROW(f.pager->edit(PageNumber{0xFFFFFF}), CorruptFile);
    EXPECT_THROW(f.pager->editZeroed(PageNumber{2}), CorruptFile);
    operation.done();
    EXPECT_EQ(f.seen(), "ab");
}

/// A file of the largest size that is nothing but zeros.
class FullFile final : public platform::RandomAccessFile {
public:
    std::uint64_t size() const override { return std::uint64_t{kMaxPages} * kPageSize; }
    std::size_t readAt(std::uint64_t, std::span<std::byte> buffer) const override { return buffer.size(); }
    void writeAt(std::uint64_t, std::span<const std::byte>) override {}
    void truncate(std::uint64_t) override {}
    void sync() override {}
    std::string identity() const override { return "full"; }
};

TEST(Pager, NoPageIsAddedPastTwoGigabytes) {
    platform::MemoryFileSystem files;
    testing::ManualClock clock;
    Pager::Options options;
    options.access = Access::Write;
    Pager pager(files, clock, kPath, std::make_unique<FullFile>(), options);
    Pager::Operation operation(pager);
    try {
        pager.append();
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), Error::Kind::FileFull);
    }
    EXPECT_EQ(pager.pageCount(), kMaxPages);
}

TEST(Pager, AFailedCommitLeavesTheOldOrTheNewFileAndEndsTheUse) {
    for (int nth = 0;; ++nth) {
        PagerFixture f("abc");
        f.open();
        {
            Pager::Operation operation(*f.pager);
            f.put(0, 'A');
            f.put(1, 'B');
            f.append('d');
            operation.done();
        }
        int left = nth;
        f.files.beforeOperation = [&left](std::string_view operation, std::u16string_view path) {
            if (left-- == 0)
                throw platform::FileError(platform::FileError::Kind::NoSpace, operation, path, 28, "disk full");
        };
        bool failed = false;
        try {
            f.pager->commit();
        } catch (const platform::FileError& error) {
            failed = true;
            EXPECT_EQ(error.kind(), platform::FileError::Kind::NoSpace);
        }
        f.files.beforeOperation = nullptr;
        EXPECT_FALSE(f.files.fileExists(journalPath(kPath))) << nth << ": the file is mended at once";
        if (!failed) {
            EXPECT_GE(nth, 8) << "journal, pages, their syncs and the removal can all fail";
            return;
        }
        EXPECT_THROW(f.pager->read(PageNumber{0}), platform::FileError) << nth;
        EXPECT_THROW(f.pager->commit(), platform::FileError) << nth;
        const std::string state = f.inFile();
        EXPECT_TRUE(state == "abc" || state == "ABcd") << nth << ": " << state;
        f.open();
        EXPECT_EQ(f.seen(), state);
        ASSERT_LT(nth, 100);
    }
}

/// Random operations on a pager with hardly any cache and on a plain string must give the same pages.
class PagerModel : public ::testing::TestWithParam<std::size_t> {};

TEST_P(PagerModel, AgreesWithAString) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const auto pick = [&random](std::size_t below) { return static_cast<std::uint32_t>(random() % below); };

    PagerFixture f(std::string(40, 'a'), GetParam());
    f.options.cacheBytes = 0;
    f.open();
    std::string model(40, 'a'), committed = model;
    bool transaction = false;

    const auto change = [&](auto&& self, int depth) -> void {
        Pager::Operation operation(*f.pager);
        const std::string before = model;
        for (std::uint32_t i = pick(6); i-- > 0;) {
            const char letter = static_cast<char>('a' + pick(26));
            const std::uint32_t page = pick(model.size());
            switch (pick(4)) {
            case 0:
                f.append(letter);
                model += letter;
                break;
            case 1:
                PagerFixture::fill(f.pager->editZeroed(PageNumber{page}), letter);
                model[page] = letter;
                break;
            default:
                f.put(page, letter);
                model[page] = letter;
            }
            if (depth < 3 && pick(4) == 0)
                self(self, depth + 1);
        }
        if (pick(3) == 0)
            model = before;
        else
            operation.done();
    };
    for (int step = 0; step < 600; ++step) {
        change(change, 1);
        if (pick(8) == 0 && !transaction) {
            f.pager->beginTransaction();
            committed = model;
            transaction = true;
        } else if (pick(8) == 0 && transaction) {
            transaction = false;
            if (pick(2) == 0) {
                f.pager->rollbackTransaction();
                model = committed;
            } else {
                f.pager->commitTransaction();
            }
        } else if (pick(20) == 0) {
            f.pager->commit();
        }
        const std::uint32_t page = pick(model.size());
        ASSERT_EQ(PagerFixture::letterOf(f.pager->read(PageNumber{page}).bytes()), model[page]);
        ASSERT_EQ(f.pager->pageCount(), model.size());
    }
    ASSERT_EQ(f.seen(), model);
    if (transaction)
        f.pager->commitTransaction();
    f.pager->commit();
    EXPECT_EQ(f.inFile(), model);
}

INSTANTIATE_TEST_SUITE_P(PageSizes, PagerModel, ::testing::Values(kPageSize, kJet3PageSize));

} // namespace
} // namespace kelb::jet
