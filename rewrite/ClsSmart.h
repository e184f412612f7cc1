#pragma once

#include "platform/file_system.h"
#include "rewrite/ad_marks.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelb::rewrite {

/// Cleans, judges and rewrites the wording of posts. Texts are UTF-16, lengths and limits count code units; searches
/// mind case unless said otherwise. One instance serves the whole program, because blnValue remembers the text judged
/// last across pages and jobs; operations without such memory are static.
class ClsSmart {
public:
    /// Reads "ADMarks.txt" (code page 936, one ad phrase a line) of the application folder; there is no default list.
    /// Throws platform::FileError when it cannot be read.
    ClsSmart(platform::FileSystem& files, std::u16string_view applicationFolder);

    // Cleaning (smart_cleaning.cpp)

    /// The text without its first "HTTP://" address. The cut runs to the LAST blank, double quote or double-byte
    /// character within 330 units of its start; the end of the text counts as one.
    static std::u16string killURLText(std::u16string_view text);
    /// Cuts the text to its first 10,240 units, then takes tags and "&nbsp;" out and writes "&quot;" as a quote.
    /// Always true.
    static bool killTag(std::u16string& text);
    /// No four "<br>" in a row are left (lower case only).
    static std::u16string killMoreBR(std::u16string_view text);
    /// What follows the first separator, or the whole text.
    static std::u16string cutTitle(std::u16string_view text, std::u16string_view separator);
    /// Does nothing; kept because callers may bind to it.
    static std::u16string smartRead() { return {}; }

    // Forum mark-up (smart_garbage.cpp). Each removed span is added to `log`; `cleaned` is overwritten.

    /// Removes post-edited stamps in brackets, "[/box]", "[box=…]" and "[size=…]". True when `log` holds anything at
    /// the end, also what it held before.
    static bool replaceGarbage(std::u16string_view text, std::u16string& cleaned, std::u16string& log);
    /// Removes the regions of attachments, local images and links. True when one was removed.
    static bool replaceGarbageTags(std::u16string_view text, std::u16string& cleaned, std::u16string& log);
    /// Removes the region from the first opening marker to the closing ones. True when `log` holds anything at the end.
    static bool replaceGarbageTag(std::u16string_view text, std::u16string& cleaned, std::u16string& log,
                                  std::u16string_view opening, std::u16string_view closing);

    // Judging (smart_judging.cpp)

    /// Units left without punctuation and thank-you phrases. Throws std::overflow_error past 32,767.
    static std::int16_t CountGoodChar(std::u16string_view text);
    /// True when the text is worth keeping; otherwise the reason and "|" are put in FRONT of what `sReason` holds.
    /// The text is remembered, also when it is rejected: the same text given twice running is rejected.
    bool blnValue(std::u16string_view text, std::u16string& sReason);
    /// True when "图纸" occurs fewer than five times.
    static bool blnValue2(std::u16string_view text);

private:
    AdMarks adMarks_;
    std::u16string lastValue_;
};

} // namespace kelb::rewrite
