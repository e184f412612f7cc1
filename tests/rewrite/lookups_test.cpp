#include "platform/code_page.h"
#include "rewrite/ClsSmart.h"

#include "tests/ado/ado_fixture.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace kelb::rewrite {
namespace {

using Text = std::u16string;
using ado::testing::AdoFixture;
using testing::HasSubstr;

class Lookups : public AdoFixture {};

TEST_F(Lookups, LearnTVCodeGivesBothTexts) {
    execute(u"create table wxTVCode (TVCode varchar(255), mom varchar(255), dad memo)");
    execute(u"insert into wxTVCode (TVCode, mom, dad) values ('CH-16', '甲', '乙')");
    execute(u"insert into wxTVCode (TVCode, mom, dad) values ('ch-16', '丙', '丁')");
    execute(u"insert into wxTVCode (TVCode) values ('TDA8361')");
    struct Case {
        const char* fault;
        Text code;
        bool found;
        Text mom, dad;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"letter case does not count; the first row", u"cH-16", true, u"甲", u"乙"},
             {"Null reads as nothing", u"TDA8361", true, u"", u""},
             {"a part of a code", u"CH-1", false, u"", u""},
             {"a wildcard goes in as it stands", u"%8361", true, u"", u""},
         }) {
        Text mom = u"old", dad = u"old";
        EXPECT_EQ(ClsSmart::learnTVCode(*connection, c.code, mom, dad), c.found) << c.fault;
        EXPECT_EQ(mom, c.mom) << c.fault;
        EXPECT_EQ(dad, c.dad) << c.fault;
    }
    Text mom, dad;
    EXPECT_THROW(ClsSmart::learnTVCode(*connection, u"a'b", mom, dad), ado::Error) << "the quote is not doubled";
}

TEST_F(Lookups, ExtRepairKWListsTheKeywordsInTheTablesOrder) {
    execute(u"create table wxKWs (id int identity(1,1) not null, wd varchar(255))");
    for (const char16_t* word : {u"行管", u"电源", u"cpu", u"高压包"}) {
        execute(Text(u"insert into wxKWs (wd) values ('") + word + u"')");
    }
    EXPECT_EQ(ClsSmart::extRepairKW(*connection, u"高压包烧坏，行管击穿，行管发热，CPU正常"), u"行管 高压包");
    EXPECT_EQ(ClsSmart::extRepairKW(*connection, u"正常"), u"");
}

TEST_F(Lookups, ErrorsOfTheDatabasePass) {
    Text mom, dad;
    EXPECT_THROW(ClsSmart::learnTVCode(*connection, u"CH-16", mom, dad), ado::Error) << "no table";
    EXPECT_THROW(ClsSmart::extRepairKW(*connection, u""), ado::Error) << "no table";
    connection->Close();
    EXPECT_THROW(ClsSmart::extRepairKW(*connection, u""), ado::Error) << "closed";
}

/// Gives the same number until told otherwise, and counts how often it was seeded.
class FixedRandom final : public platform::Random {
public:
    void reseed() override { ++seeds; }
    double next() override { return number; }
    std::uint64_t bits() override { return 0; }
    double number = 0;
    int seeds = 0;
};

class RndTVCode : public testing::Test {
protected:
    RndTVCode() {
        files_.writeFile(u"/app/ADMarks.txt", "");
        smart_.emplace(files_, u"/app");
    }
    void write(std::u16string_view text) { files_.writeFile(kPath, platform::encode936(text)); }
    Text draw(double number) {
        random_.number = number;
        return smart_->rndTVCode(kPath, random_);
    }
    std::string faultOf(std::u16string_view text) {
        write(text);
        try {
            return "drew " + platform::toUtf8(draw(0));
        } catch (const std::exception& error) {
            return error.what();
        }
    }

    static constexpr std::u16string_view kPath = u"D:\\codes.txt";
    platform::MemoryFileSystem files_;
    FixedRandom random_;
    std::optional<ClsSmart> smart_;
};

TEST_F(RndTVCode, DrawsACodeWithItsHeading) {
    write(u"CH-16\r\nG2988  H2989\r\nABCDEFGHIJKL ABCDEFGHIJK\r\n\r\n长虹\r\nＰ1 P2");
    EXPECT_EQ(draw(0), u"G2988(CH-16)");
    // Five codes: G2988, H2989, ABCDEFGHIJK (eleven units), Ｐ1, P2; the factor is 4.
    EXPECT_EQ(draw(0.25), u"H2989(CH-16)");
    EXPECT_EQ(draw(0.5), u"ABCDEFGHIJK(CH-16)");
    EXPECT_EQ(draw(0.999), u"Ｐ1(长虹)") << "the last one is never drawn";
    EXPECT_EQ(random_.seeds, 1);
}

TEST_F(RndTVCode, ReadsTheFileOnce) {
    write(u"甲\r\nA1");
    EXPECT_EQ(draw(0.999), u"A1(甲)") << "a single code is drawn";
    files_.removeFile(kPath);
    EXPECT_EQ(draw(0), u"A1(甲)");
    EXPECT_EQ(smart_->rndTVCode(u"another", random_), u"A1(甲)");
}

TEST_F(RndTVCode, AFailedLoadKeepsNothing) {
    EXPECT_THROW(draw(0), platform::FileError);
    EXPECT_THAT(faultOf(u"甲\r\nA1\r\n\r\n乙"), HasSubstr("one line in block 2"));
    EXPECT_THAT(faultOf(u"甲\r\nA1\r\n\r\n"), HasSubstr("one line in block 2")) << "a blank line at the end";
    EXPECT_THAT(faultOf(u""), HasSubstr("D:\\codes.txt has no code"));
    EXPECT_THAT(faultOf(u"甲\r\nABCDEFGHIJKL"), HasSubstr("has no code")) << "twelve units";
    EXPECT_EQ(faultOf(u"乙\r\nB1"), "drew B1(乙)") << "a later call reads again, and only this";
}

TEST_F(RndTVCode, HoldsOneThousandAndOneCodes) {
    Text text = u"甲\r\n";
    for (int code = 1; code <= 1001; ++code) {
        text += u"A" + platform::fromUtf8(std::to_string(code)) + u" ";
    }
    EXPECT_THAT(faultOf(text + u"A1002"), HasSubstr("more than 1001 codes"));
    EXPECT_EQ(faultOf(text), "drew A1(甲)");
    EXPECT_EQ(draw(0.9995), u"A1000(甲)") << "0.9995 of 1000";
}

} // namespace
} // namespace kelb::rewrite
