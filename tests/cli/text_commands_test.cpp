#include "platform/code_page.h"
#include "tests/cli/program_fixture.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace kelb::cli {
namespace {

using testing::HasSubstr;

class TextCommands : public ProgramTest {};

const std::string kRequests = "{\"id\": 1, \"op\": \"ClsSmart.getPinPai\", \"args\": [\"长虹\"]}\n{\"id\": 2}\n";
const std::string kFirstAnswer = "{\"id\":1,\"result\":\"长虹\"}\n";

TEST_F(TextCommands, CallReadsAndWritesFiles) {
    write("in.jsonl", kRequests);
    const Outcome toFile = run({"call", "--file", at("in.jsonl"), "--out", at("out.jsonl")});
    EXPECT_EQ(toFile.status, 0);
    EXPECT_EQ(toFile.out, "") << "nothing but answers, and those elsewhere";
    EXPECT_EQ(toFile.err, "");
    const std::string answers = read("out.jsonl");
    EXPECT_EQ(answers.substr(0, kFirstAnswer.size()), kFirstAnswer);
    EXPECT_THAT(answers.substr(kFirstAnswer.size()), HasSubstr("{\"id\":2,\"error\":"));

    EXPECT_EQ(run({"call", "--file", at("in.jsonl")}).out, answers);
    EXPECT_EQ(run({"call"}, kRequests).out, answers) << "from a file to a file through the standard streams";
    EXPECT_EQ(run({"call", "--out", at("more.jsonl")}, kRequests).status, 0);
    EXPECT_EQ(read("more.jsonl"), answers);
    EXPECT_EQ(run({"call", "--dry-run", "--out", at("dry.jsonl")}, kRequests).status, 0);
    EXPECT_FALSE(exists("dry.jsonl"));
}

TEST_F(TextCommands, CallTellsWhichFileFails) {
    const Outcome noInput = run({"call", "--file", at("none.jsonl"), "--out", at("out.jsonl")});
    EXPECT_EQ(noInput.status, 1);
    EXPECT_THAT(noInput.err, HasSubstr(at("none.jsonl")));
    EXPECT_FALSE(exists("out.jsonl"));
    const Outcome noFolder = run({"call", "--out", at("none/out.jsonl")}, kRequests);
    EXPECT_EQ(noFolder.status, 1);
    EXPECT_THAT(noFolder.err, HasSubstr("none/out.jsonl"));
}

#ifndef _WIN32 // asked by a shell
TEST_F(TextCommands, AnAnswerFollowsItsRequestThroughAPipe) {
    write("first.jsonl", kRequests.substr(0, kRequests.find('\n') + 1));
    write("ask.sh", "coproc KELB { \"$1\" call; }\n"
                    "cat \"$2\" >&\"${KELB[1]}\"\n"
                    "read -r -t 60 -u \"${KELB[0]}\" answer\n" // the pipe is open still: only a flush brings this
                    "printf '%s\\n' \"$answer\" >\"$3\"\n");
    const std::string command =
        "bash '" + at("ask.sh") + "' '" + program + "' '" + at("first.jsonl") + "' '" + at("answer") + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(read("answer"), kFirstAnswer);
}
#endif

TEST_F(TextCommands, SegmentCutsLines) {
    write("home/SogouLabDic.dic", platform::encode936(u"电视机\t9\tN\n黑屏\t5\tV\n黑屏\t6\tN\n一二三四五六七八\t1\tN"));
    const Outcome lines = run({"segment"}, "电视机又黑屏，CH-16。\n\n黑屏");
    EXPECT_EQ(lines.status, 0);
    EXPECT_EQ(lines.out, "电视机 又 黑屏 CH-16\n\n黑屏\n");
    EXPECT_THAT(lines.err, HasSubstr("1 words that are there twice"));
    EXPECT_THAT(lines.err, HasSubstr("1 words of more than 7"));
    const Outcome tagged = run({"segment", "--quiet", "--tags", "电视机又黑屏", "黑屏"});
    EXPECT_EQ(tagged.out, "电视机/N 又 黑屏/V\n黑屏/V\n");
    EXPECT_EQ(tagged.err, "");
}

TEST_F(TextCommands, SegmentNeedsItsDictionary) {
    const Outcome none = run({"segment", "电视"});
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.err, HasSubstr("SogouLabDic.dic"));
    write("home/SogouLabDic.dic", platform::encode936(u"电视\t9"));
    EXPECT_THAT(run({"segment", "电视"}).err, HasSubstr("line 1"));
}

} // namespace
} // namespace kelb::cli
