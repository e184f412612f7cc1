#include "app/RWIni.h"

#include "platform/code_page.h"

#include <algorithm>

namespace kelb::app::RWIni {

namespace {

constexpr std::u16string_view kDefaultSection = u"Setup";
constexpr std::u16string_view kDefaultFile = u"Kelb.ini";

constexpr std::size_t kBufferSize = 512; ///< bytes that the profile service may fill, its closing null included
constexpr std::size_t kExamined = 256;   ///< characters of the buffer in which double-byte ones are counted

std::u16string_view trimmed(std::u16string_view text) noexcept {
    const std::size_t first = text.find_first_not_of(u" \t");
    return first == text.npos ? std::u16string_view{} : text.substr(first, text.find_last_not_of(u" \t") - first + 1);
}

std::u16string_view withoutQuotes(std::u16string_view value) noexcept {
    const bool paired =
        value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') && value.back() == value.front();
    return paired ? value.substr(1, value.size() - 2) : value;
}

/// At most the bytes that fit before the closing null; a character that does not fit whole is left out whole.
std::string cutToBuffer(std::u16string_view value) {
    std::string bytes;
    for (const char16_t unit : value) {
        const std::string character = platform::encode936({&unit, 1});
        if (bytes.size() + character.size() > kBufferSize - 1) {
            break;
        }
        bytes += character;
    }
    return bytes;
}

/// What becomes of a value on its way through the service's buffer. The service reports bytes; the program takes off
/// one for each double-byte character to get characters, but looks at the first 256 characters only. Kept: a value with
/// double-byte characters behind them comes back with one character too many for each, the closing null first, then the
/// blanks that the buffer was filled with, as far as the buffer goes.
std::u16string throughBuffer(std::u16string_view value) {
    std::string buffer = cutToBuffer(value);
    const std::size_t reported = buffer.size();
    if (reported == 0) {
        return {};
    }
    buffer += '\0';
    buffer.resize(kBufferSize, ' ');
    std::u16string text = platform::decode936(buffer);
    const auto examined = text.begin() + static_cast<std::ptrdiff_t>(std::min(kExamined, text.size()));
    const auto doubles = static_cast<std::size_t>(std::count_if(text.begin(), examined, platform::isDoubleByte));
    text.resize(std::min(text.size(), reported - doubles));
    return text;
}

} // namespace

IniFile::IniFile(platform::FileSystem& files, std::u16string_view path) {
    if (files.fileExists(path)) {
        parse(platform::decode936(files.readFile(path))); // decoded first: "]" is also the second byte of characters
    }
}

void IniFile::parse(std::u16string_view text) {
    Section* current = nullptr; // what stands before the first section belongs to none
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(u'\n'), text.size());
        std::u16string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && line.back() == u'\r') {
            line.remove_suffix(1);
        }
        line = trimmed(line);
        if (line.empty() || line.front() == u';') {
            continue;
        }
        const std::size_t close = line.front() == u'[' ? line.find(u']') : line.npos;
        if (close != line.npos) {
            // A second one of the same name adds to the first.
            current = &sections_[std::u16string(trimmed(line.substr(1, close - 1)))];
            continue;
        }
        const std::size_t equals = line.find(u'=');
        if (current == nullptr || equals == line.npos) {
            continue;
        }
        const auto key = trimmed(line.substr(0, equals));
        if (!key.empty() && current->byKey.try_emplace(std::u16string(key), current->entries.size()).second) {
            current->entries.emplace_back(key, withoutQuotes(trimmed(line.substr(equals + 1))));
        }
    }
}

const IniFile::Section* IniFile::find(std::u16string_view name) const {
    const auto found = sections_.find(trimmed(name));
    return found == sections_.end() ? nullptr : &found->second;
}

std::u16string IniFile::ReadIni(std::u16string_view sKey, std::u16string_view sSection) const {
    const Section* found = find(sSection.empty() ? kDefaultSection : sSection);
    if (found == nullptr) {
        return {};
    }
    const auto key = found->byKey.find(trimmed(sKey));
    return key == found->byKey.end() ? std::u16string() : throughBuffer(found->entries[key->second].second);
}

std::vector<std::pair<std::u16string, std::u16string>> IniFile::section(std::u16string_view name) const {
    const Section* found = find(name);
    if (found == nullptr) {
        return {};
    }
    auto entries = found->entries;
    for (auto& entry : entries) {
        entry.second = throughBuffer(entry.second);
    }
    return entries;
}

std::u16string ReadIni(std::u16string_view sKey, std::u16string_view sSection, std::u16string_view sIniFile,
                       platform::FileSystem& files, std::u16string_view applicationFolder) {
    const std::u16string path =
        sIniFile.empty() ? platform::joinPath(applicationFolder, kDefaultFile) : std::u16string(sIniFile);
    return IniFile(files, path).ReadIni(sKey, sSection);
}

} // namespace kelb::app::RWIni
