#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// All integer encoding of the file format. The file is little endian but for index keys and index row pointers.
namespace kelb::jet {

inline std::uint8_t load8(const std::byte* p) noexcept {
    return std::to_integer<std::uint8_t>(*p);
}
inline std::uint16_t load16(const std::byte* p) noexcept {
    return static_cast<std::uint16_t>(load8(p) | load8(p + 1) << 8);
}
inline std::uint32_t load24(const std::byte* p) noexcept {
    return static_cast<std::uint32_t>(load8(p)) | static_cast<std::uint32_t>(load8(p + 1)) << 8 |
           static_cast<std::uint32_t>(load8(p + 2)) << 16;
}
inline std::uint32_t load32(const std::byte* p) noexcept {
    return load24(p) | static_cast<std::uint32_t>(load8(p + 3)) << 24;
}
inline std::uint64_t load64(const std::byte* p) noexcept {
    return load32(p) | static_cast<std::uint64_t>(load32(p + 4)) << 32;
}
inline void store8(std::byte* p, std::uint8_t v) noexcept {
    *p = std::byte{v};
}
inline void store16(std::byte* p, std::uint16_t v) noexcept {
    store8(p, static_cast<std::uint8_t>(v & 0xFF));
    store8(p + 1, static_cast<std::uint8_t>(v >> 8));
}
inline void store32(std::byte* p, std::uint32_t v) noexcept {
    store16(p, static_cast<std::uint16_t>(v & 0xFFFF));
    store16(p + 2, static_cast<std::uint16_t>(v >> 16));
}
inline void store64(std::byte* p, std::uint64_t v) noexcept {
    store32(p, static_cast<std::uint32_t>(v & 0xFFFFFFFF));
    store32(p + 4, static_cast<std::uint32_t>(v >> 32));
}
inline std::uint32_t loadBig24(const std::byte* p) noexcept {
    return static_cast<std::uint32_t>(load8(p)) << 16 | static_cast<std::uint32_t>(load8(p + 1)) << 8 | load8(p + 2);
}
inline std::uint32_t loadBig32(const std::byte* p) noexcept {
    return loadBig24(p) << 8 | load8(p + 3);
}
inline void storeBig16(std::byte* p, std::uint16_t v) noexcept {
    store8(p, static_cast<std::uint8_t>(v >> 8));
    store8(p + 1, static_cast<std::uint8_t>(v & 0xFF));
}
inline void storeBig32(std::byte* p, std::uint32_t v) noexcept {
    storeBig16(p, static_cast<std::uint16_t>(v >> 16));
    storeBig16(p + 2, static_cast<std::uint16_t>(v & 0xFFFF));
}

} // namespace kelb::jet
