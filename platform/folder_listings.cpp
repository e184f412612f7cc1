#include "platform/folder_listings.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

namespace kelb::platform {

namespace {

constexpr std::size_t kMostListings = 8; ///< a job looks into one or two folders at a time

// File times tick in steps, of 2 s on the coarsest disks. A change in the same step as the one before it leaves no
// trace, so a listing that was read within a step of the last change is believed for half a second only.
constexpr double kTimeStep = 2.0;
constexpr double kUnsettledLife = 0.5;

double secondsBetween(const std::timespec& from, const std::timespec& to) noexcept {
    return static_cast<double>(to.tv_sec - from.tv_sec) + static_cast<double>(to.tv_nsec - from.tv_nsec) * 1e-9;
}

std::timespec now() noexcept {
    std::timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return time;
}

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

std::u16string keyOf(std::string_view nativeName) {
    return upperCase(fromUtf8(nativeName));
}

} // namespace

std::string nativeFolder(std::string_view path) {
    const std::size_t separator = path.rfind('/');
    return separator == path.npos ? "." : std::string(path.substr(0, separator == 0 ? 1 : separator));
}

std::string nativeName(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1));
}

FolderListings::Stamp FolderListings::stampOf(const struct ::stat& status) {
    return {status.st_dev, status.st_ino, status.st_mtim};
}

std::optional<FolderListings::Stamp> FolderListings::stampOf(const std::string& folder) {
    struct ::stat status {};
    if (::stat(folder.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return stampOf(status);
}

std::optional<FolderListings::Listing> FolderListings::read(const std::string& folder) {
    const std::unique_ptr<DIR, CloseFolder> open(opendir(folder.c_str()));
    struct ::stat status {};
    if (open == nullptr || fstat(dirfd(open.get()), &status) != 0) {
        return std::nullopt;
    }
    Listing listing;
    listing.stamp = stampOf(status);
    listing.readAt = now();
    listing.settled = secondsBetween(listing.stamp.changed, listing.readAt) > kTimeStep;
    while (const dirent* entry = readdir(open.get())) {
        listing.names.emplace(keyOf(entry->d_name), entry->d_name);
    }
    return listing;
}

FolderListings::Listing* FolderListings::current(const std::string& folder) {
    const auto kept = listings_.find(folder);
    if (kept == listings_.end()) {
        return nullptr;
    }
    Listing& listing = kept->second;
    const double age = secondsBetween(listing.readAt, now());
    const bool believed = listing.settled || (age >= 0 && age < kUnsettledLife);
    if (!believed || stampOf(folder) != listing.stamp) {
        return nullptr;
    }
    listing.used = ++uses_;
    return &listing;
}

FolderListings::Listing* FolderListings::keep(const std::string& folder, Listing listing) {
    if (listings_.size() >= kMostListings && !listings_.contains(folder)) {
        listings_.erase(std::min_element(listings_.begin(), listings_.end(),
                                         [](const auto& a, const auto& b) { return a.second.used < b.second.used; }));
    }
    listing.used = ++uses_;
    return &listings_.insert_or_assign(folder, std::move(listing)).first->second;
}

std::optional<std::string> FolderListings::find(const std::string& folder, std::u16string_view name) {
    const Listing* listing = current(folder);
    if (listing == nullptr) {
        ++reads_;
        auto fresh = read(folder);
        if (!fresh) {
            listings_.erase(folder);
            return std::nullopt;
        }
        listing = keep(folder, std::move(*fresh));
    }
    const auto [first, last] = listing->names.equal_range(upperCase(name));
    if (first == last) {
        return std::nullopt;
    }
    return std::min_element(first, last, [](const auto& a, const auto& b) { return a.second < b.second; })->second;
}

FolderListings::OwnChange::OwnChange(FolderListings& listings, std::string_view nativePath)
    : listings_(listings), folder_(nativeFolder(nativePath)), name_(nativeName(nativePath)),
      wasCurrent_(listings.current(folder_) != nullptr) {}

void FolderListings::OwnChange::finish() {
    const auto stamp = stampOf(folder_);
    if (!stamp) {
        listings_.listings_.erase(folder_);
        return;
    }
    listings_.listings_.at(folder_).stamp = *stamp;
}

void FolderListings::OwnChange::added() {
    if (wasCurrent_) {
        listings_.listings_.at(folder_).names.emplace(keyOf(name_), name_);
        finish();
    }
}

void FolderListings::OwnChange::removed() {
    if (wasCurrent_) {
        auto& names = listings_.listings_.at(folder_).names;
        const auto [first, last] = names.equal_range(keyOf(name_));
        const auto gone = std::find_if(first, last, [this](const auto& entry) { return entry.second == name_; });
        if (gone != last) {
            names.erase(gone);
        }
        finish();
    }
}

} // namespace kelb::platform
