#pragma once

#include "platform/file_system.h"
#include "platform/ui_pump.h"
#include "segment/segmenter.h"
#include "segment/word_dictionary.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::segment {

/// Prepares Chinese text for word segmentation, keeps the word dictionary "SogouLabDic.dic" of the application folder,
/// and cuts texts into its words. Texts are UTF-16, lengths count code units; the file is in code page 936.
class ClsFenCi {
public:
    /// Keeps `files`.
    ClsFenCi(platform::FileSystem& files, std::u16string_view applicationFolder);

    /// The text with "<|split|>" for every run of what is no Chinese running text: single-byte characters and the marks
    /// ，。！…“”：《》. Other full-width marks stay.
    static std::u16string splitPrepare(std::u16string_view sText);

    /// Reads the dictionary as WordDictionary::read; no value when the file holds no word.
    /// Throws platform::FileError, and DictionaryError naming the file.
    std::optional<WordDictionary> readSogouLabDic() const;

    /// Writes the dictionary, one "word TAB frequency TAB part of speech" a line without a line end behind the last,
    /// and keeps the old file as "SogouLabDicN.dic" with the first free N. Result: the path of that copy. Throws
    /// platform::FileError, also when there is no old file, and std::overflow_error when numbers up to 32,767 are
    /// taken. At any moment, and after a throw, the old or the new dictionary stands whole under its name.
    std::u16string saveSogouLabDic(const WordDictionary& dict, platform::UiPump& events);

    /// The words of a text in its order: runs of Chinese text (what splitPrepare keeps) are cut by Segmenter, runs of
    /// letters, digits and inner hyphens such as "CH-16" are words as they stand, all else is passed over. The
    /// dictionary is read at the first use and kept until saveSogouLabDic. Throws as readSogouLabDic, and
    /// DictionaryError when the file holds no word; the next use tries again.
    void segment(std::u16string_view text, const WordSink& take);
    /// The same as a list.
    std::vector<Word> segment(std::u16string_view text);
    /// The dictionary that segment uses, read if need be. Throws as segment.
    const WordDictionary& dictionary();

private:
    struct Loaded {
        explicit Loaded(WordDictionary dictionary) : words(std::move(dictionary)), segmenter(words) {}
        WordDictionary words;
        Segmenter segmenter;
    };

    Loaded& loaded();
    std::u16string pathOf(std::u16string_view name) const;
    std::u16string freeBackupPath() const;

    platform::FileSystem& files_;
    std::u16string applicationFolder_;
    std::unique_ptr<Loaded> loaded_;
};

} // namespace kelb::segment
