#include "store/page_counter.h"

#include "platform/utf8.h"

#include <charconv>

namespace kelb::store {
namespace {

constexpr std::size_t kLongestLine = 32; ///< bytes; what is longer is no counter file

std::u16string counterPath(std::u16string_view base) {
    return std::u16string(base) + std::u16string(kCounterFile);
}

/// Decimal digits up to 32,767, blanks around them passed over.
std::optional<std::int16_t> numberIn(std::string_view text) {
    while (text.starts_with(' ')) {
        text.remove_prefix(1);
    }
    while (text.ends_with(' ')) {
        text.remove_suffix(1);
    }
    std::int16_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0) {
        return std::nullopt;
    }
    return number;
}

std::optional<PagePlace> placeIn(std::string_view line) {
    const std::size_t comma = line.find(',');
    if (comma == line.npos) {
        return std::nullopt;
    }
    const auto folder = numberIn(line.substr(0, comma));
    const auto file = numberIn(line.substr(comma + 1));
    return folder && file ? std::optional(PagePlace{*folder, *file}) : std::nullopt;
}

} // namespace

std::optional<PagePlace> readPlace(platform::FileSystem& files, std::u16string_view base) {
    const std::u16string path = counterPath(base);
    if (!files.fileExists(path)) {
        return std::nullopt;
    }
    const std::string front = files.readFront(path, kLongestLine);
    const std::optional<PagePlace> place = placeIn(std::string_view(front).substr(0, front.find_first_of("\r\n")));
    if (!place) {
        throw CounterError("The counter file " + platform::toUtf8(path) +
                           " does not hold two numbers with a comma between them. Correct it, or begin the folder "
                           "anew with: kelb counter reset");
    }
    return place;
}

void writePlace(platform::FileSystem& files, std::u16string_view base, PagePlace place) {
    files.replaceFile(counterPath(base), std::to_string(place.folderNo) + "," + std::to_string(place.fileNo) + "\r\n");
}

} // namespace kelb::store
