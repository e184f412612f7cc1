#include "ado/freexl_reader.h"

#include "platform/date_time.h"
#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <freexl.h>

namespace kelb::ado {

namespace {

constexpr unsigned int kMostSheets = 65'535; ///< the library numbers them so
constexpr int kNoSheets = 1;                 ///< beside the library's own codes, which are 0 and less

/// The day behind the library's text. It counts days in a calendar where every fourth year is a leap year, 1900 and
/// 2100 among them, so its texts are wrong from 2100-02-29 on and right again as numbers.
std::optional<double> serialDay(int year, int month, int day) {
    constexpr std::array<int, 12> kDaysBefore{0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    constexpr int kFirstYear = 1900;
    constexpr int kExcelsLeapDay = 60; // 1900-02-29, which only Excel knows: before it the two counts differ by one
    if (year < kFirstYear || month < 1 || month > 12 || day < 1 || day > 31) {
        return std::nullopt;
    }
    const std::int64_t years = year - kFirstYear; // of a damaged file there may be millions
    const bool leapDayPassed = years % 4 == 0 && month > 2;
    const std::int64_t serial = years * 365 + (years + 3) / 4 + kDaysBefore[static_cast<std::size_t>(month - 1)] + day +
                                (leapDayPassed ? 1 : 0);
    return static_cast<double>(serial < kExcelsLeapDay ? serial + 1 : serial);
}

std::optional<double> serialDate(unsigned char type, const char* text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    const bool time = type == FREEXL_CELL_TIME;
    const bool read = time ? std::sscanf(text, "%d:%d:%d", &hour, &minute, &second) == 3
                           : std::sscanf(text, "%d-%d-%d %d:%d:%d", &year, &month, &day, &hour, &minute, &second) >= 3;
    const std::optional<double> days = time ? std::optional(0.0) : serialDay(year, month, day);
    if (!read || !days) {
        return std::nullopt;
    }
    return *days + (hour * 3600 + minute * 60 + second) / 86'400.0;
}

void sendCell(const FreeXL_CellValue& cell, SheetSender& sender) {
    switch (cell.type) {
    case FREEXL_CELL_INT:
        sender.number(static_cast<std::int32_t>(cell.value.int_value));
        break;
    case FREEXL_CELL_DOUBLE:
        sender.number(cell.value.double_value);
        break;
    case FREEXL_CELL_TEXT:
    case FREEXL_CELL_SST_TEXT:
    case FREEXL_CELL_DATE:
    case FREEXL_CELL_DATETIME:
    case FREEXL_CELL_TIME: {
        const char* const text = cell.value.text_value;
        const bool plain = cell.type == FREEXL_CELL_TEXT || cell.type == FREEXL_CELL_SST_TEXT;
        if (text == nullptr || *text == '\0') {
            sender.empty();
        } else if (const auto date = plain ? std::nullopt : serialDate(cell.type, text)) {
            sender.date(*date);
        } else {
            sender.text(text);
        }
        break;
    }
    default:
        sender.empty();
        break;
    }
}

int sendRows(const void* workbook, unsigned short sheet, SheetSender& sender) {
    unsigned int rows = 0;
    unsigned short columns = 0;
    if (const int code = freexl_select_active_worksheet(workbook, sheet); code != FREEXL_OK) {
        return code;
    }
    if (const int code = freexl_worksheet_dimensions(workbook, &rows, &columns); code != FREEXL_OK) {
        return code;
    }
    sender.beginSheet();
    for (unsigned int row = 0; row < rows; ++row) {
        for (unsigned short column = 0; column < columns; ++column) {
            FreeXL_CellValue cell{};
            if (const int code = freexl_get_cell_value(workbook, row, column, &cell); code != FREEXL_OK) {
                return code;
            }
            sendCell(cell, sender);
        }
        sender.endRow();
    }
    return FREEXL_OK;
}

/// The names of the sheets, then the rows of the one that is wanted.
int sendSheets(const void* workbook, std::optional<std::u16string_view> wanted, SheetSender& sender) {
    unsigned int sheets = 0;
    // It "opens" some workbooks that it gave up, and then has no sheets for them.
    if (freexl_get_info(workbook, FREEXL_BIFF_SHEET_COUNT, &sheets) != FREEXL_OK || sheets == 0) {
        return kNoSheets;
    }
    std::optional<unsigned short> found;
    for (unsigned int at = 0; at < std::min(sheets, kMostSheets); ++at) {
        const auto i = static_cast<unsigned short>(at);
        const char* name = nullptr;
        if (const int code = freexl_get_worksheet_name(workbook, i, &name); code != FREEXL_OK || name == nullptr) {
            return code != FREEXL_OK ? code : kNoSheets;
        }
        sender.sheetName(name);
        if (wanted && !found && platform::equalNoCase(platform::fromUtf8(name), *wanted)) {
            found = i;
        }
    }
    return found ? sendRows(workbook, *found, sender) : FREEXL_OK;
}

} // namespace

void sendWorkbook(const char* path, std::optional<std::u16string_view> sheet, SheetSender& sender) {
    const void* workbook = nullptr;
    int code = freexl_open(path, &workbook);
    if (code == FREEXL_OK) {
        code = sendSheets(workbook, sheet, sender);
    }
    if (code == FREEXL_OK) {
        sender.end();
    } else {
        sender.fail(code);
    }
}

std::string_view meaningOf(std::int32_t failure) noexcept {
    switch (failure) {
    case kNoSheets:
        return "the file is damaged: it holds no sheet that can be read";
    case FREEXL_INSUFFICIENT_MEMORY:
        return "it needs more memory than a workbook may";
    case FREEXL_BIFF_INVALID_BOF:
        return "the file is damaged: its workbook does not begin where it should";
    case FREEXL_BIFF_INVALID_SST:
    case FREEXL_BIFF_ILLEGAL_SST_INDEX:
        return "the file is damaged: its table of texts makes no sense";
    case FREEXL_INVALID_CHARACTER:
        return "the file is damaged: a text holds characters that are none";
    case FREEXL_UNSUPPORTED_CHARSET:
        return "its texts are in a code page that cannot be read; save it as \"Excel 97-2003 workbook\" (.xls)";
    default:
        return "the file is damaged";
    }
}

} // namespace kelb::ado
