#pragma once

#include "ado/value.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// One word of a statement.
struct Token {
    enum class Kind {
        Name,        ///< an unquoted word: keyword or name
        BracketName, ///< [name], without its brackets: never a keyword
        Text,        ///< '…' or "…", doubled quotes undone
        Constant,    ///< a number or #date#
        Symbol,      ///< = <> < > <= >= ( ) , . ; * + - / &
        End
    };
    Kind kind = Kind::End;
    std::size_t position = 0; ///< of its first character in the statement
    std::u16string text;      ///< as described; of constants and symbols as written
    Value value;              ///< constants only: Long, Double, or a date
};

/// The words of a statement, an End at the end. Throws Error (Syntax).
[[nodiscard]] std::vector<Token> readTokens(std::u16string_view statement);

/// "syntax error at character 15, near "foo": " + reason. Characters are counted from 1.
[[noreturn]] void throwSyntaxError(std::size_t position, std::u16string_view near, const std::string& reason);

/// Whether a word may stand in a statement as a name without brackets, as far as its characters go.
[[nodiscard]] bool isPlainName(std::u16string_view word) noexcept;

} // namespace kelb::ado
