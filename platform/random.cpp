#include "platform/random.h"

#include <chrono>
#include <random>

namespace kelb::platform {

SystemRandom::SystemRandom() : state_(0) {
    reseed();
}

void SystemRandom::reseed() {
    std::random_device entropy;
    const auto ticks = std::chrono::system_clock::now().time_since_epoch().count();
    state_ = (std::uint64_t{entropy()} << 32U | entropy()) ^ static_cast<std::uint64_t>(ticks);
}

std::uint64_t SystemRandom::bits() {
    // SplitMix64: one addition and a mix, of full period, and any state will do as a start.
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EBU;
    return mixed ^ mixed >> 31U;
}

double SystemRandom::next() {
    return static_cast<double>(bits() >> 11U) * 0x1p-53;
}

} // namespace kelb::platform
