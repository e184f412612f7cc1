#pragma once

#include "jet/database.h"
#include "jet/error.h"
#include "jet/usage_map.h"
#include "jet/verify.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelb::jet {

/// A part of the database that has pages of its own: rows of a table, an index, … 0 = nobody.
using Owner = std::uint32_t;

/// Pages of one owner in ascending order.
struct PageGroup {
    Owner owner = 0;
    std::vector<PageNumber> pages;
};

/// What the checks of one file share: the faults found, and who owns which page. Eight bytes for each page of the file.
class Verification {
public:
    explicit Verification(Database& checked);

    Database& database;
    Pager& pager;

    void error(PageNumber page, const std::string& text) { report(Fault::Severity::Error, page, -1, text); }
    void error(RowId row, const std::string& text) { report(Fault::Severity::Error, row.page, row.slot, text); }
    void warning(PageNumber page, const std::string& text) { report(Fault::Severity::Warning, page, -1, text); }
    void warning(RowId row, const std::string& text) { report(Fault::Severity::Warning, row.page, row.slot, text); }
    /// A thrown error as a fault of `what`; `page` where the error names none.
    void damage(const Error& error, PageNumber page, const std::string& what);
    /// Runs a check; what it throws for damage becomes a fault and false comes back.
    template <typename Check>
    bool guarded(PageNumber page, const std::string& what, const Check& check) {
        try {
            check();
            return true;
        } catch (const Error& thrown) {
            damage(thrown, page, what);
            return false;
        }
    }

    Owner newOwner(std::string name);
    /// Notes the owner of a page. False, with a fault, when the page is not in the file or is somebody else's.
    bool claim(PageNumber page, Owner owner);
    bool isClaimed(PageNumber page) const noexcept { return owners_[raw(page)] != 0; }
    bool owns(Owner owner, PageNumber page) const noexcept {
        return raw(page) < owners_.size() && owners_[raw(page)] == owner;
    }
    /// Claims the members of a map and numbers them; those that somebody else owns are left out.
    PageGroup claimGroup(const std::vector<PageNumber>& members, std::string name);
    /// Position of a page in its group.
    std::uint32_t ordinal(PageNumber page) const noexcept { return ordinals_[raw(page)]; }

    std::vector<Fault> takeFaults();

    Owner mapPages;                    ///< pages with rows of usage maps: any number of maps share one
    std::vector<bool> freePages;       ///< by page, as the global map says; none until it has been read
    std::vector<PageNumber> releasing; ///< members of the map of pages about to become free

private:
    void report(Fault::Severity severity, PageNumber page, int slot, const std::string& text);

    std::vector<std::string> names_; ///< by owner
    std::vector<Owner> owners_;      ///< by page
    std::vector<std::uint32_t> ordinals_;
    std::vector<Fault> faults_;
    std::size_t errors_ = 0, warnings_ = 0; ///< all, listed or not
};

/// The first fault that is more than a warning; null when there is none.
const Fault* firstError(const std::vector<Fault>& faults) noexcept;

/// Rows of one group of pages, which must outlive it. Takes no memory while empty, then 32 bytes for each page.
class RowSet {
public:
    RowSet(const Verification& verification, const PageGroup& group) : verification_(&verification), group_(&group) {}
    /// Whether a row of that address can be in the set at all.
    bool covers(RowId row) const noexcept { return verification_->owns(group_->owner, row.page); }
    bool contains(RowId row) const noexcept { return size_ != 0 && covers(row) && bits_[bit(row)]; }
    /// False when it was in already. Requires covers(row).
    bool add(RowId row);
    /// False when it was not in.
    bool remove(RowId row);
    std::size_t size() const noexcept { return size_; }
    /// Calls `visit(RowId)` in ascending order.
    template <typename Visit>
    void forEach(const Visit& visit) const {
        if (size_ == 0)
            return;
        for (std::size_t i = 0; i < group_->pages.size(); ++i)
            for (std::size_t slot = 0; slot < kSlots; ++slot)
                if (bits_[i * kSlots + slot])
                    visit(RowId{group_->pages[i], static_cast<std::uint8_t>(slot)});
    }

private:
    static constexpr std::size_t kSlots = 256;
    std::size_t bit(RowId row) const noexcept { return verification_->ordinal(row.page) * kSlots + row.slot; }

    const Verification* verification_;
    const PageGroup* group_;
    std::vector<bool> bits_;
    std::size_t size_ = 0;
};

/// Header pointers, page 1, the global map; fills freePages and releasing.
void checkGlobalMaps(Verification& verification);
/// The members of a usage map inside the file; none, with a fault, when it cannot be read.
std::vector<PageNumber> readUsageMap(Verification& verification, RowId map, const std::string& name);
/// Type, owner, slots and free field of a data page. False, with a fault, when its slots cannot be used.
bool checkDataPage(Verification& verification, const PageRef& page, std::uint32_t owner, const std::string& name);
/// At the end: pages claimed but free, used but nobody's.
void checkFreePages(Verification& verification);

/// A table's definition; no value, with a fault, when rows and indexes cannot be read by it.
std::optional<TableDefinition> checkDefinition(Verification& verification, PageNumber page, std::u16string_view name);
/// Rows, long values and indexes of a table.
void checkTable(Verification& verification, const TableDefinition& table);
/// "table "x"".
std::string tableLabel(std::u16string_view name);
inline std::string tableLabel(const TableDefinition& table) {
    return tableLabel(table.name);
}
/// "page 12 slot 3".
std::string address(RowId row);

} // namespace kelb::jet
