#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace kelb::platform {

/// Where isolated work leaves its result.
class IsolatedOutput {
public:
    virtual ~IsolatedOutput() = default;
    virtual void write(std::string_view bytes) = 0;
};

struct IsolationLimits {
    double seconds = 60;                         ///< of the clock and of the processor
    std::size_t memory = std::size_t{2} << 30;   ///< bytes beyond this process's own
    std::size_t output = std::size_t{256} << 20; ///< bytes
};

/// How isolated work ended. `output` is whole only after Done; its content is as trustworthy as the work.
struct IsolatedEnd {
    enum class Kind {
        Done,
        Failed, ///< it threw, or the process left with the status `code`
        Signal, ///< a fault: signal `code`
        OutOfTime,
        TooMuchOutput
    };
    Kind kind = Kind::Failed;
    int code = 0;
    std::string output;
};

/// Runs `work` where its faults end nothing but itself: in a forked process without any of our files, which reads
/// `input` at the path that it is handed. For libraries that misread memory on damaged input. The work sees this
/// process as it was when it began; what it changes is lost but for its output.
/// Other threads are not forked: the work may allocate, calculate, read its input and write its output, and must not
/// touch windows, connections, locks or log. A lock that another thread held just then costs it its time limit.
/// The memory limit is left out under AddressSanitizer, which reserves more than any.
/// Throws FileError when the system has no process or no memory for it.
[[nodiscard]] IsolatedEnd runIsolated(std::string_view input, const IsolationLimits& limits,
                                      const std::function<void(const char* inputPath, IsolatedOutput&)>& work);

} // namespace kelb::platform
