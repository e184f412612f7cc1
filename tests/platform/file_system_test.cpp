#include "platform/file_system.h"

#include "platform/memory_file_system.h"
#include "tests/platform/temporary_folder.h"
#include "tests/platform/under_wine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <string>

namespace kelb::platform {
namespace {

using Kind = FileError::Kind;
using testing::ElementsAre;

std::span<const std::byte> asBytes(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

std::string readAll(const RandomAccessFile& file) {
    std::string bytes(static_cast<std::size_t>(file.size()), '\0');
    EXPECT_EQ(file.readAt(0, std::as_writable_bytes(std::span(bytes.data(), bytes.size()))), bytes.size());
    return bytes;
}

/// A file system and a folder that is there. Every case below holds for all four.
struct Subject {
    std::unique_ptr<TemporaryFolder> disk;
    std::unique_ptr<FileSystem> base;
    std::unique_ptr<FileSystem> files;
    std::u16string root;
};

Subject onDisk() {
    auto disk = std::make_unique<TemporaryFolder>();
    std::u16string root = disk->path();
    return {std::move(disk), nullptr, makeSystemFileSystem({}), root};
}

Subject inMemory() {
    Subject subject{nullptr, nullptr, std::make_unique<MemoryFileSystem>(), u"D:\\Work"};
    subject.files->makeFolders(subject.root);
    return subject;
}

Subject dryRunOver(Subject below) {
    below.base = std::move(below.files);
    below.files = makeDryRunFileSystem(*below.base);
    return below;
}

struct SubjectCase {
    const char* name;
    Subject (*make)();
};

class FileSystems : public testing::TestWithParam<SubjectCase> {
protected:
    std::u16string at(std::u16string_view name) const { return joinPath(subject_.root, name); }
    FileSystem& files() { return *subject_.files; }

    static void expectError(Kind kind, std::u16string_view path, const std::function<void()>& operation) {
        try {
            operation();
            ADD_FAILURE() << "no error";
        } catch (const FileError& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
            EXPECT_EQ(error.path(), path);
        }
    }

    Subject subject_ = GetParam().make();
};

TEST_P(FileSystems, WholeFilesAreWrittenReadAndRemoved) {
    files().writeFile(at(u"a.txt"), "first, and long");
    files().writeFile(at(u"a.txt"), "second");
    EXPECT_EQ(files().readFile(at(u"a.txt")), "second");
    files().appendFile(at(u"a.txt"), " line");
    files().appendFile(at(u"b.txt"), "made");
    EXPECT_EQ(files().readFile(at(u"a.txt")), "second line");
    EXPECT_EQ(files().readFront(at(u"a.txt"), 3), "sec");
    EXPECT_EQ(files().readFront(at(u"a.txt"), 300), "second line");
    EXPECT_EQ(files().readFile(at(u"b.txt")), "made");
    files().replaceFile(at(u"a.txt"), "new");
    EXPECT_EQ(files().readFile(at(u"a.txt")), "new");
    files().removeFile(at(u"a.txt"));
    EXPECT_FALSE(files().fileExists(at(u"a.txt")));
    EXPECT_TRUE(files().fileExists(at(u"b.txt")));
    EXPECT_THAT(files().listFiles(subject_.root), ElementsAre(u"b.txt"));
}

TEST_P(FileSystems, WhatIsMissingIsNamed) {
    const std::u16string path = at(u"no.txt");
    EXPECT_FALSE(files().fileExists(path));
    EXPECT_FALSE(files().isWritable(path));
    EXPECT_FALSE(files().fileExists(u""));
    expectError(Kind::NotFound, path, [&] { files().readFile(path); });
    expectError(Kind::NotFound, path, [&] { files().removeFile(path); });
    expectError(Kind::NotFound, path, [&] { files().renameFile(path, at(u"b")); });
    expectError(Kind::NotFound, path, [&] { (void)files().open(path, OpenMode::Read); });
    expectError(Kind::NotFound, path, [&] { (void)files().open(path, OpenMode::ReadWrite); });
    expectError(Kind::NotFound, path, [&] { files().listFiles(path); });
}

TEST_P(FileSystems, NamesAreFoundWithoutRegardToCase) {
    files().makeFolders(at(u"Pages"));
    files().writeFile(joinPath(at(u"Pages"), u"Thread-é-ｃ.HTM"), "x");
    const std::u16string other = joinPath(at(u"PAGES"), u"thread-É-Ｃ.htm");
    EXPECT_TRUE(files().fileExists(other));
    EXPECT_EQ(files().readFile(other), "x");
    files().writeFile(other, "y"); // the same file, not a second one
    EXPECT_THAT(files().listFiles(at(u"pages")), ElementsAre(u"Thread-é-ｃ.HTM"));
    EXPECT_FALSE(files().fileExists(joinPath(at(u"PAGES"), u"thread.htm")));
    files().removeFile(other);
    EXPECT_FALSE(files().fileExists(joinPath(at(u"Pages"), u"Thread-é-ｃ.HTM")));
}

TEST_P(FileSystems, FoldersAreNotFilesAndAreListedInOrder) {
    files().makeFolders(joinPath(at(u"One"), u"Two"));
    files().makeFolders(joinPath(at(u"One"), u"Two")); // there already
    EXPECT_TRUE(files().folderExists(at(u"one")));
    EXPECT_FALSE(files().fileExists(at(u"One")));
    EXPECT_FALSE(files().folderExists(at(u"Tw")));
    for (const char16_t* name : {u"b.txt", u"C.txt", u"a.txt", u"10.txt", u"9.txt"}) {
        files().writeFile(at(name), "");
    }
    files().writeFile(joinPath(at(u"One"), u"below.txt"), "");
    EXPECT_THAT(files().listFiles(subject_.root), ElementsAre(u"10.txt", u"9.txt", u"a.txt", u"b.txt", u"C.txt"));
    EXPECT_THAT(files().listFiles(joinPath(at(u"One"), u"Two")), ElementsAre());
    files().makeFolders(at(u"also"));
    EXPECT_THAT(files().listFolders(subject_.root), ElementsAre(u"also", u"One"));
    EXPECT_THAT(files().listFolders(at(u"ONE")), ElementsAre(u"Two"));
    expectError(Kind::NotFound, at(u"none"), [&] { files().listFolders(at(u"none")); });
}

TEST_P(FileSystems, RenameReplacesAndChangesCase) {
    files().writeFile(at(u"a.txt"), "a");
    files().writeFile(at(u"b.txt"), "b");
    files().renameFile(at(u"a.txt"), at(u"b.txt"));
    EXPECT_EQ(files().readFile(at(u"b.txt")), "a");
    EXPECT_FALSE(files().fileExists(at(u"a.txt")));
    files().renameFile(at(u"b.txt"), at(u"B.TXT"));
    if (!underWine()) { // which finds the old spelling under the new one, and keeps it
        EXPECT_THAT(files().listFiles(subject_.root), ElementsAre(u"B.TXT"));
    }
    files().makeFolders(at(u"trash"));
    files().renameFile(at(u"b.txt"), joinPath(at(u"trash"), u"1.txt"));
    EXPECT_EQ(files().readFile(joinPath(at(u"trash"), u"1.txt")), "a");
    EXPECT_THAT(files().listFiles(subject_.root), ElementsAre());
}

TEST_P(FileSystems, OpenFilesAreReadAndWrittenAtOffsets) {
    {
        const auto file = files().open(at(u"new.mdb"), OpenMode::CreateNew);
        file->writeAt(4, asBytes("data"));
        file->writeAt(5000, asBytes("far"));
        file->writeAt(4094, asBytes("across"));
        file->sync();
        EXPECT_EQ(file->size(), 5003U);
        file->truncate(4100);
    }
    files().syncFolder(subject_.root);
    const auto file = files().open(at(u"new.mdb"), OpenMode::ReadWrite);
    std::string expected(4100, '\0');
    expected.replace(4, 4, "data").replace(4094, 6, "across");
    EXPECT_EQ(readAll(*file), expected);
    std::array<std::byte, 8> buffer{};
    EXPECT_EQ(file->readAt(4096, buffer), 4U); // fewer at the end
    EXPECT_EQ(file->readAt(4100, buffer), 0U);
    EXPECT_EQ(file->readAt(9999, buffer), 0U);
    file->truncate(4);
    file->truncate(8); // what was cut off does not come back
    EXPECT_EQ(readAll(*file), std::string(8, '\0'));
    expectError(Kind::AlreadyExists, at(u"NEW.mdb"), [&] { (void)files().open(at(u"NEW.mdb"), OpenMode::CreateNew); });
}

TEST_P(FileSystems, LocksShutOutWriters) {
    files().writeFile(at(u"db.mdb"), "x");
    struct LockCase {
        OpenMode first, second;
        bool allowed;
    };
    for (const LockCase& c : {LockCase{OpenMode::Read, OpenMode::Read, true},
                              {OpenMode::Read, OpenMode::ReadWrite, false},
                              {OpenMode::ReadWrite, OpenMode::Read, false},
                              {OpenMode::ReadWrite, OpenMode::ReadWrite, false}}) {
        const auto first = files().open(at(u"db.mdb"), c.first);
        if (c.allowed) {
            EXPECT_EQ(readAll(*files().open(at(u"DB.mdb"), c.second)), "x");
        } else {
            expectError(Kind::Locked, at(u"db.mdb"), [&] { (void)files().open(at(u"db.mdb"), c.second); });
        }
    }
    const auto reader = files().open(at(u"db.mdb"), OpenMode::Read); // all locks went with their files
    EXPECT_THROW(reader->writeAt(0, asBytes("y")), FileError);
    EXPECT_THROW(reader->truncate(0), FileError);
    EXPECT_EQ(readAll(*reader), "x");
}

TEST_P(FileSystems, IdentityIsTheFilesNotThePaths) {
    files().writeFile(at(u"a.mdb"), "");
    files().writeFile(at(u"b.mdb"), "");
    const auto a = files().open(at(u"a.mdb"), OpenMode::Read);
    EXPECT_EQ(a->identity(), files().open(at(u"A.MDB"), OpenMode::Read)->identity());
    EXPECT_NE(a->identity(), files().open(at(u"b.mdb"), OpenMode::Read)->identity());
    const auto writer = files().open(at(u"b.mdb"), OpenMode::ReadWrite);
    EXPECT_EQ(files().identityOf(at(u"B.mdb")), writer->identity()); // though it is locked
    expectError(Kind::NotFound, at(u"c.mdb"), [&] { (void)files().identityOf(at(u"c.mdb")); });
    const auto temporary = files().open(u"", OpenMode::CreateTemp);
    temporary->writeAt(0, asBytes("scratch"));
    EXPECT_EQ(readAll(*temporary), "scratch");
    EXPECT_NE(temporary->identity(), files().open(u"", OpenMode::CreateTemp)->identity());
    EXPECT_THAT(files().listFiles(subject_.root), ElementsAre(u"a.mdb", u"b.mdb"));
}

INSTANTIATE_TEST_SUITE_P(All, FileSystems,
                         testing::Values(SubjectCase{"disk", onDisk}, SubjectCase{"memory", inMemory},
                                         SubjectCase{"dry_run_over_disk", [] { return dryRunOver(onDisk()); }},
                                         SubjectCase{"dry_run_over_memory", [] { return dryRunOver(inMemory()); }}),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace kelb::platform
