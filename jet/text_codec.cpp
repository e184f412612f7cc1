#include "jet/text_codec.h"

#include "jet/byte_order.h"

#include "platform/code_page.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace kelb::jet {

namespace {

constexpr std::byte kMark0{0xFF}, kMark1{0xFE};
constexpr char16_t kMarkUnit = 0xFEFF;

/// Windows-1252 where it differs from the code points of the same value.
constexpr std::array<char16_t, 32> k1252From80 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                  0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                  0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                  0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool isMarked(std::span<const std::byte> stored) noexcept {
    return stored.size() >= 2 && stored[0] == kMark0 && stored[1] == kMark1;
}

void toHostOrder(std::u16string& text) noexcept {
    if constexpr (std::endian::native == std::endian::big) {
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(unit >> 8 | unit << 8);
        }
    }
}

/// What follows FF FE. A zero byte in the place of a character, or of the first byte of a pair, changes the mode.
void decodeCompressed(std::span<const std::byte> bytes, std::u16string& out) {
    out.resize(bytes.size());
    std::size_t units = 0, at = 0;
    bool raw = false;
    while (at < bytes.size()) {
        if (bytes[at] == std::byte{0}) {
            raw = !raw;
            ++at;
        } else if (!raw) {
            out[units++] = load8(&bytes[at++]);
        } else if (at + 1 < bytes.size()) {
            out[units++] = load16(&bytes[at]);
            at += 2;
        } else {
            break;
        }
    }
    out.resize(units);
}

void appendUnits(std::vector<std::byte>& out, std::u16string_view text) {
    const std::size_t at = out.size();
    out.resize(at + 2 * text.size());
    if constexpr (std::endian::native == std::endian::little) {
        if (!text.empty()) {
            std::memcpy(out.data() + at, text.data(), 2 * text.size());
        }
    } else {
        for (std::size_t i = 0; i < text.size(); ++i) {
            store16(out.data() + at + 2 * i, text[i]);
        }
    }
}

bool fitsCompressedRun(char16_t unit) noexcept {
    return unit > 0 && unit <= 0xFF;
}

bool fitsAnyRun(char16_t unit) noexcept {
    return (unit & 0xFF) != 0;
}

/// Compressed form with raw runs. Requires fitsAnyRun for every unit.
void appendRuns(std::vector<std::byte>& out, std::u16string_view text) {
    out.insert(out.end(), {kMark0, kMark1});
    bool raw = false;
    for (const char16_t unit : text) {
        if (fitsCompressedRun(unit) == raw) {
            out.push_back(std::byte{0});
            raw = !raw;
        }
        out.push_back(static_cast<std::byte>(unit & 0xFF));
        if (raw) {
            out.push_back(static_cast<std::byte>(unit >> 8));
        }
    }
}

} // namespace

void decodeText(std::span<const std::byte> stored, std::u16string& out) {
    if (isMarked(stored)) {
        decodeCompressed(stored.subspan(2), out);
        return;
    }
    out.resize(stored.size() / 2);
    if (!out.empty()) {
        std::memcpy(out.data(), stored.data(), 2 * out.size());
    }
    toHostOrder(out);
}

void decodeTextInPlace(std::u16string& text, std::size_t bytes) {
    const std::span<const std::byte> stored = std::as_bytes(std::span(text)).first(bytes);
    if (isMarked(stored)) {
        const std::vector<std::byte> copy(stored.begin() + 2, stored.end());
        decodeCompressed(copy, text);
        return;
    }
    text.resize(bytes / 2);
    toHostOrder(text);
}

void appendRawText(std::vector<std::byte>& out, std::u16string_view text) {
    if (!text.empty() && text.front() == kMarkUnit) {
        if (std::all_of(text.begin(), text.end(), fitsAnyRun)) {
            appendRuns(out, text);
            return;
        }
        text.remove_prefix(std::min(text.find_first_not_of(kMarkUnit), text.size()));
    }
    appendUnits(out, text);
}

bool isCompressible(std::u16string_view text) noexcept {
    return text.size() > 2 && text.size() <= kMaxCompressedUnits &&
           std::all_of(text.begin(), text.end(), fitsCompressedRun);
}

void appendCompressedText(std::vector<std::byte>& out, std::u16string_view text) {
    out.reserve(out.size() + text.size() + 2);
    out.insert(out.end(), {kMark0, kMark1});
    for (const char16_t unit : text) {
        out.push_back(static_cast<std::byte>(unit));
    }
}

void decodeCodePageText(std::span<const std::byte> stored, std::uint16_t codePage, std::u16string& out) {
    out.clear();
    if (codePage == 936) {
        // Bytes as characters, which is how the code page tables are addressed.
        platform::decode936({reinterpret_cast<const char*>(stored.data()), stored.size()}, out);
        return;
    }
    out.resize(stored.size());
    std::transform(stored.begin(), stored.end(), out.begin(), [](std::byte b) {
        const std::uint8_t value = load8(&b);
        return value >= 0x80 && value < 0xA0 ? k1252From80[value - 0x80U] : static_cast<char16_t>(value);
    });
}

} // namespace kelb::jet
