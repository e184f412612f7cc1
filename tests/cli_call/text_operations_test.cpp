#include "cli/call_loop.h"

#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/platform.h"
#include "platform/random.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>
#include <sstream>

namespace kelb::cli {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class FixedRandom final : public platform::Random {
public:
    void reseed() override {}
    double next() override { return 0.5; }
    std::uint64_t bits() override { return 0; }
};

class TextOperations : public testing::Test {
protected:
    TextOperations() { write(u"ADMarks.txt", u""); }

    void write(std::u16string_view name, std::u16string_view text) {
        files_.writeFile(std::u16string(u"/app/").append(name), platform::encode936(text));
    }
    /// What one run of the command answers, without the id.
    std::vector<std::string> call(const std::vector<std::string>& requests) {
        std::string lines;
        for (const std::string& request : requests) {
            lines += "{\"id\": 7, " + request + "}\n";
        }
        std::istringstream in(lines);
        std::stringstream out;
        EXPECT_EQ(runCall(in, out, platform_), 0);
        std::vector<std::string> answers;
        for (std::string line; std::getline(out, line);) {
            EXPECT_EQ(line.substr(0, 7), "{\"id\":7");
            answers.push_back(line.substr(7));
        }
        return answers;
    }

    platform::MemoryFileSystem files_;
    platform::SystemClock clock_;
    FixedRandom random_;
    platform::Platform platform_{files_, clock_, random_, u"/app"};
};

TEST_F(TextOperations, TakeTheirArgumentsInOrder) {
    write(u"SogouLabDic.dic", u"电视机\t9\tN\n黑屏\t5\tV");
    write(u"Kelb.ini", u"[Setup]\r\nadultFolder=甲\r\n[Own]\r\nkey=乙\r\n");
    const std::vector<std::pair<std::string, std::string>> exchange{
        {R"("op": "ClsSmart.smartReplaceTitle", "args": ["[求助]长虹 29寸, 无图像!"])",
         R"(,"result":"长虹29寸无图像，求详解？"})"},
        {R"("op": "ClsSmart.smartReplaceContent", "args": ["求助", "x"])", R"(,"result":"请教大虾"})"},
        {R"("op": "ClsSmart.smartReplaceNormal", "args": ["师傅", "长虹"])", R"(,"result":"修长虹的超哥"})"},
        {R"("op": "ClsSmart.getPinPai", "args": ["TCL和长虹"])", R"(,"result":"长虹"})"},
        {R"("op": "ClsSmart.blnChangHong", "args": ["ch"])", R"(,"result":false})"},
        {R"("op": "ClsSmart.searchTVCode", "args": ["长虹CH-16机芯"])", R"(,"result":"CH-16"})"},
        {R"("op": "ClsSmart.searchICCode", "args": ["MC44"])", R"(,"result":"三菱"})"},
        {R"("op": "ClsSmart.replaceTVCode", "args": ["CH-16，坏", "康佳"])",
         R"(,"result":"康佳电视CH-16（长虹机芯），坏"})"},
        {R"("op": "ClsSmart.smartGetProblem", "args": ["我家的电视机开机以后就是黑屏了"])",
         R"(,"result":"我家的电视机开机以后就是黑屏了"})"},
        {R"("op": "ClsFenCi.splitPrepare", "args": ["a电视，机"])", R"(,"result":"<|split|>电视<|split|>机"})"},
        {R"("op": "ClsFenCi.segment", "args": ["电视机又黑屏，"])",
         R"(,"result":3,"out":[["电视机","又","黑屏"],["N","","V"]]})"},
        {R"("op": "ClsSpecSheet.extTable", "args": ["a<table>甲", "甲"])", R"(,"result":"<table>甲"})"},
        {R"("op": "ClsSpecSheet.Table2TR", "args": ["<tr>1</tr>"])", R"(,"result":1,"out":[["<tr>1</tr>",""]]})"},
        {R"("op": "ClsSpecSheet.extSpePara", "args": ["甲", ["", "<th>甲 1<td><td>"]])", R"(,"result":"1"})"},
        {R"("op": "ClsSpecSheet.extTitle", "args": ["<title>甲</title>"])", R"(,"result":"甲"})"},
        {R"x("op": "ClsSpecSheet.extNameAndCode", "args": ["甲(乙)"])x", R"(,"out":["甲","乙"]})"},
        {R"("op": "Cls4QASite.extQTitle", "args": ["<div id=\"article\"><h1>甲</h1>"])", R"(,"result":"甲"})"},
        {R"("op": "Cls4QASite.extQContent", "args": ["<div id=\"article_body\"></div>甲</div>"])",
         R"(,"result":"甲"})"},
        {R"("op": "setUserNames", "args": [["丙"]])", "}"},
        {R"("op": "Cls4QASite.giveRndName")", R"(,"result":"丙"})"},
        {R"("op": "Cls4QASite.extAContent", "args": ["class=\"body\">换行管试试看</div>"])",
         R"(,"result":"丙：换行管试试看\r\n\r\n\r\n"})"},
        {R"("op": "RWIni.ReadIni", "args": ["KEY", "own", "/app/Kelb.ini"])", R"(,"result":"乙"})"},
        {R"("op": "RWIni.ReadIni", "args": ["adultFolder", "", ""])", R"(,"result":"甲"})"},
        {R"("op": "RWIni.ReadIni", "args": ["key", "own", "/app/none.ini"])", R"(,"result":""})"},
    };
    std::vector<std::string> requests, expected;
    for (const auto& [request, answer] : exchange) {
        requests.push_back(request);
        expected.push_back(answer);
    }
    EXPECT_EQ(call(requests), expected);
}

/// Other programs call these by name.
TEST_F(TextOperations, AreAllThere) {
    const nlohmann::json answer = nlohmann::json::parse("{" + call({R"("op": "list")"})[0].substr(1));
    std::set<std::string> names;
    for (const auto& operation : answer["result"]) {
        names.insert(operation["op"]);
    }
    for (const char* name : {
             "reset",
             "list",
             "setMarkers",
             "setUserNames",
             "setSiteName",
             "ClsSmart.killURLText",
             "ClsSmart.killTag",
             "pubProg.killTagStr",
             "ClsSmart.replaceGarbage",
             "ClsSmart.replaceGarbageTags",
             "ClsSmart.replaceGarbageTag",
             "ClsSmart.killMoreBR",
             "ClsSmart.cutTitle",
             "ClsSmart.CountGoodChar",
             "ClsSmart.blnValue",
             "ClsSmart.blnValue2",
             "ClsSmart.smartRead",
             "ClsSmart.smartReplaceTitle",
             "ClsSmart.smartReplaceContent",
             "ClsSmart.smartReplaceNormal",
             "ClsSmart.getPinPai",
             "ClsSmart.blnChangHong",
             "ClsSmart.searchTVCode",
             "ClsSmart.searchICCode",
             "ClsSmart.replaceTVCode",
             "ClsSmart.rndTVCode",
             "ClsSmart.smartGetProblem",
             "Prog_Copy.CopyRemoveHTML",
             "Prog_Copy.CopyRemoveHTML1",
             "Prog_Copy.CopyRemoveHTML2",
             "ClsYCleaner.RemoveHTML",
             "ClsYCleaner.RemoveHTML1",
             "Cls4Discuz.extDiscuzTitle",
             "Cls4Discuz.extDiscuzPageContent",
             "Cls4Discuz.extFloorContent",
             "Cls4Discuz.killDiscuzMark",
             "Cls4Discuz.split2Floors",
             "Cls4Discuz.giveRndName",
             "Cls4Discuz.killGR",
             "Cls4Discuz.killBeginGR",
             "Prog_Dz.localPagePath",
             "Prog_Dz.extTitleTag",
             "Cls4Article.extTitleV1",
             "Cls4Article.extContent4SiteA",
             "Cls4Article.extTitle4SiteA",
             "Cls4Article.extContent4SiteB",
             "Cls4Article.extTitle4SiteB",
             "Cls4Article.extContent",
             "Cls4Article.extTitle",
             "Cls4Article.replaceHtmlTag",
             "Cls4Article.killTag",
             "Cls4Article.getPageNum",
             "Cls4Article.ImgSrcRecover",
             "Cls4Article.getTagIMG",
             "Cls4Article.getImgSrc",
             "Prog_Kelb.getFullURL",
             "Prog_Kelb.InStrNoCase",
             "ClsSpecSheet.extTable",
             "ClsSpecSheet.Table2TR",
             "ClsSpecSheet.extSpePara",
             "ClsSpecSheet.extTitle",
             "ClsSpecSheet.extNameAndCode",
             "Cls4QASite.extQTitle",
             "Cls4QASite.extQContent",
             "Cls4QASite.extAContent",
             "Cls4QASite.giveRndName",
             "FrmExtractor.tagName",
             "FrmExtractor.getSpecialIdx",
             "ClsWebExtractor.extC",
             "ClsFenCi.splitPrepare",
             "RWIni.ReadIni",
         }) {
        EXPECT_TRUE(names.contains(name)) << name;
    }
}

TEST_F(TextOperations, SetCodesAreKeptUntilReset) {
    write(u"codes.txt", u"甲\r\nA1 A2 A3");
    const auto answers = call({R"("op": "ClsSmart.rndTVCode", "args": ["/app/codes.txt"])",
                               R"("op": "ClsSmart.rndTVCode", "args": ["/app/none.txt"])", R"("op": "reset")",
                               R"("op": "ClsSmart.rndTVCode", "args": ["/app/none.txt"])"});
    EXPECT_EQ(answers[0], ",\"result\":\"A2(甲)\"}") << "half of the last index, 2";
    EXPECT_EQ(answers[1], ",\"result\":\"A2(甲)\"}");
    EXPECT_THAT(answers[3], HasSubstr("none.txt"));
}

TEST_F(TextOperations, SegmentationNeedsItsDictionary) {
    const auto answers =
        call({R"("op": "ClsFenCi.segment", "args": ["电视"])", R"("op": "ClsFenCi.splitPrepare", "args": ["电视"])"});
    EXPECT_THAT(answers[0], HasSubstr("SogouLabDic.dic"));
    EXPECT_THAT(answers[1], EndsWith("\"电视\"}"));
}

} // namespace
} // namespace kelb::cli
