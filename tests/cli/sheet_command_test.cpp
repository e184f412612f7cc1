#include "tests/ado/workbooks.h"
#include "tests/cli/program_fixture.h"

#include <gmock/gmock.h>

namespace kelb::cli {
namespace {

using ado::testing::workbooks;
using testing::HasSubstr;

class SheetCommandTest : public ProgramTest {
protected:
    SheetCommandTest() {
        write("models.xls", workbooks().bytes("head.xls"));
        write("Formulas.xls", workbooks().bytes("formulas.xls"));
    }
};

TEST_F(SheetCommandTest, PrintsRowsInThreeForms) {
    write("other.xls", workbooks().bytes("other.xls"));
    const std::vector<std::string> base{"sheet", at("other.xls"), "--sheet", "资料"};
    for (const auto& [format, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "{\"a\": 1}\n"}, {"jsonl", "{\"a\": 1}\n"}, {"csv", "a\r\n1\r\n"}, {"table", "a\n-\n1\n(1 row)\n"}}) {
        std::vector<std::string> words = base;
        if (!format.empty()) {
            words.insert(words.end(), {"--format", format});
        }
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out, expected) << format;
    }
}

TEST_F(SheetCommandTest, FindsWorkbooksByThePathsOfTheCrawl) {
    write("home/Kelb.ini", "[Drives]\r\nD=" + at("") + "\r\n");
    const Outcome outcome = run({"sheet", "D:\\FORMULAS.XLS"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("{\"what\": \"number\", \"result\": 2.5}\n"));
}

TEST_F(SheetCommandTest, EndsWithAStatusThatTellsWhoseFaultItIs) {
    struct Case {
        std::vector<std::string> words;
        int status;
        std::string told;
    };
    write("page.xls", "<html>");
    for (const Case& wrong :
         {Case{{"sheet", at("none.xls")}, 1, "there is no such file"},
          Case{{"sheet", at("page.xls")}, 1, "a page of HTML"},
          Case{{"sheet", at("models.xls"), "--sheet", "x"}, 1, "only \"Sheet1\""}, Case{{"sheet"}, 2, "FILE"},
          Case{{"sheet", at("models.xls"), "--format", "xml"}, 2, "--format"}}) {
        const Outcome outcome = run(wrong.words);
        EXPECT_EQ(outcome.status, wrong.status);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(wrong.told));
    }
}

} // namespace
} // namespace kelb::cli
