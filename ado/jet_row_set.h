#pragma once

#include "ado/provider.h"
#include "ado/shared_database.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelb::ado {

/// Fields of a row set that are columns of a table.
struct SelectedColumn {
    std::u16string name; ///< of the field: the column's own, or what AS says
    std::size_t column;  ///< position in the definition's columns
};

/// Rows of one table as a keyset: the ids of its members, four bytes each. The set of a whole table is not even listed
/// before somebody asks for its rows, so that a set opened only for adding rows costs nothing; the database tells it
/// before another one adds or deletes rows, and then it lists what was there.
class JetRowSet final : public RowSet, private LiveRows {
public:
    /// All rows of the table.
    JetRowSet(std::shared_ptr<SharedDatabase> database, jet::Table& table, std::span<const SelectedColumn> columns);
    /// These rows, packed ids.
    JetRowSet(std::shared_ptr<SharedDatabase> database, jet::Table& table, std::span<const SelectedColumn> columns,
              std::vector<std::uint32_t> members);
    ~JetRowSet() override;
    JetRowSet(const JetRowSet&) = delete;
    JetRowSet& operator=(const JetRowSet&) = delete;

    const std::vector<FieldInfo>& fields() const override { return fields_; }
    std::size_t memberCount() const override;
    bool seek(std::size_t member) override;
    Value value(std::size_t field) override;
    bool text(std::size_t field, std::u16string& out) override;
    void insert(std::span<const FieldChange> changes) override { insertWanting(std::nullopt, changes); }
    std::optional<std::uint32_t> place() override;
    void reservePlaces(std::span<const std::uint32_t> places) override;
    void insertAt(std::uint32_t place, std::span<const FieldChange> changes) override {
        insertWanting(jet::RowId::unpack(place), changes);
    }
    void update(std::span<const FieldChange> changes) override;
    void erase() override;
    bool updatable() const override;
    void requireUpdatable() const override;

private:
    /// A member: of those found at opening, or of those added since.
    struct Member {
        bool added = false;
        std::size_t index = 0;
    };
    /// What a rollback goes back to.
    struct Mark {
        std::size_t added = 0;
        std::map<std::uint32_t, std::size_t> reused;
    };

    jet::PageNumber tablePage() const noexcept override { return tablePage_; }
    void fixMembers() override;
    void rowIdReused(jet::RowId id) override { reused_[id.packed()] = added_.size(); }
    void transactionBegun() override;
    void transactionRolledBack() override;
    void releasePages() noexcept override;

    void listMembers() const;
    jet::Table& table() const;
    std::size_t columnOf(std::size_t field) const noexcept { return columns_[field]; }
    bool isGone(const Member& member) const;
    jet::RowId idOf(const Member& member) const;
    bool load();
    void insertWanting(std::optional<jet::RowId> place, std::span<const FieldChange> changes);
    void requireRow();

    std::shared_ptr<SharedDatabase> database_;
    std::u16string tableName_;
    jet::PageNumber tablePage_;
    std::vector<FieldInfo> fields_;
    std::vector<std::uint16_t> numbers_;       ///< column number of each field: never changes
    mutable std::vector<std::size_t> columns_; ///< position of each field's column, as of version_
    mutable jet::Table* table_ = nullptr;
    mutable std::uint64_t version_ = 0;

    mutable bool listed_ = false;                ///< asking lists the members; nothing that a caller sees changes
    mutable std::vector<std::uint32_t> members_; ///< packed ids
    std::vector<std::uint32_t> added_;           ///< packed ids; 0 = lost to a rollback
    /// Ids that a new row took over: those before so many added ones are deleted rows.
    std::map<std::uint32_t, std::size_t> reused_;
    Mark mark_;

    Member current_;
    bool hasCurrent_ = false;
    jet::Row row_; ///< of the current member, as of rowVersion_
    std::uint64_t rowVersion_ = 0;
};

} // namespace kelb::ado
