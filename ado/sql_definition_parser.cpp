#include "ado/sql_definition_parser.h"

#include "ado/error.h"

#include <cstdint>
#include <utility>

namespace kelb::ado {

namespace {

std::size_t parseCount(TokenReader& tokens) {
    const auto* count = std::get_if<std::int32_t>(&tokens.peek().value);
    if (count == nullptr) {
        tokens.fail("a whole number");
    }
    const auto value = static_cast<std::size_t>(*count);
    tokens.next();
    return value;
}

/// What stands behind IDENTITY, COUNTER or AUTOINCREMENT: nothing, or start and step. The file format has no place for
/// any other start or step than 1.
void parseIdentity(TokenReader& tokens) {
    if (!tokens.acceptSymbol(u"(")) {
        return;
    }
    const std::size_t position = tokens.peek().position;
    const std::size_t start = parseCount(tokens);
    const std::size_t step = tokens.acceptSymbol(u",") ? parseCount(tokens) : 1;
    tokens.expectSymbol(u")");
    if (start != 1 || step != 1) {
        tokens.failAt(position, "expected 1,1: automatic numbers start at 1 and step by 1");
    }
}

bool atAutonumberType(const TokenReader& tokens) {
    return tokens.atKeyword(u"COUNTER") || tokens.atKeyword(u"AUTOINCREMENT") || tokens.atKeyword(u"IDENTITY");
}

void parseType(TokenReader& tokens, ColumnDefinition& column) {
    column.typePosition = tokens.peek().position;
    if (atAutonumberType(tokens)) {
        column.type = u"INT";
        column.identity = true;
        tokens.next();
        parseIdentity(tokens);
        return;
    }
    column.type = tokens.expectName("a column type");
    if (tokens.acceptSymbol(u"(")) {
        column.size = parseCount(tokens);
        if (tokens.acceptSymbol(u",")) {
            column.scale = parseCount(tokens);
        }
        tokens.expectSymbol(u")");
    }
}

/// PRIMARY KEY or UNIQUE; false when neither stands here.
bool parseKeyKind(TokenReader& tokens, IndexDefinition& index) {
    if (tokens.acceptKeyword(u"PRIMARY")) {
        tokens.expectKeyword(u"KEY");
        index.primary = index.unique = true;
        return true;
    }
    index.unique = tokens.acceptKeyword(u"UNIQUE");
    return index.unique;
}

std::vector<IndexDefinition::Part> parseParts(TokenReader& tokens) {
    std::vector<IndexDefinition::Part> parts;
    tokens.expectSymbol(u"(");
    do {
        IndexDefinition::Part part;
        part.column = tokens.expectName("a column");
        part.ascending = !tokens.acceptKeyword(u"DESC");
        if (part.ascending) {
            tokens.acceptKeyword(u"ASC");
        }
        parts.push_back(std::move(part));
    } while (tokens.acceptSymbol(u","));
    tokens.expectSymbol(u")");
    return parts;
}

std::u16string parseConstraintName(TokenReader& tokens) {
    return tokens.acceptKeyword(u"CONSTRAINT") ? tokens.expectName("a name for the constraint") : std::u16string();
}

void refuse(const TokenReader& tokens, std::u16string_view keyword, const char* reason) {
    if (tokens.atKeyword(keyword)) {
        throw Error(Error::Kind::Refused, reason);
    }
}

/// What may follow a column's type. False when nothing more does.
bool parseColumnOption(TokenReader& tokens, ColumnDefinition& column, std::vector<IndexDefinition>& indexes) {
    if (tokens.acceptKeyword(u"IDENTITY")) {
        column.identity = true;
        parseIdentity(tokens);
        return true;
    }
    if (tokens.acceptKeyword(u"NOT")) {
        tokens.expectKeyword(u"NULL");
        column.required = true;
        return true;
    }
    if (tokens.acceptKeyword(u"NULL")) {
        return true;
    }
    if (tokens.acceptKeyword(u"WITH")) {
        if (!tokens.acceptKeyword(u"COMP")) {
            tokens.expectKeyword(u"COMPRESSION");
        }
        column.compressed = true;
        return true;
    }
    refuse(tokens, u"DEFAULT", "DEFAULT values are not supported");
    refuse(tokens, u"REFERENCES", "REFERENCES between tables are not supported");
    refuse(tokens, u"CHECK", "CHECK rules are not supported");
    const bool named = tokens.atKeyword(u"CONSTRAINT");
    IndexDefinition index;
    index.name = parseConstraintName(tokens);
    if (!parseKeyKind(tokens, index)) {
        if (named) {
            tokens.fail("PRIMARY KEY or UNIQUE");
        }
        return false;
    }
    index.parts.push_back({column.name, true});
    indexes.push_back(std::move(index));
    return true;
}

bool atConstraint(const TokenReader& tokens) {
    return tokens.atKeyword(u"CONSTRAINT") || (tokens.atKeyword(u"PRIMARY") && tokens.atKeyword(u"KEY", 1)) ||
           (tokens.atKeyword(u"UNIQUE") && tokens.atSymbol(u"(", 1));
}

void parseConstraint(TokenReader& tokens, std::vector<IndexDefinition>& indexes) {
    IndexDefinition index;
    index.name = parseConstraintName(tokens);
    refuse(tokens, u"FOREIGN", "FOREIGN KEY constraints are not supported");
    refuse(tokens, u"CHECK", "CHECK rules are not supported");
    if (!parseKeyKind(tokens, index)) {
        tokens.fail("PRIMARY KEY or UNIQUE");
    }
    index.parts = parseParts(tokens);
    indexes.push_back(std::move(index));
}

/// Columns and constraints parted by commas.
void parseElements(TokenReader& tokens, std::vector<ColumnDefinition>& columns, std::vector<IndexDefinition>& indexes) {
    do {
        if (atConstraint(tokens)) {
            parseConstraint(tokens, indexes);
            continue;
        }
        ColumnDefinition column;
        column.name = tokens.expectName("a column");
        parseType(tokens, column);
        while (parseColumnOption(tokens, column, indexes)) {
        }
        columns.push_back(std::move(column));
    } while (tokens.acceptSymbol(u","));
}

CreateTableStatement parseCreateTable(TokenReader& tokens) {
    CreateTableStatement create;
    create.table = tokens.expectName("a name for the table");
    tokens.expectSymbol(u"(");
    parseElements(tokens, create.columns, create.indexes);
    tokens.expectSymbol(u")");
    return create;
}

void parseIndexOptions(TokenReader& tokens, IndexDefinition& index) {
    do {
        if (tokens.acceptKeyword(u"PRIMARY")) {
            index.primary = index.unique = true;
        } else if (tokens.acceptKeyword(u"DISALLOW")) {
            tokens.expectKeyword(u"NULL");
            index.disallowNulls = true;
        } else if (tokens.acceptKeyword(u"IGNORE")) {
            tokens.expectKeyword(u"NULL");
            index.ignoreNulls = true;
        } else {
            tokens.fail("PRIMARY, DISALLOW NULL or IGNORE NULL");
        }
    } while (tokens.acceptSymbol(u","));
}

CreateIndexStatement parseCreateIndex(TokenReader& tokens, bool unique) {
    CreateIndexStatement create;
    create.index.unique = unique;
    create.index.name = tokens.expectName("a name for the index");
    tokens.expectKeyword(u"ON");
    create.table = tokens.expectName("a table");
    create.index.parts = parseParts(tokens);
    if (tokens.acceptKeyword(u"WITH")) {
        parseIndexOptions(tokens, create.index);
    }
    return create;
}

} // namespace

Statement parseCreate(TokenReader& tokens) {
    tokens.expectKeyword(u"CREATE");
    const bool unique = tokens.acceptKeyword(u"UNIQUE");
    if (tokens.acceptKeyword(u"INDEX")) {
        return parseCreateIndex(tokens, unique);
    }
    if (unique || !tokens.acceptKeyword(u"TABLE")) {
        tokens.fail(unique ? "INDEX" : "TABLE or INDEX");
    }
    return parseCreateTable(tokens);
}

Statement parseAlter(TokenReader& tokens) {
    AlterTableStatement alter;
    tokens.expectKeyword(u"ALTER");
    tokens.expectKeyword(u"TABLE");
    alter.table = tokens.expectName("a table");
    refuse(tokens, u"DROP", "ALTER TABLE can only ADD; dropping columns is not supported");
    refuse(tokens, u"ALTER", "ALTER TABLE can only ADD; changing columns is not supported");
    tokens.expectKeyword(u"ADD");
    tokens.acceptKeyword(u"COLUMN");
    const bool bracketed = tokens.acceptSymbol(u"(");
    parseElements(tokens, alter.columns, alter.indexes);
    if (bracketed) {
        tokens.expectSymbol(u")");
    }
    return alter;
}

} // namespace kelb::ado
