#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelb::platform {

/// A local date and time of day to the second, without zone.
struct DateTime {
    int year = 1899, month = 12, day = 30, hour = 0, minute = 0, second = 0;
    friend bool operator==(const DateTime&, const DateTime&) = default;
    friend auto operator<=>(const DateTime&, const DateTime&) = default;
};

/// Days since 1899-12-30; the absolute fraction is the time of day, also before that day. Rounded to whole seconds
/// when split. Years 100 to 9999; outside them fromSerial gives no value.
[[nodiscard]] double toSerial(const DateTime& time) noexcept;
[[nodiscard]] std::optional<DateTime> fromSerial(double days) noexcept;

[[nodiscard]] bool isValid(const DateTime& time) noexcept;
/// `2015-12-2 8:30:00`, as logs show it.
[[nodiscard]] std::u16string show(const DateTime& time);
/// `2015-12-02T08:30:00`.
[[nodiscard]] std::string toIso(const DateTime& time);
/// Reads `yyyy-M-d`, `yyyy-M-d H:mm[:ss]`, `M/d/yyyy [H:mm:ss]` and the ISO form; else no value.
[[nodiscard]] std::optional<DateTime> parseDateTime(std::u16string_view text) noexcept;

} // namespace kelb::platform
