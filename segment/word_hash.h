#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kelb::segment {

/// Bytes that hashOf reads at once.
inline constexpr std::size_t kHashedBytes = 16;

/// Hash of the first `size` bytes of `text`. Requires size < kHashedBytes and size <= text.size(). Quickest where
/// kHashedBytes can be read: no loop, no branch on the size.
inline std::uint64_t hashOf(std::string_view text, std::size_t size) noexcept {
    using Bytes = std::array<unsigned char, kHashedBytes>;
    static constexpr auto kMasks = [] {
        std::array<Bytes, kHashedBytes> masks{};
        for (std::size_t kept = 0; kept < kHashedBytes; ++kept) {
            for (std::size_t byte = 0; byte < kept; ++byte) {
                masks[kept][byte] = 0xFF;
            }
        }
        return masks;
    }();
    std::array<std::uint64_t, 2> packed{}, mask{};
    if (text.size() >= kHashedBytes) {
        std::memcpy(packed.data(), text.data(), sizeof packed);
    } else {
        std::array<char, kHashedBytes> bytes{};
        std::copy_n(text.begin(), size, bytes.begin());
        std::memcpy(packed.data(), bytes.data(), sizeof packed);
    }
    std::memcpy(mask.data(), kMasks[size].data(), sizeof mask);
    std::uint64_t mixed = ((packed[0] & mask[0]) ^ size) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 32U ^ (packed[1] & mask[1])) * 0x94D049BB133111EBU;
    return mixed ^ mixed >> 29U;
}

} // namespace kelb::segment
