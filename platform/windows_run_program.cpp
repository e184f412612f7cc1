#include "platform/run_program.h"

#include "platform/utf8.h"
#include "platform/windows_command_line.h"
#include "platform/windows_failures.h"
#include "platform/windows_headers.h"
#include "platform/windows_text.h"

namespace kelb::platform {

namespace {

/// One word of a command line, so that the started program reads it back as it is: in quotes, with the backslashes
/// doubled that stand before a quote.
std::wstring quotedWord(std::wstring_view word) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : word) {
        if (unit == L'"') {
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        quoted += unit;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

} // namespace

std::wstring commandLine(const std::wstring& program, const std::vector<std::string>& arguments) {
    std::wstring line = quotedWord(program);
    for (const std::string& argument : arguments) {
        line += L' ' + quotedWord(toWide(fromUtf8(argument)));
    }
    return line;
}

std::u16string programFile(std::u16string_view name) {
    return std::u16string(name) + u".exe";
}

int runProgram(std::u16string_view path, const std::vector<std::string>& arguments) {
    const std::wstring program = toWide(path);
    std::wstring line = commandLine(program, arguments);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    constexpr BOOL kInheritStreams = TRUE;
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, kInheritStreams, 0, nullptr, nullptr, &start,
                       &process) == 0) {
        throw windowsFailure("start", path, GetLastError());
    }
    CloseHandle(process.hThread);
    DWORD status = 0;
    const bool ended = WaitForSingleObject(process.hProcess, INFINITE) == WAIT_OBJECT_0 &&
                       GetExitCodeProcess(process.hProcess, &status) != 0;
    const DWORD code = GetLastError();
    CloseHandle(process.hProcess);
    if (!ended) {
        throw windowsFailure("wait for", path, code);
    }
    return static_cast<int>(status);
}

} // namespace kelb::platform
