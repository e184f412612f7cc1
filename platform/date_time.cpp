#include "platform/date_time.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace kelb::platform {

namespace {

constexpr double kFirstDay = -657434, kLastDay = 2958465; // 100-01-01, 9999-12-31
constexpr int kSecondsPerDay = 86400;

constexpr std::chrono::sys_days kEpoch = std::chrono::year(1899) / 12 / 30;

std::chrono::year_month_day dateOf(const DateTime& time) noexcept {
    return {std::chrono::year(time.year), std::chrono::month(static_cast<unsigned>(time.month)),
            std::chrono::day(static_cast<unsigned>(time.day))};
}

/// Reads a date text from left to right.
class DateReader {
public:
    explicit DateReader(std::u16string_view text) noexcept : text_(text) {}

    bool number(std::size_t minDigits, std::size_t maxDigits, int& value) noexcept {
        std::size_t digits = 0;
        value = 0;
        while (digits < maxDigits && at_ < text_.size() && text_[at_] >= u'0' && text_[at_] <= u'9') {
            value = value * 10 + (text_[at_++] - u'0');
            ++digits;
        }
        return digits >= minDigits;
    }
    bool unit(char16_t wanted) noexcept {
        const bool there = at_ < text_.size() && text_[at_] == wanted;
        at_ += there ? 1 : 0;
        return there;
    }
    bool atEnd() const noexcept { return at_ == text_.size(); }

private:
    std::u16string_view text_;
    std::size_t at_ = 0;
};

bool readDate(DateReader& reader, DateTime& time, bool slashes) noexcept {
    if (slashes) {
        return reader.number(1, 2, time.month) && reader.unit(u'/') && reader.number(1, 2, time.day) &&
               reader.unit(u'/') && reader.number(4, 4, time.year);
    }
    return reader.number(4, 4, time.year) && reader.unit(u'-') && reader.number(1, 2, time.month) &&
           reader.unit(u'-') && reader.number(1, 2, time.day);
}

/// `H:mm` or `H:mm:ss` up to the end.
bool readTime(DateReader& reader, DateTime& time) noexcept {
    if (!reader.number(1, 2, time.hour) || !reader.unit(u':') || !reader.number(2, 2, time.minute)) {
        return false;
    }
    return reader.atEnd() || (reader.unit(u':') && reader.number(2, 2, time.second) && reader.atEnd());
}

} // namespace

bool isValid(const DateTime& time) noexcept {
    const auto in = [](int value, int low, int high) { return value >= low && value <= high; };
    return in(time.year, 100, 9999) && in(time.month, 1, 12) && in(time.day, 1, 31) && dateOf(time).ok() &&
           in(time.hour, 0, 23) && in(time.minute, 0, 59) && in(time.second, 0, 59);
}

double toSerial(const DateTime& time) noexcept {
    const auto days = static_cast<double>((std::chrono::sys_days(dateOf(time)) - kEpoch).count());
    const double fraction = (time.hour * 3600 + time.minute * 60 + time.second) / static_cast<double>(kSecondsPerDay);
    return days < 0 ? days - fraction : days + fraction;
}

std::optional<DateTime> fromSerial(double days) noexcept {
    if (!(days > kFirstDay - 1 && days < kLastDay + 1)) {
        return std::nullopt;
    }
    double wholeDays = std::trunc(days);
    auto seconds = static_cast<int>(std::lround(std::abs(days - wholeDays) * kSecondsPerDay));
    if (seconds == kSecondsPerDay) { // the time of day counts forward, so midnight belongs to the day after
        seconds = 0;
        ++wholeDays;
    }
    if (wholeDays < kFirstDay || wholeDays > kLastDay) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date(kEpoch + std::chrono::days(static_cast<int>(wholeDays)));
    return DateTime{static_cast<int>(date.year()),
                    static_cast<int>(static_cast<unsigned>(date.month())),
                    static_cast<int>(static_cast<unsigned>(date.day())),
                    seconds / 3600,
                    seconds / 60 % 60,
                    seconds % 60};
}

std::u16string show(const DateTime& time) {
    std::array<char, 80> text{};
    const int size = std::snprintf(text.data(), text.size(), "%d-%d-%d %d:%02d:%02d", time.year, time.month, time.day,
                                   time.hour, time.minute, time.second);
    return {text.data(), text.data() + size};
}

std::string toIso(const DateTime& time) {
    std::array<char, 80> text{};
    const int size = std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d", time.year, time.month,
                                   time.day, time.hour, time.minute, time.second);
    return {text.data(), static_cast<std::size_t>(size)};
}

std::optional<DateTime> parseDateTime(std::u16string_view text) noexcept {
    const bool slashes = text.find(u'/') != text.npos;
    DateReader reader(text);
    DateTime time;
    if (!readDate(reader, time, slashes)) {
        return std::nullopt;
    }
    if (!reader.atEnd()) {
        const bool separated = reader.unit(u' ') || (!slashes && reader.unit(u'T'));
        if (!separated || !readTime(reader, time)) {
            return std::nullopt;
        }
    }
    return isValid(time) ? std::optional(time) : std::nullopt;
}

} // namespace kelb::platform
