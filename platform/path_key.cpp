#include "platform/path_key.h"

#include "platform/letter_case.h"

#include <algorithm>

namespace kelb::platform {

std::u16string plainPath(std::u16string_view path) {
    std::u16string plain;
    plain.reserve(path.size() + 1);
    for (const char16_t unit : path) {
        const char16_t mapped = unit == u'\\' ? u'/' : unit;
        if (mapped != u'/' || plain.empty() || plain.back() != u'/') {
            plain += mapped;
        }
    }
    if (plain.size() > 1 && plain.back() == u'/') {
        plain.pop_back();
    }
    return plain;
}

std::u16string pathKey(std::u16string_view path) {
    std::u16string key = plainPath(path);
    for (char16_t& unit : key) {
        unit = upper(unit);
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

void sortNames(std::vector<std::u16string>& names) {
    std::sort(names.begin(), names.end(), [](const std::u16string& a, const std::u16string& b) {
        const int order = compareNoCase(a, b);
        return order != 0 ? order < 0 : a < b;
    });
}

} // namespace kelb::platform
