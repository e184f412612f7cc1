#pragma once

#include "platform/ui_pump.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelb::extract {

/// Learns boilerplate: a short line that was seen three times, on one page or on several, belongs to the site and not
/// to the article.
class ClsWebExtractor {
public:
    /// Lines that hold `siteName` are the operator's own and go; "" for none. `pump` may be nullptr.
    explicit ClsWebExtractor(std::u16string siteName, platform::UiPump* pump = nullptr)
        : siteName_(std::move(siteName)), pump_(pump) {}

    void setSiteName(std::u16string siteName) { siteName_ = std::move(siteName); }

    /// One page's lines in page order. `outFirstLine`: the first line that is left, "" without one; `outContent`: those
    /// behind it, joined with "<br>", left as it is where there are none. The result is always false. Kept
    bool extC(const std::vector<std::u16string>& lines, std::u16string& outFirstLine, std::u16string& outContent);

    std::size_t linesKnown() const noexcept { return counts_.size(); }

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view text) const noexcept {
            return std::hash<std::u16string_view>()(text);
        }
    };

    std::u16string_view kept(std::u16string_view line);
    void prune();

    std::u16string siteName_;
    platform::UiPump* pump_;
    std::int64_t calls_ = 0;
    std::unordered_map<std::u16string, std::int64_t, Hash, std::equal_to<>> counts_;
};

} // namespace kelb::extract
