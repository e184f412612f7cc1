#include "platform/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kelb::platform {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

struct Sequence {
    char32_t point;   ///< meaningful only when `wellFormed`
    std::size_t size; ///< bytes of the character, or of the ill-formed part that stands for one U+FFFD
    bool wellFormed;
};

std::uint8_t byteAt(std::string_view bytes, std::size_t at) noexcept {
    return static_cast<std::uint8_t>(bytes[at]);
}

/// Reads the sequence at `at`, whose first byte is not ASCII. The second byte's narrower range shuts out overlong
/// forms, surrogates and what lies past U+10FFFF.
Sequence readSequence(std::string_view bytes, std::size_t at) noexcept {
    const std::uint8_t lead = byteAt(bytes, at);
    if (lead > 0xE0 && lead < 0xED && bytes.size() - at >= 3) { // nearly every Chinese character
        const unsigned second = byteAt(bytes, at + 1) ^ 0x80U;
        const unsigned third = byteAt(bytes, at + 2) ^ 0x80U;
        if ((second | third) < 0x40) {
            return {(lead & 0x0FU) << 12U | second << 6U | third, 3, true};
        }
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {0, 1, false};
    }
    const std::size_t size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    std::uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t point = lead & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if (at + i >= bytes.size() || byteAt(bytes, at + i) < low || byteAt(bytes, at + i) > high) {
            return {0, i, false};
        }
        point = point << 6U | (byteAt(bytes, at + i) & 0x3FU);
        low = 0x80;
        high = 0xBF;
    }
    return {point, size, true};
}

/// Length of the ASCII run at `at`, taken in steps of eight bytes.
std::size_t asciiRun(std::string_view bytes, std::size_t at) noexcept {
    const std::size_t start = at;
    for (std::uint64_t word = 0; at + sizeof word <= bytes.size(); at += sizeof word) {
        std::memcpy(&word, bytes.data() + at, sizeof word);
        if ((word & 0x8080808080808080U) != 0) {
            break;
        }
    }
    while (at < bytes.size() && byteAt(bytes, at) < 0x80) {
        ++at;
    }
    return at - start;
}

char* writePoint(char* to, char32_t point) noexcept {
    const auto put = [&to](char32_t byte) { *to++ = static_cast<char>(static_cast<std::uint8_t>(byte)); };
    if (point < 0x80) {
        put(point);
    } else if (point < 0x800) {
        put(0xC0 | point >> 6U);
        put(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        put(0xE0 | point >> 12U);
        put(0x80 | (point >> 6U & 0x3F));
        put(0x80 | (point & 0x3F));
    } else {
        put(0xF0 | point >> 18U);
        put(0x80 | (point >> 12U & 0x3F));
        put(0x80 | (point >> 6U & 0x3F));
        put(0x80 | (point & 0x3F));
    }
    return to;
}

} // namespace

void toUtf8(std::u16string_view text, std::string& out) {
    const std::size_t before = out.size();
    out.resize(before + text.size() * 3); // a unit takes at most three bytes, a pair of them four
    char* to = out.data() + before;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (point >= 0xD800 && point <= 0xDFFF) {
            const bool paired = point < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
            point = paired ? 0x10000 + ((point - 0xD800) << 10U) + (text[++i] - 0xDC00U) : kReplacement;
        }
        to = writePoint(to, point);
    }
    out.resize(static_cast<std::size_t>(to - out.data()));
}

std::string toUtf8(std::u16string_view text) {
    std::string out;
    toUtf8(text, out);
    return out;
}

std::u16string fromUtf8(std::string_view bytes) {
    std::u16string text(bytes.size(), u'\0'); // a sequence never gives more units than it has bytes
    char16_t* to = text.data();
    for (std::size_t at = 0; at < bytes.size();) {
        if (byteAt(bytes, at) < 0x80) {
            for (const std::size_t end = at + asciiRun(bytes, at); at < end; ++at) {
                *to++ = byteAt(bytes, at);
            }
            continue;
        }
        const Sequence sequence = readSequence(bytes, at);
        at += sequence.size;
        if (!sequence.wellFormed) {
            *to++ = kReplacement;
        } else if (sequence.point < 0x10000) {
            *to++ = static_cast<char16_t>(sequence.point);
        } else {
            *to++ = static_cast<char16_t>(0xD7C0 + (sequence.point >> 10U));
            *to++ = static_cast<char16_t>(0xDC00 + (sequence.point & 0x3FFU));
        }
    }
    text.resize(static_cast<std::size_t>(to - text.data()));
    return text;
}

Utf8Check checkUtf8(std::string_view bytes) noexcept {
    bool multiByte = false;
    for (std::size_t at = 0; at < bytes.size();) {
        if (byteAt(bytes, at) < 0x80) {
            at += asciiRun(bytes, at);
            continue;
        }
        const Sequence sequence = readSequence(bytes, at);
        if (!sequence.wellFormed) {
            return {false, multiByte};
        }
        multiByte = true;
        at += sequence.size;
    }
    return {true, multiByte};
}

} // namespace kelb::platform
