#include "ado/jet_schema_row_set.h"

#include "ado/fixed_row_set.h"
#include "jet/catalog.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace kelb::ado {

namespace {

/// "" for objects that are no tables.
std::u16string_view tableTypeOf(const jet::CatalogEntry& entry) noexcept {
    using Type = jet::ObjectType;
    switch (static_cast<Type>(entry.type)) {
    case Type::Table:
        return entry.isUserTable() ? u"TABLE" : u"SYSTEM TABLE";
    case Type::OdbcLink:
    case Type::Link:
        return u"LINK";
    case Type::Query:
        return u"VIEW";
    default:
        return u"";
    }
}

} // namespace

std::unique_ptr<RowSet> tablesOf(const jet::Database& database) {
    std::vector<std::pair<std::u16string, std::u16string_view>> tables;
    for (const jet::CatalogEntry& entry : database.catalog()) {
        if (const auto type = tableTypeOf(entry); !type.empty()) {
            tables.emplace_back(entry.name, type);
        }
    }
    std::stable_sort(tables.begin(), tables.end(),
                     [](const auto& a, const auto& b) { return platform::compareNoCase(a.first, b.first) < 0; });
    std::vector<std::vector<Value>> rows;
    rows.reserve(tables.size());
    for (const auto& [name, type] : tables) {
        rows.push_back({Value(name), Value(std::u16string(type))});
    }
    return tableRowSet(std::move(rows));
}

} // namespace kelb::ado
