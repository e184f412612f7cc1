#include "platform/file_system.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "platform/windows_headers.h"
#include "tests/platform/system_files_fixture.h"
#include "tests/platform/under_wine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>

namespace kelb::platform {
namespace {

namespace fs = std::filesystem;
using Kind = FileError::Kind;

/// A file as another program has it open.
class OtherProgram {
public:
    OtherProgram(const fs::path& path, DWORD rights, DWORD sharing)
        : handle_(CreateFileW(path.c_str(), rights, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
    }
    ~OtherProgram() { CloseHandle(handle_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

private:
    HANDLE handle_;
};

class WindowsFileSystem : public SystemFiles {};

TEST_F(WindowsFileSystem, BothSeparatorsAndAnyCaseLeadToAFile) {
    fs::create_directories(folder_.native() / L"Kelb Folder" / L"子");
    put(fs::path(L"Kelb Folder") / L"子" / L"Wxdb.MDB", "db");
    for (const char16_t* name :
         {u"kelb folder\\子\\wxdb.mdb", u"KELB FOLDER/子/Wxdb.MDB", u".\\Kelb Folder\\子\\..\\子/wxdb.mdb"}) {
        EXPECT_EQ(files_->readFile(at(name)), "db") << testing::PrintToString(std::u16string(name));
    }
    EXPECT_THAT(files_->listFiles(at(u"Kelb Folder/子/")), testing::ElementsAre(u"Wxdb.MDB"));
    EXPECT_TRUE(files_->folderExists(at(u"kelb folder\\")));
}

TEST_F(WindowsFileSystem, APathMayBeLongerThan260Characters) {
    std::u16string deep = folder_.path();
    for (int i = 0; i < 8; ++i) {
        deep += u'\\' + std::u16string(50, u'長');
    }
    files_->makeFolders(deep);
    const std::u16string path = deep + u"\\Comb.mdb";
    files_->writeFile(path, "far");
    files_->replaceFile(path, "farther");
    files_->renameFile(path, deep + u"\\other.mdb");
    EXPECT_EQ(files_->readFile(deep + u"\\other.mdb"), "farther");
    EXPECT_THAT(files_->listFiles(deep), testing::ElementsAre(u"other.mdb"));
    files_->removeFile(deep + u"\\other.mdb");
    EXPECT_FALSE(files_->fileExists(deep + u"\\other.mdb"));
    EXPECT_FALSE(files_->fileExists(at(std::u16string(40'000, u'n'))));
}

TEST_F(WindowsFileSystem, ADriveThatIsNotThereIsNoMissingFile) {
    // Drives are not mapped here: the path stands as it is.
    const auto files = makeSystemFileSystem({{{u"B", folder_.path()}}, {}});
    put("a.mdb");
    EXPECT_EQ(kindOf([&] { (void)files->fileExists(u"B:\\a.mdb"); }), Kind::Unmapped);
    EXPECT_EQ(message_,
              "cannot look for \"B:\\a.mdb\": there is no drive B: on this machine now; connect it and try again");
    EXPECT_EQ(kindOf([&] { files->readFile(u"b:/a.mdb"); }), Kind::Unmapped);
    EXPECT_EQ(kindOf([&] { files->makeFolders(u"B:\\a\\b"); }), Kind::Unmapped);
    EXPECT_EQ(kindOf([&] { files->removeFile(u"B:\\a"); }), Kind::Unmapped);
    EXPECT_EQ(kindOf([&] { files->listFiles(u"B:"); }), Kind::Unmapped);
}

TEST_F(WindowsFileSystem, AFileOfAnotherProgramIsToldAsSuch) {
    put("db.mdb", "x");
    const std::u16string path = at(u"db.mdb");
    {
        const OtherProgram access(folder_.native() / "db.mdb", GENERIC_READ | GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(kindOf([&] { (void)files_->open(path, OpenMode::Read); }), Kind::Locked);
        EXPECT_THAT(message_, testing::HasSubstr("in use by another program; close it there and try again"));
        EXPECT_EQ(kindOf([&] { (void)files_->open(path, OpenMode::ReadWrite); }), Kind::Locked);
        EXPECT_EQ(kindOf([&] { files_->removeFile(path); }), Kind::Locked);
        EXPECT_EQ(kindOf([&] { files_->replaceFile(path, "y"); }), Kind::Locked);
        put("new.mdb");
        EXPECT_EQ(kindOf([&] { files_->renameFile(at(u"new.mdb"), path); }), Kind::Locked);
        EXPECT_EQ(files_->readFile(path), "x");
        EXPECT_TRUE(files_->isWritable(path));
    }
    const OtherProgram reader(folder_.native() / "db.mdb", GENERIC_READ, FILE_SHARE_READ);
    EXPECT_NO_THROW((void)files_->open(path, OpenMode::Read));
    EXPECT_EQ(kindOf([&] { (void)files_->open(path, OpenMode::ReadWrite); }), Kind::Locked);
    EXPECT_THAT(files_->listFiles(folder_.path()), testing::ElementsAre(u"db.mdb", u"new.mdb"));
}

TEST_F(WindowsFileSystem, WhatIsOpenForWritingIsOpenToNobodyElse) {
    put("db.mdb", "x");
    const auto held = files_->open(at(u"db.mdb"), OpenMode::ReadWrite);
    const HANDLE other =
        CreateFileW((folder_.native() / "db.mdb").c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_EQ(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(files_->fileExists(at(u"db.mdb")));
}

TEST_F(WindowsFileSystem, DevicesAndStreamsAreNoFiles) {
    put("page.htm", "x");
    for (const std::u16string& path : {std::u16string(u"NUL"), std::u16string(u"\\\\.\\pipe\\x"),
                                       at(u"page.htm:stream"), std::u16string(u"\0x", 2)}) {
        EXPECT_FALSE(files_->fileExists(path)) << toUtf8(path);
        EXPECT_EQ(kindOf([&] { files_->readFile(path); }), Kind::NotFound);
        EXPECT_EQ(kindOf([&] { files_->writeFile(path, "y"); }), Kind::NotFound);
    }
    EXPECT_EQ(files_->readFile(at(u"page.htm")), "x");
}

TEST_F(WindowsFileSystem, WhatIsNoFileIsRefused) {
    fs::create_directory(folder_.native() / "folder");
    put("file");
    EXPECT_EQ(kindOf([&] { (void)files_->open(at(u"folder"), OpenMode::Read); }), Kind::Other);
    EXPECT_EQ(kindOf([&] { files_->readFile(at(u"folder")); }), Kind::Other);
    EXPECT_EQ(message_, "cannot read \"" + toUtf8(at(u"folder")) + "\": it is a folder");
    EXPECT_EQ(kindOf([&] { files_->replaceFile(at(u"folder"), "x"); }), Kind::Other);
    EXPECT_EQ(kindOf([&] { files_->removeFile(at(u"folder")); }), Kind::Other);
    EXPECT_EQ(kindOf([&] { files_->readFile(at(u"file/below")); }), Kind::NotFound);
    EXPECT_EQ(kindOf([&] { files_->makeFolders(at(u"file/below")); }), Kind::NotFound);
    EXPECT_EQ(kindOf([&] { files_->makeFolders(at(u"file")); }), Kind::AlreadyExists);
    EXPECT_EQ(kindOf([&] { files_->syncFolder(at(u"none")); }), Kind::NotFound);
}

TEST_F(WindowsFileSystem, HiddenFilesStayHidden) {
    put("hidden.txt", "old");
    const std::wstring native = (folder_.native() / "hidden.txt").wstring();
    SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_HIDDEN);
    files_->writeFile(at(u"hidden.txt"), "newer");
    files_->replaceFile(at(u"hidden.txt"), "new");
    EXPECT_EQ(files_->readFile(at(u"hidden.txt")), "new");
    EXPECT_NE(GetFileAttributesW(native.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0U);
    EXPECT_THAT(files_->listFiles(folder_.path()), testing::ElementsAre(u"hidden.txt"));
}

TEST_F(WindowsFileSystem, ProtectedFilesAreLeft) {
    put("protected.txt", "old");
    const std::wstring native = (folder_.native() / "protected.txt").wstring();
    SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(files_->isWritable(at(u"protected.txt")));
    if (underWine()) {
        GTEST_SKIP() << "Wine protects no file from root";
    }
    EXPECT_EQ(kindOf([&] { files_->writeFile(at(u"protected.txt"), "x"); }), Kind::AccessDenied);
    EXPECT_EQ(kindOf([&] { files_->replaceFile(at(u"protected.txt"), "x"); }), Kind::AccessDenied);
    EXPECT_EQ(kindOf([&] { files_->removeFile(at(u"protected.txt")); }), Kind::AccessDenied);
    EXPECT_EQ(files_->readFile(at(u"protected.txt")), "old");
    SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsFileSystem, OffsetsPastFourGigabytesAreKept) {
    constexpr std::uint64_t kFar = (std::uint64_t{5} << 30U) + 7;
    const auto file = files_->open(at(u"big.mdb"), OpenMode::CreateNew);
    file->writeAt(kFar, std::as_bytes(std::span("far", 3)));
    EXPECT_EQ(file->size(), kFar + 3);
    std::array<std::byte, 4> bytes{};
    EXPECT_EQ(file->readAt(kFar, bytes), 3U);
    EXPECT_EQ(bytes[2], std::byte{'r'});
    file->truncate(kFar - 1);
    EXPECT_EQ(file->size(), kFar - 1);
}

TEST_F(WindowsFileSystem, ARelativePathIsLookedUpInTheCurrentFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.native());
    put("Kelb.INI", "x");
    EXPECT_EQ(files_->readFile(u"kelb.ini"), "x");
    EXPECT_EQ(files_->absolutePath(u"sub/../COMB.mdb"), fromUtf8((fs::current_path() / "COMB.mdb").string()));
    files_->writeFile(u"new.txt", "z");
    files_->syncFolder(parentFolder(u"new.txt"));
    EXPECT_EQ(files_->readFile(u"./NEW.txt"), "z");
    fs::current_path(before);
    EXPECT_EQ(files_->nativePath(u"D:/a\\b"), u"D:/a\\b");
}

TEST_F(WindowsFileSystem, TheProgramsFolderHoldsTheProgram) {
    EXPECT_TRUE(files_->fileExists(joinPath(executableFolder(), u"platform_tests.exe")));
}

} // namespace
} // namespace kelb::platform
