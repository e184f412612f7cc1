#pragma once

#include "jobs/configuration.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace kelb::jobs {

/// Between which texts title and body of a site's articles stand.
struct ArticleSite {
    enum class TitleOperation {
        Markers,   ///< extTitle with the markers of this row
        MarkerList ///< extTitleV1 with [Articles] row5TitleStart… and row5TitleEnd…
    };
    std::u16string_view titleStart, titleEnd, contentStart, contentEnd;
    TitleOperation title;
};

inline constexpr std::size_t kArticleSiteCount = 5;

/// The article sites that are known, each by the part of its addresses that the settings name.
class ArticleSites {
public:
    /// Throws SettingError when [Articles] names none of them.
    explicit ArticleSites(const Configuration& configuration);

    /// The first site whose part the address, given in lower case, contains; nullptr for none.
    const ArticleSite* of(std::u16string_view lowerCaseUrl) const;

private:
    std::array<std::u16string, kArticleSiteCount> parts_; ///< in lower case; "" for a site that is not named
};

} // namespace kelb::jobs
