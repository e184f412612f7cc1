#include "extract/Prog_Kelb.h"

#include "platform/letter_case.h"
#include "platform/text.h"

namespace kelb::extract::Prog_Kelb {

namespace {

constexpr std::size_t kShortestPageUrl = 11;
constexpr std::size_t kQueryStart = 17; // the last position, from 1, at which a "?" stays in the page's address
constexpr std::size_t kHostStart = 7;   // behind "http://"

/// A page address in two: everything before its first single "/", and the folders behind it, each with its "/".
struct PageAddress {
    std::u16string_view host;
    std::u16string_view path; ///< begins with "/"
};

PageAddress split(std::u16string_view pageUrl) {
    // A "?" that early stays and may end up among the folders. Kept.
    if (const std::size_t query = pageUrl.find(u'?'); query != pageUrl.npos && query + 1 > kQueryStart) {
        pageUrl = pageUrl.substr(0, query);
    }
    const std::size_t slash = pageUrl.find(u'/', kHostStart);
    if (slash != pageUrl.npos && slash + 1 < pageUrl.size()) {
        return {pageUrl.substr(0, slash), pageUrl.substr(slash)};
    }
    if (pageUrl.back() == u'/') {
        pageUrl.remove_suffix(1);
    }
    return {pageUrl, u"/default.htm"};
}

/// The page's folders without its last `count` parts; "" unless there are more than that, as at least one part must
/// be left for a folder to be taken.
std::u16string_view withoutLast(std::u16string_view path, std::size_t count) {
    for (; count > 0; --count) {
        path = path.substr(0, path.rfind(u'/'));
        if (path.empty()) {
            return {};
        }
    }
    return path;
}

} // namespace

std::u16string getFullURL(std::u16string_view pageUrl, std::u16string_view link) {
    if (pageUrl.size() < kShortestPageUrl) {
        return {};
    }
    if (link.find(u"://") != link.npos && !platform::equalNoCase(platform::left(link, 4), u"http")) {
        return {};
    }
    if (platform::equalNoCase(platform::left(link, kHostStart), u"http://")) {
        return std::u16string(link);
    }
    const PageAddress page = split(pageUrl);
    std::u16string address(page.host);
    if (link.starts_with(u"../../")) {
        address += withoutLast(page.path, 3);
        address += link.substr(5);
    } else if (link.starts_with(u"../")) {
        address += withoutLast(page.path, 2);
        address += link.substr(2);
    } else if (link.starts_with(u'/')) {
        address += link;
    } else {
        address += withoutLast(page.path, 1);
        address += u'/';
        address += link;
    }
    return address;
}

std::size_t InStrNoCase(std::int64_t start, std::u16string_view text, std::u16string_view wanted) {
    if (start < 1 || static_cast<std::uint64_t>(start) > text.size()) {
        return 0;
    }
    const std::size_t found = platform::findNoCase(text, wanted, static_cast<std::size_t>(start - 1));
    return found == text.npos ? 0 : found + 1;
}

} // namespace kelb::extract::Prog_Kelb
