#include "jet/verification.h"

#include "jet/byte_order.h"
#include "jet/table_definition_layout.h"
#include "jet/value_codec.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

namespace kelb::jet {
namespace {

std::string quoted(std::u16string_view name) {
    return "\"" + platform::toUtf8(name) + "\"";
}

/// One definition and the bytes it was read from.
class DefinitionCheck {
public:
    DefinitionCheck(Verification& verification, PageNumber page, std::u16string_view name)
        : v_(verification), page_(page), label_(tableLabel(name)) {}

    std::optional<TableDefinition> run(std::u16string_view name) {
        if (!claimChain())
            return std::nullopt;
        TableDefinition table;
        const bool read = v_.guarded(page_, label_ + ", definition", [&] {
            table = readTableDefinition(v_.pager, page_, v_.database.dialect(), v_.database.codePage());
            table.name = name;
        });
        if (!read)
            return std::nullopt;
        checkBytes(table);
        checkColumns(table);
        checkNames(table);
        checkIndexes(table);
        if (!usable_)
            return std::nullopt;
        return table;
    }

private:
    void error(const std::string& text) { v_.error(page_, label_ + ", definition: " + text); }
    void unusable(const std::string& text) {
        error(text);
        usable_ = false;
    }
    void warning(const std::string& text) { v_.warning(page_, label_ + ", definition: " + text); }

    /// Collects the bytes of all pages. False when the table is somebody else's, too, or its chain breaks off.
    bool claimChain() {
        const Owner owner = v_.newOwner(label_ + ", definition");
        PageNumber page = page_;
        do {
            if (!v_.claim(page, owner))
                return false;
            const PageRef ref = v_.pager.read(page);
            const auto bytes = ref.bytes();
            const auto own = bytes.subspan(pages_.empty() ? 0 : kDefinitionPageHeader);
            bytes_.insert(bytes_.end(), own.begin(), own.end());
            pages_.push_back(page);
            page = PageNumber{load32(&bytes[4])};
        } while (page != kNoPage);
        return true;
    }

    /// Where the parsed parts end, the final FFFF included. The definition has been read, so all of them are there.
    std::size_t end(const TableDefinition& table) const {
        std::size_t at = kDefinitionHeadBytes + kIndexStatisticBytes * table.physicalIndexes.size() +
                         kColumnBytes * table.columns.size();
        const auto skipNames = [&](std::size_t count) {
            for (; count > 0; --count)
                at += 2U + load16(&bytes_[at]);
        };
        skipNames(table.columns.size());
        at += kPhysicalIndexBytes * table.physicalIndexes.size() + kLogicalIndexBytes * table.logicalIndexes.size();
        skipNames(table.logicalIndexes.size());
        return at + kColumnMapsBytes * table.longValueMaps.size() + sizeof kNoColumn;
    }

    void checkBytes(const TableDefinition& table) {
        if (const std::uint32_t found = load32(&bytes_[kDefinitionMarkOffset]); found != kDefinitionMark)
            error("the number at byte 12 should be 1625, it is " + std::to_string(found));
        const std::size_t length = end(table);
        if (const std::uint32_t found = load32(&bytes_[kDefinitionLengthOffset]); found != length)
            error("the length should be " + std::to_string(length) + ", it is " + std::to_string(found));
        std::size_t rest = length - kDefinitionPageHeader;
        for (const PageNumber page : pages_) {
            const std::size_t part = std::min(rest, kPageSize - kDefinitionPageHeader);
            rest -= part;
            // The field counts eight bytes less than there are, down to 0.
            const std::size_t gap = kPageSize - kDefinitionPageHeader - part;
            const std::size_t free = gap > kDefinitionPageHeader ? gap - kDefinitionPageHeader : 0;
            if (const std::size_t found = load16(v_.pager.read(page).data() + 2); found != free)
                v_.warning(page, label_ + ", definition: the free bytes of the page should be " + std::to_string(free) +
                                     ", they are " + std::to_string(found));
        }
    }

    void checkColumns(const TableDefinition& table) {
        if (table.columns.size() > kMaxColumns || table.maxColumns > kMaxColumns)
            return unusable("a table has at most 255 columns, not " +
                            std::to_string(std::max<std::size_t>(table.columns.size(), table.maxColumns)));
        std::array<bool, kMaxColumns + 1> numbers{};
        std::unordered_set<std::uint16_t> varIndexes;
        std::vector<std::pair<std::size_t, std::size_t>> areas;
        for (const Column& column : table.columns) {
            if (column.number >= table.maxColumns)
                unusable("the number of column " + quoted(column.name) + " should be below " +
                         std::to_string(table.maxColumns) + ", it is " + std::to_string(column.number));
            else if (std::exchange(numbers[column.number], true))
                unusable("column number " + std::to_string(column.number) + " should stand once, it stands twice");
            checkType(column);
            if (!column.isFixed()) {
                if (column.varIndex >= table.varColumns)
                    unusable("the var index of column " + quoted(column.name) + " should be below " +
                             std::to_string(table.varColumns) + ", it is " + std::to_string(column.varIndex));
                else if (!varIndexes.insert(column.varIndex).second)
                    unusable("var index " + std::to_string(column.varIndex) + " should stand once, it stands twice");
            } else if (column.type != ColumnType::YesNo) {
                areas.emplace_back(column.fixedOffset, column.fixedOffset + column.length);
            }
            if (column.isLongValue() && table.mapsOf(column) == nullptr)
                unusable("column " + quoted(column.name) + " should have usage maps for its long values, it has none");
        }
        std::ranges::sort(areas);
        for (std::size_t i = 1; i < areas.size(); ++i) {
            if (areas[i].first < areas[i - 1].second)
                unusable("the fixed columns at offsets " + std::to_string(areas[i - 1].first) + " and " +
                         std::to_string(areas[i].first) + " overlap");
        }
    }

    void checkType(const Column& column) {
        const bool known = isWritableType(column.type) || column.type == ColumnType::FixedBinary ||
                           (v_.database.dialect() == Dialect::Ace && column.type >= ColumnType::Complex &&
                            column.type <= ColumnType::ExtendedDate);
        if (!known)
            error("column " + quoted(column.name) + " has the unknown type " +
                  std::to_string(static_cast<int>(column.type)));
    }

    template <typename Item>
    void checkUnique(const std::vector<Item>& items, const char* what) {
        std::unordered_set<std::u16string_view, platform::NoCaseHash, platform::NoCaseEqual> names;
        for (const Item& item : items) {
            if (!names.insert(item.name).second)
                error(std::string("the ") + what + " name " + quoted(item.name) +
                      " should stand once, it stands twice");
        }
    }

    void checkNames(const TableDefinition& table) {
        checkUnique(table.columns, "column");
        checkUnique(table.logicalIndexes, "index");
        const auto columnBefore = [](const Column& a, const Column& b) {
            return a.position != b.position ? a.position < b.position : platform::compareNoCase(a.name, b.name) < 0;
        };
        if (!std::ranges::is_sorted(table.columns, columnBefore))
            warning("the columns are not in the order of display position and name");
        const auto indexBefore = [](const LogicalIndex& a, const LogicalIndex& b) {
            return platform::compareNoCase(a.name, b.name) < 0;
        };
        if (!std::ranges::is_sorted(table.logicalIndexes, indexBefore))
            warning("the indexes are not in the order of their names");
    }

    void checkIndexes(const TableDefinition& table) {
        // Counted for physical ones: foreign keys share them.
        if (table.physicalIndexes.size() > kMaxIndexes)
            return unusable("a table has at most 32 indexes, not " + std::to_string(table.physicalIndexes.size()));
        for (const LogicalIndex& index : table.logicalIndexes) {
            if (index.physical >= table.physicalIndexes.size())
                error("index " + quoted(index.name) + " should lead to one of " +
                      std::to_string(table.physicalIndexes.size()) + " trees, it leads to number " +
                      std::to_string(index.physical));
        }
        for (std::size_t i = 0; i < table.physicalIndexes.size(); ++i) {
            if (table.physicalIndexes[i].columns.empty())
                unusable("index tree " + std::to_string(i) + " has no columns");
            for (const IndexColumn& part : table.physicalIndexes[i].columns) {
                if (table.columnByNumber(part.column) == nullptr)
                    unusable("index tree " + std::to_string(i) + " has column number " + std::to_string(part.column) +
                             ", which does not exist");
            }
        }
    }

    Verification& v_;
    PageNumber page_;
    std::string label_;
    std::vector<PageNumber> pages_;
    std::vector<std::byte> bytes_;
    bool usable_ = true;
};

} // namespace

std::optional<TableDefinition> checkDefinition(Verification& verification, PageNumber page, std::u16string_view name) {
    return DefinitionCheck(verification, page, name).run(name);
}

} // namespace kelb::jet
