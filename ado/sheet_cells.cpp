#include "ado/sheet_cells.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace kelb::ado {

namespace {

/// Each item begins with one of these. Both ends are one program on one machine, so numbers go as they lie in memory.
namespace tag {
constexpr char kName = 'n', kSheet = 's', kEmpty = 'e', kWhole = 'i', kReal = 'd', kDate = 'D', kText = 't',
               kRowEnd = 'r', kEnd = '.', kFailure = 'x';
} // namespace tag

constexpr std::size_t kMostRows = 65'536, kMostColumns = 256; ///< of the file format

/// One item, whole and inside the bytes.
struct Item {
    char tag = 0;
    std::uint16_t count = 0; ///< Empty
    std::int32_t whole = 0;  ///< Whole, Failure
    double real = 0;         ///< Real, Date
    std::string_view text;
};

class ItemReader {
public:
    explicit ItemReader(std::string_view bytes, std::size_t at = 0) : bytes_(bytes), at_(at) {}
    std::size_t at() const noexcept { return at_; }

    /// False at the end and where the bytes make no sense.
    bool next(Item& item) {
        if (at_ >= bytes_.size()) {
            return false;
        }
        item.tag = bytes_[at_++];
        switch (item.tag) {
        case tag::kSheet:
        case tag::kRowEnd:
        case tag::kEnd:
            return true;
        case tag::kEmpty:
            return take(item.count);
        case tag::kWhole:
        case tag::kFailure:
            return take(item.whole);
        case tag::kReal:
        case tag::kDate:
            return take(item.real);
        case tag::kName:
        case tag::kText: {
            std::uint32_t length = 0;
            if (!take(length) || length > bytes_.size() - at_) {
                return false;
            }
            item.text = bytes_.substr(at_, length);
            at_ += length;
            return true;
        }
        default:
            return false;
        }
    }

private:
    template <class T>
    bool take(T& value) {
        if (bytes_.size() - at_ < sizeof value) {
            return false;
        }
        std::memcpy(&value, bytes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return true;
    }

    std::string_view bytes_;
    std::size_t at_;
};

/// UTF-16 units that a text in UTF-8 takes.
std::size_t unitsOf(std::string_view text) {
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        units += (byte & 0xC0U) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
    }
    return units;
}

} // namespace

// Sending

void SheetSender::put(char tag, const void* value, std::size_t size) {
    putEmpty();
    send_({&tag, 1});
    send_({static_cast<const char*>(value), size});
}

void SheetSender::putText(char tag, std::string_view value) {
    const auto length = static_cast<std::uint32_t>(value.size());
    put(tag, &length, sizeof length);
    send_(value);
}

void SheetSender::putEmpty() {
    if (empty_ > 0) {
        const std::uint16_t count = std::exchange(empty_, std::uint16_t{0});
        put(tag::kEmpty, &count, sizeof count);
    }
}

void SheetSender::sheetName(std::string_view name) {
    putText(tag::kName, name);
}

void SheetSender::beginSheet() {
    put(tag::kSheet, nullptr, 0);
}

void SheetSender::number(std::int32_t value) {
    put(tag::kWhole, &value, sizeof value);
}

void SheetSender::number(double value) {
    put(tag::kReal, &value, sizeof value);
}

void SheetSender::date(double days) {
    put(tag::kDate, &days, sizeof days);
}

void SheetSender::text(std::string_view value) {
    putText(tag::kText, value);
}

void SheetSender::endRow() {
    empty_ = 0; // empty cells at the end of a row need no telling
    put(tag::kRowEnd, nullptr, 0);
}

void SheetSender::end() {
    put(tag::kEnd, nullptr, 0);
}

void SheetSender::fail(std::int32_t code) {
    put(tag::kFailure, &code, sizeof code);
}

// Receiving

class SheetCells::Receiver {
public:
    Receiver(SheetCells& cells, std::string_view bytes) : cells_(cells), reader_(bytes), size_(bytes.size()) {}

    bool run() {
        Item item;
        while (reader_.next(item)) {
            if (item.tag == tag::kEnd || item.tag == tag::kFailure) {
                cells_.rows_.resize(rowsWithValues_);
                cells_.failure_ = item.tag == tag::kFailure ? std::optional(item.whole) : std::nullopt;
                return reader_.at() == size_;
            }
            if (!(cells_.hasSheet_ ? takeCell(item) : takeFront(item))) {
                return false;
            }
        }
        return false;
    }

private:
    bool takeFront(const Item& item) {
        if (item.tag == tag::kName) {
            cells_.names_.push_back(platform::fromUtf8(item.text));
        } else if (item.tag == tag::kSheet) {
            cells_.hasSheet_ = true;
            rowBegin_ = reader_.at();
        }
        return item.tag == tag::kName || item.tag == tag::kSheet;
    }

    bool takeCell(const Item& item) {
        switch (item.tag) {
        case tag::kEmpty:
            column_ += item.count;
            return column_ <= kMostColumns;
        case tag::kWhole:
            return takeValue(kWhole, 0);
        case tag::kReal:
            return std::isfinite(item.real) && takeValue(kReal, 0);
        case tag::kDate:
            return std::isfinite(item.real) && takeValue(kDate, 0);
        case tag::kText:
            return takeText(item.text);
        case tag::kRowEnd:
            return endRow();
        default:
            return false;
        }
    }

    bool takeText(std::string_view text) {
        const std::u16string* const kept = cells_.longTexts_->find(text);
        return takeValue(kText, kept != nullptr ? kept->size() : unitsOf(text));
    }

    bool takeValue(Kind kind, std::size_t characters) {
        if (column_ >= kMostColumns) {
            return false;
        }
        if (cells_.columns_.size() <= column_) {
            cells_.columns_.resize(column_ + 1);
        }
        if (!cells_.rows_.empty()) { // the first row holds the names
            Column& column = cells_.columns_[column_];
            column.kinds = static_cast<std::uint8_t>(column.kinds | kind);
            column.longest = std::max(column.longest, characters);
        }
        ++column_;
        hasValue_ = true;
        return true;
    }

    bool endRow() {
        if (++rowsSeen_ > kMostRows) {
            return false;
        }
        if (hasValue_ || !cells_.rows_.empty()) {
            cells_.rows_.push_back(rowBegin_);
        }
        if (hasValue_) {
            rowsWithValues_ = cells_.rows_.size();
        }
        rowBegin_ = reader_.at();
        column_ = 0;
        hasValue_ = false;
        return true;
    }

    SheetCells& cells_;
    ItemReader reader_;
    std::size_t size_;
    std::size_t rowBegin_ = 0, column_ = 0, rowsSeen_ = 0;
    std::size_t rowsWithValues_ = 0; ///< rows up to the last one with a value
    bool hasValue_ = false;
};

std::optional<SheetCells> SheetCells::receive(std::string bytes, std::shared_ptr<const LongTexts> longTexts) {
    SheetCells cells;
    cells.bytes_ = std::move(bytes);
    cells.longTexts_ = std::move(longTexts);
    if (!Receiver(cells, cells.bytes_).run()) {
        return std::nullopt;
    }
    return cells;
}

void SheetCells::readRow(std::size_t row, std::vector<Value>& cells) const {
    cells.assign(columns_.size(), Value());
    ItemReader reader(bytes_, rows_[row]);
    std::size_t column = 0;
    for (Item item; reader.next(item) && item.tag != tag::kRowEnd;) {
        switch (item.tag) {
        case tag::kEmpty:
            column += item.count;
            break;
        case tag::kWhole:
            cells[column++] = item.whole;
            break;
        case tag::kReal:
            cells[column++] = item.real;
            break;
        case tag::kDate:
            cells[column++] = OleDate{item.real};
            break;
        default: {
            const std::u16string* const kept = longTexts_->find(item.text);
            cells[column++] = kept != nullptr ? *kept : platform::fromUtf8(item.text);
            break;
        }
        }
    }
}

} // namespace kelb::ado
