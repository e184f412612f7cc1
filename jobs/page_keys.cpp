#include "jobs/page_keys.h"

#include "jobs/job_error.h"
#include "platform/letter_case.h"
#include "platform/like.h"

#include <algorithm>

namespace kelb::jobs {
namespace {

bool holdsAny(std::u16string_view url, const std::vector<std::u16string>& fragments) {
    return std::any_of(fragments.begin(), fragments.end(),
                       [url](const std::u16string& fragment) { return url.find(fragment) != url.npos; });
}

} // namespace

PageKeys::PageKeys(const Configuration& configuration)
    : configuration_(configuration), publicForum_(platform::lowerCase(configuration.text(Setting::DedupPublicForum))) {
    if (configuration.texts(Setting::DedupForumSites).empty() &&
        configuration.texts(Setting::DedupArticleSites).empty() && publicForum_.empty()) {
        throw SettingError("no site is set whose pages are compared: set " + settingName(Setting::DedupForumSites) +
                           " (" + std::string(settingInfo(Setting::DedupForumSites).meaning) + "), " +
                           settingName(Setting::DedupArticleSites) + " or " + settingName(Setting::DedupPublicForum) +
                           " in Kelb.ini");
    }
}

PageKeys::Site PageKeys::siteOf(std::u16string_view url) const {
    if (holdsAny(url, configuration_.texts(Setting::DedupForumSites))) {
        return Site::Forum;
    }
    if (holdsAny(url, configuration_.texts(Setting::DedupArticleSites))) {
        return Site::Article;
    }
    // Only the public forum's fragment is looked for in the address in lower case. Kept.
    const bool isPublic = !publicForum_.empty() && platform::lowerCase(url).find(publicForum_) != url.npos;
    return isPublic ? Site::PublicForum : Site::Other;
}

std::optional<std::u16string_view> PageKeys::keyOf(std::u16string_view url, Site site) {
    if (site != Site::Forum) {
        return url;
    }
    if (!platform::matchesPattern(url, u"*thread*-[1-9]-*")) {
        return std::nullopt;
    }
    return frontToLastDash(url);
}

bool PageKeys::isRouter(std::u16string_view url) const {
    const std::u16string& router = configuration_.text(Setting::DedupRouter);
    return !router.empty() && url.starts_with(router);
}

std::u16string_view frontToLastDash(std::u16string_view url) noexcept {
    const std::size_t dash = url.rfind(u'-');
    return dash == url.npos ? std::u16string_view() : url.substr(0, dash + 1);
}

} // namespace kelb::jobs
