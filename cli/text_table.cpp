#include "cli/text_table.h"

#include "platform/terminal.h"
#include "platform/utf8.h"

#include <algorithm>
#include <cassert>
#include <ostream>

namespace kelb::cli {
namespace {

constexpr std::size_t kCellColumns = 60;

} // namespace

TextTable::Cell TextTable::makeCell(std::u16string_view text) {
    // More code units than this cannot be shown, whatever they are.
    std::u16string shown(text.substr(0, 4 * kCellColumns));
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (shown[i] == u'\r' && i + 1 < shown.size() && shown[i + 1] == u'\n') {
            shown.erase(i, 1);
        }
        if (shown[i] == u'\r' || shown[i] == u'\n') {
            shown[i] = u'↵';
        } else if (shown[i] < u' ' || shown[i] == 0x7F) {
            shown[i] = u' ';
        }
    }
    if (text.size() > shown.size() + kCellColumns || platform::displayColumns(shown) > kCellColumns) {
        shown = std::u16string(platform::cutToColumns(shown, kCellColumns - 1)) + u"…";
    }
    return {platform::toUtf8(shown), platform::displayColumns(shown)};
}

void TextTable::addColumn(std::u16string_view name, Align align) {
    Cell cell = makeCell(name);
    const std::size_t columns = cell.columns;
    columns_.push_back({std::move(cell), align, columns});
}

void TextTable::addCell(std::u16string_view text) {
    assert(rows_ > 0 && cells_.size() < rows_ * columns_.size());
    Column& column = columns_[cells_.size() % columns_.size()];
    cells_.push_back(makeCell(text));
    column.columns = std::max(column.columns, cells_.back().columns);
}

void TextTable::writeLine(const std::vector<const Cell*>& cells, std::ostream& out) const {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string padding(columns_[i].columns - cells[i]->columns, ' ');
        const bool last = i + 1 == cells.size();
        if (columns_[i].align == Align::Right) {
            out << padding << cells[i]->text;
        } else {
            out << cells[i]->text << (last ? "" : padding);
        }
        out << (last ? "\n" : "  ");
    }
}

void TextTable::write(std::ostream& out) const {
    std::vector<const Cell*> line;
    for (const Column& column : columns_) {
        line.push_back(&column.name);
    }
    writeLine(line, out);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        out << std::string(columns_[i].columns, '-') << (i + 1 == columns_.size() ? "\n" : "  ");
    }
    for (std::size_t row = 0; row < rows_; ++row) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            line[i] = &cells_[row * columns_.size() + i];
        }
        writeLine(line, out);
    }
}

} // namespace kelb::cli
