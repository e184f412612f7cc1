// Title and body of one forum page of about 100 KB with 20 floors, from bytes in code page 936 to the article,
// against decoding alone with ICU's converter. Pages are generated: one whose posts are small beside the page's
// mark-up, as real pages are, and one that is nearly all post.
#include "extract/Cls4Discuz.h"
#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/text.h"

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include <array>
#include <memory>
#include <random>
#include <stdexcept>

namespace {

using namespace kelb;

constexpr int kFloors = 20;
constexpr std::size_t kPageBytes = 100'000;

/// Text as posters write it: words in Chinese, set codes and numbers between them, tags and line breaks.
std::u16string makePost(std::mt19937& random, std::size_t units) {
    static const std::array<std::u16string_view, 16> kWords{
        u"电视机",   u"开机", u"黑屏，", u"换行管",     u"测电压",      u"130V",     u"正常。", u"长虹CH-16",
        u"还是一样", u"请教", u"行输出", u"<br />\r\n", u"<b>注意</b>", u"TDA8361 ", u"&nbsp;", u"电容C435漏电",
    };
    std::u16string post;
    while (post.size() < units) {
        post += kWords[random() % kWords.size()];
    }
    return post;
}

/// What surrounds a post: author, buttons, signature.
std::u16string makeFrame(std::mt19937& random, std::size_t units) {
    std::u16string frame;
    while (frame.size() < units) {
        const std::u16string id = platform::number(static_cast<long long>(random() % 100'000));
        frame += u"<div class=\"authi\"><a href=\"space-uid-" + id + u".html\" target=\"_blank\" class=\"xw1\">网友" +
                 id + u"</a><em id=\"authorposton" + id +
                 u"\">发表于 2010-8-3 10:21</em><span class=\"pipe\">|</span></div>\r\n";
    }
    return frame;
}

/// `postShare` percent of the page are posts.
std::string makePage(std::size_t postShare) {
    std::mt19937 random(20100803);
    std::u16string page = u"<html><head><title>长虹CH-16不开机 - 维修论坛</title></head><body>\r\n"
                          u"<h1 class=\"ts\"><a href=\"f\">[彩电]</a> <a href=\"t\">长虹CH-16不开机</a></h1>\r\n";
    // A unit of post takes 1.6 bytes, one of mark-up 1.05.
    const std::size_t postUnits = kPageBytes * postShare / 160 / kFloors;
    const std::size_t frameUnits = kPageBytes * (100 - postShare) / 105 / kFloors;
    for (int floor = 0; floor < kFloors; ++floor) {
        page += u"<div id=\"post_" + platform::number(10000 + floor) + u"\"><table><tr><td>" +
                makeFrame(random, frameUnits / 2) + u"<table><tr><td class=\"t_f\" id=\"postmessage_1\">" +
                makePost(random, postUnits) + u"</td></tr></table>" + makeFrame(random, frameUnits / 2) +
                u"</td></tr></table></div>\r\n";
    }
    return platform::encode936(page + u"<div id=\"post_new\"></div></body></html>\r\n");
}

void report(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    state.counters["page_KB"] = static_cast<double>(bytes) / 1000;
}

void icuDecodes(benchmark::State& state) {
    const std::string page = makePage(static_cast<std::size_t>(state.range(0)));
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open("windows-936", &status), &ucnv_close);
    for (auto _ : state) {
        std::u16string text(page.size(), u'\0');
        status = U_ZERO_ERROR;
        const int32_t length = ucnv_toUChars(converter.get(), text.data(), static_cast<int32_t>(text.size()),
                                             page.data(), static_cast<int32_t>(page.size()), &status);
        text.resize(static_cast<std::size_t>(length));
        benchmark::DoNotOptimize(text.data());
    }
    report(state, page.size());
}

void weDecode(benchmark::State& state) {
    const std::string page = makePage(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(platform::decode936(page));
    }
    report(state, page.size());
}

void decodeAndExtract(benchmark::State& state) {
    const std::string page = makePage(static_cast<std::size_t>(state.range(0)));
    platform::MemoryFileSystem files;
    std::u16string marks;
    for (int mark = 0; mark < state.range(1); ++mark) {
        marks += u"长期出售资料" + platform::number(mark) + u"\r\n";
    }
    files.writeFile(u"/app/ADMarks.txt", platform::encode936(marks));
    rewrite::ClsSmart smart(files, u"/app");
    const extract::UserNames names;
    platform::SystemRandom random;
    extract::Cls4Discuz discuz(smart, names, random);
    for (auto _ : state) {
        std::u16string reason;
        const std::u16string html = platform::decode936(page);
        const std::u16string title = extract::Cls4Discuz::extDiscuzTitle(html, reason);
        const std::u16string body = discuz.extDiscuzPageContent(html, reason, extract::ThreadPage::First);
        if (title.empty() || !reason.empty()) {
            throw std::logic_error("the page was not extracted whole");
        }
        benchmark::DoNotOptimize(body.data());
    }
    report(state, page.size());
}

BENCHMARK(icuDecodes)->ArgName("posts%")->Arg(20)->Arg(80);
BENCHMARK(weDecode)->ArgName("posts%")->Arg(20)->Arg(80);
BENCHMARK(decodeAndExtract)->ArgNames({"posts%", "marks"})->ArgsProduct({{20, 80}, {100, 10'000}});

} // namespace
