#include "ado/connection_string.h"

#include "platform/letter_case.h"

#include <algorithm>

namespace kelb::ado {

namespace {

constexpr std::u16string_view kBlanks = u" \t\r\n";

std::u16string_view trimmed(std::u16string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::u16string_view() : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

/// Reads `key=value` by `key=value`.
class PartReader {
public:
    explicit PartReader(std::u16string_view text) : text_(text) {}

    bool next(std::u16string& key, std::u16string& value) {
        at_ = text_.find_first_not_of(u"; \t\r\n", at_);
        if (at_ == text_.npos) {
            return false;
        }
        const std::size_t end = std::min(text_.find(u';', at_), text_.size());
        const std::size_t sign = text_.substr(0, end).find(u'=', at_);
        if (sign == text_.npos) { // a word without a value is kept, so that messages can show it
            key = trimmed(text_.substr(at_, end - at_));
            value.clear();
            at_ = end;
            return true;
        }
        key = trimmed(text_.substr(at_, sign - at_));
        at_ = sign + 1;
        readValue(value);
        return true;
    }

private:
    void readValue(std::u16string& value) {
        const std::size_t first = text_.find_first_not_of(kBlanks, at_);
        const char16_t opening = first == text_.npos ? u';' : text_[first];
        if ((opening == u'"' || opening == u'\'') && readQuoted(value, first, opening)) {
            return;
        }
        std::size_t end = at_;
        // Drivers of ODBC: a name in braces may hold ";"; the braces stay part of the value. One that is never closed
        // is an ordinary character, or it would swallow the password and show it in messages.
        if (const std::size_t closing = text_.find(u'}', at_); opening == u'{' && closing != text_.npos) {
            end = closing;
        }
        end = std::min(text_.find(u';', end), text_.size());
        value = trimmed(text_.substr(at_, end - at_));
        at_ = end;
    }

    /// False when the closing quote is missing: the quote is then an ordinary character.
    bool readQuoted(std::u16string& value, std::size_t first, char16_t quote) {
        value.clear();
        for (std::size_t i = first + 1; i < text_.size(); ++i) {
            if (text_[i] != quote) {
                value += text_[i];
            } else if (i + 1 < text_.size() && text_[i + 1] == quote) {
                value += text_[i++];
            } else {
                at_ = std::min(text_.find(u';', i), text_.size());
                return true;
            }
        }
        return false;
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
};

bool isPassword(std::u16string_view key) {
    return platform::equalNoCase(key, u"Password") || platform::equalNoCase(key, u"Pwd") ||
           platform::equalNoCase(key, u"Jet OLEDB:Database Password");
}

} // namespace

ConnectionString::ConnectionString(std::u16string_view text) {
    PartReader reader(text);
    std::u16string key, value;
    while (reader.next(key, value)) {
        parts_.emplace_back(key, value);
    }
}

std::u16string ConnectionString::value(std::u16string_view key) const {
    const bool firstWins = platform::equalNoCase(key, u"Provider");
    const std::u16string* found = nullptr;
    for (const auto& [name, text] : parts_) {
        if (platform::equalNoCase(name, key) && (found == nullptr || !firstWins)) {
            found = &text;
        }
    }
    return found == nullptr ? std::u16string() : *found;
}

bool ConnectionString::has(std::u16string_view key) const {
    for (const auto& part : parts_) {
        if (platform::equalNoCase(part.first, key)) {
            return true;
        }
    }
    return false;
}

void ConnectionString::add(std::u16string_view key, std::u16string_view value) {
    parts_.emplace_back(key, value);
}

std::u16string ConnectionString::shown() const {
    std::u16string text;
    for (const auto& [key, value] : parts_) {
        text += text.empty() ? u"" : u";";
        text += key;
        if (!value.empty()) {
            text += u"=" + (isPassword(key) ? std::u16string(u"***") : value);
        }
    }
    return text;
}

std::u16string jetConnectionString(std::u16string_view path) {
    std::u16string text = u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
    const bool plain = path.find(u';') == path.npos && !path.starts_with(u'"') && !path.starts_with(u'\'');
    // A path that is a connection string already is joined as it stands: the last Data Source is then the file meant.
    constexpr std::u16string_view kProvider = u"Provider=";
    if (plain || platform::equalNoCase(path.substr(0, kProvider.size()), kProvider)) {
        return text.append(path);
    }
    text += u'"'; // kept apart from its neighbours; quotes inside are doubled
    for (const char16_t unit : path) {
        text.append(unit == u'"' ? 2 : 1, unit);
    }
    return text + u'"';
}

} // namespace kelb::ado
