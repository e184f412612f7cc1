#include "jet/table_keys.h"

#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jet {

std::string indexName(const TableDefinition& table, std::size_t physicalIndex) {
    // Several logical indexes may share a physical one; a foreign key's name means little to the user.
    const LogicalIndex* named = nullptr;
    for (const LogicalIndex& index : table.logicalIndexes) {
        constexpr std::uint8_t kForeignKey = 2;
        if (index.physical == physicalIndex && (named == nullptr || named->kind == kForeignKey)) {
            named = &index;
        }
    }
    return named != nullptr ? platform::toUtf8(named->name) : "number " + std::to_string(physicalIndex);
}

Error keyNotPossible(const TableDefinition& table, std::size_t physicalIndex, const Column& column,
                     const Error& reason) {
    return {Error::Kind::KeyNotPossible,
            "table " + platform::toUtf8(table.name) + ", index " + indexName(table, physicalIndex) + ", field " +
                platform::toUtf8(column.name) + ": " + reason.what() +
                "; nothing was changed, and rows with other texts there, changes of other fields and deletions still "
                "work"};
}

} // namespace kelb::jet
