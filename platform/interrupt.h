#pragma once

namespace kelb::platform {

/// Watches for Ctrl-C while it lives: the first one is only noted, a second one ends the process as it would have
/// ended without the watch. One at a time in a program.
class InterruptWatch {
public:
    InterruptWatch();
    ~InterruptWatch(); ///< Ctrl-C does again what it did before
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    bool interrupted() const noexcept;

private:
    void (*before_)(int);
};

} // namespace kelb::platform
