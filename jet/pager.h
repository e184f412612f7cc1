#pragma once

#include "jet/error.h"
#include "jet/types.h"

#include "platform/clock.h"
#include "platform/file_system.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace kelb::jet {

/// One cached page. The pager's own; others hold it through PageRef and PageEdit.
struct Frame {
    std::unique_ptr<std::byte[]> bytes;
    std::size_t size = 0;
    PageNumber number = kNoPage;
    std::uint32_t pins = 0;    ///< PageRefs and PageEdits alive
    Frame* previous = nullptr; ///< in the pager's ring of clean or of changed frames
    Frame* following = nullptr;
    std::uint16_t undoneBy = 0; ///< innermost operation (1 = outermost) that keeps an image of the page, 0 = none
    bool changed = false;       ///< differs from the committed page
    bool used = false;          ///< since the eviction hand passed last
};

/// A pinned page for reading. The bytes stay where they are while any PageRef or PageEdit of the page lives; they show
/// changes made through a PageEdit. After an abort or rollback a PageRef of a page that went away holds stale bytes.
/// Must not outlive the pager.
class PageRef {
public:
    PageRef() = default;
    PageRef(const PageRef& other) noexcept : PageRef(other.frame_) {}
    PageRef(PageRef&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
    PageRef& operator=(PageRef other) noexcept {
        std::swap(frame_, other.frame_);
        return *this;
    }
    ~PageRef() {
        if (frame_ != nullptr)
            --frame_->pins;
    }

    explicit operator bool() const noexcept { return frame_ != nullptr; }
    PageNumber number() const noexcept { return frame_->number; }
    std::span<const std::byte> bytes() const noexcept { return {frame_->bytes.get(), frame_->size}; }
    const std::byte* data() const noexcept { return frame_->bytes.get(); }

protected:
    friend class Pager;
    explicit PageRef(Frame* frame) noexcept : frame_(frame) {
        if (frame_ != nullptr)
            ++frame_->pins;
    }
    Frame* frame_ = nullptr;
};

/// A pinned page that may be changed within the operation under way.
class PageEdit : public PageRef {
public:
    PageEdit() = default;
    std::span<std::byte> bytes() const noexcept { return {frame_->bytes.get(), frame_->size}; }
    std::byte* data() const noexcept { return frame_->bytes.get(); }

private:
    friend class Pager;
    explicit PageEdit(Frame* frame) noexcept : PageRef(frame) {}
};

/// The file as numbered pages with a bounded cache; holds changes back until they are committed through the rollback
/// journal (jet/journal.h). Knows nothing of what a page holds. One thread.
///
/// An *operation* is the unit that happens whole or not at all (one row, one definition change): pages are edited only
/// inside one; leaving it without done() puts back every page it touched. A *transaction* is several operations that
/// reach the file together. Committed changes reach the file whole: journal first, then pages, then the journal is
/// removed.
class Pager {
public:
    enum class Access {
        Read,
        Write,
        Scratch ///< changes are kept in a temporary file and never reach the database (dry run)
    };
    struct Options {
        Access access = Access::Read;
        std::size_t pageSize = kPageSize;
        std::size_t cacheBytes = std::size_t{32} << 20;    ///< clean pages kept
        std::size_t maxDirtyBytes = std::size_t{48} << 20; ///< more than this is committed early (outside transactions)
        double commitSeconds = 0.5;                        ///< age of the oldest change at which it is committed
    };

    /// Takes over an open file. Open for writing, a whole journal beside it is played back first; else it is laid over
    /// the file. A partial page at the end is ignored when reading. Throws CorruptFile (open for writing with a partial
    /// page), Error (a journal that is not of this file), FileError.
    Pager(platform::FileSystem& files, const platform::Clock& clock, std::u16string path,
          std::unique_ptr<platform::RandomAccessFile> file, Options options);
    ~Pager(); ///< drops what was not committed
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    const std::u16string& path() const noexcept { return path_; }
    std::size_t pageSize() const noexcept { return options_.pageSize; }
    Access access() const noexcept { return options_.access; }
    std::uint32_t pageCount() const noexcept; ///< pages appended but not committed included
    std::size_t strayBytes() const noexcept;  ///< of a partial page at the end of the file, which is not counted

    /// Throws CorruptFile when `number` is past the end, FileError when the read fails.
    PageRef read(PageNumber number);
    /// Requires an operation under way. Throws as read(), and Error (ReadOnly).
    PageEdit edit(PageNumber number);
    /// Overwrites a page whose old content does not matter: as edit(), all zero.
    PageEdit editZeroed(PageNumber number);
    /// Adds a zeroed page at the end. Requires an operation. Throws Error (FileFull) at kMaxPages.
    PageEdit append();

    /// RAII for one operation: nests; left without done() it is aborted, which puts back every page changed since its
    /// start and nothing else. No PageEdit may outlive it.
    class Operation {
    public:
        explicit Operation(Pager& pager);
        ~Operation();
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;
        void
        done(); ///< keeps the changes; the outermost commits when due and no transaction is open, may throw FileError

    private:
        Pager& pager_;
        bool done_ = false;
    };

    /// Nests. The outermost one commits what was changed before it. Requires that no operation is under way.
    void beginTransaction();
    void commitTransaction(); ///< the outermost one commits
    /// Drops every change since the outermost begin, whichever level calls it.
    void rollbackTransaction();
    bool inTransaction() const noexcept;

    /// Brings every change to the file (Scratch: to the temporary file); nothing while a transaction is open. After a
    /// throw the file is as before or is mended by the journal at the next open (when only the sync after the journal's
    /// removal failed: as after); this pager then refuses further use with that error.
    void commit();
    /// commit() when the oldest change is older than Options::commitSeconds and no transaction is open.
    void commitIfDue();
    bool hasChanges() const noexcept;

    /// Grows whenever pages went back to an earlier state (abort, rollback): what was remembered of them is void.
    std::uint64_t epoch() const noexcept;

    /// CorruptFile with this file's path.
    [[noreturn]] void corrupt(PageNumber page, std::size_t offset, const std::string& expected) const;

private:
    struct State;
    Frame* load(PageNumber number);
    Frame* editable(Frame* frame);
    void requireEditing() const;

    std::u16string path_;
    Options options_;
    std::unique_ptr<State> state_;
};

} // namespace kelb::jet
