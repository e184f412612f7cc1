#include "jobs/run_log.h"

#include "jobs/run_time.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/path_map.h"
#include "platform/utf8.h"

namespace kelb::jobs {
namespace {

constexpr double kFlushSeconds = 1;

std::u16string withTime(std::u16string_view logFile, const std::u16string& time) {
    const std::size_t nameBegin = logFile.size() - platform::fileName(logFile).size();
    std::size_t dot = logFile.rfind(u'.');
    if (dot == logFile.npos || dot <= nameBegin) {
        dot = logFile.size();
    }
    std::u16string path(logFile.substr(0, dot));
    path += u"-" + time;
    path += logFile.substr(dot);
    return path;
}

} // namespace

RunLog::RunLog(platform::Platform& platform, std::u16string_view logFile) : platform_(platform) {
    if (!logFile.empty()) {
        path_ = withTime(logFile, runTime(platform.clock.now()));
        lastFlush_ = platform.clock.steadySeconds();
    }
}

void RunLog::collect(std::u16string_view entry) {
    if (!path_.empty()) {
        collected_ += platform::toIso(platform_.clock.now());
        collected_ += ' ';
        platform::toUtf8(entry, collected_);
        collected_ += '\n';
    }
}

void RunLog::add(std::u16string_view entry) {
    collect(entry);
    if (!path_.empty() && platform_.clock.steadySeconds() - lastFlush_ >= kFlushSeconds) {
        flush();
    }
}

void RunLog::addLast(std::u16string_view entry) noexcept {
    try {
        collect(entry);
        flush();
    } catch (const platform::FileError&) {
        collected_.clear();
    }
}

void RunLog::flush() {
    if (collected_.empty()) {
        return;
    }
    platform_.files.appendFile(path_, collected_);
    collected_.clear();
    lastFlush_ = platform_.clock.steadySeconds();
}

} // namespace kelb::jobs
