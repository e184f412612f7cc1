#include "rewrite/set_code_list.h"

#include "platform/code_page.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <stdexcept>

namespace kelb::rewrite {

namespace {

constexpr std::u16string_view kLineEnd = u"\r\n";
constexpr std::u16string_view kBlockEnd = u"\r\n\r\n";
constexpr std::size_t kLongCode = 12; ///< the first length that is no code

[[noreturn]] void refuse(std::u16string_view path, const std::string& fault) {
    throw std::runtime_error("the file of set codes " + platform::toUtf8(path) + " " + fault);
}

std::u16string entry(std::u16string_view code, std::u16string_view heading) {
    std::u16string text(code);
    return text.append(u"(").append(heading).append(u")");
}

} // namespace

std::vector<std::u16string> readSetCodes(platform::FileSystem& files, std::u16string_view path) {
    const std::u16string text = platform::decode936(files.readFile(path));
    std::vector<std::u16string> entries;
    std::size_t number = 0;
    for (const std::u16string_view block : platform::split(text, kBlockEnd)) {
        ++number;
        const std::size_t headingEnd = block.find(kLineEnd);
        if (headingEnd == block.npos) {
            refuse(path, "has only one line in block " + std::to_string(number) +
                             ": write a heading and below it the codes, and no blank line at the end of the file");
        }
        const std::u16string codes = platform::replaceAll(block.substr(headingEnd + kLineEnd.size()), kLineEnd, u" ");
        for (const std::u16string_view code : platform::split(codes, u" ")) {
            if (code.empty() || code.size() >= kLongCode) {
                continue;
            }
            if (entries.size() == kMostSetCodes) {
                refuse(path, "has more than " + std::to_string(kMostSetCodes) + " codes: take some out");
            }
            entries.push_back(entry(code, block.substr(0, headingEnd)));
        }
    }
    return entries;
}

} // namespace kelb::rewrite
