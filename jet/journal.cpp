#include "jet/journal.h"

#include "jet/byte_order.h"
#include "jet/error.h"

#include "platform/utf8.h"

#include <array>
#include <cassert>
#include <cstring>

namespace kelb::jet {

namespace {

constexpr std::array kMagic{std::byte{'K'}, std::byte{'E'}, std::byte{'L'}, std::byte{'B'},
                            std::byte{'J'}, std::byte{'R'}, std::byte{'N'}, std::byte{'L'}};
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kFlushBytes = std::size_t{1} << 20;
constexpr std::size_t kEntryOverhead = 4 + 8; ///< page number and checksum

struct Header {
    std::size_t pageSize = 0;
    std::uint32_t pagesBefore = 0, entries = 0;
    std::uint64_t headerPageSum = 0, sum = 0;
};

std::optional<Header> parseHeader(std::span<const std::byte, kJournalHeader> bytes) {
    Header header;
    header.sum = journalChecksum(bytes.first(32), 0);
    header.pageSize = load32(&bytes[12]);
    header.pagesBefore = load32(&bytes[16]);
    header.entries = load32(&bytes[20]);
    header.headerPageSum = load64(&bytes[24]);
    const bool sound = std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) == 0 && load32(&bytes[8]) == kVersion &&
                       load64(&bytes[32]) == header.sum &&
                       (header.pageSize == kPageSize || header.pageSize == kJet3PageSize);
    if (!sound)
        return std::nullopt;
    return header;
}

void removeJournal(platform::FileSystem& files, const std::u16string& path) {
    files.removeFile(path);
    files.syncFolder(platform::parentFolder(path));
}

} // namespace

std::u16string journalPath(std::u16string_view databasePath) {
    return std::u16string(databasePath) + u".kelb-journal";
}

std::uint64_t journalChecksum(std::span<const std::byte> bytes, std::uint64_t seed) noexcept {
    constexpr std::uint64_t kPrime = 0x9E3779B97F4A7C15;
    std::uint64_t sum = seed ^ kPrime;
    const auto mix = [&sum](std::uint64_t word) {
        sum = (sum ^ word) * kPrime;
        sum ^= sum >> 32;
    };
    std::size_t at = 0;
    for (; at + 8 <= bytes.size(); at += 8)
        mix(load64(&bytes[at]));
    for (; at < bytes.size(); ++at)
        mix(load8(&bytes[at]));
    return sum;
}

JournalWriter::JournalWriter(platform::FileSystem& files, std::u16string_view databasePath, const Header& header)
    : files_(files), path_(journalPath(databasePath)), file_(files.open(path_, platform::OpenMode::CreateNew)) {
    buffer_.resize(kJournalHeader);
    std::memcpy(buffer_.data(), kMagic.data(), kMagic.size());
    store32(&buffer_[8], kVersion);
    store32(&buffer_[12], static_cast<std::uint32_t>(header.pageSize));
    store32(&buffer_[16], header.pagesBefore);
    store32(&buffer_[20], header.entries);
    store64(&buffer_[24], header.headerPageSum);
    sum_ = journalChecksum(std::span(buffer_).first(32), 0);
    store64(&buffer_[32], sum_);
}

void JournalWriter::add(PageNumber page, std::span<const std::byte> oldContent) {
    const std::size_t at = buffer_.size();
    buffer_.resize(at + kEntryOverhead + oldContent.size());
    store32(&buffer_[at], raw(page));
    std::memcpy(&buffer_[at + 4], oldContent.data(), oldContent.size());
    sum_ = journalChecksum(std::span(buffer_).subspan(at, 4 + oldContent.size()), sum_);
    store64(&buffer_[at + 4 + oldContent.size()], sum_);
    if (buffer_.size() >= kFlushBytes)
        flush();
}

void JournalWriter::finish() {
    flush();
    file_->sync();
    file_.reset();
    files_.syncFolder(platform::parentFolder(path_));
}

void JournalWriter::flush() {
    file_->writeAt(written_, buffer_);
    written_ += buffer_.size();
    buffer_.clear();
}

Journal::Search Journal::find(platform::FileSystem& files, std::u16string_view databasePath) {
    const std::u16string path = journalPath(databasePath);
    if (!files.fileExists(path))
        return {};
    Journal journal;
    journal.file_ = files.open(path, platform::OpenMode::Read);

    std::array<std::byte, kJournalHeader> headerBytes{};
    if (journal.file_->readAt(0, headerBytes) < headerBytes.size())
        return {Found::Torn, {}};
    const std::optional<Header> header = parseHeader(headerBytes);
    if (!header)
        return {Found::Torn, {}};

    std::vector<std::byte> entry(kEntryOverhead + header->pageSize);
    std::uint64_t at = kJournalHeader;
    std::uint64_t sum = header->sum;
    for (std::uint32_t i = 0; i < header->entries; ++i, at += entry.size()) {
        if (journal.file_->readAt(at, entry) < entry.size())
            return {Found::Torn, {}};
        sum = journalChecksum(std::span(entry).first(entry.size() - 8), sum);
        if (load64(&entry[entry.size() - 8]) != sum || load32(entry.data()) >= header->pagesBefore)
            return {Found::Torn, {}};
        journal.offsets_.emplace(load32(entry.data()), at + 4);
    }
    journal.pageSize_ = header->pageSize;
    journal.pagesBefore_ = header->pagesBefore;
    journal.headerPageSum_ = header->headerPageSum;
    return {Found::Whole, std::move(journal)};
}

void Journal::read(PageNumber page, std::span<std::byte> bytes) const {
    assert(bytes.size() == pageSize_);
    file_->readAt(offsets_.at(raw(page)), bytes);
}

void Journal::requireFor(const platform::RandomAccessFile& database, std::u16string_view databasePath,
                         std::size_t pageSize) const {
    bool same = pageSize == pageSize_ && database.size() >= std::uint64_t{pagesBefore_} * pageSize_;
    if (same && headerPageSum_ != 0) {
        std::vector<std::byte> page(pageSize_);
        database.readAt(0, page);
        same = journalChecksum(page, 0) == headerPageSum_;
    }
    if (!same)
        throw Error(Error::Kind::Corrupt,
                    "the journal of an interrupted change, " + platform::toUtf8(journalPath(databasePath)) +
                        ", does not belong to the present " + platform::toUtf8(databasePath) +
                        ": the database was replaced or changed by another program since (if the database is as you "
                        "want it, delete the journal)");
}

void Journal::playBack(platform::RandomAccessFile& database) const {
    std::vector<std::byte> page(pageSize_);
    for (const auto& [number, offset] : offsets_) {
        file_->readAt(offset, page);
        database.writeAt(std::uint64_t{number} * pageSize_, page);
    }
    database.truncate(std::uint64_t{pagesBefore_} * pageSize_);
    database.sync();
}

void recover(platform::FileSystem& files, std::u16string_view databasePath, platform::RandomAccessFile& database,
             std::size_t pageSize) {
    Journal::Search search = Journal::find(files, databasePath);
    if (search.found == Journal::Found::None)
        return;
    if (search.journal) {
        search.journal->requireFor(database, databasePath, pageSize);
        search.journal->playBack(database);
        search.journal.reset(); // closed before it is removed
    }
    removeJournal(files, journalPath(databasePath));
}

} // namespace kelb::jet
