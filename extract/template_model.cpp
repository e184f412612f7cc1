#include "extract/template_model.h"

#include "platform/letter_case.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace kelb::extract {
namespace {

constexpr std::size_t kWindow = 101; // fragments at either end in which the body's tags are looked for
constexpr std::u16string_view kBodyOpens = u"body";
constexpr std::u16string_view kBodyCloses = u"/body";

bool startsWithLower(std::u16string_view text, std::u16string_view lower) {
    return text.size() >= lower.size() &&
           std::equal(lower.begin(), lower.end(), text.begin(),
                      [](char16_t wanted, char16_t unit) { return platform::lower(unit) == wanted; });
}

/// Fragments of a page, of which only the front and the end are asked for: a page of 50 MB may have as many.
class PageEnds {
public:
    /// `reach`: fragments kept at either end; at least 1.
    PageEnds(std::u16string_view page, std::size_t reach) : reach_(reach) {
        for (std::size_t from = 0; from <= page.size(); ++count_) {
            const std::size_t next = std::min(page.find(u'<', from), page.size());
            keep(page.substr(from, next - from));
            from = next + 1;
        }
    }

    std::size_t count() const noexcept { return count_; }
    /// Requires an index within reach of either end.
    std::u16string_view operator[](std::size_t index) const {
        return index < reach_ ? front_[index] : back_[index % reach_];
    }

private:
    void keep(std::u16string_view fragment) {
        if (count_ < reach_) {
            front_.push_back(fragment);
            return;
        }
        back_.resize(reach_); // a ring: each place holds the last fragment that came to it
        back_[count_ % reach_] = fragment;
    }

    std::size_t reach_;
    std::size_t count_ = 0;
    std::vector<std::u16string_view> front_, back_;
};

/// getSpecialIdx over anything that has a number of fragments and gives them by index.
template <typename Fragments>
bool specialIndexes(const Fragments& fragments, std::size_t count,
                    std::pair<std::u16string_view, std::u16string_view> wanted, std::int32_t& outBegin,
                    std::int32_t& outEnd) {
    bool found = false;
    for (std::size_t i = 0; i < std::min(count, kWindow) && !found; ++i) {
        if (startsWithLower(fragments[i], wanted.first)) {
            outBegin = static_cast<std::int32_t>(i);
            found = true;
        }
    }
    bool closed = false;
    for (std::size_t i = count; i-- > (count > kWindow ? count - kWindow : 0) && !closed;) {
        if (startsWithLower(fragments[i], wanted.second)) {
            outEnd = static_cast<std::int32_t>(i);
            closed = true;
        }
    }
    return found && closed && outBegin >= 1 && outEnd >= 1;
}

std::vector<std::size_t> runsWithout(const std::vector<bool>& hits) {
    std::vector<std::size_t> runs(1);
    for (const bool hit : hits) {
        if (hit) {
            runs.push_back(0);
        } else {
            ++runs.back();
        }
    }
    return runs;
}

} // namespace

std::u16string_view tagName(std::u16string_view fragment, std::int32_t& endPosition) {
    const auto position = [fragment](char16_t c) { // 1-based; 0 for one that does not end a name
        const std::size_t at = fragment.find(c);
        return at == std::u16string_view::npos || at == 0 ? 0 : static_cast<std::int32_t>(at + 1);
    };
    const std::int32_t bracket = position(u'>');
    const std::int32_t blank = position(u' ');
    if (bracket != 0 || blank != 0) {
        endPosition = bracket == 0 || blank == 0 ? std::max(bracket, blank) : std::min(bracket, blank);
    }
    return endPosition < 2 ? std::u16string_view()
                           : platform::left(fragment, static_cast<std::size_t>(endPosition) - 1);
}

bool getSpecialIdx(std::span<const std::u16string_view> fragments, std::u16string_view begin, std::u16string_view end,
                   std::int32_t& outBegin, std::int32_t& outEnd) {
    return specialIndexes(fragments, fragments.size(), {begin, end}, outBegin, outEnd);
}

std::size_t bodyStart(std::u16string_view page) noexcept {
    for (const std::u16string_view mark : {u"<body", u"<BODY", u"<html", u"<HTML"}) {
        if (const std::size_t at = page.find(mark); at != std::u16string_view::npos) {
            return at;
        }
    }
    return std::u16string_view::npos;
}

TemplateModel::TemplateModel(std::u16string page) : text_(std::move(page)) {
    if (const std::size_t start = bodyStart(text_); start != std::u16string::npos) {
        text_.erase(0, start);
    }
    fragments_ = platform::split(text_, u"<");
    if (std::int32_t begin = 0, end = 0; getSpecialIdx(fragments_, kBodyOpens, kBodyCloses, begin, end)) {
        bodyBegin_ = begin;
        bodyEnd_ = end;
    }
    std::int32_t endPosition = 0;
    for (const std::u16string_view fragment : fragments_) {
        names_.push_back(tagName(fragment, endPosition));
    }
}

Alignment TemplateModel::align(std::u16string_view body) const {
    Alignment found;
    found.hits.resize(names_.size());
    if (names_.empty()) {
        return found;
    }
    const PageEnds page(body, names_.size() + kWindow);
    std::int32_t begin = 0, end = 0;
    if (!specialIndexes(page, page.count(), {kBodyOpens, kBodyCloses}, begin, end)) {
        begin = end = 0;
    }
    const auto hit = [&](std::size_t inModel, std::size_t inPage) {
        const bool fits = page[inPage].starts_with(names_[inModel]);
        found.hits[inModel] = found.hits[inModel] || fits;
        return fits;
    };
    const std::size_t commonEnd = std::min(names_.size(), page.count()) - 1;
    for (auto i = static_cast<std::size_t>(bodyBegin_), j = static_cast<std::size_t>(begin);
         i <= commonEnd && j < page.count(); ++i, ++j) {
        found.forward += hit(i, j) ? 1U : 0U;
    }
    for (std::int32_t i = bodyEnd_, j = end; i >= 0; --i, --j) {
        found.reverse += hit(static_cast<std::size_t>(i), static_cast<std::size_t>(j)) ? 1U : 0U;
        if (j < 2) {
            break;
        }
    }
    found.missRuns = runsWithout(found.hits);
    return found;
}

} // namespace kelb::extract
