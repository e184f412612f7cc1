#pragma once

#include "jet/types.h" // first: its enumerator Binary must not meet the type

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace kelb::jet {

struct Null {
    friend bool operator==(Null, Null) = default;
};
struct Currency {
    std::int64_t tenThousandths = 0;
    friend bool operator==(Currency, Currency) = default;
};
/// Days since 1899-12-30 (platform/date_time.h converts).
struct OleDate {
    double days = 0;
    friend bool operator==(OleDate, OleDate) = default;
};
struct Guid {
    std::array<std::uint8_t, 16> bytes{}; ///< in the order in which it is displayed
    friend bool operator==(const Guid&, const Guid&) = default;
};
/// magnitude / 10^scale; magnitude as four words, most significant first.
struct Decimal {
    bool negative = false;
    std::array<std::uint32_t, 4> magnitude{};
    std::uint8_t scale = 0;
    friend bool operator==(const Decimal&, const Decimal&) = default;
};
using Binary = std::vector<std::byte>;

/// One field. Texts are UTF-16 code units, unpaired surrogates included. int64_t: ACE big integers, read only.
using Value = std::variant<Null, bool, std::uint8_t, std::int16_t, std::int32_t, std::int64_t, Currency, float, double,
                           OleDate, Guid, Decimal, std::u16string, Binary>;

[[nodiscard]] inline bool isNull(const Value& value) noexcept {
    return std::holds_alternative<Null>(value);
}

} // namespace kelb::jet
