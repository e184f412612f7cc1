#include "extract/Cls4QASite.h"

#include "platform/text.h"

namespace kelb::extract {

namespace {

constexpr std::u16string_view kBlockEnd = u"</div>";
constexpr std::size_t kHeadingReach = 20;   ///< from the block's start to the heading
constexpr std::size_t kHeadingLength = 100; ///< of a heading with its opening tag
constexpr int kMostAnswers = 20;
constexpr std::size_t kShortAnswer = 5; ///< up to this length an answer says nothing

} // namespace

std::u16string Cls4QASite::extQTitle(std::u16string_view sHtml) {
    constexpr std::u16string_view kHeading = u"<h1>";
    const std::size_t block = sHtml.find(u"<div id=\"article\">");
    const std::size_t start = block == sHtml.npos ? block : sHtml.find(kHeading, block);
    if (start == sHtml.npos || start - block > kHeadingReach) {
        return {};
    }
    const std::size_t text = start + kHeading.size();
    const std::size_t end = sHtml.find(u"</h1>", text);
    if (end == sHtml.npos || end - start > kHeadingLength) {
        return {};
    }
    return std::u16string(sHtml.substr(text, end - text));
}

std::u16string Cls4QASite::extQContent(std::u16string_view sHtml) {
    const std::size_t body = sHtml.find(u"<div id=\"article_body\">");
    const std::size_t first = body == sHtml.npos ? body : sHtml.find(kBlockEnd, body);
    if (first == sHtml.npos) {
        return {};
    }
    // The body's first inner block is not the question.
    const std::size_t text = first + kBlockEnd.size();
    const std::size_t end = sHtml.find(kBlockEnd, text);
    return end == sHtml.npos ? std::u16string() : std::u16string(sHtml.substr(text, end - text));
}

std::u16string Cls4QASite::extAContent(std::u16string_view sHtml) {
    constexpr std::u16string_view kAnswer = u"class=\"body\">";
    constexpr std::u16string_view kLineEnd = u"\r\n";
    std::u16string answers;
    std::size_t at = sHtml.find(kAnswer);
    for (int count = 0; count < kMostAnswers && at != sHtml.npos; ++count) {
        const std::size_t start = at + kAnswer.size();
        const std::size_t end = sHtml.find(kBlockEnd, start);
        if (end == sHtml.npos) {
            break;
        }
        std::u16string_view answer = platform::trimBlanks(sHtml.substr(start, end - start));
        if (isWorthKeeping(answer)) {
            if (answer.starts_with(kLineEnd)) {
                answer.remove_prefix(kLineEnd.size());
            }
            answers.append(giveRndName()).append(u"：").append(answer).append(u"\r\n\r\n\r\n");
        }
        at = sHtml.find(kAnswer, start);
    }
    return answers;
}

/// A short answer is judged, too: the next one is then compared with it. Kept.
bool Cls4QASite::isWorthKeeping(std::u16string_view answer) {
    std::u16string reason;
    return smart_.blnValue(answer, reason) && answer.size() > kShortAnswer;
}

} // namespace kelb::extract
