#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

/// The place of a walk over stored page files, kept in the file "CounterResp.txt" of their base folder: one line,
/// sub-folder number and file number with a comma between them.
namespace kelb::store {

inline constexpr std::u16string_view kCounterFile = u"CounterResp.txt";

struct PagePlace {
    std::int16_t folderNo = 0; ///< the sub-folder of this name
    std::int16_t fileNo = 0;   ///< calls that it has answered
    friend bool operator==(const PagePlace&, const PagePlace&) = default;
};

/// The counter file is there and holds no place. what() names it and says what to do.
class CounterError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// `base` ends in a separator. No value when there is no counter file. Throws CounterError, platform::FileError.
[[nodiscard]] std::optional<PagePlace> readPlace(platform::FileSystem& files, std::u16string_view base);
/// A kill leaves the old place or the new one. Throws platform::FileError.
void writePlace(platform::FileSystem& files, std::u16string_view base, PagePlace place);
} // namespace kelb::store
