#include "platform/path_key.h"

#include "platform/letter_case.h"

namespace kelb::platform {

std::u16string pathKey(std::u16string_view path) {
    std::u16string key;
    key.reserve(path.size() + 1);
    for (const char16_t unit : path) {
        const char16_t mapped = unit == u'\\' ? u'/' : upper(unit);
        if (mapped != u'/' || key.empty() || key.back() != u'/') {
            key += mapped;
        }
    }
    if (key.size() > 1 && key.back() == u'/') {
        key.pop_back();
    }
    return key;
}

std::u16string folderKey(std::u16string_view folder) {
    std::u16string key = pathKey(folder);
    if (!key.empty() && key.back() != u'/') {
        key += u'/';
    }
    return key;
}

} // namespace kelb::platform
