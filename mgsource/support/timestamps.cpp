// Timestamps, file times and local calendar fields. A stamp counts seconds since 1904-01-01
// 00:00:00 UTC; the platform supplies the clock and the local zone.
#include <math.h>

#include "mg/datetime.h"
#include "platform/platform.h"

namespace {

constexpr double kUnitsPerSecond = 10000000.0;

uint64_t Combine(FileTimeValue v) {
    return (static_cast<uint64_t>(v.high) << 32) | v.low;
}

FileTimeValue Split(uint64_t v) {
    return FileTimeValue{static_cast<uint32_t>(v), static_cast<uint32_t>(v >> 32)};
}

bool IsLeapYear(int32_t y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

}  // namespace

extern "C" {

Timestamp DoubleToTimestamp(double x) {
    if (isnan(x)) return 0xFFFFFFFFu;
    if (x < 0) return 0;
    if (x >= 4294967295.5) return 0xFFFFFFFFu;
    Timestamp t = static_cast<Timestamp>(x + 0.5);
    if (static_cast<double>(t) - x == 0.5) t &= ~Timestamp{1};
    return t;
}

void TimeNowFine(FineTimestamp* now) {
    uint64_t fileTime = 0;
    plat::SystemTimeNow(&fileTime);
    FileTimeValue v = Split(fileTime);
    FileTimeToFine(&v, now);
}

Timestamp TimeNow(void) {
    FineTimestamp now;
    TimeNowFine(&now);
    return DoubleToTimestamp(now);
}

double TimeNowMs(TimestampMs* now) {
    FineTimestamp fine;
    TimeNowFine(&fine);
    now->seconds = fine < 4294967296.0 ? static_cast<Timestamp>(fine) : 0xFFFFFFFFu;
    now->milliseconds = static_cast<uint16_t>(
        DoubleToTimestamp(1000.0 * (fine - static_cast<double>(now->seconds))));
    return fine;
}

// Both words are read as unsigned, so a time before 1904 wraps to a large count.
void FileTimeToFine(FileTimeValue* fileTime, double* seconds) {
    *fileTime = Split(Combine(*fileTime) - FileTimeEpochOffset);
    *seconds = fileTime->high * 429.4967296 + fileTime->low / kUnitsPerSecond;
}

void FileTimeToTimestamp(FileTimeValue fileTime, Timestamp* stamp) {
    double seconds;
    FileTimeToFine(&fileTime, &seconds);
    *stamp = DoubleToTimestamp(seconds);
}

void TimestampToFileTime(Timestamp stamp, FileTimeValue* fileTime) {
    *fileTime = Split(uint64_t{stamp} * 10000000 + FileTimeEpochOffset);
}

int32_t TimestampToSystemTime(Timestamp stamp, SystemTime* fields) {
    const uint64_t utc = uint64_t{stamp} * 10000000 + FileTimeEpochOffset;
    uint64_t local;
    if (plat::FileTimeToLocal(utc, &local) && plat::FileTimeToFields(local, fields)) return 1;
    *fields = SystemTime{1904, 1, 5, 1, 0, 0, 0, 0};
    return 0;
}

// A date the calendar denies is first carried through its day number, so that a day past the
// month's end rolls into the next month.
void SystemTimeToTimestamp(const SystemTime* fields, Timestamp* stamp) {
    SystemTime normal = *fields;
    if (!IsValidDate(normal.day, normal.month, normal.year)) {
        int16_t day, month, year;
        DayNumberToDate(DateToDayNumber(normal.day, normal.month, normal.year), &day, &month,
                        &year);
        normal.day = static_cast<uint16_t>(day);
        normal.month = static_cast<uint16_t>(month);
        normal.year = static_cast<uint16_t>(year);
    }
    uint64_t local, utc;
    if (!plat::FieldsToFileTime(&normal, &local) || !plat::LocalToFileTime(local, &utc)) {
        *stamp = 0;
        return;
    }
    FileTimeToTimestamp(Split(utc), stamp);
}

// isdst tells how the clock stands now, not how it stood at the stamp.
CalendarTime* TimestampToCalendar(const Timestamp* stamp, CalendarTime* out) {
    SystemTime f;
    TimestampToSystemTime(*stamp, &f);
    out->sec = f.second;
    out->min = f.minute;
    out->hour = f.hour;
    out->mday = f.day;
    out->mon = f.month - 1;
    out->year = f.year - 1900;
    out->wday = f.dayOfWeek;
    const int32_t month = f.month >= 1 && f.month <= 12 ? f.month : 1;
    out->yday = f.day + DaysBeforeMonth[month] - 1 + (month > 2 && IsLeapYear(f.year) ? 1 : 0);
    out->isdst = plat::TimeZoneState() == 2 ? 1 : 0;
    return out;
}

// yday and isdst are not looked at.
Timestamp CalendarToTimestamp(const CalendarTime* in) {
    SystemTime f;
    f.second = static_cast<uint16_t>(in->sec);
    f.minute = static_cast<uint16_t>(in->min);
    f.hour = static_cast<uint16_t>(in->hour);
    f.day = static_cast<uint16_t>(in->mday);
    f.dayOfWeek = static_cast<uint16_t>(in->wday);
    f.month = static_cast<uint16_t>(in->mon + 1);
    f.year = static_cast<uint16_t>(in->year + 1900);
    f.milliseconds = 0;
    Timestamp stamp;
    SystemTimeToTimestamp(&f, &stamp);
    return stamp;
}

DateRecord* TimestampToDateRecord(Timestamp stamp, DateRecord* out) {
    CalendarTime c;
    TimestampToCalendar(&stamp, &c);
    *out = DateRecord{c.sec,         c.min,      c.hour,     c.mday, c.mon + 1,
                      c.year + 1900, c.wday + 1, c.yday + 1, c.isdst};
    return out;
}

Timestamp DateRecordToTimestamp(const DateRecord* in) {
    const CalendarTime c{in->sec,         in->min,      in->hour,     in->mday, in->mon - 1,
                         in->year - 1900, in->wday - 1, in->yday - 1, in->isdst};
    return CalendarToTimestamp(&c);
}

}  // extern "C"
