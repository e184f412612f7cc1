#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// Texts of a workbook that freexl would cut off or misread, kept aside; in the workbook a mark of a few characters
/// stands for each.
class LongTexts {
public:
    /// Keeps a text. Result: its mark in ASCII, 6 characters and `filling` more. Throws Error (Refused) when there
    /// are more than marks can tell.
    std::string keep(std::u16string text, std::size_t filling);
    /// The text that a cell's text is the mark of; null when it is none.
    const std::u16string* find(std::string_view cell) const noexcept;

private:
    std::vector<std::u16string> texts_;
};

/// Walks the table of texts of a workbook (a record and those that continue it, the first one's head at `at`) and puts
/// marks in the place of texts that lie in three records or more, which the library cuts off after the second, and of
/// those whose formatting goes over the end of a record, behind which it reads formatting as texts. The table keeps
/// its size. Result: where its last record ends. Throws Error (Damaged, Refused).
std::size_t takeLongTexts(std::span<std::byte> stream, std::size_t at, LongTexts& texts);

} // namespace kelb::ado
