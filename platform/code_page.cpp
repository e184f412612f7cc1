#include "platform/code_page.h"

#include <algorithm>
#include <array>
#include <cstdint>

#ifdef __SSE2__
#include <bit>
#include <emmintrin.h>
#endif

namespace kelb::platform {

namespace {

constexpr unsigned kFirstLead = 0x81, kLastLead = 0xFE, kFirstTrail = 0x40;
constexpr std::size_t kLeads = 126, kTrails = 192;
constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kEuro = 0x20AC;   // byte 80
constexpr char16_t kByteFF = 0xF8F5; // byte FF

/// `code` is one byte, or lead and trail.
struct Fallback {
    std::uint16_t unit, code;
};

#include "platform/code_page_936_table.inc"

/// Two bytes for each unit, one byte below 0x100; 0 (except for U+0000) where the page has nothing. 128 KB.
constexpr std::array<std::uint16_t, 0x10000> makeCodes() {
    std::array<std::uint16_t, 0x10000> codes{};
    for (std::size_t i = 0; i < kPairs.size(); ++i) {
        if (kPairs[i] != kReplacement) {
            codes[kPairs[i]] =
                static_cast<std::uint16_t>((kFirstLead + i / kTrails) << 8U | (kFirstTrail + i % kTrails));
        }
    }
    for (const Fallback& fallback : kFallbacks) {
        codes[fallback.unit] = fallback.code;
    }
    for (std::uint16_t unit = 0; unit < 0x80; ++unit) {
        codes[unit] = unit;
    }
    codes[kEuro] = 0x80;
    codes[kByteFF] = 0xFF;
    return codes;
}

/// One bit a unit. Only what a pair decodes to counts: É goes out as the two bytes of é, but the page does not hold it.
constexpr std::array<std::uint32_t, 0x10000 / 32> makeDoubleByteBits() {
    std::array<std::uint32_t, 0x10000 / 32> bits{};
    for (const char16_t unit : kPairs) {
        if (unit != kReplacement) {
            bits[unit / 32U] |= std::uint32_t{1} << unit % 32U;
        }
    }
    return bits;
}

constexpr auto kCodes = makeCodes();
constexpr auto kDoubleByteBits = makeDoubleByteBits();

/// Copies the ASCII run at `from` and moves both pointers past it. May write up to 15 units more than the run has,
/// never more than bytes are left.
void decodeAscii(const std::uint8_t*& from, const std::uint8_t* end, char16_t*& to) noexcept {
#ifdef __SSE2__
    const __m128i zero = _mm_setzero_si128();
    while (end - from >= 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 8), _mm_unpackhi_epi8(bytes, zero));
        const int mask = _mm_movemask_epi8(bytes);
        const int run = mask == 0 ? 16 : std::countr_zero(static_cast<unsigned>(mask));
        from += run;
        to += run;
        if (mask != 0) {
            return;
        }
    }
#endif
    while (from != end && *from < 0x80) {
        *to++ = *from++;
    }
}

/// Decodes the run of bytes above 0x7F at `from`.
void decodeHigh(const std::uint8_t*& from, const std::uint8_t* end, char16_t*& to) noexcept {
    while (from != end && *from >= 0x80) {
        const unsigned lead = *from++;
        if (lead < kFirstLead || lead > kLastLead) {
            *to++ = lead == 0x80 ? kEuro : kByteFF;
        } else if (from == end || *from < kFirstTrail) {
            *to++ = kReplacement; // the byte after it may be a "<" or a line end that the page needs
        } else {
            *to++ = kPairs[(lead - kFirstLead) * kTrails + (*from++ - kFirstTrail)];
        }
    }
}

} // namespace

void decode936(std::string_view bytes, std::u16string& out) {
    const std::size_t before = out.size();
    out.resize(before + bytes.size()); // a byte gives at most one unit
    char16_t* to = out.data() + before;
    const auto* from = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto* const end = from + bytes.size();
    while (from != end) {
        decodeAscii(from, end, to);
        decodeHigh(from, end, to);
    }
    out.resize(static_cast<std::size_t>(to - out.data()));
}

std::u16string decode936(std::string_view bytes) {
    std::u16string text;
    decode936(bytes, text);
    return text;
}

std::string encode936(std::u16string_view text, std::size_t* replaced) {
    std::string bytes(text.size() * 2, '\0');
    char* to = bytes.data();
    std::size_t missing = 0;
    for (const char16_t unit : text) {
        std::uint16_t code = unit < 0x80 ? unit : kCodes[unit];
        if (code == 0 && unit != 0) {
            code = u'?';
            ++missing;
        }
        if (code > 0xFF) {
            *to++ = static_cast<char>(code >> 8U);
        }
        *to++ = static_cast<char>(code & 0xFFU);
    }
    bytes.resize(static_cast<std::size_t>(to - bytes.data()));
    if (replaced != nullptr) {
        *replaced += missing;
    }
    return bytes;
}

bool isDoubleByte(char16_t unit) noexcept {
    return (kDoubleByteBits[unit / 32U] >> unit % 32U & 1U) != 0;
}

bool hasDoubleByte(std::u16string_view text) noexcept {
    return std::any_of(text.begin(), text.end(), isDoubleByte);
}

} // namespace kelb::platform
