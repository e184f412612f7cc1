#include "app/progress_meter.h"

#include "app/texts.h"

#include <QLocale>

#include <cmath>

namespace kelb::app {
namespace {

constexpr double kWindowSeconds = 10;
constexpr double kFirstSeconds = 0.5;

QString duration(double seconds) {
    const auto whole = static_cast<long long>(std::ceil(seconds));
    if (whole >= 3600) {
        return texts::shown(texts::kHours).arg(whole / 3600).arg(whole % 3600 / 60);
    }
    if (whole >= 60) {
        return texts::shown(texts::kMinutes).arg(whole / 60).arg(whole % 60);
    }
    return texts::shown(texts::kSeconds).arg(whole);
}

} // namespace

void ProgressMeter::start(double now) {
    samples_.assign(1, Sample{now, 0});
    total_ = 0;
}

void ProgressMeter::update(std::size_t done, std::size_t total, double now) {
    total_ = total;
    // A second walk of the same job counts from the start again.
    if (!samples_.empty() && done < samples_.back().done) {
        samples_.clear();
    }
    samples_.push_back({now, done});
    while (samples_.size() > 2 && now - samples_[1].time >= kWindowSeconds) {
        samples_.pop_front();
    }
}

std::optional<double> ProgressMeter::rowsPerSecond() const {
    if (samples_.empty()) {
        return std::nullopt;
    }
    const double seconds = samples_.back().time - samples_.front().time;
    if (seconds < kFirstSeconds) {
        return std::nullopt;
    }
    return static_cast<double>(samples_.back().done - samples_.front().done) / seconds;
}

std::optional<double> ProgressMeter::secondsLeft() const {
    const std::optional<double> speed = rowsPerSecond();
    if (!speed || *speed <= 0 || samples_.back().done > total_) {
        return std::nullopt;
    }
    return static_cast<double>(total_ - samples_.back().done) / *speed;
}

QString ProgressMeter::shown() const {
    const std::optional<double> speed = rowsPerSecond();
    if (!speed) {
        return {};
    }
    QString text = texts::shown(texts::kRowsPerSecond).arg(QLocale::c().toString(*speed, 'f', *speed < 10 ? 1 : 0));
    if (const std::optional<double> left = secondsLeft()) {
        text += texts::shown(texts::kComma) + texts::shown(texts::kTimeLeft).arg(duration(*left));
    }
    return text;
}

} // namespace kelb::app
