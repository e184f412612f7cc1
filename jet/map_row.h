#pragma once

#include "jet/data_page.h"
#include "jet/pager.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// The bytes of a usage map: its row and its bitmap pages. What the bits mean is said in usage_map.h.
namespace kelb::jet {

inline constexpr std::size_t kWindowOffset = 5; ///< in an inline map
inline constexpr std::size_t kBitmapOffset = 4; ///< in a bitmap page
inline constexpr std::uint16_t kBitmapPageType = 0x0105;

bool testBit(std::span<const std::byte> bits, std::size_t bit) noexcept;
void setBit(std::span<std::byte> bits, std::size_t bit, bool value) noexcept;
/// First bit set at or behind `from`.
std::optional<std::size_t> findBit(std::span<const std::byte> bits, std::size_t from) noexcept;
/// Last bit set before `end`, which may lie behind the last bit.
std::optional<std::size_t> findBitBefore(std::span<const std::byte> bits, std::size_t end) noexcept;

std::size_t bitsPerBitmapPage(const Pager& pager) noexcept;

/// A usage map's row for reading. Throws CorruptFile unless one of either form is there.
class MapRow {
public:
    MapRow(Pager& pager, RowId row);

    bool byReference() const noexcept { return bytes_[0] == std::byte{1}; }
    // Inline
    std::uint32_t firstPage() const noexcept;
    std::span<const std::byte> window() const noexcept { return bytes_.subspan(kWindowOffset); }
    bool covers(std::uint32_t page) const noexcept;
    // By reference
    std::size_t words() const noexcept { return (bytes_.size() - 1) / 4; }
    /// Nothing when the map has no such word, or one that is 0 or past the end of the file: real maps have junk behind
    /// the words in use.
    std::optional<PageNumber> bitmapPage(const Pager& pager, std::size_t word) const noexcept;

private:
    PageRef page_;
    std::span<const std::byte> bytes_;
};

/// The same for changing bytes.
class MapRowEdit {
public:
    MapRowEdit(Pager& pager, RowId row);
    std::span<std::byte> bytes() const noexcept { return bytes_; }

private:
    PageEdit page_;
    std::span<std::byte> bytes_;
};

struct BitmapRef {
    PageRef page;
    std::span<const std::byte> bits() const noexcept { return page.bytes().subspan(kBitmapOffset); }
};
struct BitmapEdit {
    PageEdit page;
    std::span<std::byte> bits() const noexcept { return page.bytes().subspan(kBitmapOffset); }
};
/// Throw CorruptFile unless it is a bitmap page.
BitmapRef readBitmap(Pager& pager, PageNumber page);
BitmapEdit editBitmap(Pager& pager, PageNumber page);

} // namespace kelb::jet
