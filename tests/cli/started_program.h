#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kelb::cli {

/// A running program whose standard streams are files.
class StartedProgram {
public:
    struct Streams {
        std::string in, out, err; ///< paths; `in` is there, the others are made
    };

    /// A program that cannot be started fails the test.
    StartedProgram(const std::string& program, const std::vector<std::string>& arguments, const Streams& streams);
    ~StartedProgram();
    StartedProgram(StartedProgram&&) noexcept;

    void interrupt(); ///< Ctrl-C
    /// Its exit status; 128 + signal when one ended it.
    int wait();

private:
    struct Process;
    std::unique_ptr<Process> process_;
};

/// For this program and those that it starts. An empty value: not set.
void setVariable(const std::string& name, const std::string& value);

} // namespace kelb::cli
