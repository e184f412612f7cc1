#pragma once

#include <string>
#include <string_view>

/// Text operations of the main window.
namespace kelb::extract::Prog_Form {

/// The first run of single-byte characters without round brackets, less ".rar", ".zip", ".pdf" and ".bin" in any case:
/// what looks like a model code. "" when fewer than four characters are left.
[[nodiscard]] std::u16string extModelCode(std::u16string_view text);

} // namespace kelb::extract::Prog_Form
