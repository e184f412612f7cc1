#pragma once

#include "tests/platform/temporary_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace kelb::cli {

struct Outcome {
    int status = -1; ///< of the exit; 128 + signal when killed
    std::string out, err;
};

/// Runs the built program in a folder of its own, with an application folder "home" in it.
class ProgramTest : public testing::Test {
protected:
    ProgramTest() {
        std::filesystem::create_directories(at("home/TestRec"));
        write("home/ADMarks.txt", "");
        setenv("KELB_HOME", at("home").c_str(), 1);
    }
    ~ProgramTest() override { unsetenv("KELB_HOME"); }

    std::string at(const std::string& name) const { return (folder_.native() / name).string(); }

    void write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories(std::filesystem::path(at(name)).parent_path());
        std::ofstream(at(name), std::ios::binary) << bytes;
    }
    std::string read(const std::string& name) const {
        std::ifstream file(at(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool exists(const std::string& name) const { return std::filesystem::exists(at(name)); }

    Outcome run(const std::vector<std::string>& arguments, const std::string& input = "") const {
        write("stdin", input);
        return finish(start(arguments));
    }

    /// Starts the program with its standard streams on files of the folder.
    pid_t start(const std::vector<std::string>& arguments) const {
        std::vector<std::string> words{program};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (std::string& word : words) {
            argv.push_back(word.data());
        }
        argv.push_back(nullptr);
        posix_spawn_file_actions_t streams;
        posix_spawn_file_actions_init(&streams);
        posix_spawn_file_actions_addopen(&streams, 0, at("stdin").c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&streams, 1, at("stdout").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&streams, 2, at("stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pid_t process = -1;
        EXPECT_EQ(posix_spawn(&process, program.c_str(), &streams, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&streams);
        return process;
    }
    Outcome finish(pid_t process) const {
        int state = 0;
        EXPECT_EQ(waitpid(process, &state, 0), process);
        return {WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state), read("stdout"), read("stderr")};
    }

    std::string program = KELB_PROGRAM;

private:
    platform::TemporaryFolder folder_;
};

} // namespace kelb::cli
