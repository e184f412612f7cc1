#pragma once

#include "ado/long_texts.h"

#include <cstddef>
#include <vector>

namespace kelb::ado {

/// Makes the stream of a workbook (records of Excel 5 to 2003: type, length, up to 8,224 bytes) one that the library
/// reads right, and refuses what it could not. Sizes and places stay as they are, since the stream points into itself.
///
/// - Every record must lie in the stream, and those that the library takes numbers from must be long enough for them.
/// - Results of formulas, which it passes over, become plain cells: numbers, texts, truth values.
/// - Texts that it would cut off go into `texts`, with a mark in their place.
/// - Error values (#N/A) become empty cells; it would read them as 1.
/// - Charts inside sheets, which end its reading, are passed over.
/// - Each sheet's dimensions become those of its cells, so that no claim of the file is believed.
///
/// Throws Error: Damaged, or Connection for a workbook with a password and one that is older than Excel 5.
[[nodiscard]] std::vector<std::byte> makeReadable(std::vector<std::byte> stream, LongTexts& texts);

} // namespace kelb::ado
