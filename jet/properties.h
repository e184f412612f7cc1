#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Table and column properties: the value LvProp of a catalog row.
///
/// | part | content |
/// |---|---|
/// | signature | "MR2", 00; Access 97: "KKD", 00, and texts in the code page of the file |
/// | chunk | u32 length (these 6 bytes included), u16 type, data |
/// | 0x0080 | names: u16 length in bytes, UTF-16LE; numbered from 0 |
/// | 0x0000, 0x0001 | of the table, of a column: u32 length of the name block, u16 length, owner's name; then values |
/// | value | u16 length (these 2 bytes included), u8 flag 01: set by definition rights only, u8 type, u16 name, u16
/// length, bytes |
namespace kelb::jet {

struct Property {
    std::u16string name;
    std::uint8_t definitionOnly = 0;
    std::uint8_t type = 0; ///< as ColumnType
    std::vector<std::byte> value;
};

struct PropertyOwner {
    std::uint16_t kind = 0; ///< 0 the table, 1 a column
    std::u16string name;
    std::vector<Property> properties;
};

class Properties {
public:
    Properties() = default;
    /// Empty bytes have none. Those of Access 97 ("KKD", texts in `codePage`) come as Access 2000 would have them.
    /// Throws Error (Corrupt) for malformed ones, and for texts of Access 97 that are too long for Access 2000.
    explicit Properties(std::span<const std::byte> stored, std::uint16_t codePage = 1252);

    bool isRequired(std::u16string_view column) const noexcept; ///< names without regard to case
    void setRequired(std::u16string_view column);

    std::vector<std::byte> build() const; ///< the bytes to store, in the form of Access 2000
    std::vector<PropertyOwner> owners;    ///< in stored order

private:
    struct OtherChunk {
        std::uint16_t type;
        std::vector<std::byte> data;
    };
    std::vector<OtherChunk> others_; ///< types unknown here, carried along behind the rest
};

} // namespace kelb::jet
