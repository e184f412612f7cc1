#pragma once

#include <stdexcept>
#include <string>

namespace kelb::ado {

/// A database operation that failed. what() is one UTF-8 line: what was being done, the database (never a password),
/// the reason and what to do; then the statement.
class Error : public std::runtime_error {
public:
    enum class Kind {
        Connection, ///< cannot be opened: missing, locked, damaged, encrypted, unknown provider
        Syntax,     ///< the statement cannot be read; the text says where
        NoSuchTable,
        NoSuchColumn,
        FieldTooSmall,
        DuplicateKey,
        NullNotAllowed,
        TypeMismatch,
        RowDeleted,
        NoCurrentRow, ///< at the beginning or end of the set, or the set is closed
        ReadOnly,
        Refused, ///< the provider cannot do it (index key, definition, limits)
        Damaged,
        Io
    };
    Error(Kind kind, const std::string& message, std::string state = {})
        : std::runtime_error(message), kind_(kind), state_(std::move(state)) {}
    Kind kind() const noexcept { return kind_; }
    const std::string& state() const noexcept { return state_; } ///< SQLSTATE or native code, empty when none

private:
    Kind kind_;
    std::string state_;
};

} // namespace kelb::ado
