#include "jet/recovery.h"

#include "jet/byte_order.h"
#include "jet/file_header.h"
#include "jet/index_entries.h"
#include "jet/new_database_file.h"
#include "jet/new_objects.h"
#include "jet/recovery_catalog.h"
#include "jet/salvage_rows.h"

#include "platform/clock.h"
#include "platform/date_time.h"
#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <unordered_set>

namespace kelb::jet {
namespace {

using platform::toUtf8;

/// Share of the pages of that size that begin as pages of a database do.
double plausiblePages(const platform::RandomAccessFile& file, std::size_t pageSize) {
    const std::uint64_t pages = std::min<std::uint64_t>(file.size() / pageSize, 4096);
    std::size_t plausible = 0;
    for (std::uint64_t page = 1; page < pages; ++page) {
        std::array<std::byte, 2> type{};
        if (file.readAt(page * pageSize, type) == type.size())
            plausible += load8(&type[0]) >= 1 && load8(&type[0]) <= 5 && load8(&type[1]) == 1 ? 1U : 0U;
    }
    return pages < 2 ? 0 : static_cast<double>(plausible) / static_cast<double>(pages - 1);
}

bool hasPlainCatalog(const platform::RandomAccessFile& file, std::size_t pageSize) {
    std::array<std::byte, 2> type{};
    return file.readAt(2 * pageSize, type) == type.size() && load16(type.data()) == kDefinitionPageType;
}

/// The header, or what the pages behind it say when it is damaged. `fault`: how it is damaged.
FileHeader availableHeader(const platform::RandomAccessFile& file, std::u16string_view path, std::string& fault) {
    std::array<std::byte, kHeaderFront> front{};
    const std::size_t got = file.readAt(0, front);
    try {
        return readFileHeader(std::span(front).first(got), path);
    } catch (const Error& refusal) {
        const bool sealed = refusal.kind() == Error::Kind::PasswordProtected ||
                            (refusal.kind() == Error::Kind::Encrypted && !hasPlainCatalog(file, kPageSize) &&
                             !hasPlainCatalog(file, kJet3PageSize));
        constexpr double kSmallPages = 0.8, kAnyPages = 0.1;
        const double small = plausiblePages(file, kJet3PageSize), large = plausiblePages(file, kPageSize);
        if (sealed || std::max(small, large) < kAnyPages)
            throw;
        FileHeader header;
        header.dialect = small > kSmallPages ? Dialect::Jet3 : Dialect::Jet4;
        fault = std::string("its header is damaged; its pages are those of ") +
                (header.dialect == Dialect::Jet3 ? "Access 97" : "Access 2000 or later");
        return header;
    }
}

/// Saves the objects of one file, table after table.
class Recovery {
public:
    Recovery(Pager& pager, const FileHeader& header, Database& target, RecoveryObserver& observer, OleDate now)
        : pager_(pager), header_(header), target_(target), observer_(observer), now_(now),
          survey_(surveyPages(pager, header.dialect)) {}

    void lose(const Loss& loss) {
        switch (loss.kind) {
        case Loss::Kind::Page:
            ++counts_.pagesLost;
            break;
        case Loss::Kind::Row:
            ++counts_.rowsLost;
            break;
        case Loss::Kind::Field:
            ++counts_.fieldsLost;
            break;
        default:
            ++counts_.otherLosses;
        }
        observer_.lost(loss);
    }

    RecoveryCounts run() {
        for (const PageSurvey::Unreadable& page : survey_.unreadable)
            lose({Loss::Kind::Page, u"", page.page, -1, u"", page.reason});
        const std::function<void(const Loss&)> sink = [this](const Loss& loss) { lose(loss); };
        const FoundObjects found =
            findObjects(pager_, header_, survey_, target_.table(u"MSysObjects").definition(), now_, sink);
        for (const CatalogEntry& other : found.others)
            tellOtherObject(other, observer_);
        std::vector<std::optional<TableDefinition>> definitions;
        for (const FoundTable& table : found.tables) {
            definitions.push_back(readDefinition(table));
            total_ += definitions.back() ? definitions.back()->rowCount : 0;
        }
        for (std::size_t i = 0; i < found.tables.size(); ++i)
            if (definitions[i])
                saveTable(found.tables[i], *definitions[i]);
        return counts_;
    }

private:
    using Names = std::unordered_set<std::u16string, platform::NoCaseHash, platform::NoCaseEqual>;

    std::optional<TableDefinition> readDefinition(const FoundTable& table) {
        std::string fault;
        try {
            TableDefinition definition =
                readAvailableDefinition(pager_, table.page, header_.dialect, header_.codePage, fault);
            if (!fault.empty())
                lose({Loss::Kind::Table, table.name, table.page, -1, u"", "indexes of its definition: " + fault});
            definition.name = table.name;
            makeNamesGood(definition);
            return definition;
        } catch (const CorruptFile& damage) {
            fault = damage.expected();
        } catch (const platform::FileError& failure) {
            fault = failure.what();
        }
        const std::size_t pages = survey_.pagesOf(raw(table.page)).size();
        lose({Loss::Kind::Table, table.name, table.page, -1, u"",
              "its definition cannot be read (" + fault + "): without it the rows on its " + std::to_string(pages) +
                  " pages have no fields"});
        return std::nullopt;
    }

    /// Names that are empty, too long or there twice would refuse the whole table, as a second primary key would.
    void makeNamesGood(TableDefinition& table) {
        Names fields, indexes;
        for (Column& column : table.columns)
            makeNameGood(table, column.name, fields, u"Field", column.number);
        bool primary = false;
        for (LogicalIndex& index : table.logicalIndexes) {
            if (index.kind == kForeignKeyKind)
                continue;
            makeNameGood(table, index.name, indexes, u"Index", index.number);
            index.kind = index.kind == kPrimaryKeyKind && !primary ? kPrimaryKeyKind : std::uint8_t{0};
            primary = primary || index.kind == kPrimaryKeyKind;
        }
    }

    void makeNameGood(const TableDefinition& table, std::u16string& name, Names& names, std::u16string_view stem,
                      std::uint32_t number) {
        if (!name.empty() && name.size() <= kMaxNameUnits && names.insert(name).second)
            return;
        std::u16string made = std::u16string(stem) + platform::fromUtf8(std::to_string(number));
        while (!names.insert(made).second)
            made += u'_';
        lose({Loss::Kind::Table, table.name, table.page, -1, made, "the name that it had is lost"});
        name = std::move(made);
    }

    void saveTable(const FoundTable& found, const TableDefinition& definition) {
        try {
            const TableTransfer transfer(definition, target_.sortOrder(), TableTransfer::Orders::Replaced);
            for (const TableTransfer::Note& note : transfer.notes())
                observer_.leftOut("field", definition.name + u"." + note.name, note.text);
            Table& table = create(found, transfer);
            saveRows(definition, transfer, table);
            for (const TableTransfer::IndexPlan& plan : transfer.indexes())
                saveIndex(plan, table);
            ++counts_.tables;
        } catch (const Error& refusal) {
            if (refusal.kind() == Error::Kind::FileFull)
                throw;
            lose({Loss::Kind::Table, definition.name, definition.page, -1, u"", refusal.what()});
        }
    }

    /// Under another name where a damaged one cannot be had.
    Table& create(const FoundTable& found, const TableTransfer& transfer) {
        TableOrigin origin = found.origin;
        origin.properties = propertiesFor(std::move(origin.properties), transfer);
        try {
            requireGoodName("table", found.name);
            return target_.createTable(transfer.design(), origin);
        } catch (const Error& refusal) {
            TableDefinition renamed = transfer.design();
            renamed.name = recoveredName(found.page);
            if (renamed.name == found.name)
                throw;
            lose({Loss::Kind::Table, renamed.name, found.page, -1, u"",
                  "its name is lost: " + std::string(refusal.what())});
            return target_.createTable(std::move(renamed), origin);
        }
    }

    void saveRows(const TableDefinition& from, const TableTransfer& transfer, Table& table) {
        TableSalvage salvage(pager_, from, survey_,
                             {[this](const Loss& loss) { lose(loss); },
                              [&](const std::string& what) { observer_.told(from.name, what); }});
        RowAppender appender(target_, table);
        salvage.readRows([&](RowId row, const RowView& record) {
            std::vector<StoredField> fields(transfer.design().columns.size());
            for (const TableTransfer::ColumnPlan& plan : transfer.columns())
                fields[plan.to] = saveField(from, transfer, plan, row, record);
            try {
                appender.append(std::move(fields));
                ++counts_.rows;
            } catch (const Error& refusal) {
                if (refusal.kind() != Error::Kind::RecordTooLarge)
                    throw;
                lose({Loss::Kind::Row, from.name, row.page, row.slot, u"", refusal.what()});
            }
            observer_.progress(from.name, counts_.rows, std::max(total_, counts_.rows));
        });
        appender.finish();
        if (salvage.rowsRead() < from.rowCount)
            lose({Loss::Kind::Table, from.name, from.page, -1, u"",
                  "it should have " + std::to_string(from.rowCount) + " rows, " + std::to_string(salvage.rowsRead()) +
                      " were found"});
    }

    StoredField saveField(const TableDefinition& from, const TableTransfer& transfer,
                          const TableTransfer::ColumnPlan& plan, RowId row, const RowView& record) {
        const Column& column = *plan.from;
        const auto loseField = [&](const std::string& reason) {
            lose({Loss::Kind::Field, from.name, row.page, row.slot, column.name, reason});
        };
        try {
            bool nothing = false;
            const auto readLong = [&](std::span<const std::byte> field) {
                AvailableValue value = salvageLongValue(pager_, from, column, field);
                nothing = !value.fault.empty() && value.bytes.empty();
                if (!value.fault.empty())
                    loseField((nothing ? "nothing of it can be read: "
                                       : "shortened to " + std::to_string(value.bytes.size()) + " bytes: ") +
                              value.fault);
                return std::move(value.bytes);
            };
            const bool plain = column.type != ColumnType::YesNo && !column.isLongValue() && !column.isCalculated();
            const auto stored = plain ? record.field(column) : std::nullopt;
            if (stored && plan.form == TableTransfer::Form::AsStored) {
                SalvagedField saved = salvageField(from, column, *stored);
                if (!saved.fault.empty())
                    loseField(saved.fault);
                return {saved.kept, std::move(saved.bytes)};
            }
            StoredField field = transfer.field(plan, record, readLong);
            field.set = field.set && !nothing;
            return field;
        } catch (const CorruptFile& damage) {
            loseField(std::string(damage.expected()));
            return {};
        }
    }

    void saveIndex(const TableTransfer::IndexPlan& plan, Table& table) {
        TableDefinition definition = table.definition();
        definition.physicalIndexes.push_back(plan.physical);
        for (const LogicalIndex& name : plan.names)
            definition.addLogicalIndex(name).physical =
                static_cast<std::uint32_t>(definition.physicalIndexes.size() - 1);
        try {
            const IndexEntries entries = makeIndexEntries(table, definition, definition.physicalIndexes.size() - 1);
            target_.addIndex(table.name(), plan.physical, plan.names, entries);
            ++counts_.indexes;
        } catch (const Error& refusal) {
            if (refusal.kind() == Error::Kind::FileFull)
                throw;
            for (const LogicalIndex& name : plan.names)
                lose({Loss::Kind::Index, table.name(), kNoPage, -1, name.name, refusal.what()});
        }
    }

    Pager& pager_;
    const FileHeader& header_;
    Database& target_;
    RecoveryObserver& observer_;
    OleDate now_;
    PageSurvey survey_;
    RecoveryCounts counts_;
    std::size_t total_ = 0;
};

} // namespace

RecoveryCounts recoverDatabase(platform::Platform& platform, std::u16string_view source, std::u16string_view target,
                               RecoveryObserver& observer) {
    std::unique_ptr<platform::RandomAccessFile> file = platform.files.open(source, platform::OpenMode::Read);
    std::string headerFault;
    const FileHeader header = availableHeader(*file, source, headerFault);
    Pager pager(platform.files, platform.clock, std::u16string(source), std::move(file),
                {.access = Pager::Access::Read, .pageSize = header.pageSize()});
    NewDatabaseFile made(platform, target, {}); // "General (Legacy)": keys of Chinese texts can be made in it
    Recovery recovery(pager, header, made.database(), observer, {platform::toSerial(platform.clock.now())});
    if (!headerFault.empty())
        recovery.lose({Loss::Kind::File, u"", PageNumber{0}, -1, u"", headerFault});
    if (const std::size_t stray = pager.strayBytes(); stray != 0)
        recovery.lose({Loss::Kind::File, u"", PageNumber{pager.pageCount()}, -1, u"",
                       "the file ends inside this page, of which it has " + std::to_string(stray) + " bytes"});
    const RecoveryCounts counts = recovery.run();
    made.finish();
    return counts;
}

} // namespace kelb::jet
