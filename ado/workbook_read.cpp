#include "ado/workbook.h"

#include "ado/error.h"
#include "ado/freexl_reader.h"

#include "platform/isolated_run.h"

namespace kelb::ado {

namespace {

[[noreturn]] void throwEnd(const platform::IsolatedEnd& end, const platform::IsolationLimits& limits) {
    using Kind = platform::IsolatedEnd::Kind;
    switch (end.kind) {
    case Kind::Signal:
        throw Error(Error::Kind::Damaged,
                    "the file is damaged: the reader of spreadsheets ended by signal " + std::to_string(end.code));
    case Kind::OutOfTime:
        throw Error(Error::Kind::Damaged, "the file is damaged or too large: the reader of spreadsheets was stopped "
                                          "after " +
                                              std::to_string(static_cast<int>(limits.seconds)) + " seconds");
    case Kind::TooMuchOutput:
        throw Error(Error::Kind::Refused,
                    "its cells are too many: more than " + std::to_string(limits.output >> 20) + " MB of values");
    default:
        throw Error(Error::Kind::Damaged,
                    "the file is damaged: the reader of spreadsheets ended with status " + std::to_string(end.code));
    }
}

} // namespace

SheetCells Workbook::read(std::optional<std::u16string_view> sheet) const {
    const platform::IsolationLimits limits;
    platform::IsolatedEnd end =
        platform::runIsolated(file_, limits, [sheet](const char* path, platform::IsolatedOutput& output) {
            SheetSender sender([&output](std::string_view bytes) { output.write(bytes); });
            sendWorkbook(path, sheet, sender);
        });
    if (end.kind != platform::IsolatedEnd::Kind::Done) {
        throwEnd(end, limits);
    }
    std::optional<SheetCells> cells = SheetCells::receive(std::move(end.output), longTexts_);
    if (!cells) {
        throw Error(Error::Kind::Damaged, "the file is damaged: the reader of spreadsheets returned no rows");
    }
    if (const auto failure = cells->failure()) {
        throw Error(Error::Kind::Damaged, std::string(meaningOf(*failure)));
    }
    return std::move(*cells);
}

} // namespace kelb::ado
