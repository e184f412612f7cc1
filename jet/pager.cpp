#include "jet/pager.h"

#include "jet/page_store.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <deque>
#include <optional>
#include <vector>

namespace kelb::jet {

namespace {

constexpr std::size_t kReadAheadBytes = std::size_t{128} << 10;
/// A miss this many pages behind the last run still counts as reading forward: rows and long values of one table lie
/// interleaved.
constexpr std::uint32_t kForwardGap = 16;
constexpr std::size_t kMinCleanFrames = 16;
constexpr std::size_t kSpareImages = 1024; ///< undo buffers kept for the next operations

/// How to put one page back when its operation is aborted.
struct Undo {
    Frame* frame;
    std::unique_ptr<std::byte[]> image; ///< none: the page was not in the cache (or not in the file) before
    std::uint16_t undoneBefore;         ///< Frame::undoneBy before
    bool changedBefore;
};

/// Frames in a circle, in the order in which the eviction hand comes to them.
class Ring {
public:
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    Frame* hand() const noexcept { return hand_; }
    void advance() noexcept { hand_ = hand_->following; }
    /// Behind the hand: the hand comes to it last.
    void insert(Frame* frame) noexcept {
        if (hand_ == nullptr) {
            frame->previous = frame->following = hand_ = frame;
        } else {
            frame->following = hand_;
            frame->previous = hand_->previous;
            hand_->previous->following = frame;
            hand_->previous = frame;
        }
        ++size_;
    }
    void remove(Frame* frame) noexcept {
        frame->previous->following = frame->following;
        frame->following->previous = frame->previous;
        if (frame == hand_)
            hand_ = frame->following == frame ? nullptr : frame->following;
        --size_;
    }

private:
    Frame* hand_ = nullptr;
    std::size_t size_ = 0;
};

/// An operation under way.
struct Level {
    std::size_t undoBegin;
    std::uint32_t pageCount;
};

} // namespace

struct Pager::State {
    PageStore store;
    const platform::Clock& clock;
    std::size_t pageSize, cleanLimit;
    std::uint32_t readAheadLimit;

    std::vector<Frame*> table; ///< by page number; its size is the page count
    std::deque<Frame> frames;
    Ring clean, changed;          ///< each cached page is in one of them
    std::vector<Frame*> spare;    ///< frames without a page
    std::vector<Frame*> detached; ///< of pages that went away while somebody held a PageRef
    std::uint32_t forwardFrom = 0, readAhead = 1;
    std::vector<std::byte> runBuffer;

    std::vector<Undo> undo;
    std::vector<Level> levels;
    std::vector<std::unique_ptr<std::byte[]>> spareImages;
    unsigned transactions = 0;
    double changedSince = 0; ///< steady seconds; void while nothing is changed
    std::uint64_t epoch = 1;
    std::optional<platform::FileError> failure; ///< of a commit

    State(PageStore&& pages, const platform::Clock& time, const Options& options)
        : store(std::move(pages)), clock(time), pageSize(options.pageSize),
          cleanLimit(std::max(options.cacheBytes / options.pageSize, kMinCleanFrames)),
          readAheadLimit(static_cast<std::uint32_t>(std::min(kReadAheadBytes / pageSize, cleanLimit / 4))),
          table(store.pageCount(), nullptr), runBuffer(readAheadLimit * pageSize) {}

    // Cache
    void setChanged(Frame* frame, bool value);
    Frame* freshFrame();
    Frame* evict();
    void drop(Frame* frame); ///< its page leaves the cache
    void reclaimDetached();
    void shrinkClean();

    // Undo
    std::unique_ptr<std::byte[]> imageBuffer();
    void recycle(std::unique_ptr<std::byte[]> image);
    void putBack(Undo& entry);
    void abortLevel();
    void finishLevel();
    void dropChanges();
};

void Pager::State::setChanged(Frame* frame, bool value) {
    if (frame->changed == value)
        return;
    (value ? clean : changed).remove(frame);
    (value ? changed : clean).insert(frame);
    frame->changed = value;
}

/// A frame that holds no page and is in no list.
Frame* Pager::State::freshFrame() {
    if (!detached.empty())
        reclaimDetached();
    Frame* frame = nullptr;
    if (clean.size() >= cleanLimit)
        frame = evict();
    if (frame == nullptr && !spare.empty()) {
        frame = spare.back();
        spare.pop_back();
    }
    if (frame == nullptr)
        frame = &frames.emplace_back();
    if (!frame->bytes) {
        frame->bytes = std::make_unique_for_overwrite<std::byte[]>(pageSize);
        frame->size = pageSize;
    }
    return frame;
}

/// Second chance: pages used since the hand passed last stay. Nothing when all are pinned.
Frame* Pager::State::evict() {
    for (std::size_t looks = 2 * clean.size(); looks > 0; --looks) {
        Frame* frame = clean.hand();
        if (frame->pins == 0 && !frame->used) {
            clean.remove(frame);
            table[raw(frame->number)] = nullptr;
            return frame;
        }
        frame->used = false;
        clean.advance();
    }
    return nullptr;
}

void Pager::State::drop(Frame* frame) {
    (frame->changed ? changed : clean).remove(frame);
    if (raw(frame->number) < table.size())
        table[raw(frame->number)] = nullptr;
    frame->changed = false;
    frame->undoneBy = 0;
    (frame->pins == 0 ? spare : detached).push_back(frame);
}

void Pager::State::reclaimDetached() {
    const auto held = std::partition(detached.begin(), detached.end(), [](const Frame* f) { return f->pins > 0; });
    spare.insert(spare.end(), held, detached.end());
    detached.erase(held, detached.end());
}

/// After a commit the pages that were changed are clean: back to the limit, and their memory back to the system.
void Pager::State::shrinkClean() {
    while (clean.size() > cleanLimit) {
        Frame* frame = evict();
        if (frame == nullptr)
            return;
        frame->bytes.reset();
        spare.push_back(frame);
    }
}

// Undo

std::unique_ptr<std::byte[]> Pager::State::imageBuffer() {
    if (spareImages.empty())
        return std::make_unique_for_overwrite<std::byte[]>(pageSize);
    auto image = std::move(spareImages.back());
    spareImages.pop_back();
    return image;
}

void Pager::State::recycle(std::unique_ptr<std::byte[]> image) {
    if (image && spareImages.size() < kSpareImages)
        spareImages.push_back(std::move(image));
}

void Pager::State::putBack(Undo& entry) {
    if (!entry.image) {
        drop(entry.frame);
        return;
    }
    std::memcpy(entry.frame->bytes.get(), entry.image.get(), pageSize);
    entry.frame->undoneBy = entry.undoneBefore;
    setChanged(entry.frame, entry.changedBefore);
    recycle(std::move(entry.image));
}

void Pager::State::abortLevel() {
    const Level level = levels.back();
    while (undo.size() > level.undoBegin) {
        putBack(undo.back());
        undo.pop_back();
    }
    table.resize(level.pageCount);
    levels.pop_back();
    ++epoch;
    if (levels.empty())
        shrinkClean();
}

/// The images of an inner operation go over to the outer one, unless that has an older image of the page already.
void Pager::State::finishLevel() {
    const Level level = levels.back();
    levels.pop_back();
    const auto outer = static_cast<std::uint16_t>(levels.size());
    std::size_t keep = level.undoBegin;
    for (std::size_t i = level.undoBegin; i < undo.size(); ++i) {
        Undo& entry = undo[i];
        entry.frame->undoneBy = outer;
        if (outer == 0 || entry.undoneBefore == outer)
            recycle(std::move(entry.image));
        else if (keep++ != i)
            undo[keep - 1] = std::move(entry);
    }
    undo.erase(undo.begin() + static_cast<std::ptrdiff_t>(keep), undo.end());
}

/// Everything back to what the store has.
void Pager::State::dropChanges() {
    while (!changed.empty())
        drop(changed.hand());
    table.resize(store.pageCount());
    ++epoch;
}

// Pager

Pager::Pager(platform::FileSystem& files, const platform::Clock& clock, std::u16string path,
             std::unique_ptr<platform::RandomAccessFile> file, Options options)
    : path_(std::move(path)), options_(options),
      state_(std::make_unique<State>(PageStore(files, path_, std::move(file), options.access, options.pageSize), clock,
                                     options)) {}

Pager::~Pager() = default;

std::uint32_t Pager::pageCount() const noexcept {
    return static_cast<std::uint32_t>(state_->table.size());
}

std::size_t Pager::strayBytes() const noexcept {
    return state_->store.strayBytes();
}

PageRef Pager::read(PageNumber number) {
    Frame* frame = raw(number) < state_->table.size() ? state_->table[raw(number)] : nullptr;
    if (frame == nullptr)
        frame = load(number);
    frame->used = true;
    return PageRef(frame);
}

/// Reads a page that is not cached, and those behind it when the file is being read forward.
Frame* Pager::load(PageNumber number) {
    State& s = *state_;
    const std::uint32_t first = raw(number);
    if (s.failure)
        throw *s.failure;
    if (first >= s.table.size())
        corrupt(number, 0,
                "a pointer leads to a page past the end (the file has " + std::to_string(s.table.size()) + " pages)");

    const bool forward = first >= s.forwardFrom && first - s.forwardFrom < kForwardGap;
    s.readAhead = forward ? std::min(s.readAhead * 2, s.readAheadLimit) : 1;
    std::uint32_t end = first + 1;
    const auto limit = std::min({first + s.readAhead, s.store.pageCount(), static_cast<std::uint32_t>(s.table.size())});
    while (end < limit && s.table[end] == nullptr)
        ++end;
    auto run = std::span(s.runBuffer).first((end - first) * s.pageSize);
    try {
        s.store.read(number, run);
    } catch (const platform::FileError&) {
        // A page behind may be the bad one, and nobody may ever want that. Who writes does not go on on such a disk.
        if (end == first + 1 || options_.access != Access::Read)
            throw;
        end = first + 1;
        run = run.first(s.pageSize);
        s.store.read(number, run);
    }
    s.forwardFrom = end;

    for (std::uint32_t page = first; page < end; ++page) {
        Frame* frame = s.freshFrame();
        std::memcpy(frame->bytes.get(), &run[(page - first) * s.pageSize], s.pageSize);
        frame->number = PageNumber{page};
        frame->used = true; // else the next page of the run could push it out
        s.clean.insert(frame);
        s.table[page] = frame;
    }
    return s.table[first];
}

void Pager::requireEditing() const {
    if (state_->failure)
        throw *state_->failure;
    if (options_.access == Access::Read)
        throw Error(Error::Kind::ReadOnly, platform::toUtf8(path_) + " is open for reading only and cannot be changed");
    assert(!state_->levels.empty());
}

/// Keeps an image of the page unless the operation under way has one, and marks it changed.
Frame* Pager::editable(Frame* frame) {
    State& s = *state_;
    const auto depth = static_cast<std::uint16_t>(s.levels.size());
    if (frame->undoneBy != depth) {
        auto image = s.imageBuffer();
        std::memcpy(image.get(), frame->bytes.get(), s.pageSize);
        s.undo.push_back({frame, std::move(image), frame->undoneBy, frame->changed});
        frame->undoneBy = depth;
    }
    if (s.changed.empty())
        s.changedSince = s.clock.steadySeconds();
    s.setChanged(frame, true);
    return frame;
}

PageEdit Pager::edit(PageNumber number) {
    requireEditing();
    Frame* frame = raw(number) < state_->table.size() ? state_->table[raw(number)] : nullptr;
    if (frame == nullptr)
        frame = load(number);
    return PageEdit(editable(frame));
}

PageEdit Pager::editZeroed(PageNumber number) {
    requireEditing();
    State& s = *state_;
    if (raw(number) >= s.table.size() || s.table[raw(number)] != nullptr) {
        PageEdit page = edit(number);
        std::memset(page.data(), 0, s.pageSize);
        return page;
    }
    Frame* frame = s.freshFrame();
    frame->number = number;
    frame->used = true;
    s.clean.insert(frame);
    s.table[raw(number)] = frame;
    std::memset(frame->bytes.get(), 0, s.pageSize);
    s.undo.push_back({frame, nullptr, 0, false});
    frame->undoneBy = static_cast<std::uint16_t>(s.levels.size());
    return PageEdit(editable(frame));
}

PageEdit Pager::append() {
    requireEditing();
    State& s = *state_;
    if (s.table.size() >= kMaxPages)
        throw Error(Error::Kind::FileFull, platform::toUtf8(path_) +
                                               " has reached 2 GB, the most that an Access database can hold; start "
                                               "a new database or delete rows");
    s.table.push_back(nullptr);
    return editZeroed(PageNumber{static_cast<std::uint32_t>(s.table.size() - 1)});
}

Pager::Operation::Operation(Pager& pager) : pager_(pager) {
    State& s = *pager_.state_;
    s.levels.push_back({s.undo.size(), static_cast<std::uint32_t>(s.table.size())});
}

Pager::Operation::~Operation() {
    if (!done_)
        pager_.state_->abortLevel();
}

void Pager::Operation::done() {
    assert(!done_);
    State& s = *pager_.state_;
    s.finishLevel();
    done_ = true;
    if (!s.levels.empty() || s.transactions > 0)
        return;
    if (s.changed.size() * s.pageSize > pager_.options_.maxDirtyBytes)
        pager_.commit();
    else
        pager_.commitIfDue();
}

void Pager::beginTransaction() {
    assert(state_->levels.empty());
    if (state_->transactions == 0)
        commit(); // rolling back is then reading the file again
    ++state_->transactions;
}

void Pager::commitTransaction() {
    assert(state_->transactions > 0);
    if (--state_->transactions == 0)
        commit();
}

void Pager::rollbackTransaction() {
    assert(state_->transactions > 0 && state_->levels.empty());
    --state_->transactions;
    state_->dropChanges();
}

bool Pager::inTransaction() const noexcept {
    return state_->transactions > 0;
}

void Pager::commit() {
    State& s = *state_;
    assert(s.levels.empty());
    if (s.failure)
        throw *s.failure;
    if (s.transactions > 0 || s.changed.empty())
        return;
    std::vector<PageStore::Change> changes;
    changes.reserve(s.changed.size());
    for (std::size_t i = s.changed.size(); i > 0; --i, s.changed.advance())
        changes.push_back({s.changed.hand()->number, s.changed.hand()->bytes.get()});
    std::sort(changes.begin(), changes.end(),
              [](const PageStore::Change& a, const PageStore::Change& b) { return a.page < b.page; });
    try {
        s.store.commit(changes, pageCount());
    } catch (const std::exception& error) {
        const auto* fileError = dynamic_cast<const platform::FileError*>(&error);
        s.failure.emplace(fileError != nullptr ? fileError->kind() : platform::FileError::Kind::Other, "save", path_,
                          fileError != nullptr ? fileError->systemCode() : 0,
                          std::string("changes since the last save may be lost (") + error.what() +
                              "); close the database and open it again");
        s.dropChanges();
        s.clean = {};
        std::fill(s.table.begin(), s.table.end(), nullptr); // every read now meets the failure
        if (fileError != nullptr)
            throw *s.failure;
        throw;
    }
    while (!s.changed.empty())
        s.setChanged(s.changed.hand(), false);
    s.shrinkClean();
}

void Pager::commitIfDue() {
    if (hasChanges() && state_->transactions == 0 && state_->levels.empty() &&
        state_->clock.steadySeconds() - state_->changedSince >= options_.commitSeconds)
        commit();
}

bool Pager::hasChanges() const noexcept {
    return !state_->changed.empty();
}

std::uint64_t Pager::epoch() const noexcept {
    return state_->epoch;
}

void Pager::corrupt(PageNumber page, std::size_t offset, const std::string& expected) const {
    throw CorruptFile(path_, page, offset, expected);
}

} // namespace kelb::jet
