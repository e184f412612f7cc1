#include "jet/long_field.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"
#include "jet/error.h"
#include "jet/text_codec.h"

#include "platform/utf8.h"

#include <algorithm>
#include <bit>

namespace kelb::jet {

namespace {

constexpr std::uint32_t kInlineForm = 0x80000000;

std::vector<std::byte> insideField(std::span<const std::byte> stored) {
    std::vector<std::byte> field(kLongValueHeader + stored.size());
    store32(field.data(), kInlineForm | static_cast<std::uint32_t>(stored.size()));
    std::copy(stored.begin(), stored.end(), field.begin() + kLongValueHeader);
    return field;
}

/// Stored form of a text outside the record. Points into the text itself where that is its stored form already.
std::span<const std::byte> outsideText(const Column& column, std::u16string_view text, std::vector<std::byte>& buffer) {
    constexpr char16_t kMark = 0xFEFF; // needs care in front, see text_codec.h
    if (column.compresses() && isCompressible(text)) {
        appendCompressedText(buffer, text);
    } else if (std::endian::native == std::endian::little && !text.empty() && text.front() != kMark) {
        return std::as_bytes(std::span(text));
    } else {
        appendRawText(buffer, text);
    }
    return buffer;
}

} // namespace

void LongFields::add(std::size_t column, const Value& value) {
    const Column& definition = definition_.columns[column];
    fields_.push_back({column, {}, {}, {}, false});
    Field& field = fields_.back();
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        const bool compressible = isCompressible(*text);
        const std::size_t insideBytes = compressible ? text->size() + 2 : 2 * text->size();
        // A leading U+FEFF may take some bytes more; nothing that could be inside then has twice the room.
        if (insideBytes <= kMaxInlineLongValue) {
            std::vector<std::byte> stored;
            compressible ? appendCompressedText(stored, *text) : appendRawText(stored, *text);
            field.isInside = stored.size() <= kMaxInlineLongValue;
            if (field.isInside) {
                field.field = insideField(stored);
            }
        }
        field.outside = field.isInside ? field.outside : outsideText(definition, *text, field.buffer);
        return;
    }
    const Binary& bytes = std::get<Binary>(value);
    field.isInside = bytes.size() <= kMaxInlineLongValue;
    if (field.isInside) {
        field.field = insideField(bytes);
    } else {
        field.outside = bytes;
    }
}

void LongFields::carry(std::size_t column, std::span<const std::byte> field) {
    const bool isInside =
        field.size() > kLongValueHeader && LongValueHeader::parse(field).form == LongValueHeader::Form::Inline;
    fields_.push_back({column, {field.begin(), field.end()}, {}, {}, isInside});
}

void LongFields::addStored(std::size_t column, std::span<const std::byte> stored) {
    fields_.push_back({column, {}, {}, {}, stored.size() <= kMaxInlineLongValue});
    if (fields_.back().isInside)
        fields_.back().field = insideField(stored);
    else
        fields_.back().outside = stored;
}

void LongFields::moveOutside(Field& field) {
    const Column& column = definition_.columns[field.column];
    const std::span<const std::byte> stored = std::span(field.field).subspan(kLongValueHeader);
    if (column.type == ColumnType::Memo) {
        std::u16string text;
        decodeText(stored, text);
        const std::span<const std::byte> outside = outsideText(column, text, field.buffer);
        if (field.buffer.empty()) {
            field.buffer.assign(outside.begin(), outside.end());
        }
    } else {
        field.buffer.assign(stored.begin(), stored.end());
    }
    field.outside = field.buffer;
    field.isInside = false;
    field.field.clear();
    if (field.outside.empty()) { // a mark of compression and nothing behind it
        field.field = insideField({});
    }
}

void LongFields::requireStorable(const Field& field) const {
    if (field.outside.size() <= kMaxLongValue)
        return;
    throw Error(Error::Kind::RecordTooLarge, "the value is too long: table " + platform::toUtf8(definition_.name) +
                                                 ", field " + platform::toUtf8(definition_.columns[field.column].name) +
                                                 ", " + std::to_string(kMaxLongValue) + " bytes allowed, " +
                                                 std::to_string(field.outside.size()) + " needed");
}

void LongFields::fit(std::size_t otherBytes) {
    std::size_t bytes = otherBytes;
    for (const Field& field : fields_) {
        requireStorable(field);
        bytes += std::max(field.field.size(), kLongValueHeader);
    }
    while (rowSize(definition_, bytes) > kMaxRowBytes) {
        const auto largest = std::max_element(fields_.begin(), fields_.end(), [](const Field& a, const Field& b) {
            return (a.isInside ? a.field.size() : 0) < (b.isInside ? b.field.size() : 0);
        });
        if (largest == fields_.end() || !largest->isInside || largest->field.size() <= kLongValueHeader) {
            throw Error(Error::Kind::RecordTooLarge,
                        "the record is too large: table " + platform::toUtf8(definition_.name) + ", " +
                            std::to_string(kMaxRowBytes) + " bytes allowed, " +
                            std::to_string(rowSize(definition_, bytes)) +
                            " needed (memo fields count 12 bytes each: move long texts there)");
        }
        bytes -= largest->field.size() - kLongValueHeader;
        moveOutside(*largest);
    }
}

void LongFields::store(Pager& pager, PageAllocator& allocator, std::span<StoredField> fields) {
    for (Field& field : fields_) {
        StoredField& stored = fields[field.column];
        stored.set = true;
        if (field.outside.empty()) { // in a damaged row even a field that is carried over may be empty
            stored.bytes = std::move(field.field);
            continue;
        }
        const LongValueMaps maps = longValueMapsOf(definition_, definition_.columns[field.column]);
        const auto header = writeLongValue(pager, allocator, maps, field.outside);
        stored.bytes.assign(header.begin(), header.end());
    }
}

LongValueMaps longValueMapsOf(const TableDefinition& definition, const Column& column) {
    const ColumnMaps* maps = definition.mapsOf(column);
    if (maps == nullptr) {
        throw Error(Error::Kind::BadDefinition, "table " + platform::toUtf8(definition.name) +
                                                    " cannot be written: it does not say where field " +
                                                    platform::toUtf8(column.name) + " keeps its long values");
    }
    return {maps->owned, maps->free};
}

} // namespace kelb::jet
