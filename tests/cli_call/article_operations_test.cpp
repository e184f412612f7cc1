#include "cli/call_loop.h"

#include "platform/clock.h"
#include "platform/memory_file_system.h"
#include "platform/platform.h"
#include "platform/random.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace kelb::cli {
namespace {

/// Requests and their answers in one run of the command; no ad marks are there, as no operation on articles needs them.
void expectAnswers(const std::vector<std::pair<std::string, std::string>>& exchange) {
    platform::MemoryFileSystem files;
    platform::SystemClock clock;
    platform::SystemRandom random;
    std::string requests;
    for (const auto& [request, answer] : exchange) {
        requests += "{\"id\": 1, " + request + "}\n";
    }
    std::istringstream in(requests);
    std::stringstream out;
    EXPECT_EQ(runCall(in, out, {files, clock, random, u"/app"}), 0);
    for (const auto& [request, answer] : exchange) {
        std::string line;
        std::getline(out, line);
        EXPECT_EQ(line, "{\"id\":1" + (answer.empty() ? "" : "," + answer) + "}") << request;
    }
}

TEST(ArticleOperations, GiveResultsAndOutputsInTheirOrder) {
    expectAnswers({
        {R"("op": "Cls4Article.extTitleV1", "args": ["<a>题目一<b>", ["<a>"], ["<b>"]])",
         R"("result":true,"out":["题目一",""])"},
        {R"("op": "Cls4Article.extTitleV1", "args": ["x", ["<a>"], ["<b>"]])",
         R"("result":false,"out":["","未找到SM: <a>"])"},
        {R"("op": "Cls4Article.extContent4SiteA", "args": [""])", R"("result":"","out":["输入为空。"])"},
        {R"("op": "Cls4Article.extTitle4SiteA", "args": ["<title>题</title>"])", R"("result":"题","out":[""])"},
        {R"("op": "Cls4Article.extContent4SiteB", "args": ["<div id=\"content\">b</div>"])",
         R"("result":"<div id=\"content\">b","out":[""])"},
        {R"("op": "Cls4Article.extTitle4SiteB", "args": ["<title>题</title>"])",
         R"("result":"","out":["找到标题，但未找到 _ "])"},
        {R"("op": "Cls4Article.extContent", "args": ["<a>b<c>", "<a>", "<c>"])",
         R"("result":false,"out":["","未找到EM: <c>"])"},
        {R"("op": "Cls4Article.replaceHtmlTag", "args": ["a<br>b"])", R"("result":"a\r\nb")"},
        {R"("op": "Cls4Article.killTag", "args": ["a<b>&quot;"])", R"("result":" a\"")"},
        {R"("op": "Cls4Article.getPageNum", "args": ["n_3.html"])", R"("result":3)"},
        {R"("op": "Cls4Article.ImgSrcRecover", "args": ["左尖quorra括号a"])", R"("result":"<a")"},
        {R"("op": "Cls4Article.getTagIMG", "args": ["a<img>"])", R"("result":"<img>")"},
        {R"("op": "Cls4Article.getImgSrc", "args": ["<img src='/a.jpg'>", "http://h.cn/b"])",
         R"("result":"http://h.cn/a.jpg")"},
        {R"("op": "Prog_Kelb.getFullURL", "args": ["http://h.cn/b/c", "../d"])", R"("result":"http://h.cn/d")"},
    });
}

TEST(ArticleOperations, ReadTheMarkersThatWereSetLast) {
    const char* cutTitle = R"("op": "Cls4Article.extTitle", "args": ["[t]题目一[c]", "<a>", "<b>"])";
    expectAnswers({
        {cutTitle, R"("result":false,"out":["","未找到EM: <b>"])"},
        {R"("op": "setMarkers", "args": ["[t]", "", "", "[c]"])", ""},
        {cutTitle, R"("result":true,"out":["题目一",""])"},
        {R"("op": "reset")", ""},
        {cutTitle, R"("result":false,"out":["","未找到EM: <b>"])"},
    });
}

TEST(ArticleOperations, TakeNumbersOf32Bits) {
    const std::string front = R"("op": "Prog_Kelb.InStrNoCase", "args": [)";
    const std::string fault = R"("error":"argument 1 (start) must be a whole number of 32 bits")";
    expectAnswers({
        {front + R"(2, "aAa", "a"])", R"("result":2)"},
        {front + R"(-2147483648, "a", "a"])", R"("result":0)"},
        {front + R"(2147483647, "a", "a"])", R"("result":0)"},
        {front + R"(2147483648, "a", "a"])", fault},
        {front + R"(-2147483649, "a", "a"])", fault},
        {front + R"(18446744073709551615, "a", "a"])", fault},
        {front + R"(1.5, "a", "a"])", fault},
        {front + R"("1", "a", "a"])", fault},
        {R"("op": "Cls4Article.extTitleV1", "args": ["x", [], ["b"]])",
         R"("error":"a list of markers must hold at least one")"},
    });
}

} // namespace
} // namespace kelb::cli
