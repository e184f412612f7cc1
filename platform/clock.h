#pragma once

#include "platform/date_time.h"

namespace kelb::platform {

class Clock {
public:
    virtual ~Clock() = default;
    virtual DateTime now() const = 0;         ///< local time
    virtual double steadySeconds() const = 0; ///< never goes back; origin unspecified
    /// Waits for so many seconds; clocks of tests go on at once.
    virtual void sleep(double seconds) const { static_cast<void>(seconds); }
};

class SystemClock final : public Clock {
public:
    DateTime now() const override;
    double steadySeconds() const override;
    void sleep(double seconds) const override;
};

} // namespace kelb::platform
