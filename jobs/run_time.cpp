#include "jobs/run_time.h"

#include "platform/utf8.h"

namespace kelb::jobs {

std::u16string runTime(const platform::DateTime& time) {
    std::string name;
    for (const char digit : platform::toIso(time)) {
        if (digit == 'T') {
            name += '-';
        } else if (digit >= '0' && digit <= '9') {
            name += digit;
        }
    }
    return platform::fromUtf8(name);
}

} // namespace kelb::jobs
