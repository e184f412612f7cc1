#include "rewrite/ClsSmart.h"

#include "platform/text.h"

#include <array>
#include <unordered_set>

namespace kelb::rewrite {

namespace {

constexpr std::u16string_view kNineSigns = u"\r\n=========\r\n";
constexpr std::u16string_view kEightSigns = u"\r\n========\r\n"; // one less, for whole pairs only. Kept.

struct MarkerPair {
    std::u16string_view opening, closing;
};
constexpr std::array<MarkerPair, 4> kMarkerPairs{{
    {u"[attach]", u"[/attach]"},
    {u"[localimg=", u"[/localimg]"},
    {u"[local]", u"[/local]"},
    {u"[url=", u"[/url]"},
}};

/// Follows a bracketed span unit by unit and tells whether it is the post-edited stamp of forum software, the pattern
/// "*[本此][贴帖]*编辑*". Matching every span afresh would be quadratic on a "[" with thousands of "]" behind it.
class EditStamp {
public:
    void add(char16_t unit) {
        if (seen_ == Seen::Nothing && (last_ == u'本' || last_ == u'此') && (unit == u'贴' || unit == u'帖')) {
            seen_ = Seen::Post;
        } else if (seen_ == Seen::Post && last_ == u'编' && unit == u'辑') {
            seen_ = Seen::PostAndEdit;
        }
        last_ = unit;
    }
    bool complete() const { return seen_ == Seen::PostAndEdit; }

private:
    enum class Seen { Nothing, Post, PostAndEdit };
    Seen seen_ = Seen::Nothing;
    char16_t last_ = 0;
};

bool isMarkUp(std::u16string_view span) {
    return span == u"[/box]" || span.starts_with(u"[box=") || span.starts_with(u"[size=");
}

/// A text from which spans are removed everywhere, one after the other. A span that is known to be absent is not
/// looked for again until something else was removed (a removal may join two halves of it).
class SpanRemover {
public:
    explicit SpanRemover(std::u16string_view text) : text_(text) {}

    void removeEvery(std::u16string_view span) {
        if (absent_.contains(span)) {
            return;
        }
        if (text_.find(span) == text_.npos) {
            absent_.insert(span);
            return;
        }
        platform::replaceAllIn(text_, span, u"");
        absent_.clear();
    }
    const std::u16string& text() const { return text_; }

private:
    std::u16string text_;
    std::unordered_set<std::u16string_view> absent_; ///< views into the text as given
};

void logSpan(std::u16string& log, std::u16string_view signs, std::u16string_view span) {
    log.append(signs).append(span);
}

} // namespace

bool ClsSmart::replaceGarbage(std::u16string_view text, std::u16string& cleaned, std::u16string& log) {
    SpanRemover remover(text);
    std::size_t start = text.npos;
    EditStamp stamp;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == u'[') {
            start = at;
            stamp = {};
        }
        stamp.add(text[at]);
        // The start is not given up at a "]": each further one is judged as the end of a longer span. Kept.
        if (text[at] == u']' && start != text.npos) {
            const std::u16string_view span = text.substr(start, at + 1 - start);
            if (stamp.complete() || isMarkUp(span)) {
                logSpan(log, kNineSigns, span);
                remover.removeEvery(span);
            }
        }
    }
    cleaned = remover.text();
    return !log.empty();
}

bool ClsSmart::replaceGarbageTags(std::u16string_view text, std::u16string& cleaned, std::u16string& log) {
    bool removed = false;
    std::u16string kept(text);
    for (const MarkerPair& pair : kMarkerPairs) {
        std::u16string pairLog;
        std::u16string pairCleaned;
        if (kept.find(pair.opening) != kept.npos &&
            replaceGarbageTag(kept, pairCleaned, pairLog, pair.opening, pair.closing)) {
            kept = std::move(pairCleaned);
            logSpan(log, kEightSigns, pairLog);
            removed = true;
        }
    }
    cleaned = std::move(kept);
    return removed;
}

bool ClsSmart::replaceGarbageTag(std::u16string_view text, std::u16string& cleaned, std::u16string& log,
                                 std::u16string_view opening, std::u16string_view closing) {
    std::u16string kept(text);
    // Markers are compared at the positions 1 to length - length(opening): one short of the last possible start.
    const std::size_t end = text.size() > opening.size() ? text.size() - opening.size() : 0;
    const std::size_t start = text.find(opening);
    bool mayStand = true; // false once no later region can stand in `kept`
    if (start < end) {
        for (std::size_t at = text.find(closing, start); at < end; at = text.find(closing, at + 1)) {
            // Only the first opening marker counts, so each further closing marker logs a longer region from the same
            // start, whose removal usually finds nothing. Kept.
            const std::u16string_view region = text.substr(start, at + closing.size() - start);
            logSpan(log, kNineSigns, region);
            if (mayStand) {
                platform::replaceAllIn(kept, region, u"");
                mayStand = kept.find(region) != kept.npos; // the longer ones begin with this one
            }
        }
    }
    cleaned = std::move(kept);
    return !log.empty();
}

} // namespace kelb::rewrite
