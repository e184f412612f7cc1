#include "rewrite/ClsSmart.h"

#include "platform/code_page.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace kelb::rewrite {

namespace {

constexpr std::size_t kLeastGoodUnits = 4;    ///< a text with fewer says nothing
constexpr std::size_t kShortSegment = 7;      ///< what is left of a thank-you segment below this goes, too
constexpr std::size_t kMostDrawingPieces = 5; ///< pieces between "图纸"
constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

constexpr std::array<std::u16string_view, 17> kThanks{
    u"谢谢",      u"楼主", u"分享", u"资料",       u"感谢",     u"论坛有您更经彩", u"谢谢楼主的宝贵资料", u"多谢",
    u"谢谢分享",  u"收下", u"学习", u"先谢楼主了", u"先谢楼主", u"谢楼主了",       u"好好学习天天向上",   u"看看再说",
    u"看看再说吧"};

/// Units with which a thank-you phrase begins: a segment without any of them needs no search.
constexpr std::u16string_view kThanksBegin = u"谢楼分资感论多收学先好看";
static_assert(std::ranges::all_of(kThanks, [](std::u16string_view phrase) {
    return kThanksBegin.find(phrase.front()) != phrase.npos;
}));

constexpr bool isDropped(char16_t unit) {
    return unit == u'|' || unit == u'-' || unit == u'—' || unit == u'/';
}

constexpr bool isSeparator(char16_t unit) {
    return std::u16string_view(u"，,。？?！! \u3000").find(unit) != std::u16string_view::npos;
}

/// Takes the phrases out in their order. Only after a phrase was found is a segment short enough to go whole.
void removeThanks(std::u16string& segment) {
    for (const std::u16string_view phrase : kThanks) {
        if (segment.find(phrase) == segment.npos) {
            continue;
        }
        platform::replaceAllIn(segment, phrase, u"");
        if (segment.size() < kShortSegment) {
            segment.clear();
            return;
        }
    }
}

/// Walks the segments between separators and adds up what is left of them.
class GoodUnits {
public:
    void add(char16_t unit) {
        if (unit == u'\n' && !segment_.empty() && segment_.back() == u'\r') {
            segment_.pop_back(); // CR LF parts segments, also when a dropped mark stood between the two
            endSegment();
        } else if (isSeparator(unit)) {
            endSegment();
        } else {
            segment_.push_back(unit);
            mayThank_ = mayThank_ || kThanksBegin.find(unit) != kThanksBegin.npos;
        }
    }
    void endSegment() {
        if (mayThank_) {
            removeThanks(segment_);
            mayThank_ = false;
        }
        count_ += segment_.size();
        segment_.clear();
    }
    std::size_t count() const { return count_; }

private:
    std::u16string segment_;
    bool mayThank_ = false;
    std::size_t count_ = 0;
};

/// Stops early once `enough` is reached; the result is then at least `enough`.
std::size_t countGoodUnits(std::u16string_view text, std::size_t enough) {
    GoodUnits good;
    for (const char16_t unit : text) {
        if (!isDropped(unit)) {
            good.add(unit);
            if (good.count() >= enough) {
                return good.count();
            }
        }
    }
    good.endSegment();
    return good.count();
}

void putInFront(std::u16string& sReason, std::u16string_view entry) {
    sReason.insert(0, std::u16string(entry) + u'|');
}

} // namespace

std::int16_t ClsSmart::CountGoodChar(std::u16string_view text) {
    const std::size_t count = countGoodUnits(text, kNoLimit);
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
        throw std::overflow_error("CountGoodChar: more than 32767 useful characters");
    }
    return static_cast<std::int16_t>(count);
}

bool ClsSmart::blnValue(std::u16string_view text, std::u16string& sReason) {
    if (text.empty()) {
        putInFront(sReason, u"空");
        return false;
    }
    if (text == lastValue_) {
        putInFront(sReason, u"与上次重复");
        return false;
    }
    lastValue_ = text;
    if (const auto mark = adMarks_.firstIn(text)) {
        putInFront(sReason, std::u16string(u"Include: ").append(*mark));
        return false;
    }
    // A count too large for CountGoodChar passes, as does every count that is not too small.
    if (countGoodUnits(text, kLeastGoodUnits) < kLeastGoodUnits) {
        putInFront(sReason, u"无有效字符");
        return false;
    }
    if (!platform::hasDoubleByte(text)) {
        putInFront(sReason, u"纯字母");
        return false;
    }
    return true;
}

bool ClsSmart::blnValue2(std::u16string_view text) {
    constexpr std::u16string_view kDrawing = u"图纸";
    std::size_t pieces = 1;
    for (std::size_t at = text.find(kDrawing); at != text.npos && pieces <= kMostDrawingPieces;
         at = text.find(kDrawing, at + kDrawing.size())) {
        ++pieces;
    }
    return pieces <= kMostDrawingPieces;
}

} // namespace kelb::rewrite
