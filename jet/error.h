#pragma once

#include "jet/types.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace kelb::jet {

/// What the engine refuses. what() is one UTF-8 line: database, table or column, reason, what to do where we know.
/// Unless a header says otherwise nothing was changed when it is thrown out of a row or definition operation.
class Error : public std::runtime_error {
public:
    enum class Kind {
        NotADatabase,
        UnsupportedVersion, ///< Access 97 and ACE for writing, unknown ones at all
        Encrypted,
        PasswordProtected,
        InUse,    ///< another program has it open, or a lock file lies beside it
        ReadOnly, ///< a change was asked of a database that is not open for writing
        NoSuchTable,
        NoSuchColumn,
        AlreadyExists, ///< table, column or index of that name
        BadName,
        BadDefinition,
        DuplicateKey,
        NullNotAllowed,
        FieldTooSmall,
        RecordTooLarge,
        TypeMismatch,
        KeyNotPossible, ///< the sort order or a character has no known index key
        RowDeleted,
        TooManyFields,
        FileFull, ///< 2 GiB reached
        Corrupt
    };
    Error(Kind kind, const std::string& message) : std::runtime_error(message), kind_(kind) {}
    Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

/// The file breaks a rule of its format.
class CorruptFile : public Error {
public:
    /// `expected`: what was expected and found instead.
    CorruptFile(std::u16string_view path, PageNumber page, std::size_t offset, const std::string& expected);
    PageNumber page() const noexcept { return page_; }
    std::size_t offset() const noexcept { return offset_; } ///< bytes from the start of the page
    std::string_view expected() const noexcept { return std::string_view(what()).substr(textBegin_, textLength_); }

private:
    PageNumber page_;
    std::size_t offset_;
    std::size_t textBegin_, textLength_; ///< of `expected` in what()
};

} // namespace kelb::jet
