#pragma once

#include "jet/data_page.h"
#include "jet/pager.h"
#include "jet/table_definition.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

/// Pages of a damaged file, taken for nothing but what their own bytes say. Nothing here throws for damage.
namespace kelb::jet {

/// Every page of the file by what it seems to be. Pages that were released keep what they held: they are among these.
struct PageSurvey {
    struct Unreadable {
        PageNumber page;
        std::string reason;
    };
    std::unordered_map<std::uint32_t, std::vector<PageNumber>> rows; ///< data pages by owner, ascending
    std::vector<PageNumber> definitions;                             ///< first pages of table definitions
    std::vector<Unreadable> unreadable;                              ///< pages that the disk does not give
    std::vector<bool> free; ///< by page, as the map of free pages says; empty when that cannot be trusted

    bool isFree(PageNumber page) const noexcept { return raw(page) < free.size() && free[raw(page)]; }
    /// Data pages of an owner.
    std::span<const PageNumber> pagesOf(std::uint32_t owner) const noexcept;
};
/// Reads the whole file once. Four bytes for each data page.
PageSurvey surveyPages(Pager& pager, Dialect dialect);

/// One slot of a data page that may be damaged.
struct SalvagedSlot {
    std::uint8_t slot = 0;
    SlotKind kind = SlotKind::Deleted;
    std::span<const std::byte> bytes; ///< valid while the page is pinned
    std::string fault;                ///< not empty: its place in the page is lost, `kind` and `bytes` say nothing
};
/// The slots of a data page of `table`. Places that contradict each other are told apart by the majority that is in
/// order; records whose own place is lost are found by what their ends say of their lengths.
std::vector<SalvagedSlot> salvageSlots(const PageRef& page, const TableDefinition& table);

/// Members of a usage map, those past the end of the file included. `readable`: whether the map was there.
std::vector<PageNumber> availableMembers(Pager& pager, RowId map, bool& readable);

} // namespace kelb::jet
