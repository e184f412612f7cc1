#pragma once

#include "ado/connection.h"
#include "ado/provider.h"
#include "ado/value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// Rows of a SELECT with a current row. Edits are held until Update, a move or AddNew saves them; Close and an error
/// drop them. A field is named without regard to case. Every call on a closed set throws Error (NoCurrentRow).
class Recordset {
public:
    Recordset();
    ~Recordset();
    Recordset(Recordset&&) noexcept;
    Recordset& operator=(Recordset&&) noexcept;

    /// What Open takes where it is told nothing else; afterwards what it took. Where rows are kept is each provider's
    /// own choice: all of them show what a client-side cursor promises.
    CursorLocation cursorLocation = CursorLocation::Server;
    CursorType cursorType = CursorType::ForwardOnly;
    LockType lockType = LockType::ReadOnly;

    /// `source`: a SELECT, or a bare table name. The first row is current. For ReadOnly locks changes are refused.
    void Open(std::u16string_view source, Connection& connection);
    void Open(std::u16string_view source, Connection& connection, CursorType cursor,
              LockType lock = LockType::ReadOnly);
    ObjectState State() const noexcept;
    void Close(); ///< does nothing when closed

    /// Members less the rows deleted through this record set.
    std::size_t RecordCount() const;
    bool Eof() const; ///< behind the last row (the system's EOF, which is a macro of <cstdio>)
    bool Bof() const; ///< before the first row; both at once when there are none
    void MoveFirst();
    void MoveNext(); ///< skips rows deleted elsewhere; throws NoCurrentRow when Eof already
    void MovePrevious();
    void MoveLast();

    void AddNew(); ///< saves pending edits first
    /// As AddNew; the row goes to where a deleted one with this Bookmark lay, if nothing lies there now.
    void AddNewAt(std::uint32_t bookmark);
    /// Tells of many rows beforehand that they are to be added so: more of them then get their places.
    void Reserve(std::span<const std::uint32_t> bookmarks);
    void Update();       ///< saves pending edits; the new row is current afterwards. Does nothing without edits
    void CancelUpdate(); ///< drops pending edits; after AddNew the row before it is current again
    void Delete();       ///< the deleted row stays current until a move; reading it throws RowDeleted
    /// Where the current row lies in its table; no value where the provider cannot say.
    std::optional<std::uint32_t> Bookmark() const;

    std::size_t fieldCount() const;
    const FieldInfo& field(std::size_t index) const;
    std::size_t fieldIndex(std::u16string_view name) const; ///< throws Error (NoSuchColumn) naming field and source
    bool hasField(std::u16string_view name) const;

    /// The current row, pending edits included.
    Value value(std::size_t field) const;
    Value value(std::u16string_view name) const { return value(fieldIndex(name)); }
    bool isNull(std::u16string_view name) const;
    /// toText of the value; "" for Null.
    std::u16string text(std::u16string_view name) const;
    /// As text() into `out`, keeping its capacity; false for Null.
    bool text(std::size_t field, std::u16string& out) const;

    void set(std::size_t field, Value value);
    void set(std::u16string_view name, Value value) { set(fieldIndex(name), std::move(value)); }
    void set(std::u16string_view name, std::u16string_view text) { set(fieldIndex(name), Value(std::u16string(text))); }
    void set(std::u16string_view name, std::u16string text) { set(fieldIndex(name), Value(std::move(text))); }
    void set(std::u16string_view name, const char16_t* text) { set(fieldIndex(name), Value(std::u16string(text))); }

    /// Used by Connection::OpenSchema and by tests.
    void attach(std::unique_ptr<RowSet> rows, bool updatable);

private:
    struct Impl;
    Impl& open() const;
    std::unique_ptr<Impl> impl_;
};

} // namespace kelb::ado
