#include "platform/isolated_run.h"

#include "platform/file_failures.h"
#include "platform/posix_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelb::platform {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
constexpr bool kAddressSanitizer = __has_feature(address_sanitizer);
#else
constexpr bool kAddressSanitizer = false;
#endif

using Steady = std::chrono::steady_clock;

constexpr std::string_view kOperation = "start a process of its own for";
constexpr std::u16string_view kWhat = u"reading a file";
constexpr std::size_t kPiece = 65'536; ///< bytes written and read at once
constexpr int kWorkThrew = 3, kOutputLost = 4;

/// The input as a file that has no name and goes with its last descriptor.
Descriptor memoryFile(std::string_view bytes) {
    Descriptor file(kOperation, kWhat, memfd_create("kelb-input", MFD_CLOEXEC));
    if (file.number() < 0) {
        file.fail(errno);
    }
    file.write(bytes);
    return file;
}

/// Bytes of address space in use; no value where the system does not tell.
std::optional<std::size_t> addressSpace() {
    std::FILE* const status = std::fopen("/proc/self/statm", "re");
    if (status == nullptr) {
        return std::nullopt;
    }
    std::array<char, 64> line{};
    const std::size_t length = std::fread(line.data(), 1, line.size() - 1, status);
    std::fclose(status);
    char* end = nullptr;
    const unsigned long long pages = std::strtoull(line.data(), &end, 10);
    if (length == 0 || end == line.data()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(pages) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// In the forked process

class PipeOutput final : public IsolatedOutput {
public:
    void write(std::string_view bytes) override {
        buffer_ += bytes;
        if (buffer_.size() >= kPiece) {
            flush();
        }
    }
    void flush() {
        std::string_view rest = buffer_;
        while (!rest.empty()) {
            const ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
            if (count < 0 && errno != EINTR) {
                _exit(kOutputLost);
            }
            rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
        buffer_.clear();
    }

private:
    std::string buffer_;
};

void limitTo(int resource, rlim_t most) {
    const rlimit limit{most, most};
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

void limitChild(const IsolationLimits& limits, std::optional<std::size_t> inUse) {
    limitTo(RLIMIT_CORE, 0);
    limitTo(RLIMIT_FSIZE, 0);
    limitTo(RLIMIT_CPU, static_cast<rlim_t>(std::ceil(limits.seconds)) + 1);
    if (inUse && !kAddressSanitizer) {
        limitTo(RLIMIT_AS, *inUse + limits.memory);
    }
}

/// Input and output take the places of the standard streams; every other descriptor is closed, so that no lock and no
/// pipe of ours lives on in here.
void keepOnly(int input, int output) {
    const int in = fcntl(input, F_DUPFD, STDERR_FILENO + 1);
    const int out = fcntl(output, F_DUPFD, STDERR_FILENO + 1);
    const int nothing = open("/dev/null", O_WRONLY);
    const bool placed = dup2(in, STDIN_FILENO) >= 0 && dup2(out, STDOUT_FILENO) >= 0 &&
                        (nothing == STDERR_FILENO || dup2(nothing, STDERR_FILENO) >= 0);
    if (!placed || close_range(STDERR_FILENO + 1, ~0U, 0) != 0) {
        _exit(kOutputLost);
    }
}

[[noreturn]] void runChild(const std::function<void(const char*, IsolatedOutput&)>& work) {
    for (const int fault : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGPIPE, SIGXCPU, SIGTERM}) {
        std::signal(fault, SIG_DFL); // a fault is to end this process, not to run a handler of the program's
    }
    try {
        PipeOutput output;
        work("/proc/self/fd/0", output);
        output.flush();
    } catch (...) { // what it threw means nothing outside: the status tells that it threw
        _exit(kWorkThrew);
    }
    _exit(0);
}

// In this process

/// The forked process; never left behind.
class Child {
public:
    explicit Child(pid_t process) : process_(process) {}
    ~Child() {
        if (process_ > 0) {
            end();
            static_cast<void>(wait());
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void end() const { kill(process_, SIGKILL); }
    /// Its status as waitpid tells it; no value when somebody else took it.
    std::optional<int> wait() {
        int status = 0;
        pid_t ended = -1;
        do {
            ended = waitpid(process_, &status, 0);
        } while (ended < 0 && errno == EINTR);
        process_ = 0;
        return ended < 0 ? std::nullopt : std::optional(status);
    }

private:
    pid_t process_;
};

/// Reads up to the end of the output. Done unless a limit was passed.
IsolatedEnd::Kind collect(int pipe, const IsolationLimits& limits, std::string& output) {
    const auto deadline =
        Steady::now() + std::chrono::duration_cast<Steady::duration>(std::chrono::duration<double>(limits.seconds));
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Steady::now()).count();
        pollfd waiting{pipe, POLLIN, 0};
        const int ready = left <= 0 ? 0 : poll(&waiting, 1, static_cast<int>(std::min<long long>(left, 1'000'000)));
        if (ready == 0 && Steady::now() >= deadline) {
            return IsolatedEnd::Kind::OutOfTime;
        }
        if (ready <= 0) {
            continue;
        }
        const std::size_t before = output.size();
        output.resize(before + kPiece);
        const ssize_t count = read(pipe, output.data() + before, kPiece);
        output.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count == 0) {
            return IsolatedEnd::Kind::Done;
        }
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            throw systemFailure(kOperation, kWhat, errno);
        }
        if (output.size() > limits.output) {
            return IsolatedEnd::Kind::TooMuchOutput;
        }
    }
}

void judge(std::optional<int> status, IsolatedEnd& result) {
    if (!status) {
        result.kind = IsolatedEnd::Kind::Failed;
    } else if (WIFSIGNALED(*status)) {
        result.code = WTERMSIG(*status);
        const bool slow = result.code == SIGXCPU || result.code == SIGKILL; // the second: past the hard limit
        result.kind = slow ? IsolatedEnd::Kind::OutOfTime : IsolatedEnd::Kind::Signal;
    } else if (WEXITSTATUS(*status) != 0) {
        result.code = WEXITSTATUS(*status);
        result.kind = IsolatedEnd::Kind::Failed;
    }
}

} // namespace

IsolatedEnd runIsolated(std::string_view input, const IsolationLimits& limits,
                        const std::function<void(const char* inputPath, IsolatedOutput&)>& work) {
    const Descriptor source = memoryFile(input);
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw systemFailure(kOperation, kWhat, errno);
    }
    const Descriptor reading(kOperation, kWhat, ends[0]);
    std::optional<Descriptor> writing(std::in_place, kOperation, kWhat, ends[1]);
    const std::optional<std::size_t> inUse = addressSpace();
    const pid_t process = fork();
    if (process < 0) {
        throw systemFailure(kOperation, kWhat, errno);
    }
    if (process == 0) {
        keepOnly(source.number(), writing->number());
        limitChild(limits, inUse);
        runChild(work);
    }
    Child child(process);
    writing.reset(); // or the end of the output would never be seen
    IsolatedEnd result;
    result.kind = collect(reading.number(), limits, result.output);
    if (result.kind == IsolatedEnd::Kind::Done) {
        judge(child.wait(), result);
    }
    return result;
}

} // namespace kelb::platform
