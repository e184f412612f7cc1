#include "jet/recovery_catalog.h"

#include "jet/catalog.h"
#include "jet/salvage_rows.h"
#include "jet/table_definition_layout.h"
#include "jet/text_codec.h"
#include "jet/value_codec.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <unordered_set>

namespace kelb::jet {
namespace {

/// The value of a field of the catalog, Null where it cannot be read.
Value valueOf(Pager& pager, const TableDefinition& table, const RowView& row, std::u16string_view name) {
    const Column* column = table.findColumn(name);
    if (column == nullptr || column->type == ColumnType::YesNo)
        return Null{};
    const std::optional<std::span<const std::byte>> stored = row.field(*column);
    if (!stored)
        return Null{};
    if (column->isLongValue())
        return salvageLongValue(pager, table, *column, *stored).bytes;
    return decodeValue(table, *column, *stored).value_or(Null{});
}

template <class T>
T held(const Value& value, T otherwise) {
    const T* found = std::get_if<T>(&value);
    return found != nullptr ? *found : otherwise;
}

/// Reads the catalog of one damaged file.
class CatalogSalvage {
public:
    CatalogSalvage(Pager& pager, const FileHeader& header, const PageSurvey& survey, OleDate now,
                   const std::function<void(const Loss&)>& lost)
        : pager_(pager), header_(header), survey_(survey), now_(now), lost_(lost) {}

    FoundObjects run(const TableDefinition& standard) {
        const TableDefinition definition = readDefinition(standard);
        TableSalvage rows(pager_, definition, survey_,
                          {[this](const Loss& loss) {
                               complete_ = false;
                               Loss told = loss;
                               told.table = u"MSysObjects";
                               lost_(told);
                           },
                           [](const std::string&) {}});
        rows.readRows([&](RowId row, const RowView& record) { takeObject(definition, row, record); });
        if (rows.rowsRead() < definition.rowCount) {
            complete_ = false;
            lost_({Loss::Kind::File, u"", kObjectsPage, -1, u"",
                   "the catalog should have " + std::to_string(definition.rowCount) + " objects, " +
                       std::to_string(rows.rowsRead()) + " were found"});
        }
        if (!complete_)
            addUnnamedTables();
        return std::move(found_);
    }

private:
    TableDefinition readDefinition(const TableDefinition& standard) {
        std::string fault;
        try {
            TableDefinition own =
                readAvailableDefinition(pager_, kObjectsPage, header_.dialect, header_.codePage, fault);
            if (own.findColumn(u"Id") != nullptr && own.findColumn(u"Name") != nullptr &&
                own.findColumn(u"Type") != nullptr) {
                own.name = u"MSysObjects";
                return own;
            }
            fault = "it lacks its columns";
        } catch (const CorruptFile& damage) {
            fault = damage.expected();
        } catch (const platform::FileError& failure) {
            fault = failure.what();
        }
        complete_ = false;
        lost_({Loss::Kind::File, u"", kObjectsPage, -1, u"",
               "the definition of the catalog cannot be read (" + fault + "); the usual one is taken"});
        TableDefinition usual = standard;
        usual.page = kObjectsPage;
        usual.ownedMap = usual.freeMap = RowId{};
        usual.rowCount = 0;
        return usual;
    }

    void takeObject(const TableDefinition& table, RowId row, const RowView& record) {
        CatalogEntry entry;
        entry.name = held(valueOf(pager_, table, record, u"Name"), std::u16string{});
        entry.id = held(valueOf(pager_, table, record, u"Id"), std::int32_t{0});
        entry.type = held(valueOf(pager_, table, record, u"Type"), std::int16_t{0});
        entry.flags = static_cast<std::uint32_t>(held(valueOf(pager_, table, record, u"Flags"), std::int32_t{0}));
        if (entry.type == static_cast<std::int16_t>(ObjectType::Table))
            named_.insert(static_cast<std::uint32_t>(entry.id));
        if (!entry.isUserTable()) {
            found_.others.push_back(std::move(entry));
            return;
        }
        if (!names_.insert(entry.name).second || entry.name.empty())
            entry.name = recoveredName(PageNumber{static_cast<std::uint32_t>(entry.id)});
        FoundTable found{entry.name, PageNumber{static_cast<std::uint32_t>(entry.id)}, {now_, now_, false, {}, {}}};
        // An id that leads to no definition may be a damaged one: its table is then one of those without a name.
        complete_ = complete_ && std::ranges::binary_search(survey_.definitions, found.page);
        found.origin.created = held(valueOf(pager_, table, record, u"DateCreate"), now_);
        found.origin.updated = held(valueOf(pager_, table, record, u"DateUpdate"), now_);
        found.origin.hidden = (entry.flags & kHiddenFlag) != 0;
        try {
            found.origin.properties =
                Properties(held(valueOf(pager_, table, record, u"LvProp"), Binary{}), header_.codePage);
        } catch (const Error& damage) {
            lost_({Loss::Kind::Table, entry.name, row.page, row.slot, u"", damage.what()});
        }
        found_.tables.push_back(std::move(found));
    }

    void addUnnamedTables() {
        for (const PageNumber page : survey_.definitions) {
            if (named_.contains(raw(page)) || raw(page) <= raw(kRelationshipsPage) || survey_.isFree(page))
                continue;
            try {
                std::string fault;
                const TableDefinition table =
                    readAvailableDefinition(pager_, page, header_.dialect, header_.codePage, fault);
                if (table.tableType != kUserTable || (survey_.free.empty() && survey_.pagesOf(raw(page)).empty()))
                    continue; // without a map of free pages, a definition without rows may be one of long ago
                found_.tables.push_back({recoveredName(page), page, {now_, now_, false, {}, {}}});
                lost_({Loss::Kind::Table, recoveredName(page), page, -1, u"",
                       "its name is lost: the catalog does not name it any more"});
            } catch (const Error&) {
                continue; // what only looked like a definition
            } catch (const platform::FileError&) {
                continue;
            }
        }
    }

    Pager& pager_;
    const FileHeader& header_;
    const PageSurvey& survey_;
    OleDate now_;
    const std::function<void(const Loss&)>& lost_;
    bool complete_ = true;
    std::unordered_set<std::uint32_t> named_; ///< definition pages that the catalog has, system tables too
    std::unordered_set<std::u16string, platform::NoCaseHash, platform::NoCaseEqual> names_;
    FoundObjects found_;
};

} // namespace

std::u16string recoveredName(PageNumber page) {
    return u"Recovered_" + platform::fromUtf8(std::to_string(raw(page)));
}

FoundObjects findObjects(Pager& pager, const FileHeader& header, const PageSurvey& survey,
                         const TableDefinition& standard, OleDate now, const std::function<void(const Loss&)>& lost) {
    return CatalogSalvage(pager, header, survey, now, lost).run(standard);
}

} // namespace kelb::jet
