#include "store/ClsIO.h"

#include "platform/code_page.h"
#include "platform/text.h"

#include <limits>
#include <stdexcept>

namespace kelb::store {
namespace {

constexpr std::int16_t kLastFileNo = 998;                     ///< a higher one ends the sub-folder
constexpr std::int16_t kFolderEnds = 999;                     ///< file number that a missing file sets
constexpr std::size_t kFullFolder = 1001;                     ///< files
constexpr std::u16string_view kNoFile = u"dsdsdsdfssddsdsdf"; ///< a name that never exists
constexpr std::u16string_view kError = u"Err,";

std::int16_t oneMore(std::int16_t number, std::string_view what) {
    if (number == std::numeric_limits<std::int16_t>::max()) {
        throw std::overflow_error("The numbers of the stored pages' " + std::string(what) +
                                  " end at 32767. Go on with another base folder.");
    }
    return static_cast<std::int16_t>(number + 1);
}

} // namespace

ClsIO::ClsIO(platform::FileSystem& files, platform::PageEncoding encoding, PageStoreNames names,
             platform::UiPump& events, Keeping keeping)
    : files_(files), encoding_(encoding), names_(std::move(names)), events_(events), keeping_(keeping) {}

std::u16string ClsIO::nxtArticleV2(std::u16string& folder) {
    if (!folder.ends_with(u'\\')) {
        folder += u'\\';
    }
    return next(folder, Pick::ByIndex);
}

std::u16string ClsIO::nxtArticle() {
    std::u16string base = names_.articleBase;
    if (!base.ends_with(u'\\')) {
        base += u'\\';
    }
    return next(base, Pick::ByFileNumber);
}

std::u16string ClsIO::next(std::u16string_view base, Pick pick) {
    page_.clear();
    PagePlace place = placeOf(base);
    const std::u16string subFolder = std::u16string(base) + platform::number(place.folderNo);
    if (!files_.folderExists(subFolder)) {
        return pick == Pick::ByIndex ? std::u16string(kFileLoopOver)
                                     : std::u16string(kError) + subFolder + u" Not found.";
    }
    if (fileNames_.empty()) {
        listNames(subFolder);
    }
    // The index and the file number part ways when a walk goes on in a later run: the index begins at 0. Kept.
    const auto chosen = pick == Pick::ByIndex ? index_ : static_cast<std::size_t>(place.fileNo);
    ++index_;
    const bool found = chosen < fileNames_.size();
    const std::u16string path = subFolder + u"\\" + std::u16string(found ? fileNames_[chosen] : kNoFile);
    const bool there = found && files_.fileExists(path);
    if (!there) {
        place.fileNo = kFolderEnds;
    }
    moveOn(base, place, chosen + 1);
    if (there) {
        return take(path);
    }
    return std::u16string(kError) + (pick == Pick::ByIndex ? path + u" is Not Exists." : u" filePath Not found.");
}

/// The walk has moved on already, so that a page that cannot be read does not hold it up.
std::u16string ClsIO::take(const std::u16string& path) {
    page_ = path;
    return platform::decodePage(files_.readFile(path), encoding_);
}

PagePlace ClsIO::placeOf(std::u16string_view base) {
    if (keeping_ == Keeping::OnRequest && place_ && base_ == base) {
        return *place_;
    }
    std::optional<PagePlace> stored = readPlace(files_, base);
    if (!stored) {
        stored.emplace();
        writePlace(files_, base, *stored);
    }
    base_ = base;
    place_ = stored;
    moved_ = false;
    return *stored;
}

void ClsIO::listNames(const std::u16string& subFolder) {
    for (std::u16string& name : files_.listFiles(subFolder)) {
        events_.yield();
        if (isUsableName(name)) {
            fileNames_.push_back(std::move(name));
        } else if (onUnusableName) {
            std::u16string path = subFolder;
            path.append(u"\\").append(name);
            onUnusableName(path);
        }
    }
}

/// From the file that was asked for to the one behind it.
void ClsIO::moveOn(std::u16string_view base, PagePlace place, std::size_t handedOut) {
    if (place.fileNo > kLastFileNo) {
        place = {oneMore(place.folderNo, "sub-folders"), 0};
        passedOver_ += handedOut < fileNames_.size() ? fileNames_.size() - handedOut : 0;
        fileNames_.clear();
        index_ = 0;
    } else {
        ++place.fileNo;
    }
    place_ = place;
    moved_ = true;
    if (keeping_ == Keeping::EachCall) {
        writePlace(files_, base, place);
        moved_ = false;
    }
}

void ClsIO::keepPlace() {
    if (moved_) {
        writePlace(files_, base_, *place_);
        moved_ = false;
    }
}

/// A sub-folder that takes one more file; it is made when it is missing. The files of one are counted once.
std::u16string ClsIO::roomFor(std::u16string_view basePath) {
    for (;; storeFolder_ = oneMore(storeFolder_, "sub-folders")) {
        std::u16string subFolder = std::u16string(basePath) + u"\\" + platform::number(storeFolder_);
        if (!files_.folderExists(subFolder)) {
            files_.makeFolders(subFolder);
            countedFolder_ = subFolder;
            filesInFolder_ = 0;
            return subFolder;
        }
        if (countedFolder_ != subFolder) {
            countedFolder_ = subFolder;
            filesInFolder_ = files_.listFiles(subFolder).size();
        }
        if (filesInFolder_ < kFullFolder) {
            return subFolder;
        }
    }
}

std::u16string ClsIO::StoreIt(std::u16string_view content, std::u16string& basePath) {
    const std::u16string subFolder = roomFor(basePath);
    const auto candidate = [&] { return subFolder + u"\\" + names_.prefix + platform::number(storeFile_) + u".htm"; };
    std::u16string path = candidate();
    while (files_.fileExists(path)) {
        storeFile_ = oneMore(storeFile_, "files");
        path = candidate();
    }
    files_.replaceFile(path, platform::encode936(content));
    ++filesInFolder_;
    return path;
}

} // namespace kelb::store
