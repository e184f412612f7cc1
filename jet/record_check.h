#pragma once

#include "jet/table_definition.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

/// What is wrong with the bytes of a record, for those who must not take them on trust. Throw nothing for damage.
namespace kelb::jet {

/// Why the parts of a record do not lie one behind the other; no value when they do. Of Access 97 records only the
/// number of columns is looked at.
[[nodiscard]] std::optional<std::string> recordFault(const TableDefinition& table, std::span<const std::byte> record);

/// Units of a stored text of Jet 4 or ACE, no value when its bytes are none.
[[nodiscard]] std::optional<std::size_t> textUnits(std::span<const std::byte> stored);

/// Why a field that is not Null, no yes/no and no long value has no value of its column's type; no value when it has.
[[nodiscard]] std::optional<std::string> fieldFault(const TableDefinition& table, const Column& column,
                                                    std::span<const std::byte> stored);

} // namespace kelb::jet
