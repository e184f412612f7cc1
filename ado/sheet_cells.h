#pragma once

#include "ado/long_texts.h"
#include "ado/value.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// Cells on their way from the process that reads a workbook, one after the other: the names of its sheets, then the
/// rows of one of them. Texts are UTF-8. `send` takes what is written, piece by piece.
class SheetSender {
public:
    explicit SheetSender(std::function<void(std::string_view)> send) : send_(std::move(send)) {}

    void sheetName(std::string_view name);
    void beginSheet(); ///< behind the names; without it there is no such sheet
    void empty() { ++empty_; }
    void number(std::int32_t value);
    void number(double value);
    void date(double days);
    void text(std::string_view value);
    void endRow();
    void end();                   ///< what ends without it or a failure is not whole
    void fail(std::int32_t code); ///< ends it: the reader gave up

private:
    void put(char tag, const void* value, std::size_t size);
    void putText(char tag, std::string_view value);
    void putEmpty();

    std::function<void(std::string_view)> send_;
    std::uint16_t empty_ = 0; ///< cells passed over since the last one with a value
};

/// The cells of one sheet, in the form in which they came: a row is taken apart when it is read. Rows before the first
/// and behind the last cell with a value do not count, empty rows between them do. Columns count from the first of the
/// sheet.
class SheetCells {
public:
    /// Kinds of values below the first row, one bit each.
    enum Kind : std::uint8_t { kWhole = 1, kReal = 2, kDate = 4, kText = 8 };
    struct Column {
        std::uint8_t kinds = 0;
        std::size_t longest = 0; ///< characters of its texts
    };

    /// Checks every byte. No value when they are not what a SheetSender sends. Cells with a mark of `longTexts` show
    /// the text.
    [[nodiscard]] static std::optional<SheetCells> receive(std::string bytes,
                                                           std::shared_ptr<const LongTexts> longTexts);

    const std::vector<std::u16string>& sheetNames() const noexcept { return names_; }
    bool hasSheet() const noexcept { return hasSheet_; }
    /// Why the reader gave up: what came before is then of no use.
    std::optional<std::int32_t> failure() const noexcept { return failure_; }
    std::size_t rowCount() const noexcept { return rows_.size(); }
    const std::vector<Column>& columns() const noexcept { return columns_; }
    /// A value for each column; Null for an empty cell.
    void readRow(std::size_t row, std::vector<Value>& cells) const;

private:
    class Receiver;

    std::string bytes_;
    std::shared_ptr<const LongTexts> longTexts_;
    std::vector<std::u16string> names_;
    bool hasSheet_ = false;
    std::optional<std::int32_t> failure_;
    std::vector<std::size_t> rows_; ///< where each begins in bytes_
    std::vector<Column> columns_;
};

} // namespace kelb::ado
