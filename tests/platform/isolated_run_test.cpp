#include "platform/isolated_run.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kelb::platform {
namespace {

using Kind = IsolatedEnd::Kind;
using Work = void (*)(const char*, IsolatedOutput&);

struct EndCase {
    const char* name;
    Work work;
    Kind kind;
    int code;
    std::string output;
};
class IsolatedRun : public testing::TestWithParam<EndCase> {};

TEST_P(IsolatedRun, TellsHowTheWorkEnded) {
    const IsolationLimits limits{.seconds = 1.5, .memory = std::size_t{1} << 28, .output = 200'000};
    const IsolatedEnd end = runIsolated("input", limits, GetParam().work);
    EXPECT_EQ(end.kind, GetParam().kind);
    EXPECT_EQ(end.code, GetParam().code);
    if (end.kind == Kind::Done) {
        EXPECT_EQ(end.output, GetParam().output);
    }
}

volatile bool forEver = true;

INSTANTIATE_TEST_SUITE_P(
    Ends, IsolatedRun,
    testing::ValuesIn<EndCase>({
        {"without_output", [](const char*, IsolatedOutput&) {}, Kind::Done, 0, ""},
        {"input_handed_on",
         [](const char* path, IsolatedOutput& out) {
             std::ifstream input(path, std::ios::binary);
             out.write(std::string(std::istreambuf_iterator<char>(input), {}));
         },
         Kind::Done, 0, "input"},
        {"more_than_a_pipe_holds",
         [](const char*, IsolatedOutput& out) {
             for (int i = 0; i < 1'000; ++i) {
                 out.write(std::string(200, 'x'));
             }
         },
         Kind::Done, 0, std::string(200'000, 'x')},
        {"open_files_are_its_own",
         [](const char*, IsolatedOutput& out) {
             std::string numbers; // one more is the listing itself
             for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
                 numbers += entry.path().filename() > "3" ? entry.path().filename().string() : "";
             }
             out.write(numbers);
         },
         Kind::Done, 0, ""},
        {"fault", [](const char*, IsolatedOutput&) { std::raise(SIGSEGV); }, Kind::Signal, SIGSEGV, ""},
        {"abort",
         [](const char*, IsolatedOutput& out) {
             out.write("half");
             std::abort();
         },
         Kind::Signal, SIGABRT, ""},
        {"thrown", [](const char*, IsolatedOutput&) { throw std::runtime_error("no"); }, Kind::Failed, 3, ""},
        {"without_end",
         [](const char*, IsolatedOutput&) {
             while (forEver) {
             }
         },
         Kind::OutOfTime, 0, ""},
        {"output_without_end",
         [](const char*, IsolatedOutput& out) {
             while (forEver) {
                 out.write(std::string(1'000, 'x'));
             }
         },
         Kind::TooMuchOutput, 0, ""},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST(IsolatedRunState, LimitsMemory) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer reserves more than any limit";
#endif
    const IsolationLimits limits{.memory = std::size_t{1} << 28};
    const IsolatedEnd end = runIsolated("", limits, [](const char*, IsolatedOutput& out) {
        out.write(std::to_string(std::string(std::size_t{1} << 30, 'x').find('y')));
    });
    EXPECT_EQ(end.kind, Kind::Failed);
}

TEST(IsolatedRunState, LeavesThisProcessAsItWas) {
    int changed = 1;
    const IsolatedEnd end = runIsolated("", {}, [&](const char*, IsolatedOutput& out) {
        changed = 2;
        out.write(std::to_string(changed));
    });
    EXPECT_EQ(end.output, "2");
    EXPECT_EQ(changed, 1);
}

} // namespace
} // namespace kelb::platform
