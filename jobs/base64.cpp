#include "jobs/base64.h"

#include <algorithm>
#include <cstdint>

namespace kelb::jobs {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::string toBase64(const ado::Binary& bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (i + k < bytes.size() ? std::to_integer<std::uint32_t>(bytes[i + k]) : 0U);
        }
        const std::size_t digits = std::min<std::size_t>(bytes.size() - i, 3) + 1;
        for (std::size_t k = 0; k < 4; ++k) {
            text += k < digits ? kAlphabet[group >> (18 - 6 * k) & 63U] : '=';
        }
    }
    return text;
}

std::optional<ado::Binary> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::size_t padding = 0;
    while (padding < 2 && text.size() > padding && text[text.size() - 1 - padding] == '=') {
        ++padding;
    }
    ado::Binary bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t digit = i >= text.size() - padding ? 0 : kAlphabet.find(text[i]);
        if (digit == kAlphabet.npos) {
            return std::nullopt;
        }
        group = group << 6 | static_cast<std::uint32_t>(digit);
        if (i % 4 == 3) {
            for (int shift = 16; shift >= 0; shift -= 8) {
                bytes.push_back(static_cast<std::byte>(group >> shift & 0xFF));
            }
            group = 0;
        }
    }
    bytes.erase(bytes.end() - static_cast<std::ptrdiff_t>(std::min(padding, bytes.size())), bytes.end());
    return bytes;
}

} // namespace kelb::jobs
