#include "tests/cli/started_program.h"

#include "platform/utf8.h"
#include "platform/windows_command_line.h"
#include "platform/windows_headers.h"
#include "platform/windows_text.h"

#include <gtest/gtest.h>

#include <array>

namespace kelb::cli {

namespace {

std::wstring wide(const std::string& text) {
    return platform::toWide(platform::fromUtf8(text));
}

HANDLE inherited(const std::string& path, DWORD rights, DWORD creation) {
    SECURITY_ATTRIBUTES handedDown{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE file = CreateFileW(wide(path).c_str(), rights, FILE_SHARE_READ | FILE_SHARE_WRITE, &handedDown,
                                    creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << path;
    return file;
}

} // namespace

struct StartedProgram::Process {
    PROCESS_INFORMATION information{};
};

StartedProgram::StartedProgram(const std::string& program, const std::vector<std::string>& arguments,
                               const Streams& streams)
    : process_(std::make_unique<Process>()) {
    const std::array files{inherited(streams.in, GENERIC_READ, OPEN_EXISTING),
                           inherited(streams.out, GENERIC_WRITE, CREATE_ALWAYS),
                           inherited(streams.err, GENERIC_WRITE, CREATE_ALWAYS)};
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = files[0];
    start.hStdOutput = files[1];
    start.hStdError = files[2];
    std::wstring line = platform::commandLine(wide(program), arguments);
    // A console of its own, which Ctrl-C can be sent to.
    EXPECT_NE(CreateProcessW(wide(program).c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                             nullptr, &start, &process_->information),
              0)
        << program;
    for (const HANDLE file : files) {
        CloseHandle(file);
    }
}

StartedProgram::~StartedProgram() {
    if (process_ != nullptr) {
        CloseHandle(process_->information.hThread);
        CloseHandle(process_->information.hProcess);
    }
}

StartedProgram::StartedProgram(StartedProgram&&) noexcept = default;

void StartedProgram::interrupt() {
    FreeConsole();
    ASSERT_NE(AttachConsole(process_->information.dwProcessId), 0) << GetLastError();
    SetConsoleCtrlHandler(nullptr, TRUE); // not for us
    EXPECT_NE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0) << GetLastError();
    WaitForSingleObject(process_->information.hProcess, INFINITE);
    FreeConsole();
    SetConsoleCtrlHandler(nullptr, FALSE);
}

int StartedProgram::wait() {
    DWORD status = 0;
    EXPECT_EQ(WaitForSingleObject(process_->information.hProcess, INFINITE), WAIT_OBJECT_0);
    EXPECT_NE(GetExitCodeProcess(process_->information.hProcess, &status), 0);
    return static_cast<int>(status);
}

void setVariable(const std::string& name, const std::string& value) {
    SetEnvironmentVariableW(wide(name).c_str(), value.empty() ? nullptr : wide(value).c_str());
}

} // namespace kelb::cli
