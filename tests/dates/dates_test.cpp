#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>

#include "mg/datetime.h"
#include "platform/faults.h"
#include "platform/platform.h"
#include "support/host_rules.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

constexpr Timestamp kUnixEpoch = 2082844800u;  // 1970-01-01 00:00:00 UTC
constexpr Timestamp kLast = 0xFFFFFFFFu;       // 2040-02-06 06:28:15 UTC

Timestamp Stamp(int32_t day, int32_t month, int32_t year, int32_t seconds = 0) {
    return (DateToDayNumber(day, month, year) - 2416481u) * 86400u + uint32_t(seconds);
}

// Every number from 1 January of year 1 on is the day after the one before, and back. Dates
// that don't exist give 0 or what the formula makes of them; year 0 passes.
TEST(Calendar, DayNumbersAndValidDates) {
    // clang-format off
    const struct { int32_t day, month, year; uint32_t number; int32_t valid; } rows[] = {
        {1, 1, 1904, 2416481, 1}, {15, 10, 1582, 2299161, 1}, {29, 2, 1900, 2415080, 0},
        {29, 2, 2003, 2452700, 0}, {31, 4, 2020, 2458971, 0}, {0, 1, 2000, 0, 0},
        {1, 0, 2000, 0, 0}, {1, 13, 2000, 0, 0}, {1, 1, 0, 0, 1}};
    // clang-format on
    for (const auto& r : rows) {
        EXPECT_EQ(DateToDayNumber(r.day, r.month, r.year), r.number) << r.day << "/" << r.month;
        EXPECT_EQ(IsValidDate(r.day, r.month, r.year), r.valid) << r.day << "/" << r.month;
    }
    int16_t pd = 31, pm = 12, py = 0;
    for (uint32_t n = 1721426; n <= DateToDayNumber(31, 12, 9999); ++n) {
        int16_t d, m, y;
        DayNumberToDate(n, &d, &m, &y);
        const bool next = (d == pd + 1 && m == pm && y == py) ||
                          (d == 1 && (m == pm + 1 ? y == py : m == 1 && pm == 12 && y == py + 1));
        ASSERT_TRUE(next && IsValidDate(d, m, y) && DateToDayNumber(d, m, y) == n) << n;
        ASSERT_EQ(IsValidDate(pd + 1, pm, py), d != 1) << n;  // the month's length
        pd = d, pm = m, py = y;
    }
    int16_t d = 9, m = 9, y = 9;
    ExpectRows({Row((DayNumberToDate(0, &d, &m, &y), d | m | y), 0),
                Row(TimestampDifference(0, kLast), 1)});
}

// Seconds round ties to even; NaN and too large give the last stamp. File times keep their
// sub-second digits (and are changed in place). The clock is the system's.
TEST(Conversions, SecondsAndFileTimes) {
    FileTimeValue ft;
    Timestamp back = 0;
    const uint64_t units = FileTimeEpochOffset + 12345678901ull;
    FileTimeValue fine{uint32_t(units), uint32_t(units >> 32)};
    double seconds = 0;
    const long long unix = std::chrono::duration_cast<std::chrono::seconds>(
                               std::chrono::system_clock::now().time_since_epoch())
                               .count();
    TimestampMs ms;
    const double now = TimeNowMs(&ms);
    ExpectRows({Row(DoubleToTimestamp(NAN), kLast), Row(DoubleToTimestamp(-0.1), 0),
                Row(DoubleToTimestamp(0.5), 0), Row(DoubleToTimestamp(1.5), 2),
                Row(DoubleToTimestamp(2.5), 2), Row(DoubleToTimestamp(2.51), 3),
                Row(DoubleToTimestamp(4294967294.5), 4294967294u),
                Row(DoubleToTimestamp(1e20), kLast),
                Row((TimestampToFileTime(kLast, &ft), FileTimeToTimestamp(ft, &back), back), kLast),
                Row((FileTimeToFine(&fine, &seconds), std::fabs(seconds - 1234.5678901) < 1e-9), 1),
                Row((uint64_t{fine.high} << 32) | fine.low, 12345678901),
                Row(std::llabs(static_cast<long long>(TimeNow()) - (unix + kUnixEpoch)) <= 2, 1),
                Row(ms.seconds, static_cast<Timestamp>(now)), Row(ms.milliseconds <= 1000, 1)});
}

// The platform's calendar fields, with the range checks of the system calls they stand for.
TEST(Conversions, PlatformFields) {
    // clang-format off
    const struct { SystemTime fields; bool valid; } rows[] = {
        {{2000, 2, 0, 29, 23, 59, 59, 999}, true}, {{1601, 1, 0, 1, 0, 0, 0, 0}, true},
        {{1900, 2, 0, 29, 0, 0, 0, 0}, false}, {{2001, 8, 0, 32, 0, 0, 0, 0}, false},
        {{2001, 13, 0, 1, 0, 0, 0, 0}, false}, {{1600, 12, 0, 31, 0, 0, 0, 0}, false},
        {{2001, 1, 0, 1, 24, 0, 0, 0}, false}, {{2001, 1, 0, 1, 0, 0, 0, 1000}, false},
        {{30827, 12, 0, 31, 23, 59, 59, 999}, true}, {{30828, 1, 0, 1, 0, 0, 0, 0}, false}};
    // clang-format on
    for (const auto& r : rows) {
        uint64_t ft = 0;
        SystemTime back{};
        ASSERT_EQ(plat::FieldsToFileTime(&r.fields, &ft), r.valid) << r.fields.year;
        // The fields come back, with the day of the week filled in.
        EXPECT_TRUE(!r.valid || (plat::FileTimeToFields(ft, &back) && (back.dayOfWeek = 0, true) &&
                                 memcmp(&back, &r.fields, sizeof back) == 0))
            << r.fields.year;
    }
    SystemTime f;  // 1 January 1904 was a Friday
    EXPECT_TRUE(plat::FileTimeToFields(FileTimeEpochOffset, &f) && f.dayOfWeek == 5);
}

// The local conversions run in a zone without daylight saving time and in two with it.
struct Zone {
    const char* tz;
    int32_t winter, summer;  // hours the clock is ahead of UTC
};

class LocalTime : public ::testing::TestWithParam<Zone> {
  protected:
    void SetUp() override { plat::SetTimeZoneForTest(GetParam().tz); }
    void TearDown() override { plat::SetTimeZoneForTest("UTC0"); }
};

// Records and calendar fields take the zone's offset by the host's rule and convert back to
// the same stamp across the range; days beyond the month roll over; bad fields give 0.
TEST_P(LocalTime, RecordsRoundTripWithTheZoneOffset) {
    for (const bool summer : {false, true}) {
        DateRecord d;
        TimestampToDateRecord(Stamp(1, summer ? 7 : 1, 2020, 12 * 3600), &d);
        EXPECT_EQ(d.hour, 12 + (SummerOffsetFor(summer) ? GetParam().summer : GetParam().winter))
            << summer;
        EXPECT_EQ(d.wday, 4);  // both Wednesdays, counting Sunday as 1
    }
    // The stamp and its day of the year (-1: not checked).
    // clang-format off
    const struct { Timestamp stamp; int32_t yday; } rows[] = {
        {0, -1}, {86399, -1}, {Stamp(29, 2, 1904, 43200), 59}, {Stamp(1, 3, 2000, 43200), 60},
        {Stamp(1, 3, 2001, 43200), 59}, {Stamp(31, 12, 2000, 43200), 365}, {kLast - 86400, -1},
        {kLast, -1}};
    // clang-format on
    for (const auto& r : rows) {
        DateRecord d;
        CalendarTime c;
        TimestampToDateRecord(r.stamp, &d);
        EXPECT_TRUE(DateRecordToTimestamp(&d) == r.stamp &&
                    TimestampToCalendar(&r.stamp, &c) == &c && CalendarToTimestamp(&c) == r.stamp &&
                    (r.yday < 0 || c.yday == r.yday))
            << r.stamp;
    }
    const DateRecord apr31{0, 0, 12, 31, 4, 2020, 0, 0, 0}, may1{0, 0, 12, 1, 5, 2020, 0, 0, 0};
    EXPECT_EQ(DateRecordToTimestamp(&apr31), DateRecordToTimestamp(&may1));
    // Hour 24, second 60, day 0 (day number 0), and before file times begin.
    // clang-format off
    const DateRecord bad[] = {{0, 0, 24, 1, 1, 2020, 0, 0, 0}, {60, 0, 0, 1, 1, 2020, 0, 0, 0},
                              {0, 0, 0, 0, 1, 2020, 0, 0, 0}, {0, 0, 0, 1, 1, 1500, 0, 0, 0}};
    // clang-format on
    for (const DateRecord& r : bad) EXPECT_EQ(DateRecordToTimestamp(&r), 0u) << r.hour;
}

INSTANTIATE_TEST_SUITE_P(Zones, LocalTime,
                         ::testing::Values(Zone{"UTC0", 0, 0},
                                           Zone{"CET-1CEST,M3.5.0,M10.5.0/3", 1, 2},
                                           Zone{"EST5EDT,M3.2.0,M11.1.0", -5, -4}));

// isdst tells how the clock stands now, whatever the stamp: it agrees with the offset that
// the present instant's fields show. A summer that lasts the year is in force now wherever the
// zone's own rule applies.
TEST(LocalTimeNow, DaylightFlag) {
    const Timestamp s = 0;
    CalendarTime c;
    for (const Zone& zone : {Zone{"UTC0", 0, 0}, Zone{"AAA-1BBB,J1/0,J365/25", 1, 2}}) {
        plat::SetTimeZoneForTest(zone.tz);
        const Timestamp now = TimeNow();
        DateRecord fields;
        TimestampToDateRecord(now, &fields);
        const int32_t offset = (fields.hour - int32_t(now % 86400 / 3600) + 24) % 24;
        const bool summerNow = zone.summer != zone.winter && offset == zone.summer;
        EXPECT_EQ(TimestampToCalendar(&s, &c)->isdst, summerNow ? 1 : 0) << zone.tz;
        EXPECT_EQ(offset, summerNow ? zone.summer : zone.winter) << zone.tz;
        EXPECT_TRUE(summerNow || zone.summer == zone.winter || !ZoneTextRuleApplies()) << zone.tz;
    }
    plat::SetTimeZoneForTest("UTC0");
}

// The four date styles; DateText pins its style to 0..2; FormatDate reports style 4.
TEST(Text, DateAndTimeStyles) {
    plat::SetTimeZoneForTest("UTC0");
    const Timestamp s = Stamp(9, 3, 2005, 15 * 3600 + 4 * 60 + 5);
    char b[128];
    ExpectRows({Row(FormatDate(0, 0, b), "1/1/04"), Row(FormatDate(s, 0, b), "3/9/05"),
                Row(FormatDate(0, 1, b), "Friday, January 1, 1904"),
                Row(FormatDate(s, 1, b), "Wednesday, March 9, 2005"),
                Row(FormatDate(0, 2, b), "Fri, Jan 1, 1904"),
                Row(FormatDate(s, 2, b), "Wed, Mar 9, 2005"), Row(FormatDate(0, 3, b), "1/1/1904"),
                Row(FormatDate(s, 3, b), "3/9/2005"), Row(DateText(0, 5), "Fri, Jan 1, 1904"),
                Row(DateText(0, -1), "1/1/04"), Row(TimeText(0, 1), "12:00:00 AM"),
                Row(TimeText(s, 0), "3:04 PM"), Row(DateTimeText(s), "Wed, Mar 9, 2005 3:04:05 PM"),
                Row(FormatTimeMs(TimestampMs{s, 7}, b), "3:04:05 PM.007"),
                Row(FormatDateTime(kLast, b), "Mon, Feb 6, 2040 6:28:15 AM")});
    EXPECT_EXIT(FormatDate(0, 4, b), ::testing::ExitedWithCode(1), "^Failure : \"datetext");
}

}  // namespace
