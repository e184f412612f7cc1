// One article page of about 100 KB, from bytes in code page 936 to title and body, against decoding alone; and its
// image tags replaced. A portal's page is mostly frame: lists of links before and behind the text.
#include "extract/Cls4Article.h"
#include "extract/image_tags.h"
#include "platform/code_page.h"
#include "platform/text.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace {

using namespace kelb;

constexpr std::size_t kPageUnits = 80'000; // about 100 KB
const extract::ArticleMarkers kMarkers{u"<h1 class=\"info_title\">", u"</h1>", u"<td class=\"info_content\">",
                                       u"<div class=\"content_page\">"};

std::u16string links(std::size_t units) {
    std::u16string text;
    for (long long i = 0; text.size() < units; ++i) {
        text += u"<li><a href=\"/weixiu/" + platform::number(i) + u".html\" target=\"_blank\">电视机不开机检修第" +
                platform::number(i) + u"例</a><span class=\"date\">2011-5-6</span></li>\r\n";
    }
    return text;
}

/// `bodyShare` percent of the page are the article.
std::u16string makePage(std::size_t bodyShare) {
    const std::size_t frame = kPageUnits * (100 - bodyShare) / 200;
    std::u16string page = u"<html><head><title>维修</title></head>\r\n<body><ul>" + links(frame) + u"</ul>" +
                          kMarkers.titleStart + u"电冰箱冷藏室结冰的原因" + kMarkers.titleEnd + kMarkers.contentStart;
    for (std::size_t from = page.size(); page.size() - from < kPageUnits * bodyShare / 100;) {
        page += u"<p>　　冷藏室后壁结冰，先看排水孔有没有堵塞。<br /><img src=\"/upload/" +
                platform::number(static_cast<long long>(page.size() % 97)) + u".jpg\" border=\"0\">TDA8361</p>\r\n";
    }
    return page + kMarkers.contentEnd + u"<ul>" + links(frame) + u"</ul></body></html>";
}

std::string encodedPage(const benchmark::State& state) {
    return platform::encode936(makePage(static_cast<std::size_t>(state.range(0))));
}

void report(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    state.counters["page_KB"] = static_cast<double>(bytes) / 1000;
}

void decodeArticle(benchmark::State& state) {
    const std::string page = encodedPage(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(platform::decode936(page));
    }
    report(state, page.size());
}

/// What article-import does with a page.
void decodeAndExtractArticle(benchmark::State& state) {
    const std::string page = encodedPage(state);
    const extract::Cls4Article article(kMarkers, []() -> rewrite::ClsSmart& { throw std::logic_error("not needed"); });
    for (auto _ : state) {
        const std::u16string text = platform::decode936(page);
        std::u16string_view html = text;
        html.remove_prefix(html.find(u"<body>"));
        std::u16string title, body, reason;
        if (!article.extTitle(html, kMarkers.titleStart, kMarkers.titleEnd, title, reason) ||
            !article.extContent(html, kMarkers.contentStart, kMarkers.contentEnd, body, reason)) {
            throw std::logic_error("the page was not extracted");
        }
        platform::replaceAllIn(body, u"<\r\n", u"<");
        body = platform::quoted(body);
        benchmark::DoNotOptimize(body.data());
    }
    report(state, page.size());
}

/// 97 images, each many times, without the look-ups.
void replaceImages(benchmark::State& state) {
    const std::u16string page = makePage(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            extract::replaceImageTags(page, [](std::u16string_view) { return u"<br>无图片51<br>"; }));
    }
    report(state, platform::encode936(page).size());
}

BENCHMARK(decodeArticle)->ArgName("body%")->Arg(20)->Arg(80);
BENCHMARK(decodeAndExtractArticle)->ArgName("body%")->Arg(20)->Arg(80);
BENCHMARK(replaceImages)->ArgName("body%")->Arg(80);

} // namespace
