#include "jet/index_page.h"

#include "jet/byte_order.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kelb::jet {
namespace {

constexpr std::uint16_t kNodeType = 0x0103;
constexpr std::uint16_t kLeafType = 0x0104;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// The mask as 64-bit words. The last one has 40 bits, of which 33 can stand for ends of entries.
constexpr std::size_t kMaskWords = 57;
constexpr std::uint64_t kLastWordBits = (std::uint64_t{1} << 40) - 1;
constexpr std::uint64_t kPossibleLastBits = (std::uint64_t{1} << 33) - 1;

std::uint64_t maskWord(const std::byte* page, std::size_t index) noexcept {
    const std::uint64_t word = load64(page + kIndexMaskOffset + 8 * index);
    return index + 1 == kMaskWords ? word & kLastWordBits : word;
}

void setMaskWord(std::byte* page, std::size_t index, std::uint64_t word) noexcept {
    std::byte* const at = page + kIndexMaskOffset + 8 * index;
    if (index + 1 < kMaskWords) {
        store64(at, word);
        return;
    }
    store32(at, static_cast<std::uint32_t>(word & 0xFFFFFFFF));
    store8(at + 4, static_cast<std::uint8_t>(word >> 32 & 0xFF));
}

/// Smallest set bit > `bit`, kNone without one.
std::size_t boundaryAfter(const std::byte* page, std::size_t bit) noexcept {
    std::size_t index = (bit + 1) / 64;
    if (index >= kMaskWords)
        return kNone;
    std::uint64_t word = maskWord(page, index) & ~std::uint64_t{0} << (bit + 1) % 64;
    while (word == 0) {
        if (++index == kMaskWords)
            return kNone;
        word = maskWord(page, index);
    }
    return index * 64 + static_cast<std::size_t>(std::countr_zero(word));
}

/// Largest set bit <= `bit`; 0, where no entry can end, without one.
std::size_t boundaryAtOrBefore(const std::byte* page, std::size_t bit) noexcept {
    std::size_t index = bit / 64;
    std::uint64_t word = maskWord(page, index) & ~std::uint64_t{0} >> (63 - bit % 64);
    while (word == 0) {
        if (index-- == 0)
            return 0;
        word = maskWord(page, index);
    }
    return index * 64 + 63 - static_cast<std::size_t>(std::countl_zero(word));
}

/// Moves the bits > `from` up by `distance`; the bits they leave are 0.
void shiftMaskUp(std::byte* page, std::size_t from, std::size_t distance) noexcept {
    const std::size_t words = distance / 64, bits = distance % 64;
    const std::size_t firstWord = (from + 1) / 64;
    const std::uint64_t moving = ~std::uint64_t{0} << (from + 1) % 64;
    const auto movingWord = [&](std::size_t index) {
        const std::uint64_t word = maskWord(page, index);
        return index == firstWord ? word & moving : word;
    };
    for (std::size_t i = kMaskWords; i-- > firstWord;) {
        std::uint64_t word = 0;
        if (i >= firstWord + words)
            word = movingWord(i - words) << bits;
        if (bits != 0 && i >= firstWord + words + 1)
            word |= movingWord(i - words - 1) >> (64 - bits);
        if (i == firstWord)
            word |= maskWord(page, i) & ~moving;
        setMaskWord(page, i, word);
    }
}

/// Clears the bits in (from, until] and moves those > `until` down by until - from.
void shiftMaskDown(std::byte* page, std::size_t from, std::size_t until) noexcept {
    const std::size_t distance = until - from;
    const std::size_t words = distance / 64, bits = distance % 64;
    const std::size_t firstWord = (from + 1) / 64;
    const std::uint64_t staying = ~(~std::uint64_t{0} << (from + 1) % 64);
    for (std::size_t i = firstWord; i < kMaskWords; ++i) {
        std::uint64_t word = 0;
        if (i + words < kMaskWords)
            word = maskWord(page, i + words) >> bits;
        if (bits != 0 && i + words + 1 < kMaskWords)
            word |= maskWord(page, i + words + 1) << (64 - bits);
        if (i == firstWord)
            word = (word & ~staying) | (maskWord(page, i) & staying);
        setMaskWord(page, i, word);
    }
}

void setEnd(std::byte* page, std::size_t end) noexcept {
    store16(page + kIndexFreeOffset, static_cast<std::uint16_t>(kIndexEntryBytes - end));
}

int compareBytes(const std::byte* a, const std::byte* b, std::size_t count) noexcept {
    return count == 0 ? 0 : std::memcmp(a, b, count);
}

std::size_t commonPrefix(std::span<const std::byte> a, std::span<const std::byte> b) noexcept {
    const std::size_t limit = std::min(a.size(), b.size());
    return static_cast<std::size_t>(
        std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(limit), b.begin()).first - a.begin());
}

} // namespace

// One entry

std::uint32_t IndexEntryView::lastWord() const noexcept {
    if (rest.size() >= 4)
        return loadBig32(rest.data() + rest.size() - 4);
    std::byte word[4]; // it begins among the shared bytes
    const std::size_t missing = 4 - rest.size();
    std::memcpy(word, shared.data() + shared.size() - missing, missing);
    std::memcpy(word + missing, rest.data(), rest.size());
    return loadBig32(word);
}

int IndexEntryView::compare(std::span<const std::byte> other, std::size_t without) const noexcept {
    const std::size_t length = size() - without;
    const std::size_t common = std::min(length, other.size());
    const std::size_t first = std::min(common, shared.size());
    if (const int order = compareBytes(shared.data(), other.data(), first); order != 0)
        return order;
    if (const int order = compareBytes(rest.data(), other.data() + first, common - first); order != 0)
        return order;
    return length < other.size() ? -1 : length > other.size() ? 1 : 0;
}

void IndexEntryView::copyTo(std::byte* out) const noexcept {
    if (!shared.empty())
        std::memcpy(out, shared.data(), shared.size());
    std::memcpy(out + shared.size(), rest.data(), rest.size());
}

// Reading a page

IndexPageView::IndexPageView(const Pager& pager, PageRef page, PageNumber tablePage)
    : pager_(&pager), page_(std::move(page)) {
    if (page_.bytes().size() != kPageSize)
        pager.corrupt(number(), 0, "indexes of Access 97 files are not read");
    const std::byte* const data = page_.data();
    const std::uint16_t type = load16(data);
    if (type != kNodeType && type != kLeafType)
        pager.corrupt(number(), 0, "an index page was expected here");
    if (const std::uint32_t owner = load32(data + kIndexOwnerOffset); owner != raw(tablePage))
        pager.corrupt(number(), kIndexOwnerOffset,
                      "an index page of the table at page " + std::to_string(raw(tablePage)) +
                          " was expected, it is of " + std::to_string(owner));
    if ((load8(data + kIndexMaskOffset) & 1U) != 0 || maskWord(data, kMaskWords - 1) > kPossibleLastBits)
        pager.corrupt(number(), kIndexMaskOffset, "the entry mask ends an entry outside the page");
    end_ = boundaryAtOrBefore(data, kIndexEntryBytes);
    prefix_ = load16(data + kIndexPrefixOffset);
    if (end_ != 0 && boundaryAfter(data, 0) <= prefix_)
        pager.corrupt(number(), kIndexPrefixOffset, "the shared prefix is not shorter than the first entry");
}

bool IndexPageView::isLeaf() const noexcept {
    return load16(page_.data()) == kLeafType;
}

PageNumber IndexPageView::link(std::size_t offset) const noexcept {
    return PageNumber{load32(page_.data() + offset)};
}

std::size_t IndexPageView::trailer() const noexcept {
    return isLeaf() ? 0 : kChildBytes;
}

std::size_t IndexPageView::after(std::size_t position) const noexcept {
    return boundaryAfter(page_.data(), position);
}

std::size_t IndexPageView::before(std::size_t position) const noexcept {
    return boundaryAtOrBefore(page_.data(), position - 1);
}

std::size_t IndexPageView::indexOf(std::size_t position) const noexcept {
    std::size_t count = 0;
    for (std::size_t index = 0; index <= position / 64; ++index) {
        std::uint64_t word = maskWord(page_.data(), index);
        if (index == position / 64)
            word &= ~std::uint64_t{0} >> (63 - position % 64);
        count += static_cast<std::size_t>(std::popcount(word));
    }
    return count;
}

IndexEntryView IndexPageView::between(std::size_t begin, std::size_t end) const {
    const std::byte* const entries = page_.data() + kIndexEntriesOffset;
    const std::size_t shared = begin == 0 ? 0 : prefix_;
    if (shared + end - begin <= kRowPointerBytes + trailer())
        pager_->corrupt(number(), kIndexEntriesOffset + begin, "an index entry is too short to hold a key");
    return {{entries, shared}, {entries + begin, end - begin}};
}

IndexEntryView IndexPageView::entry(std::size_t position) const {
    return between(position, after(position));
}

std::size_t IndexPageView::lowerBound(std::span<const std::byte> target) const {
    const std::size_t without = trailer();
    std::size_t low = 0, high = end_;
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        const std::size_t begin = boundaryAtOrBefore(page_.data(), middle);
        const std::size_t end = boundaryAfter(page_.data(), middle);
        if (between(begin, end).compare(target, without) < 0)
            low = end;
        else
            high = begin;
    }
    return low;
}

PageNumber IndexPageView::child(std::size_t position) const {
    const PageNumber page = position == end_ ? tail() : PageNumber{entry(position).lastWord()};
    if (page == kNoPage)
        pager_->corrupt(number(), position == end_ ? kIndexTailOffset : kIndexEntriesOffset + position,
                        "an index node leads to no page");
    return page;
}

// Changing a page in place
//
// Both changes are the same for the first entry and for later ones: the first entry begins with the shared bytes, so
// they stay where they are and what is put in or taken out lies behind them.

bool insertInPlace(const IndexPageView& view, const PageEdit& page, std::size_t position,
                   std::span<const std::byte> entry) {
    std::byte* const entries = page.data() + kIndexEntriesOffset;
    const std::size_t prefix = view.prefixLength();
    const std::size_t added = entry.size() - prefix;
    if (entry.size() <= prefix || view.end() + added > kIndexEntryBytes)
        return false;
    if (prefix != 0 && (view.end() == 0 || std::memcmp(entries, entry.data(), prefix) != 0))
        return false;
    const std::size_t at = position == 0 ? prefix : position;
    std::memmove(entries + at + added, entries + at, view.end() - at);
    std::memcpy(entries + at, entry.data() + prefix, added);
    shiftMaskUp(page.data(), at, added);
    const std::size_t bit = at + added;
    std::byte& mask = page.data()[kIndexMaskOffset + bit / 8];
    mask |= static_cast<std::byte>(1U << bit % 8);
    setEnd(page.data(), view.end() + added);
    return true;
}

void eraseInPlace(const IndexPageView& view, const PageEdit& page, std::size_t position) {
    std::byte* const entries = page.data() + kIndexEntriesOffset;
    const std::size_t entryEnd = view.after(position);
    const bool only = position == 0 && entryEnd == view.end();
    const std::size_t at = position == 0 && !only ? view.prefixLength() : position;
    const std::size_t end = view.end() - (entryEnd - at);
    std::memmove(entries + at, entries + entryEnd, view.end() - entryEnd);
    std::memset(entries + end, 0, view.end() - end);
    shiftMaskDown(page.data(), at, entryEnd);
    if (only)
        store16(page.data() + kIndexPrefixOffset, 0);
    setEnd(page.data(), end);
}

void formatIndexLeaf(const PageEdit& page, PageNumber tablePage) {
    std::memset(page.data(), 0, kPageSize);
    store16(page.data(), kLeafType);
    store32(page.data() + kIndexOwnerOffset, raw(tablePage));
    setEnd(page.data(), 0);
}

void setIndexLink(const PageEdit& page, std::size_t offset, PageNumber target) {
    store32(page.data() + offset, raw(target));
}

// A page taken apart

IndexPageContent::IndexPageContent(const IndexPageView& view)
    : previous(view.previous()), next(view.next()), tail(view.isLeaf() ? kNoPage : view.tail()),
      kind_(view.isLeaf() ? Kind::Leaf : Kind::Node), mayShare_(view.isLeaf() || view.prefixLength() != 0) {
    for (std::size_t at = 0; at != view.end(); at = view.after(at)) {
        const IndexEntryView entry = view.entry(at);
        const std::size_t begin = bytes_.size();
        bytes_.resize(begin + entry.size());
        entry.copyTo(bytes_.data() + begin);
        ends_.push_back(bytes_.size());
    }
}

std::span<const std::byte> IndexPageContent::entry(std::size_t index) const noexcept {
    return {bytes_.data() + begin(index), ends_[index] - begin(index)};
}

std::span<const std::byte> IndexPageContent::key(std::size_t index) const noexcept {
    const auto whole = entry(index);
    return whole.first(whole.size() - kChildBytes);
}

PageNumber IndexPageContent::child(std::size_t index) const noexcept {
    return PageNumber{loadBig32(bytes_.data() + ends_[index] - kChildBytes)};
}

void IndexPageContent::insert(std::size_t index, std::span<const std::byte> entry) {
    const std::size_t at = begin(index);
    bytes_.insert(bytes_.begin() + static_cast<std::ptrdiff_t>(at), entry.begin(), entry.end());
    ends_.insert(ends_.begin() + static_cast<std::ptrdiff_t>(index), at);
    for (std::size_t i = index; i < ends_.size(); ++i)
        ends_[i] += entry.size();
}

void IndexPageContent::insertChild(std::size_t index, std::span<const std::byte> key, PageNumber child) {
    std::vector<std::byte> entry(key.begin(), key.end());
    entry.resize(key.size() + kChildBytes);
    storeBig32(entry.data() + key.size(), raw(child));
    insert(index, entry);
}

void IndexPageContent::setKey(std::size_t index, std::span<const std::byte> key) {
    const PageNumber page = child(index);
    erase(index);
    insertChild(index, key, page);
}

void IndexPageContent::erase(std::size_t index) {
    const std::size_t from = begin(index), until = ends_[index];
    bytes_.erase(bytes_.begin() + static_cast<std::ptrdiff_t>(from),
                 bytes_.begin() + static_cast<std::ptrdiff_t>(until));
    ends_.erase(ends_.begin() + static_cast<std::ptrdiff_t>(index));
    for (std::size_t i = index; i < ends_.size(); ++i)
        ends_[i] -= until - from;
}

void IndexPageContent::clear() noexcept {
    bytes_.clear();
    ends_.clear();
}

IndexPageContent IndexPageContent::part(std::size_t first, std::size_t last) const {
    IndexPageContent out(kind_, level);
    out.mayShare_ = mayShare_;
    const std::size_t from = begin(first);
    out.bytes_.assign(bytes_.begin() + static_cast<std::ptrdiff_t>(from),
                      bytes_.begin() + static_cast<std::ptrdiff_t>(begin(last)));
    for (std::size_t i = first; i < last; ++i)
        out.ends_.push_back(ends_[i] - from);
    return out;
}

/// The prefix counts every byte of the entries, row pointers too, but leaves each entry a byte of its own.
IndexPageContent::Layout IndexPageContent::layout(std::size_t first, std::size_t last) const noexcept {
    const std::size_t bytes = begin(last) - begin(first);
    if (bytes <= kIndexEntryBytes)
        return {true, 0};
    if (!mayShare_ || last - first < 2)
        return {false, 0};
    std::size_t shortest = entry(first).size();
    for (std::size_t i = first + 1; i < last; ++i)
        shortest = std::min(shortest, entry(i).size());
    const std::size_t prefix = std::min(commonPrefix(entry(first), entry(last - 1)), shortest - 1);
    return {bytes - prefix * (last - first - 1) <= kIndexEntryBytes, prefix};
}

/// Index in [first, last) that is `good` and whose entry begins nearest to the middle of the bytes.
template <typename Good>
std::size_t IndexPageContent::nearestToMiddle(std::size_t first, std::size_t last, const Good& good) const noexcept {
    if (first >= last)
        return count();
    const auto middle = std::lower_bound(ends_.begin(), ends_.end(), bytes_.size() / 2);
    const auto start = std::clamp(static_cast<std::size_t>(middle - ends_.begin()) + 1, first, last - 1);
    for (std::size_t distance = 0; distance < last - first; ++distance) {
        if (start + distance < last && good(start + distance))
            return start + distance;
        if (distance <= start - first && good(start - distance))
            return start - distance;
    }
    return count();
}

std::size_t IndexPageContent::leafCut() const noexcept {
    return nearestToMiddle(1, count(), [this](std::size_t cut) { return fits(0, cut) && fits(cut, count()); });
}

std::size_t IndexPageContent::nodeCut() const noexcept {
    return count() < 3 ? count() : nearestToMiddle(1, count() - 1, [this](std::size_t middle) {
        return fits(0, middle) && fits(middle + 1, count());
    });
}

void IndexPageContent::write(const PageEdit& page, PageNumber tablePage) const {
    const Layout plan = layout(0, count());
    if (!plan.fits)
        throw Error(Error::Kind::KeyNotPossible, "the keys of an index are too long for a page of it");
    std::byte* const data = page.data();
    formatIndexLeaf(page, tablePage);
    store16(data, isLeaf() ? kLeafType : kNodeType);
    store32(data + kIndexPreviousOffset, raw(previous));
    store32(data + kIndexNextOffset, raw(next));
    store32(data + kIndexTailOffset, raw(tail));
    store16(data + kIndexPrefixOffset, static_cast<std::uint16_t>(plan.prefix));
    store8(data + kIndexLevelOffset, level);
    std::size_t end = 0;
    for (std::size_t i = 0; i < count(); ++i) {
        const auto stored = entry(i).subspan(i == 0 ? 0 : plan.prefix);
        std::memcpy(data + kIndexEntriesOffset + end, stored.data(), stored.size());
        end += stored.size();
        data[kIndexMaskOffset + end / 8] |= static_cast<std::byte>(1U << end % 8);
    }
    setEnd(data, end);
}

} // namespace kelb::jet
