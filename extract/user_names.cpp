#include "extract/user_names.h"

#include "platform/code_page.h"
#include "platform/path_map.h"
#include "platform/text.h"

#include <stdexcept>

namespace kelb::extract {

UserNames UserNames::read(platform::FileSystem& files, std::u16string_view applicationFolder) {
    const std::u16string text =
        platform::decode936(files.readFile(platform::joinPath(applicationFolder, u"userNames.txt")));
    const std::vector<std::u16string_view> pieces = platform::split(text, u"|");
    return UserNames(std::vector<std::u16string>(pieces.begin(), pieces.end()));
}

const std::u16string& UserNames::giveRndName(platform::Random& random) const {
    if (names_.empty()) {
        throw std::out_of_range("no user names: userNames.txt is empty or was not read");
    }
    random.reseed();
    // The factor is the last index, not the count: the last name is never drawn. Kept.
    const auto lastIndex = static_cast<double>(names_.size() - 1);
    return names_[static_cast<std::size_t>(random.next() * lastIndex)];
}

} // namespace kelb::extract
