#include "platform/run_program.h"

#include "platform/file_failures.h"
#include "platform/utf8.h"

#include <cerrno>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelb::platform {

std::u16string programFile(std::u16string_view name) {
    return std::u16string(name);
}

int runProgram(std::u16string_view path, const std::vector<std::string>& arguments) {
    std::string program = toUtf8(path);
    std::vector<std::string> texts = arguments;
    std::vector<char*> list{program.data()};
    for (std::string& text : texts) {
        list.push_back(text.data());
    }
    list.push_back(nullptr);
    pid_t child = 0;
    if (const int fault = posix_spawn(&child, program.c_str(), nullptr, nullptr, list.data(), environ); fault != 0) {
        throw systemFailure("start", path, fault);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            throw systemFailure("wait for", path, errno);
        }
    }
    constexpr int kEndedBySignal = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : kEndedBySignal + WTERMSIG(status);
}

} // namespace kelb::platform
