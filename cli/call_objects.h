#pragma once

#include "extract/Cls4Article.h"
#include "extract/Cls4Discuz.h"
#include "extract/Cls4QASite.h"
#include "extract/ClsWebExtractor.h"
#include "extract/article_markers.h"
#include "extract/user_names.h"
#include "platform/platform.h"
#include "rewrite/ClsSmart.h"
#include "segment/ClsFenCi.h"

#include <memory>
#include <optional>
#include <string>

namespace kelb::cli {

/// The objects behind the operations of `kelb call`; they live from line to line, as in one run of the program.
class CallObjects {
public:
    explicit CallObjects(const platform::Platform& platform) : platform_(platform) {}

    /// Every object anew, as a fresh start would have it.
    void reset() { state_ = {}; }

    /// Made at first use. Throws platform::FileError while its file is missing; the next use tries again.
    rewrite::ClsSmart& smart();
    /// Those that were set, else those of the application folder (none where the file is missing).
    const extract::UserNames& userNames();
    extract::Cls4Discuz discuz();
    extract::Cls4Article article(); ///< reads the markers that were set last
    extract::Cls4QASite questionSite() { return {smart(), userNames(), platform_.random}; }
    extract::ClsWebExtractor& webExtractor() { return state_.webExtractor; }
    /// Reads its dictionary at the first text that it cuts.
    segment::ClsFenCi& fenCi();
    const platform::Platform& platform() const noexcept { return platform_; }
    platform::Random& random() { return platform_.random; }

    void setUserNames(extract::UserNames names) { state_.userNames = std::move(names); }
    void setMarkers(extract::ArticleMarkers markers) { state_.markers = std::move(markers); }
    void setSiteName(std::u16string siteName) { state_.webExtractor.setSiteName(std::move(siteName)); }

private:
    struct State {
        std::unique_ptr<rewrite::ClsSmart> smart;
        std::optional<extract::UserNames> userNames;
        std::unique_ptr<segment::ClsFenCi> fenCi;
        extract::ArticleMarkers markers;
        extract::ClsWebExtractor webExtractor{u""};
    };

    const platform::Platform& platform_;
    State state_;
};

} // namespace kelb::cli
