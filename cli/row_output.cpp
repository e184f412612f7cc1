#include "cli/row_output.h"

#include "cli/text_table.h"
#include "jobs/row_text.h"

#include <ostream>
#include <string>

namespace kelb::cli {
namespace {

bool isNumeric(ado::FieldType type) {
    using enum ado::FieldType;
    switch (type) {
    case Byte:
    case Integer:
    case Long:
    case BigInteger:
    case Currency:
    case Single:
    case Double:
    case Numeric:
        return true;
    default:
        return false;
    }
}

void writeTable(ado::Recordset& rows, std::ostream& out) {
    TextTable table;
    for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
        const ado::FieldInfo& field = rows.field(i);
        table.addColumn(field.name, isNumeric(field.type) ? TextTable::Align::Right : TextTable::Align::Left);
    }
    for (; !rows.Eof(); rows.MoveNext()) {
        table.beginRow();
        for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
            table.addCell(jobs::plainText(rows.value(i)));
        }
    }
    table.write(out);
    out << "(" << table.rowCount() << (table.rowCount() == 1 ? " row)\n" : " rows)\n");
}

void writeJsonl(ado::Recordset& rows, std::ostream& out) {
    std::string line;
    for (; !rows.Eof(); rows.MoveNext()) {
        line.clear();
        jobs::appendJsonRow(rows, line);
        line += '\n';
        out << line;
    }
}

void writeCsv(ado::Recordset& rows, std::ostream& out) {
    std::string line;
    for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
        line += i == 0 ? "" : ",";
        jobs::appendCsvText(rows.field(i).name, line);
    }
    out << line << "\r\n";
    for (; !rows.Eof(); rows.MoveNext()) {
        line.clear();
        for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
            line += i == 0 ? "" : ",";
            jobs::appendCsv(rows.value(i), line);
        }
        out << line << "\r\n";
    }
}

} // namespace

void writeRows(ado::Recordset& rows, RowFormat format, std::ostream& out) {
    switch (format) {
    case RowFormat::Table:
        writeTable(rows, out);
        break;
    case RowFormat::Jsonl:
        writeJsonl(rows, out);
        break;
    case RowFormat::Csv:
        writeCsv(rows, out);
        break;
    }
}

} // namespace kelb::cli
