#pragma once

#include "jobs/configuration.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelb::jobs {

/// What the [Dedup] settings say of a crawled address.
class PageKeys {
public:
    /// `configuration` outlives it. Throws SettingError when no site is set: nothing would be recognised.
    explicit PageKeys(const Configuration& configuration);

    enum class Site { Forum, Article, PublicForum, Other };
    Site siteOf(std::u16string_view url) const;

    /// Pages with one key are copies of each other; no value for a forum's address that is not of a thread page. All
    /// other sites have the whole address. The view points into `url`.
    static std::optional<std::u16string_view> keyOf(std::u16string_view url, Site site);

    /// The page of the LAN router, on which the crawler landed while the network was down.
    bool isRouter(std::u16string_view url) const;

private:
    const Configuration& configuration_;
    std::u16string publicForum_; ///< in lower case
};

/// Up to and including the last "-", literally: pages 1 and 2 of a thread thus have keys of their own. "" without one.
[[nodiscard]] std::u16string_view frontToLastDash(std::u16string_view url) noexcept;

} // namespace kelb::jobs
