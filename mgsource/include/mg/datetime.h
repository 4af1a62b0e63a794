// Dates and times: timestamps (seconds since 1904-01-01 00:00:00 UTC), file times, calendar
// fields, Julian day numbers, and dates and times as text.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// A Timestamp and the milliseconds within its second.
typedef struct TimestampMs {
    Timestamp seconds;
    uint16_t milliseconds;
} TimestampMs;

// 100-nanosecond units since 1601-01-01 UTC, as two 32-bit words.
typedef struct FileTimeValue {
    uint32_t low;
    uint32_t high;
} FileTimeValue;

// 100-nanosecond units between 1601 and 1904.
#define FileTimeEpochOffset 95616288000000000ULL

// Calendar fields with the runtime's conventions: mon 0..11, year less 1900, wday 0 for
// Sunday, yday 0..365.
typedef struct CalendarTime {
    int32_t sec, min, hour, mday, mon, year, wday, yday, isdst;
} CalendarTime;

// The same fields counted from 1: mon 1..12, the full year, wday 1..7 (1 is Sunday), yday
// 1..366.
typedef struct DateRecord {
    int32_t sec, min, hour, mday, mon, year, wday, yday, isdst;
} DateRecord;

// Calendar fields as the platform's time calls exchange them: month 1..12, dayOfWeek 0 for
// Sunday.
typedef struct SystemTime {
    uint16_t year, month, dayOfWeek, day, hour, minute, second, milliseconds;
} SystemTime;

extern const int32_t DaysBeforeMonth[13];  // index 1..12
extern const int32_t DaysInMonth[13];      // index 1..12, February 28

// NaN gives 0xFFFFFFFF, a negative number 0, exact halves go to the even neighbour; numbers
// beyond the range give 0xFFFFFFFF.
Timestamp DoubleToTimestamp(double x);

// The present time.
void TimeNowFine(FineTimestamp* now);
Timestamp TimeNow(void);
double TimeNowMs(TimestampMs* now);

// File times. FileTimeToFine subtracts the 1904 offset in place.
void FileTimeToFine(FileTimeValue* fileTime, double* seconds);
void FileTimeToTimestamp(FileTimeValue fileTime, Timestamp* stamp);
void TimestampToFileTime(Timestamp stamp, FileTimeValue* fileTime);

// Local calendar fields of a stamp; nonzero on success, else 1904-01-01 and 0.
int32_t TimestampToSystemTime(Timestamp stamp, SystemTime* fields);
// Local fields to a stamp; 0 for what the platform cannot convert.
void SystemTimeToTimestamp(const SystemTime* fields, Timestamp* stamp);
CalendarTime* TimestampToCalendar(const Timestamp* stamp, CalendarTime* fields);
Timestamp CalendarToTimestamp(const CalendarTime* fields);
DateRecord* TimestampToDateRecord(Timestamp stamp, DateRecord* fields);
Timestamp DateRecordToTimestamp(const DateRecord* fields);

// Gregorian calendar arithmetic.
int32_t IsValidDate(int32_t day, int32_t month, int32_t year);
uint32_t DateToDayNumber(int32_t day, int32_t month, int32_t year);
void DayNumberToDate(uint32_t number, int16_t* day, int16_t* month, int16_t* year);
int32_t TimestampDifference(Timestamp a, Timestamp b);

// Text, at most 128 bytes with the terminator. Date styles: 0 "1/2/04", 1 "Saturday, January
// 2, 1904", 2 "Sat, Jan 2, 1904", 3 "1/2/1904"; another style is a failure report.
char* FormatDate(Timestamp stamp, int32_t style, char* buffer);
char* FormatTime(Timestamp stamp, int32_t withSeconds, char* buffer);
char* FormatDateTime(Timestamp stamp, char* buffer);
char* FormatTimeMs(TimestampMs stamp, char* buffer);
// The same into shared buffers, one for each, valid until the next call of the same one.
const char* DateText(Timestamp stamp, int32_t style);
const char* TimeText(Timestamp stamp, int32_t withSeconds);
const char* DateTimeText(Timestamp stamp);

MG_EXTERN_C_END
