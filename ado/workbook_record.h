#pragma once

#include <cstddef>
#include <cstdint>

/// A record of a workbook's stream: u16 type, u16 length of what follows.
namespace kelb::ado {

inline constexpr std::size_t kRecordHead = 4;            ///< bytes: type and length
inline constexpr std::uint16_t kContinueRecord = 0x003C; ///< its content belongs to the record before it

} // namespace kelb::ado
