#include "tests/cli/started_program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace kelb::cli {

struct StartedProgram::Process {
    pid_t number = -1;
};

StartedProgram::StartedProgram(const std::string& program, const std::vector<std::string>& arguments,
                               const Streams& streams)
    : process_(std::make_unique<Process>()) {
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    constexpr int kNew = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, streams.in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, streams.out.c_str(), kNew, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, streams.err.c_str(), kNew, 0600);
    EXPECT_EQ(posix_spawn(&process_->number, program.c_str(), &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
}

StartedProgram::~StartedProgram() = default;
StartedProgram::StartedProgram(StartedProgram&&) noexcept = default;

void StartedProgram::interrupt() {
    EXPECT_EQ(kill(process_->number, SIGINT), 0);
}

int StartedProgram::wait() {
    int state = 0;
    EXPECT_EQ(waitpid(process_->number, &state, 0), process_->number);
    return WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
}

void setVariable(const std::string& name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

} // namespace kelb::cli
