#pragma once

#include <cstddef>
#include <cstdint>

/// The bytes of a table definition in Jet 4 and ACE files, for those that read, write and check them: one byte string
/// cut over a chain of pages. Offsets count in the string, which begins with the header of its first page; from the
/// second page on it continues behind the 8 bytes of the page's header.
///
/// | offset | size | meaning |
/// |---|---|---|
/// | 0 | 2 | 02 01 |
/// | 2 | u16 | free bytes of the page less 8, at least 0 |
/// | 4 | u32 | next page of the chain, 0 = none |
/// | 8 | u32 | length of the string |
/// | 12 | u32 | mark 1625 |
/// | 16 | u32 | rows |
/// | 20 | u32 | last autonumber |
/// | 24 | u32 | step of autonumbers |
/// | 40 | u8 | table type |
/// | 41, 43 | u16 | columns ever, variable columns ever |
/// | 45 | u16 | columns |
/// | 47, 51 | u32 | logical indexes, physical indexes |
/// | 55, 59 | u32 | row pointers of the maps of owned pages and of pages with room |
/// | 63 | 12 each | physical index: u32 entries at the last compaction, u32 distinct keys, u32 0 |
/// | | 25 each | column: u8 type, u32 mark 1625, u16 number, u16 var index, u16 display position, sort order (u16 LCID,
/// u8 0, u8 version) or precision and scale (u8, u8, u16 0), u8 flags, u8 extra flags, u32 0, u16 fixed offset, u16
/// length | | | | name of each column: u16 length in bytes, UTF-16LE | | | 52 each | physical index: u32 mark 1923, ten
/// columns (u16 number, FFFF = none; u8 1 = ascending), u32 row pointer of its map, u32 root, u32 0, u8 flags, 5 bytes
/// 0 | | | 28 each | logical index: u32 mark 1625, u32 number, u32 physical index, u8 side of the relation, i32 index
/// and u32 table on its other side, u8 cascades updates, u8 cascades deletions, u8 kind, u32 0 | | | | name of each
/// logical index | | | 10 each | long-value column: u16 number, u32 row pointers of its two maps | | | u16 | FFFF |
namespace kelb::jet {

inline constexpr std::uint16_t kDefinitionPageType = 0x0102;
inline constexpr std::size_t kDefinitionPageHeader = 8; ///< bytes, of every page of the chain
inline constexpr std::size_t kDefinitionLengthOffset = 8;
inline constexpr std::size_t kDefinitionMarkOffset = 12;
inline constexpr std::uint32_t kDefinitionMark = 0x659; ///< in front of definitions, columns and logical indexes
inline constexpr std::uint32_t kIndexMark = 0x783;      ///< in front of physical indexes
inline constexpr std::size_t kTableTypeOffset = 40;
inline constexpr std::size_t kDefinitionHeadBytes = 63; ///< in front of the statistics of the indexes
inline constexpr std::size_t kIndexStatisticBytes = 12;
inline constexpr std::size_t kColumnBytes = 25;
inline constexpr std::size_t kPhysicalIndexBytes = 52;
inline constexpr std::size_t kLogicalIndexBytes = 28;
inline constexpr std::size_t kColumnMapsBytes = 10;
inline constexpr std::uint16_t kNoColumn = 0xFFFF;

// Limits of the format.
inline constexpr std::size_t kMaxColumns = 255; ///< deleted ones included
inline constexpr std::size_t kMaxIndexes = 32;
inline constexpr std::size_t kMaxIndexColumns = 10;

inline constexpr std::uint8_t kUserTable = 0x4E, kSystemTable = 0x53;   ///< table types
inline constexpr std::uint8_t kPrimaryKeyKind = 1, kForeignKeyKind = 2; ///< of logical indexes; 0 = any other

// Column::flags.
inline constexpr std::uint8_t kFixedFlag = 0x01;
inline constexpr std::uint8_t kColumnFlag = 0x02; ///< set in every column
inline constexpr std::uint8_t kAutonumberFlag = 0x04;
inline constexpr std::uint8_t kGuidAutonumberFlag = 0x40;
inline constexpr std::uint8_t kHyperlinkFlag = 0x80;
inline constexpr std::uint8_t kCompressionFlag = 0x01; ///< of Column::extraFlags

// PhysicalIndex::flags.
inline constexpr std::uint8_t kUniqueFlag = 0x01;
inline constexpr std::uint8_t kIgnoreNullsFlag = 0x02;
inline constexpr std::uint8_t kRequiredFlag = 0x08;
inline constexpr std::uint8_t kIndexFlag = 0x80; ///< set in every index

} // namespace kelb::jet
