#include "cli/call_loop.h"
#include "platform/clock.h"
#include "platform/memory_file_system.h"
#include "platform/platform.h"
#include "platform/random.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kelb::cli {
namespace {

/// Requests and answers line by line, in one process: the learner and its site name last until a reset.
TEST(TemplateOperations, LearnFromLineToLine) {
    const std::pair<std::string, std::string> exchange[] = {
        {R"({"op": "FrmExtractor.tagName", "args": ["div class=a>", 0]})", R"({"id":null,"result":"div","out":[4]})"},
        {R"({"op": "FrmExtractor.tagName", "args": ["br", 4]})", R"({"id":null,"result":"br","out":[4]})"},
        {R"({"op": "FrmExtractor.getSpecialIdx", "args": [["", "BODY>", "p>", "/body>"], "body", "/body"]})",
         R"({"id":null,"result":true,"out":[1,3]})"},
        {R"({"op": "FrmExtractor.getSpecialIdx", "args": [["", "p>", "/body>"], "body", "/body"]})",
         R"({"id":null,"result":false,"out":[0,2]})"},
        {R"({"op": "setSiteName", "args": ["本站"]})", R"({"id":null})"},
        {R"({"op": "ClsWebExtractor.extC", "args": [["题", "首页", "来自本站", "文"]]})",
         R"({"id":null,"result":false,"out":["题","首页<br>文"]})"},
        {R"({"op": "ClsWebExtractor.extC", "args": [["首页"]]})", R"({"id":null,"result":false,"out":["首页",""]})"},
        {R"({"op": "setSiteName", "args": ["别站"]})", R"({"id":null})"}, // what was learned stays
        {R"({"op": "ClsWebExtractor.extC", "args": [["首页", "题二", "来自本站", "别站"]]})",
         R"({"id":null,"result":false,"out":["题二","来自本站"]})"},
        {R"({"op": "reset", "args": []})", R"({"id":null})"},
        {R"({"op": "ClsWebExtractor.extC", "args": [["题三", "首页", "别站"]]})",
         R"({"id":null,"result":false,"out":["题三","首页<br>别站"]})"},
    };
    std::string requests, expected;
    for (const auto& [request, answer] : exchange) {
        requests += request + "\n";
        expected += answer + "\n";
    }
    platform::MemoryFileSystem files;
    platform::SystemClock clock;
    platform::SystemRandom random;
    platform::Platform platform{files, clock, random, u"/app"};
    std::istringstream in(requests);
    std::ostringstream out;
    EXPECT_EQ(runCall(in, out, platform), 0);
    EXPECT_EQ(out.str(), expected);
}

} // namespace
} // namespace kelb::cli
