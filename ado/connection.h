#pragma once

#include "ado/environment.h"
#include "ado/error.h"
#include "ado/provider.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kelb::ado {

class Recordset;

/// A database connection. Opens read-write where the database allows it, else read-only: changes are then refused with
/// the reason when they are asked for.
class Connection {
public:
    explicit Connection(Environment& environment) : environment_(&environment) {}
    ~Connection(); ///< closes

    int CommandTimeout = 30; ///< seconds; takes effect at the next Open or Execute

    /// What the connection is to be used for, before Open. Write refuses a database that cannot be written at once,
    /// before anything is stored; the default opens for writing when possible.
    enum class Mode { Default, Read, Write };
    Mode mode = Mode::Default;

    /// Throws Error (Connection). Requires a closed connection.
    void Open(std::u16string_view connectionString, std::u16string_view user = {}, std::u16string_view password = {});
    /// Throws Error; nothing is changed then. Result: rows affected.
    std::size_t Execute(std::u16string_view statement);
    /// The tables rowset: TABLE_NAME, TABLE_TYPE.
    void OpenSchema(Recordset& tables);
    ObjectState State() const noexcept;
    /// Commits and closes; record sets on it must be closed before. Does nothing when closed.
    void Close();

    void BeginTrans();
    void CommitTrans();
    void RollbackTrans();
    /// Makes row changes that are stored all or not at all: a throw takes back those already made, and neither a kill
    /// nor a power cut parts them. Unlike a transaction it does not wait for the disk. Not inside a transaction.
    void atomically(const std::function<void()>& changes);
    /// Commits what is older than the commit interval; row loops call it once a row.
    void flushIfDue();
    /// Commits now: what was changed is on the disk on return.
    void flush();

    Session& session(); ///< throws Error (Connection) when closed

private:
    Environment* environment_;
    std::unique_ptr<Session> session_;
};

} // namespace kelb::ado
