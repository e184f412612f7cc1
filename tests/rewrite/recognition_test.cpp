#include "rewrite/ClsSmart.h"

#include <gtest/gtest.h>

namespace kelb::rewrite {
namespace {

using Text = std::u16string;

struct TextCase {
    const char* fault;
    Text text, expected;
};

TEST(GetPinPai, TheListDecidesNotThePlace) {
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"the list's order", u"TCL和长虹", u"长虹"},
             {"case as listed", u"ACER显示器", u""},
             {"… also for names in mixed case", u"acer的BenQ", u"acer"},
             {"a name with a blank", u"我的Great Wall坏了", u"Great Wall"},
             {"the last entry", u"三菱", u"三菱"},
             {"a maker before the monitor of its country", u"SAMSUNG三星", u"三星"},
             {"the seam of the parts", u"PHILIPS", u"PHILIPS"},
             {"no brand", u"电视坏了", u""},
             {"nothing", u"", u""},
         }) {
        EXPECT_EQ(ClsSmart::getPinPai(c.text), c.expected) << c.fault;
    }
}

TEST(BlnChangHong, FindsEitherName) {
    EXPECT_TRUE(ClsSmart::blnChangHong(u"老长虹"));
    EXPECT_TRUE(ClsSmart::blnChangHong(u"MACH3"));
    EXPECT_FALSE(ClsSmart::blnChangHong(u"ch-16长红,"));
}

TEST(SearchTVCode, FindsTheFirstCode) {
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"between Chinese characters", u"长虹CH-16机芯", u"CH-16"},
             {"four characters", u"型号29F8。好", u""},
             {"five", u"型号29F82。好", u"29F82"},
             {"a QQ number is refused, its rest is not", u"QQ12345678，好", u"Q12345678"},
             {"QQ in lower case, too", u"qq12345，好", u"q12345"},
             {"at the end of the text", u"SF2111", u""},
             {"its end is the text's last character", u"SF2111，", u""},
             {"one character behind that", u"SF2111，，", u"SF2111"},
             {"two digits in a row are needed", u"A1B2C3，好", u""},
             {"a letter is needed", u"138-00138，好", u""},
             {"a hyphen does not begin a code", u"-CH-16，好", u"CH-16"},
             {"… but may end one", u"CH16-，好", u"CH16-"},
             {"fourteen units", u"ABCDEFGHIJKL12，好", u"ABCDEFGHIJKL12"},
             {"of fifteen the last fourteen", u"ABCDEFGHIJKLM12，好", u"BCDEFGHIJKLM12"},
             {"a hyphen where the last fourteen begin", u"AB-DEFGHIJKLMN12，好", u"DEFGHIJKLMN12"},
             {"the letter may lie before the last fourteen", u"A12345678901234567890，好", u""},
             {"the text's order", u"AB123 CD456 ", u"AB123"},
             {"a run without a code is passed over", u"HELLO WORLD CD456。好", u"CD456"},
             {"the text is taken as it stands", u"cd456。好", u"cd456"},
             {"full-width letters are none", u"ＣＨ16，ＡＢ99，好", u""},
             {"the Kelvin sign is a k in lower case", u"\u212A1234，好", u"\u212A1234"},
             {"nothing", u"", u""},
         }) {
        EXPECT_EQ(ClsSmart::searchTVCode(c.text), c.expected) << c.fault;
    }
}

TEST(SearchICCode, NamesTheMaker) {
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"the first row", u"CH-16", u"长虹"},
             {"a prefix of three", u"TDA8361", u"飞利浦"},
             {"lower case", u"tda8361", u"飞利浦"},
             {"a prefix in lower case is never found", u"uPC1420", u""},
             {"M takes what MC was meant for", u"MC44", u"三菱"},
             {"L two behind the prefix's start", u"TAL123", u""},
             {"… and the next row still has its turn", u"CHL-TA12", u"东芝"},
             {"L inside a prefix of three is not looked at", u"TDAL12", u"飞利浦"},
             {"a code that ends with the prefix", u"12-HA", u"日立"},
             {"a letter before the prefix", u"XTA123", u""},
             {"a digit before the prefix", u"1TA123", u""},
             {"only the first place of a prefix counts", u"XTA-TA12", u""},
             {"the maker at six from the prefix", u"TA1234东芝", u"东芝"},
             {"at five", u"TA123东芝", u""},
             {"on the other side at five", u"东芝123TA", u""},
             {"nothing", u"", u""},
         }) {
        EXPECT_EQ(ClsSmart::searchICCode(c.text), c.expected) << c.fault;
    }
}

TEST(ReplaceTVCode, MarksTheCodeUp) {
    struct Case {
        const char* fault;
        Text text, brand, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"brand in front", u"我的SF2111，坏了", u"长虹", u"我的长虹电视SF2111，坏了"},
             {"brand there already", u"长虹SF2111，坏了", u"长虹", u"长虹SF2111，坏了"},
             {"maker behind", u"CH-16，坏", u"康佳", u"康佳电视CH-16（长虹机芯），坏"},
             {"no code", u"tcl坏了", u"长虹", u"TCL坏了"},
             {"upper case before the search", u"我的sf2111，坏了", u"长虹", u"我的长虹电视SF2111，坏了"},
             {"TCL stands for a brand", u"Tcl的SF2111，坏了", u"长虹", u"TCL的SF2111，坏了"},
             {"so does 王牌", u"王牌SF2111，坏了", u"长虹", u"王牌SF2111，坏了"},
             {"an empty brand is found", u"我的SF2111，坏了", u"", u"我的SF2111，坏了"},
             {"eight units back", u"长虹一二三四五六SF2111，坏了", u"长虹", u"长虹一二三四五六SF2111，坏了"},
             {"nine", u"长虹一二三四五六七SF2111，坏了", u"长虹", u"长虹一二三四五六七长虹电视SF2111，坏了"},
             {"near the start the first eight units count, code and all", u"SF2111长虹坏了", u"长虹",
              u"SF2111长虹坏了"},
             {"the brand minds case", u"ab，SF2111，坏了", u"ab", u"AB，ab电视SF2111，坏了"},
             {"the code's first place is marked, where it is no code", u"AB12CXXXXXXXXXXXXXX，AB12C，坏了", u"甲",
              u"甲电视AB12CXXXXXXXXXXXXXX，AB12C，坏了"},
         }) {
        EXPECT_EQ(ClsSmart::replaceTVCode(c.text, c.brand), c.expected) << c.fault;
    }
}

TEST(SmartGetProblem, GivesTheSentence) {
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"a segment of five", u"电视机黑屏", u""},
             {"the whole sentence", u"我家的电视机开机以后就是黑屏了", u"我家的电视机开机以后就是黑屏了"},
             {"twelve units only mention a fault", u"电视机开机以后就黑屏了啊", u""},
             {"thirteen", u"电视机开机以后就是黑屏了啊", u"电视机开机以后就是黑屏了啊"},
             {"the first sentence, not the first row",
              u"我家电视机的图像老是抖动得厉害，我家的电视机开机以后就是黑屏了", u"我家电视机的图像老是抖动得厉害"},
             {"a short one is passed over", u"黑屏了，我家的电视机开机以后就是不开机了。",
              u"我家的电视机开机以后就是不开机了"},
             {"every separator",
              u"甲，乙,丙。丁？戊?己！庚!辛 壬\u3000癸:子：丑（寅）卯(辰)巳\r\n我家的电视机开机以后就是消磁了啊",
              u"我家的电视机开机以后就是消磁了啊"},
             {"bars and hyphens go", u"我家的电|视机开-机以后就是黑屏了", u"我家的电视机开机以后就是黑屏了"},
             {"… also from between CR and LF", u"甲\r-\n我家的电视机开机以后就是黑屏了",
              u"我家的电视机开机以后就是黑屏了"},
             {"LF alone parts nothing", u"我家的电视机\n开机以后就是黑屏了", u"我家的电视机\n开机以后就是黑屏了"},
             {"the last filled row", u"这台机器的行振荡电路总是不起振", u"这台机器的行振荡电路总是不起振"},
             {"no fault named: the empty rows end the search", u"我家的电视机开机以后一切都很正常", u""},
         }) {
        EXPECT_EQ(ClsSmart::smartGetProblem(c.text), c.expected) << c.fault;
    }
}

} // namespace
} // namespace kelb::rewrite
