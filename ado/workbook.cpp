#include "ado/workbook.h"

#include "ado/compound_file.h"
#include "ado/error.h"
#include "ado/workbook_stream.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cctype>
#include <span>

namespace kelb::ado {

namespace {

constexpr std::size_t kLargestFile = std::size_t{256} << 20; ///< bytes

/// Files that are no .xls often bear that name all the same.
std::string_view contentOf(std::string_view bytes) {
    std::string front(bytes.substr(0, 512));
    std::transform(front.begin(), front.end(), front.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto holds = [&](std::string_view mark) { return front.find(mark) != front.npos; };
    if (front.starts_with("pk")) {
        return "an .xlsx file or another archive";
    }
    if (holds("<html") || holds("<table") || holds("<!doctype")) {
        return "a page of HTML";
    }
    if (holds("<?xml")) {
        return "an XML file";
    }
    const bool older = front.size() > 2 && front[0] == '\x09' && (front[1] == 0 || front[1] == 2 || front[1] == 4);
    return older ? "a sheet of Excel 4 or earlier" : "something else";
}

[[noreturn]] void throwNoWorkbook(std::string_view bytes) {
    throw Error(Error::Kind::Connection, bytes.empty() ? "the file is empty"
                                                       : "it is no .xls file but " + std::string(contentOf(bytes)) +
                                                             "; save it as \"Excel 97-2003 workbook\" (.xls)");
}

std::vector<std::byte> workbookStream(std::span<const std::byte> bytes) {
    const CompoundFile container(bytes);
    for (const std::u16string_view name : {u"Workbook", u"Book"}) {
        if (container.has(name)) {
            return container.read(name);
        }
    }
    if (container.has(u"EncryptedPackage")) {
        throw Error(Error::Kind::Connection, "it is an .xlsx file protected with a password; save it without one as "
                                             "\"Excel 97-2003 workbook\" (.xls)");
    }
    throw Error(Error::Kind::Connection, "it is a file of another program of Microsoft's and holds no workbook");
}

std::string listed(const std::vector<std::u16string>& names) {
    std::string text;
    for (const std::u16string& name : names) {
        text += (text.empty() ? "\"" : ", \"") + platform::toUtf8(name) + "\"";
    }
    return text;
}

} // namespace

Workbook::Workbook(platform::FileSystem& files, std::u16string_view path) {
    if (!files.fileExists(path)) {
        throw Error(Error::Kind::Connection, "there is no such file");
    }
    const std::string bytes = files.readFront(path, kLargestFile + 1);
    if (bytes.size() > kLargestFile) {
        throw Error(Error::Kind::Refused, "the file is larger than " + std::to_string(kLargestFile >> 20) + " MB");
    }
    const auto content = std::as_bytes(std::span(bytes.data(), bytes.size()));
    if (!CompoundFile::isOne(content)) {
        throwNoWorkbook(bytes);
    }
    auto longTexts = std::make_shared<LongTexts>();
    file_ = makeCompoundFile(u"Workbook", makeReadable(workbookStream(content), *longTexts));
    longTexts_ = std::move(longTexts);
}

SheetCells Workbook::sheet(std::u16string_view name) const {
    SheetCells cells = read(name);
    if (!cells.hasSheet()) {
        throw Error(Error::Kind::NoSuchTable, "there is no sheet \"" + platform::toUtf8(name) + "\" in it, only " +
                                                  listed(cells.sheetNames()) + "; name one of these, or rename it");
    }
    return cells;
}

} // namespace kelb::ado
