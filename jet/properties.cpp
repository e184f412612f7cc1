#include "jet/properties.h"

#include "jet/byte_order.h"
#include "jet/error.h"
#include "jet/text_codec.h"
#include "jet/types.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace kelb::jet {

namespace {

constexpr std::array kSignature = {std::byte{'M'}, std::byte{'R'}, std::byte{'2'}, std::byte{0}};
constexpr std::array kJet3Signature = {std::byte{'K'}, std::byte{'K'}, std::byte{'D'}, std::byte{0}};
constexpr std::uint16_t kNameList = 0x80, kTable = 0, kColumn = 1;
constexpr std::size_t kChunkHeader = 6, kValueHeader = 8;
constexpr std::size_t kMaxValue = 0xFFFF - kValueHeader; ///< bytes
constexpr std::u16string_view kRequired = u"Required";

/// Reads from left to right inside given bytes; running out of them is damage.
class In {
public:
    /// `codePage`: of texts; 0: they are UTF-16.
    In(std::span<const std::byte> bytes, std::uint16_t codePage) noexcept : rest_(bytes), codePage_(codePage) {}
    bool atEnd() const noexcept { return rest_.empty(); }
    std::span<const std::byte> take(std::size_t count) {
        if (count > rest_.size()) {
            throw Error(Error::Kind::Corrupt, "damaged table properties: a length leads past their end");
        }
        const std::span<const std::byte> taken = rest_.first(count);
        rest_ = rest_.subspan(count);
        return taken;
    }
    std::uint8_t u8() { return load8(take(1).data()); }
    std::uint16_t u16() { return load16(take(2).data()); }
    std::uint32_t u32() { return load32(take(4).data()); }
    /// What a length, itself of `own` bytes and read just now, still covers.
    In part(std::size_t length, std::size_t own) {
        if (length < own) {
            throw Error(Error::Kind::Corrupt, "damaged table properties: a length is too short");
        }
        return In(take(length - own), codePage_);
    }
    std::u16string name() {
        std::u16string text;
        const std::size_t bytes = u16();
        codePage_ == 0 ? decodeText(take(bytes), text) : decodeCodePageText(take(bytes), codePage_, text);
        requireStorable(2 * text.size());
        return text;
    }
    /// A value as Access 2000 stores it.
    std::vector<std::byte> value(std::uint8_t type) {
        const std::span<const std::byte> bytes = take(u16());
        const bool text =
            type == static_cast<std::uint8_t>(ColumnType::Text) || type == static_cast<std::uint8_t>(ColumnType::Memo);
        if (codePage_ == 0 || !text) {
            return {bytes.begin(), bytes.end()};
        }
        std::u16string decoded;
        decodeCodePageText(bytes, codePage_, decoded);
        std::vector<std::byte> stored;
        appendRawText(stored, decoded);
        requireStorable(stored.size());
        return stored;
    }
    std::vector<std::byte> rest() const { return {rest_.begin(), rest_.end()}; }

private:
    /// Texts of Access 97 take up to twice their bytes in UTF-16; lengths stay of 16 bits.
    static void requireStorable(std::size_t bytes) {
        if (bytes > kMaxValue) {
            throw Error(Error::Kind::Corrupt, "table properties that Access 2000 cannot hold: a text of " +
                                                  std::to_string(bytes) + " bytes, at most " +
                                                  std::to_string(kMaxValue) + " fit");
        }
    }

    std::span<const std::byte> rest_;
    std::uint16_t codePage_;
};

PropertyOwner readOwner(In in, std::uint16_t kind, const std::vector<std::u16string>& names) {
    PropertyOwner owner;
    owner.kind = kind;
    owner.name = in.part(in.u32(), 4).name();
    while (!in.atEnd()) {
        In value = in.part(in.u16(), 2);
        Property property;
        property.definitionOnly = value.u8();
        property.type = value.u8();
        const std::size_t name = value.u16();
        if (name >= names.size()) {
            throw Error(Error::Kind::Corrupt, "damaged table properties: a value without a name");
        }
        property.name = names[name];
        property.value = value.value(property.type);
        owner.properties.push_back(std::move(property));
    }
    return owner;
}

void append16(std::vector<std::byte>& out, std::size_t value) {
    out.resize(out.size() + 2);
    store16(&out[out.size() - 2], static_cast<std::uint16_t>(value));
}

void append32(std::vector<std::byte>& out, std::size_t value) {
    out.resize(out.size() + 4);
    store32(&out[out.size() - 4], static_cast<std::uint32_t>(value));
}

void appendName(std::vector<std::byte>& out, const std::u16string& name) {
    append16(out, 2 * name.size());
    for (const char16_t unit : name) {
        append16(out, unit);
    }
}

void appendChunk(std::vector<std::byte>& out, std::uint16_t type, std::span<const std::byte> data) {
    append32(out, kChunkHeader + data.size());
    append16(out, type);
    out.insert(out.end(), data.begin(), data.end());
}

/// The list of names, each once, numbered in the order in which they come up.
class NameList {
public:
    std::size_t numberOf(const std::u16string& name) {
        const auto [place, isNew] = numbers_.try_emplace(name, numbers_.size());
        if (isNew) {
            appendName(data_, name);
        }
        return place->second;
    }
    std::span<const std::byte> data() const noexcept { return data_; }

private:
    std::unordered_map<std::u16string, std::size_t> numbers_;
    std::vector<std::byte> data_;
};

std::vector<std::byte> ownerData(const PropertyOwner& owner, NameList& names) {
    std::vector<std::byte> data;
    append32(data, 4 + 2 + 2 * owner.name.size());
    appendName(data, owner.name);
    for (const Property& property : owner.properties) {
        append16(data, kValueHeader + property.value.size());
        data.push_back(std::byte{property.definitionOnly});
        data.push_back(std::byte{property.type});
        append16(data, names.numberOf(property.name));
        append16(data, property.value.size());
        data.insert(data.end(), property.value.begin(), property.value.end());
    }
    return data;
}

} // namespace

Properties::Properties(std::span<const std::byte> stored, std::uint16_t codePage) {
    const auto startsWith = [&](const auto& signature) {
        return stored.size() >= 4 && std::equal(signature.begin(), signature.end(), stored.begin());
    };
    if (stored.empty()) {
        return;
    }
    const bool jet3 = startsWith(kJet3Signature);
    if (!jet3 && !startsWith(kSignature)) {
        throw Error(Error::Kind::Corrupt, "damaged table properties: they do not begin with MR2");
    }
    In in(stored.subspan(kSignature.size()), jet3 ? codePage : std::uint16_t{0});
    std::vector<std::u16string> names;
    while (!in.atEnd()) {
        const std::size_t length = in.u32();
        const std::uint16_t type = in.u16();
        In data = in.part(length, kChunkHeader);
        if (type == kNameList) {
            while (!data.atEnd()) {
                names.push_back(data.name());
            }
        } else if (type == kTable || type == kColumn) {
            owners.push_back(readOwner(data, type, names));
        } else {
            others_.push_back({type, data.rest()});
        }
    }
}

bool Properties::isRequired(std::u16string_view column) const noexcept {
    for (const PropertyOwner& owner : owners) {
        if (owner.kind != kColumn || !platform::equalNoCase(owner.name, column)) {
            continue;
        }
        for (const Property& property : owner.properties) {
            if (platform::equalNoCase(property.name, kRequired)) {
                return !property.value.empty() && property.value[0] != std::byte{0};
            }
        }
    }
    return false;
}

void Properties::setRequired(std::u16string_view column) {
    auto owner = std::find_if(owners.begin(), owners.end(), [&](const PropertyOwner& o) {
        return o.kind == kColumn && platform::equalNoCase(o.name, column);
    });
    if (owner == owners.end()) {
        owner = owners.insert(owners.end(), {kColumn, std::u16string(column), {}});
    }
    auto property = std::find_if(owner->properties.begin(), owner->properties.end(),
                                 [](const Property& p) { return platform::equalNoCase(p.name, kRequired); });
    if (property == owner->properties.end()) {
        property = owner->properties.insert(owner->properties.end(), {std::u16string(kRequired), 1, 0, {}});
    }
    property->type = static_cast<std::uint8_t>(ColumnType::YesNo);
    property->value = {std::byte{1}};
}

std::vector<std::byte> Properties::build() const {
    NameList names;
    std::vector<std::byte> chunks;
    for (const PropertyOwner& owner : owners) {
        appendChunk(chunks, owner.kind, ownerData(owner, names));
    }
    for (const OtherChunk& other : others_) {
        appendChunk(chunks, other.type, other.data);
    }
    std::vector<std::byte> out(kSignature.begin(), kSignature.end());
    appendChunk(out, kNameList, names.data());
    out.insert(out.end(), chunks.begin(), chunks.end());
    return out;
}

} // namespace kelb::jet
