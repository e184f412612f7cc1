// The overflow files of ClsStoreKeeper.

#include "platform/code_page.h"
#include "platform/file_system.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "store/ClsStoreKeeper.h"

#include <limits>
#include <stdexcept>

namespace kelb::store {

std::u16string ClsStoreKeeper::overflowPath(std::u16string_view extension) const {
    std::u16string path = platform_.applicationFolder;
    path += u"\\TestRec\\Store";
    path += platform::number(fileNumber_);
    path += extension.empty() ? std::u16string_view(u".txt") : extension;
    return path;
}

// The number is not advanced after writing: the next call finds this file and moves on. It lives as long as the
// instance, so each file of a run is looked for once.
void ClsStoreKeeper::store2Disk(std::u16string_view content, std::u16string_view caption, std::u16string_view extension,
                                platform::UiPump& events) {
    std::u16string path = overflowPath(extension);
    while (platform_.files.fileExists(path)) {
        if (fileNumber_ == std::numeric_limits<std::int16_t>::max()) {
            throw std::overflow_error("The numbers of the overflow files are used up: " + platform::toUtf8(path) +
                                      " is there. Move the files of that folder away.");
        }
        ++fileNumber_;
        path = overflowPath(extension);
        events.yield();
    }
    std::u16string text(caption);
    text += u" 保存了本文件。\r\n";
    text += content;
    platform_.files.writeFile(path, platform::encode936(text, &replacedCharacters_));
    lastStoredFile_ = path;
}

} // namespace kelb::store
