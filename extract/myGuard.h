#pragma once

#include <string>

namespace kelb::extract {

/// The ends of host names that count as addresses, parted by "|". No operation asks for them yet.
class myGuard {
public:
    const std::u16string& suffixes() const noexcept { return suffixes_; }

private:
    std::u16string suffixes_ = u".com|.net|.org|.gov|.edu|.cn";
};

} // namespace kelb::extract
