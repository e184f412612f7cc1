#pragma once

#include "jet/pager.h"
#include "jet/usage_map.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kelb::jet {

inline constexpr std::size_t kLongValueHeader = 12;
inline constexpr std::size_t kMaxInlineLongValue = 64;
inline constexpr std::uint32_t kMaxLongValue = 0x3FFFFFFF; ///< bytes

/// Where a column's long values live (end of the table definition).
struct LongValueMaps {
    RowId owned;
    RowId free; ///< page 0: the column has no free-space map
};

/// The 12-byte header in the row:
/// | 0 | u32 | low 30 bits: stored bytes; bit 31 inline, bit 30 single page, neither: chain |
/// | 4 | u32 | row pointer of the first long-value row, 0 when inline |
/// | 8 | u32 | chain stamp |
struct LongValueHeader {
    enum class Form { Inline, Single, Chain };
    Form form;
    std::uint32_t length; ///< bytes stored
    RowId first;
    std::uint32_t stamp;

    /// Requires field.size() >= kLongValueHeader.
    static LongValueHeader parse(std::span<const std::byte> field) noexcept;
};

/// Appends the stored bytes of the value whose field (header, and data when inline) is given to `out`.
/// Throws CorruptFile for pointers that lead nowhere, chains that repeat or end early.
void readLongValue(Pager& pager, std::span<const std::byte> field, std::vector<std::byte>& out);
/// The same into memory of exactly LongValueHeader::length bytes, for readers that have a place of their own.
void readLongValue(Pager& pager, std::span<const std::byte> field, std::span<std::byte> out);

/// What can be read of a value, and why that is not all of it.
struct AvailableValue {
    std::vector<std::byte> bytes; ///< from its beginning
    std::string fault;            ///< empty: the value is whole
    PageNumber page = kNoPage;    ///< where the fault is
};
/// For damaged files. Throws nothing for damage; makes room only for what is there.
AvailableValue readAvailableValue(Pager& pager, std::span<const std::byte> field);

/// Stores a value outside the row and gives back its header. Requires an operation and 0 < bytes.size().
std::array<std::byte, kLongValueHeader> writeLongValue(Pager& pager, PageAllocator& allocator,
                                                       const LongValueMaps& maps, std::span<const std::byte> bytes);

/// Releases what the field refers to; nothing for inline values. Requires an operation.
void freeLongValue(Pager& pager, PageAllocator& allocator, const LongValueMaps& maps, std::span<const std::byte> field);

} // namespace kelb::jet
