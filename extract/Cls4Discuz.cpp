#include "extract/Cls4Discuz.h"

#include "extract/list_stripper.h"
#include "extract/noise_runs.h"
#include "platform/code_page.h"
#include "platform/text.h"
#include "rewrite/pubProg.h"

#include <algorithm>

namespace kelb::extract {

namespace {

constexpr std::u16string_view kFloorMarker = u"<div id=\"post_";
constexpr std::u16string_view kClosingSuffix = u"new\"";
constexpr int kMostMarkers = 100;             ///< examined on a page, ignored ones included
constexpr std::size_t kFewestFloors = 3;      ///< counted floors of a page beyond doubt
constexpr std::size_t kEditNoticeLength = 50; ///< start of the notice to start of its last word
constexpr std::size_t kShortestPost = 4;
constexpr std::u16string_view kReplyNumbers = u"①②③④⑤⑥⑦⑧⑨";

/// Adds an entry behind the others.
void addReason(std::u16string& sReason, std::u16string_view entry) {
    sReason.append(u"|").append(entry);
}

struct Floors {
    std::vector<std::u16string_view> blocks; ///< views of the page
    std::size_t counted = 0;                 ///< blocks that another floor follows
    bool closed = false;                     ///< the block of the answer form was met
};

bool isPostNumber(std::u16string_view text) {
    return text.size() == 4 && std::ranges::all_of(text, [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
}

Floors findFloors(std::u16string_view html) {
    Floors floors;
    std::size_t start = html.npos;
    std::size_t at = html.find(kFloorMarker);
    for (int examined = 0; at != html.npos && examined < kMostMarkers; ++examined) {
        const std::u16string_view id = html.substr(at + kFloorMarker.size()).substr(0, 4);
        if (isPostNumber(id)) {
            if (start != html.npos) {
                floors.blocks.push_back(html.substr(start, at - start));
                ++floors.counted;
            }
            start = at;
        } else if (id == kClosingSuffix && start != html.npos) {
            floors.blocks.push_back(html.substr(start, at - start));
            floors.closed = true;
            break;
        }
        at = html.find(kFloorMarker, at + 1);
    }
    return floors;
}

/// The floors of a page, and what speaks against it as a thread; false when it does not count as one.
bool cutFloors(std::u16string_view html, Floors& floors, std::u16string& sReason) {
    floors = findFloors(html);
    if (html.find(kFloorMarker) == html.npos) {
        addReason(sReason, kNoFloorMark);
    }
    if (floors.counted >= kFewestFloors) {
        return true;
    }
    addReason(sReason, u"楼层<3，为: " + platform::number(static_cast<long long>(floors.counted)) + u"层");
    // A closed page with one or two counted floors passes all the same, the message in its reason. Kept.
    return floors.closed && floors.counted >= 1;
}

std::u16string_view messageCell(std::u16string_view floor) {
    constexpr std::u16string_view kEnd = u"</td></tr></table>";
    std::size_t start = floor.find(u"<td class=\"t_f\"");
    if (start == floor.npos) {
        start = floor.find(u"<td class=\"t_msgfont\"");
    }
    const std::size_t end = start == floor.npos ? floor.npos : floor.find(kEnd, start);
    return end == floor.npos ? std::u16string_view() : floor.substr(start, end + kEnd.size() - start);
}

std::u16string_view behindFirst(std::u16string_view text, char16_t unit) {
    const std::size_t at = text.find(unit);
    return at == text.npos ? text : text.substr(at + 1);
}

bool beginsPost(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9') ||
           platform::isDoubleByte(unit);
}

void appendReply(std::u16string& body, std::size_t replyIndex, std::u16string_view post) {
    body.append(u"<br><br>\r\n");
    if (replyIndex == 0) {
        body.append(u"<br>∑维修经验: <br>");
    }
    body.push_back(kReplyNumbers[replyIndex]);
    body.append(u": ").append(post);
}

} // namespace

Cls4Discuz::Cls4Discuz(rewrite::ClsSmart& smart, const UserNames& names, platform::Random& random)
    : smart_(smart), names_(names), random_(random) {}

std::u16string Cls4Discuz::extDiscuzTitle(std::u16string_view html, std::u16string& sReason) {
    std::u16string_view endMarker = u"</h1>";
    std::size_t start = html.find(u"<h1 class=\"ts\">");
    if (start == html.npos) {
        addReason(sReason, u"未找到SM");
        endMarker = u"</div>";
        start = html.find(u"<div id=\"threadtitle\">");
    }
    if (start == html.npos) {
        addReason(sReason, u"未找到SM1");
        return {};
    }
    const std::size_t end = html.find(endMarker, start + 1);
    // The link is looked for backwards without regard to the start marker, so it may stand before the heading. Kept.
    const std::size_t link = end == html.npos ? html.npos : html.rfind(u"<a ", end);
    if (link == html.npos) {
        return {};
    }
    std::u16string title(html.substr(link, end + endMarker.size() - link));
    platform::replaceAllIn(title, u"\r\n", u"");
    const std::u16string_view named = behindFirst(behindFirst(title, u']'), u'】');
    return rewrite::pubProg::killTagStr(platform::trimBlanks(named));
}

void Cls4Discuz::split2Floors(std::u16string_view html, std::vector<std::u16string>& floors, std::u16string& sReason,
                              bool& success) {
    Floors cut;
    success = cutFloors(html, cut, sReason);
    floors.assign(cut.blocks.begin(), cut.blocks.end());
}

std::u16string Cls4Discuz::extFloorContent(std::u16string_view floor) {
    return std::u16string(messageCell(floor));
}

std::u16string Cls4Discuz::killDiscuzMark(std::u16string_view text) {
    constexpr std::u16string_view kBreak = u"<br />";
    constexpr std::u16string_view kNotice = u"本帖最后由";
    constexpr std::u16string_view kEdited = u"编辑";
    const std::size_t header = text.substr(0, 4).find(u"回复"); // only where it begins at the 1st to 3rd unit
    const std::size_t headerEnd = header == text.npos ? text.npos : text.find(kBreak, header);
    if (headerEnd != text.npos) {
        text.remove_prefix(headerEnd + kBreak.size());
    }
    const std::size_t notice = text.find(kNotice);
    const std::size_t edited = notice == text.npos ? text.npos : text.find(kEdited, notice);
    if (edited == text.npos || edited - notice >= kEditNoticeLength) {
        return std::u16string(text);
    }
    return std::u16string(text.substr(0, notice)).append(u" ").append(text.substr(edited + kEdited.size()));
}

std::u16string Cls4Discuz::killGR(std::u16string_view text) {
    return withoutNoiseRuns(text);
}

std::u16string Cls4Discuz::killBeginGR(std::u16string_view text) {
    const std::u16string lines = platform::replaceAll(text, u"<br />", u"\r\n");
    const auto begin = std::ranges::find_if(lines, beginsPost);
    const auto cut = begin == lines.end() ? 0 : static_cast<std::size_t>(begin - lines.begin());
    return platform::replaceAll(std::u16string_view(lines).substr(cut), u"\r\n", u"<br>");
}

std::u16string Cls4Discuz::extDiscuzPageContent(std::u16string_view html, std::u16string& sReason, ThreadPage page) {
    Floors floors;
    if (!cutFloors(html, floors, sReason)) {
        addReason(sReason, kNotAThread);
        return {};
    }
    std::u16string body;
    std::size_t replyIndex = 0;
    for (std::size_t i = 0; i < floors.blocks.size(); ++i) {
        const bool starter = i == 0 && page == ThreadPage::First;
        const StrippedText stripped = stripListedTags(messageCell(floors.blocks[i]), ImageTags::Listed);
        const std::u16string post = killBeginGR(killGR(killDiscuzMark(stripped.text)));
        if (!smart_.blnValue(post, sReason)) {
            if (starter) {
                addReason(sReason, u"楼主不合格");
                return {};
            }
            addReason(sReason, u"楼层不合格,(楼层=" + platform::number(static_cast<long long>(i)) + u")");
        } else if (post.size() < kShortestPost) {
            if (starter) {
                return {};
            }
        } else if (body.empty() && page == ThreadPage::First) {
            body = u"○维修案例:<br>" + post;
        } else {
            appendReply(body, replyIndex, post);
            // The number stays at the last one: the tenth and later replies all carry "⑨". Kept.
            replyIndex = std::min(replyIndex + 1, kReplyNumbers.size() - 1);
        }
    }
    return body;
}

std::u16string Cls4Discuz::giveRndName() const {
    return names_.giveRndName(random_);
}

} // namespace kelb::extract
