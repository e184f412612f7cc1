#pragma once

#include <string_view>

/// Why rows end as they do: names of counts in the summary, bars of the chart, headings of the report.
namespace kelb::jobs {

// Passed over.
inline constexpr std::string_view kAlreadyThere = "alreadyThere";
inline constexpr std::string_view kNoPageFile = "noPageFile";
inline constexpr std::string_view kOverLong = "overLong";
inline constexpr std::string_view kKept = "kept";
inline constexpr std::string_view kNullUrl = "nullUrl";
inline constexpr std::string_view kBlankUrl = "blankUrl";
inline constexpr std::string_view kNotAThreadPage = "notAThreadPage";
inline constexpr std::string_view kRouterPage = "routerPage";
inline constexpr std::string_view kDuplicate = "duplicate";
inline constexpr std::string_view kDuplicateWithOtherTitle = "duplicateWithOtherTitle";
inline constexpr std::string_view kBlockedTitle = "blockedTitle";
inline constexpr std::string_view kNoPartner = "noPartner";
inline constexpr std::string_view kWithdrawn = "withdrawn";
inline constexpr std::string_view kNoName = "noName";
inline constexpr std::string_view kSingleByteName = "singleByteName";
inline constexpr std::string_view kTooShort = "tooShort";
inline constexpr std::string_view kWarmUp = "warmUp";
inline constexpr std::string_view kStartsAgain = "startsAgain";
inline constexpr std::string_view kEndOfFolder = "endOfFolder";
inline constexpr std::string_view kNoParameterTable = "noParameterTable";
inline constexpr std::string_view kNameAlreadyStored = "nameAlreadyStored";
inline constexpr std::string_view kSavingIsOff = "savingIsOff";

// Rejected; a notice page and one without content are passed over by some jobs and rejected by others.
inline constexpr std::string_view kNoticePage = "noticePage";
inline constexpr std::string_view kEmptyPage = "emptyPage";
inline constexpr std::string_view kNoFloors = "noFloors";
inline constexpr std::string_view kTooFewFloors = "tooFewFloors";
inline constexpr std::string_view kFirstPostRejected = "firstPostRejected";
inline constexpr std::string_view kNoTitle = "noTitle";
inline constexpr std::string_view kNoBody = "noBody";
inline constexpr std::string_view kNoTitleNorBody = "noTitleNorBody";
inline constexpr std::string_view kNumberTaken = "numberTaken";
inline constexpr std::string_view kNoTable = "noTable";
inline constexpr std::string_view kRefused = "refused";

struct RowReason {
    std::string_view name;
    std::string_view meaning; ///< English, for the report
};

inline constexpr RowReason kRowReasons[] = {
    {kAlreadyThere, "already in the destination"},
    {kNoPageFile, "no page file at its place"},
    {kOverLong, "too long for a row: written to a file in TestRec"},
    {kKept, "looked at and kept"},
    {kNullUrl, "no address (Null): deleted"},
    {kBlankUrl, "empty address: deleted"},
    {kNotAThreadPage, "the address is no thread page: deleted"},
    {kRouterPage, "page of a router in place of the site: deleted"},
    {kDuplicate, "duplicate: deleted"},
    {kDuplicateWithOtherTitle, "duplicate with another title: deleted"},
    {kBlockedTitle, "title of a blocked page: deleted"},
    {kNoPartner, "no other record of the same set"},
    {kWithdrawn, "withdrawn as the partner of an earlier record"},
    {kNoName, "no name"},
    {kSingleByteName, "name does not begin with a Chinese character"},
    {kTooShort, "hardly any text"},
    {kWarmUp, "read to learn the boilerplate; comes again"},
    {kStartsAgain, "end of the warm-up: the rows begin again"},
    {kEndOfFolder, "a sub-folder has no more files"},
    {kNoParameterTable, "no table of parameters on the page"},
    {kNameAlreadyStored, "a product of this name is stored"},
    {kSavingIsOff, "parameters found; saving is switched off"},
    {kNoticePage, "notice page of the board: deleted"},
    {kEmptyPage, "no page file, or an empty one"},
    {kNoFloors, "no floor of a board on the page"},
    {kTooFewFloors, "fewer than three floors"},
    {kFirstPostRejected, "the first post is empty or of no value"},
    {kNoTitle, "no title found"},
    {kNoBody, "no body found"},
    {kNoTitleNorBody, "neither title nor body found"},
    {kNumberTaken, "another row has its number now"},
    {kNoTable, "its table is gone"},
    {kRefused, "the database refused the row"},
};

/// The name itself for a reason that the table does not hold.
[[nodiscard]] constexpr std::string_view meaningOf(std::string_view reason) {
    for (const RowReason& known : kRowReasons) {
        if (known.name == reason) {
            return known.meaning;
        }
    }
    return reason;
}

} // namespace kelb::jobs
