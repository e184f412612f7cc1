#pragma once

#include "ado/connection.h"
#include "extract/article_markers.h"
#include "extract/smart_texts.h"
#include "platform/platform.h"
#include "platform/ui_pump.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::extract {

/// Cuts title and body out of article pages of content-management sites, by marker search (no HTML parser), and deals
/// with the images of a body. Texts are UTF-16; lengths count code units. A page without its markers is not an error:
/// the text is "", and the reason says which marker was missing (it is not touched otherwise).
class Cls4Article : public SmartTexts {
public:
    /// `markers` are those of the program: the job sets them before each page. They outlive this.
    Cls4Article(const ArticleMarkers& markers, Smart smart) : SmartTexts(std::move(smart)), markers_(markers) {}

    /// extTitle with a list of start markers, of which the last is never looked for (but a single one is); only the
    /// first end marker counts. A title found by a later start marker begins with it.
    /// Throws std::out_of_range when a list is empty.
    static bool extTitleV1(std::u16string_view html, const std::vector<std::u16string>& startMarkers,
                           const std::vector<std::u16string>& endMarkers, std::u16string& outTitle,
                           std::u16string& outReason);

    static std::u16string extContent4SiteA(std::u16string_view html, std::u16string& outReason);
    static std::u16string extTitle4SiteA(std::u16string_view html, std::u16string& outReason);
    static std::u16string extContent4SiteB(std::u16string_view html, std::u16string& outReason);
    /// The title up to its first "_".
    static std::u16string extTitle4SiteB(std::u16string_view html, std::u16string& outReason);

    /// What stands between the markers, if it is longer than 200. Without the end marker the program's one for bodies
    /// is looked for.
    bool extContent(std::u16string_view html, std::u16string_view startMarker, std::u16string_view endMarker,
                    std::u16string& outBody, std::u16string& outReason) const;
    /// What stands between the markers, if it is longer than 2. Without the start marker the program's one for titles
    /// is looked for.
    bool extTitle(std::u16string_view html, std::u16string_view startMarker, std::u16string_view endMarker,
                  std::u16string& outTitle, std::u16string& outReason) const;

    /// Line-break tags as line breaks, without the office program's paragraph tags.
    static std::u16string replaceHtmlTag(std::u16string_view text);
    /// Through the list stripper; not the operation of that name in ClsSmart.
    static std::u16string killTag(std::u16string_view text);
    /// The number behind the last "_" of the address when it is 1 to 98, else 0.
    static std::int16_t getPageNum(std::u16string_view url);

    // Images (article_images.cpp)

    /// Brackets that were written as words, so that cleaning leaves them alone, become brackets again.
    static std::u16string ImgSrcRecover(std::u16string_view text);

    /// What ImgSrcChanger works with, all of it outliving the call.
    struct ImageStore {
        ado::Connection& pictures;    ///< open; has the table URLsPIC with a column filepath
        platform::Platform& platform; ///< image files, and the log in "TestRec" of the application folder
        platform::UiPump& events;     ///< may run after each image
    };
    /// Each image tag becomes a tag, written with words for its brackets, of the stored copy of the image, which is
    /// copied to the web folder; a visible note stands in for an image that is not stored, and the log names it.
    /// Changes `html` and gives it back. Throws ado::Error and platform::FileError; `html` is then as it was.
    static std::u16string ImgSrcChanger(std::u16string& html, std::u16string_view pageUrl, const ImageStore& store);

    /// The first image tag, or "".
    static std::u16string getTagIMG(std::u16string_view html);
    /// The whole "http://" address of the image, or "".
    static std::u16string getImgSrc(std::u16string_view tag, std::u16string_view pageUrl);

private:
    /// The text from behind the start marker at `start` to the end marker, if it is longer than `tooShort`.
    bool cut(std::u16string_view html, std::size_t start, std::u16string_view startMarker,
             std::u16string_view endMarker, std::size_t tooShort, std::u16string& out, std::u16string& outReason) const;

    const ArticleMarkers& markers_;
};

} // namespace kelb::extract
