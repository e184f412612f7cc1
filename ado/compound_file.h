#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// A compound file (OLE 2): a small file system in sectors of 512 or 4096 bytes, chained through a table, with a header
/// in front. Streams shorter than 4096 bytes lie in sectors of 64 bytes of a stream that the root entry owns.
/// Every number of the file is checked before it is used; the bytes must outlive the object.
class CompoundFile {
public:
    /// Whether the bytes begin like one.
    [[nodiscard]] static bool isOne(std::span<const std::byte> bytes) noexcept;
    /// Reads the sector tables and the directory. Throws Error (Damaged) with the reason.
    explicit CompoundFile(std::span<const std::byte> bytes);

    bool has(std::u16string_view stream) const { return find(stream) != nullptr; }
    /// The whole stream. Throws Error (Damaged), also when there is none of this name.
    std::vector<std::byte> read(std::u16string_view stream) const;

private:
    struct Entry {
        std::u16string name;
        bool root;
        std::uint32_t start;
        std::uint64_t size;
    };
    using Table = std::vector<std::uint32_t>; ///< what follows each sector

    const Entry* find(std::u16string_view stream) const;
    std::span<const std::byte> sector(std::uint32_t number) const;
    void readTable();
    void readDirectory();
    std::vector<std::uint32_t> chain(std::uint32_t start, const Table& table, std::string_view what) const;
    std::vector<std::byte> join(std::uint32_t start, std::string_view what) const;

    std::span<const std::byte> bytes_;
    std::size_t sectorSize_ = 0;
    std::size_t sectorCount_ = 0;
    Table table_;
    Table shortTable_;
    std::vector<Entry> entries_;
};

/// A compound file with one stream, laid out as plainly as the format allows. At most kLargestStream bytes.
[[nodiscard]] std::string makeCompoundFile(std::u16string_view stream, std::span<const std::byte> content);
inline constexpr std::size_t kLargestStream = std::size_t{400} << 20;

} // namespace kelb::ado
