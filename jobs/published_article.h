#pragma once

#include <string>
#include <string_view>

namespace kelb::jobs {

/// The body of an article record as HTML: as it stands, since the jobs write it as a fragment of HTML (`<br>` between
/// lines, line breaks that count as blanks); a body without a single tag keeps its line breaks.
[[nodiscard]] std::u16string publishedBody(std::u16string_view body);

} // namespace kelb::jobs
