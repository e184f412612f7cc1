#pragma once

#include "platform/file_system.h"
#include "platform/page_text.h"
#include "platform/ui_pump.h"
#include "store/page_counter.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::store {

/// What nxtArticleV2 gives when the next sub-folder is not there.
inline constexpr std::u16string_view kFileLoopOver = u"FileLoopOver!";

/// What names the pages of one crawled site.
struct PageStoreNames {
    std::u16string prefix;      ///< in front of the number in the names that StoreIt gives
    std::u16string articleBase; ///< the base folder of nxtArticle
};

/// Keeps pages as files in sub-folders "0", "1", "2" … of a base folder and hands them out one a call. The place lies
/// in the base folder's counter file, so a walk goes on in a later run: in the sub-folder where it stood, but from that
/// one's first file on. Kept. Files come in the order of their names; a name that holds "|" is passed over.
/// A sub-folder takes 1,001 files and gives 1,000. Throws platform::FileError, CounterError and, for numbers past
/// 32,767, std::overflow_error.
class ClsIO {
public:
    /// When the place reaches the counter file.
    enum class Keeping {
        EachCall,
        OnRequest, ///< at keepPlace(), when what was made of the pages is safe
    };

    ClsIO(platform::FileSystem& files, platform::PageEncoding encoding, PageStoreNames names, platform::UiPump& events,
          Keeping keeping = Keeping::EachCall);

    /// The next page of the folder, kFileLoopOver, or a text "Err,…" where a sub-folder has no more files, which moves
    /// the walk to the next one. The folder gains a "\" at its end. When a page cannot be read, the walk has moved on.
    std::u16string nxtArticleV2(std::u16string& folder);
    /// The older walk, over the configured base folder: the file is the one whose position among the sub-folder's files
    /// is the stored file number, and a missing sub-folder is an "Err,…", too.
    std::u16string nxtArticle();
    /// Writes the page (code page 936) to the next free name, and gives its path. A kill leaves no half file.
    std::u16string StoreIt(std::u16string_view content, std::u16string& basePath);

    /// Writes the place of the walk to the counter file if it has moved.
    void keepPlace();

    /// Path of the page handed out last; "" when the call gave none.
    const std::u16string& page() const noexcept { return page_; }
    /// Where the walk stands; no value before its first call.
    const std::optional<PagePlace>& place() const noexcept { return place_; }
    /// Files of sub-folders that this walk has left behind without handing them out.
    std::size_t passedOver() const noexcept { return passedOver_; }
    /// Whether a file of this name is handed out.
    static bool isUsableName(std::u16string_view name) noexcept { return name.find(u'|') == name.npos; }
    /// Is told the path of each file whose name cannot be handed out.
    std::function<void(std::u16string_view path)> onUnusableName;

private:
    enum class Pick { ByIndex, ByFileNumber };

    PagePlace placeOf(std::u16string_view base);
    std::u16string next(std::u16string_view base, Pick pick);
    std::u16string take(const std::u16string& path);
    void listNames(const std::u16string& subFolder);
    void moveOn(std::u16string_view base, PagePlace place, std::size_t handedOut);
    std::u16string roomFor(std::u16string_view basePath);

    platform::FileSystem& files_;
    platform::PageEncoding encoding_;
    PageStoreNames names_;
    platform::UiPump& events_;
    Keeping keeping_;

    std::u16string base_; ///< whose place is known
    std::optional<PagePlace> place_;
    bool moved_ = false;                    ///< place_ is ahead of the counter file
    std::vector<std::u16string> fileNames_; ///< of the current sub-folder
    std::size_t index_ = 0;                 ///< of the next one
    std::u16string page_;
    std::size_t passedOver_ = 0;

    std::int16_t storeFolder_ = 0, storeFile_ = 0;
    std::u16string countedFolder_; ///< whose number of files is known
    std::size_t filesInFolder_ = 0;
};

} // namespace kelb::store
