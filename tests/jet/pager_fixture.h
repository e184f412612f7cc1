#pragma once

#include "jet/pager.h"

#include "platform/memory_file_system.h"

#include <cstring>
#include <memory>
#include <string>

namespace kelb::jet::testing {

inline const std::u16string kPath = u"base.mdb";

class ManualClock final : public platform::Clock {
public:
    platform::DateTime now() const override { return time; }
    double steadySeconds() const override { return seconds; }
    platform::DateTime time{2015, 12, 2, 8, 30, 0};
    double seconds = 100;
};

/// Pages of a file in memory, each filled with one letter.
class PagerFixture {
public:
    /// A file of one page for each letter.
    explicit PagerFixture(std::string_view letters = "", std::size_t pageSize = kPageSize) {
        options.access = Pager::Access::Write;
        options.pageSize = pageSize;
        std::string bytes;
        for (const char letter : letters)
            bytes.append(pageSize, letter);
        files.writeFile(kPath, bytes);
    }

    Pager& open() {
        pager.reset();
        const bool writes = options.access == Pager::Access::Write;
        pager = std::make_unique<Pager>(
            files, clock, kPath, files.open(kPath, writes ? platform::OpenMode::ReadWrite : platform::OpenMode::Read),
            options);
        return *pager;
    }
    Pager& open(Pager::Access access) {
        options.access = access;
        return open();
    }
    void close() { pager.reset(); }

    static void fill(const PageEdit& page, char letter) { std::memset(page.data(), letter, page.bytes().size()); }
    void put(std::uint32_t number, char letter) { fill(pager->edit(PageNumber{number}), letter); }
    void append(char letter) { fill(pager->append(), letter); }

    /// One letter for each page; '?' for a page that is not filled with one.
    std::string seen() {
        std::string letters;
        for (std::uint32_t page = 0; page < pager->pageCount(); ++page)
            letters += letterOf(pager->read(PageNumber{page}).bytes());
        return letters;
    }
    std::string inFile() {
        const std::string bytes = files.readFile(kPath);
        std::string letters;
        for (std::size_t at = 0; at < bytes.size(); at += options.pageSize)
            letters += letterOf(std::as_bytes(std::span(bytes).subspan(at, options.pageSize)));
        return letters;
    }
    static char letterOf(std::span<const std::byte> page) {
        for (const std::byte b : page)
            if (b != page[0])
                return '?';
        return page[0] == std::byte{0} ? '0' : static_cast<char>(page[0]);
    }

    platform::MemoryFileSystem files;
    ManualClock clock;
    Pager::Options options;
    std::unique_ptr<Pager> pager;
};

} // namespace kelb::jet::testing
