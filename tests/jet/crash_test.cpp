#include "jet/database.h"
#include "jet/journal.h"

#include "tests/jet/database_fixture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>
#include <set>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// What is left of a database when the program or the machine stops in the middle of work.
namespace kelb::jet {
namespace {

using namespace testing;

/// Work of every kind, saved after each step. `saved` is told the content after each save.
void work(Machine& machine, const std::function<void(Database&)>& saved) {
    const auto database = machine.create();
    const auto save = [&] {
        database->commit();
        saved(*database);
    };
    save();
    Table& table = database->createTable({.name = u"t",
                                          .columns = {{.name = u"id", .type = ColumnType::Long, .autonumber = true},
                                                      {.name = u"url"},
                                                      {.name = u"content", .type = ColumnType::Memo}},
                                          .indexes = {{.name = u"u", .columns = {{u"url"}}, .unique = true}}});
    save();
    std::vector<RowId> rows;
    for (std::size_t i = 0; i < 12; ++i) {
        rows.push_back(insertRow(table, {Null{}, u"http://" + platform::fromUtf8(std::to_string(i * 7 % 12)),
                                         std::u16string(i * 600, static_cast<char16_t>(u'a' + i))}));
        if (i % 4 == 3)
            save();
    }
    const Change longer[] = {{2, std::u16string(9000, u'L')}};
    table.update(rows[1], longer);
    table.erase(rows[10]);
    save();
    database->beginTransaction();
    const Change shorter[] = {{2, u"s"}, {1, u"http://other"}};
    table.update(rows[11], shorter);
    table.erase(rows[2]);
    database->commitTransaction();
    saved(*database);
    database->addColumn(u"t", {.name = u"extra", .type = ColumnType::Memo});
    database->createIndex(u"t", {.name = u"e", .columns = {{u"id"}}});
    save();
}

std::vector<std::string> savedStates() {
    Machine machine;
    std::vector<std::string> states;
    work(machine, [&states](Database& database) { states.push_back(contentOf(database)); });
    return states;
}

/// Opens what is left and gives its content; checks that no journal stays. Nothing when there is no file yet.
std::optional<std::string> contentLeft(Machine& machine) {
    machine.files.beforeOperation = nullptr;
    if (!machine.files.fileExists(kPath))
        return std::nullopt;
    const auto database = machine.open();
    EXPECT_FALSE(machine.files.fileExists(journalPath(kPath)));
    EXPECT_EQ(faultsOf(*database), "");
    return contentOf(*database);
}

TEST(Crash, AFailingDiskLeavesASavedState) {
    const std::vector<std::string> states = savedStates();
    std::size_t operations = 0;
    for (std::size_t nth = 0;; ++nth) {
        Machine machine;
        std::size_t left = nth, saves = 0;
        machine.files.beforeOperation = [&left](std::string_view operation, std::u16string_view path) {
            if (left-- == 0)
                throw platform::FileError(platform::FileError::Kind::NoSpace, operation, path, 28, "disk full");
        };
        bool failed = false;
        try {
            work(machine, [&saves](Database&) { ++saves; });
        } catch (const platform::FileError&) {
            failed = true;
        }
        ASSERT_LT(nth, 10000U);
        const std::optional<std::string> content = contentLeft(machine);
        if (!content) {
            ASSERT_EQ(saves, 0U) << nth;
        } else {
            const std::string& before = states[saves == 0 ? 0 : saves - 1];
            const std::string& after = states[std::min(saves, states.size() - 1)];
            ASSERT_TRUE(*content == before || *content == after) << "operation " << nth << " after save " << saves;
        }
        if (!failed) {
            operations = nth;
            break;
        }
    }
    EXPECT_GT(operations, 8 * states.size()) << "each save takes several operations";
}

/// The machine is off: from some operation on nothing happens any more, and of what was not yet synced any part may be
/// on the disk.
struct PowerCut : std::exception {};

TEST(Crash, APowerCutLeavesAStateNoOlderThanTheLastSave) {
    const std::vector<std::string> states = savedStates();
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (std::size_t nth = 0;; ++nth) {
        std::size_t saves = 0;
        std::vector<std::map<std::u16string, std::string>> disks;
        bool cut = false;
        Machine machine;
        std::size_t done = 0;
        machine.files.beforeOperation = [&](std::string_view, std::u16string_view) {
            if (done++ < nth)
                return;
            if (!cut) {
                disks.push_back(machine.files.afterPowerCut([](std::size_t) { return false; }));
                disks.push_back(machine.files.afterPowerCut([](std::size_t) { return true; }));
                for (int i = 0; i < 4; ++i)
                    disks.push_back(machine.files.afterPowerCut([&random](std::size_t) { return random() % 2 == 0; }));
            }
            cut = true;
            throw PowerCut();
        };
        try {
            work(machine, [&saves](Database&) { ++saves; });
        } catch (const PowerCut&) {
        } catch (const platform::FileError&) { // the pager's words for it
        }
        if (!cut)
            return;
        for (const auto& disk : disks) {
            Machine next;
            for (const auto& [path, bytes] : disk)
                next.files.writeFile(path, bytes);
            const std::optional<std::string> content = contentLeft(next);
            if (!content) {
                ASSERT_EQ(saves, 0U) << nth;
                continue;
            }
            const std::string& before = states[saves == 0 ? 0 : saves - 1];
            const std::string& after = states[std::min(saves, states.size() - 1)];
            ASSERT_TRUE(*content == before || *content == after)
                << "operation " << nth << " after save " << saves << ": " << content->size() << " bytes of content";
        }
    }
}

/// A folder that goes away with the test.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelb-crash-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    std::u16string file(std::u16string_view name) const {
        return platform::joinPath(platform::fromUtf8(path_.string()), name);
    }

private:
    std::filesystem::path path_;
};

std::u16string memoOf(std::int32_t number) {
    return std::u16string(static_cast<std::size_t>(number) * 997 % 12000, static_cast<char16_t>(0x4E00 + number));
}

/// Inserts rows for ever and tells the number of each saved one through the pipe.
[[noreturn]] void insertUntilKilled(const std::u16string& path, int pipe) {
    const auto files = platform::makeSystemFileSystem({});
    platform::SystemClock clock;
    SteadyRandom random;
    platform::Platform platform{*files, clock, random, u""};
    const auto database = Database::open(platform, path, {.access = Pager::Access::Write});
    Table& table = database->table(u"t");
    for (std::int32_t number = table.lastAutonumber() + 1;; ++number) {
        insertRow(table, {Null{}, platform::fromUtf8("key" + std::to_string(number)), memoOf(number)});
        if (number % 3 == 0) {
            database->commit();
            if (write(pipe, &number, sizeof number) != sizeof number)
                _exit(1);
        }
    }
}

/// The highest number told before the end.
std::int32_t lastSaved(int pipe) {
    std::int32_t number = 0, last = 0;
    while (read(pipe, &number, sizeof number) == sizeof number)
        last = number;
    return last;
}

TEST(Crash, AKilledProgramLosesNothingThatWasSaved) {
    const TemporaryFolder folder;
    const std::u16string path = folder.file(u"base.mdb");
    const auto files = platform::makeSystemFileSystem({});
    platform::SystemClock clock;
    SteadyRandom random;
    platform::Platform platform{*files, clock, random, u""};
    {
        const auto database = Database::create(platform, path);
        database->createTable({.name = u"t",
                               .columns = {{.name = u"id", .type = ColumnType::Long, .autonumber = true},
                                           {.name = u"url"},
                                           {.name = u"content", .type = ColumnType::Memo}},
                               .indexes = {{.name = u"u", .columns = {{u"url"}}, .unique = true}}});
        database->commit();
    }
    std::int32_t atLeast = 0;
    for (int round = 0; round < 8; ++round) {
        int ends[2] = {};
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(ends[0]);
            insertUntilKilled(path, ends[1]);
        }
        close(ends[1]);
        usleep(30000 + 17000 * static_cast<unsigned>(round));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";
        atLeast = std::max(atLeast, lastSaved(ends[0]));
        close(ends[0]);

        const auto database = Database::open(platform, path, {.access = Pager::Access::Write});
        EXPECT_EQ(faultsOf(*database), "");
        Table& table = database->table(u"t");
        std::set<std::int32_t> numbers;
        Row row;
        for (TableScan scan = table.scan(); scan.next(row);) {
            const auto number = std::get<std::int32_t>(row.value(*table.definition().findColumn(u"id")));
            EXPECT_TRUE(numbers.insert(number).second);
            ASSERT_EQ(row.value(*table.definition().findColumn(u"content")), Value(memoOf(number))) << number;
        }
        ASSERT_GE(numbers.size(), static_cast<std::size_t>(atLeast));
        ASSERT_EQ(table.rowCount(), numbers.size());
        if (!numbers.empty()) {
            ASSERT_EQ(*numbers.rbegin(), static_cast<std::int32_t>(numbers.size())) << "a row is missing";
            const auto index = *table.indexOn(*table.definition().findColumn(u"url"));
            ASSERT_EQ(table.lookUp(index, platform::fromUtf8("KEY" + std::to_string(numbers.size()))).size(), 1U);
        }
    }
    EXPECT_GT(atLeast, 0) << "no round got as far as a save";
}

} // namespace
} // namespace kelb::jet
