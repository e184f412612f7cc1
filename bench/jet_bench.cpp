// jet_bench write FILE ROWS | scan FILE | lookup FILE COUNT
// A table of ROWS rows with memos of 5,000 characters, written and read through the engine alone. Prints one line:
// what, rows, wall seconds, CPU seconds, rows per second. bench/run compares it with mdb-export on the same file.
#include "jet/database.h"

#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/platform.h"
#include "platform/random.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <string>
#include <string_view>

namespace {

using namespace kelb;

class Stopwatch {
public:
    explicit Stopwatch(const platform::Clock& clock)
        : clock_(clock), wall_(clock.steadySeconds()), cpu_(std::clock()) {}

    void report(const char* what, std::size_t rows) const {
        const double wall = clock_.steadySeconds() - wall_;
        const double cpu = static_cast<double>(std::clock() - cpu_) / CLOCKS_PER_SEC;
        std::printf("%s rows=%zu wall=%.3f cpu=%.3f rows_per_second=%.0f\n", what, rows, wall, cpu,
                    static_cast<double>(rows) / wall);
    }

private:
    const platform::Clock& clock_;
    double wall_;
    std::clock_t cpu_;
};

/// 5,000 characters, two thirds Chinese as in real articles, different in every row.
std::u16string memoOf(std::size_t row) {
    constexpr std::size_t kCharacters = 5000;
    std::u16string text;
    text.reserve(kCharacters);
    std::size_t state = row * 2654435761U + 12345;
    while (text.size() < kCharacters) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        const auto pick = static_cast<unsigned>(state >> 40);
        text += pick % 3 == 0 ? static_cast<char16_t>(u'a' + pick / 3 % 26)
                              : static_cast<char16_t>(0x4E00 + pick / 3 % 0x4000);
    }
    return text;
}

void write(platform::Platform& platform, std::u16string_view path, std::size_t rows) {
    const Stopwatch watch(platform.clock);
    auto database = jet::Database::create(platform, path);
    jet::NewTable definition;
    definition.name = u"wxAll";
    definition.columns.push_back({.name = u"id", .type = jet::ColumnType::Long, .autonumber = true});
    definition.columns.push_back({.name = u"url", .type = jet::ColumnType::Text});
    definition.columns.push_back({.name = u"sC", .type = jet::ColumnType::Memo});
    jet::Table& table = database->createTable(definition);
    std::vector<jet::Value> values(3);
    for (std::size_t row = 0; row < rows; ++row) {
        values[1] = u"http://forum.example/thread-" + platform::number(static_cast<long long>(row)) + u"-1-1.html";
        values[2] = memoOf(row);
        table.insert(values);
    }
    database->commit();
    watch.report("write", rows);
}

void scan(platform::Platform& platform, std::u16string_view path) {
    const Stopwatch watch(platform.clock);
    auto database = jet::Database::open(platform, path, {});
    jet::Table& table = database->table(u"wxAll");
    const jet::Column& url = *table.definition().findColumn(u"url");
    const jet::Column& body = *table.definition().findColumn(u"sC");
    std::u16string text;
    std::size_t rows = 0;
    std::size_t units = 0;
    jet::Row row;
    for (jet::TableScan walk = table.scan(); walk.next(row); ++rows) {
        row.text(url, text);
        units += text.size();
        row.text(body, text);
        units += text.size();
    }
    watch.report("scan", rows);
    std::fprintf(stderr, "%zu characters\n", units);
}

int run(int argc, char** argv) {
    const auto files = platform::makeSystemFileSystem({});
    platform::SystemClock clock;
    platform::SystemRandom random;
    platform::Platform platform{*files, clock, random, platform::executableFolder()};
    const std::string_view command = argc > 2 ? argv[1] : "";
    if (command == "write" && argc == 4)
        write(platform, platform::fromUtf8(argv[2]), std::strtoul(argv[3], nullptr, 10));
    else if (command == "scan")
        scan(platform, platform::fromUtf8(argv[2]));
    else {
        std::fputs("usage: jet_bench write FILE ROWS | scan FILE\n", stderr);
        return 2;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "jet_bench: %s\n", error.what());
        return 1;
    }
}
