#include "ado/sql_parser.h"

#include "ado/error.h"
#include "ado/sql_definition_parser.h"
#include "ado/sql_expression_parser.h"
#include "ado/sql_token_reader.h"

#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace kelb::ado {

namespace {

constexpr std::array<std::u16string_view, 5> kUnsupportedClauses = {u"GROUP", u"HAVING", u"UNION", u"INNER", u"LEFT"};
constexpr std::array<std::u16string_view, 6> kUnsupportedStatements = {u"DROP", u"TRANSFORM", u"EXECUTE",
                                                                       u"EXEC", u"GRANT",     u"PARAMETERS"};

std::optional<Expression> parseWhere(TokenReader& tokens) {
    if (!tokens.acceptKeyword(u"WHERE")) {
        return std::nullopt;
    }
    return parseExpression(tokens);
}

TableName parseTableName(TokenReader& tokens) {
    TableName table;
    table.name = tokens.expectName("a table");
    const bool as = tokens.acceptKeyword(u"AS");
    const Token& token = tokens.peek();
    if (as || token.kind == Token::Kind::BracketName || (token.kind == Token::Kind::Name && !isReserved(token.text))) {
        table.alias = tokens.expectName("another name for the table");
    }
    if (tokens.atSymbol(u",") || tokens.atKeyword(u"JOIN")) {
        tokens.fail("the end of the table's name (a SELECT reads one table)");
    }
    return table;
}

std::size_t parseTop(TokenReader& tokens) {
    tokens.next();
    const auto* count = std::get_if<std::int32_t>(&tokens.peek().value);
    if (count == nullptr) {
        tokens.fail("a whole number of rows");
    }
    tokens.next();
    if (tokens.atKeyword(u"PERCENT")) {
        tokens.fail("the columns (TOP … PERCENT is not supported)");
    }
    return static_cast<std::size_t>(*count);
}

SelectStatement::Item parseItem(TokenReader& tokens) {
    SelectStatement::Item item;
    item.column.position = tokens.peek().position;
    if (tokens.acceptSymbol(u"*")) {
        return item;
    }
    if (tokens.atKeyword(u"COUNT") && tokens.atSymbol(u"(", 1)) {
        tokens.next();
        tokens.next();
        tokens.expectSymbol(u"*");
        tokens.expectSymbol(u")");
        item.count = true;
    } else if (tokens.atSymbol(u".", 1) && tokens.atSymbol(u"*", 2)) {
        item.column.table = tokens.expectName("a table");
        tokens.next();
        tokens.next();
        return item;
    } else {
        item.column = parseColumnName(tokens);
    }
    if (tokens.acceptKeyword(u"AS")) {
        item.as = tokens.expectName("a name for the column");
    }
    return item;
}

std::vector<SelectStatement::Order> parseOrder(TokenReader& tokens) {
    std::vector<SelectStatement::Order> order;
    if (!tokens.acceptKeyword(u"ORDER")) {
        return order;
    }
    tokens.expectKeyword(u"BY");
    do {
        SelectStatement::Order key;
        key.column = parseColumnName(tokens);
        key.ascending = !tokens.acceptKeyword(u"DESC");
        if (key.ascending) {
            tokens.acceptKeyword(u"ASC");
        }
        order.push_back(std::move(key));
    } while (tokens.acceptSymbol(u","));
    return order;
}

SelectStatement parseSelect(TokenReader& tokens) {
    SelectStatement select;
    tokens.expectKeyword(u"SELECT");
    if (tokens.atKeyword(u"DISTINCT")) {
        tokens.fail("the columns (DISTINCT is not supported)");
    }
    if (tokens.atKeyword(u"TOP") && tokens.peek(1).kind == Token::Kind::Constant) {
        select.top = parseTop(tokens);
    }
    do {
        select.items.push_back(parseItem(tokens));
    } while (tokens.acceptSymbol(u","));
    const SelectStatement::Item& first = select.items.front();
    if (select.items.size() > 1 &&
        std::any_of(select.items.begin(), select.items.end(), [](const auto& item) { return item.count; })) {
        tokens.failAt(first.column.position, "COUNT(*) cannot stand beside other columns");
    }
    tokens.expectKeyword(u"FROM");
    select.table = parseTableName(tokens);
    select.where = parseWhere(tokens);
    for (const std::u16string_view clause : kUnsupportedClauses) {
        if (tokens.atKeyword(clause)) {
            tokens.fail("WHERE, ORDER BY or the end of the statement (" + platform::toUtf8(clause) +
                        " is not supported)");
        }
    }
    select.order = parseOrder(tokens);
    return select;
}

DeleteStatement parseDelete(TokenReader& tokens) {
    DeleteStatement erase;
    tokens.expectKeyword(u"DELETE");
    if (tokens.peek().kind != Token::Kind::Symbol && tokens.atSymbol(u".", 1)) { // DELETE t.* FROM t
        tokens.next();
        tokens.next();
        tokens.expectSymbol(u"*");
    } else {
        tokens.acceptSymbol(u"*");
    }
    tokens.expectKeyword(u"FROM");
    erase.table = parseTableName(tokens);
    erase.where = parseWhere(tokens);
    return erase;
}

UpdateStatement parseUpdate(TokenReader& tokens) {
    UpdateStatement update;
    tokens.expectKeyword(u"UPDATE");
    update.table = parseTableName(tokens);
    tokens.expectKeyword(u"SET");
    do {
        Assignment assignment;
        assignment.column = parseColumnName(tokens);
        tokens.expectSymbol(u"=");
        assignment.value = parseExpression(tokens);
        update.assignments.push_back(std::move(assignment));
    } while (tokens.acceptSymbol(u","));
    update.where = parseWhere(tokens);
    return update;
}

InsertStatement parseInsert(TokenReader& tokens) {
    InsertStatement insert;
    tokens.expectKeyword(u"INSERT");
    tokens.expectKeyword(u"INTO");
    insert.table = tokens.expectName("a table");
    if (tokens.acceptSymbol(u"(")) {
        do {
            insert.columns.push_back(parseColumnName(tokens));
        } while (tokens.acceptSymbol(u","));
        tokens.expectSymbol(u")");
    }
    if (tokens.atKeyword(u"SELECT")) {
        insert.source = parseSelect(tokens);
        return insert;
    }
    if (!tokens.acceptKeyword(u"VALUES")) {
        tokens.fail("VALUES or SELECT");
    }
    const std::size_t position = tokens.peek().position;
    tokens.expectSymbol(u"(");
    std::vector<Expression> values;
    do {
        values.push_back(parseExpression(tokens));
    } while (tokens.acceptSymbol(u","));
    tokens.expectSymbol(u")");
    if (!insert.columns.empty() && insert.columns.size() != values.size()) {
        tokens.failAt(position, std::to_string(insert.columns.size()) + " columns are named but " +
                                    std::to_string(values.size()) + " values given");
    }
    insert.source = std::move(values);
    return insert;
}

Statement parseBody(TokenReader& tokens) {
    if (tokens.atKeyword(u"SELECT")) {
        return parseSelect(tokens);
    }
    if (tokens.atKeyword(u"DELETE")) {
        return parseDelete(tokens);
    }
    if (tokens.atKeyword(u"UPDATE")) {
        return parseUpdate(tokens);
    }
    if (tokens.atKeyword(u"INSERT")) {
        return parseInsert(tokens);
    }
    if (tokens.atKeyword(u"CREATE")) {
        return parseCreate(tokens);
    }
    if (tokens.atKeyword(u"ALTER")) {
        return parseAlter(tokens);
    }
    for (const std::u16string_view word : kUnsupportedStatements) {
        if (tokens.atKeyword(word)) {
            throw Error(Error::Kind::Refused, platform::toUtf8(word) + " statements are not supported");
        }
    }
    tokens.fail("SELECT, INSERT, UPDATE, DELETE, CREATE TABLE, CREATE INDEX or ALTER TABLE");
}

} // namespace

Statement parseStatement(std::u16string_view text) {
    TokenReader tokens(text);
    Statement statement = parseBody(tokens);
    tokens.expectEnd();
    return statement;
}

} // namespace kelb::ado
