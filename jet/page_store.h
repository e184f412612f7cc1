#pragma once

#include "jet/journal.h"
#include "jet/pager.h"

#include "platform/file_system.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelb::jet {

/// The committed pages of a database: its file, seen through the journal of an interrupted commit when it is not open
/// for writing, or with changed pages in a temporary file (Scratch). Caches nothing.
class PageStore {
public:
    struct Change {
        PageNumber page;
        const std::byte* bytes;
    };

    /// As the constructor of Pager.
    PageStore(platform::FileSystem& files, const std::u16string& path, std::unique_ptr<platform::RandomAccessFile> file,
              Pager::Access access, std::size_t pageSize);

    std::uint32_t pageCount() const noexcept { return pageCount_; }
    std::size_t strayBytes() const noexcept { return strayBytes_; }
    /// Fills `bytes` with whole pages from `first` on. Requires that they are below pageCount(). Throws FileError.
    void read(PageNumber first, std::span<std::byte> bytes) const;

    /// Makes `changes` (sorted by page; every page from pageCount() on among them) the committed state. After a throw
    /// the file is as before, or the journal that is left mends it, or only the last sync is missing.
    void commit(std::span<const Change> changes, std::uint32_t newPageCount);

private:
    void readRun(std::uint32_t first, std::span<std::byte> bytes) const;
    void commitToFile(std::span<const Change> changes);
    void commitToScratch(std::span<const Change> changes);
    void writeJournal(std::span<const Change> changes);
    void writePages(std::span<const Change> changes);

    platform::FileSystem& files_;
    std::u16string path_;
    std::unique_ptr<platform::RandomAccessFile> file_;
    std::size_t pageSize_;
    bool scratch_;
    std::uint32_t pageCount_ = 0;
    std::size_t strayBytes_ = 0; ///< behind the last whole page
    std::optional<Journal> overlay_;
    std::unique_ptr<platform::RandomAccessFile> scratchFile_; ///< made at the first commit
    std::vector<std::uint32_t> scratchSlot_;                  ///< by page: 1 + slot in the temporary file, 0 = none
    std::uint32_t scratchSlots_ = 0;
};

} // namespace kelb::jet
