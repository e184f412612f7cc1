#pragma once

#include "jet/long_value.h"
#include "jet/recovery.h"
#include "jet/row_record.h"
#include "jet/salvage_pages.h"

#include <functional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace kelb::jet {

/// The records of one table of a damaged file, each once.
class TableSalvage {
public:
    /// All outlive it. `lost` and `told` are called while rows are read.
    struct Sinks {
        std::function<void(const Loss&)> lost;
        std::function<void(const std::string&)> told;
    };
    TableSalvage(Pager& pager, const TableDefinition& table, const PageSurvey& survey, Sinks sinks);

    /// A record whose parts lie in order. Its bytes are valid during the call.
    using Take = std::function<void(RowId, const RowView&)>;
    void readRows(const Take& take);
    std::size_t rowsRead() const noexcept { return rowsRead_; }

private:
    std::vector<PageNumber> choosePages();
    std::size_t countRows(std::span<const PageNumber> pages);
    void readPage(PageNumber page, const Take& take);
    void readMoved(RowId row, std::span<const std::byte> pointer, const Take& take);
    void readOrphans(std::span<const PageNumber> pages, const Take& take);
    void takeRecord(RowId row, const PageRef& page, std::span<const std::byte> bytes, const Take& take);
    bool isOwn(const PageRef& page) const noexcept;
    bool isOthers(PageNumber page);
    void loseRow(RowId row, const std::string& reason);

    Pager& pager_;
    const TableDefinition& table_;
    const PageSurvey& survey_;
    Sinks sinks_;
    std::set<RowId> pointedTo_; ///< targets of moved records
    bool damaged_ = false;      ///< some page or record of the table is lost
    std::size_t rowsRead_ = 0;
};

/// The bytes of one long value as the new table can have them. `fault` is empty when nothing is missing.
AvailableValue salvageLongValue(Pager& pager, const TableDefinition& table, const Column& column,
                                std::span<const std::byte> field);

/// A field of a sound record: nothing when it has no value of its type. A text that is too long or breaks off is
/// shortened. `fault` then says so.
struct SalvagedField {
    std::vector<std::byte> bytes;
    bool kept = true; ///< false: no value is left
    std::string fault;
};
SalvagedField salvageField(const TableDefinition& table, const Column& column, std::span<const std::byte> stored);

} // namespace kelb::jet
