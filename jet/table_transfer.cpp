#include "jet/table_transfer.h"

#include "jet/calculated_value.h"
#include "jet/new_objects.h"
#include "jet/text_codec.h"
#include "jet/value_codec.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace kelb::jet {
namespace {

constexpr std::uint8_t kKeptFlags = kFixedFlag | kColumnFlag | kAutonumberFlag | kGuidAutonumberFlag | kHyperlinkFlag;
constexpr std::uint8_t kKeptIndexFlags = kUniqueFlag | kIgnoreNullsFlag | kRequiredFlag;
constexpr std::uint16_t kMaxTextBytes = 510;
constexpr std::uint8_t kDigitsOfBigInteger = 19, kMaxPrecision = 28;

bool isKnownType(ColumnType type) noexcept {
    return isWritableType(type) || type == ColumnType::FixedBinary || type == ColumnType::Complex ||
           type == ColumnType::BigInteger || type == ColumnType::ExtendedDate;
}

/// A column of a type that Access 2000 has not, or of another make than the source's.
Column remade(const Column& from, ColumnType type, SortOrder order) {
    NewColumn wanted;
    wanted.name = u"x";
    wanted.type = type;
    wanted.precision = type == from.type ? kMaxPrecision : kDigitsOfBigInteger;
    wanted.scale = type == from.type ? from.scale : std::uint8_t{0};
    if (type == ColumnType::Binary)
        wanted.characters = kMaxTextBytes;
    Column column = makeColumn(wanted, u"", order);
    column.name = from.name;
    column.required = from.required;
    return column;
}

Column carried(const Column& from, Dialect dialect, SortOrder order) {
    Column column = from;
    column.flags = static_cast<std::uint8_t>((from.flags & kKeptFlags) | kColumnFlag);
    column.extraFlags = from.extraFlags & kCompressionFlag;
    const bool text = from.type == ColumnType::Text || from.type == ColumnType::Memo;
    if (dialect == Dialect::Jet3 && text)
        column.extraFlags = kCompressionFlag; // one byte a character there: without it records could outgrow a page
    column.sortOrder = order;
    if (from.type == ColumnType::Text || from.type == ColumnType::Binary)
        column.length = std::min(from.length, kMaxTextBytes);
    else if (from.isLongValue())
        column.length = 0;
    else if (from.type == ColumnType::YesNo)
        column.length = 1;
    else
        column.length = static_cast<std::uint16_t>(fixedSize(from.type));
    if (from.isLongValue())
        column.flags &= static_cast<std::uint8_t>(~kFixedFlag);
    return column;
}

Decimal decimalOf(std::int64_t number) {
    Decimal value;
    value.negative = number < 0;
    const std::uint64_t magnitude =
        number < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
    value.magnitude[2] = static_cast<std::uint32_t>(magnitude >> 32);
    value.magnitude[3] = static_cast<std::uint32_t>(magnitude);
    return value;
}

} // namespace

TableTransfer::TableTransfer(const TableDefinition& source, SortOrder order, Orders orders)
    : source_(source), order_(order), keepsOrders_(orders == Orders::Kept && source.dialect == Dialect::Jet4) {
    design_.name = source.name;
    design_.lastAutonumber = source.lastAutonumber;
    design_.autonumberStep = std::max(source.autonumberStep, 1U);
    std::vector<const Column*> byNumber;
    for (const Column& column : source.columns)
        byNumber.push_back(&column);
    std::ranges::sort(byNumber, {}, &Column::number); // some readers show the columns in this order
    for (const Column* column : byNumber)
        addColumn(*column);
    placeColumns();
    addIndexes();
}

void TableTransfer::addColumn(const Column& from) {
    if (!isKnownType(from.type) || from.type == ColumnType::Complex) {
        notes_.push_back({from.name, from.type == ColumnType::Complex
                                         ? "attachments and fields of several values do not exist in Access 2000"
                                         : "its type is unknown"});
        return;
    }
    ColumnPlan plan{&from, 0, Form::AsStored};
    std::optional<Column> made;
    if (from.type == ColumnType::BigInteger) {
        made = remade(from, ColumnType::Numeric, order_);
        plan.form = Form::BigInteger;
        notes_.push_back({from.name, "large numbers become decimals of 19 digits"});
    } else if (from.type == ColumnType::ExtendedDate) {
        made = remade(from, ColumnType::DateTime, order_);
        plan.form = Form::ExtendedDate;
        notes_.push_back({from.name, "extended dates become date-times, without fractions of milliseconds"});
    } else if (from.type == ColumnType::FixedBinary) {
        made = remade(from, ColumnType::Ole, order_);
        notes_.push_back({from.name, "it becomes an OLE field"});
    } else if (from.isCalculated()) {
        made = remade(from, from.type, order_);
        notes_.push_back({from.name, "its values are kept, the expression that calculates them is not"});
    } else {
        made = carried(from, source_.dialect, keepsOrders_ ? from.sortOrder : order_);
    }
    const bool text = from.type == ColumnType::Text || from.type == ColumnType::Memo;
    if (source_.dialect == Dialect::Jet3 && text)
        plan.form = Form::CodePageText;
    design_.addColumn(*std::move(made));
    columns_.push_back(plan);
}

/// Gives the columns their display positions, those of the source without gaps, and tells the plans where they are.
void TableTransfer::placeColumns() {
    std::uint16_t position = 0;
    for (const std::size_t i : source_.displayOrder()) {
        const auto plan = std::ranges::find(columns_, &source_.columns[i], &ColumnPlan::from);
        if (plan != columns_.end())
            design_.columns[static_cast<std::size_t>(plan - columns_.begin())].position = position++;
    }
    std::vector<std::uint16_t> numbers; // of the plans: they stand as the columns were added
    for (const Column& column : design_.columns)
        numbers.push_back(column.number);
    std::ranges::sort(design_.columns, {}, &Column::position);
    for (std::size_t i = 0; i < columns_.size(); ++i)
        columns_[i].to = static_cast<std::size_t>(design_.columnByNumber(numbers[i]) - design_.columns.data());
}

/// Whether all its columns are there.
bool TableTransfer::mapColumns(PhysicalIndex& index) const {
    for (IndexColumn& part : index.columns) {
        const auto plan = std::find_if(columns_.begin(), columns_.end(),
                                       [&](const ColumnPlan& each) { return each.from->number == part.column; });
        if (plan == columns_.end() || design_.columns[plan->to].type == ColumnType::Ole)
            return false;
        part.column = design_.columns[plan->to].number;
    }
    return !index.columns.empty();
}

void TableTransfer::addIndexes() {
    for (std::size_t i = 0; i < source_.physicalIndexes.size(); ++i) {
        IndexPlan plan{source_.physicalIndexes[i], {}, i};
        for (const LogicalIndex& name : source_.logicalIndexes) {
            if (name.physical != i || name.kind == kForeignKeyKind)
                continue;
            LogicalIndex kept;
            kept.name = name.name;
            kept.kind = name.kind;
            plan.names.push_back(std::move(kept));
        }
        if (plan.names.empty())
            continue;
        if (!mapColumns(plan.physical)) {
            notes_.push_back({plan.names.front().name, "an index on a field that is not carried over"});
            continue;
        }
        plan.physical.flags = static_cast<std::uint8_t>((plan.physical.flags & kKeptIndexFlags) | kIndexFlag);
        indexes_.push_back(std::move(plan));
    }
}

StoredField TableTransfer::field(const ColumnPlan& plan, const RowView& record,
                                 const ReadLongValue& readLongValue) const {
    const Column& from = *plan.from;
    if (from.type == ColumnType::YesNo && !from.isCalculated())
        return {record.isSet(from), {}};
    const std::optional<std::span<const std::byte>> bytes = record.field(from);
    if (!bytes)
        return {};
    if (!from.isLongValue())
        return stored(plan, *bytes);
    std::vector<std::byte> value = readLongValue(*bytes);
    if (from.isCalculated()) {
        const std::span<const std::byte> inner = calculatedValue(value);
        value = std::vector<std::byte>(inner.begin(), inner.end());
    }
    if (plan.form == Form::AsStored)
        return {true, std::move(value)};
    return stored(plan, value);
}

StoredField TableTransfer::stored(const ColumnPlan& plan, std::span<const std::byte> bytes) const {
    const Column& to = design_.columns[plan.to];
    StoredField field{true, {}};
    switch (plan.form) {
    case Form::AsStored:
        if (to.type == ColumnType::YesNo) // a calculated one
            field.set = !bytes.empty() && bytes.front() != std::byte{0};
        else if (to.isFixed() && bytes.size() < to.length)
            field.set = false; // calculated, without a value
        else
            field.bytes.assign(bytes.begin(),
                               to.isFixed() ? bytes.begin() + static_cast<std::ptrdiff_t>(to.length) : bytes.end());
        break;
    case Form::CodePageText: {
        std::u16string text;
        decodeCodePageText(bytes, source_.codePage, text);
        appendStored(field.bytes, to, text);
        break;
    }
    case Form::BigInteger:
    case Form::ExtendedDate: {
        const std::optional<Value> value = decodeValue(source_, *plan.from, bytes);
        if (const auto* number = value ? std::get_if<std::int64_t>(&*value) : nullptr)
            appendStored(field.bytes, to, decimalOf(*number));
        else if (const auto* date = value ? std::get_if<OleDate>(&*value) : nullptr)
            appendStored(field.bytes, to, *date);
        else
            field.set = false;
        break;
    }
    }
    return field;
}

} // namespace kelb::jet
