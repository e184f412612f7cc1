#include "platform/interrupt.h"

#include <csignal>

namespace kelb::platform {
namespace {

// A signal handler can reach nothing else.
volatile std::sig_atomic_t interrupts = 0;

extern "C" void noteInterrupt(int signal) {
    interrupts = 1;
    std::signal(signal, SIG_DFL);
}

} // namespace

InterruptWatch::InterruptWatch() : before_((interrupts = 0, std::signal(SIGINT, noteInterrupt))) {}

InterruptWatch::~InterruptWatch() {
    std::signal(SIGINT, before_ == SIG_ERR ? SIG_DFL : before_);
}

bool InterruptWatch::interrupted() const noexcept {
    return interrupts != 0;
}

} // namespace kelb::platform
