#include "platform/program_start.h"

#include "platform/utf8.h"
#include "platform/windows_failures.h"
#include "platform/windows_headers.h"
#include "platform/windows_text.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <shellapi.h>

namespace kelb::platform {

namespace {

void obeyEscapes(DWORD stream) {
    const HANDLE console = GetStdHandle(stream);
    DWORD mode = 0;
    if (GetConsoleMode(console, &mode) != 0) {
        SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
}

} // namespace

std::vector<std::string> programArguments(int /*count*/, const char* const* /*arguments*/) {
    // What main gets has lost all characters that the system's own code page lacks.
    struct Free {
        void operator()(wchar_t** words) const noexcept { LocalFree(words); }
    };
    int count = 0;
    const std::unique_ptr<wchar_t*, Free> words(CommandLineToArgvW(GetCommandLineW(), &count));
    if (words == nullptr) {
        throw windowsFailure("read the command line", {}, GetLastError());
    }
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) {
        texts.push_back(toUtf8(fromWide(words.get()[i])));
    }
    return texts;
}

std::optional<std::u16string> environmentVariable(const std::string& name) {
    const std::wstring wideName = toWide(fromUtf8(name));
    std::wstring value(1, L'\0');
    SetLastError(ERROR_SUCCESS);
    DWORD size = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (size == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
        return std::nullopt;
    }
    while (size > value.size()) { // the size with its zero
        value.resize(size);
        size = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    }
    return fromWide(std::wstring_view(value).substr(0, size));
}

StandardStreams::StandardStreams() : inputCodePage_(GetConsoleCP()), outputCodePage_(GetConsoleOutputCP()) {
    for (const int descriptor : {0, 1, 2}) {
        _setmode(descriptor, _O_BINARY);
    }
    if (outputCodePage_ != 0) {
        SetConsoleCP(CP_UTF8);
        SetConsoleOutputCP(CP_UTF8);
        obeyEscapes(STD_OUTPUT_HANDLE);
        obeyEscapes(STD_ERROR_HANDLE);
    }
}

StandardStreams::~StandardStreams() {
    if (outputCodePage_ != 0) {
        SetConsoleCP(inputCodePage_);
        SetConsoleOutputCP(outputCodePage_);
    }
}

} // namespace kelb::platform
