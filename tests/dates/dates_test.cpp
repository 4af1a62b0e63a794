#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>

#include "mg/datetime.h"
#include "platform/faults.h"

namespace {

constexpr Timestamp kUnixEpoch = 2082844800u;  // 1970-01-01 00:00:00 UTC
constexpr Timestamp kLast = 0xFFFFFFFFu;       // 2040-02-06 06:28:15 UTC

Timestamp Stamp(int32_t day, int32_t month, int32_t year, int32_t seconds = 0) {
    return (DateToDayNumber(day, month, year) - DateToDayNumber(1, 1, 1904)) * 86400u +
           static_cast<uint32_t>(seconds);
}

TEST(DayNumbers, KnownDaysAndInvalidInputs) {
    const struct {
        int32_t day, month, year;
        uint32_t number;
    } rows[] = {
        {1, 1, 1904, 2416481}, {1, 1, 2000, 2451545}, {15, 10, 1582, 2299161}, {1, 1, 1, 1721426},
        {0, 1, 2000, 0},       {1, 0, 2000, 0},       {1, 13, 2000, 0},        {1, 1, 0, 0},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(DateToDayNumber(r.day, r.month, r.year), r.number)
            << r.day << "/" << r.month << "/" << r.year;
    }
    int16_t d = 9, m = 9, y = 9;
    DayNumberToDate(0, &d, &m, &y);
    EXPECT_EQ(d | m | y, 0);
}

TEST(DayNumbers, InvertEachOtherFromYearOne) {
    const uint32_t first = DateToDayNumber(1, 1, 1);
    const uint32_t last = DateToDayNumber(31, 12, 9999);
    int16_t pd = 31, pm = 12, py = 0;
    for (uint32_t n = first; n <= last; ++n) {
        int16_t d, m, y;
        DayNumberToDate(n, &d, &m, &y);
        // Each number is the day after the one before it, and a valid date.
        const bool next =
            (d == pd + 1 && m == pm && y == py) ||
            (d == 1 && ((m == pm + 1 && y == py) || (m == 1 && pm == 12 && y == py + 1)));
        ASSERT_TRUE(next && IsValidDate(d, m, y)) << n;
        ASSERT_EQ(DateToDayNumber(d, m, y), n);
        pd = d, pm = m, py = y;
    }
}

TEST(DayNumbers, ValidDates) {
    const struct {
        int32_t day, month, year, valid;
    } rows[] = {
        {29, 2, 1900, 0}, {29, 2, 2000, 1},  {29, 2, 2004, 1}, {29, 2, 2003, 0}, {28, 2, 1900, 1},
        {31, 4, 2020, 0}, {31, 12, 2020, 1}, {0, 1, 2020, 0},  {1, 0, 2020, 0},  {1, 13, 2020, 0},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(IsValidDate(r.day, r.month, r.year), r.valid)
            << r.day << "/" << r.month << "/" << r.year;
    }
}

TEST(Conversions, DoubleToTimestampRoundsHalvesToEven) {
    const struct {
        double in;
        Timestamp out;
    } rows[] = {
        {NAN, kLast},
        {-0.1, 0},
        {0.49, 0},
        {0.5, 0},
        {1.5, 2},
        {2.5, 2},
        {2.51, 3},
        {3.5, 4},
        {4294967294.5, 4294967294u},
        {4294967295.0, kLast},
        {1e20, kLast},
    };
    for (const auto& r : rows) EXPECT_EQ(DoubleToTimestamp(r.in), r.out) << r.in;
}

TEST(Conversions, FileTimes) {
    FileTimeValue ft;
    TimestampToFileTime(0, &ft);
    EXPECT_EQ((uint64_t{ft.high} << 32) | ft.low, FileTimeEpochOffset);
    TimestampToFileTime(kLast, &ft);
    Timestamp back = 0;
    FileTimeToTimestamp(ft, &back);
    EXPECT_EQ(back, kLast);

    // Sub-second digits stay in the fine form; halves of a second go to the even stamp.
    const uint64_t units = FileTimeEpochOffset + 12345678901ull;
    FileTimeValue fine{static_cast<uint32_t>(units), static_cast<uint32_t>(units >> 32)};
    double seconds = 0;
    FileTimeToFine(&fine, &seconds);
    EXPECT_DOUBLE_EQ(seconds, 1234.5678901);
    EXPECT_EQ((uint64_t{fine.high} << 32) | fine.low, 12345678901ull);  // changed in place
    for (const auto& [halves, rounded] :
         {std::pair{5u, 2u}, std::pair{6u, 3u}, std::pair{7u, 4u}}) {
        const uint64_t u = FileTimeEpochOffset + halves * 5000000ull;
        FileTimeToTimestamp(FileTimeValue{static_cast<uint32_t>(u), static_cast<uint32_t>(u >> 32)},
                            &back);
        EXPECT_EQ(back, rounded) << halves;
    }
}

TEST(Conversions, PresentTimeFollowsTheSystemClock) {
    const auto unix = std::chrono::duration_cast<std::chrono::seconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
    const Timestamp now = TimeNow();
    EXPECT_LE(std::llabs(static_cast<long long>(now) - (unix + kUnixEpoch)), 2);
    TimestampMs ms;
    const double fine = TimeNowMs(&ms);
    EXPECT_EQ(ms.seconds, static_cast<Timestamp>(fine));
    EXPECT_LE(ms.milliseconds, 1000);
    EXPECT_EQ(TimestampDifference(1, 3), -2);
    EXPECT_EQ(TimestampDifference(0, kLast), 1);
}

// Every local conversion runs in a zone without daylight saving time and in two with it.
struct Zone {
    const char* tz;
    int32_t winter, summer;  // hours the clock is ahead of UTC
};

class LocalTime : public ::testing::TestWithParam<Zone> {
  protected:
    void SetUp() override { plat::SetTimeZoneForTest(GetParam().tz); }
    void TearDown() override { plat::SetTimeZoneForTest("UTC0"); }
};

TEST_P(LocalTime, FieldsFollowTheZoneRuleOfTheDay) {
    const struct {
        Timestamp stamp;
        bool summer;
    } rows[] = {{Stamp(1, 1, 2020, 12 * 3600), false}, {Stamp(1, 7, 2020, 12 * 3600), true}};
    for (const auto& r : rows) {
        DateRecord d;
        TimestampToDateRecord(r.stamp, &d);
        EXPECT_EQ(d.hour, 12 + (r.summer ? GetParam().summer : GetParam().winter)) << r.stamp;
        EXPECT_EQ(d.mday, 1);
        EXPECT_EQ(d.year, 2020);
        EXPECT_EQ(d.wday, 4);  // both were Wednesdays, counting Sunday as 1
    }
}

TEST_P(LocalTime, RecordsRoundTripAcrossTheRange) {
    const Timestamp stamps[] = {0,
                                1,
                                86399,
                                Stamp(29, 2, 1904, 43200),
                                Stamp(1, 3, 2000, 3600 * 10),
                                Stamp(31, 12, 1999, 86399),
                                Stamp(1, 7, 2030, 12345),
                                kLast - 86400,
                                kLast};
    for (const Timestamp s : stamps) {
        DateRecord d;
        TimestampToDateRecord(s, &d);
        EXPECT_EQ(DateRecordToTimestamp(&d), s) << s;
        CalendarTime c;
        TimestampToCalendar(&s, &c);
        EXPECT_EQ(CalendarToTimestamp(&c), s) << s;
        EXPECT_EQ(c.mon + 1, d.mon);
        EXPECT_EQ(c.yday + 1, d.yday);
    }
}

TEST_P(LocalTime, DaysOfTheYear) {
    const struct {
        int32_t day, month, year, yday;
    } rows[] = {{1, 1, 1904, 0},
                {1, 3, 2000, 60},
                {1, 3, 2001, 59},
                {31, 12, 2000, 365},
                {31, 12, 2001, 364}};
    for (const auto& r : rows) {
        DateRecord in{0, 0, 12, r.day, r.month, r.year, 0, 0, 0};
        CalendarTime c;
        const Timestamp s = DateRecordToTimestamp(&in);
        TimestampToCalendar(&s, &c);
        EXPECT_EQ(c.yday, r.yday) << r.day << "/" << r.month << "/" << r.year;
    }
}

TEST_P(LocalTime, DaysBeyondTheMonthRollOverAndBadFieldsGiveZero) {
    DateRecord may1{0, 0, 12, 1, 5, 2020, 0, 0, 0};
    DateRecord apr31{0, 0, 12, 31, 4, 2020, 0, 0, 0};
    EXPECT_EQ(DateRecordToTimestamp(&apr31), DateRecordToTimestamp(&may1));
    DateRecord feb30{0, 0, 12, 30, 2, 2001, 0, 0, 0};
    DateRecord mar2{0, 0, 12, 2, 3, 2001, 0, 0, 0};
    EXPECT_EQ(DateRecordToTimestamp(&feb30), DateRecordToTimestamp(&mar2));
    const DateRecord bad[] = {{0, 0, 24, 1, 1, 2020, 0, 0, 0},  // hour 24
                              {60, 0, 0, 1, 1, 2020, 0, 0, 0},  // second 60
                              {0, 0, 0, 0, 1, 2020, 0, 0, 0},   // day 0: day number 0
                              {0, 0, 0, 1, 1, 1500, 0, 0, 0}};  // before file times begin
    for (const DateRecord& r : bad) EXPECT_EQ(DateRecordToTimestamp(&r), 0u) << r.hour;
}

INSTANTIATE_TEST_SUITE_P(Zones, LocalTime,
                         ::testing::Values(Zone{"UTC0", 0, 0},
                                           Zone{"CET-1CEST,M3.5.0,M10.5.0/3", 1, 2},
                                           Zone{"EST5EDT,M3.2.0,M11.1.0", -5, -4}));

class Text : public ::testing::Test {
  protected:
    void SetUp() override { plat::SetTimeZoneForTest("UTC0"); }
};

TEST_F(Text, DateStyles) {
    const Timestamp s = Stamp(9, 3, 2005, 15 * 3600 + 4 * 60 + 5);
    const struct {
        int32_t style;
        const char* stamp0;
        const char* march;
    } rows[] = {
        {0, "1/1/04", "3/9/05"},
        {1, "Friday, January 1, 1904", "Wednesday, March 9, 2005"},
        {2, "Fri, Jan 1, 1904", "Wed, Mar 9, 2005"},
        {3, "1/1/1904", "3/9/2005"},
    };
    for (const auto& r : rows) {
        char buffer[128];
        EXPECT_STREQ(FormatDate(0, r.style, buffer), r.stamp0);
        EXPECT_STREQ(FormatDate(s, r.style, buffer), r.march);
    }
    EXPECT_STREQ(DateText(0, 5), "Fri, Jan 1, 1904");  // pinned to style 2
    EXPECT_STREQ(DateText(0, -1), "1/1/04");
    EXPECT_STREQ(DateText(0, 3), "Fri, Jan 1, 1904");
}

TEST_F(Text, TimeStyles) {
    const Timestamp s = Stamp(9, 3, 2005, 15 * 3600 + 4 * 60 + 5);
    EXPECT_STREQ(TimeText(0, 1), "12:00:00 AM");
    EXPECT_STREQ(TimeText(0, 0), "12:00 AM");
    EXPECT_STREQ(TimeText(s, 1), "3:04:05 PM");
    EXPECT_STREQ(TimeText(s, 0), "3:04 PM");
    EXPECT_STREQ(DateTimeText(s), "Wed, Mar 9, 2005 3:04:05 PM");
    char buffer[128];
    EXPECT_STREQ(FormatTimeMs(TimestampMs{s, 7}, buffer), "3:04:05 PM.007");
    EXPECT_STREQ(FormatDateTime(kLast, buffer), "Mon, Feb 6, 2040 6:28:15 AM");
}

TEST_F(Text, UnknownStyleIsAFailure) {
    char buffer[128] = "kept";
    EXPECT_EXIT(FormatDate(0, 4, buffer), ::testing::ExitedWithCode(1), "^Failure : \"datetext");
    EXPECT_EXIT(FormatDate(0, -1, buffer), ::testing::ExitedWithCode(1), "^Failure ");
}

}  // namespace
