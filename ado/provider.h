#pragma once

#include "ado/connection_string.h"
#include "ado/error.h"
#include "ado/value.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The boundary between Connection / Recordset and whoever holds the data. Above it nothing knows whether rows come
/// from an .mdb file, a server or a sheet.
namespace kelb::ado {

enum class CursorType { ForwardOnly = 0, Keyset = 1, Dynamic = 2, Static = 3 };
enum class CursorLocation { Server = 2, Client = 3 };
enum class LockType { ReadOnly = 1, Pessimistic = 2, Optimistic = 3, BatchOptimistic = 4 };
enum class ObjectState { Closed = 0, Open = 1 };

struct FieldInfo {
    std::u16string name;
    FieldType type = FieldType::Text;
    std::size_t size = 0; ///< characters of texts, bytes of binaries, 0 where there is no limit
    bool autonumber = false;
    bool writable = true;
};

/// One field of a row being saved; fields not listed keep their value (update) or their default (insert).
struct FieldChange {
    std::size_t field;
    Value value;
};

/// The rows of one opened SELECT. Members and their order are fixed when it is opened; values are read live; a row
/// keeps its place when its values change; rows deleted elsewhere are reported as gone.
/// Members are numbered from 0; rows added through the set are appended as members at the end.
class RowSet {
public:
    virtual ~RowSet() = default;
    virtual const std::vector<FieldInfo>& fields() const = 0;
    virtual std::size_t memberCount() const = 0;
    /// Makes a member current; false when its row was deleted meanwhile.
    virtual bool seek(std::size_t member) = 0;
    /// Fields of the current member. Throw Error (RowDeleted) when it is gone.
    virtual Value value(std::size_t field) = 0;
    /// Text of the current member into `out` (capacity kept); false for Null. Only text and memo fields.
    virtual bool text(std::size_t field, std::u16string& out) = 0;
    /// Change the data; nothing is changed when they throw. insert makes the new row a member and current.
    virtual void insert(std::span<const FieldChange> changes) = 0;
    /// Where the current member lies; no value where the provider cannot say. insertAt puts a new row to such a place
    /// when nothing lies there any more, else anywhere; reservePlaces says beforehand which will be wanted.
    virtual std::optional<std::uint32_t> place() { return std::nullopt; }
    virtual void reservePlaces(std::span<const std::uint32_t> places) { static_cast<void>(places); }
    virtual void insertAt(std::uint32_t place, std::span<const FieldChange> changes) {
        static_cast<void>(place);
        insert(changes);
    }
    virtual void update(std::span<const FieldChange> changes) = 0;
    virtual void erase() = 0;
    virtual bool updatable() const = 0;
    /// Throws Error (ReadOnly) with the reason unless updatable().
    virtual void requireUpdatable() const {
        if (!updatable()) {
            throw Error(Error::Kind::ReadOnly, "the rows of this record set cannot be changed");
        }
    }
};

/// One open connection of a provider.
class Session {
public:
    virtual ~Session() = default;
    virtual std::unique_ptr<RowSet> open(std::u16string_view select, CursorType cursor, LockType lock) = 0;
    /// INSERT, UPDATE, DELETE, CREATE TABLE, CREATE INDEX, ALTER TABLE; result: rows affected, 0 for definitions.
    virtual std::size_t execute(std::u16string_view statement) = 0;
    /// Fields TABLE_NAME and TABLE_TYPE ("TABLE", "SYSTEM TABLE", "VIEW", "LINK"), in the order of names.
    virtual std::unique_ptr<RowSet> tables() = 0;
    virtual void beginTransaction() = 0;
    virtual void commitTransaction() = 0;
    virtual void rollbackTransaction() = 0;
    /// Row changes that are stored all or not at all. Here as a transaction, which waits for the disk.
    virtual void atomically(const std::function<void()>& changes) {
        beginTransaction();
        try {
            changes();
        } catch (const std::exception&) {
            rollbackTransaction();
            throw;
        }
        commitTransaction();
    }
    /// Brings finished changes to the disk; the second only when they are old enough to be due.
    virtual void flush() = 0;
    virtual void flushIfDue() = 0;
    virtual void setCommandTimeout(int seconds) = 0;
};

class Environment;

class Provider { ///< opens connections of one kind
public:
    virtual ~Provider() = default;
    virtual bool accepts(const ConnectionString& connection) const = 0;
    /// The part Mode is "Read" or "ReadWrite" when the connection asked for it (Connection::mode), else absent.
    virtual std::unique_ptr<Session> connect(const ConnectionString& connection, Environment& environment) = 0;
};

} // namespace kelb::ado
