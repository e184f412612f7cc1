#pragma once

#include "jet/table_definition.h"
#include "jet/value.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// Values ↔ stored bytes, for every type but yes/no (a bit of the null mask) and long values (jet/long_field.h).
///
/// | type | stored |
/// |---|---|
/// | byte, integer, long, big integer | 1, 2, 4, 8 bytes |
/// | currency | i64, ten thousandths |
/// | single, double, date | IEEE |
/// | numeric | sign byte 00 or 80, magnitude as four u32, most significant first |
/// | GUID | u32, u16, u16, then 8 bytes as displayed |
namespace kelb::jet {

/// The value of a non-null field, Null never. Types without a meaning here come back as Binary. No value when there are
/// fewer bytes than the type needs. `table` tells how texts are stored.
[[nodiscard]] std::optional<Value> decodeValue(const TableDefinition& table, const Column& column,
                                               std::span<const std::byte> stored);

/// Appends the stored form. Requires a value as convertValue gives it, and not Null.
void appendStored(std::vector<std::byte>& out, const Column& column, const Value& value);

/// A type this engine knows how to write.
[[nodiscard]] bool isWritableType(ColumnType type) noexcept;

} // namespace kelb::jet
