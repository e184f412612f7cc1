#include "platform/file_system.h"
#include "platform/folder_listings.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "tests/platform/system_files_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>

namespace kelb::platform {
namespace {

namespace fs = std::filesystem;
using Kind = FileError::Kind;

class PosixFileSystem : public SystemFiles {
protected:
    PosixFileSystem()
        : SystemFiles([](const TemporaryFolder& folder) {
              return PathMap{{{u"D", folder.path()}}, {}};
          }) {}
};

TEST_F(PosixFileSystem, AWindowsPathReachesTheMappedFolder) {
    fs::create_directories(folder_.native() / "Kelb Folder" / "子");
    put("Kelb Folder/子/Wxdb.MDB", "db");
    EXPECT_EQ(files_->readFile(u"d:\\kelb folder\\子\\wxdb.mdb"), "db");
    EXPECT_EQ(files_->readFile(folder_.path() + u"\\KELB FOLDER\\子\\Wxdb.MDB"), "db"); // joined to a native folder
    EXPECT_EQ(files_->nativePath(u"d:\\kelb folder\\子\\wxdb.mdb"), at(u"Kelb Folder/子/Wxdb.MDB"));
    EXPECT_EQ(files_->nativePath(u"D:\\kelb folder\\New.mdb"), at(u"Kelb Folder/New.mdb"));
    EXPECT_EQ(kindOf([&] { (void)files_->fileExists(u"E:\\a"); }), Kind::Unmapped);
    EXPECT_EQ(kindOf([&] { files_->readFile(u"D:\\a.mdb"); }), Kind::NotFound);
    EXPECT_EQ(message_, "cannot read \"D:\\a.mdb\": no such file or folder");
}

TEST_F(PosixFileSystem, TheExactNameWinsAndAFirstOneOtherwise) {
    put("a.htm", "lower");
    put("A.htm", "upper");
    EXPECT_EQ(files_->readFile(at(u"a.htm")), "lower");
    EXPECT_EQ(files_->readFile(at(u"A.htm")), "upper");
    EXPECT_EQ(files_->readFile(at(u"A.HTM")), "upper"); // byte order: "A" comes first
    files_->removeFile(at(u"A.HTM"));
    EXPECT_EQ(files_->readFile(at(u"A.HTM")), "lower");
}

TEST_F(PosixFileSystem, ANameThatHoldsABackslashIsLeftAlone) {
    put("back\\slash.htm", "odd");
    EXPECT_EQ(files_->readFile(at(u"back\\slash.htm")), "odd");
    EXPECT_EQ(kindOf([&] { files_->readFile(at(u"other\\slash.htm")); }), Kind::NotFound);
}

TEST_F(PosixFileSystem, ANameThatIsNoUtf8IsListedAndFound) {
    put("\xD6\xD0.htm", "gbk");
    const auto names = files_->listFiles(folder_.path());
    ASSERT_THAT(names, testing::ElementsAre(u"\uFFFD\uFFFD.htm"));
    EXPECT_EQ(files_->readFile(at(names[0])), "gbk");
}

TEST_F(PosixFileSystem, AnAbsolutePathMeansTheSameFromAnywhere) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.native());
    put("Comb.mdb");
    EXPECT_EQ(files_->absolutePath(u"COMB.mdb"), fromUtf8((fs::current_path() / "Comb.mdb").string()));
    fs::current_path(before);
    EXPECT_EQ(files_->absolutePath(at(u"COMB.mdb")), at(u"Comb.mdb"));
    EXPECT_EQ(files_->absolutePath(at(u"none.mdb")), at(u"none.mdb"));
}

TEST_F(PosixFileSystem, ListingsFollowWhatOthersDo) {
    EXPECT_FALSE(files_->fileExists(at(u"PAGE.htm")));
    // The half second of a fresh listing; the folder's time would tell already, were its steps fine enough.
    usleep(600'000);
    put("page.htm");
    EXPECT_TRUE(files_->fileExists(at(u"PAGE.htm")));
    fs::rename(folder_.native() / "page.htm", folder_.native() / "Page.htm");
    usleep(600'000);
    EXPECT_TRUE(files_->fileExists(at(u"PAGE.htm")));
    EXPECT_EQ(files_->nativePath(at(u"PAGE.htm")), at(u"Page.htm"));
    fs::remove(folder_.native() / "Page.htm");
    EXPECT_FALSE(files_->fileExists(at(u"PAGE.htm")));
}

TEST_F(PosixFileSystem, FilesOfItsOwnAreFoundAndMissedAtOnce) {
    for (int i = 0; i < 50; ++i) {
        const std::u16string name = u"Page" + number(i);
        files_->writeFile(at(name), "");
        ASSERT_TRUE(files_->fileExists(at(u"PAGE" + number(i))));
    }
    for (int i = 0; i < 50; ++i) {
        files_->removeFile(at(u"PAGE" + number(i)));
        ASSERT_FALSE(files_->fileExists(at(u"PAGE" + number(i))));
    }
}

TEST_F(PosixFileSystem, AFolderAtRestIsReadOnceForAllProbesAndOwnChanges) {
    put("First.htm");
    fs::last_write_time(folder_.native(), fs::file_time_type::clock::now() - std::chrono::hours(1));
    const std::string folder = folder_.native().string();
    FolderListings listings;
    EXPECT_EQ(listings.find(folder, u"FIRST.HTM"), "First.htm");
    for (int i = 0; i < 100; ++i) {
        const std::string name = "Page" + std::to_string(i);
        FolderListings::OwnChange change(listings, folder + "/" + name);
        put(name);
        change.added();
        ASSERT_EQ(listings.find(folder, u"PAGE" + number(i)), name);
        ASSERT_EQ(listings.find(folder, u"missing" + number(i)), std::nullopt);
    }
    FolderListings::OwnChange change(listings, folder + "/First.htm");
    fs::remove(folder_.native() / "First.htm");
    change.removed();
    EXPECT_EQ(listings.find(folder, u"first.htm"), std::nullopt);
    EXPECT_EQ(listings.reads(), 1U);
    EXPECT_EQ(listings.find(folder + "/none", u"x"), std::nullopt);
}

TEST_F(PosixFileSystem, ALockHoldsBetweenProcessesAndDiesWithThem) {
    put("db.mdb", "x");
    std::array<int, 2> ready{};
    ASSERT_EQ(pipe(ready.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        const auto held = files_->open(at(u"db.mdb"), OpenMode::ReadWrite);
        const char mark = '!';
        if (write(ready[1], &mark, 1) == 1) {
            pause();
        }
        _exit(0);
    }
    char mark = 0;
    ASSERT_EQ(read(ready[0], &mark, 1), 1);
    EXPECT_EQ(kindOf([&] { (void)files_->open(at(u"db.mdb"), OpenMode::Read); }), Kind::Locked);
    EXPECT_THAT(message_, testing::HasSubstr("in use by another program; close it there and try again"));
    EXPECT_EQ(kindOf([&] { (void)files_->open(at(u"db.mdb"), OpenMode::ReadWrite); }), Kind::Locked);
    ASSERT_EQ(kill(child, SIGKILL), 0);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_NO_THROW((void)files_->open(at(u"db.mdb"), OpenMode::ReadWrite));
    close(ready[0]);
    close(ready[1]);
}

TEST_F(PosixFileSystem, NoRoomIsToldAndHalfALineIsTakenBack) {
    EXPECT_EQ(kindOf([&] { files_->writeFile(u"/dev/full", "x"); }), Kind::NoSpace);
    put("log.csv", "one line\n");
    put("old.txt", "old");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldAction = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{16, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const Kind append = kindOf([&] { files_->appendFile(at(u"log.csv"), "another line\n"); });
    const Kind replace = kindOf([&] { files_->replaceFile(at(u"old.txt"), std::string(100, 'n')); });
    const Kind write = kindOf([&] {
        const auto file = files_->open(at(u"new.mdb"), OpenMode::CreateNew);
        file->writeAt(16, std::as_bytes(std::span("x", 1)));
    });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, oldAction);
    EXPECT_EQ(append, Kind::NoSpace);
    EXPECT_EQ(replace, Kind::NoSpace);
    EXPECT_EQ(write, Kind::NoSpace);
    EXPECT_EQ(files_->readFile(at(u"log.csv")), "one line\n");
    EXPECT_EQ(files_->readFile(at(u"old.txt")), "old");
    EXPECT_THAT(files_->listFiles(folder_.path()), testing::ElementsAre(u"log.csv", u"new.mdb", u"old.txt"));
}

TEST_F(PosixFileSystem, ReplacingKeepsRightsAndLinks) {
    put("real.txt", "old");
    fs::permissions(folder_.native() / "real.txt", fs::perms(0640));
    fs::create_symlink("real.txt", folder_.native() / "link.txt");
    files_->replaceFile(at(u"link.txt"), "new");
    EXPECT_TRUE(fs::is_symlink(folder_.native() / "link.txt"));
    EXPECT_EQ(files_->readFile(at(u"real.txt")), "new");
    EXPECT_EQ(fs::status(folder_.native() / "real.txt").permissions(), fs::perms(0640));
}

TEST_F(PosixFileSystem, ARenameToAnotherDiskCopies) {
    struct ::stat here {};
    struct ::stat there {};
    if (stat(folder_.native().c_str(), &here) != 0 || stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev) {
        GTEST_SKIP() << "/dev/shm is no other disk here";
    }
    const TemporaryFolder other("/dev/shm");
    const std::string bytes(3'000'000, 'p'); // more than one piece
    put("page.htm", bytes);
    files_->renameFile(at(u"page.htm"), joinPath(other.path(), u"1.htm"));
    EXPECT_EQ(files_->readFile(joinPath(other.path(), u"1.htm")), bytes);
    EXPECT_FALSE(files_->fileExists(at(u"page.htm")));
    EXPECT_THAT(files_->listFiles(other.path()), testing::ElementsAre(u"1.htm"));
}

TEST_F(PosixFileSystem, WhatIsNoFileIsRefused) {
    fs::create_directory(folder_.native() / "folder");
    put("file");
    ASSERT_EQ(mkfifo((folder_.native() / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files_->fileExists(at(u"pipe")));
    EXPECT_EQ(files_->readFile(at(u"pipe")), ""); // and does not wait for a writer
    for (const char16_t* name : {u"folder", u"pipe"}) {
        EXPECT_EQ(kindOf([&] { (void)files_->open(at(name), OpenMode::Read); }), Kind::Other);
    }
    EXPECT_EQ(kindOf([&] { files_->readFile(at(u"folder")); }), Kind::Other);
    EXPECT_EQ(message_, "cannot read \"" + (folder_.native() / "folder").string() + "\": it is a folder");
    EXPECT_EQ(kindOf([&] { files_->replaceFile(at(u"folder"), "x"); }), Kind::Other);
    EXPECT_EQ(kindOf([&] { files_->readFile(at(u"file/below")); }), Kind::NotFound);
    EXPECT_EQ(kindOf([&] { files_->makeFolders(at(u"file/below")); }), Kind::NotFound);
    EXPECT_EQ(kindOf([&] { files_->makeFolders(at(u"file")); }), Kind::AlreadyExists);
    EXPECT_FALSE(files_->fileExists(std::u16string(u"/etc/passwd\0x", 13)));
    EXPECT_FALSE(files_->fileExists(at(std::u16string(5000, u'n'))));
}

TEST_F(PosixFileSystem, ARelativePathIsLookedUpInTheCurrentFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.native());
    put("Kelb.INI", "x");
    fs::create_directory(folder_.native() / "Sub");
    put("Sub/A.txt", "y");
    EXPECT_EQ(files_->readFile(u"kelb.ini"), "x");
    EXPECT_EQ(files_->readFile(u"sub\\a.TXT"), "y");
    files_->writeFile(u"new.txt", "z");
    files_->syncFolder(parentFolder(u"new.txt"));
    EXPECT_EQ(files_->readFile(u"./NEW.txt"), "z");
    fs::current_path(before);
}

TEST_F(PosixFileSystem, TheProgramsFolderHoldsTheProgram) {
    EXPECT_TRUE(files_->fileExists(joinPath(executableFolder(), u"platform_tests")));
}

} // namespace
} // namespace kelb::platform
