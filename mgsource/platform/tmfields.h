// The nine calendar fields as the runtime's struct tm, shared by the backends' strftime.
#pragma once

#include <time.h>

#include "mg/datetime.h"

namespace plat {

inline tm ToTm(const CalendarTime& in) {
    tm fields{};
    fields.tm_sec = in.sec;
    fields.tm_min = in.min;
    fields.tm_hour = in.hour;
    fields.tm_mday = in.mday;
    fields.tm_mon = in.mon;
    fields.tm_year = in.year;
    fields.tm_wday = in.wday;
    fields.tm_yday = in.yday;
    fields.tm_isdst = in.isdst;
    return fields;
}

}  // namespace plat
