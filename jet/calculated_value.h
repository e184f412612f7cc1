#pragma once

#include "jet/byte_order.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace kelb::jet {

/// ACE wraps a calculated value: 16 bytes, u32 length, the value.
inline constexpr std::size_t kCalculatedHeader = 20;

/// The value in the stored bytes of a calculated column; empty when they are fewer than the header.
inline std::span<const std::byte> calculatedValue(std::span<const std::byte> stored) noexcept {
    if (stored.size() < kCalculatedHeader)
        return {};
    const std::size_t length = load32(&stored[kCalculatedHeader - 4]);
    return stored.subspan(kCalculatedHeader).first(std::min(length, stored.size() - kCalculatedHeader));
}

} // namespace kelb::jet
