#include "jet/error.h"

#include "platform/utf8.h"

namespace kelb::jet {

CorruptFile::CorruptFile(std::u16string_view path, PageNumber page, std::size_t offset, const std::string& expected)
    : Error(Kind::Corrupt, "damaged database " + platform::toUtf8(path) + ", page " + std::to_string(raw(page)) +
                               ", byte " + std::to_string(offset) + ": " + expected +
                               " (work on a copy; \"kelb db check\" lists every fault)"),
      page_(page), offset_(offset) {}

} // namespace kelb::jet
