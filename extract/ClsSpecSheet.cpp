#include "extract/ClsSpecSheet.h"

#include "extract/Prog_Copy.h"
#include "platform/letter_case.h"
#include "platform/text.h"

#include <algorithm>

namespace kelb::extract {

namespace {

constexpr int kMostRows = 100;
constexpr std::u16string_view kRowStart = u"<tr";
constexpr std::u16string_view kRowEnd = u"</tr>";
constexpr std::u16string_view kHeading = u"<th>";

/// True when the row holds "<td>" exactly twice.
bool hasTwoCells(std::u16string_view row) {
    constexpr std::u16string_view kCell = u"<td>";
    int cells = 0;
    for (std::size_t at = platform::findNoCase(row, kCell); at != row.npos && cells < 3;
         at = platform::findNoCase(row, kCell, at + kCell.size())) {
        ++cells;
    }
    return cells == 2;
}

std::u16string cleanValue(std::u16string_view candidate) {
    std::u16string value = platform::replaceAll(candidate, u"  ", u"");
    platform::replaceAllIn(value, u"\r\n", u"<br>");
    platform::replaceAllIn(value, u"\r", u"");
    platform::replaceAllIn(value, u"\n", u"");
    platform::replaceAllIn(value, u"<br>", u"\r\n");
    return std::u16string(platform::trimBlanks(value));
}

} // namespace

SpecRows::SpecRows(const std::vector<std::u16string_view>& rows) {
    const char16_t* before = nullptr;
    for (const std::u16string_view row : rows) {
        const std::size_t cut = row.rfind(kHeading);
        if (row.data() == before || cut == row.npos || !hasTwoCells(row)) {
            continue;
        }
        before = row.data();
        for (const std::u16string_view part : {row.substr(0, cut), row.substr(cut)}) {
            parts_.emplace_back(platform::trimBlanks(Prog_Copy::CopyRemoveHTML(part)));
        }
    }
}

std::u16string SpecRows::value(std::u16string_view name) const {
    for (const std::u16string& part : parts_) {
        const std::size_t at = part.find(name);
        if (at != part.npos) {
            if (std::u16string value = cleanValue(std::u16string_view(part).substr(at + name.size())); !value.empty()) {
                return value;
            }
        }
    }
    return {};
}

std::u16string_view ClsSpecSheet::extTable(std::u16string_view sHtml, std::u16string_view sKey) {
    constexpr std::u16string_view kTable = u"<table";
    const std::size_t key = sHtml.find(sKey);
    std::size_t at = key == sHtml.npos ? key : sHtml.rfind(u'<', key);
    while (at != sHtml.npos && !platform::equalNoCase(sHtml.substr(at, kTable.size()), kTable)) {
        at = at == 0 ? sHtml.npos : sHtml.rfind(u'<', at - 1);
    }
    return at == sHtml.npos ? std::u16string_view() : sHtml.substr(at);
}

std::vector<std::u16string_view> ClsSpecSheet::tableRows(std::u16string_view sTable) {
    std::vector<std::u16string_view> rows;
    std::u16string_view row;
    std::size_t start = platform::findNoCase(sTable, kRowStart);
    for (int pass = 0; pass < kMostRows && start != sTable.npos; ++pass) {
        const std::size_t end = platform::findNoCase(sTable, kRowEnd, start);
        if (end == sTable.npos) {
            // Nothing moves the walk on: the row before it is stored again until the rows are full. Kept.
            rows.resize(kMostRows, row);
            break;
        }
        row = sTable.substr(start, end + kRowEnd.size() - start);
        start = platform::findNoCase(sTable, kRowStart, end);
        rows.push_back(row);
    }
    rows.emplace_back();
    return rows;
}

std::int16_t ClsSpecSheet::Table2TR(std::u16string_view sTable, std::vector<std::u16string>& outRows) {
    const std::vector<std::u16string_view> rows = tableRows(sTable);
    outRows.assign(rows.begin(), rows.end());
    return static_cast<std::int16_t>(outRows.size() - 1);
}

std::u16string ClsSpecSheet::extSpePara(std::u16string_view sName, const std::vector<std::u16string>& arrRows) {
    return SpecRows(std::vector<std::u16string_view>(arrRows.begin(), arrRows.end())).value(sName);
}

std::u16string ClsSpecSheet::extTitle(std::u16string_view sHtml) {
    constexpr std::u16string_view kStart = u"<title>";
    const std::size_t start = sHtml.find(kStart);
    const std::size_t end = start == sHtml.npos ? start : sHtml.find(u"</title>", start + kStart.size());
    if (end == sHtml.npos) {
        return {};
    }
    return std::u16string(sHtml.substr(start + kStart.size(), end - start - kStart.size()));
}

void ClsSpecSheet::extNameAndCode(std::u16string_view sTitle, std::u16string& outName, std::u16string& outCode) {
    std::u16string title = platform::replaceAll(platform::replaceAll(sTitle, u"（", u"("), u"）", u")");
    title.erase(std::min(title.find(u"参数_"), title.size()));
    outCode.clear();
    const std::size_t open = title.find(u'(');
    const std::size_t close = open == title.npos ? open : title.find(u')', open);
    if (close != title.npos) {
        outCode = title.substr(open + 1, close - open - 1);
        title.erase(open);
    }
    outName = std::move(title);
}

} // namespace kelb::extract
