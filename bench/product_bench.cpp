// One product page of about 100 KB, from bytes in code page 936 to name, code and ten parameters, against decoding
// alone.
#include "extract/ClsSpecSheet.h"
#include "platform/code_page.h"
#include "platform/text.h"
#include "rewrite/ClsSmart.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace {

using namespace kelb;

constexpr std::size_t kPageUnits = 80'000;
constexpr std::array<std::u16string_view, 10> kNames{u"产品定位", u"屏幕尺寸", u"屏幕比例", u"背光灯类型", u"网络接口",
                                                     u"分辨率",   u"输入",     u"输出",     u"图像特点",   u"音频性能"};

std::u16string links(std::size_t units) {
    std::u16string text;
    for (long long i = 0; text.size() < units; ++i) {
        text += u"<li><a href=\"/product/" + platform::number(i) + u"/param.shtml\">同类型号第" + platform::number(i) +
                u"款</a></li>\r\n";
    }
    return text;
}

/// Eighty rows of parameters; the ten wanted ones stand among the last.
std::string encodedPage() {
    std::u16string page = u"<html><title>晴川液晶电视（QC42830DE）参数_报价</title><body>" + links(kPageUnits / 3) +
                          u"<table><tr><th>主体参数</th></tr>\r\n";
    for (std::size_t row = 0; row < 80; ++row) {
        const std::u16string name(row < 70 ? std::u16string_view(u"其他参数") : kNames[row - 70]);
        page += u"<tr><th class=\"name\">颜色</th><td>黑</td>\r\n<th>" + name + u"</th><td><a href=\"/help.htm\">第" +
                platform::number(static_cast<long long>(row)) + u"种</a></td></tr>\r\n";
    }
    page += u"</table>";
    return platform::encode936(page + links(kPageUnits - page.size()) + u"</body></html>");
}

void report(benchmark::State& state, std::size_t bytes) {
    state.SetItemsProcessed(state.iterations());
    state.counters["page_KB"] = static_cast<double>(bytes) / 1000;
}

void decodeProduct(benchmark::State& state) {
    const std::string page = encodedPage();
    for (auto _ : state) {
        benchmark::DoNotOptimize(platform::decode936(page));
    }
    report(state, page.size());
}

/// What param-import does with a page.
void decodeAndExtractProduct(benchmark::State& state) {
    using extract::ClsSpecSheet;
    const std::string page = encodedPage();
    for (auto _ : state) {
        const std::u16string text = platform::decode936(page);
        const std::u16string_view table = ClsSpecSheet::extTable(text, u"<th>主体参数</th>");
        const std::u16string title = ClsSpecSheet::extTitle(text);
        std::u16string name, code;
        ClsSpecSheet::extNameAndCode(title, name, code);
        code = rewrite::ClsSmart::searchTVCode(title);
        const extract::SpecRows rows(ClsSpecSheet::tableRows(table));
        for (const std::u16string_view wanted : kNames) {
            if (rows.value(wanted).empty()) {
                throw std::logic_error("a parameter was not found");
            }
        }
        benchmark::DoNotOptimize(code.data());
    }
    report(state, page.size());
}

BENCHMARK(decodeProduct);
BENCHMARK(decodeAndExtractProduct);

} // namespace
