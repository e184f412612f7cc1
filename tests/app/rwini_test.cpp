#include "app/RWIni.h"

#include "platform/code_page.h"
#include "platform/memory_file_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelb::app::RWIni {
namespace {

std::u16string readValue(std::string_view fileBytes, std::u16string_view key = u"adultFolder",
                         std::u16string_view section = u"") {
    platform::MemoryFileSystem files;
    files.writeFile(u"C:\\Kelb\\Kelb.ini", fileBytes);
    return ReadIni(key, section, u"", files, u"C:\\Kelb\\");
}

struct LineCase {
    const char* name;
    const char* bytes;
    const char16_t* value;
};
class IniLines : public testing::TestWithParam<LineCase> {};

TEST_P(IniLines, GiveTheValueOfAdultFolder) {
    EXPECT_EQ(readValue(GetParam().bytes), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Files, IniLines,
    testing::ValuesIn(std::vector<LineCase>{
        {"plain", "[Setup]\r\nadultFolder=D:\\Data\r\n", u"D:\\Data"},
        {"line_feeds_and_no_last_one", "[Setup]\nadultFolder=D:\\Data", u"D:\\Data"},
        {"names_without_case", "[SETUP]\nADULTFOLDER=x", u"x"},
        {"blanks_and_tabs_around", " [ Setup ] \n\t adultFolder \t= \t a b \t\r\n", u"a b"},
        {"first_equal_key_wins", "[Setup]\nadultFolder=1\nAdultFolder=2", u"1"},
        {"first_equals_sign_splits", "[Setup]\nadultFolder=a=b", u"a=b"},
        {"comment_only_at_the_start", "[Setup]\n;adultFolder=1\n ; adultFolder=2\nadultFolder=3;4", u"3;4"},
        {"other_section", "[Other]\nadultFolder=1\n[Setup]\nadultFolder=2", u"2"},
        {"section_goes_on_later", "[Setup]\na=1\n[Other]\nb=2\n[setup]\nadultFolder=3", u"3"},
        {"before_any_section", "adultFolder=1\n[Setup]\n", u""},
        {"key_missing", "[Setup]\nadultFolders=1", u""},
        {"no_value", "[Setup]\nadultFolder=", u""},
        {"no_equals_sign", "[Setup]\nadultFolder", u""},
        {"section_not_closed", "[Setup\nadultFolder=1", u""},
        {"empty_file", "", u""},
        {"double_quotes_dropped_once", "[Setup]\nadultFolder=\"\" a \"\"", u"\" a \""},
        {"single_quotes_dropped", "[Setup]\nadultFolder=' a '", u" a "},
        {"quotes_that_do_not_match_stay", "[Setup]\nadultFolder=\"a'", u"\"a'"},
        {"one_quote_stays", "[Setup]\nadultFolder=\"", u"\""},
        {"only_quotes", "[Setup]\nadultFolder=\"\"", u""},
        // 81 5D is one character; its second byte looks like "]".
        {"bracket_inside_a_character", "[\x81]Setup]\nadultFolder=1\n[Setup]\nadultFolder=\x81]2", u"乚2"},
        {"chinese_value", "[Setup]\nadultFolder=D:\\\xB2\xCA\xB5\xE7", u"D:\\彩电"},
        {"euro_is_one_byte", "[Setup]\nadultFolder=\x80", u"€"},
    }),
    [](const auto& tested) { return std::string(tested.param.name); });

// The double-byte character of the values below is 中, D6 D0.
std::u16string repeated(std::size_t count, char16_t unit = u'中') {
    return std::u16string(count, unit);
}

struct LengthCase {
    const char* name;
    std::u16string value, expected;
};
class IniLengths : public testing::TestWithParam<LengthCase> {};

TEST_P(IniLengths, AreThoseOfTheProfileBuffer) {
    const LengthCase& c = GetParam();
    EXPECT_EQ(readValue("[Setup]\nadultFolder=" + platform::encode936(c.value)), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Values, IniLengths,
                         testing::ValuesIn(std::vector<LengthCase>{
                             {"ascii_of_511", repeated(511, u'x'), repeated(511, u'x')},
                             {"ascii_of_512_is_cut", repeated(512, u'x'), repeated(511, u'x')},
                             // 510 bytes, 255 counted: 255 characters.
                             {"chinese_of_255", repeated(255), repeated(255)},
                             // Byte 511 would be half of the 256th.
                             {"chinese_of_256_loses_the_half", repeated(256), repeated(255)},
                             // 1 + 2 * 255 = 511 bytes, 256 characters, 255 counted: 256.
                             {"odd_byte_fills_the_buffer", u"x" + repeated(256), u"x" + repeated(255)},
                             // The 256th character is examined: 257 bytes - 1 = 256.
                             {"double_byte_at_256", repeated(255, u'x') + u"中", repeated(255, u'x') + u"中"},
                             // The 257th is not: 258 bytes - 0 = 258, one character too many, the null.
                             {"double_byte_at_257", repeated(256, u'x') + u"中",
                              repeated(256, u'x') + u"中" + repeated(1, u'\0')},
                             // 262 bytes of 259 characters: null and two blanks.
                             {"three_behind_256", repeated(256, u'x') + repeated(3),
                              repeated(256, u'x') + repeated(3) + repeated(1, u'\0') + u"  "},
                             // 100 + 2 * 156 counted, 2 * 10 not: 432 bytes - 156 = 276 for 266 characters.
                             {"chinese_across_256", repeated(100, u'x') + repeated(166),
                              repeated(100, u'x') + repeated(166) + repeated(1, u'\0') + repeated(9, u' ')},
                             // 510 bytes asked of a buffer that converts to 383 characters, the null and one blank.
                             {"buffer_ends_first", repeated(256, u'x') + repeated(127),
                              repeated(256, u'x') + repeated(127) + repeated(1, u'\0') + u" "},
                             // 256 + 2 * 127 = 510, and the 128th does not fit into byte 511.
                             {"cut_behind_256", repeated(256, u'x') + repeated(128),
                              repeated(256, u'x') + repeated(127) + repeated(1, u'\0') + u" "},
                         }),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(ReadIni, SectionAndFileHaveDefaults) {
    platform::MemoryFileSystem files;
    files.writeFile(u"C:\\Kelb\\Kelb.ini", "[Setup]\nk=setup\n[Paths]\nk=paths\n");
    files.writeFile(u"C:\\Other.ini", "[Setup]\nk=other\n");
    EXPECT_EQ(ReadIni(u"k", u"", u"", files, u"C:\\Kelb"), u"setup");
    EXPECT_EQ(ReadIni(u"k", u"paths", u"", files, u"C:\\Kelb\\"), u"paths");
    EXPECT_EQ(ReadIni(u"k", u"", u"C:\\Other.ini", files, u"C:\\Kelb"), u"other");
    EXPECT_EQ(ReadIni(u"k", u"", u"C:\\None.ini", files, u"C:\\Kelb"), u"");
    EXPECT_EQ(ReadIni(u"", u"", u"", files, u"C:\\Kelb"), u"");
}

TEST(IniFile, ListsASectionInTheOrderOfTheFile) {
    platform::MemoryFileSystem files;
    files.writeFile(u"/k.ini",
                    "[Shares]\nshare2=\\\\b\\c|/b\n;share3=x\nshare1=\\\\a\\c|/a\nSHARE2=late\n[Drives]\nD=/d\n");
    const IniFile ini(files, u"/k.ini");
    using Entry = std::pair<std::u16string, std::u16string>;
    EXPECT_THAT(ini.section(u"shares"),
                testing::ElementsAre(Entry{u"share2", u"\\\\b\\c|/b"}, Entry{u"share1", u"\\\\a\\c|/a"}));
    EXPECT_THAT(ini.section(u"Drives"), testing::ElementsAre(Entry{u"D", u"/d"}));
    EXPECT_TRUE(ini.section(u"Setup").empty());
    EXPECT_EQ(ini.ReadIni(u"d", u"drives"), u"/d");
}

} // namespace
} // namespace kelb::app::RWIni
