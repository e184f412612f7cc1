// Loading a dictionary of 160,000 words against reading and decoding its file, and cutting text into its words.
#include "platform/code_page.h"
#include "platform/file_system.h"
#include "platform/path_map.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "segment/ClsFenCi.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using namespace kelb;

constexpr std::size_t kWords = 160'000;

/// Different words of one to seven characters, most of them of two to four, with columns as large as real ones.
std::string makeDictionary() {
    static const std::array<std::u16string_view, 4> kParts{u"N,", u"V,N,", u"ADJ,", u""};
    static constexpr std::array<std::size_t, 10> kSizes{1, 2, 2, 2, 2, 3, 3, 4, 4, 7};
    std::mt19937 random(20260405);
    segment::WordDictionary words;
    while (words.size() < kWords) {
        std::u16string word;
        for (std::size_t size = kSizes[random() % kSizes.size()]; word.size() < size;) {
            word.push_back(static_cast<char16_t>(u'一' + random() % 6000));
        }
        if (platform::decode936(platform::encode936(word)) == word) {
            words.add(word, platform::number(static_cast<long long>(random() % 1'000'000)),
                      kParts[random() % kParts.size()]);
        }
    }
    return words.lines();
}

/// An application folder with such a dictionary, gone at the end.
class Home {
public:
    Home() : files_(platform::makeSystemFileSystem({})) {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelb-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        folder_ = pattern;
        bytes_ = makeDictionary();
        files_->writeFile(path(), bytes_);
    }
    ~Home() { std::filesystem::remove_all(folder_); }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    platform::FileSystem& files() { return *files_; }
    std::u16string folder() const { return platform::fromUtf8(folder_.string()); }
    std::u16string path() const { return platform::joinPath(folder(), u"SogouLabDic.dic"); }
    std::size_t size() const { return bytes_.size(); }

private:
    std::unique_ptr<platform::FileSystem> files_;
    std::filesystem::path folder_;
    std::string bytes_;
};

Home& home() {
    static Home made;
    return made;
}

void readAndDecode(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(platform::decode936(home().files().readFile(home().path())));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(home().size()) * state.iterations());
}

void readSogouLabDic(benchmark::State& state) {
    const segment::ClsFenCi fenCi(home().files(), home().folder());
    for (auto _ : state) {
        const auto words = fenCi.readSogouLabDic();
        if (!words || words->size() != kWords) {
            throw std::logic_error("the dictionary was not loaded whole");
        }
        benchmark::DoNotOptimize(words->size());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(home().size()) * state.iterations());
}

/// Words of the dictionary one behind the other, so that cuts compete.
void cutText(benchmark::State& state) {
    segment::ClsFenCi fenCi(home().files(), home().folder());
    const segment::WordDictionary& words = fenCi.dictionary();
    std::mt19937 random(20260405);
    std::u16string text;
    while (text.size() < static_cast<std::size_t>(state.range(0))) {
        text += words.entry(random() % words.size()).word;
        if (random() % 6 == 0) {
            text += u"，";
        }
    }
    for (auto _ : state) {
        std::size_t cut = 0;
        fenCi.segment(text, [&cut](const segment::Word&) { ++cut; });
        benchmark::DoNotOptimize(cut);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}

BENCHMARK(readAndDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(readSogouLabDic)->Unit(benchmark::kMillisecond);
BENCHMARK(cutText)->ArgName("characters")->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace
