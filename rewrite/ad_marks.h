#pragma once

#include <bitset>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::rewrite {

/// The ad marks of a site, one phrase a line; a text that holds one is advertising. Letter case does not count.
/// Thousands of marks are looked for in one walk over the text.
class AdMarks {
public:
    /// Lines end at CR LF only, are not trimmed, and mean nothing when empty.
    explicit AdMarks(std::u16string fileText);
    AdMarks(const AdMarks&) = delete;
    AdMarks& operator=(const AdMarks&) = delete;

    /// Of the lines that `text` contains the one that comes first in the file, as the file writes it.
    [[nodiscard]] std::optional<std::u16string_view> firstIn(std::u16string_view text) const;

private:
    struct Mark {
        std::u16string upper;
        std::size_t line;
    };

    std::size_t firstLineAt(std::u16string_view upperText) const;

    std::u16string fileText_;
    std::vector<std::u16string_view> lines_; ///< into fileText_; empty lines included
    std::vector<Mark> marks_;                ///< sorted by `upper`, each once: a trie laid flat
    std::bitset<0x10000> firstUnits_;        ///< units that begin a mark
};

} // namespace kelb::rewrite
