#pragma once

#include "jet/types.h"

#include "platform/file_system.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The rollback journal: the old content of every page that a commit is about to change, beside the database. Written
/// and synced before the database is touched, removed when the new pages are safe: its removal is the commit. A whole
/// journal found at opening therefore belongs to a commit that was cut off, and is played back; one that is not whole
/// belongs to a commit that had not begun to write, and is thrown away. The database format has no log of its own.
///
/// | offset | size | meaning |
/// |---|---|---|
/// | 0 | 8 | "KELBJRNL" |
/// | 8 | u32 | version, 1 |
/// | 12 | u32 | page size |
/// | 16 | u32 | pages of the database before the commit |
/// | 20 | u32 | entries |
/// | 24 | u64 | checksum of page 0, which tells a replaced database; 0 when the commit changes that page itself |
/// | 32 | u64 | checksum of bytes 0 to 31 |
/// | 40 | entries | u32 page number, the page, u64 checksum running on from the one before |
namespace kelb::jet {

inline constexpr std::size_t kJournalHeader = 40; ///< bytes

/// `<database>.kelb-journal`
[[nodiscard]] std::u16string journalPath(std::u16string_view databasePath);

/// 64 bits over whole words; continues from `seed`. Any change within one word changes the result.
[[nodiscard]] std::uint64_t journalChecksum(std::span<const std::byte> bytes, std::uint64_t seed) noexcept;

/// Writes one journal.
class JournalWriter {
public:
    struct Header {
        std::size_t pageSize;
        std::uint32_t pagesBefore;
        std::uint32_t entries;
        std::uint64_t headerPageSum; ///< journalChecksum(page 0, 0), or 0
    };
    /// Creates the file. Throws FileError; a journal half written is thrown away at the next open.
    JournalWriter(platform::FileSystem& files, std::u16string_view databasePath, const Header& header);
    void add(PageNumber page, std::span<const std::byte> oldContent);
    /// On return the journal is on the disk. Requires that all entries were added.
    void finish();

private:
    void flush();

    platform::FileSystem& files_;
    std::u16string path_;
    std::unique_ptr<platform::RandomAccessFile> file_;
    std::vector<std::byte> buffer_;
    std::uint64_t written_ = 0;
    std::uint64_t sum_ = 0;
};

/// A whole journal found beside a database.
class Journal {
public:
    enum class Found { None, Torn, Whole };
    struct Search;
    /// Reads and checks the journal of a database. Throws FileError.
    static Search find(platform::FileSystem& files, std::u16string_view databasePath);

    std::size_t pageSize() const noexcept { return pageSize_; }
    std::uint32_t pagesBefore() const noexcept { return pagesBefore_; }
    bool holds(PageNumber page) const { return offsets_.contains(raw(page)); }
    /// Old content of a page. Requires holds(page) and page.size() == pageSize().
    void read(PageNumber page, std::span<std::byte> bytes) const;
    /// Throws Error (Corrupt) unless the database, of pages of that size, is the one that the journal was written for.
    void requireFor(const platform::RandomAccessFile& database, std::u16string_view databasePath,
                    std::size_t pageSize) const;
    /// Gives the database its old pages and length back, and syncs it.
    void playBack(platform::RandomAccessFile& database) const;

private:
    std::unique_ptr<platform::RandomAccessFile> file_;
    std::size_t pageSize_ = 0;
    std::uint32_t pagesBefore_ = 0;
    std::uint64_t headerPageSum_ = 0;
    std::unordered_map<std::uint32_t, std::uint64_t> offsets_; ///< page number to the place of its bytes
};

struct Journal::Search {
    Found found = Found::None;
    std::optional<Journal> journal; ///< when whole
};

/// What opening for writing does first: plays a whole journal back, throws a torn one away. The database must be locked
/// by the caller, so that the journal is not a live writer's. Throws FileError, and Error (Corrupt) for a whole journal
/// of another file.
void recover(platform::FileSystem& files, std::u16string_view databasePath, platform::RandomAccessFile& database,
             std::size_t pageSize);

} // namespace kelb::jet
