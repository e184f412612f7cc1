#include "platform/path_map.h"

#include "platform/file_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kelb::platform {
namespace {

TEST(PathMap, WindowsShape) {
    for (const char16_t* path : {u"D:\\a", u"d:/a", u"D:", u"\\\\host\\share", u"\\\\host"}) {
        EXPECT_TRUE(isWindowsPath(path)) << testing::PrintToString(std::u16string(path));
    }
    for (const char16_t* path :
         {u"", u"/home", u"D:a", u"DD:\\a", u"\\Comb.mdb", u"\\\\", u"\\\\\\x", u"a\\b", u"中:\\"}) {
        EXPECT_FALSE(isWindowsPath(path)) << testing::PrintToString(std::u16string(path));
    }
}

const PathMap& sampleMap() {
    static const PathMap map{{{u"d", u"/data/d"}, {u"G:", u"/data/g/"}, {u"x", u""}},
                             {{u"\\\\host\\pages", u"/srv/pages"},
                              {u"\\\\HOST\\pages\\old", u"/srv/old"},
                              {u"\\\\host\\pag", u"/srv/wrong"}}};
    return map;
}

#ifdef _WIN32
TEST(PathMap, APathStandsAsItIs) {
    for (const char16_t* path : {u"D:\\a/b", u"X:\\a", u"\\\\host\\pages\\x", u"/mnt/lan\\1"}) {
        EXPECT_EQ(translatePath(path, sampleMap()), path);
    }
}
#else
struct TranslateCase {
    const char *windows, *native;
};

std::u16string wide(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

TEST(PathMap, TranslatesDrivesAndShares) {
    for (const TranslateCase& c : {
             TranslateCase{"D:\\Kelb(Output)\\wxdb.mdb", "/data/d/Kelb(Output)/wxdb.mdb"},
             {"d:/a\\b", "/data/d/a/b"},
             {"D:", "/data/d"},
             {"D:\\", "/data/d/"},
             {"g:\\a", "/data/g/a"}, // a folder with a separator at its end does not get two
             {"\\\\Host\\Pages\\1\\2.htm", "/srv/pages/1/2.htm"},
             {"\\\\host/pages/x", "/srv/pages/x"},
             {"\\\\host\\pages", "/srv/pages"},
             {"\\\\host\\pages\\OLD\\x", "/srv/old/x"}, // the longest front wins
             {"\\\\host\\pages\\older", "/srv/pages/older"},
             {"/mnt/lan\\1\\2.htm", "/mnt/lan/1/2.htm"}, // a stored path joined to a native folder
             {"/mnt/a b", "/mnt/a b"},
             {"", ""},
         }) {
        EXPECT_EQ(translatePath(wide(c.windows), sampleMap()), wide(c.native)) << c.windows;
    }
}

TEST(PathMap, UnmappedNamesTheKeyToSet) {
    struct Unmapped {
        const char *path, *advice;
    };
    for (const Unmapped& c : {
             Unmapped{"e:\\a", "set E=<folder> in section [Drives] of Kelb.ini"},
             {"X:\\a", "set X=<folder> in section [Drives] of Kelb.ini"}, // a key without a value
             {"\\\\other\\share\\a\\b", "set share1=\\\\other\\share|<folder> in section [Shares] of Kelb.ini"},
             {"\\\\other", "set share1=\\\\other|<folder>"},
         }) {
        try {
            (void)translatePath(wide(c.path), sampleMap());
            ADD_FAILURE() << c.path;
        } catch (const FileError& error) {
            EXPECT_EQ(error.kind(), FileError::Kind::Unmapped);
            EXPECT_EQ(error.path(), wide(c.path));
            EXPECT_THAT(error.what(), testing::HasSubstr(c.advice));
        }
    }
}

#endif

TEST(PathMap, JoinsAndCuts) {
    EXPECT_EQ(joinPath(u"D:\\a", u"b.mdb"), u"D:\\a\\b.mdb");
    EXPECT_EQ(joinPath(u"D:", u"b.mdb"), u"D:\\b.mdb");
    EXPECT_EQ(joinPath(u"/a", u"b.mdb"), u"/a/b.mdb");
    EXPECT_EQ(joinPath(u"/a/", u"b.mdb"), u"/a/b.mdb");
    EXPECT_EQ(joinPath(u"", u"b.mdb"), u"b.mdb");
    EXPECT_EQ(fileName(u"D:\\a/b.mdb"), u"b.mdb");
    EXPECT_EQ(fileName(u"b.mdb"), u"b.mdb");
    EXPECT_EQ(fileName(u"/a/"), u"");
    EXPECT_EQ(parentFolder(u"D:\\a\\b.mdb"), u"D:\\a");
    EXPECT_EQ(parentFolder(u"D:\\b.mdb"), u"D:");
    EXPECT_EQ(parentFolder(u"/b.mdb"), u"/");
    EXPECT_EQ(parentFolder(u"b.mdb"), u"");
}

TEST(FileError, IsOneLineOfUtf8) {
    const FileError error(FileError::Kind::NotFound, "read", u"D:\\页\r\n.htm", 2, "no such file");
    EXPECT_STREQ(error.what(), "cannot read \"D:\\\xE9\xA1\xB5??.htm\": no such file");
    EXPECT_EQ(error.path(), u"D:\\页\r\n.htm");
    EXPECT_EQ(error.systemCode(), 2);
    EXPECT_STREQ(FileError(FileError::Kind::NoSpace, "make a temporary file", u"", 28, "disk full").what(),
                 "cannot make a temporary file: disk full");
}

} // namespace
} // namespace kelb::platform
