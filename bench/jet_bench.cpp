// jet_bench write FILE ROWS | scan FILE | verify FILE | open FILE
// jet_bench append FILE ROWS | index FILE | lookup FILE COUNT
// A table of ROWS rows with memos of 5,000 characters, written and read through the engine alone; and one of small
// rows, appended and looked up by url through a record set, as jobs do it. Each prints one line: what, rows, wall
// seconds, CPU seconds, rows per second. bench/run compares it with mdb-export and cp on the same file.
#include "ado/connection.h"
#include "ado/connection_string.h"
#include "ado/environment.h"
#include "ado/recordset.h"
#include "bench/real_system.h"
#include "jet/database.h"
#include "jet/verify.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace kelb;

constexpr std::size_t kMemoCharacters = 5000;

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

std::u16string urlOf(std::size_t row) {
    return u"http://forum.example/thread-" + platform::number(static_cast<long long>(row)) + u"-1-1.html";
}

void write(platform::Platform& platform, std::u16string_view path, std::size_t rows) {
    // Making a text takes longer than storing it: a few serve for all rows.
    std::vector<std::u16string> memos(200);
    for (std::size_t i = 0; i < memos.size(); ++i) {
        memos[i] = bench::articleText(i, kMemoCharacters);
    }
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
        values[1] = urlOf(row);
        values[2] = memos[row % memos.size()];
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

void verify(platform::Platform& platform, std::u16string_view path) {
    const Stopwatch watch(platform.clock);
    auto database = jet::Database::open(platform, path, {});
    if (!jet::verify(*database).empty()) {
        throw std::runtime_error("the file is damaged");
    }
    watch.report("verify", database->table(u"wxAll").rowCount());
}

void open(platform::Platform& platform, std::u16string_view path) {
    const Stopwatch watch(platform.clock);
    auto database = jet::Database::open(platform, path, {});
    watch.report("open", database->table(u"wxAll").rowCount());
}

/// What a job holds of a database.
struct Opened {
    Opened(platform::Platform& platform, std::u16string_view path) : environment(platform, {}) {
        connection.Open(ado::jetConnectionString(path));
    }
    ado::Environment environment;
    ado::Connection connection{environment};
};

void append(platform::Platform& platform, std::u16string_view path, std::size_t rows) {
    jet::Database::create(platform, path)->commit();
    Opened database(platform, path);
    database.connection.Execute(u"create table wxAll (id int identity(1,1), url varchar(255), cid int)");
    ado::Recordset set;
    set.Open(u"wxAll", database.connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
    const Stopwatch watch(platform.clock);
    for (std::size_t row = 0; row < rows; ++row) {
        set.AddNew();
        set.set(u"url", urlOf(row));
        set.set(u"cid", ado::Value(std::int32_t{28}));
        set.Update();
        database.connection.flushIfDue();
    }
    database.connection.flush();
    watch.report("append", rows);
}

void index(platform::Platform& platform, std::u16string_view path) {
    Opened database(platform, path);
    const Stopwatch watch(platform.clock);
    database.connection.Execute(u"create unique index byUrl on wxAll (url)");
    database.connection.flush();
    watch.report("index", 1);
}

void lookup(platform::Platform& platform, std::u16string_view path, std::size_t count) {
    Opened database(platform, path);
    ado::Recordset all;
    all.Open(u"select count(*) as n from wxAll", database.connection);
    const auto rows = static_cast<std::size_t>(std::stoul(platform::toUtf8(all.text(u"n"))));
    all.Close();
    std::mt19937_64 random(1);
    std::size_t found = 0;
    const auto one = [&] {
        ado::Recordset set;
        set.Open(u"select id from wxAll where url='" + urlOf(random() % rows) + u"'", database.connection,
                 ado::CursorType::Keyset);
        found += set.Eof() ? 0U : 1U;
    };
    const Stopwatch first(platform.clock);
    one(); // makes the hash index where the file has none
    first.report("first look-up", 1);
    const Stopwatch watch(platform.clock);
    for (std::size_t i = 0; i < count; ++i) {
        one();
    }
    watch.report("look-up", count);
    if (found != count + 1) {
        throw std::runtime_error("a row was not found");
    }
}

int run(int argc, char** argv) {
    bench::RealSystem system;
    platform::Platform& platform = system.platform;
    const std::string_view command = argc > 2 ? argv[1] : "";
    if (command == "write" && argc == 4) {
        write(platform, platform::fromUtf8(argv[2]), std::strtoul(argv[3], nullptr, 10));
    } else if (command == "scan") {
        scan(platform, platform::fromUtf8(argv[2]));
    } else if (command == "verify") {
        verify(platform, platform::fromUtf8(argv[2]));
    } else if (command == "open") {
        open(platform, platform::fromUtf8(argv[2]));
    } else if (command == "append" && argc == 4) {
        append(platform, platform::fromUtf8(argv[2]), std::strtoul(argv[3], nullptr, 10));
    } else if (command == "index") {
        index(platform, platform::fromUtf8(argv[2]));
    } else if (command == "lookup" && argc == 4) {
        lookup(platform, platform::fromUtf8(argv[2]), std::strtoul(argv[3], nullptr, 10));
    } else {
        std::fputs("usage: jet_bench write|append|lookup FILE COUNT | scan|verify|open|index FILE\n", stderr);
        return 2;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    return kelb::bench::runOrExplain("jet_bench", [&] { return run(argc, argv); });
}
