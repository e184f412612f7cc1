#include "tests/cli/program_fixture.h"

#include <gmock/gmock.h>

namespace kelb::cli {
namespace {

using testing::HasSubstr;

/// The program in a folder of the test's, so that the test says what lies beside it.
class ViewCommandTest : public ProgramTest {
protected:
    ViewCommandTest() {
        std::filesystem::create_directories(at("bin"));
        std::filesystem::copy_file(program, at("bin/kelb"));
        program = at("bin/kelb");
        write("page.htm", "<html></html>");
    }
    void putBeside(const std::string& script) const {
        write("bin/KelbExtractor", "#!/bin/sh\n" + script);
        std::filesystem::permissions(at("bin/KelbExtractor"), std::filesystem::perms::owner_all);
    }
};

TEST_F(ViewCommandTest, HandsThePageAndTheFoldersToTheWindow) {
    putBeside("printf '%s\\n' \"$@\"\n");
    write("my.ini", "");
    const Outcome outcome = run({"view", at("page.htm"), "--ini", at("my.ini")});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "--view=" + at("page.htm") + "\n--home=" + at("home") + "\n--ini=" + at("my.ini") + "\n");
}

TEST_F(ViewCommandTest, EndsAsTheWindowEnded) {
    putBeside("echo 'no display' >&2; exit 1\n");
    const Outcome outcome = run({"view", at("page.htm")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "no display\n");
}

TEST_F(ViewCommandTest, TellsWhatIsMissing) {
    const Outcome noWindow = run({"view", at("page.htm")});
    EXPECT_EQ(noWindow.status, 1);
    EXPECT_THAT(noWindow.err, HasSubstr(at("bin/KelbExtractor")));
    putBeside("exit 0\n");
    const Outcome noPage = run({"view", at("none.htm")});
    EXPECT_EQ(noPage.status, 1);
    EXPECT_THAT(noPage.err, HasSubstr(at("none.htm")));
    write("bin/KelbExtractor", "not a program");
    std::filesystem::permissions(at("bin/KelbExtractor"), std::filesystem::perms::owner_read);
    const Outcome noProgram = run({"view", at("page.htm")});
    EXPECT_EQ(noProgram.status, 1);
    EXPECT_THAT(noProgram.err, HasSubstr(at("bin/KelbExtractor")));
}

} // namespace
} // namespace kelb::cli
