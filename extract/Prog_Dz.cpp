#include "extract/Prog_Dz.h"

#include "platform/letter_case.h"
#include "platform/text.h"

#include <algorithm>

namespace kelb::extract::Prog_Dz {

std::u16string localPagePath(LanMode mode, std::u16string_view lanFolder, std::u16string_view storedPath) {
    if (mode == LanMode::Off) {
        return {};
    }
    std::u16string_view path = platform::trimBlanks(storedPath);
    path.remove_prefix(std::min<std::size_t>(path.size(), 3));
    return std::u16string(lanFolder).append(path);
}

std::u16string extTitleTag(std::u16string_view html) {
    constexpr std::u16string_view kOpening = u"<title>";
    const std::size_t start = platform::findNoCase(html, kOpening);
    if (start == html.npos) {
        return {};
    }
    const std::size_t from = start + kOpening.size();
    const std::size_t end = platform::findNoCase(html, u"</title>", from);
    return end == html.npos ? std::u16string() : std::u16string(html.substr(from, end - from));
}

} // namespace kelb::extract::Prog_Dz
