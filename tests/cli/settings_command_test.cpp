#include "platform/code_page.h"
#include "platform/utf8.h"
#include "tests/cli/program_fixture.h"

#include <gmock/gmock.h>

#include <regex>

namespace kelb::cli {
namespace {

using testing::HasSubstr;

class SettingsCommand : public ProgramTest {};

TEST_F(SettingsCommand, TheReferenceInTheDocumentsIsTheTableOfTheCode) {
    const std::filesystem::path path = std::filesystem::path(KELB_TEST_DATA) / "../../docs/settings.md";
    std::ifstream file(path, std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(run({"settings", "--markdown"}).out, page) << "renew it: kelb settings --markdown >docs/settings.md";
    EXPECT_THAT(page, HasSubstr("| `maxDeletePercent` | `20` |"));
    EXPECT_THAT(page, HasSubstr(R"(| `share1` … `share26` | | \\\\host\\share, then \|, then)"));
}

TEST_F(SettingsCommand, TheFileToFillInIsReadWithEveryKeySet) {
    const Outcome blank = run({"settings"});
    EXPECT_EQ(blank.status, 0);
    EXPECT_THAT(blank.out, HasSubstr("\n[Merge]\n"));
    EXPECT_THAT(blank.out, HasSubstr("\n;brandLabel=TCL王牌\n"));
    const std::string filled = std::regex_replace(blank.out, std::regex("\n;(\\w+=)"), "\n$1");
    EXPECT_THAT(filled, HasSubstr("\nmaxDeletePercent=20\n"));
    write("home/Kelb.ini", platform::encode936(platform::fromUtf8(filled)));
    EXPECT_EQ(run({"settings"}).err, "") << "a default that its own check refuses";
    write("home/Kelb.ini", "[Safety]\nmaxDeletePercent=much\n");
    EXPECT_EQ(run({"settings"}).status, 2);
}

} // namespace
} // namespace kelb::cli
