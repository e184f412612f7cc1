#include "platform/text.h"

#include <array>
#include <cassert>
#include <charconv>

namespace kelb::platform {

std::vector<std::u16string_view> split(std::u16string_view text, std::u16string_view separator) {
    assert(!separator.empty());
    std::vector<std::u16string_view> pieces;
    if (text.empty()) {
        return pieces;
    }
    std::size_t start = 0;
    for (std::size_t end = text.find(separator); end != text.npos; end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + separator.size();
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::u16string join(const std::vector<std::u16string_view>& pieces, std::u16string_view separator) {
    std::u16string joined;
    if (pieces.empty()) {
        return joined;
    }
    std::size_t size = separator.size() * (pieces.size() - 1);
    for (const auto piece : pieces) {
        size += piece.size();
    }
    joined.reserve(size);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i != 0) {
            joined += separator;
        }
        joined += pieces[i];
    }
    return joined;
}

std::u16string replaceAll(std::u16string_view text, std::u16string_view wanted, std::u16string_view with) {
    std::size_t found = wanted.empty() ? text.npos : text.find(wanted);
    if (found == text.npos) {
        return std::u16string(text);
    }
    std::u16string replaced;
    replaced.reserve(text.size() + (with.size() > wanted.size() ? with.size() : 0));
    std::size_t start = 0;
    for (; found != text.npos; found = text.find(wanted, start)) {
        replaced += text.substr(start, found - start);
        replaced += with;
        start = found + wanted.size();
    }
    replaced += text.substr(start);
    return replaced;
}

void replaceAllIn(std::u16string& text, std::u16string_view wanted, std::u16string_view with) {
    if (!wanted.empty() && text.find(wanted) != text.npos) {
        text = replaceAll(text, wanted, with);
    }
}

std::u16string_view trimBlanks(std::u16string_view text) noexcept {
    const std::size_t first = text.find_first_not_of(u' ');
    if (first == text.npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

std::u16string_view left(std::u16string_view text, std::size_t count) noexcept {
    return text.substr(0, count);
}

std::u16string_view right(std::u16string_view text, std::size_t count) noexcept {
    return count >= text.size() ? text : text.substr(text.size() - count);
}

std::u16string number(long long value) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

std::u16string quoted(std::u16string_view text) {
    return replaceAll(text, u"'", u"''");
}

} // namespace kelb::platform
