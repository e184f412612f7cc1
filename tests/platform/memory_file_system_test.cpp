#include "platform/memory_file_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace kelb::platform {
namespace {

std::span<const std::byte> asBytes(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

TEST(MemoryFileSystem, APowerCutKeepsWhatWasSyncedAndAnyOfTheRest) {
    MemoryFileSystem files;
    const auto a = files.open(u"D:\\a.mdb", OpenMode::CreateNew);
    const auto b = files.open(u"D:\\b.mdb", OpenMode::CreateNew);
    a->writeAt(0, asBytes("AAAA"));
    a->sync();
    a->writeAt(2, asBytes("bb")); // 0
    b->writeAt(0, asBytes("B"));  // 1
    a->writeAt(6, asBytes("c"));  // 2
    a->truncate(3);               // 3
    const auto left = [&](std::vector<bool> kept) {
        return files.afterPowerCut([kept](std::size_t n) { return kept.at(n); });
    };
    using Files = std::map<std::u16string, std::string>;
    EXPECT_EQ(left({false, false, false, false}), (Files{{u"D:\\a.mdb", "AAAA"}, {u"D:\\b.mdb", ""}}));
    EXPECT_EQ(left({true, true, true, true}), (Files{{u"D:\\a.mdb", "AAb"}, {u"D:\\b.mdb", "B"}}));
    EXPECT_EQ(left({false, true, true, false}),
              (Files{{u"D:\\a.mdb", std::string("AAAA\0\0c", 7)}, {u"D:\\b.mdb", "B"}}));
    EXPECT_EQ(left({false, false, false, true}), (Files{{u"D:\\a.mdb", "AAA"}, {u"D:\\b.mdb", ""}}));
    a->sync();
    b->sync();
    EXPECT_EQ(left({}), (Files{{u"D:\\a.mdb", "AAb"}, {u"D:\\b.mdb", "B"}})); // nothing is left to ask about
}

TEST(MemoryFileSystem, AReplacedFileIsOldOrNewAfterAPowerCut) {
    MemoryFileSystem files;
    files.replaceFile(u"n.txt", "1");
    files.writeFile(u"n.txt", "22"); // may be lost
    EXPECT_EQ(files.afterPowerCut([](std::size_t) { return false; }).at(u"n.txt"), "1");
    files.replaceFile(u"n.txt", "333");
    EXPECT_EQ(files.afterPowerCut([](std::size_t) { return false; }).at(u"n.txt"), "333");
}

TEST(MemoryFileSystem, APowerCutTearsAWriteAtTheSectorsOfTheDisk) {
    MemoryFileSystem files;
    files.writeFile(u"n", std::string(1200, 'x')); // sectors at 0, 512, 1024
    const auto file = files.open(u"n", OpenMode::ReadWrite);
    file->sync();
    file->writeAt(500, asBytes(std::string(600, 'y'))); // 12 bytes of the first, the second, 76 of the third
    EXPECT_EQ(files.afterPowerCut([](std::size_t nth) { return nth == 1; }).at(u"n"),
              std::string(512, 'x') + std::string(512, 'y') + std::string(176, 'x'));
}

TEST(MemoryFileSystem, APowerCutKeepsTheFirstOfTheNamesThatWereNotSynced) {
    MemoryFileSystem files;
    for (const auto* path : {u"a", u"b"})
        static_cast<void>(files.open(path, OpenMode::CreateNew));
    files.syncFolder(u"");
    files.removeFile(u"a");
    static_cast<void>(files.open(u"c", OpenMode::CreateNew));
    files.renameFile(u"b", u"d"); // the old name goes in the same moment
    const auto names = [&](std::uint64_t kept) {
        std::u16string text;
        for (const auto& [path, bytes] : files.afterPowerCut([](std::size_t) { return false; }, kept))
            text += path;
        return text;
    };
    EXPECT_EQ(files.unsyncedNames(), 3U);
    EXPECT_EQ(names(0), u"ab");
    EXPECT_EQ(names(1), u"b");
    EXPECT_EQ(names(2), u"bc");
    EXPECT_EQ(names(3), u"cd");
}

TEST(MemoryFileSystem, AFullDiskTakesWhatFitsAndSaysSo) {
    MemoryFileSystem files;
    files.writeFile(u"/old", "12345678");
    files.capacity = 10;
    const auto file = files.open(u"/new", OpenMode::CreateNew);
    try {
        file->writeAt(0, asBytes("abc"));
        FAIL();
    } catch (const FileError& error) {
        EXPECT_EQ(error.kind(), FileError::Kind::NoSpace);
        EXPECT_STREQ(error.what(), "cannot write \"/new\": the disk is full; make room and try again");
    }
    EXPECT_EQ(files.readFile(u"/new"), "ab");
    file->writeAt(0, asBytes("AB")); // takes no more room
    files.removeFile(u"/old");
    file->writeAt(2, asBytes("cdefghij"));
    EXPECT_THROW(file->writeAt(10, asBytes("k")), FileError);
    EXPECT_EQ(files.readFile(u"/new"), "ABcdefghij");
}

TEST(MemoryFileSystem, EveryOperationIsAnnouncedAndMayFail) {
    MemoryFileSystem files;
    std::vector<std::string> seen;
    files.beforeOperation = [&](std::string_view operation, std::u16string_view) { seen.emplace_back(operation); };
    {
        const auto file = files.open(u"/a", OpenMode::CreateNew);
        file->writeAt(0, asBytes("x"));
        std::byte byte{};
        file->readAt(0, {&byte, 1});
        file->truncate(0);
        file->sync();
    }
    files.renameFile(u"/a", u"/b");
    files.removeFile(u"/b");
    EXPECT_THAT(seen, testing::ElementsAre("open", "write", "read", "truncate", "sync", "rename", "remove"));

    files.writeFile(u"/c", "kept");
    files.beforeOperation = [](std::string_view, std::u16string_view) { throw std::runtime_error("disk fault"); };
    EXPECT_THROW(files.writeFile(u"/c", "lost"), std::runtime_error);
    EXPECT_THROW(files.removeFile(u"/c"), std::runtime_error);
    EXPECT_THROW(files.writeFile(u"/d", "lost"), std::runtime_error);
    files.beforeOperation = nullptr;
    EXPECT_EQ(files.readFile(u"/c"), "kept");
    EXPECT_FALSE(files.fileExists(u"/d"));
}

TEST(MemoryFileSystem, AReadOnlyFileIsRead) {
    MemoryFileSystem files;
    files.writeFile(u"/a", "x");
    files.setReadOnly(u"/a");
    EXPECT_FALSE(files.isWritable(u"/a"));
    EXPECT_EQ(files.readFile(u"/a"), "x");
    EXPECT_THROW((void)files.open(u"/a", OpenMode::ReadWrite), FileError);
    EXPECT_THROW(files.writeFile(u"/a", "y"), FileError);
}

TEST(DryRunFileSystem, LeavesTheBaseAsItWas) {
    MemoryFileSystem base;
    const std::string old = std::string(5000, 'o');
    base.writeFile(u"D:\\Pages\\1.htm", "one");
    base.writeFile(u"D:\\Pages\\2.htm", "two");
    base.writeFile(u"D:\\wxdb.mdb", old);
    const auto before = base.afterPowerCut([](std::size_t) { return true; });

    const auto dry = makeDryRunFileSystem(base);
    dry->removeFile(u"D:\\Pages\\1.htm");
    dry->makeFolders(u"D:\\Trash");
    dry->renameFile(u"D:\\Pages\\2.htm", u"D:\\Trash\\2.htm");
    dry->writeFile(u"D:\\Pages\\3.htm", "three");
    dry->appendFile(u"D:\\wxdb.mdb", "end");
    {
        const auto file = dry->open(u"D:\\wxdb.mdb", OpenMode::ReadWrite);
        file->writeAt(4097, asBytes("new"));
    }
    EXPECT_EQ(base.afterPowerCut([](std::size_t) { return true; }), before);

    EXPECT_FALSE(dry->fileExists(u"d:/pages/1.HTM"));
    EXPECT_EQ(dry->readFile(u"D:\\Trash\\2.htm"), "two");
    EXPECT_THAT(dry->listFiles(u"D:\\Pages"), testing::ElementsAre(u"3.htm"));
    EXPECT_EQ(dry->readFile(u"D:\\wxdb.mdb"), std::string(old).replace(4097, 3, "new") + "end");
    EXPECT_THROW(dry->readFile(u"D:\\Pages\\1.htm"), FileError);
    dry->writeFile(u"D:\\Pages\\1.htm", "again");
    EXPECT_EQ(dry->readFile(u"D:\\Pages\\1.htm"), "again");
}

TEST(DryRunFileSystem, RefusesWhatTheBaseWouldRefuse) {
    MemoryFileSystem base;
    base.writeFile(u"/a", "x");
    base.setReadOnly(u"/a");
    const auto dry = makeDryRunFileSystem(base);
    EXPECT_THROW(dry->writeFile(u"/a", "y"), FileError);
    EXPECT_THROW((void)dry->open(u"/a", OpenMode::ReadWrite), FileError);
    EXPECT_THROW(dry->writeFile(u"/nowhere/a", "y"), FileError);
    EXPECT_FALSE(dry->fileExists(u"/nowhere/a"));
}

} // namespace
} // namespace kelb::platform
