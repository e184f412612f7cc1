#pragma once

#include "jet/table_definition.h"
#include "jet/types.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// Page 0 of a database.
///
/// | offset | size | meaning |
/// |---|---|---|
/// | 0 | 4 | 00 01 00 00 |
/// | 4 | 15 | "Standard Jet DB", "Standard ACE DB" |
/// | 0x14 | u8 | version: 0 Access 97, 1 Access 2000 to 2003, 2 to 6 Access 2007 and later |
/// | 0x18 | 128 | masked block (Jet 3: 126) |
/// | 0x18 | u32 | row pointer of the map of free pages |
/// | 0x1C | u32 | row pointer of the map of pages about to become free |
/// | 0x20 | 4 × u32 | definition pages of the system tables |
/// | 0x3C | u16 | code page |
/// | 0x3E | u32 | encryption key, 0 = not encrypted |
/// | 0x42 | 40 | password (20 units, XORed with the whole days of the creation date; Jet 3: 20 bytes, not XORed) |
/// | 0x6A | u32 | build of the engine that made the file |
/// | 0x6E | u32 | sort order: u16 LCID, u8 0, u8 version |
/// | 0x72 | f64 | creation date |
/// | 0xE00 | 512 | commit bytes of the users |
namespace kelb::jet {

inline constexpr std::size_t kHeaderFront = 0x98; ///< bytes that readFileHeader looks at

struct FileHeader {
    Dialect dialect = Dialect::Jet4;
    std::uint16_t codePage = 1252;
    SortOrder sortOrder;
    bool standardMaps = true; ///< the maps of free pages are where every known file has them

    std::size_t pageSize() const noexcept { return dialect == Dialect::Jet3 ? kJet3PageSize : kPageSize; }
};

/// `front`: the first bytes of the file, at least kHeaderFront unless the file is shorter. Throws Error (NotADatabase,
/// UnsupportedVersion, Encrypted, PasswordProtected) naming `path`.
FileHeader readFileHeader(std::span<const std::byte> front, std::u16string_view path);

/// Fills a zeroed page 0 for a new Access 2000 database.
void writeFileHeader(std::span<std::byte> page, std::uint16_t codePage, SortOrder sortOrder);

} // namespace kelb::jet
