#include "jet/calculated_value.h"
#include "jet/long_value.h"
#include "jet/table.h"
#include "jet/text_codec.h"
#include "jet/value_codec.h"

namespace kelb::jet {

bool Row::isNull(const Column& column) const {
    return column.type != ColumnType::YesNo && !view_.field(column);
}

Value Row::value(const Column& column) const {
    if (column.type == ColumnType::YesNo && !column.isCalculated()) {
        return view_.isSet(column);
    }
    if (column.type == ColumnType::Text || column.type == ColumnType::Memo) {
        std::u16string decoded;
        return text(column, decoded) ? Value(std::move(decoded)) : Value(Null{});
    }
    const std::optional<std::span<const std::byte>> stored = view_.field(column);
    if (!stored) {
        return Null{};
    }
    if (column.type == ColumnType::YesNo) {
        return !stored->empty() && stored->front() != std::byte{0};
    }
    if (column.type == ColumnType::Ole) {
        return longValueBytes(column, *stored);
    }
    std::optional<Value> value = decodeValue(*definition_, column, *stored);
    if (!value) {
        view_.corrupt(static_cast<std::size_t>(stored->data() - bytes().data()), "a field is not as long as its type");
    }
    return *std::move(value);
}

bool Row::text(const Column& column, std::u16string& out) const {
    const std::optional<std::span<const std::byte>> stored = view_.field(column);
    if (!stored) {
        out.clear();
        return false;
    }
    const bool jet3 = definition_->dialect == Dialect::Jet3;
    if (column.type != ColumnType::Memo) {
        jet3 ? decodeCodePageText(*stored, definition_->codePage, out) : decodeText(*stored, out);
    } else if (jet3 || column.isCalculated()) {
        const std::vector<std::byte> bytes = longValueBytes(column, *stored);
        jet3 ? decodeCodePageText(bytes, definition_->codePage, out) : decodeText(bytes, out);
    } else {
        const std::uint32_t length = longValueLength(*stored);
        if (LongValueHeader::parse(*stored).form == LongValueHeader::Form::Inline) {
            decodeText(stored->subspan(kLongValueHeader, length), out);
        } else {
            out.resize((std::size_t{length} + 1) / 2);
            readLongValue(*pager_, *stored, std::as_writable_bytes(std::span(out)).first(length));
            decodeTextInPlace(out, length);
        }
    }
    return true;
}

/// Stored bytes, checked against what the record and the file can hold before room is made for them.
std::uint32_t Row::longValueLength(std::span<const std::byte> field) const {
    const auto fieldOffset = static_cast<std::size_t>(field.data() - bytes().data());
    if (field.size() < kLongValueHeader) {
        view_.corrupt(fieldOffset, "the header of a long value is shorter than 12 bytes");
    }
    const LongValueHeader header = LongValueHeader::parse(field);
    const std::uint64_t most = header.form == LongValueHeader::Form::Inline
                                   ? field.size() - kLongValueHeader
                                   : std::uint64_t{pager_->pageCount()} * pager_->pageSize();
    if (header.length > most) {
        view_.corrupt(fieldOffset, "a long value is longer than its record or file");
    }
    return header.length;
}

std::vector<std::byte> Row::longValueBytes(const Column& column, std::span<const std::byte> field) const {
    std::vector<std::byte> bytes(longValueLength(field));
    readLongValue(*pager_, field, std::span(bytes));
    if (column.isCalculated()) {
        const std::span<const std::byte> inner = calculatedValue(bytes);
        bytes = {inner.begin(), inner.end()};
    }
    return bytes;
}

} // namespace kelb::jet
