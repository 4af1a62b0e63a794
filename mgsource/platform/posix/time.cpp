// Time on POSIX hosts. The calendar conversions are plain arithmetic with the range and
// field checks of the Windows calls they stand in for; local time follows the zone's rule at
// the instant converted (localtime_r, mktime).
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "mg/datetime.h"
#include "platform/faults.h"
#include "platform/fieldrange.h"
#include "platform/platform.h"
#include "platform/tmfields.h"

namespace plat {

namespace {

constexpr uint64_t kUnitsPerSecond = 10000000;
constexpr int64_t kSecondsFrom1601To1970 = 11644473600;
constexpr uint64_t kLargestFileTime = 0x7FFFFFFFFFFFFFFFULL;

// Days since 1970-01-01 of a Gregorian date, and back (eras of 400 years).
int64_t DaysFromCivil(int64_t y, int32_t m, int32_t d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int64_t* y, int32_t* m, int32_t* d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    *d = static_cast<int32_t>(doy - (153 * mp + 2) / 5 + 1);
    *m = static_cast<int32_t>(mp < 10 ? mp + 3 : mp - 9);
    *y = yoe + era * 400 + (*m <= 2);
}

const int64_t kDays1601 = DaysFromCivil(1601, 1, 1);

int64_t UnixSeconds(uint64_t fileTime) {
    return static_cast<int64_t>(fileTime / kUnitsPerSecond) - kSecondsFrom1601To1970;
}

}  // namespace

bool SystemTimeNow(uint64_t* fileTime) {
    timespec now;
    if (clock_gettime(CLOCK_REALTIME, &now) != 0) return false;
    const int64_t seconds = static_cast<int64_t>(now.tv_sec) + kSecondsFrom1601To1970;
    if (seconds < 0) return false;
    *fileTime =
        static_cast<uint64_t>(seconds) * kUnitsPerSecond + static_cast<uint64_t>(now.tv_nsec) / 100;
    return true;
}

bool FileTimeToLocal(uint64_t utc, uint64_t* local) {
    if (utc > kLargestFileTime) return false;
    const time_t t = static_cast<time_t>(UnixSeconds(utc));
    tm fields;
    if (localtime_r(&t, &fields) == nullptr) return false;
    const int64_t shifted = static_cast<int64_t>(utc) +
                            static_cast<int64_t>(fields.tm_gmtoff) * int64_t{kUnitsPerSecond};
    if (shifted < 0) return false;
    *local = static_cast<uint64_t>(shifted);
    return true;
}

bool LocalToFileTime(uint64_t local, uint64_t* utc) {
    if (local > kLargestFileTime) return false;
    const int64_t seconds = static_cast<int64_t>(local / kUnitsPerSecond);
    int64_t y;
    int32_t m, d;
    CivilFromDays(kDays1601 + seconds / 86400, &y, &m, &d);
    const int64_t inDay = seconds % 86400;
    tm fields{};
    fields.tm_year = static_cast<int>(y - 1900);
    fields.tm_mon = m - 1;
    fields.tm_mday = d;
    fields.tm_hour = static_cast<int>(inDay / 3600);
    fields.tm_min = static_cast<int>(inDay / 60 % 60);
    fields.tm_sec = static_cast<int>(inDay % 60);
    fields.tm_isdst = -1;
    errno = 0;
    const time_t t = mktime(&fields);
    if (t == static_cast<time_t>(-1) && errno != 0) return false;
    const int64_t since1601 = static_cast<int64_t>(t) + kSecondsFrom1601To1970;
    if (since1601 < 0) return false;
    *utc = static_cast<uint64_t>(since1601) * kUnitsPerSecond + local % kUnitsPerSecond;
    return true;
}

bool FileTimeToFields(uint64_t fileTime, SystemTime* out) {
    if (fileTime > kLargestFileTime) return false;
    const uint64_t ms = fileTime / 10000;
    const uint64_t seconds = ms / 1000;
    const int64_t days = static_cast<int64_t>(seconds / 86400);
    const uint64_t inDay = seconds % 86400;
    int64_t y;
    int32_t m, d;
    CivilFromDays(kDays1601 + days, &y, &m, &d);
    if (y > 30827) return false;
    out->year = static_cast<uint16_t>(y);
    out->month = static_cast<uint16_t>(m);
    out->day = static_cast<uint16_t>(d);
    out->dayOfWeek = static_cast<uint16_t>((days + 1) % 7);  // 1601-01-01 was a Monday
    out->hour = static_cast<uint16_t>(inDay / 3600);
    out->minute = static_cast<uint16_t>(inDay / 60 % 60);
    out->second = static_cast<uint16_t>(inDay % 60);
    out->milliseconds = static_cast<uint16_t>(ms % 1000);
    return true;
}

bool FieldsToFileTime(const SystemTime* in, uint64_t* fileTime) {
    if (!FieldsInRange(*in)) return false;
    const int64_t days = DaysFromCivil(in->year, in->month, in->day) - kDays1601;
    const uint64_t seconds =
        static_cast<uint64_t>(days) * 86400 + in->hour * 3600u + in->minute * 60u + in->second;
    *fileTime = (seconds * 1000 + in->milliseconds) * 10000;
    return true;
}

int32_t TimeZoneState() {
    tzset();
    const time_t now = time(nullptr);
    tm fields;
    if (localtime_r(&now, &fields) != nullptr && fields.tm_isdst > 0) return 2;
    return daylight ? 1 : 0;
}

// The C library here drops a leading zero with "%-"; the "%#" of the format means the same.
int32_t FormatCalendarText(char* buffer, int32_t size, const char* format, const CalendarTime* in) {
    char native[256];
    const size_t length = strlen(format);
    if (size <= 0 || length >= sizeof native) return 0;
    for (size_t i = 0; i <= length; ++i) {
        native[i] = (format[i] == '#' && i > 0 && format[i - 1] == '%') ? '-' : format[i];
    }
    const tm fields = ToTm(*in);
    return static_cast<int32_t>(strftime(buffer, static_cast<size_t>(size), native, &fields));
}

void SetTimeZoneForTest(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

}  // namespace plat
