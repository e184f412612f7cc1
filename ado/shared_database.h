#pragma once

#include "ado/hash_index.h"
#include "jet/database.h"

#include "platform/platform.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

namespace kelb::ado {

/// An open set of rows that wants to hear of changes to its table (a keyset). Told by SharedDatabase.
class LiveRows {
public:
    virtual ~LiveRows() = default;
    virtual jet::PageNumber tablePage() const noexcept = 0;
    /// Somebody else is about to add or delete rows: list the members now, if that has not been done.
    virtual void fixMembers() = 0;
    /// A new row has got the id of a deleted one.
    virtual void rowIdReused(jet::RowId id) = 0;
    virtual void transactionBegun() = 0;
    virtual void transactionRolledBack() = 0;
    /// Let go of every page: the file is about to be closed and opened anew.
    virtual void releasePages() noexcept = 0;
};

/// One open Access database as all connections of an Environment share it: the engine, the hash indexes made for
/// look-ups, and the keysets that are open on its tables. Every change to rows and definitions goes through here, so
/// that indexes and keysets never miss one. One thread.
class SharedDatabase {
public:
    /// Throws jet::Error, FileError.
    SharedDatabase(platform::Platform& platform, std::u16string path, std::string identity,
                   jet::Database::OpenOptions options);
    ~SharedDatabase();

    const std::u16string& path() const noexcept { return path_; }
    const std::string& identity() const noexcept { return identity_; }
    /// Throws Error (Connection) when a reopen() left nothing open.
    const std::shared_ptr<jet::Database>& database() const;
    bool writable() const { return database()->writable(); }
    /// Throws Error (ReadOnly) with the reason unless writable().
    void requireWritable() const;
    /// The same for the rows of one table; those that belong to Access are refused. Throws also jet::Error.
    void requireWritable(const jet::Table& table) const;
    void setReadOnlyReason(std::string reason) { readOnlyReason_ = std::move(reason); }
    const std::string& readOnlyReason() const noexcept { return readOnlyReason_; }
    /// Closes and opens the file with another access; keysets live on. Requires !isHeld(). On a
    /// throw the database is open as before, or not at all when even that fails.
    void reopen(jet::Pager::Access access);
    /// Somebody else holds database(), or a transaction is open.
    bool isHeld() const { return database().use_count() > 1 || transactions_ > 0; }

    /// Connections that were opened to write if possible, from their opening to their end.
    void writerCame() noexcept { ++writers_; }
    void writerLeft() noexcept { --writers_; }
    bool hasWriters() const noexcept { return writers_ > 0; }

    /// Throws jet::Error (NoSuchTable). Valid as long as definitionVersion() stays.
    jet::Table& table(std::u16string_view name) { return database()->table(name); }
    /// Grows when a table, its columns or their numbers may have changed.
    std::uint64_t definitionVersion() const noexcept { return definitionVersion_; }
    /// Grows with every change to anything: a jet::Row read before is void.
    std::uint64_t changeCount() const noexcept { return changeCount_; }

    /// `by`: the set that adds the row to itself, or null. Throw as jet::Table; nothing is changed then.
    jet::RowId insert(jet::Table& table, std::span<const jet::Value> values, const LiveRows* by,
                      std::optional<jet::RowId> wanted = std::nullopt);
    void update(jet::Table& table, jet::RowId id, std::span<const jet::Change> changes);
    void erase(jet::Table& table, jet::RowId id, const LiveRows* by);
    /// Runs changes that are to happen all or not at all.
    template <class Work>
    void atomically(Work&& work) {
        jet::Pager::Operation operation(database()->pager());
        work();
        operation.done();
    }
    /// Runs a change of definitions.
    template <class Work>
    void define(Work&& work) {
        ++changeCount_;
        ++definitionVersion_;
        atomically(work);
    }

    /// Row changes made through record sets, all or none: on a throw they are taken back, in the record sets, too.
    /// Requires that no transaction is open.
    void changeTogether(const std::function<void()>& changes);

    void beginTransaction();
    void commitTransaction();
    void rollbackTransaction();

    /// The hash index of a text or memo column; made by a scan when there is none.
    const HashIndex& hashIndex(jet::Table& table, const jet::Column& column);
    bool hasHashIndex(const jet::Table& table, const jet::Column& column) const;

    void attach(LiveRows& rows);
    void detach(LiveRows& rows) noexcept;

private:
    struct TableState {
        std::map<std::uint16_t, HashIndex> indexes; ///< by column number
        std::vector<LiveRows*> live;
        std::unordered_set<std::uint32_t> erased; ///< ids of rows deleted while keysets were open
    };
    TableState* stateOf(const jet::Table& table);
    static void fixOthers(const TableState& state, const LiveRows* by);
    void forgetTakenBack();
    template <class Tell>
    void tellAll(Tell&& tell) const;

    platform::Platform& platform_;
    std::u16string path_;
    std::string identity_;
    jet::Database::OpenOptions options_;
    std::string readOnlyReason_;
    std::shared_ptr<jet::Database> database_;
    std::map<jet::PageNumber, TableState> tables_; ///< by definition page; only tables that need one
    std::uint64_t definitionVersion_ = 1, changeCount_ = 1;
    unsigned transactions_ = 0;
    unsigned writers_ = 0;
    std::u16string text_;
};

} // namespace kelb::ado
