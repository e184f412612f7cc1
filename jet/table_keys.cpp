#include "jet/table_keys.h"

#include "jet/table_definition_layout.h"
#include "jet/value_conversion.h"

#include "platform/utf8.h"

namespace kelb::jet {

std::string indexName(const TableDefinition& table, std::size_t physicalIndex) {
    // Several logical indexes may share a physical one; a foreign key's name means little to the user.
    const LogicalIndex* named = nullptr;
    for (const LogicalIndex& index : table.logicalIndexes) {
        if (index.physical == physicalIndex && (named == nullptr || named->kind == kForeignKeyKind)) {
            named = &index;
        }
    }
    return named != nullptr ? platform::toUtf8(named->name) : "number " + std::to_string(physicalIndex);
}

std::string describeKey(const TableDefinition& table, std::size_t physicalIndex, std::span<const Value> values) {
    const std::vector<IndexColumn>& parts = table.physicalIndexes[physicalIndex].columns;
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text += (text.empty() ? "" : ", ") + platform::toUtf8(table.columnByNumber(parts[i].column)->name) + " = " +
                platform::toUtf8(showValue(values[i]));
    }
    return "table " + platform::toUtf8(table.name) + ", index " + indexName(table, physicalIndex) + ": " + text;
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
