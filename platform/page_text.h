#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelb::platform {

/// How the bytes of a saved page are read ([Setup] pageEncoding). What the page declares is not asked: real pages
/// declare wrongly.
enum class PageEncoding {
    Auto,        ///< UTF-8 with that byte order mark, or when valid with a multi-byte character; else code page 936
    CodePage936, ///< always
    Utf8,        ///< always; ill-formed sequences become U+FFFD
};

/// "auto", "936" or "utf-8" (any case); no value for anything else.
[[nodiscard]] std::optional<PageEncoding> parsePageEncoding(std::u16string_view name) noexcept;

/// What Auto means for a page that begins with these bytes; they may end inside a character. Others stay.
[[nodiscard]] PageEncoding encodingOf(std::string_view front, PageEncoding encoding) noexcept;

/// Decodes a page. A UTF-8 byte order mark is not part of the text (Auto and Utf8).
[[nodiscard]] std::u16string decodePage(std::string_view bytes, PageEncoding encoding);

} // namespace kelb::platform
