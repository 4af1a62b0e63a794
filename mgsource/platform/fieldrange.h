// The range checks of the system's calendar-field conversion, which both backends apply
// before turning fields into a file time, so that a date such as 29 February 1900 is refused
// whatever the host's own call would make of it.
#pragma once

#include "mg/datetime.h"

namespace plat {

inline bool IsLeapYear(int64_t year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

inline int32_t DaysOfMonth(int64_t year, int32_t month) {
    static const int32_t days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : days[month - 1];
}

// Years 1601 to 30827; the day of the week is not looked at.
inline bool FieldsInRange(const SystemTime& f) {
    return f.year >= 1601 && f.year <= 30827 && f.month >= 1 && f.month <= 12 && f.day >= 1 &&
           f.day <= DaysOfMonth(f.year, f.month) && f.hour <= 23 && f.minute <= 59 &&
           f.second <= 59 && f.milliseconds <= 999;
}

}  // namespace plat
