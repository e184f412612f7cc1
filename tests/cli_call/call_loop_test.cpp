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

using testing::HasSubstr;

class HighestRandom final : public platform::Random {
public:
    void reseed() override {}
    double next() override { return 0.999; }
    std::uint64_t bits() override { return 0; }
};

class CallCommand : public testing::Test {
protected:
    std::vector<std::string> call(const std::string& requests) {
        std::istringstream in(requests);
        std::ostringstream out;
        EXPECT_EQ(runCall(in, out, platform_), 0);
        std::vector<std::string> answers;
        std::istringstream lines(out.str());
        for (std::string line; std::getline(lines, line);) {
            answers.push_back(line);
        }
        return answers;
    }
    void writeMarks() { files_.writeFile(u"/app/ADMarks.txt", platform::encode936(u"广告")); }

    platform::MemoryFileSystem files_;
    platform::SystemClock clock_;
    HighestRandom random_;
    platform::Platform platform_{files_, clock_, random_, u"/app"};
};

TEST_F(CallCommand, AnswersEachLineInOrder) {
    writeMarks();
    const std::vector<std::pair<std::string, std::string>> exchange{
        // result alone, result and out, out alone, neither
        {R"({"id": 1, "op": "ClsSmart.cutTitle", "args": ["站-题", "-"]})", R"({"id":1,"result":"题"})"},
        {R"({"id": "a", "op": "ClsSmart.killTag", "args": ["a<b>\u00e9"]})",
         R"({"id":"a","result":true,"out":["aé"]})"},
        {R"({"id": [2], "op": "Cls4Discuz.split2Floors", "args": ["", "x"]})",
         R"({"id":[2],"out":[[],"x|无楼层标志!|楼层<3，为: 0层",false]})"},
        {R"({"id": 3, "op": "setMarkers", "args": ["a", "b", "c", "d"]})", R"({"id":3})"},
        // every type of value
        {R"({"id": 4, "op": "Prog_Copy.CopyRemoveHTML2", "args": ["甲<div>乙"]})",
         R"({"id":4,"result":2,"out":[["甲","乙"]]})"},
        {R"({"id": 5, "op": "Prog_Dz.localPagePath", "args": [true, "/lan/", "D:\\p"]})",
         R"({"id":5,"result":"/lan/p"})"},
        {R"({"id": 6, "op": "ClsSmart.CountGoodChar", "args": ["电源"]})", R"({"id":6,"result":2})"},
        {R"({"id": 7, "op": "ClsSmart.smartRead"})", R"({"id":7,"result":""})"},
        // outputs in their order: cleaned text, then log
        {R"({"op": "ClsSmart.replaceGarbage", "args": ["[/box]a", "x"]})",
         R"({"id":null,"result":true,"out":["a","x\r\n=========\r\n[/box]"]})"},
        {R"({"op": "Prog_Copy.CopyRemoveHTML1", "args": ["a<b>c"]})", R"({"id":null,"result":" ac","out":["c"]})"},
        {R"({"op": "ClsYCleaner.RemoveHTML1", "args": ["a<img>c"]})",
         R"({"id":null,"result":"a<img>c","out":["img>c"]})"},
    };
    std::string requests;
    std::vector<std::string> expected;
    for (const auto& [request, answer] : exchange) {
        requests += request + '\n';
        expected.push_back(answer);
    }
    EXPECT_EQ(call(requests), expected);
}

TEST_F(CallCommand, KeepsStateUntilReset) {
    writeMarks();
    const std::string judge = R"({"op": "ClsSmart.blnValue", "args": ["电源坏了", ""]})";
    const std::string kept = R"({"id":null,"result":true,"out":[""]})";
    EXPECT_EQ(call(judge + '\n' + judge + "\n{\"op\": \"reset\"}\n" + judge),
              (std::vector<std::string>{kept, R"({"id":null,"result":false,"out":["与上次重复|"]})", R"({"id":null})",
                                        kept}));
}

TEST_F(CallCommand, DrawsFromTheNamesThatWereSetOrFromTheFile) {
    const std::string draw = "{\"op\": \"Cls4Discuz.giveRndName\"}\n";
    const std::string set = "{\"op\": \"setUserNames\", \"args\": [[\"甲\", \"乙\", \"丙\"]]}\n";
    const auto answers = call(draw + set + draw);
    EXPECT_THAT(answers[0], HasSubstr("no user names"));
    EXPECT_EQ(answers[2], R"({"id":null,"result":"乙"})") << "no ad marks are needed for a name";

    files_.writeFile(u"/app/userNames.txt", platform::encode936(u"丁|戊"));
    EXPECT_EQ(call(draw), std::vector<std::string>{R"({"id":null,"result":"丁"})"});
}

TEST_F(CallCommand, GoesOnAfterAnError) {
    writeMarks();
    struct Case {
        std::string request, id, error;
    };
    const std::vector<Case> cases{
        {"", "null", "not JSON"},
        {"{\"id\": 1", "null", "not JSON"},
        {"{\"id\": 1, \"op\": \"\xff\"}", "null", "not JSON"},
        {"[]", "null", "not a JSON object"},
        {std::string(100'000, '['), "null", "nested"},
        {R"({"id": 2})", "2", "\\\"op\\\""},
        {R"({"id": 3, "op": "ClsSmart.killtag", "args": [""]})", "3", "unknown operation \\\"ClsSmart.killtag\\\""},
        {R"({"id": 4, "op": "ClsSmart.killTag"})", "4", "1 wanted, 0 given"},
        {R"({"id": 5, "op": "ClsSmart.killTag", "args": ["", ""]})", "5", "1 wanted, 2 given"},
        {R"({"id": 6, "op": "ClsSmart.killTag", "args": "a"})", "6", "must be an array"},
        {R"({"id": 7, "op": "ClsSmart.cutTitle", "args": ["", 1]})", "7", "argument 2 (separator) must be a string"},
        {R"({"id": 8, "op": "Prog_Dz.localPagePath", "args": ["", "", ""]})", "8", "must be true or false"},
        {R"({"id": 9, "op": "setUserNames", "args": [["a", null]]})", "9", "must be an array of strings"},
    };
    for (const Case& c : cases) {
        const auto answers = call(c.request + "\n{\"op\": \"reset\"}\n");
        ASSERT_EQ(answers.size(), 2U) << c.request.substr(0, 80);
        EXPECT_THAT(answers[0], HasSubstr("{\"id\":" + c.id + ",\"error\":\"")) << c.request.substr(0, 80);
        EXPECT_THAT(answers[0], HasSubstr(c.error)) << c.request.substr(0, 80);
        EXPECT_EQ(answers[1], R"({"id":null})");
    }
}

TEST_F(CallCommand, WithoutAdMarksOnlyTheirOwnersFail) {
    const auto answers = call("{\"op\": \"ClsSmart.cutTitle\", \"args\": [\"a\", \"b\"]}\n"
                              "{\"op\": \"pubProg.killTagStr\", \"args\": [\"a<b>\"]}\n"
                              "{\"op\": \"Cls4Discuz.killGR\", \"args\": [\"a\"]}\n");
    EXPECT_THAT(answers[0], HasSubstr("ADMarks.txt"));
    EXPECT_EQ(answers[1], R"({"id":null,"result":"a"})");
    EXPECT_EQ(answers[2], R"({"id":null,"result":"a"})");
}

TEST_F(CallCommand, ListNamesEveryOperationOnce) {
    const auto list = nlohmann::json::parse(call(R"({"op": "list"})")[0])["result"];
    std::set<std::string> names;
    for (const auto& operation : list) {
        EXPECT_TRUE(names.insert(operation["op"]).second) << operation["op"];
    }
    EXPECT_TRUE(names.contains("list"));
    const nlohmann::json split{
        {"op", "Cls4Discuz.split2Floors"}, {"args", {"html", "reason"}}, {"out", {"floors", "reason", "success"}}};
    EXPECT_TRUE(std::find(list.begin(), list.end(), split) != list.end());
}

TEST_F(CallCommand, EndsWhenNobodyListens) {
    std::istringstream in("{\"op\": \"reset\"}\n");
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    EXPECT_EQ(runCall(in, out, platform_), 1);
}

} // namespace
} // namespace kelb::cli
