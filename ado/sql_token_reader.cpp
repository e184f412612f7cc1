#include "ado/sql_token_reader.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>

namespace kelb::ado {

namespace {

constexpr std::array<std::u16string_view, 36> kReserved = {
    u"ADD",   u"ALTER",    u"AND",    u"AS",   u"ASC",   u"BETWEEN", u"BY",     u"CREATE", u"DELETE",
    u"DESC",  u"DISTINCT", u"DROP",   u"FROM", u"GROUP", u"HAVING",  u"IN",     u"INNER",  u"INSERT",
    u"INTO",  u"IS",       u"JOIN",   u"LEFT", u"LIKE",  u"NOT",     u"NULL",   u"ON",     u"OR",
    u"ORDER", u"RIGHT",    u"SELECT", u"SET",  u"UNION", u"UPDATE",  u"VALUES", u"WHERE",  u"WITH"};

} // namespace

bool isReserved(std::u16string_view word) noexcept {
    return std::any_of(kReserved.begin(), kReserved.end(),
                       [&](std::u16string_view reserved) { return platform::equalNoCase(reserved, word); });
}

const Token& TokenReader::peek(std::size_t ahead) const noexcept {
    return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
}

const Token& TokenReader::next() noexcept {
    const Token& token = tokens_[at_];
    at_ = std::min(at_ + 1, tokens_.size() - 1);
    return token;
}

bool TokenReader::atKeyword(std::u16string_view keyword, std::size_t ahead) const noexcept {
    const Token& token = peek(ahead);
    return token.kind == Token::Kind::Name && platform::equalNoCase(token.text, keyword);
}

bool TokenReader::atSymbol(std::u16string_view symbol, std::size_t ahead) const noexcept {
    const Token& token = peek(ahead);
    return token.kind == Token::Kind::Symbol && token.text == symbol;
}

bool TokenReader::acceptKeyword(std::u16string_view keyword) noexcept {
    const bool there = atKeyword(keyword);
    if (there) {
        next();
    }
    return there;
}

bool TokenReader::acceptSymbol(std::u16string_view symbol) noexcept {
    const bool there = atSymbol(symbol);
    if (there) {
        next();
    }
    return there;
}

void TokenReader::expectKeyword(std::u16string_view keyword) {
    if (!acceptKeyword(keyword)) {
        fail(platform::toUtf8(keyword));
    }
}

void TokenReader::expectSymbol(std::u16string_view symbol) {
    if (!acceptSymbol(symbol)) {
        fail("\"" + platform::toUtf8(symbol) + "\"");
    }
}

std::u16string TokenReader::expectName(const std::string& what) {
    const Token& token = peek();
    const bool name =
        token.kind == Token::Kind::BracketName || (token.kind == Token::Kind::Name && !isReserved(token.text));
    if (!name) {
        fail(what);
    }
    return next().text;
}

void TokenReader::expectEnd() {
    acceptSymbol(u";");
    if (!atEnd()) {
        fail("the end of the statement");
    }
}

void TokenReader::fail(const std::string& expected) const {
    failAt(peek().position, "expected " + expected);
}

void TokenReader::failAt(std::size_t position, const std::string& reason) const {
    throwSyntaxError(position, statement_.substr(std::min(position, statement_.size())), reason);
}

} // namespace kelb::ado
