#include "platform/file_error.h"
#include "platform/program_start.h"
#include "platform/run_program.h"
#include "platform/utf8.h"
#include "platform/windows_headers.h"
#include "tests/platform/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace kelb::platform {
namespace {

/// This program again, told by a variable to write its words into a file instead of testing.
class Words : public testing::Test {
protected:
    static std::u16string ownPath() {
        std::wstring path(1000, L'\0');
        path.resize(GetModuleFileNameW(nullptr, path.data(), 1000));
        return {path.begin(), path.end()};
    }
};

constexpr const wchar_t* kWordsFile = L"KELB_TEST_WORDS";

/// Runs before main: in a program that was started for it, writes the words and ends.
[[maybe_unused]] const bool kIsProbe = [] {
    const auto file = environmentVariable("KELB_TEST_WORDS");
    if (!file) {
        return false;
    }
    std::ofstream out(std::filesystem::path(file->begin(), file->end()), std::ios::binary);
    const std::vector<std::string> words = programArguments(0, nullptr);
    for (std::size_t i = 1; i < words.size(); ++i) {
        out << '[' << words[i] << "]\n";
    }
    out.close();
    std::_Exit(7);
}();

TEST_F(Words, ReachAStartedProgramAsTheyAre) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.native() / L"字.txt";
    SetEnvironmentVariableW(kWordsFile, file.c_str());
    const int status = runProgram(ownPath(), {"plain", "two words", "", "quote\"d", "end\\", "end \\", "\\\"both\\\\\"",
                                              "页\xF0\xA0\xAE\xB7", "*.cpp", "%PATH%", "a\tb"});
    SetEnvironmentVariableW(kWordsFile, nullptr);
    EXPECT_EQ(status, 7);
    std::ifstream in(file, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}),
              "[plain]\n[two words]\n[]\n[quote\"d]\n[end\\]\n[end "
              "\\]\n[\\\"both\\\\\"]\n[页\xF0\xA0\xAE\xB7]\n[*.cpp]\n[%PATH%]\n[a\tb]\n");
}

TEST_F(Words, AProgramThatIsNotThereIsNamed) {
    EXPECT_THROW((void)runProgram(u"Z:\\none\\KelbExtractor.exe", {}), FileError);
    EXPECT_EQ(programFile(u"KelbExtractor"), u"KelbExtractor.exe");
}

TEST(Environment, HoldsAnyCharacterAndTellsEmptyFromMissing) {
    SetEnvironmentVariableW(L"KELB_TEST_VALUE", L"D:\\页 \xD842\xDFB7");
    EXPECT_EQ(environmentVariable("KELB_TEST_VALUE"), u"D:\\页 𠮷");
    SetEnvironmentVariableW(L"KELB_TEST_VALUE", L"");
    EXPECT_EQ(environmentVariable("KELB_TEST_VALUE"), u"");
    SetEnvironmentVariableW(L"KELB_TEST_VALUE", nullptr);
    EXPECT_EQ(environmentVariable("KELB_TEST_VALUE"), std::nullopt);
}

} // namespace
} // namespace kelb::platform
