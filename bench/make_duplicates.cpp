// make_duplicates FOLDER ROWS [tables]: what the cleaning jobs work on, for timing them. FOLDER/Comb.mdb with bbsforum
// (two crawled copies of each thread page, with saved pages of about 8 KB), wxGG (two rows an address) and wxtcl (two
// approved records a set code), ROWS rows each. "tables": without bbsforum and its pages.
#include "ado/connection.h"
#include "ado/environment.h"
#include "ado/recordset.h"
#include "bench/real_system.h"
#include "platform/code_page.h"
#include "platform/date_time.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>

namespace {

using namespace kelb;

constexpr std::size_t kPageBytes = 8000;
constexpr std::size_t kFilesPerFolder = 1000;

std::u16string number(std::size_t value) {
    return platform::number(static_cast<long long>(value));
}

std::u16string address(std::size_t thread) {
    return u"http://forum.example/thread-" + number(1'000'000 + thread) + u"-1-1.html";
}

/// Creates a table and adds `count` rows to it.
void fill(ado::Connection& connection, const std::u16string& definition, std::u16string_view table, std::size_t count,
          const std::function<void(ado::Recordset&, std::size_t)>& row) {
    connection.Execute(definition);
    ado::Recordset rows;
    rows.Open(u"select * from " + std::u16string(table), connection, ado::CursorType::Keyset,
              ado::LockType::Optimistic);
    for (std::size_t i = 0; i < count; ++i) {
        rows.AddNew();
        row(rows, i);
        rows.Update();
    }
}

void makeCrawl(platform::FileSystem& files, std::u16string_view folder, ado::Connection& connection,
               std::size_t count) {
    fill(connection, u"create table bbsforum (id int identity(1,1) NOT NULL,url varchar(255),content memo,cid int)",
         u"bbsforum", count, [&](ado::Recordset& rows, std::size_t i) {
             const std::u16string bucket = number(i / kFilesPerFolder), name = u"t" + number(i) + u".html";
             const std::u16string target = platform::joinPath(platform::joinPath(folder, u"pages"), bucket);
             if (i % kFilesPerFolder == 0) {
                 files.makeFolders(target);
             }
             const std::u16string title = u"<html><head><title>故障实例 " + number(i / 2) + u"</title></head>";
             files.writeFile(platform::joinPath(target, name),
                             platform::encode936(title) + std::string(kPageBytes, '.'));
             rows.set(u"url", address(i / 2));
             rows.set(u"content", u"D:\\pages\\" + bucket + u"\\" + name);
         });
}

int run(std::u16string_view folder, std::size_t count, bool withPages) {
    bench::RealSystem system;
    platform::FileSystem& files = *system.files;
    platform::Platform& platform = system.platform;
    files.makeFolders(folder);
    const std::u16string database = platform::joinPath(folder, u"Comb.mdb");
    jet::Database::create(platform, database)->commit();
    ado::Environment environment(platform, {});
    ado::Connection connection(environment);
    connection.Open(ado::jetConnectionString(database));
    if (withPages) {
        makeCrawl(files, folder, connection, count);
    }
    const double begun = platform::toSerial({2015, 12, 2, 8, 30, 0});
    fill(connection,
         u"create table wxGG (id int identity(1,1) NOT NULL,url varchar(255),recTime datetime,sT varchar(255))",
         u"wxGG", count, [&](ado::Recordset& rows, std::size_t i) {
             rows.set(u"url", address(i / 2));
             rows.set(u"recTime", ado::OleDate{begun + static_cast<double>(i * 7919 % count) / 86400});
             rows.set(u"sT", u"故障实例 " + number(i));
         });
    fill(connection,
         u"create table wxtcl (id int identity(1,1) NOT NULL,url varchar(255),sT varchar(255),sC memo,"
         u"TVCode varchar(50),blnPass yesno,blnJoined yesno)",
         u"wxtcl", count, [&](ado::Recordset& rows, std::size_t i) {
             rows.set(u"url", u"http://ask.example/" + number(i));
             rows.set(u"sT", u"无图像 " + number(i));
             rows.set(u"sC", std::u16string(300, u'修'));
             rows.set(u"TVCode", u"L" + number(i % (count / 2)));
             rows.set(u"blnPass", ado::Value(true));
         });
    connection.Close();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: make_duplicates FOLDER ROWS [tables]\n", stderr);
        return 2;
    }
    const bool withPages = argc == 3;
    return kelb::bench::runOrExplain("make_duplicates", [&] {
        return run(platform::fromUtf8(argv[1]), std::strtoul(argv[2], nullptr, 10), withPages);
    });
}
