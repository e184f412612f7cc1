#include "extract/ClsWebExtractor.h"

#include "platform/like.h"
#include "platform/text.h"

namespace kelb::extract {
namespace {

constexpr std::size_t kLongestCounted = 100; // UTF-16 code units; paragraphs are longer
constexpr std::int64_t kBoilerplate = 3;     // times seen
constexpr std::int64_t kCallsToPrune = 50;

/// What differs from article to article in these lines is taken away, so that they repeat and are learned. The first
/// that fits counts.
struct Normal {
    std::u16string_view mark, line;
};
constexpr Normal kNormal[] = {
    {u"日期：", u"发表日期"}, {u"作者：", u"文章作者"},   {u"来源：", u"文章来源"},   {u"字体：", u"文章字体"},
    {u"背景：", u"文章背景"}, {u"广电电器", u"广告内容"}, {u"阅读全文", u"阅读全文"}, {u"时间:", u"发表日期"},
};
constexpr std::u16string_view kPageNumberPattern = u"第*页";
constexpr std::u16string_view kPageNumber = u"页码";

std::u16string_view normalised(std::u16string_view line) {
    for (const Normal& each : kNormal) {
        if (line.find(each.mark) != std::u16string_view::npos) {
            return each.line;
        }
    }
    return platform::matchesPattern(line, kPageNumberPattern) ? kPageNumber : line;
}

} // namespace

bool ClsWebExtractor::extC(const std::vector<std::u16string>& lines, std::u16string& outFirstLine,
                           std::u16string& outContent) {
    ++calls_;
    outFirstLine.clear();
    std::u16string body;
    std::size_t left = 0;
    for (const std::u16string& line : lines) {
        const std::u16string_view text = kept(line);
        if (text.empty()) {
            continue;
        }
        if (left == 0) {
            outFirstLine = text;
        } else {
            body += left == 1 ? u"" : u"<br>";
            body += text;
        }
        ++left;
    }
    if (left > 1) {
        outContent = std::move(body);
    }
    if (calls_ % kCallsToPrune == 0) {
        if (pump_ != nullptr) {
            pump_->yield();
        }
        prune();
    }
    return false;
}

/// The line as it is left; "" when it goes.
std::u16string_view ClsWebExtractor::kept(std::u16string_view line) {
    if (line.size() > kLongestCounted) {
        return line;
    }
    if ((!siteName_.empty() && line.find(siteName_) != std::u16string_view::npos) ||
        platform::trimBlanks(line).empty()) {
        return {};
    }
    const std::u16string_view key = normalised(line);
    const auto known = counts_.find(key);
    if (known == counts_.end()) {
        counts_.emplace(key, 1);
        return key;
    }
    return ++known->second >= kBoilerplate ? std::u16string_view() : key;
}

/// Keeps the memory to what has proved to be boilerplate.
void ClsWebExtractor::prune() {
    std::erase_if(counts_, [](const auto& line) { return line.second < kBoilerplate; });
}

} // namespace kelb::extract
