#pragma once

#include <QString>

#include <cstddef>
#include <deque>
#include <optional>

namespace kelb::app {

/// Speed and time left of a running job, from the rows of the last ten seconds. Times are seconds of one steady clock.
class ProgressMeter {
public:
    void start(double now);
    /// Call it a few times a second: every call is remembered for ten seconds.
    void update(std::size_t done, std::size_t total, double now);

    std::optional<double> rowsPerSecond() const; ///< none until half a second is over
    std::optional<double> secondsLeft() const;   ///< none while no row was done
    /// Both as the window shows them; "" when there is nothing to tell.
    QString shown() const;

private:
    struct Sample {
        double time;
        std::size_t done;
    };
    std::deque<Sample> samples_;
    std::size_t total_ = 0;
};

} // namespace kelb::app
