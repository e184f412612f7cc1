#include "ado/compound_file.h"

#include "ado/error.h"

#include "jet/byte_order.h"
#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>

namespace kelb::ado {

namespace {

using jet::load16;
using jet::load32;
using jet::load64;
using jet::store16;
using jet::store32;

constexpr std::array<std::uint8_t, 8> kSignature{0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

constexpr std::uint32_t kNone = 0xFFFFFFFF, kEndOfChain = 0xFFFFFFFE, kTableSector = 0xFFFFFFFD;
constexpr std::size_t kHeaderSize = 512;
constexpr std::size_t kHeaderTables = 109; ///< sectors of the table that the header itself names
constexpr std::size_t kEntrySize = 128;
constexpr std::size_t kShortSector = 64;
constexpr std::uint64_t kShortLimit = 4096; ///< bytes: shorter streams lie in short sectors

/// Offsets in the header.
namespace header {
constexpr std::size_t kMinor = 24, kMajor = 26, kByteOrder = 28, kSectorShift = 30, kShortShift = 32,
                      kDirectorySectors = 40, kTableSectors = 44, kDirectory = 48, kShortLimitAt = 56, kShortTable = 60,
                      kMoreTables = 68, kTables = 76;
} // namespace header

/// Offsets in an entry of the directory.
namespace entry {
constexpr std::size_t kNameBytes = 64, kType = 66, kColour = 67, kLeft = 68, kRight = 72, kChild = 76, kStart = 116,
                      kSize = 120;
constexpr std::uint8_t kStream = 2, kRoot = 5;
} // namespace entry

constexpr unsigned kSmallShift = 9, kLargeShift = 12, kShortShift = 6;
constexpr std::uint16_t kLittleEndian = 0xFFFE, kLargeVersion = 4, kMinorVersion = 0x3E;

[[noreturn]] void damaged(const std::string& reason) {
    throw Error(Error::Kind::Damaged, "the file is damaged: " + reason);
}

std::u16string nameAt(const std::byte* entryBytes) {
    std::u16string name;
    const std::size_t units = std::min<std::size_t>(load16(entryBytes + entry::kNameBytes), entry::kNameBytes) / 2;
    for (std::size_t i = 0; i + 1 < units; ++i) { // the last one is 0
        name += static_cast<char16_t>(load16(entryBytes + 2 * i));
    }
    return name;
}

} // namespace

bool CompoundFile::isOne(std::span<const std::byte> bytes) noexcept {
    return bytes.size() >= kSignature.size() && std::memcmp(bytes.data(), kSignature.data(), kSignature.size()) == 0;
}

CompoundFile::CompoundFile(std::span<const std::byte> bytes) : bytes_(bytes) {
    if (!isOne(bytes) || bytes.size() < kHeaderSize) {
        damaged("its header is cut off");
    }
    const unsigned shift = load16(bytes.data() + header::kSectorShift);
    if (load16(bytes.data() + header::kByteOrder) != kLittleEndian || (shift != kSmallShift && shift != kLargeShift)) {
        damaged("its header makes no sense");
    }
    sectorSize_ = std::size_t{1} << shift;
    // The header takes the place of a sector. A last sector may be cut short.
    sectorCount_ = (bytes.size() + sectorSize_ - 1) / sectorSize_ - 1;
    readTable();
    readDirectory();
}

std::span<const std::byte> CompoundFile::sector(std::uint32_t number) const {
    const std::size_t begin = (std::size_t{number} + 1) * sectorSize_;
    if (number >= sectorCount_ || begin >= bytes_.size()) {
        damaged("sector " + std::to_string(number) + " lies behind its end; it was cut off at " +
                std::to_string(bytes_.size()) + " bytes");
    }
    return bytes_.subspan(begin, std::min(sectorSize_, bytes_.size() - begin));
}

/// The table lies in sectors that the header names, and beyond these in sectors of numbers that are chained themselves.
void CompoundFile::readTable() {
    const auto add = [&](std::uint32_t number) {
        const auto numbers = sector(number);
        if (table_.size() >= sectorCount_ + sectorSize_) {
            damaged("its sector table is larger than itself");
        }
        for (std::size_t at = 0; at + 4 <= numbers.size(); at += 4) {
            table_.push_back(load32(numbers.data() + at));
        }
    };
    for (std::size_t i = 0; i < kHeaderTables; ++i) {
        const std::uint32_t number = load32(bytes_.data() + header::kTables + 4 * i);
        if (number != kNone) {
            add(number);
        }
    }
    std::uint32_t more = load32(bytes_.data() + header::kMoreTables);
    for (std::size_t steps = 0; more != kEndOfChain && more != kNone; ++steps) {
        const auto numbers = sector(more);
        if (steps > sectorCount_ || numbers.size() < sectorSize_) {
            damaged("its sector table has no end");
        }
        for (std::size_t at = 0; at + 4 < sectorSize_; at += 4) {
            if (const std::uint32_t number = load32(numbers.data() + at); number != kNone && number != kEndOfChain) {
                add(number);
            }
        }
        more = load32(numbers.data() + sectorSize_ - 4);
    }
}

std::vector<std::uint32_t> CompoundFile::chain(std::uint32_t start, const Table& table, std::string_view what) const {
    std::vector<std::uint32_t> sectors;
    for (std::uint32_t at = start; at != kEndOfChain; at = table[at]) {
        if (at >= table.size()) {
            damaged(std::string(what) + " leads to a sector that is not there");
        }
        if (sectors.size() >= table.size()) {
            damaged(std::string(what) + " runs in a circle");
        }
        sectors.push_back(at);
    }
    return sectors;
}

std::vector<std::byte> CompoundFile::join(std::uint32_t start, std::string_view what) const {
    std::vector<std::byte> content;
    for (const std::uint32_t number : chain(start, table_, what)) {
        const auto piece = sector(number);
        content.insert(content.end(), piece.begin(), piece.end());
    }
    return content;
}

void CompoundFile::readDirectory() {
    const std::vector<std::byte> directory = join(load32(bytes_.data() + header::kDirectory), "its directory");
    const bool large = load16(bytes_.data() + header::kMajor) >= kLargeVersion;
    for (std::size_t at = 0; at + kEntrySize <= directory.size(); at += kEntrySize) {
        const std::byte* const from = directory.data() + at;
        const std::uint8_t type = jet::load8(from + entry::kType);
        if (type == entry::kStream || type == entry::kRoot) {
            const std::uint64_t size = load64(from + entry::kSize);
            entries_.push_back({nameAt(from), type == entry::kRoot, load32(from + entry::kStart),
                                large ? size : size & 0xFFFFFFFF}); // older writers leave the upper half undefined
        }
    }
    const std::vector<std::byte> shortTable = [&] {
        const std::uint32_t start = load32(bytes_.data() + header::kShortTable);
        return start == kNone ? std::vector<std::byte>() : join(start, "its table of short sectors");
    }();
    for (std::size_t at = 0; at + 4 <= shortTable.size(); at += 4) {
        shortTable_.push_back(load32(shortTable.data() + at));
    }
}

const CompoundFile::Entry* CompoundFile::find(std::u16string_view stream) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return !entry.root && platform::equalNoCase(entry.name, stream);
    });
    return found == entries_.end() ? nullptr : &*found;
}

std::vector<std::byte> CompoundFile::read(std::u16string_view stream) const {
    const std::string what = "its stream " + platform::toUtf8(stream);
    const Entry* const wanted = find(stream);
    if (wanted == nullptr) {
        damaged(what + " is missing");
    }
    std::vector<std::byte> content;
    if (wanted->size >= kShortLimit) {
        content = join(wanted->start, what);
    } else if (wanted->size > 0) {
        const auto root = std::find_if(entries_.begin(), entries_.end(), [](const Entry& entry) { return entry.root; });
        if (root == entries_.end()) {
            damaged("it has no root entry");
        }
        const std::vector<std::byte> pieces = join(root->start, "its store of short sectors");
        for (const std::uint32_t number : chain(wanted->start, shortTable_, what)) {
            const std::size_t begin = std::size_t{number} * kShortSector;
            if (begin + kShortSector > pieces.size()) {
                damaged(what + " leads to a sector that is not there");
            }
            content.insert(content.end(), pieces.begin() + static_cast<std::ptrdiff_t>(begin),
                           pieces.begin() + static_cast<std::ptrdiff_t>(begin + kShortSector));
        }
    }
    if (content.size() < wanted->size) {
        damaged(what + " has " + std::to_string(wanted->size) + " bytes, of which only " +
                std::to_string(content.size()) + " are there");
    }
    content.resize(static_cast<std::size_t>(wanted->size));
    return content;
}

namespace {

/// Lays out a file of one stream: header, sector table, directory, then the stream in one piece. Its sectors are the
/// large ones, so that the header alone can name the table of every file that is read here.
class PlainFile {
public:
    explicit PlainFile(std::span<const std::byte> content)
        : pieces_(std::max<std::size_t>(1, (content.size() + kSector - 1) / kSector)) {
        while (tables_ * kNumbers < tables_ + 1 + pieces_) {
            ++tables_;
        }
        bytes_.resize(kSector * (1 + tables_ + 1 + pieces_));
        std::copy(content.begin(), content.end(),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(kSector * (tables_ + 2)));
        writeHeader();
        writeTable();
        writeEntry(0, u"Root Entry", entry::kRoot, kEndOfChain, 0);
    }

    std::string finish(std::u16string_view stream, std::size_t size) {
        writeEntry(1, stream, entry::kStream, number(tables_ + 1), size);
        for (std::size_t place = 2; place < kSector / kEntrySize; ++place) {
            writeEntry(place, u"", 0, kNone, 0);
        }
        std::string text(bytes_.size(), '\0');
        std::memcpy(text.data(), bytes_.data(), bytes_.size());
        return text;
    }

private:
    static constexpr std::size_t kSector = std::size_t{1} << kLargeShift;
    static constexpr std::size_t kNumbers = kSector / 4;
    static std::uint32_t number(std::size_t value) { return static_cast<std::uint32_t>(value); }

    void writeHeader() {
        std::byte* const at = bytes_.data();
        std::memcpy(at, kSignature.data(), kSignature.size());
        store16(at + header::kMinor, kMinorVersion);
        store16(at + header::kMajor, kLargeVersion);
        store16(at + header::kByteOrder, kLittleEndian);
        store16(at + header::kSectorShift, kLargeShift);
        store16(at + header::kShortShift, kShortShift);
        store32(at + header::kDirectorySectors, 1);
        store32(at + header::kTableSectors, number(tables_));
        store32(at + header::kDirectory, number(tables_));
        store32(at + header::kShortLimitAt, number(kShortLimit));
        store32(at + header::kShortTable, kEndOfChain);
        store32(at + header::kMoreTables, kEndOfChain);
        for (std::size_t i = 0; i < kHeaderTables; ++i) {
            store32(at + header::kTables + 4 * i, i < tables_ ? number(i) : kNone);
        }
    }

    void writeTable() {
        const auto after = [&](std::size_t i) {
            const bool last = i == tables_ || i == tables_ + pieces_;
            return i < tables_ ? kTableSector : last ? kEndOfChain : i < tables_ + pieces_ ? number(i + 1) : kNone;
        };
        for (std::size_t i = 0; i < tables_ * kNumbers; ++i) {
            store32(bytes_.data() + kSector + 4 * i, after(i));
        }
    }

    void writeEntry(std::size_t place, std::u16string_view name, std::uint8_t type, std::uint32_t start,
                    std::size_t size) {
        std::byte* const at = bytes_.data() + kSector * (tables_ + 1) + place * kEntrySize;
        for (std::size_t i = 0; i < name.size(); ++i) {
            store16(at + 2 * i, name[i]);
        }
        store16(at + entry::kNameBytes, static_cast<std::uint16_t>(name.empty() ? 0 : 2 * (name.size() + 1)));
        jet::store8(at + entry::kType, type);
        jet::store8(at + entry::kColour, 1);
        store32(at + entry::kLeft, kNone);
        store32(at + entry::kRight, kNone);
        store32(at + entry::kChild, type == entry::kRoot ? 1 : kNone);
        store32(at + entry::kStart, start);
        store32(at + entry::kSize, number(size));
    }

    std::size_t pieces_;
    std::size_t tables_ = 1;
    std::vector<std::byte> bytes_;
};

} // namespace

std::string makeCompoundFile(std::u16string_view stream, std::span<const std::byte> content) {
    assert(content.size() <= kLargestStream);
    return PlainFile(content).finish(stream, content.size());
}

} // namespace kelb::ado
