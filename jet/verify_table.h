#pragma once

#include "jet/index_key.h"
#include "jet/long_value.h"
#include "jet/row_record.h"
#include "jet/table_keys.h"
#include "jet/verification.h"

#include <deque>
#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// The parts of checkTable(), each for one table.
namespace kelb::jet {

/// Long values: every row of a long-value page belongs to exactly one value of its column. A page is examined when the
/// first value leads to it, while it is in the cache, so that the check reads the file once.
class LongValueCheck {
public:
    LongValueCheck(Verification& verification, const TableDefinition& table);
    /// Claims the pages of all long-value columns.
    void claimPages();
    /// Follows one value. False, with a fault, when it cannot be read.
    bool use(const Column& column, std::span<const std::byte> field, RowId row);
    /// Examines the pages that no value led to, and reports long-value rows that none led to.
    void finish();

private:
    struct ColumnPages {
        ColumnPages(const Verification& verification, std::uint16_t number, std::string label, PageGroup group)
            : column(number), name(std::move(label)), pages(std::move(group)), examined(pages.pages.size()),
              unused(verification, pages) {}
        std::uint16_t column;
        std::string name;
        PageGroup pages;
        std::vector<bool> examined; ///< by ordinal of the page
        RowSet unused;              ///< live rows of examined pages that no value has led to yet
    };
    void examine(ColumnPages& column, const PageRef& page);
    void checkFreeMap(const ColumnPages& column, RowId freeMap);
    ColumnPages* pagesOf(const Column& column);
    bool useRow(ColumnPages& pages, RowId longRow, RowId row, PageRef& page, std::span<const std::byte>& bytes);

    Verification& v_;
    const TableDefinition& table_;
    std::deque<ColumnPages> columns_; ///< they stay where they are: each set refers to its group
};

/// Indexes: every live row has its entry, with the right key, and no entry more.
class IndexChecks {
public:
    IndexChecks(Verification& verification, const TableDefinition& table, const PageGroup& rows);

    using ValueOf = std::function<const Value&(const Column&)>;
    /// Notes the keys of one row.
    void addRow(RowId row, const ValueOf& valueOf);
    /// Walks every tree against the rows noted. `live`: all rows of the table.
    void run(const RowSet& live);
    /// Rows whose key differs from that of their entry, one by one, when run() found that there are some.
    /// `read` decodes a row and calls back with its values.
    using ReadRow = std::function<void(RowId, const std::function<void(const ValueOf&)>&)>;
    void findWrongKeys(const ReadRow& read);

private:
    struct Tree {
        std::size_t physical;
        std::string name;
        RowSet known;   ///< rows whose key was made
        RowSet keyless; ///< rows whose key cannot be made here
        RowSet leftOut; ///< rows that the index ignores: all Null
        std::uint64_t keySum = 0;
        bool wrongKeys = false;
    };
    class Walk;
    bool makesKeys(const PhysicalIndex& index) const;

    Verification& v_;
    const TableDefinition& table_;
    const PageGroup& rows_;
    std::vector<Tree> trees_;
};

} // namespace kelb::jet
