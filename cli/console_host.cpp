#include "cli/console_host.h"

#include "platform/utf8.h"

#include <ostream>

namespace kelb::cli {

ConsoleHost::ConsoleHost(const Parts& parts, jobs::PageLocation pages, bool agreed)
    : parts_(parts), pages_(std::move(pages)), agreed_(agreed) {}

void ConsoleHost::log(std::u16string_view entry) {
    print(entry);
    parts_.runLog.add(entry);
}

void ConsoleHost::showProgress(std::u16string_view text, std::size_t done, std::size_t total) {
    parts_.progress.update(text, done, total);
}

void ConsoleHost::showOutcome(std::u16string_view text, std::size_t done, std::size_t total) {
    showProgress(text, done, total);
    log(text);
}

void ConsoleHost::message(std::u16string_view title, std::u16string_view text) {
    std::u16string line = u"[";
    line += title;
    line += u"] ";
    line += text;
    print(line);
    parts_.runLog.add(line);
}

void ConsoleHost::warning(std::u16string_view text) {
    parts_.progress.clear();
    parts_.err << "kelb: warning: " << platform::toUtf8(text) << std::endl;
    parts_.runLog.add(text);
}

void ConsoleHost::print(std::u16string_view line) {
    parts_.progress.clear();
    bytes_.clear();
    platform::toUtf8(line, bytes_);
    bytes_ += '\n';
    parts_.out << bytes_;
    parts_.out.flush();
}

} // namespace kelb::cli
