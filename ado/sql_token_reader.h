#pragma once

#include "ado/sql_lexer.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// A statement read word by word. Keywords are compared without case; those given here are upper case, ASCII.
class TokenReader {
public:
    explicit TokenReader(std::u16string_view statement) : statement_(statement), tokens_(readTokens(statement)) {}

    const Token& peek(std::size_t ahead = 0) const noexcept;
    const Token& next() noexcept;

    bool atKeyword(std::u16string_view keyword, std::size_t ahead = 0) const noexcept;
    bool atSymbol(std::u16string_view symbol, std::size_t ahead = 0) const noexcept;
    bool atEnd() const noexcept { return peek().kind == Token::Kind::End; }
    /// These move on when the word is there.
    bool acceptKeyword(std::u16string_view keyword) noexcept;
    bool acceptSymbol(std::u16string_view symbol) noexcept;

    /// These throw Error (Syntax) when it is not.
    void expectKeyword(std::u16string_view keyword);
    void expectSymbol(std::u16string_view symbol);
    std::u16string expectName(const std::string& what); ///< in brackets, or a word that is not reserved
    void expectEnd();                                   ///< of the statement; one ";" may stand before it

    /// Throws Error (Syntax) at the present word: "expected " + what.
    [[noreturn]] void fail(const std::string& expected) const;
    [[noreturn]] void failAt(std::size_t position, const std::string& reason) const;

private:
    std::u16string_view statement_;
    std::vector<Token> tokens_;
    std::size_t at_ = 0;
};

/// Words that cannot be names without brackets, because the grammar would not know where a name ends.
[[nodiscard]] bool isReserved(std::u16string_view word) noexcept;

} // namespace kelb::ado
