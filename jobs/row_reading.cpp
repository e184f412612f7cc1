#include "jobs/row_reading.h"

#include "jobs/base64.h"
#include "platform/date_time.h"
#include "platform/utf8.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

namespace kelb::jobs {
namespace {

class LineParser {
public:
    explicit LineParser(std::string_view line) : rest_(line) {}

    std::vector<RowMember> object() {
        std::vector<RowMember> members;
        require('{');
        if (!skip('}')) {
            do {
                RowMember& member = members.emplace_back();
                require('"');
                member.name = text();
                require(':');
                value(member);
            } while (skip(','));
            require('}');
        }
        skipBlanks();
        if (!rest_.empty()) {
            fail();
        }
        return members;
    }

private:
    [[noreturn]] static void fail() { throw RowLineError("the line is not a row"); }

    void skipBlanks() {
        while (!rest_.empty() && (rest_.front() == ' ' || rest_.front() == '\r')) {
            rest_.remove_prefix(1);
        }
    }
    bool skip(char wanted) {
        skipBlanks();
        if (rest_.empty() || rest_.front() != wanted) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }
    void require(char wanted) {
        if (!skip(wanted)) {
            fail();
        }
    }
    char take() {
        if (rest_.empty()) {
            fail();
        }
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    void value(RowMember& member) {
        using Kind = RowMember::Kind;
        if (skip('"')) {
            member.kind = Kind::Text;
            member.text = text();
            return;
        }
        const std::string_view word = rest_.substr(0, std::min(rest_.find_first_of(" ,}\r"), rest_.size()));
        if (word == "null") {
            member.kind = Kind::Null;
        } else if (word == "true") {
            member.kind = Kind::Yes;
        } else if (word == "false") {
            member.kind = Kind::No;
        } else if (!word.empty() && word.find_first_not_of("0123456789+-.eE") == word.npos) {
            member.kind = Kind::Number;
            member.text = platform::fromUtf8(word);
        } else {
            fail();
        }
        rest_.remove_prefix(word.size());
    }

    /// Behind the opening quote, to behind the closing one.
    std::u16string text() {
        std::u16string text;
        for (;;) {
            const std::size_t plain = std::min(rest_.find_first_of("\"\\"), rest_.size());
            text += platform::fromUtf8(rest_.substr(0, plain));
            rest_.remove_prefix(plain);
            if (take() == '"') {
                return text;
            }
            text += escaped(take());
        }
    }

    char16_t escaped(char letter) {
        switch (letter) {
        case 'n':
            return u'\n';
        case 'r':
            return u'\r';
        case 't':
            return u'\t';
        case 'b':
            return u'\b';
        case 'f':
            return u'\f';
        case '"':
        case '\\':
        case '/':
            return static_cast<char16_t>(letter);
        case 'u':
            break;
        default:
            fail();
        }
        const std::string_view digits = rest_.substr(0, 4);
        std::uint16_t unit = 0;
        const auto [stop, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
        if (fault != std::errc() || digits.size() != 4 || stop != digits.data() + 4) {
            fail();
        }
        rest_.remove_prefix(4);
        return unit;
    }

    std::string_view rest_;
};

template <class Number>
std::optional<Number> parsed(const std::u16string& text) {
    const std::string digits = platform::toUtf8(text);
    Number number{};
    const auto [stop, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return fault == std::errc() && stop == digits.data() + digits.size() ? std::optional(number) : std::nullopt;
}

template <class Number>
std::optional<ado::Value> numberOf(const RowMember& member) {
    const auto number = member.kind == RowMember::Kind::Number ? parsed<Number>(member.text) : std::nullopt;
    return number ? std::optional<ado::Value>(*number) : std::nullopt;
}

std::optional<ado::Value> dateOf(const RowMember& member) {
    const auto time = platform::parseDateTime(member.text);
    return time ? std::optional<ado::Value>(ado::fromDateTime(*time)) : std::nullopt;
}

std::optional<ado::Value> binaryOf(const RowMember& member) {
    auto bytes = fromBase64(platform::toUtf8(member.text));
    return bytes ? std::optional<ado::Value>(std::move(*bytes)) : std::nullopt;
}

std::optional<ado::Value> readAs(ado::FieldType type, const RowMember& member) {
    using Kind = RowMember::Kind;
    using enum ado::FieldType;
    switch (type) {
    case YesNo:
        return member.kind == Kind::Yes || member.kind == Kind::No ? std::optional<ado::Value>(member.kind == Kind::Yes)
                                                                   : std::nullopt;
    case Byte:
        return numberOf<std::uint8_t>(member);
    case Integer:
        return numberOf<std::int16_t>(member);
    case Long:
        return numberOf<std::int32_t>(member);
    case BigInteger:
        return numberOf<std::int64_t>(member);
    case Single:
        return numberOf<float>(member);
    case Double:
        return numberOf<double>(member);
    case DateTime:
        return dateOf(member);
    case Binary:
    case LongBinary:
        return binaryOf(member);
    case Currency: // kept as texts, which the database reads digit by digit
    case Numeric:
    case Guid:
    case Text:
    case Memo:
        return member.kind == Kind::Text ? std::optional<ado::Value>(member.text) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::vector<RowMember> readRowLine(std::string_view line) {
    return LineParser(line).object();
}

const RowMember* findMember(const std::vector<RowMember>& members, std::u16string_view name) noexcept {
    const auto found =
        std::find_if(members.begin(), members.end(), [name](const RowMember& member) { return member.name == name; });
    return found == members.end() ? nullptr : &*found;
}

ado::Value valueOf(const RowMember& member, const ado::FieldInfo& field) {
    if (member.kind == RowMember::Kind::Null) {
        return ado::Null{};
    }
    auto value = readAs(field.type, member);
    if (!value) {
        throw RowLineError("column " + platform::toUtf8(field.name) + " has another type now");
    }
    return *std::move(value);
}

} // namespace kelb::jobs
