// Time on Windows hosts: the system's own calls. Local time uses the bias in force now, as
// FileTimeToLocalFileTime and LocalFileTimeToFileTime do, for every instant converted.
//
// A zone set by SetTimeZoneForTest stands in for the system's, which a process can't change
// for itself alone: the runtime reads the TZ text (its name, offset and daylight name; the
// daylight rule is the runtime's own), and the conversions then apply that zone's bias in
// force now, exactly as the system's calls apply the system zone's.
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <windows.h>

#include "mg/datetime.h"
#include "platform/faults.h"
#include "platform/fieldrange.h"
#include "platform/platform.h"
#include "platform/tmfields.h"

namespace plat {

namespace {

static_assert(sizeof(SystemTime) == sizeof(SYSTEMTIME));

FILETIME ToFileTime(uint64_t value) {
    FILETIME ft;
    ft.dwLowDateTime = static_cast<DWORD>(value);
    ft.dwHighDateTime = static_cast<DWORD>(value >> 32);
    return ft;
}

uint64_t FromFileTime(const FILETIME& ft) {
    return (static_cast<uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime;
}

constexpr int64_t kUnitsPerSecond = 10000000;

bool gTestZoneSet = false;

bool TestZoneDaylightNow() {
    const time_t now = time(nullptr);
    const tm* fields = localtime(&now);
    return fields != nullptr && fields->tm_isdst > 0;
}

// The test zone's bias in force now: the seconds to add to the local clock for UTC.
int64_t TestZoneBiasNow() {
    return static_cast<int64_t>(_timezone) + (TestZoneDaylightNow() ? _dstbias : 0);
}

// `value` moved by `seconds`, false when the result leaves the file times.
bool Shift(uint64_t value, int64_t seconds, uint64_t* out) {
    if (value > 0x7FFFFFFFFFFFFFFFULL) return false;
    const int64_t shifted = static_cast<int64_t>(value) + seconds * kUnitsPerSecond;
    if (shifted < 0) return false;
    *out = static_cast<uint64_t>(shifted);
    return true;
}

}  // namespace

bool SystemTimeNow(uint64_t* fileTime) {
    SYSTEMTIME now;
    GetSystemTime(&now);
    FILETIME ft;
    if (!SystemTimeToFileTime(&now, &ft)) return false;
    *fileTime = FromFileTime(ft);
    return true;
}

bool FileTimeToLocal(uint64_t utc, uint64_t* local) {
    if (gTestZoneSet) return Shift(utc, -TestZoneBiasNow(), local);
    const FILETIME in = ToFileTime(utc);
    FILETIME out;
    if (!FileTimeToLocalFileTime(&in, &out)) return false;
    *local = FromFileTime(out);
    return true;
}

bool LocalToFileTime(uint64_t local, uint64_t* utc) {
    if (gTestZoneSet) return Shift(local, TestZoneBiasNow(), utc);
    const FILETIME in = ToFileTime(local);
    FILETIME out;
    if (!LocalFileTimeToFileTime(&in, &out)) return false;
    *utc = FromFileTime(out);
    return true;
}

bool FileTimeToFields(uint64_t fileTime, SystemTime* fields) {
    const FILETIME in = ToFileTime(fileTime);
    SYSTEMTIME out;
    if (!FileTimeToSystemTime(&in, &out)) return false;
    memcpy(fields, &out, sizeof out);
    return true;
}

// The fields are checked before the system's call: not every host's call refuses a day
// that the Gregorian calendar lacks (29 February 1900) or a year past 30827.
bool FieldsToFileTime(const SystemTime* fields, uint64_t* fileTime) {
    if (!FieldsInRange(*fields)) return false;
    SYSTEMTIME in;
    memcpy(&in, fields, sizeof in);
    FILETIME out;
    if (!SystemTimeToFileTime(&in, &out)) return false;
    *fileTime = FromFileTime(out);
    return true;
}

int32_t TimeZoneState() {
    if (gTestZoneSet) return TestZoneDaylightNow() ? 2 : _daylight ? 1 : 0;
    TIME_ZONE_INFORMATION info;
    return static_cast<int32_t>(GetTimeZoneInformation(&info));
}

// The runtime's strftime knows "%#" itself.
int32_t FormatCalendarText(char* buffer, int32_t size, const char* format, const CalendarTime* in) {
    if (size <= 0) return 0;
    const tm fields = ToTm(*in);
    return static_cast<int32_t>(strftime(buffer, static_cast<size_t>(size), format, &fields));
}

void SetTimeZoneForTest(const char* zone) {
    char setting[128] = "TZ=";
    strncat(setting, zone, sizeof setting - 4);
    _putenv(setting);
    _tzset();
    gTestZoneSet = true;
}

}  // namespace plat
