// page_store_bench make FOLDER COUNT: product pages of about 3 KB in sub-folders of 1,000 files, each of another model.
// page_store_bench walk FOLDER: hands them all out from the first on, keeping the place once a second as the job does.
#include "bench/real_system.h"
#include "platform/code_page.h"
#include "platform/text.h"
#include "platform/ui_pump.h"
#include "platform/utf8.h"
#include "store/ClsIO.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace kelb;

constexpr std::size_t kFilesPerFolder = 1000;

struct NoEvents final : platform::UiPump {
    void yield() override {}
};

std::u16string number(std::size_t value) {
    return platform::number(static_cast<long long>(value));
}

void make(platform::FileSystem& files, const std::u16string& folder, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::u16string subFolder = platform::joinPath(folder, number(i / kFilesPerFolder));
        if (i % kFilesPerFolder == 0) {
            files.makeFolders(subFolder);
        }
        std::u16string page = u"<html><title>电视" + number(i) + u"（QC" + number(100'000 + i) +
                              u"）参数_报价</title><table><tr><th>主体参数</th></tr>\r\n";
        for (int row = 0; row < 20; ++row) {
            page += u"<tr><th class=\"name\">颜色</th><td>黑</td>\r\n<th>屏幕尺寸</th><td>42英寸</td></tr>\r\n";
        }
        page += u"</table><p>" + std::u16string(500, u'文');
        files.writeFile(platform::joinPath(subFolder, number(100'000 + i) + u".htm"), platform::encode936(page));
    }
}

void walk(platform::FileSystem& files, std::u16string folder) {
    NoEvents events;
    platform::SystemClock clock;
    store::writePlace(files, platform::joinPath(folder, u""), {});
    store::ClsIO pages(files, platform::PageEncoding::Auto, {}, events, store::ClsIO::Keeping::OnRequest);
    std::size_t count = 0;
    const double begun = clock.steadySeconds();
    for (double kept = begun; pages.nxtArticleV2(folder) != store::kFileLoopOver;) {
        count += pages.page().empty() ? 0U : 1U;
        if (const double now = clock.steadySeconds(); now - kept >= 1) {
            pages.keepPlace();
            kept = now;
        }
    }
    pages.keepPlace();
    const double seconds = clock.steadySeconds() - begun;
    std::printf("%zu files, %.2f s, %.1f microseconds a file\n", count, seconds,
                seconds * 1e6 / static_cast<double>(count));
}

} // namespace

int main(int count, char** arguments) {
    const std::string what = count > 2 ? arguments[1] : "";
    return kelb::bench::runOrExplain("page_store_bench", [&] {
        const auto files = platform::makeSystemFileSystem({});
        if (what == "make" && count == 4) {
            make(*files, platform::fromUtf8(arguments[2]), std::strtoull(arguments[3], nullptr, 10));
        } else if (what == "walk" && count == 3) {
            walk(*files, platform::fromUtf8(arguments[2]));
        } else {
            std::fputs("usage: page_store_bench make FOLDER COUNT | walk FOLDER\n", stderr);
            return 2;
        }
        return 0;
    });
}
