#include "jobs/article_sites.h"

#include "jobs/job_error.h"
#include "platform/letter_case.h"

#include <algorithm>

namespace kelb::jobs {
namespace {

using enum ArticleSite::TitleOperation;

constexpr std::array<ArticleSite, kArticleSiteCount> kSites{{
    {u"<td><h1>", u"</h1></td>", u"<td id=\"text\">", u"<p align=\"center\" class=\"pageLink\">", Markers},
    {u"<h1 class=\"aTitle\">", u"</h1>", u"<!--IWMS_AD_END-->", u"<span style=\"color: rgb(255, 0, 255);", Markers},
    {u"<div id=\"mainNewsTitles\"><h1>", u"</h1>", u"<div class=\"mainNewsContent\">", u"<div class=\"mainNewsCount\">",
     Markers},
    {u"<h1 class=\"info_title\">", u"</h1>", u"<td class=\"info_content\">", u"<div class=\"content_page\">", Markers},
    {u"<h1>", u"</h1>", u"<div class=\"main\" id=\"main_content\">", u"<div class=\"related\">", MarkerList},
}};

} // namespace

ArticleSites::ArticleSites(const Configuration& configuration) {
    const std::vector<std::u16string>& given = configuration.texts(Setting::ArticlesSites);
    std::transform(given.begin(), given.end(), parts_.begin(), platform::lowerCase);
    if (std::all_of(parts_.begin(), parts_.end(), [](const std::u16string& part) { return part.empty(); })) {
        throw SettingError("none of the settings " + settingName(Setting::ArticlesSites) + " to site5 is there (" +
                           std::string(settingInfo(Setting::ArticlesSites).meaning) + "); set one in Kelb.ini");
    }
}

const ArticleSite* ArticleSites::of(std::u16string_view lowerCaseUrl) const {
    for (std::size_t i = 0; i < kSites.size(); ++i) {
        if (!parts_[i].empty() && lowerCaseUrl.find(parts_[i]) != lowerCaseUrl.npos) {
            return &kSites[i];
        }
    }
    return nullptr;
}

} // namespace kelb::jobs
