// make_forum_crawl FOLDER THREADS: a crawl of first thread pages as a crawler leaves it, for timing the import:
// FOLDER/Comb.mdb (table bbsforum, channel 28) and FOLDER/pages/NNN/tNNNNNN.html in code page 936, about 8 KB each.
#include "ado/connection.h"
#include "ado/environment.h"
#include "ado/recordset.h"
#include "bench/real_system.h"
#include "platform/code_page.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace kelb;

constexpr std::size_t kFloors = 4;
constexpr std::size_t kPostCharacters = 600;
constexpr std::size_t kFilesPerFolder = 1000;

std::u16string post(std::size_t thread, std::size_t floor) {
    std::u16string text;
    std::size_t state = thread * 977 + floor * 31 + 7;
    while (text.size() < kPostCharacters) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        const auto pick = static_cast<unsigned>(state >> 40);
        if (pick % 40 == 0) {
            text += u"<br />\r\n";
        }
        text += static_cast<char16_t>(0x4E00 + pick % 0x4000);
    }
    return text;
}

std::u16string page(std::size_t thread) {
    std::u16string html = u"<html><head><title>机器 - 论坛</title></head><body>\r\n<h1 class=\"ts\"><a href=\"t.html\">"
                          u"[维修] 故障实例 ";
    html += platform::number(static_cast<long long>(thread)) + u"</a></h1>\r\n";
    for (std::size_t floor = 0; floor < kFloors; ++floor) {
        html += u"<div id=\"post_" + platform::number(static_cast<long long>(1000 + floor)) +
                u"\"><table><tr><td class=\"pls\">用户</td><td class=\"t_f\" id=\"p\">" + post(thread, floor) +
                u"</td></tr></table></div>\r\n";
    }
    return html + u"<div id=\"post_new\"></div></body></html>\r\n";
}

int run(std::u16string_view folder, std::size_t threads) {
    bench::RealSystem system;
    platform::FileSystem& files = *system.files;
    platform::Platform& platform = system.platform;
    files.makeFolders(folder);
    const std::u16string database = platform::joinPath(folder, u"Comb.mdb");
    jet::Database::create(platform, database)->commit();

    ado::Environment environment(platform, {});
    ado::Connection connection(environment);
    connection.Open(ado::jetConnectionString(database));
    connection.Execute(u"create table bbsforum (id int identity(1,1) NOT NULL,url varchar(255),refurl varchar(255),"
                       u"reftxt varchar(255),content memo,cid int,sT varchar(255),sC memo)");
    ado::Recordset rows;
    rows.Open(u"select * from bbsforum", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
    for (std::size_t thread = 0; thread < threads; ++thread) {
        const std::u16string bucket = platform::number(static_cast<long long>(thread / kFilesPerFolder));
        const std::u16string name = u"t" + platform::number(static_cast<long long>(thread)) + u".html";
        const std::u16string target = platform::joinPath(platform::joinPath(folder, u"pages"), bucket);
        if (thread % kFilesPerFolder == 0) {
            files.makeFolders(target);
        }
        files.writeFile(platform::joinPath(target, name), platform::encode936(page(thread)));
        rows.AddNew();
        rows.set(u"url", u"http://forum.example/thread-" + platform::number(static_cast<long long>(100000 + thread)) +
                             u"-1-1.html");
        rows.set(u"content", u"D:\\pages\\" + bucket + u"\\" + name);
        rows.set(u"cid", ado::Value(std::int32_t{28}));
        rows.Update();
    }
    rows.Close();
    connection.Close();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make_forum_crawl FOLDER THREADS\n", stderr);
        return 2;
    }
    return kelb::bench::runOrExplain(
        "make_forum_crawl", [&] { return run(platform::fromUtf8(argv[1]), std::strtoul(argv[2], nullptr, 10)); });
}
