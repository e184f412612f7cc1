#pragma once

#include <cstdint>

namespace kelb::platform {

class Random {
public:
    virtual ~Random() = default;
    virtual void reseed() = 0;        ///< from the clock and the system's entropy
    virtual double next() = 0;        ///< in [0, 1)
    virtual std::uint64_t bits() = 0; ///< 64 random bits
};

class SystemRandom final : public Random {
public:
    SystemRandom();
    void reseed() override;
    double next() override;
    std::uint64_t bits() override;

private:
    std::uint64_t state_;
};

} // namespace kelb::platform
