#include "segment/ClsFenCi.h"

#include "platform/code_page.h"
#include "platform/path_map.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace kelb::segment {

namespace {

constexpr std::u16string_view kSeparator = u"<|split|>";
constexpr std::u16string_view kFileName = u"SogouLabDic.dic";

bool isRunningText(char16_t unit) {
    constexpr std::u16string_view kMarks = u"，。！…“”：《》";
    return platform::isDoubleByte(unit) && kMarks.find(unit) == kMarks.npos;
}

constexpr bool isLetterOrDigit(char16_t unit) {
    return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}
constexpr bool isCodeUnit(char16_t unit) {
    return unit == u'-' || isLetterOrDigit(unit);
}

std::u16string_view withoutOuterHyphens(std::u16string_view code) {
    const std::size_t first = code.find_first_not_of(u'-');
    return first == code.npos ? std::u16string_view() : code.substr(first, code.find_last_not_of(u'-') - first + 1);
}

} // namespace

ClsFenCi::ClsFenCi(platform::FileSystem& files, std::u16string_view applicationFolder)
    : files_(files), applicationFolder_(applicationFolder) {}

std::u16string ClsFenCi::splitPrepare(std::u16string_view sText) {
    std::u16string prepared;
    prepared.reserve(sText.size() + kSeparator.size());
    bool inGap = false;
    for (const char16_t unit : sText) {
        const bool kept = isRunningText(unit);
        if (kept) {
            prepared.push_back(unit);
        } else if (!inGap) {
            prepared += kSeparator;
        }
        inGap = !kept;
    }
    return prepared;
}

std::optional<WordDictionary> ClsFenCi::readSogouLabDic() const {
    const std::u16string path = pathOf(kFileName);
    try {
        WordDictionary words = WordDictionary::read(files_.readFile(path));
        return words.size() == 0 ? std::nullopt : std::optional(std::move(words));
    } catch (const DictionaryError& error) {
        throw DictionaryError(platform::toUtf8(path) + ": " + error.what());
    }
}

std::u16string ClsFenCi::saveSogouLabDic(const WordDictionary& dict, platform::UiPump& events) {
    const std::u16string path = pathOf(kFileName);
    std::u16string backup = freeBackupPath();
    // The backup is a copy and not the renamed file, so that no moment is without a dictionary under its name.
    files_.replaceFile(backup, files_.readFile(path));
    events.yield();
    files_.replaceFile(path, dict.lines());
    loaded_.reset();
    return backup;
}

void ClsFenCi::segment(std::u16string_view text, const WordSink& take) {
    Segmenter& segmenter = loaded().segmenter;
    for (auto at = text.begin(); at != text.end();) {
        const auto first = at;
        if (isRunningText(*at)) {
            at = std::find_if_not(at, text.end(), isRunningText);
            segmenter.cut({first, at}, take);
        } else if (isCodeUnit(*at)) {
            at = std::find_if_not(at, text.end(), isCodeUnit);
            if (const auto code = withoutOuterHyphens({first, at}); !code.empty()) {
                segmenter.whole(code, take);
            }
        } else {
            ++at;
        }
    }
}

std::vector<Word> ClsFenCi::segment(std::u16string_view text) {
    std::vector<Word> words;
    segment(text, [&words](const Word& word) { words.push_back(word); });
    return words;
}

const WordDictionary& ClsFenCi::dictionary() {
    return loaded().words;
}

ClsFenCi::Loaded& ClsFenCi::loaded() {
    if (!loaded_) {
        auto words = readSogouLabDic();
        if (!words) {
            throw DictionaryError(platform::toUtf8(pathOf(kFileName)) +
                                  ": the dictionary holds no word; a line is a word, its frequency and its part of "
                                  "speech with a TAB between them");
        }
        loaded_ = std::make_unique<Loaded>(*std::move(words));
    }
    return *loaded_;
}

std::u16string ClsFenCi::pathOf(std::u16string_view name) const {
    return platform::joinPath(applicationFolder_, name);
}

std::u16string ClsFenCi::freeBackupPath() const {
    for (int number = 1; number <= std::numeric_limits<std::int16_t>::max(); ++number) {
        std::u16string path = pathOf(u"SogouLabDic" + platform::number(number) + u".dic");
        if (!files_.fileExists(path)) {
            return path;
        }
    }
    throw std::overflow_error("every backup number of SogouLabDic.dic up to 32767 is taken: remove old ones");
}

} // namespace kelb::segment
