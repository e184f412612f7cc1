#pragma once

#include "tests/cli/started_program.h"
#include "tests/platform/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

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
        setVariable("KELB_HOME", at("home"));
    }
    ~ProgramTest() override { setVariable("KELB_HOME", ""); }

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
    StartedProgram start(const std::vector<std::string>& arguments) const {
        return {program, arguments, {at("stdin"), at("stdout"), at("stderr")}};
    }
    Outcome finish(StartedProgram process) const {
        const int status = process.wait();
        return {status, read("stdout"), read("stderr")};
    }

    std::string program = KELB_PROGRAM;

private:
    platform::TemporaryFolder folder_;
};

} // namespace kelb::cli
