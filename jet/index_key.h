#pragma once

#include "jet/table_definition.h"
#include "jet/value.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kelb::jet {

using KeyBytes = std::vector<std::byte>;

/// Appends the key of one column's value: flag byte, then data. Throws Error (KeyNotPossible), naming the character or
/// the sort order; the caller adds table and index.
void appendKey(KeyBytes& key, const Column& column, bool ascending, const Value& value);

/// Whether the sort order of a text column is one for which keys of ASCII texts (or more) can be made.
enum class TextKeys { All, AsciiOnly, None };
TextKeys textKeysOf(const Column& column) noexcept;

} // namespace kelb::jet
