#include "jobs/trash_record.h"

#include "jobs/job_error.h"
#include "jobs/row_reading.h"
#include "jobs/row_text.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kelb::jobs {
namespace {

void addMember(std::string& line, std::string_view name, std::u16string_view text) {
    line += line.empty() || line.back() == '\n' ? "{\"" : ", \"";
    line += name;
    line += "\": ";
    appendJsonText(text, line);
}

std::u16string now(const platform::Platform& platform) {
    return platform::fromUtf8(platform::toIso(platform.clock.now()));
}

/// The value as a double when its text form does not keep it: no number at all, or a time of day finer than a second.
std::optional<double> lostInText(const ado::Value& value) {
    if (const auto* date = std::get_if<ado::OleDate>(&value)) {
        const auto time = ado::toDateTime(value);
        const bool kept = time && std::bit_cast<std::uint64_t>(std::get<ado::OleDate>(ado::fromDateTime(*time)).days) ==
                                      std::bit_cast<std::uint64_t>(date->days);
        return kept ? std::nullopt : std::optional(date->days);
    }
    if (const auto* number = std::get_if<double>(&value); number != nullptr && !std::isfinite(*number)) {
        return *number;
    }
    if (const auto* number = std::get_if<float>(&value); number != nullptr && !std::isfinite(*number)) {
        return *number;
    }
    return std::nullopt;
}

std::u16string hexOf(double number) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), std::bit_cast<std::uint64_t>(number), 16).ptr;
    return platform::fromUtf8({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

/// 0 for what is none.
std::size_t wholeNumber(std::u16string_view text) {
    const std::string digits = platform::toUtf8(text);
    std::size_t number = 0;
    const auto fault = std::from_chars(digits.data(), digits.data() + digits.size(), number).ec;
    return fault == std::errc() ? number : 0;
}

std::optional<double> fromHex(std::u16string_view text) {
    const std::string digits = platform::toUtf8(text);
    std::uint64_t bits = 0;
    const auto [stop, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
    return fault == std::errc() && stop == digits.data() + digits.size() ? std::optional(std::bit_cast<double>(bits))
                                                                         : std::nullopt;
}

} // namespace

TrashRecord::TrashRecord(platform::Platform& platform, std::u16string_view folder, std::u16string_view job)
    : platform_(platform), record_(platform.files, platform::joinPath(folder, kTrashRecordFile)),
      rows_(platform.files, platform::joinPath(folder, kDeletedRowsFile)) {
    addMember(line_, "run", job);
    addMember(line_, "time", now(platform_));
    record_.add(line_ += "}\n");
}

void TrashRecord::addRow(const ado::Recordset& rows, std::u16string_view database, std::u16string_view table) {
    json_.clear();
    appendJsonRow(rows, json_);
    rows_.add(json_ += '\n');
    line_.clear();
    for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
        const ado::FieldType type = rows.field(i).type;
        const bool mayLose =
            type == ado::FieldType::DateTime || type == ado::FieldType::Double || type == ado::FieldType::Single;
        if (const auto lost = mayLose ? lostInText(rows.value(i)) : std::nullopt) {
            addMember(line_, "bits", rows.field(i).name);
            addMember(line_, "value", hexOf(*lost));
            line_ += "}\n";
        }
    }
    line_ += "{\"row\": " + std::to_string(++count_);
    if (const auto place = rows.Bookmark()) {
        line_ += ", \"place\": " + std::to_string(*place);
    }
    if (database != database_) {
        database_ = database;
        absoluteDatabase_ = platform_.files.absolutePath(database);
    }
    addMember(line_, "database", absoluteDatabase_);
    addMember(line_, "table", table);
    record_.add(line_ += "}\n");
}

void TrashRecord::addFile(std::u16string_view path, std::u16string_view kept) {
    line_.clear();
    addMember(line_, "file", platform_.files.absolutePath(path));
    addMember(line_, "kept", kept);
    record_.add(line_ += "}\n");
}

void TrashRecord::addEnd() {
    line_.clear();
    addMember(line_, "end", now(platform_));
    record_.add(line_ += "}\n");
    rows_.sync();
    record_.sync();
}

void markUndo(platform::Platform& platform, std::u16string_view folder, UndoMark mark) {
    std::string line;
    addMember(line, mark == UndoMark::Begun ? "undo" : "undone", now(platform));
    // A kill may have left a piece of a line at the end.
    const std::u16string path = platform::joinPath(folder, kTrashRecordFile);
    platform.files.appendFile(path, "\n" + line + "}\n");
}

TrashReader::TrashReader(platform::FileSystem& files, std::u16string_view folder)
    : files_(files), folder_(folder), record_(files, platform::joinPath(folder, kTrashRecordFile)) {}

void TrashReader::fail(const std::string& what) const {
    throw JobError(platform::toUtf8(platform::joinPath(folder_, kTrashRecordFile)) + ", line " + std::to_string(line_) +
                   ": " + what + "; what is kept in this folder must be put back by hand");
}

std::optional<std::variant<TrashedRow, TrashedFile>> TrashReader::next() {
    std::vector<std::pair<std::u16string, double>> exact;
    std::size_t cutOff = 0; // line that is none
    for (std::string_view line; record_.next(line);) {
        ++line_;
        std::vector<RowMember> members;
        try {
            members = readRowLine(line);
        } catch (const RowLineError&) {
            if (!line.empty()) {
                cutOff = line_;
            }
            continue;
        }
        const auto text = [&members](std::u16string_view name) {
            const RowMember* member = findMember(members, name);
            return member == nullptr ? std::u16string() : member->text;
        };
        const std::u16string first = members.empty() ? std::u16string() : members.front().name;
        if (cutOff != 0 && !first.starts_with(u"undo")) {
            line_ = cutOff; // only the last line of the run itself can be cut off by a kill
            fail("the line cannot be read");
        }
        if (first == u"run") {
            state_.job = text(u"run");
            state_.time = text(u"time");
        } else if (first == u"bits") {
            const auto number = fromHex(text(u"value"));
            if (!number) {
                fail("\"value\" is not a number in hexadecimal digits");
            }
            exact.emplace_back(text(u"bits"), *number);
        } else if (first == u"row") {
            TrashedRow row = readRow(wholeNumber(text(u"row")));
            row.database = text(u"database");
            row.table = text(u"table");
            row.exact = std::move(exact);
            if (const std::size_t place = wholeNumber(text(u"place"));
                place != 0 && place <= std::numeric_limits<std::uint32_t>::max()) {
                row.place = static_cast<std::uint32_t>(place);
            }
            ++state_.rows;
            return row;
        } else if (first == u"file") {
            ++state_.files;
            return TrashedFile{text(u"file"), keptPath(text(u"kept"))};
        } else {
            state_.ended = state_.ended || first == u"end";
            state_.undoBegun = state_.undoBegun || first == u"undo";
            state_.undone = state_.undone || first == u"undone";
        }
    }
    return std::nullopt;
}

std::u16string TrashReader::keptPath(std::u16string_view kept) const {
    std::u16string path = folder_;
    for (const std::u16string_view name : platform::split(kept, u"/")) {
        if (name.empty() || name == u"." || name == u"..") {
            fail("\"kept\" leads out of the folder");
        }
        path = platform::joinPath(path, name);
    }
    return path;
}

/// Rows stand in the record in the order of their lines.
TrashedRow TrashReader::readRow(std::size_t number) {
    if (!rows_) {
        rows_.emplace(files_, platform::joinPath(folder_, kDeletedRowsFile));
    }
    std::string_view line;
    while (rowLine_ < number) {
        if (!rows_->next(line)) {
            fail("row " + std::to_string(number) + " is missing in " + platform::toUtf8(kDeletedRowsFile));
        }
        ++rowLine_;
    }
    if (line.empty()) {
        fail("the rows are not in order");
    }
    return {.database = {}, .table = {}, .json = std::string(line), .place = {}, .exact = {}};
}

} // namespace kelb::jobs
