#include "cli/commands.h"
#include "cli/db_command.h"
#include "cli/text_table.h"
#include "jet/database.h"
#include "jobs/row_text.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {

using jobs::jsonText;

namespace {

std::string typeName(jet::ColumnType type) {
    using enum jet::ColumnType;
    switch (type) {
    case YesNo:
        return "yesno";
    case Byte:
        return "byte";
    case Integer:
        return "short";
    case Long:
        return "long";
    case Currency:
        return "currency";
    case Single:
        return "single";
    case Double:
        return "double";
    case DateTime:
        return "datetime";
    case Binary:
    case FixedBinary:
        return "binary";
    case Text:
        return "text";
    case Ole:
        return "longbinary";
    case Memo:
        return "memo";
    case Guid:
        return "guid";
    case Numeric:
        return "decimal";
    case BigInteger:
        return "bigint";
    case Complex:
        return "complex";
    case ExtendedDate:
        return "datetime2";
    }
    return "unknown (" + std::to_string(static_cast<int>(type)) + ")";
}

/// Characters of a text, bytes of a binary; 0 where the type says it all.
std::size_t sizeOf(const jet::Column& column) {
    switch (column.type) {
    case jet::ColumnType::Text:
        return column.length / 2;
    case jet::ColumnType::Binary:
        return column.length;
    default:
        return 0;
    }
}

std::string shownType(const jet::Column& column) {
    std::string type = typeName(column.type);
    if (column.type == jet::ColumnType::Numeric) {
        type += "(" + std::to_string(column.precision) + "," + std::to_string(column.scale) + ")";
    } else if (sizeOf(column) != 0) {
        type += "(" + std::to_string(sizeOf(column)) + ")";
    }
    return type + (column.isAutonumber() || column.isGuidAutonumber() ? " autonumber" : "") +
           (column.required ? " not null" : "");
}

constexpr const char* trueOrFalse(bool flag) {
    return flag ? "true" : "false";
}

std::string columnJson(const jet::Column& column) {
    std::string json = "{\"name\": " + jsonText(column.name) + ", \"type\": \"" + typeName(column.type) + "\"";
    if (sizeOf(column) != 0) {
        json += ", \"size\": " + std::to_string(sizeOf(column));
    }
    if (column.type == jet::ColumnType::Numeric) {
        json += ", \"precision\": " + std::to_string(column.precision) + ", \"scale\": " + std::to_string(column.scale);
    }
    return json + ", \"autonumber\": " + trueOrFalse(column.isAutonumber() || column.isGuidAutonumber()) +
           ", \"required\": " + trueOrFalse(column.required) + "}";
}

/// One table's part of the output, in either form.
class TableSchema {
public:
    explicit TableSchema(const jet::TableDefinition& definition) : definition_(definition) {}

    std::string json() const {
        std::string columns;
        for (const std::size_t i : definition_.displayOrder()) {
            columns += (columns.empty() ? "" : ", ") + columnJson(definition_.columns[i]);
        }
        std::string indexes;
        for (const jet::LogicalIndex& index : definition_.logicalIndexes) {
            indexes += (indexes.empty() ? "" : ", ") + indexJson(index);
        }
        return "{\"name\": " + jsonText(definition_.name) + ", \"columns\": [" + columns + "], \"indexes\": [" +
               indexes + "]}";
    }

    void write(std::ostream& out) const {
        out << platform::toUtf8(definition_.name) << "\n\n";
        TextTable columns;
        columns.addColumn(u"column");
        columns.addColumn(u"type");
        for (const std::size_t i : definition_.displayOrder()) {
            columns.beginRow();
            columns.addCell(definition_.columns[i].name);
            columns.addCell(platform::fromUtf8(shownType(definition_.columns[i])));
        }
        columns.write(out);
        if (definition_.logicalIndexes.empty()) {
            return;
        }
        out << '\n';
        TextTable indexes;
        indexes.addColumn(u"index");
        indexes.addColumn(u"on");
        indexes.addColumn(u"kind");
        for (const jet::LogicalIndex& index : definition_.logicalIndexes) {
            indexes.beginRow();
            indexes.addCell(index.name);
            std::u16string on;
            for (const jet::IndexColumn& part : physical(index).columns) {
                on += (on.empty() ? u"" : u", ") + columnName(part) + (part.ascending ? u"" : u" desc");
            }
            indexes.addCell(on);
            indexes.addCell(index.kind == 1 ? u"primary" : physical(index).unique() ? u"unique" : u"");
        }
        indexes.write(out);
    }

private:
    const jet::PhysicalIndex& physical(const jet::LogicalIndex& index) const {
        return definition_.physicalIndexes.at(index.physical);
    }
    std::u16string columnName(const jet::IndexColumn& part) const {
        const jet::Column* column = definition_.columnByNumber(part.column);
        return column == nullptr ? std::u16string() : column->name;
    }
    std::string indexJson(const jet::LogicalIndex& index) const {
        std::string columns;
        for (const jet::IndexColumn& part : physical(index).columns) {
            columns += (columns.empty() ? "{\"name\": " : ", {\"name\": ") + jsonText(columnName(part)) +
                       ", \"ascending\": " + trueOrFalse(part.ascending) + "}";
        }
        return "{\"name\": " + jsonText(index.name) + ", \"columns\": [" + columns +
               "], \"unique\": " + trueOrFalse(physical(index).unique()) +
               ", \"primary\": " + trueOrFalse(index.kind == 1) + "}";
    }

    const jet::TableDefinition& definition_;
};

class DbSchemaCommand final : public DatabaseCommand {
public:
    explicit DbSchemaCommand(CLI::App& db)
        : DatabaseCommand(db, "schema", "Columns, types and indexes of the tables, or of one") {
        declared().add_option("TABLE", table_, "One table; without it all")->type_name("");
        declared().add_flag("--json", json_, "One JSON array of {\"name\", \"columns\", \"indexes\"}");
    }

    int run(Program& program) override {
        const auto database = program.context().databases().openDatabase(path(), jet::Pager::Access::Read);
        std::vector<std::u16string> names;
        if (!table_.empty()) {
            names.push_back(platform::fromUtf8(table_));
        } else {
            for (const jet::CatalogEntry& entry : database->catalog()) {
                if (entry.isUserTable()) {
                    names.push_back(entry.name);
                }
            }
        }
        std::string array;
        bool first = true;
        for (const std::u16string& name : names) {
            const TableSchema schema(database->table(name).definition());
            if (json_) {
                array += (first ? "" : ", ") + schema.json();
            } else {
                std::cout << (first ? "" : "\n");
                schema.write(std::cout);
            }
            first = false;
        }
        if (json_) {
            std::cout << '[' << array << "]\n";
        }
        return kDone;
    }

private:
    std::string table_;
    bool json_ = false;
};

} // namespace

CommandPointer makeDbSchema(CLI::App& db) {
    return std::make_unique<DbSchemaCommand>(db);
}

} // namespace kelb::cli
