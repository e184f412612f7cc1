#include "cli/progress_line.h"

#include "platform/terminal.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <limits>
#include <ostream>

namespace kelb::cli {

using platform::number;

namespace {

constexpr double kSecondsBetweenLines = 3;
constexpr double kSecondsBetweenRewrites = 0.1;
constexpr double kSecondsBeforeEstimate = 0.5;
constexpr std::size_t kBarColumns = 20;

std::u16string minutes(double seconds) {
    const auto whole = static_cast<long long>(std::min(seconds, 359999.0));
    const auto twoDigits = [](long long n) { return (n < 10 ? u"0" : u"") + number(n); };
    return (whole >= 3600 ? number(whole / 3600) + u":" + twoDigits(whole / 60 % 60) : number(whole / 60)) + u":" +
           twoDigits(whole % 60);
}

} // namespace

ProgressLine::Style ProgressLine::styleFor(bool quiet) {
    if (quiet) {
        return Style::Off;
    }
    return platform::isTerminal(platform::StandardStream::Error) ? Style::Rewriting : Style::Lines;
}

ProgressLine::ProgressLine(Style style, platform::Clock& clock, std::ostream& out)
    : style_(style), clock_(clock), out_(out), shownAt_(clock.steadySeconds()) {}

void ProgressLine::update(std::u16string_view text, std::size_t done, std::size_t total) {
    if (style_ == Style::Off) {
        return;
    }
    text_ = text;
    done_ = done;
    total_ = total;
    pending_ = true;
    if (!begun_) {
        begun_ = clock_.steadySeconds();
    }
    const double interval = style_ == Style::Lines ? kSecondsBetweenLines : kSecondsBetweenRewrites;
    if (clock_.steadySeconds() - shownAt_ >= interval) {
        show();
    }
}

void ProgressLine::clear() {
    if (onScreen_) {
        out_ << "\r\x1B[K" << std::flush;
        onScreen_ = false;
        pending_ = true;
    }
}

void ProgressLine::finish() {
    if (pending_) {
        show();
    }
    if (onScreen_) {
        out_ << '\n' << std::flush;
        onScreen_ = false;
    }
}

void ProgressLine::show() {
    shownAt_ = clock_.steadySeconds();
    pending_ = false;
    if (style_ == Style::Rewriting) {
        out_ << '\r' << platform::toUtf8(line(platform::terminalColumns(platform::StandardStream::Error) - 1))
             << "\x1B[K" << std::flush;
        onScreen_ = true;
    } else {
        out_ << platform::toUtf8(line(std::numeric_limits<std::size_t>::max())) << '\n' << std::flush;
    }
}

std::u16string ProgressLine::line(std::size_t columns) const {
    const double seconds = clock_.steadySeconds() - begun_.value_or(0);
    const double share = total_ == 0 ? 1 : std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
    std::u16string text;
    if (style_ == Style::Rewriting) {
        const auto filled = static_cast<std::size_t>(share * static_cast<double>(kBarColumns));
        text += u'[' + std::u16string(filled, u'#') + std::u16string(kBarColumns - filled, u'-') + u"] ";
    }
    text += number(static_cast<long long>(done_)) + u" / " + number(static_cast<long long>(total_));
    if (seconds >= kSecondsBeforeEstimate && done_ > 0) {
        const double rate = static_cast<double>(done_) / seconds;
        text += u", " + number(static_cast<long long>(rate)) + u" rows/s";
        if (done_ < total_) {
            text += u", " + minutes(static_cast<double>(total_ - done_) / rate) + u" left";
        }
    }
    text += u"  " + text_;
    std::replace_if(
        text.begin(), text.end(), [](char16_t unit) { return unit < u' '; }, u' ');
    return std::u16string(platform::cutToColumns(text, columns));
}

} // namespace kelb::cli
