#pragma once

#include "ado/sheet_cells.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace kelb::ado {

/// Sends the names of the workbook's sheets and, with `sheet`, its cells, or a failure. For an isolated process: freexl
/// may fault, and nothing that it allocated is given back.
void sendWorkbook(const char* path, std::optional<std::u16string_view> sheet, SheetSender& sender);
/// What the code of a failure means.
[[nodiscard]] std::string_view meaningOf(std::int32_t failure) noexcept;

} // namespace kelb::ado
