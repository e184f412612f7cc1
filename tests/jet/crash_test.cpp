#include "jet/database.h"
#include "jet/journal.h"

#include "tests/jet/database_fixture.h"
#include "tests/platform/interposed_file_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <random>
#include <set>
#include <vector>

/// What is left of a database when a disk fails, is full, or loses its power in the middle of work; tests/kill does the
/// same to a program that is killed.
namespace kelb::jet {
namespace {

using namespace testing;
using platform::FileError;
using ::testing::HasSubstr;

/// One disk and the database on it as one connection sees it.
struct Sitting {
    platform::MemoryFileSystem disk;
    platform::InterposedFileSystem files{disk};
    ManualClock clock;
    SteadyRandom random;
    platform::Platform platform{files, clock, random, u""};
    std::unique_ptr<Database> database;

    Table& table() { return database->table(u"t"); }
    void open() {
        database = disk.fileExists(kPath) ? Database::open(platform, kPath, {.access = Pager::Access::Write})
                                          : Database::create(platform, kPath);
    }
    RowId row(std::int32_t id) {
        const std::size_t index = *table().indexOn(*table().definition().findColumn(u"id"));
        return table().lookUp(index, id).at(0);
    }
    void insert(std::size_t i) {
        insertRow(table(), {Null{}, u"http://" + platform::fromUtf8(std::to_string(i * 7 % 12)),
                            std::u16string(i * 600, static_cast<char16_t>(u'a' + i))});
    }
    void update(std::int32_t id, std::u16string content) {
        const Change changes[] = {{2, std::move(content)},
                                  {1, u"http://changed/" + platform::fromUtf8(std::to_string(id))}};
        table().update(row(id), changes);
    }
};

/// Work of every kind, in steps that are each one change, one save, or one opening.
const std::vector<std::function<void(Sitting&)>>& script() {
    static const auto steps = [] {
        std::vector<std::function<void(Sitting&)>> all;
        const auto save = [](Sitting& s) { s.database->commit(); };
        all.emplace_back([](Sitting& s) {
            s.database->createTable({.name = u"t",
                                     .columns = {{.name = u"id", .type = ColumnType::Long, .autonumber = true},
                                                 {.name = u"url"},
                                                 {.name = u"content", .type = ColumnType::Memo}},
                                     .indexes = {{.name = u"i", .columns = {{u"id"}}, .primary = true},
                                                 {.name = u"u", .columns = {{u"url"}}, .unique = true}}});
        });
        for (std::size_t i = 0; i < 12; ++i) {
            all.emplace_back([i](Sitting& s) { s.insert(i); });
            if (i % 4 == 3)
                all.emplace_back(save);
        }
        all.emplace_back([](Sitting& s) { s.update(2, std::u16string(9000, u'L')); });
        all.emplace_back([](Sitting& s) { s.table().erase(s.row(11)); });
        all.emplace_back(save);
        all.emplace_back([](Sitting& s) { // closed, and opened by the next program
            s.database.reset();
            s.open();
        });
        all.emplace_back([](Sitting& s) {
            s.database->beginTransaction();
            s.update(12, u"s");
        });
        all.emplace_back([](Sitting& s) { s.table().erase(s.row(3)); });
        all.emplace_back([](Sitting& s) { s.database->commitTransaction(); });
        all.emplace_back([](Sitting& s) { s.database->addColumn(u"t", {.name = u"extra", .type = ColumnType::Memo}); });
        all.emplace_back(save);
        all.emplace_back([](Sitting& s) {
            s.database->createIndex(u"t", {.name = u"e", .columns = {{u"content"}, {u"url"}}});
        });
        all.emplace_back(save);
        return all;
    }();
    return steps;
}

bool isSave(std::size_t from, const std::vector<std::string>& states) {
    return states[from] == states[from + 1];
}

/// How far the work has come.
struct Progress {
    std::size_t done = 0;  ///< steps
    std::size_t saved = 0; ///< steps up to the last save that returned
};

/// The content after each step, [0] before the first.
const std::vector<std::string>& states() {
    static const auto all = [] {
        Sitting s;
        s.open();
        std::vector<std::string> contents{contentOf(*s.database)};
        for (const auto& step : script()) {
            step(s);
            contents.push_back(contentOf(*s.database));
        }
        return contents;
    }();
    return all;
}

/// Goes through the script from where `progress` stands. Steps that change no content are saves.
void work(Sitting& s, Progress& progress) {
    for (; progress.done < script().size(); ++progress.done) {
        script()[progress.done](s);
        if (isSave(progress.done, states()))
            progress.saved = progress.done + 1;
    }
    s.database.reset();
}

/// Opens what is left: it must be sound and hold the saved content, or the one that was being saved. Sets `progress` to
/// what it holds. Without a file nothing may have been saved.
::testing::AssertionResult isWhole(Sitting& s, Progress& progress) {
    s.database.reset();
    const bool there = s.disk.fileExists(kPath);
    if (!there && progress.done > 0)
        return ::testing::AssertionFailure() << "the file is gone";
    s.open();
    if (s.disk.fileExists(journalPath(kPath)))
        return ::testing::AssertionFailure() << "a journal stays";
    if (const std::string faults = faultsOf(*s.database); !faults.empty())
        return ::testing::AssertionFailure() << faults;
    const std::string content = contentOf(*s.database);
    const std::size_t next = std::min(progress.done + 1, script().size());
    if (content == states()[progress.saved])
        progress.done = progress.saved;
    else if (content == states()[next])
        progress.done = progress.saved = next;
    else
        return ::testing::AssertionFailure() << "after step " << progress.done << ", saved up to " << progress.saved
                                             << ", there are " << content.size() << " bytes of content";
    return ::testing::AssertionSuccess();
}

enum class Fault {
    Once,       ///< one operation fails, the next ones work
    FromThenOn, ///< every operation fails until the file is opened again
    ShortWrite, ///< of a write half of the bytes arrive
    FullDisk    ///< there is room for so many bytes
};

/// Makes the nth operation of the disk fail.
class FaultyDisk {
public:
    FaultyDisk(Sitting& sitting, Fault fault, std::size_t nth) : sitting_(sitting), fault_(fault), left_(nth) {
        if (fault == Fault::FullDisk)
            sitting.disk.capacity = nth * kStep;
        else
            sitting.files.before = [this](std::string_view operation, std::u16string_view path) {
                return strike(operation, path);
            };
        sitting.files.halfway = [this] { fail("write", kPath); };
    }
    ~FaultyDisk() { mend(); }
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    void mend() {
        sitting_.disk.capacity = platform::MemoryFileSystem::kAll;
        sitting_.files.before = [](std::string_view, std::u16string_view) {
            return platform::InterposedFileSystem::kAll;
        };
    }

private:
    static constexpr std::size_t kStep = 6000; ///< bytes: every page is once the first without room

    std::size_t strike(std::string_view operation, std::u16string_view path) {
        if (fault_ == Fault::ShortWrite && operation != "write")
            return platform::InterposedFileSystem::kAll;
        const bool struck = left_ == 0;
        if (!struck || fault_ != Fault::FromThenOn)
            --left_;
        if (!struck)
            return platform::InterposedFileSystem::kAll;
        if (fault_ == Fault::ShortWrite)
            return 3001;
        fail(operation, path);
    }
    [[noreturn]] static void fail(std::string_view operation, std::u16string_view path) {
        throw FileError(FileError::Kind::Other, operation, path, 5, "the disk or share reports a fault");
    }

    Sitting& sitting_;
    Fault fault_;
    std::size_t left_;
};

class FailingDisk : public ::testing::TestWithParam<Fault> {};

TEST_P(FailingDisk, LeavesASavedStateFromWhichTheWorkGoesOn) {
    static_cast<void>(states()); // counted without faults
    std::set<std::size_t> struckSteps;
    bool failed = true;
    std::size_t nth = 0;
    for (; failed; ++nth) {
        SCOPED_TRACE(nth);
        ASSERT_LT(nth, 10000U);
        Sitting s;
        FaultyDisk disk(s, GetParam(), nth);
        Progress progress;
        failed = false;
        try {
            s.open();
            work(s, progress);
        } catch (const FileError& error) {
            failed = true;
            struckSteps.insert(progress.done);
            EXPECT_THAT(error.what(), HasSubstr("base.mdb"));
            EXPECT_THAT(error.what(),
                        HasSubstr(GetParam() == Fault::FullDisk ? "disk is full; make room" : "reports a fault"));
            EXPECT_EQ(error.kind(), GetParam() == Fault::FullDisk ? FileError::Kind::NoSpace : FileError::Kind::Other);
        }
        disk.mend();
        ASSERT_TRUE(isWhole(s, progress));
        work(s, progress);
        ASSERT_TRUE(isWhole(s, progress));
        ASSERT_EQ(progress.done, script().size());
    }
    EXPECT_GT(struckSteps.size(), 4U) << "several saves are struck";
    RecordProperty("faults", std::to_string(nth - 1));
}

INSTANTIATE_TEST_SUITE_P(Faults, FailingDisk,
                         ::testing::Values(Fault::Once, Fault::FromThenOn, Fault::ShortWrite, Fault::FullDisk));

TEST(FailingDiskOfAConnection, AFailedReadOrChangeCostsThatChangeOnly) {
    Sitting s;
    Progress progress;
    s.open();
    work(s, progress);
    s.open();
    std::size_t failures = 0;
    for (std::size_t nth = 0;; ++nth) {
        s.database.reset();
        s.open(); // nothing is cached
        FaultyDisk disk(s, Fault::Once, nth);
        bool failed = false;
        try {
            s.update(4, std::u16string(4000 + nth, u'x'));
        } catch (const FileError&) {
            failed = true;
        }
        disk.mend();
        if (!failed)
            break;
        ++failures;
        ASSERT_EQ(contentOf(*s.database), states().back()) << "the same connection, before the change";
        s.update(4, std::u16string(4000 + nth, u'x'));
        s.database->commit();
        ASSERT_EQ(faultsOf(*s.database), "");
        ASSERT_EQ(valueOf(s.table(), s.row(4), u"content"), Value(std::u16string(4000 + nth, u'x')));
        s.update(4, std::u16string(1800, u'd'));
        const Change url[] = {{1, u"http://9"}};
        s.table().update(s.row(4), url);
        s.database->commit();
    }
    EXPECT_GT(failures, 1U) << "a change reads several runs of pages";
}

/// The machine is off: from some operation on nothing happens any more, and of what was not yet synced any part may be
/// on the disk.
struct PowerCut : std::exception {};

TEST(PowerCut, LeavesAStateNoOlderThanTheLastSave) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    static_cast<void>(states());
    bool cut = true;
    std::size_t disks = 0;
    for (std::size_t nth = 0; cut; ++nth) {
        SCOPED_TRACE(nth);
        Sitting s;
        Progress progress;
        std::vector<std::map<std::u16string, std::string>> left;
        std::size_t before = nth;
        const auto atRandom = [&random](std::size_t) { return random() % 2 == 0; };
        cut = false;
        s.files.before = [&](std::string_view operation, std::u16string_view) {
            if (operation == "read" || before-- > 0)
                return platform::InterposedFileSystem::kAll;
            before = 0;
            if (!cut)
                for (const bool names : {false, true}) {
                    const std::size_t kept = names ? s.disk.unsyncedNames() : random() % (s.disk.unsyncedNames() + 1);
                    left.push_back(s.disk.afterPowerCut([](std::size_t) { return false; }, kept));
                    left.push_back(s.disk.afterPowerCut([](std::size_t) { return true; }, kept));
                    left.push_back(s.disk.afterPowerCut(atRandom, kept));
                    left.push_back(s.disk.afterPowerCut(atRandom, kept));
                }
            cut = true;
            throw PowerCut();
        };
        try {
            s.open();
            work(s, progress);
        } catch (const PowerCut&) {
        } catch (const FileError&) { // the pager's words for it
        }
        for (const auto& disk : left) {
            Sitting next;
            Progress then = progress;
            for (const auto& [path, bytes] : disk)
                next.disk.writeFile(path, bytes);
            ASSERT_TRUE(isWhole(next, then));
        }
        disks += left.size();
    }
    RecordProperty("disks", std::to_string(disks));
}

} // namespace
} // namespace kelb::jet
