// Dates and times as text, through the runtime's strftime on the local calendar fields.
#include <string.h>

#include "mg/ansi.h"
#include "mg/datetime.h"
#include "mg/dbgtools.h"
#include "mg/format.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\support\\datetext.cpp", "$Revision: 1 $");

namespace {

constexpr int32_t kTextSize = 128;

const char* const kDateFormats[] = {"%#m/%#d/%y", "%A, %B %#d, %Y", "%a, %b %#d, %Y", "%#m/%#d/%Y"};

void FormatFields(Timestamp stamp, const char* format, char* buffer) {
    CalendarTime fields;
    TimestampToCalendar(&stamp, &fields);
    if (plat::FormatCalendarText(buffer, kTextSize, format, &fields) == 0) buffer[0] = 0;
}

char gDateText[kTextSize];
char gTimeText[kTextSize];
char gDateTimeText[kTextSize];

}  // namespace

extern "C" {

// Another style is a failure; the buffer is left as it is.
char* FormatDate(Timestamp stamp, int32_t style, char* buffer) {
    if (style < 0 || style > 3) {
        MG_FAIL();
        return buffer;
    }
    FormatFields(stamp, kDateFormats[style], buffer);
    return buffer;
}

char* FormatTime(Timestamp stamp, int32_t withSeconds, char* buffer) {
    FormatFields(stamp, withSeconds ? "%#I:%M:%S %p" : "%#I:%M %p", buffer);
    return buffer;
}

// Date, blank and time, cut to the one buffer of 128 bytes.
char* FormatDateTime(Timestamp stamp, char* buffer) {
    char date[kTextSize], time[kTextSize];
    FormatDate(stamp, 2, date);
    FormatTime(stamp, 1, time);
    buffer[StrFormatN(buffer, kTextSize - 1, "%s %s", date, time)] = 0;
    return buffer;
}

char* FormatTimeMs(TimestampMs stamp, char* buffer) {
    char time[kTextSize];
    FormatTime(stamp.seconds, 1, time);
    buffer[StrFormatN(buffer, kTextSize - 1, "%s.%03d", time,
                      static_cast<int>(stamp.milliseconds))] = 0;
    return buffer;
}

const char* DateText(Timestamp stamp, int32_t style) {
    return FormatDate(stamp, PinToRange(style, 0, 2), gDateText);
}

const char* TimeText(Timestamp stamp, int32_t withSeconds) {
    return FormatTime(stamp, withSeconds, gTimeText);
}

const char* DateTimeText(Timestamp stamp) {
    return FormatDateTime(stamp, gDateTimeText);
}

}  // extern "C"
