#pragma once

#include "platform/page_text.h"
#include "platform/path_map.h"

#include <array>
#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jobs {

/// Every value of the settings file; settingTable() tells section, key, default and meaning of each.
enum class Setting : std::size_t {
    SetupAdultFolder,
    SetupAltSource,
    SetupSiteAPrefix,
    SetupSiteBPrefix,
    SetupPageEncoding,
    SetupChannels,
    Drives,
    Shares,
    CrawlerMachineName,
    CrawlerLanFolder,
    PathsWxdb,
    PathsFillDb,
    PathsMultiDb,
    PathsDvUserDb,
    ForumBoardName,
    ForumImportCid,
    ForumFillCid,
    ForumMendBreaks,
    DedupForumSites,
    DedupArticleSites,
    DedupPublicForum,
    DedupRouter,
    ArticlesSites,
    ArticlesRow5TitleStarts,
    ArticlesRow5TitleEnds,
    ArticlesSiteAPrefix,
    ArticlesMultiTable,
    SqlServerServer,
    SqlServerWxDbConnection,
    SqlServerMendDbConnection,
    MergeSiteLabel,
    MergeSiteFragment,
    MergeBrandLabel,
    MergeTable,
    AddFieldsSiteLabel,
    AddFieldsTable,
    ParamsShareFolder,
    ParamsPortalPath,
    ParamsSourceTable,
    ParamsNoValueUrl,
    TemplateModelPage,
    TemplateSiteName,
    TemplateTimerMs,
    ViewerPage,
    ViewerAddress,
    FileStorePrefix,
    FileStoreArticleBase,
    SafetyTrash,
    SafetyLogFile,
    SafetyMaxDeletePercent,
    Count
};
inline constexpr std::size_t kSettingCount = static_cast<std::size_t>(Setting::Count);

/// One line of the table of settings; the reader of the file, the checks and the printed table all come from it.
struct SettingInfo {
    enum class Shape {
        Text,
        Number,   ///< decimal digits
        Numbered, ///< key1 … keyN (`count`); empty ones are left out
        Rows,     ///< key1 … keyN, each for a row of a table: empty ones keep their places
        Letters   ///< one key for each letter A to Z; `key` is empty
    };
    Setting setting;
    std::u16string_view section;
    std::u16string_view key;
    Shape shape;
    std::size_t count;            ///< of Numbered and Rows
    std::u16string_view fallback; ///< the value when the file has none; Numbered: of the first one
    std::string_view meaning;     ///< one line, English
};
[[nodiscard]] std::span<const SettingInfo, kSettingCount> settingTable() noexcept;
[[nodiscard]] const SettingInfo& settingInfo(Setting setting) noexcept;

/// The values left open, as read at the start of a program run. Immutable.
class Configuration {
public:
    /// Value of a key, "" when the file has none.
    using Reader = std::function<std::u16string(std::u16string_view section, std::u16string_view key)>;

    /// The defaults.
    Configuration();
    /// Asks the reader for every key of the table. Throws SettingError for a number or an encoding that is none.
    explicit Configuration(const Reader& read);

    /// Value or default; "" where there is neither.
    const std::u16string& text(Setting setting) const;
    /// The same, but throws SettingError, naming section and key, when it is empty.
    const std::u16string& required(Setting setting) const;
    /// The non-empty values of a Numbered setting, in order; its default when there are none. All values of Rows.
    const std::vector<std::u16string>& texts(Setting setting) const;
    long number(Setting setting) const;

    platform::PageEncoding pageEncoding() const noexcept { return pageEncoding_; }
    const platform::PathMap& pathMap() const noexcept { return pathMap_; }

private:
    void readNumbered(const SettingInfo& info, const Reader& read);
    void readDrives(const SettingInfo& info, const Reader& read);
    void readShares();
    void check();

    std::array<std::vector<std::u16string>, kSettingCount> values_; ///< single values: exactly one
    platform::PageEncoding pageEncoding_ = platform::PageEncoding::Auto;
    platform::PathMap pathMap_;
};

/// "[Section] key", for messages.
[[nodiscard]] std::string settingName(Setting setting);

} // namespace kelb::jobs
