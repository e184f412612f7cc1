#include "jet/page_store.h"

#include <algorithm>

namespace kelb::jet {

namespace {

constexpr std::size_t kRunBytes = std::size_t{256} << 10; ///< adjacent pages read or written in one call

} // namespace

PageStore::PageStore(platform::FileSystem& files, const std::u16string& path,
                     std::unique_ptr<platform::RandomAccessFile> file, Pager::Access access, std::size_t pageSize)
    : files_(files), path_(path), file_(std::move(file)), pageSize_(pageSize),
      scratch_(access == Pager::Access::Scratch) {
    if (access == Pager::Access::Write) {
        recover(files_, path_, *file_, pageSize_);
    } else {
        overlay_ = Journal::find(files_, path_).journal;
        if (overlay_)
            overlay_->requireFor(*file_, path_, pageSize_);
    }
    const std::uint64_t size = file_->size();
    pageCount_ = overlay_ ? overlay_->pagesBefore()
                          : static_cast<std::uint32_t>(std::min<std::uint64_t>(size / pageSize_, kMaxPages));
    if (!overlay_)
        strayBytes_ = size % pageSize_;
    if (access == Pager::Access::Write && strayBytes_ != 0)
        throw CorruptFile(path_, PageNumber{pageCount_}, 0,
                          "the file ends inside a page (" + std::to_string(size) +
                              " bytes); it can be read but not written");
}

void PageStore::read(PageNumber first, std::span<std::byte> bytes) const {
    const std::uint32_t begin = raw(first);
    const auto end = static_cast<std::uint32_t>(begin + bytes.size() / pageSize_);
    const auto elsewhere = [this](std::uint32_t page) {
        return (overlay_ && overlay_->holds(PageNumber{page})) ||
               (page < scratchSlot_.size() && scratchSlot_[page] != 0);
    };
    for (std::uint32_t page = begin; page < end;) {
        const auto target = bytes.subspan((page - begin) * pageSize_);
        if (page < scratchSlot_.size() && scratchSlot_[page] != 0) {
            scratchFile_->readAt(std::uint64_t{scratchSlot_[page] - 1} * pageSize_, target.first(pageSize_));
            ++page;
        } else if (elsewhere(page)) {
            overlay_->read(PageNumber{page}, target.first(pageSize_));
            ++page;
        } else {
            std::uint32_t runEnd = page + 1;
            while (runEnd < end && !elsewhere(runEnd))
                ++runEnd;
            readRun(page, target.first((runEnd - page) * pageSize_));
            page = runEnd;
        }
    }
}

void PageStore::readRun(std::uint32_t first, std::span<std::byte> bytes) const {
    const std::size_t got = file_->readAt(std::uint64_t{first} * pageSize_, bytes);
    if (got < bytes.size())
        throw CorruptFile(path_, PageNumber{first + static_cast<std::uint32_t>(got / pageSize_)}, got % pageSize_,
                          "the file has become shorter while it was open");
}

void PageStore::commit(std::span<const Change> changes, std::uint32_t newPageCount) {
    if (scratch_)
        commitToScratch(changes);
    else
        commitToFile(changes);
    pageCount_ = newPageCount;
}

void PageStore::commitToScratch(std::span<const Change> changes) {
    if (!scratchFile_)
        scratchFile_ = files_.open(path_, platform::OpenMode::CreateTemp);
    for (const Change& change : changes) {
        const std::uint32_t page = raw(change.page);
        if (page >= scratchSlot_.size())
            scratchSlot_.resize(page + 1);
        if (scratchSlot_[page] == 0)
            scratchSlot_[page] = ++scratchSlots_;
        scratchFile_->writeAt(std::uint64_t{scratchSlot_[page] - 1} * pageSize_, {change.bytes, pageSize_});
    }
}

void PageStore::commitToFile(std::span<const Change> changes) {
    try {
        writeJournal(changes);
        writePages(changes);
        file_->sync();
        files_.removeFile(journalPath(path_));
    } catch (...) {
        // The first error is the one to report. When mending fails as well, the journal stays and mends the file at
        // the next opening.
        try {
            recover(files_, path_, *file_, pageSize_);
        } catch (const std::exception&) {
        }
        throw;
    }
    files_.syncFolder(platform::parentFolder(path_));
}

void PageStore::writeJournal(std::span<const Change> changes) {
    const auto firstNew =
        std::lower_bound(changes.begin(), changes.end(), pageCount_,
                         [](const Change& change, std::uint32_t count) { return raw(change.page) < count; });
    const auto old = changes.first(static_cast<std::size_t>(firstNew - changes.begin()));

    std::vector<std::byte> run(kRunBytes);
    std::uint64_t headerPageSum = 0;
    if (pageCount_ > 0 && (old.empty() || old.front().page != PageNumber{0})) {
        read(PageNumber{0}, std::span(run).first(pageSize_));
        headerPageSum = journalChecksum(std::span(run).first(pageSize_), 0);
    }
    JournalWriter writer(files_, path_,
                         {.pageSize = pageSize_,
                          .pagesBefore = pageCount_,
                          .entries = static_cast<std::uint32_t>(old.size()),
                          .headerPageSum = headerPageSum});
    for (std::size_t i = 0; i < old.size();) {
        std::size_t end = i + 1;
        while (end < old.size() && raw(old[end].page) == raw(old[end - 1].page) + 1 &&
               (end - i) < kRunBytes / pageSize_)
            ++end;
        read(old[i].page, std::span(run).first((end - i) * pageSize_));
        for (std::size_t at = 0; i < end; ++i, at += pageSize_)
            writer.add(old[i].page, std::span(run).subspan(at, pageSize_));
    }
    writer.finish();
}

void PageStore::writePages(std::span<const Change> changes) {
    std::vector<std::byte> run;
    run.reserve(std::min(changes.size() * pageSize_, kRunBytes));
    for (std::size_t i = 0; i < changes.size();) {
        const std::uint32_t first = raw(changes[i].page);
        run.clear();
        do {
            run.insert(run.end(), changes[i].bytes, changes[i].bytes + pageSize_);
            ++i;
        } while (i < changes.size() && raw(changes[i].page) == raw(changes[i - 1].page) + 1 &&
                 run.size() + pageSize_ <= kRunBytes);
        file_->writeAt(std::uint64_t{first} * pageSize_, run);
    }
}

} // namespace kelb::jet
