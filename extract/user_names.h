#pragma once

#include "platform/file_system.h"
#include "platform/random.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelb::extract {

/// The user names that answers are credited to.
class UserNames {
public:
    UserNames() = default;
    explicit UserNames(std::vector<std::u16string> names) : names_(std::move(names)) {}

    /// Reads "userNames.txt" (code page 936, names between "|") of the application folder.
    /// Throws platform::FileError when it cannot be read.
    static UserNames read(platform::FileSystem& files, std::u16string_view applicationFolder);

    const std::vector<std::u16string>& all() const noexcept { return names_; }

    /// A name drawn after seeding anew; never the last one unless it is the only one.
    /// Throws std::out_of_range for an empty list.
    const std::u16string& giveRndName(platform::Random& random) const;

private:
    std::vector<std::u16string> names_;
};

} // namespace kelb::extract
