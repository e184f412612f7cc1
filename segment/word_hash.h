#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kelb::segment {

/// Units that hashOf reads at once.
inline constexpr std::size_t kHashedUnits = 8;

/// Hash of the first `size` units of `text`. Requires size < kHashedUnits and size <= text.size(). Quickest where
/// kHashedUnits can be read: no loop, no branch on the size.
inline std::uint64_t hashOf(std::u16string_view text, std::size_t size) noexcept {
    using Units = std::array<char16_t, kHashedUnits>;
    static constexpr auto kMasks = [] {
        std::array<Units, kHashedUnits> masks{};
        for (std::size_t kept = 0; kept < kHashedUnits; ++kept) {
            for (std::size_t unit = 0; unit < kept; ++unit) {
                masks[kept][unit] = 0xFFFF;
            }
        }
        return masks;
    }();
    std::array<std::uint64_t, 2> packed{}, mask{};
    if (text.size() >= kHashedUnits) {
        std::memcpy(packed.data(), text.data(), sizeof packed);
    } else {
        Units units{};
        std::copy_n(text.begin(), size, units.begin());
        std::memcpy(packed.data(), units.data(), sizeof packed);
    }
    std::memcpy(mask.data(), kMasks[size].data(), sizeof mask);
    std::uint64_t mixed = ((packed[0] & mask[0]) ^ size) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 32U ^ (packed[1] & mask[1])) * 0x94D049BB133111EBU;
    return mixed ^ mixed >> 29U;
}

} // namespace kelb::segment
