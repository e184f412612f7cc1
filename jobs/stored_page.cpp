#include "jobs/stored_page.h"

namespace kelb::jobs {
namespace {

constexpr std::size_t kLongestPath = 260;

} // namespace

bool canBePath(std::u16string_view content) noexcept {
    return content.size() <= kLongestPath && content.find_first_of(u"\r\n") == content.npos;
}

std::u16string storedPage(std::u16string_view content, PageFiles& files) {
    std::u16string page;
    if (canBePath(content) && files.read(content, page)) {
        return page;
    }
    return std::u16string(content);
}

} // namespace kelb::jobs
