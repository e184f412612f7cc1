#include "platform/page_text.h"

#include "platform/code_page.h"
#include "platform/letter_case.h"
#include "platform/utf8.h"

namespace kelb::platform {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool readsAsUtf8(std::string_view bytes) noexcept {
    if (bytes.starts_with(kByteOrderMark)) {
        return true;
    }
    const Utf8Check check = checkUtf8(bytes);
    return check.valid && check.multiByte;
}

} // namespace

std::optional<PageEncoding> parsePageEncoding(std::u16string_view name) noexcept {
    if (equalNoCase(name, u"auto")) {
        return PageEncoding::Auto;
    }
    if (equalNoCase(name, u"936")) {
        return PageEncoding::CodePage936;
    }
    if (equalNoCase(name, u"utf-8")) {
        return PageEncoding::Utf8;
    }
    return std::nullopt;
}

PageEncoding encodingOf(std::string_view front, PageEncoding encoding) noexcept {
    if (encoding != PageEncoding::Auto) {
        return encoding;
    }
    constexpr std::size_t kLongestTail = 3; // bytes behind the first one of a character
    const auto isTail = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
    const auto isFirst = [](char byte) { return static_cast<unsigned char>(byte) >= 0xC0U; };
    std::string_view whole = front;
    for (std::size_t i = 0; i < kLongestTail && !whole.empty() && isTail(whole.back()); ++i) {
        whole.remove_suffix(1);
    }
    if (!whole.empty() && isFirst(whole.back())) {
        whole.remove_suffix(1);
    }
    return readsAsUtf8(front) || readsAsUtf8(whole) ? PageEncoding::Utf8 : PageEncoding::CodePage936;
}

std::u16string decodePage(std::string_view bytes, PageEncoding encoding) {
    const bool utf8 = encoding == PageEncoding::Utf8 || (encoding == PageEncoding::Auto && readsAsUtf8(bytes));
    if (!utf8) {
        return decode936(bytes);
    }
    if (bytes.starts_with(kByteOrderMark)) {
        bytes.remove_prefix(kByteOrderMark.size());
    }
    return fromUtf8(bytes);
}

} // namespace kelb::platform
