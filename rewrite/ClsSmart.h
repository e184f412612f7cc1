#pragma once

#include "platform/file_system.h"
#include "platform/random.h"
#include "rewrite/ad_marks.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {
class Connection;
}

namespace kelb::rewrite {

/// Cleans, judges and rewrites the wording of posts, and recognises brands, set codes and chip makers in them. Texts
/// are UTF-16, lengths and limits count code units; searches mind case unless said otherwise. One instance serves the
/// whole program, because blnValue remembers the text judged last and rndTVCode its file across pages and jobs;
/// operations without such memory are static. What they know of the trade stands in tables: brand_list.h,
/// chip_prefix_table.h, problem_table.h, synonym_table.h, wording_rules.h.
class ClsSmart {
public:
    /// Reads "ADMarks.txt" (code page 936, one ad phrase a line) of the application folder; there is no default list.
    /// Keeps `files`. Throws platform::FileError when it cannot be read.
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

    // Rewriting (smart_rewriting.cpp)

    /// The title without punctuation and blanks; with "[求助]" in it a question, and "求助" made polite.
    static std::u16string smartReplaceTitle(std::u16string_view title);
    /// "求助", bracketed or not, made polite. The brand has no effect; kept because callers pass it.
    static std::u16string smartReplaceContent(std::u16string_view text, std::u16string_view brand);
    /// A whole post: in upper case, without tags, its set code marked up, rewritten by the table of wording rules.
    /// As killTag it keeps the first 10,240 units.
    static std::u16string smartReplaceNormal(std::u16string_view text, std::u16string_view brand);

    // Recognition (smart_recognition.cpp)

    /// The first brand of the list that the text contains, or "".
    static std::u16string getPinPai(std::u16string_view text);
    /// True with "长虹" or "CH" in the text.
    static bool blnChangHong(std::u16string_view text);
    /// The first set code: 5 to 14 letters, digits and hyphens with two digits in a row and a letter, no "QQ" in front,
    /// and at least two units of text behind it; or "". Callers pass the text in upper case.
    static std::u16string searchTVCode(std::u16string_view text);
    /// Maker of the chip family that the code names, or "".
    static std::u16string searchICCode(std::u16string_view code);
    /// The text in upper case; its set code gains the brand in front, unless one stands there, and the maker behind it.
    static std::u16string replaceTVCode(std::u16string_view text, std::u16string_view brand);
    /// The first sentence of more than 12 units that names a fault, without bars and hyphens; or "".
    static std::u16string smartGetProblem(std::u16string_view text);

    // Look-ups (smart_lookups.cpp)

    /// Fields `mom` and `dad` of the code's row in wxTVCode; false and two empty texts without such a row. Letter case
    /// does not count. Throws ado::Error.
    static bool learnTVCode(ado::Connection& database, std::u16string_view code, std::u16string& mom,
                            std::u16string& dad);
    /// The keywords of wxKWs that the text contains, in the table's order, parted by blanks. Throws ado::Error.
    static std::u16string extRepairKW(ado::Connection& database, std::u16string_view text);
    /// A set code with its heading, such as "G2988(CH-16)", never the last one unless it is the only one. The file is
    /// read once: later calls ignore the path. Throws as readSetCodes, and std::out_of_range for a file without a code;
    /// nothing is kept then, and the next call reads again.
    std::u16string rndTVCode(std::u16string_view path, platform::Random& random);

private:
    platform::FileSystem& files_;
    AdMarks adMarks_;
    std::u16string lastValue_;
    std::vector<std::u16string> setCodes_;
};

} // namespace kelb::rewrite
