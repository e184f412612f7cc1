// The template extractor's work on one page, from bytes to the lines that are left: pages of one site of about 30 KB
// with the same frame and articles of their own; with the alignment against a model page, without it, and the alignment
// alone.
#include "extract/ClsWebExtractor.h"
#include "extract/Prog_Copy.h"
#include "extract/template_model.h"
#include "platform/code_page.h"
#include "platform/text.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

using namespace kelb;

constexpr int kPages = 200;

std::u16string makePage(int number) {
    std::u16string page =
        u"<html><head><title>文章" + platform::number(number) + u"</title></head><body class=\"a\">\r\n";
    for (int link = 0; link < 120; ++link) {
        page += u"<li><a href=\"/list/" + platform::number(link) + u".htm\" target=\"_blank\">栏目" +
                platform::number(link) + u"</a></li>\r\n";
    }
    for (int paragraph = 0; paragraph < 20; ++paragraph) {
        page += u"<p>第" + platform::number(number) + u"篇的第" + platform::number(paragraph) + u"段：";
        for (int word = 0; word < 30; ++word) {
            page += u"检查行输出管，";
        }
        page += u"</p>\r\n";
    }
    for (int link = 0; link < 120; ++link) {
        page += u"<div class=\"foot\"><span>友情链接" + platform::number(link) + u"</span></div>\r\n";
    }
    return page + u"</body></html>";
}

enum class Aligned { No, Yes };

void extractPages(benchmark::State& state, Aligned aligned) {
    std::vector<std::string> pages;
    for (int i = 0; i < kPages; ++i) {
        pages.push_back(platform::encode936(makePage(i)));
    }
    const extract::TemplateModel model(makePage(kPages));
    for (auto _ : state) {
        extract::ClsWebExtractor learner(u"");
        std::size_t units = 0;
        for (const std::string& bytes : pages) {
            const std::u16string page = platform::decode936(bytes);
            const std::u16string_view body = std::u16string_view(page).substr(extract::bodyStart(page));
            if (aligned == Aligned::Yes) {
                benchmark::DoNotOptimize(model.align(body));
            }
            std::vector<std::u16string> lines;
            extract::Prog_Copy::CopyRemoveHTML2(body, lines);
            std::u16string first, content;
            learner.extC(lines, first, content);
            units += content.size();
        }
        if (units < kPages * 1000) {
            throw std::logic_error("the articles were not kept");
        }
    }
    state.SetItemsProcessed(state.iterations() * kPages);
    state.counters["page_KB"] = static_cast<double>(pages.front().size()) / 1000;
}

void withoutAlignment(benchmark::State& state) {
    extractPages(state, Aligned::No);
}
void withAlignment(benchmark::State& state) {
    extractPages(state, Aligned::Yes);
}

BENCHMARK(withoutAlignment);
BENCHMARK(withAlignment);

} // namespace
