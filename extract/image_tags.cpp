#include "extract/image_tags.h"

#include "platform/letter_case.h"
#include "platform/text.h"

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kelb::extract {

namespace {

constexpr std::u16string_view kStart = u"<img";

struct ViewHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view text) const noexcept { return std::hash<std::u16string_view>()(text); }
};

/// What replacing tag after tag in the whole page comes to, worked out from front to back.
///
/// A tag ends at its only ">", so it can occur only where an "<img" stands, and one without a second "<img" inside is
/// replaced by what its text was first replaced by. Where "<img" stand one in the other, an earlier replacement may
/// have changed the end of a later tag: such a stretch of the page is cut out, and all replacements so far are made in
/// it in their order.
class ImageTagReplacer {
public:
    ImageTagReplacer(std::u16string_view html, const std::function<std::u16string(std::u16string_view)>& replacement)
        : html_(html), replacement_(replacement) {
        out_.reserve(html.size());
    }

    std::u16string run() {
        while (const auto tag = findImageTag(html_, from_)) {
            out_ += html_.substr(from_, tag->begin - from_);
            const std::u16string_view text = html_.substr(tag->begin, tag->end - tag->begin);
            if (platform::findNoCase(text, kStart, 1) == text.npos) {
                const auto known = replaced_.find(text);
                out_ += known == replaced_.end() ? replace(text) : known->second.front().by;
                from_ = tag->end;
            } else {
                from_ = replaceNested(*tag);
            }
        }
        out_ += html_.substr(from_);
        return std::move(out_);
    }

private:
    struct Replacement {
        std::size_t turn; ///< the how manieth of the page, from 1
        std::u16string by;
    };

    const std::u16string& replace(std::u16string_view tag) {
        std::u16string by = replacement_(tag);
        lengths_.insert(tag.size());
        auto& replacements = replaced_[std::u16string(tag)];
        replacements.push_back({++turn_, std::move(by)});
        return replacements.back().by;
    }

    /// Result: where the stretch that begins with this tag ends.
    std::size_t replaceNested(const ImageTag& tag) {
        std::size_t end = tag.end;
        while (true) {
            std::u16string part(html_.substr(tag.begin, end - tag.begin));
            repeatReplacements(part);
            const bool pageEnds = end == html_.size();
            while (pageEnds || isClosed(part)) {
                const auto next = findImageTag(part);
                if (!next) {
                    out_ += part;
                    return end;
                }
                const std::u16string text = part.substr(next->begin, next->end - next->begin);
                platform::replaceAllIn(part, text, replace(text));
            }
            // A tag reaches over the end, because its ">" went with a tag inside it. Twice the length, so that many
            // such steps cost no more than the last one.
            const std::size_t close = html_.find(u'>', end + (end - tag.begin));
            end = close == html_.npos ? html_.size() : close + 1;
        }
    }

    /// No "<img" of the part is without a ">".
    static bool isClosed(std::u16string_view part) {
        const std::size_t lastClose = part.rfind(u'>');
        const std::size_t from = lastClose == part.npos ? 0 : lastClose + 1;
        return platform::findNoCase(part, kStart, from) == part.npos;
    }

    void repeatReplacements(std::u16string& part) const {
        for (std::size_t turn = 0;;) {
            const auto [tag, next] = nextReplacement(part, turn);
            if (next == nullptr) {
                return;
            }
            turn = next->turn;
            platform::replaceAllIn(part, std::u16string(tag), next->by);
        }
    }

    /// The first replacement behind `turn` that finds its tag in the part. Only tags of a length that was replaced are
    /// looked at: many "<img" before one ">" would make as many long texts to compare.
    std::pair<std::u16string_view, const Replacement*> nextReplacement(std::u16string_view part,
                                                                       std::size_t turn) const {
        std::pair<std::u16string_view, const Replacement*> first{{}, nullptr};
        std::size_t close = 0;
        for (std::size_t begin = platform::findNoCase(part, kStart); begin != part.npos;
             begin = platform::findNoCase(part, kStart, begin + 1)) {
            if (close <= begin) {
                close = part.find(u'>', begin);
                if (close == part.npos) {
                    break;
                }
            }
            const std::u16string_view tag = part.substr(begin, close + 1 - begin);
            if (!lengths_.contains(tag.size())) {
                continue;
            }
            const auto known = replaced_.find(tag);
            if (known == replaced_.end()) {
                continue;
            }
            const auto later = std::ranges::upper_bound(known->second, turn, {}, &Replacement::turn);
            if (later != known->second.end() && (first.second == nullptr || later->turn < first.second->turn)) {
                first = {tag, &*later};
            }
        }
        return first;
    }

    std::u16string_view html_;
    const std::function<std::u16string(std::u16string_view)>& replacement_;
    std::u16string out_;
    std::size_t from_ = 0;
    std::size_t turn_ = 0;
    std::unordered_map<std::u16string, std::vector<Replacement>, ViewHash, std::equal_to<>> replaced_;
    std::unordered_set<std::size_t> lengths_;
};

} // namespace

std::optional<ImageTag> findImageTag(std::u16string_view html, std::size_t from) {
    const std::size_t begin = platform::findNoCase(html, kStart, from);
    if (begin == html.npos) {
        return std::nullopt;
    }
    const std::size_t close = html.find(u'>', begin);
    return close == html.npos ? std::nullopt : std::optional(ImageTag{begin, close + 1});
}

std::u16string replaceImageTags(std::u16string_view html,
                                const std::function<std::u16string(std::u16string_view tag)>& replacement) {
    return ImageTagReplacer(html, replacement).run();
}

} // namespace kelb::extract
