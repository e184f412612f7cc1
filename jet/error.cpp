#include "jet/error.h"

#include "platform/utf8.h"

namespace kelb::jet {

namespace {
constexpr std::string_view kAdvice = " (work on a copy; \"kelb db check\" lists every fault)";
}

CorruptFile::CorruptFile(std::u16string_view path, PageNumber page, std::size_t offset, const std::string& expected)
    : Error(Kind::Corrupt, "damaged database " + platform::toUtf8(path) + ", page " + std::to_string(raw(page)) +
                               ", byte " + std::to_string(offset) + ": " + expected + kAdvice.data()),
      page_(page), offset_(offset), textBegin_(std::string_view(what()).size() - kAdvice.size() - expected.size()),
      textLength_(expected.size()) {}

} // namespace kelb::jet
