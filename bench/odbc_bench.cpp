// odbc_bench rows COUNT | add COUNT | add-together COUNT
// `rows` prints articles in the form of PostgreSQL's COPY; `add` puts the same articles into the table wxPrinter of
// wxDB through a record set, as the jobs do, each on the server before the next begins; `add-together` in one
// transaction. bench/run compares them with psql's \copy of what `rows` printed.
#include "ado/connection.h"
#include "ado/environment.h"
#include "ado/recordset.h"
#include "bench/real_system.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace kelb;

struct Article {
    std::u16string url, title, body;
    int channel = 0;
};

Article articleOf(std::size_t row) {
    constexpr std::size_t kTitle = 25, kBody = 2'000; // characters
    return {u"http://site.example/article/" + platform::number(static_cast<long long>(row)) + u".htm",
            bench::articleText(row, kTitle), bench::articleText(row + 1, kBody), static_cast<int>(21 + row % 10)};
}

void printRows(std::size_t count) {
    for (std::size_t row = 0; row < count; ++row) {
        const Article article = articleOf(row);
        std::printf("%s\t2015-12-02 08:30:00\t%s\t%s\t%d\n", platform::toUtf8(article.url).c_str(),
                    platform::toUtf8(article.title).c_str(), platform::toUtf8(article.body).c_str(), article.channel);
    }
}

enum class Together { No, Yes };

void addRows(platform::Platform& platform, std::size_t count, Together together) {
    ado::Environment environment(platform, {});
    ado::Connection connection(environment);
    connection.Open(u"driver={sql server};server=127.0.0.1;Database=wxDB;uid=sa;pwd=");
    connection.Execute(u"truncate wxPrinter");
    if (together == Together::Yes) {
        connection.BeginTrans();
    }
    ado::Recordset rows;
    rows.Open(u"select * from wxPrinter", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
    const ado::Value time = ado::fromDateTime({2015, 12, 2, 8, 30, 0});
    for (std::size_t row = 0; row < count; ++row) {
        const Article article = articleOf(row);
        rows.AddNew();
        rows.set(u"url", article.url);
        rows.set(u"recTime", time);
        rows.set(u"sT", article.title);
        rows.set(u"sC", article.body);
        rows.set(u"cid", ado::Value(article.channel));
        rows.Update();
    }
    rows.Close();
    if (together == Together::Yes) {
        connection.CommitTrans();
    }
    connection.Close();
}

int run(int argc, char** argv) {
    bench::RealSystem system;
    const std::string_view command = argc == 3 ? argv[1] : "";
    const std::size_t count = argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 0;
    if (command == "rows") {
        printRows(count);
    } else if (command == "add" || command == "add-together") {
        addRows(system.platform, count, command == "add" ? Together::No : Together::Yes);
    } else {
        std::fputs("usage: odbc_bench rows COUNT | add COUNT | add-together COUNT\n", stderr);
        return 2;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    return kelb::bench::runOrExplain("odbc_bench", [&] { return run(argc, argv); });
}
