#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::extract {

/// The rows of a parameter table that hold two "<td>" (any case) and a "<th>" to cut at, as text: the part before the
/// last "<th>" and the part from it on, without tags. Made once for all the parameters of a page.
class SpecRows {
public:
    /// A row that is the same piece of the page as the one before it is looked at once.
    explicit SpecRows(const std::vector<std::u16string_view>& rows);
    /// Text behind the first occurrence of the name in the first part that has both, cleaned; "" where there is none.
    std::u16string value(std::u16string_view name) const;

private:
    std::vector<std::u16string> parts_;
};

/// Reads a product portal's parameter pages: finds the table of a heading, its rows, and named parameters in them;
/// takes the title apart into model name and code. Texts are UTF-16; what is not found is "".
class ClsSpecSheet {
public:
    /// From the last "<table" (any case) at or before the key to the end of the page, as a piece of it.
    static std::u16string_view extTable(std::u16string_view sHtml, std::u16string_view sKey);
    /// Fills `outRows` with the rows, "<tr" to "</tr>" (any case), and an empty one behind them, whose index is the
    /// result. At most 100; a row without an end gives the row before it again until there are 100.
    /// tableRows gives them as pieces of the table.
    static std::vector<std::u16string_view> tableRows(std::u16string_view sTable);
    static std::int16_t Table2TR(std::u16string_view sTable, std::vector<std::u16string>& outRows);
    /// The parameter's value, as SpecRows gives it. Line ends in it come out as CR LF, pairs of blanks are gone.
    static std::u16string extSpePara(std::u16string_view sName, const std::vector<std::u16string>& arrRows);
    /// Between "<title>" and "</title>".
    static std::u16string extTitle(std::u16string_view sHtml);
    /// The title up to "参数_", parted at its parentheses, full-width ones included: the name in front (blanks and
    /// all), the code inside, "" without them.
    static void extNameAndCode(std::u16string_view sTitle, std::u16string& outName, std::u16string& outCode);
};

} // namespace kelb::extract
