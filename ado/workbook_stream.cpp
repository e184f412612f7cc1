#include "ado/workbook_stream.h"

#include "ado/error.h"
#include "ado/workbook_record.h"

#include "jet/byte_order.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

namespace kelb::ado {

namespace {

using jet::load16;
using jet::load32;
using jet::load8;
using jet::store16;
using jet::store32;
using jet::store8;

namespace type {
constexpr std::uint16_t kFormula = 0x0006, kEnd = 0x000A, kPassword = 0x002F, kSheet = 0x0085, kManyNumbers = 0x00BD,
                        kTexts = 0x00FC, kTextNumber = 0x00FD, kDimensions = 0x0200, kBlank = 0x0201, kNumber = 0x0203,
                        kText = 0x0204, kBoolean = 0x0205, kFormulaText = 0x0207, kShortNumber = 0x027E,
                        kBegin = 0x0809;
/// One that the library does not know: how a text is spoken.
constexpr std::uint16_t kPassedOver = 0x00EF;
} // namespace type

constexpr std::size_t kLongestRecord = 8224; ///< bytes: the library has room for no more
constexpr std::uint16_t kExcel5 = 0x0500, kExcel97 = 0x0600;
constexpr std::uint16_t kCells = 0x0010; ///< what a record Begin says of a sheet with cells
constexpr std::uint32_t kColumns = 256;
constexpr std::uint64_t kMostCells = 50'000'000; ///< of all sheets, 16 bytes each in the library

/// Bytes that the library takes from records without asking how many there are.
struct LeastSize {
    std::uint16_t type;
    std::size_t bytes;
};
constexpr std::array kLeastSizes{
    LeastSize{type::kFormula, 20},     LeastSize{type::kSheet, 8},       LeastSize{type::kManyNumbers, 6},
    LeastSize{type::kTexts, 8},        LeastSize{type::kTextNumber, 10}, LeastSize{type::kDimensions, 8},
    LeastSize{type::kNumber, 14},      LeastSize{type::kText, 8},        LeastSize{type::kBoolean, 8},
    LeastSize{type::kShortNumber, 10}, LeastSize{type::kBegin, 4},       LeastSize{type::kFormulaText, 2}};

/// How a formula's result is told when it is no number: the last two of its eight bytes are FF.
constexpr std::size_t kResult = 6;
constexpr std::uint16_t kNoNumber = 0xFFFF;
constexpr std::uint8_t kResultText = 0, kResultBoolean = 1;

[[noreturn]] void damaged(const std::string& reason) {
    throw Error(Error::Kind::Damaged, "the file is damaged: " + reason);
}

class Walk {
public:
    Walk(std::vector<std::byte>& stream, LongTexts& texts) : stream_(stream), texts_(texts) {}
    void run();

private:
    struct Record {
        std::size_t at; ///< of its head
        std::uint16_t type;
        std::size_t size; ///< without the head
        std::size_t end() const { return at + kRecordHead + size; }
    };

    std::byte* content(const Record& record) { return stream_.data() + record.at + kRecordHead; }
    std::optional<Record> recordAt(std::size_t at) const;
    void begin(const Record& record);
    void end();
    void take(const Record& record);
    std::size_t takeTexts(const Record& record);
    void takeCell(const Record& record);
    void takeFormula(const Record& record);
    void takeFormulaText(const Record& text);
    void requireText(const Record& record, std::size_t from);
    void passOver(std::size_t from, std::size_t to);
    void setType(const Record& record, std::uint16_t type) { store16(stream_.data() + record.at, type); }

    std::vector<std::byte>& stream_;
    LongTexts& texts_;
    bool wide_ = false;  ///< records of Excel 97 and later: texts in Unicode
    unsigned depth_ = 0; ///< 1 in the workbook's globals and in a sheet, 2 in a chart inside a sheet
    enum class Part { Globals, Sheet, Other } part_ = Part::Globals; ///< Other: a sheet that is all chart or macro
    std::optional<Record> dimensions_;
    std::uint32_t rows_ = 0, columns_ = 0; ///< of the sheet so far
    std::uint64_t cells_ = 0;              ///< room for all sheets so far
    std::optional<Record> textFormula_;    ///< one whose text has not come yet
};

/// No value where the records end: at the end of the stream, or where zeros fill it up.
std::optional<Walk::Record> Walk::recordAt(std::size_t at) const {
    if (at + kRecordHead > stream_.size()) {
        return std::nullopt;
    }
    const Record record{at, load16(stream_.data() + at), load16(stream_.data() + at + 2)};
    if (record.type == 0 && record.size == 0) {
        return std::nullopt;
    }
    if (depth_ == 0 && record.type != type::kBegin) {
        return std::nullopt; // nothing belongs behind the last sheet
    }
    const std::string place = "the record at byte " + std::to_string(at) + " of its workbook ";
    if (record.end() > stream_.size()) {
        damaged(place + "is cut off");
    }
    const auto least = std::find_if(kLeastSizes.begin(), kLeastSizes.end(),
                                    [&](const LeastSize& size) { return size.type == record.type; });
    if (record.size > kLongestRecord || (least != kLeastSizes.end() && record.size < least->bytes)) {
        damaged(place + "has an impossible length");
    }
    return record;
}

void Walk::run() {
    std::size_t at = 0;
    while (const auto record = recordAt(at)) {
        at = record->end();
        if (record->type == type::kBegin) {
            begin(*record);
        } else if (depth_ > 1) {
            passOver(record->at, record->end());
            depth_ -= record->type == type::kEnd ? 1U : 0U;
        } else if (record->type == type::kEnd) {
            end();
        } else if (record->type == type::kTexts && wide_ && part_ == Part::Globals) {
            at = takeTexts(*record);
        } else {
            take(*record);
        }
    }
    if (at == 0 || depth_ > 0) {
        damaged(at == 0 ? "its workbook holds nothing" : "its workbook is cut off");
    }
    stream_.resize(at);
}

void Walk::begin(const Record& record) {
    const std::uint16_t version = load16(content(record));
    if (record.at == 0) {
        wide_ = version == kExcel97;
        if (version != kExcel97 && version != kExcel5) {
            throw Error(Error::Kind::Connection,
                        "it was not saved by Excel 5 to 2003; save it as \"Excel 97-2003 workbook\" (.xls)");
        }
    }
    if (++depth_ > 1) {
        passOver(record.at, record.end());
        return;
    }
    const bool cells = load16(content(record) + 2) == kCells;
    part_ = record.at == 0 ? Part::Globals : cells ? Part::Sheet : Part::Other;
    dimensions_.reset();
    rows_ = columns_ = 0;
}

void Walk::end() {
    depth_ = 0;
    textFormula_.reset();
    cells_ += std::uint64_t{rows_} * columns_;
    if (cells_ > kMostCells) {
        throw Error(Error::Kind::Refused, "its cells span more than " + std::to_string(kMostCells) +
                                              " places; part it into several workbooks");
    }
    if (part_ == Part::Globals) {
        return;
    }
    // Without them the library would take the cells of another sheet for these.
    if (!dimensions_ || (wide_ && dimensions_->size < 12)) {
        damaged("a sheet does not tell its dimensions");
    }
    std::byte* const at = content(*dimensions_);
    if (wide_) { // first row, row behind the last, first column, column behind the last
        store32(at + 4, rows_);
        store16(at + 10, static_cast<std::uint16_t>(columns_));
    } else {
        store16(at + 2, static_cast<std::uint16_t>(std::min<std::uint32_t>(rows_, 0xFFFF)));
        store16(at + 6, static_cast<std::uint16_t>(columns_));
    }
}

void Walk::take(const Record& record) {
    if (record.type == type::kDimensions && !dimensions_) {
        dimensions_ = record;
        return;
    }
    if (part_ == Part::Other || record.type == type::kDimensions) {
        passOver(record.at, record.end());
        return;
    }
    switch (record.type) {
    case type::kPassword:
        throw Error(Error::Kind::Connection, "it is protected with a password; save it without one and try again");
    case type::kSheet:
        if (const std::size_t length = load8(content(record) + 6);
            (wide_ ? 8 + length * (1 + (load8(content(record) + 7) & 1U)) : 7 + length) > record.size) {
            damaged("the name of a sheet is cut off");
        }
        break;
    case type::kTexts: // outside the globals of Excel 97 there is none
        passOver(record.at, record.end());
        break;
    case type::kFormulaText:
        takeFormulaText(record);
        break;
    case type::kText:
        requireText(record, 6);
        takeCell(record);
        break;
    case type::kBoolean:
        takeCell(record);
        if (load8(content(record) + 7) != 0) { // an error value
            setType(record, type::kBlank);
        }
        break;
    case type::kNumber:
    case type::kManyNumbers:
    case type::kTextNumber:
    case type::kShortNumber:
        takeCell(record);
        break;
    case type::kFormula:
        takeCell(record);
        takeFormula(record);
        break;
    default:
        break;
    }
}

std::size_t Walk::takeTexts(const Record& record) {
    constexpr std::size_t kLeastText = 3; // bytes
    if (load32(content(record) + 4) > stream_.size() / kLeastText) {
        damaged("its table of texts claims to hold more than it can");
    }
    return takeLongTexts(stream_, record.at, texts_);
}

/// A cell's record begins with its row and column.
void Walk::takeCell(const Record& record) {
    constexpr std::size_t kManyHead = 6, kManyStep = 6; // row, first column, last column; then format and number
    const std::uint32_t row = load16(content(record));
    const std::uint32_t more =
        record.type == type::kManyNumbers ? static_cast<std::uint32_t>((record.size - kManyHead) / kManyStep) : 1;
    const std::uint32_t columnEnd = load16(content(record) + 2) + more;
    if (columnEnd > kColumns) {
        damaged("a cell of row " + std::to_string(row + 1) + " lies behind the last column");
    }
    rows_ = std::max(rows_, row + 1);
    columns_ = std::max(columns_, columnEnd);
}

void Walk::takeFormula(const Record& record) {
    textFormula_.reset();
    std::byte* const result = content(record) + kResult;
    if (load16(result + 6) != kNoNumber) {
        setType(record, type::kNumber); // its first 14 bytes are those of a number
        return;
    }
    switch (load8(result)) {
    case kResultText:
        textFormula_ = record; // the text comes in a record of its own
        break;
    case kResultBoolean:
        store8(result, load8(result + 2));
        store8(result + 1, 0);
        setType(record, type::kBoolean);
        break;
    default: // an error value or an empty text
        setType(record, type::kBlank);
    }
}

/// The text moves to the formula's place, behind its row, column and format, as the record of a text has it.
void Walk::takeFormulaText(const Record& text) {
    if (!textFormula_) {
        return;
    }
    const Record formula = *std::exchange(textFormula_, std::nullopt);
    constexpr std::size_t kCell = 6;
    const auto following = recordAt(text.end());
    if (kCell + text.size > kLongestRecord || (following && following->type == kContinueRecord)) {
        throw Error(Error::Kind::Refused, "a formula in row " + std::to_string(load16(content(formula)) + 1) +
                                              " results in a text of more than 4,000 characters, which cannot be read");
    }
    requireText(text, 0);
    std::byte* const from = content(text);
    setType(formula, type::kText);
    store16(stream_.data() + formula.at + 2, static_cast<std::uint16_t>(kCell + text.size));
    std::memmove(content(formula) + kCell, from, text.size);
    passOver(formula.at + kRecordHead + kCell + text.size, text.end());
}

/// A length, in Excel 97 and later a byte of flags, then the characters.
void Walk::requireText(const Record& record, std::size_t from) {
    const std::byte* const at = content(record) + from;
    const std::size_t length = load16(at);
    std::size_t needed = 2 + length;
    if (wide_ && length > 0) {
        if (from + 3 > record.size) {
            damaged("a text is cut off");
        }
        needed = 3 + length * (1 + (load8(at + 2) & 1U));
    }
    if (from + needed > record.size) {
        damaged("a text is cut off");
    }
}

/// Fills the bytes with records that nobody reads.
void Walk::passOver(std::size_t from, std::size_t to) {
    while (from < to) {
        std::size_t step = std::min(to - from, kRecordHead + kLongestRecord);
        if (to - from - step > 0 && to - from - step < kRecordHead) {
            step -= kRecordHead; // room for the head of the last one
        }
        store16(stream_.data() + from, type::kPassedOver);
        store16(stream_.data() + from + 2, static_cast<std::uint16_t>(step - kRecordHead));
        from += step;
    }
}

} // namespace

std::vector<std::byte> makeReadable(std::vector<std::byte> stream, LongTexts& texts) {
    Walk(stream, texts).run();
    return stream;
}

} // namespace kelb::ado
