#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

namespace kelb::jet {

inline constexpr std::size_t kPageSize = 4096;     ///< bytes; Jet 4 and ACE
inline constexpr std::size_t kJet3PageSize = 2048; ///< bytes; Access 97, read only
inline constexpr std::uint32_t kMaxPages = 524288; ///< a file ends at 2 GiB

/// Number of a page in the file; 0 is the header page and, in pointers, "none".
enum class PageNumber : std::uint32_t {};
inline constexpr PageNumber kNoPage{0};
constexpr std::uint32_t raw(PageNumber page) noexcept {
    return static_cast<std::uint32_t>(page);
}

/// A row: page and slot. The address of a moved record is that of its first slot, for ever.
struct RowId {
    PageNumber page = kNoPage;
    std::uint8_t slot = 0;

    friend constexpr auto operator<=>(const RowId&, const RowId&) = default;
    /// page << 8 | slot, as row data and definitions store it (little endian).
    constexpr std::uint32_t packed() const noexcept { return raw(page) << 8 | slot; }
    static constexpr RowId unpack(std::uint32_t packed) noexcept {
        return {PageNumber{packed >> 8}, static_cast<std::uint8_t>(packed & 0xFF)};
    }
};

enum class ColumnType : std::uint8_t {
    YesNo = 0x01,
    Byte = 0x02,
    Integer = 0x03, ///< 16 bits
    Long = 0x04,    ///< 32 bits
    Currency = 0x05,
    Single = 0x06,
    Double = 0x07,
    DateTime = 0x08,
    Binary = 0x09,
    Text = 0x0A,
    Ole = 0x0B,
    Memo = 0x0C,
    Guid = 0x0F,
    Numeric = 0x10,
    FixedBinary = 0x11, ///< in a helper table of Access only
    Complex = 0x12,     ///< ACE: number of the value set
    BigInteger = 0x13,  ///< ACE
    ExtendedDate = 0x14 ///< ACE
};

} // namespace kelb::jet
