#include "platform/clock.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace kelb::platform {

DateTime SystemClock::now() const {
    const std::time_t seconds = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &seconds);
#else
    localtime_r(&seconds, &local);
#endif
    // A leap second shows as 59: a DateTime has no second 60.
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec > 59 ? 59 : local.tm_sec};
}

double SystemClock::steadySeconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void SystemClock::sleep(double seconds) const {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

} // namespace kelb::platform
