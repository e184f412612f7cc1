#include "jet/verify_table.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"
#include "jet/record_check.h"
#include "jet/text_codec.h"
#include "jet/value_codec.h"

#include "platform/utf8.h"

#include <algorithm>
#include <optional>

namespace kelb::jet {
namespace {

constexpr std::size_t kSlotBytes = 2; // a page with less room cannot even take a slot

/// Decimal digits of a magnitude, words most significant first.
unsigned digits(std::array<std::uint32_t, 4> words) {
    unsigned count = 0;
    while (std::ranges::any_of(words, [](std::uint32_t word) { return word != 0; })) {
        std::uint64_t carry = 0;
        for (std::uint32_t& word : words) {
            carry = carry << 32 | word;
            word = static_cast<std::uint32_t>(carry / 10);
            carry %= 10;
        }
        ++count;
    }
    return count;
}

/// The rows of one table.
class RowCheck {
public:
    RowCheck(Verification& verification, const TableDefinition& table)
        : v_(verification), table_(table), label_(tableLabel(table)),
          data_(v_.claimGroup(readUsageMap(v_, table.ownedMap, label_ + ", owned pages"), label_ + ", rows")),
          live_(v_, data_), targets_(v_, data_), pointedTo_(v_, data_), longValues_(v_, table),
          indexes_(v_, table, data_), values_(table.columns.size()) {}

    void run() {
        checkFreeMap();
        longValues_.claimPages();
        for (const PageNumber page : data_.pages)
            checkPage(page);
        targets_.forEach([&](RowId row) {
            if (!pointedTo_.contains(row))
                v_.error(row, label_ + ": a moved record that no pointer leads to");
        });
        longValues_.finish();
        checkCounts();
        indexes_.run(live_);
        indexes_.findWrongKeys([this](RowId row, const auto& visit) { readAgain(row, visit); });
    }

private:
    void checkFreeMap() {
        for (const PageNumber page : readUsageMap(v_, table_.freeMap, label_ + ", pages with room")) {
            if (!v_.owns(data_.owner, page))
                v_.error(page, label_ + ": the map of pages with room has a page that the table does not own");
            else if (load16(v_.pager.read(page).data() + 2) < kSlotBytes)
                v_.warning(page, label_ + ": the map of pages with room has a page without room");
        }
    }

    void checkPage(PageNumber number) {
        const PageRef page = v_.pager.read(number);
        if (!checkDataPage(v_, page, raw(table_.page), label_))
            return;
        const DataPageView view(v_.pager, page);
        for (std::size_t slot = 0; slot < view.slotCount(); ++slot) {
            const RowId row{number, static_cast<std::uint8_t>(slot)};
            const auto [kind, bytes] = view.slot(slot);
            if (kind == SlotKind::Target)
                targets_.add(row);
            if (kind == SlotKind::Row || kind == SlotKind::Pointer)
                live_.add(row);
            if (kind == SlotKind::Row)
                checkRecord(row, number, page, bytes);
            if (kind == SlotKind::Pointer)
                checkMoved(row, bytes);
        }
    }

    /// The record behind a pointer, when it is one.
    std::optional<std::span<const std::byte>> follow(RowId row, std::span<const std::byte> pointer, PageRef& page) {
        if (pointer.size() < 4)
            return v_.error(row, label_ + ": a pointer to a moved record should have 4 bytes, it has " +
                                     std::to_string(pointer.size())),
                   std::nullopt;
        target_ = RowId::unpack(load32(pointer.data()));
        const std::string leads = label_ + ": the record moved to " + address(target_) + ", ";
        if (!v_.owns(data_.owner, target_.page))
            return v_.error(row, leads + "which is no page of the table"), std::nullopt;
        page = v_.pager.read(target_.page);
        const DataPageView view(v_.pager, page);
        if (target_.slot >= view.slotCount() || view.slot(target_.slot).kind != SlotKind::Target)
            return v_.error(row, leads + "where no moved record is"), std::nullopt;
        return view.slot(target_.slot).bytes;
    }

    void checkMoved(RowId row, std::span<const std::byte> pointer) {
        v_.guarded(row.page, label_, [&] {
            PageRef page;
            const auto bytes = follow(row, pointer, page);
            if (!bytes)
                return;
            if (!pointedTo_.add(target_))
                v_.error(row, label_ + ": two pointers lead to the moved record in " + address(target_));
            else
                checkRecord(row, target_.page, page, *bytes);
        });
    }

    void checkRecord(RowId row, PageNumber at, const PageRef& page, std::span<const std::byte> bytes) {
        v_.guarded(at, label_, [&] {
            if (const auto fault = recordFault(table_, bytes))
                return v_.error(row, label_ + ": record: " + *fault);
            const RowView view(bytes, table_, place(page, bytes));
            for (std::size_t i = 0; i < table_.columns.size(); ++i) {
                values_[i].reset();
                checkField(row, view, table_.columns[i]);
            }
            indexes_.addRow(row, valuesOf(view));
        });
    }

    RowPlace place(const PageRef& page, std::span<const std::byte> bytes) const {
        return {v_.pager.path(), page.number(), static_cast<std::size_t>(bytes.data() - page.data())};
    }

    void checkField(RowId row, const RowView& view, const Column& column) {
        if (column.type == ColumnType::YesNo)
            return;
        const auto field = view.field(column);
        if (!field)
            return;
        const auto fail = [&](const std::string& text) {
            v_.error(row, label_ + ", column \"" + platform::toUtf8(column.name) + "\": " + text);
        };
        if (column.isLongValue()) {
            if (longValues_.use(column, *field, row) && column.type == ColumnType::Memo && !column.isCalculated())
                checkMemo(*field, fail);
            return;
        }
        if (const auto fault = fieldFault(table_, column, *field))
            return fail(*fault);
        if (column.type == ColumnType::Numeric || column.isAutonumber())
            checkNumber(row, column, *decodeValue(table_, column, *field));
    }

    template <typename Fail>
    void checkMemo(std::span<const std::byte> field, const Fail& fail) {
        const LongValueHeader header = LongValueHeader::parse(field);
        if (header.form == LongValueHeader::Form::Chain) { // always plain
            if (header.length % 2 != 0)
                fail("a text of " + std::to_string(header.length) + " bytes should have an even number of them");
            return;
        }
        std::vector<std::byte> stored;
        readLongValue(v_.pager, field, stored);
        if (!textUnits(stored))
            fail("its " + std::to_string(stored.size()) + " bytes are no text");
    }

    void checkNumber(RowId row, const Column& column, const Value& value) {
        if (const auto* const decimal = std::get_if<Decimal>(&value);
            decimal != nullptr && digits(decimal->magnitude) > column.precision)
            v_.warning(row, label_ + ", column \"" + platform::toUtf8(column.name) + "\": the number has more than " +
                                std::to_string(column.precision) + " digits");
        if (const auto* const number = std::get_if<std::int32_t>(&value);
            number != nullptr && column.isAutonumber() && *number > highest_) {
            highest_ = *number;
            highestRow_ = row;
        }
    }

    /// Values of one record, decoded on demand and kept until the next one.
    IndexChecks::ValueOf valuesOf(const RowView& view) {
        return [this, &view](const Column& column) -> const Value& {
            std::optional<Value>& value = values_[static_cast<std::size_t>(&column - table_.columns.data())];
            if (!value)
                value = decode(view, column);
            return *value;
        };
    }

    Value decode(const RowView& view, const Column& column) const {
        if (column.type == ColumnType::YesNo)
            return view.isSet(column);
        const auto field = view.field(column);
        if (!field)
            return Null{};
        if (column.type != ColumnType::Memo)
            return decodeValue(table_, column, *field).value_or(Null{});
        std::vector<std::byte> stored;
        readLongValue(v_.pager, *field, stored);
        std::u16string text;
        decodeText(stored, text);
        return text;
    }

    void readAgain(RowId row, const std::function<void(const IndexChecks::ValueOf&)>& visit) {
        PageRef page = v_.pager.read(row.page);
        Slot slot = DataPageView(v_.pager, page).slot(row.slot);
        if (slot.kind == SlotKind::Pointer) {
            const auto bytes = follow(row, slot.bytes, page);
            if (!bytes)
                return;
            slot.bytes = *bytes;
        }
        std::ranges::fill(values_, std::nullopt);
        const RowView view(slot.bytes, table_, place(page, slot.bytes));
        visit(valuesOf(view));
    }

    void checkCounts() {
        if (live_.size() != table_.rowCount)
            v_.warning(table_.page, label_ + ": its definition counts " + std::to_string(table_.rowCount) +
                                        " rows, there are " + std::to_string(live_.size()));
        if (highest_ > static_cast<std::int32_t>(table_.lastAutonumber))
            v_.warning(highestRow_, label_ + ": the last autonumber should be at least " + std::to_string(highest_) +
                                        ", as in this row, it is " +
                                        std::to_string(static_cast<std::int32_t>(table_.lastAutonumber)));
    }

    Verification& v_;
    const TableDefinition& table_;
    std::string label_;
    PageGroup data_;
    RowSet live_, targets_, pointedTo_;
    LongValueCheck longValues_;
    IndexChecks indexes_;
    std::vector<std::optional<Value>> values_; ///< of the record at hand, by column
    RowId target_;                             ///< that follow() found
    std::int32_t highest_ = 0;                 ///< autonumber
    RowId highestRow_;
};

} // namespace

void checkTable(Verification& verification, const TableDefinition& table) {
    RowCheck(verification, table).run();
}

} // namespace kelb::jet
