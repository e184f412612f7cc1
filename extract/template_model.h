#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::extract {

/// The name at the front of a tag fragment (a page is split at "<"): up to its first ">" or blank, case kept: "div",
/// "/div", "!--". A fragment with neither from its second character on is cut where the fragment before it was. Kept.
/// `endPosition`: 1-based, 0 before the first fragment; carried from call to call. "" when it is below 2.
[[nodiscard]] std::u16string_view tagName(std::u16string_view fragment, std::int32_t& endPosition);

/// Where the body opens and closes: the first of the first 101 fragments that begins with `begin`, the last of the last
/// 101 that begins with `end` (both given in lower case; the fragments' case does not count). An index is written where
/// one is found. True when both were found at 1 or more.
[[nodiscard]] bool getSpecialIdx(std::span<const std::u16string_view> fragments, std::u16string_view begin,
                                 std::u16string_view end, std::int32_t& outBegin, std::int32_t& outEnd);

/// Where the body of a page starts: at the first "<body", else "<BODY", else "<html", else "<HTML"; npos without any.
[[nodiscard]] std::size_t bodyStart(std::u16string_view page) noexcept;

/// How a page fits the model.
struct Alignment {
    std::vector<bool> hits; ///< by fragment of the model
    std::size_t forward = 0, reverse = 0;
    std::vector<std::size_t> missRuns; ///< fragments without a hit before, between and behind the hits
};

/// A page of the kind that is to be extracted, cut at its tags; pages are compared with it tag by tag.
class TemplateModel {
public:
    TemplateModel() = default;
    /// Keeps the page from its body on.
    explicit TemplateModel(std::u16string page);
    TemplateModel(const TemplateModel&) = delete; // the fragments are views
    TemplateModel& operator=(const TemplateModel&) = delete;

    std::span<const std::u16string_view> fragments() const noexcept { return fragments_; } ///< `arrTagModel`
    std::span<const std::u16string_view> names() const noexcept { return names_; }         ///< `arrTagModelBro`
    std::int32_t bodyBegin() const noexcept { return bodyBegin_; } ///< 0 unless both ends of the body were found
    std::int32_t bodyEnd() const noexcept { return bodyEnd_; }

    /// `body`: a page from its body on. Takes the page's fragments in step with the model's, forward from where the
    /// body opens and back from where it closes; a hit is a fragment that begins with the model's tag name.
    [[nodiscard]] Alignment align(std::u16string_view body) const;

private:
    std::u16string text_;
    std::vector<std::u16string_view> fragments_, names_;
    std::int32_t bodyBegin_ = 0, bodyEnd_ = 0;
};

} // namespace kelb::extract
