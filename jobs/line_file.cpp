#include "jobs/line_file.h"

#include <span>

namespace kelb::jobs {

void LineWriter::add(std::string_view lines) {
    file_->writeAt(end_, std::as_bytes(std::span(lines.data(), lines.size())));
    end_ += lines.size();
}

bool LineReader::next(std::string_view& line) {
    std::size_t searched = used_;
    for (;;) {
        const std::size_t end = buffer_.find('\n', searched);
        if (end != buffer_.npos) {
            line = std::string_view(buffer_).substr(used_, end - used_);
            used_ = end + 1;
            return true;
        }
        searched = buffer_.size() - used_;
        if (!readMore()) {
            return false;
        }
    }
}

/// More bytes behind what was not given out, which moves to the front.
bool LineReader::readMore() {
    constexpr std::size_t kPiece = 262144;
    buffer_.erase(0, used_);
    used_ = 0;
    const std::size_t before = buffer_.size();
    buffer_.resize(before + kPiece);
    const std::size_t count =
        file_->readAt(position_, std::as_writable_bytes(std::span(buffer_.data() + before, kPiece)));
    buffer_.resize(before + count);
    position_ += count;
    return count != 0;
}

} // namespace kelb::jobs
