#include "extract/Cls4Article.h"

#include "extract/Prog_Copy.h"
#include "platform/letter_case.h"
#include "platform/number_text.h"
#include "platform/text.h"

#include <array>
#include <cmath>
#include <utility>

namespace kelb::extract {

namespace {

constexpr std::size_t kTooShortBody = 200;
constexpr std::size_t kTooShortTitle = 2;
constexpr std::u16string_view kContentDiv = u"<div id=\"content\">";
constexpr std::u16string_view kDivEnd = u"</div>";
constexpr std::u16string_view kNoInput = u"输入为空。";
constexpr std::u16string_view kNoBodyMarkers = u"未找到开始标志1，或开始标志2，或结束标志";

/// An empty marker stands where the search starts, but not in an empty text.
std::size_t findMarker(std::u16string_view html, std::u16string_view marker, std::size_t from) {
    return html.empty() ? html.npos : html.find(marker, from);
}

std::u16string notFound(std::u16string_view which, std::u16string_view marker) {
    return std::u16string(which).append(marker);
}

/// The text from behind a start marker at `start` to an end marker at `end`, if it is longer than `tooShort`. An end
/// marker found inside the start marker gives a text of negative length: too short as well.
bool cutTo(std::u16string_view html, std::size_t start, std::size_t markerLength, std::size_t end, std::size_t tooShort,
           std::u16string& out) {
    const std::size_t from = start + markerLength;
    if (end == html.npos || end < from || end - from <= tooShort) {
        return false;
    }
    out = html.substr(from, end - from);
    return true;
}

/// The last closing tag that ends before `position`.
std::size_t lastDivEndBefore(std::u16string_view html, std::size_t position) {
    return position < kDivEnd.size() ? html.npos : html.rfind(kDivEnd, position - kDivEnd.size());
}

} // namespace

bool Cls4Article::extTitleV1(std::u16string_view html, const std::vector<std::u16string>& startMarkers,
                             const std::vector<std::u16string>& endMarkers, std::u16string& outTitle,
                             std::u16string& outReason) {
    outTitle.clear();
    std::u16string_view marker = startMarkers.at(0);
    const std::u16string& endMarker = endMarkers.at(0);
    std::size_t start = findMarker(html, marker, 0);
    // The next marker is taken after the search, so the first one is looked for again and the last one never is; and a
    // marker that is found here is forgotten, so that the title begins with it. Kept.
    for (std::size_t i = 0; start == html.npos && !marker.empty() && i < startMarkers.size();) {
        start = findMarker(html, marker, 0);
        if (start != html.npos) {
            marker = {};
        } else {
            marker = startMarkers[i];
            ++i;
        }
    }
    if (start == html.npos) {
        outReason = notFound(u"未找到SM: ", marker);
        return false;
    }
    if (!cutTo(html, start, marker.size(), findMarker(html, endMarker, start + 1), kTooShortTitle, outTitle)) {
        outReason = notFound(u"未找到EM: ", endMarker);
        return false;
    }
    return true;
}

std::u16string Cls4Article::extContent4SiteA(std::u16string_view html, std::u16string& outReason) {
    if (html.empty()) {
        outReason = kNoInput;
        return {};
    }
    const std::size_t opening = html.find(kContentDiv);
    const std::size_t start = opening == html.npos ? html.npos : html.find(kDivEnd, opening + 1);
    const std::size_t script = start == html.npos ? html.npos : html.find(u"<script", start);
    if (script != html.npos) {
        // From the end of the first inner block to two closing tags before the first script, which are the page's
        // navigation. The body so begins with a closing tag. Kept.
        const std::size_t last = lastDivEndBefore(html, script);
        if (last > start && last != html.npos) {
            const std::size_t end = lastDivEndBefore(html, last);
            if (end > start && end != html.npos) {
                return std::u16string(html.substr(start, end - start));
            }
        }
    }
    outReason = kNoBodyMarkers;
    return {};
}

std::u16string Cls4Article::extTitle4SiteA(std::u16string_view html, std::u16string& outReason) {
    constexpr std::u16string_view kOpening = u"<title>";
    const std::size_t start = html.find(kOpening);
    const std::size_t end = start == html.npos ? html.npos : html.find(u"</title>", start + 1);
    if (end == html.npos) {
        outReason = u"未找到开始标志，或结束标志";
        return {};
    }
    const std::size_t from = start + kOpening.size();
    return std::u16string(html.substr(from, end - from));
}

std::u16string Cls4Article::extContent4SiteB(std::u16string_view html, std::u16string& outReason) {
    if (html.empty()) {
        outReason = kNoInput;
        return {};
    }
    const std::size_t start = html.find(kContentDiv);
    const std::size_t end = start == html.npos ? html.npos : html.find(kDivEnd, start);
    if (end == html.npos) {
        outReason = kNoBodyMarkers;
        return {};
    }
    return std::u16string(html.substr(start, end - start));
}

std::u16string Cls4Article::extTitle4SiteB(std::u16string_view html, std::u16string& outReason) {
    std::u16string reason;
    const std::u16string whole = extTitle4SiteA(html, reason);
    const std::size_t bar = whole.find(u'_');
    if (bar != whole.npos) {
        return whole.substr(0, bar);
    }
    outReason = reason.empty() ? u"找到标题，但未找到 _ " : reason;
    return {};
}

bool Cls4Article::cut(std::u16string_view html, std::size_t start, std::u16string_view startMarker,
                      std::u16string_view endMarker, std::size_t tooShort, std::u16string& out,
                      std::u16string& outReason) const {
    if (start == html.npos) {
        outReason = notFound(u"未找到SM: ", startMarker);
        return false;
    }
    std::size_t end = findMarker(html, endMarker, start + 1);
    if (end == html.npos) {
        end = findMarker(html, markers_.contentEnd, start + 1);
    }
    if (!cutTo(html, start, startMarker.size(), end, tooShort, out)) {
        outReason = notFound(u"未找到EM: ", endMarker);
        return false;
    }
    return true;
}

bool Cls4Article::extContent(std::u16string_view html, std::u16string_view startMarker, std::u16string_view endMarker,
                             std::u16string& outBody, std::u16string& outReason) const {
    outBody.clear();
    const std::size_t start = findMarker(html, startMarker, 0);
    return cut(html, start, startMarker, endMarker, kTooShortBody, outBody, outReason);
}

bool Cls4Article::extTitle(std::u16string_view html, std::u16string_view startMarker, std::u16string_view endMarker,
                           std::u16string& outTitle, std::u16string& outReason) const {
    outTitle.clear();
    std::size_t start = findMarker(html, startMarker, 0);
    if (start == html.npos) {
        // The title is still cut by the length of the marker asked for, and ends at the program's marker for BODIES
        // when its own is missing. Kept.
        start = findMarker(html, markers_.titleStart, 0);
    }
    return cut(html, start, startMarker, endMarker, kTooShortTitle, outTitle, outReason);
}

std::u16string Cls4Article::replaceHtmlTag(std::u16string_view text) {
    using Change = std::pair<std::u16string_view, std::u16string_view>;
    // One after the other over the whole text: what a removal brings together counts for the changes behind it.
    constexpr std::array<Change, 8> kChanges{{
        {u"<BR />", u"\r\n"},
        {u"<br />", u"\r\n"},
        {u"<BR>", u"\r\n"},
        {u"<br>", u"\r\n"},
        {u"<br/>", u"\r\n"},
        {u"&NBSP;", u"&nbsp;"},
        {u"<o:p>", u""},
        {u"</o:p>", u""},
    }};
    std::u16string changed(text);
    for (const auto& [wanted, with] : kChanges) {
        platform::replaceAllIn(changed, wanted, with);
    }
    return changed;
}

std::u16string Cls4Article::killTag(std::u16string_view text) {
    std::u16string changed = platform::replaceAll(text, u"&nbsp;", u"");
    platform::replaceAllIn(changed, u"&QUOT;", u"\"");
    platform::replaceAllIn(changed, u"&quot;", u"\"");
    return Prog_Copy::CopyRemoveHTML1(changed);
}

std::int16_t Cls4Article::getPageNum(std::u16string_view url) {
    constexpr std::u16string_view kExtension = u".html";
    constexpr double kEnd = 99; // the first number that is none of a page
    const std::size_t bar = url.rfind(u'_');
    if (bar == url.npos) {
        return 0;
    }
    std::u16string digits(url.substr(bar + 1));
    for (std::size_t at = 0; (at = platform::findNoCase(digits, kExtension, at)) != digits.npos;) {
        digits.erase(at, kExtension.size());
    }
    const auto number = platform::parseNumber(digits);
    const double whole = number ? std::nearbyint(*number) : 0; // halves to the even one
    return whole > 0 && whole < kEnd ? static_cast<std::int16_t>(whole) : std::int16_t{0};
}

} // namespace kelb::extract
