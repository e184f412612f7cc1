#include "jobs/row_text.h"

#include "jobs/base64.h"
#include "platform/date_time.h"
#include "platform/utf8.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <variant>

namespace kelb::jobs {
namespace {

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

template <class Number>
std::string digitsOf(Number number) {
    std::array<char, 64> digits{};
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr};
}

/// How a value that is no text stands in a line: bare, or between quotes.
struct Plain {
    std::string text;
    bool bare = false;
};

Plain plainOf(const ado::Value& value) {
    const auto asText = [&value] { return Plain{platform::toUtf8(ado::toText(value)), false}; };
    const auto real = [](auto number) {
        return Plain{std::isfinite(number) ? digitsOf(number)
                     : std::isnan(number)  ? "NaN"
                                           : "Infinity",
                     std::isfinite(number)};
    };
    return std::visit(Overloaded{
                          [](ado::Null) {
                              return Plain{"null", true};
                          },
                          [](bool flag) {
                              return Plain{flag ? "true" : "false", true};
                          },
                          [](std::uint8_t number) {
                              return Plain{digitsOf(static_cast<int>(number)), true};
                          },
                          [](std::int16_t number) {
                              return Plain{digitsOf(number), true};
                          },
                          [](std::int32_t number) {
                              return Plain{digitsOf(number), true};
                          },
                          [](std::int64_t number) {
                              return Plain{digitsOf(number), true};
                          },
                          [&](float number) { return real(number); },
                          [&](double number) { return real(number); },
                          [&](const ado::OleDate& date) {
                              const auto time = platform::fromSerial(date.days);
                              return time ? Plain{platform::toIso(*time), false} : asText();
                          },
                          [](const ado::Binary& bytes) {
                              return Plain{toBase64(bytes), false};
                          },
                          [&](const auto&) { return asText(); },
                      },
                      value);
}

} // namespace

void appendJsonText(std::u16string_view text, std::string& out) {
    const auto escape = [&out](char16_t unit) {
        constexpr std::string_view kHex = "0123456789abcdef";
        out += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4) {
            out += kHex[static_cast<std::size_t>(unit >> shift & 15)];
        }
    };
    const auto isHigh = [](char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
    const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
    out += '"';
    std::size_t copied = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (isHigh(unit) && i + 1 < text.size() && isLow(text[i + 1])) {
            ++i;
            continue;
        }
        if (unit >= u' ' && unit != u'"' && unit != u'\\' && !isHigh(unit) && !isLow(unit)) {
            continue;
        }
        platform::toUtf8(text.substr(copied, i - copied), out);
        copied = i + 1;
        switch (unit) {
        case u'"':
            out += "\\\"";
            break;
        case u'\\':
            out += "\\\\";
            break;
        case u'\n':
            out += "\\n";
            break;
        case u'\r':
            out += "\\r";
            break;
        case u'\t':
            out += "\\t";
            break;
        default:
            escape(unit);
        }
    }
    platform::toUtf8(text.substr(copied), out);
    out += '"';
}

std::string jsonText(std::u16string_view text) {
    std::string json;
    appendJsonText(text, json);
    return json;
}

void appendJson(const ado::Value& value, std::string& out) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        appendJsonText(*text, out);
        return;
    }
    const Plain plain = plainOf(value);
    if (plain.bare) {
        out += plain.text;
    } else {
        out += '"';
        out += plain.text; // digits, signs and letters only: nothing to escape
        out += '"';
    }
}

void appendJsonRow(const ado::Recordset& rows, std::string& out) {
    const std::size_t count = rows.fieldCount();
    for (std::size_t i = 0; i < count; ++i) {
        out += i == 0 ? "{" : ", ";
        appendJsonText(rows.field(i).name, out);
        out += ": ";
        appendJson(rows.value(i), out);
    }
    out += count == 0 ? "{}" : "}";
}

void appendCsvText(std::u16string_view text, std::string& out) {
    if (!text.empty() && text.find_first_of(u"\",\r\n") == text.npos) {
        platform::toUtf8(text, out);
        return;
    }
    out += '"';
    for (std::size_t quote; (quote = text.find(u'"')) != text.npos; text.remove_prefix(quote + 1)) {
        platform::toUtf8(text.substr(0, quote), out);
        out += "\"\"";
    }
    platform::toUtf8(text, out);
    out += '"';
}

void appendCsv(const ado::Value& value, std::string& out) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        appendCsvText(*text, out);
    } else if (!ado::isNull(value)) {
        out += plainOf(value).text;
    }
}

std::u16string plainText(const ado::Value& value) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        return *text;
    }
    return ado::isNull(value) ? std::u16string() : platform::fromUtf8(plainOf(value).text);
}

} // namespace kelb::jobs
