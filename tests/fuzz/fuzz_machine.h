#pragma once

#include "platform/clock.h"
#include "platform/memory_file_system.h"
#include "platform/platform.h"
#include "platform/random.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// What every fuzz target is: called with one input after the other, each from a clean start.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace kelb::fuzz {

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the program, which is what the fuzzer sees as a find.
inline void require(bool holds, const char* rule) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", rule);
        std::abort();
    }
}

class StandingClock final : public platform::Clock {
public:
    platform::DateTime now() const override { return {2015, 12, 2, 8, 30, 0}; }
    double steadySeconds() const override { return 100; }
};

class LowRandom final : public platform::Random {
public:
    void reseed() override {}
    double next() override { return 0.25; }
    std::uint64_t bits() override { return ++drawn_; }

private:
    std::uint64_t drawn_ = 0;
};

/// The world of one input: no file but those that the target puts there, the same time and numbers every time.
struct FuzzMachine {
    platform::MemoryFileSystem files;
    StandingClock clock;
    LowRandom random;
    platform::Platform platform{files, clock, random, u"/app"};
};

} // namespace kelb::fuzz
