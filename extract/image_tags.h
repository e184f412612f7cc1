#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kelb::extract {

/// Where an image tag stands in a page: from "<img" (any case) to behind the next ">".
struct ImageTag {
    std::size_t begin, end;
};

/// The first "<img" at or behind `from` with its ">"; no value when either is missing.
[[nodiscard]] std::optional<ImageTag> findImageTag(std::u16string_view html, std::size_t from = 0);

/// Takes the first image tag, puts what `replacement` says in the place of its every occurrence, and so on until there
/// is no image tag. `replacement` is asked once for each such tag, in this order; what it gives must hold no "<img".
/// The page is walked once; only image tags that hold a further "<img" before their ">" cost more.
[[nodiscard]] std::u16string
replaceImageTags(std::u16string_view html, const std::function<std::u16string(std::u16string_view tag)>& replacement);

} // namespace kelb::extract
