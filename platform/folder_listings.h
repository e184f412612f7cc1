#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

struct stat;

namespace kelb::platform {

/// Folder ("." and "/" where they have to be) and last component of a native path.
[[nodiscard]] std::string nativeFolder(std::string_view path);
[[nodiscard]] std::string nativeName(std::string_view path);

/// Names of the folders that were searched without regard to case, so that ten thousand look-ups in a folder of ten
/// thousand files read it once. A listing counts while the folder's identity and time of change are those that it was
/// read at; what this program itself adds and removes is entered in it.
class FolderListings {
public:
    /// The entry of `folder` (native path) that equals `name` without regard to case; the first in byte order when
    /// there are several. No value when there is none or the folder cannot be read.
    std::optional<std::string> find(const std::string& folder, std::u16string_view name);

    /// How often a folder was read from the disk so far.
    std::uint64_t reads() const noexcept { return reads_; }

    /// One change that this program makes in a folder. Made before it; told after it succeeded.
    class OwnChange {
    public:
        OwnChange(FolderListings& listings, std::string_view nativePath);
        void added();
        void removed();

    private:
        void finish();

        FolderListings& listings_;
        std::string folder_, name_;
        bool wasCurrent_;
    };

private:
    struct Stamp {
        std::uint64_t device = 0, inode = 0;
        std::timespec changed{};
        bool operator==(const Stamp& other) const noexcept {
            return device == other.device && inode == other.inode && changed.tv_sec == other.changed.tv_sec &&
                   changed.tv_nsec == other.changed.tv_nsec;
        }
    };
    struct Listing {
        Stamp stamp;
        std::timespec readAt{};
        bool settled = false; ///< the folder had been at rest when it was read
        std::uint64_t used = 0;
        std::unordered_multimap<std::u16string, std::string> names; ///< native names by their upper-case text
    };

    static std::optional<Stamp> stampOf(const std::string& folder);
    static Stamp stampOf(const struct ::stat& status);
    static std::optional<Listing> read(const std::string& folder);
    Listing* current(const std::string& folder);
    Listing* keep(const std::string& folder, Listing listing);

    std::map<std::string, Listing> listings_; ///< a handful, by native folder
    std::uint64_t uses_ = 0;
    std::uint64_t reads_ = 0;
};

} // namespace kelb::platform
