#include "platform/date_time.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace kelb::platform {
namespace {

struct SerialCase {
    double serial;
    DateTime time;
};

// Days counted by hand from 1899-12-30; the time of day counts forward before it, too.
const std::vector<SerialCase> kSerials{
    {0, {1899, 12, 30, 0, 0, 0}},
    {0.25, {1899, 12, 30, 6, 0, 0}},
    {1, {1899, 12, 31, 0, 0, 0}},
    {-1, {1899, 12, 29, 0, 0, 0}},
    {-1.25, {1899, 12, 29, 6, 0, 0}},
    {36526.5, {2000, 1, 1, 12, 0, 0}},
    {25569, {1970, 1, 1, 0, 0, 0}},
    {42340 + 8.5 / 24, {2015, 12, 2, 8, 30, 0}},
    {2958465 + 86399.0 / 86400, {9999, 12, 31, 23, 59, 59}},
    {-657434, {100, 1, 1, 0, 0, 0}},
};

TEST(DateTime, SerialAndTimeCorrespond) {
    for (const SerialCase& c : kSerials) {
        EXPECT_DOUBLE_EQ(toSerial(c.time), c.serial);
        ASSERT_TRUE(fromSerial(c.serial)) << c.serial;
        EXPECT_EQ(toIso(*fromSerial(c.serial)), toIso(c.time));
    }
}

TEST(DateTime, SerialIsRoundedToWholeSeconds) {
    EXPECT_EQ(fromSerial(1 - 0.4 / 86400), (DateTime{1899, 12, 31, 0, 0, 0}));
    EXPECT_EQ(fromSerial(1 - 0.6 / 86400), (DateTime{1899, 12, 30, 23, 59, 59}));
    EXPECT_EQ(fromSerial(-1.999999), (DateTime{1899, 12, 30, 0, 0, 0})); // a day after the 29th, not before
    EXPECT_EQ(fromSerial(-0.25), (DateTime{1899, 12, 30, 6, 0, 0}));     // day 0 has no sign
}

TEST(DateTime, SerialOutsideTheYearsHasNoTime) {
    for (const double serial : {-657435.0, 2958466.0, 2958465.9999999, 1e300, -1e300,
                                std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(fromSerial(serial)) << serial;
    }
}

TEST(DateTime, ShownWithoutLeadingZeros) {
    EXPECT_EQ(show({2015, 12, 2, 8, 30, 0}), u"2015-12-2 8:30:00");
    EXPECT_EQ(show({2015, 1, 22, 23, 5, 9}), u"2015-1-22 23:05:09");
    EXPECT_EQ(toIso({2015, 1, 2, 3, 4, 5}), "2015-01-02T03:04:05");
}

TEST(DateTime, ParsesItsForms) {
    const DateTime morning{2015, 12, 2, 8, 30, 0};
    const DateTime midnight{2015, 12, 2, 0, 0, 0};
    EXPECT_EQ(parseDateTime(u"2015-12-2"), midnight);
    EXPECT_EQ(parseDateTime(u"2015-12-02 8:30"), morning);
    EXPECT_EQ(parseDateTime(u"2015-12-2 08:30:00"), morning);
    EXPECT_EQ(parseDateTime(u"12/2/2015"), midnight);
    EXPECT_EQ(parseDateTime(u"12/2/2015 8:30:00"), morning);
    EXPECT_EQ(parseDateTime(u"2015-12-02T08:30:00"), morning);
    EXPECT_EQ(parseDateTime(u"2016-2-29"), (DateTime{2016, 2, 29, 0, 0, 0}));
}

TEST(DateTime, RefusesWhatIsNoDate) {
    for (const char16_t* text :
         {u"", u"2015", u"2015-12", u"15-12-2", u"2015-13-1", u"2015-2-29", u"2015-12-2 ", u"2015-12-2 24:00",
          u"2015-12-2 8:60", u"2015-12-2 8:3", u"2015-12-2 8:30:", u"2015-12-2 8:30:00 x", u"2015-12-2x8:30",
          u"2015/12/2", u"0099-1-1", u"20155-1-1", u"2015-12-2T", u"２０１５-12-2"}) {
        EXPECT_FALSE(parseDateTime(text)) << testing::PrintToString(std::u16string(text));
    }
}

} // namespace
} // namespace kelb::platform
