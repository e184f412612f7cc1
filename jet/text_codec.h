#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Texts as they are stored. Jet 4 and ACE: UTF-16LE, or, when the bytes FF FE stand in front, "compressed": runs of
/// one byte per character and raw runs, a zero byte between them. Jet 3: bytes of the file's code page.
namespace kelb::jet {

inline constexpr std::size_t kMaxCompressedUnits = 1024; ///< longer texts are stored raw

/// Replaces `out`, keeping its capacity. Any bytes decode; an odd last byte is dropped.
void decodeText(std::span<const std::byte> stored, std::u16string& out);

/// The same for bytes that were collected in the memory of `text` itself, so that long texts are copied only once:
/// text.resize((bytes + 1) / 2), fill its memory with the stored bytes, call.
void decodeTextInPlace(std::u16string& text, std::size_t bytes);

/// Appends UTF-16LE. A text that begins with U+FEFF would be taken for a compressed one: it is written in the
/// compressed form's raw run, or, when a unit in it cannot stand in a run (U+0000, U+4E00: a zero byte), loses every
/// U+FEFF in front.
void appendRawText(std::vector<std::byte>& out, std::u16string_view text);

/// More than 2 and at most kMaxCompressedUnits units, all of them U+0001 to U+00FF.
[[nodiscard]] bool isCompressible(std::u16string_view text) noexcept;
/// Appends the compressed form. Requires isCompressible(text).
void appendCompressedText(std::vector<std::byte>& out, std::u16string_view text);

/// Replaces `out`. Code page 936; every other one is read as 1252, the only other one that files were seen with.
void decodeCodePageText(std::span<const std::byte> stored, std::uint16_t codePage, std::u16string& out);

} // namespace kelb::jet
