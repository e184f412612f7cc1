#pragma once

#include <string>

namespace kelb::extract {

/// The four texts between which the article extractors look; a job sets them before each page.
struct ArticleMarkers {
    std::u16string titleStart, titleEnd, contentStart, contentEnd;
};

} // namespace kelb::extract
