// Time on Windows hosts: the system's own calls. Local time uses the bias in force now, as
// FileTimeToLocalFileTime and LocalFileTimeToFileTime do.
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <windows.h>

#include "mg/datetime.h"
#include "platform/faults.h"
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
    const FILETIME in = ToFileTime(utc);
    FILETIME out;
    if (!FileTimeToLocalFileTime(&in, &out)) return false;
    *local = FromFileTime(out);
    return true;
}

bool LocalToFileTime(uint64_t local, uint64_t* utc) {
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

bool FieldsToFileTime(const SystemTime* fields, uint64_t* fileTime) {
    SYSTEMTIME in;
    memcpy(&in, fields, sizeof in);
    FILETIME out;
    if (!SystemTimeToFileTime(&in, &out)) return false;
    *fileTime = FromFileTime(out);
    return true;
}

int32_t TimeZoneState() {
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
}

}  // namespace plat
