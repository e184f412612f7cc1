#include "ado/long_texts.h"

#include "ado/error.h"
#include "ado/workbook_record.h"

#include "jet/byte_order.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace kelb::ado {

namespace {

using jet::load16;
using jet::load32;
using jet::load8;
using jet::store16;
using jet::store8;

constexpr char kMark = '\1'; ///< no cell that anybody typed begins so
constexpr std::size_t kDigits = 5, kMarkSize = 1 + kDigits, kMostFilling = 3;
constexpr std::size_t kMostTexts = std::size_t{1} << (4 * kDigits);

constexpr std::size_t kTableHead = 8;                      ///< bytes: uses of texts, texts
constexpr unsigned kWide = 1, kSpoken = 4, kFormatted = 8; ///< flags of a text

[[noreturn]] void damaged() {
    throw Error(Error::Kind::Damaged, "the file is damaged: its table of texts is cut off");
}

/// Goes through the texts. A text's first bytes lie in one record; its characters may go on in the next ones, each of
/// which tells anew whether they are wide; what follows the characters goes on without that.
class TextTable {
public:
    TextTable(std::span<std::byte> stream, std::size_t at, LongTexts& texts)
        : stream_(stream), head_(at), at_(at + kRecordHead + kTableHead), texts_(texts) {}

    std::size_t run() {
        const std::uint32_t count = load32(stream_.data() + head_ + kRecordHead + 4);
        for (std::uint32_t i = 0; i < count && (left() > 0 || next()); ++i) {
            readText();
        }
        while (next()) {
        }
        return end();
    }

private:
    std::size_t end() const { return head_ + kRecordHead + load16(stream_.data() + head_ + 2); }
    std::size_t left() const { return end() - at_; }

    /// To the next record; false when the table ends here.
    bool next() {
        const std::size_t head = end();
        if (head + kRecordHead > stream_.size() || load16(stream_.data() + head) != kContinueRecord) {
            return false;
        }
        head_ = head;
        at_ = head + kRecordHead;
        if (end() > stream_.size()) {
            damaged();
        }
        ++records_;
        return true;
    }

    void requireNext() {
        if (!next()) {
            damaged();
        }
    }

    std::size_t take(std::size_t bytes) {
        if (left() < bytes) {
            damaged();
        }
        return std::exchange(at_, at_ + bytes);
    }

    void readText() {
        const std::size_t head = head_, start = at_;
        records_ = 1;
        const std::size_t length = load16(stream_.data() + take(2));
        const unsigned flags = load8(stream_.data() + take(1));
        std::size_t behind = (flags & kFormatted) != 0 ? 4U * load16(stream_.data() + take(2)) : 0U;
        behind += (flags & kSpoken) != 0 ? load32(stream_.data() + take(4)) : 0U;
        readCharacters(length, flags);
        const unsigned ofCharacters = records_;
        for (; behind > left(); requireNext()) {
            behind -= left();
        }
        take(behind);
        if (ofCharacters > 2 || records_ > ofCharacters) {
            replace(head, start);
        }
    }

    void readCharacters(std::size_t length, unsigned flags) {
        text_.clear();
        for (;;) {
            const std::size_t width = (flags & kWide) != 0 ? 2 : 1;
            for (; text_.size() < length && left() >= width; at_ += width) {
                const std::byte* const from = stream_.data() + at_;
                text_ += static_cast<char16_t>(width == 2 ? load16(from) : load8(from));
            }
            if (text_.size() >= length) {
                return;
            }
            requireNext();
            flags = load8(stream_.data() + take(1));
        }
    }

    /// The record that the text begins in ends before it; then comes a record with the mark alone, empty records, and
    /// the head of one that holds what follows the text in its last record.
    void replace(std::size_t head, std::size_t start) {
        constexpr std::size_t kTextHead = 3;
        constexpr std::size_t kLeast = kRecordHead + kTextHead + kMarkSize + kRecordHead;
        const std::size_t room = at_ - start;
        if (room < kLeast + kMostFilling) {
            throw Error(Error::Kind::Refused, "a text of " + std::to_string(text_.size()) +
                                                  " formatted characters lies where it cannot be read; save the "
                                                  "workbook anew without its formatting");
        }
        const std::size_t filling = (room - kLeast) % kRecordHead;
        const std::string mark = texts_.keep(std::move(text_), filling);
        const std::size_t last = end();
        setSize(head, start - head - kRecordHead);
        writeHead(start, kTextHead + mark.size());
        std::byte* const text = stream_.data() + start + kRecordHead;
        store16(text, static_cast<std::uint16_t>(mark.size()));
        store8(text + 2, 0);
        std::memcpy(text + kTextHead, mark.data(), mark.size());
        for (std::size_t empty = start + kRecordHead + kTextHead + mark.size(); empty + kRecordHead < at_;
             empty += kRecordHead) {
            writeHead(empty, 0);
        }
        head_ = at_ - kRecordHead;
        writeHead(head_, last - at_);
    }

    void setSize(std::size_t head, std::size_t size) {
        store16(stream_.data() + head + 2, static_cast<std::uint16_t>(size));
    }
    void writeHead(std::size_t head, std::size_t size) {
        store16(stream_.data() + head, kContinueRecord);
        setSize(head, size);
    }

    std::span<std::byte> stream_;
    std::size_t head_; ///< of the current record
    std::size_t at_;
    LongTexts& texts_;
    unsigned records_ = 1; ///< that the current text lies in so far
    std::u16string text_;
};

} // namespace

std::string LongTexts::keep(std::u16string text, std::size_t filling) {
    if (texts_.size() >= kMostTexts) {
        throw Error(Error::Kind::Refused, "more than " + std::to_string(kMostTexts) + " of its texts are too long");
    }
    std::string mark(1, kMark);
    for (std::size_t shift = 4 * kDigits; shift > 0;) {
        shift -= 4;
        mark += "0123456789abcdef"[texts_.size() >> shift & 15U];
    }
    texts_.push_back(std::move(text));
    return mark.append(filling, kMark);
}

const std::u16string* LongTexts::find(std::string_view cell) const noexcept {
    if (texts_.empty() || cell.size() < kMarkSize || cell.size() > kMarkSize + kMostFilling || cell[0] != kMark ||
        cell.find_first_not_of(kMark, kMarkSize) != cell.npos) {
        return nullptr;
    }
    std::size_t index = 0;
    for (const char digit : cell.substr(1, kDigits)) {
        const bool letter = digit >= 'a' && digit <= 'f';
        if (!letter && (digit < '0' || digit > '9')) {
            return nullptr;
        }
        index = index * 16 + static_cast<std::size_t>(letter ? digit - 'a' + 10 : digit - '0');
    }
    return index < texts_.size() ? &texts_[index] : nullptr;
}

std::size_t takeLongTexts(std::span<std::byte> stream, std::size_t at, LongTexts& texts) {
    return TextTable(stream, at, texts).run();
}

} // namespace kelb::ado
