#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace kelb::platform {

/// The whole text is of the regular expression. GoogleTest's own matcher knows hardly any of them on Windows.
MATCHER_P(MatchesPattern, pattern, "matches " + std::string(pattern)) {
    return std::regex_match(arg, std::regex(pattern));
}

} // namespace kelb::platform
