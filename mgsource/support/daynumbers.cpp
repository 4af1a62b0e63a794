// Calendar arithmetic: valid dates and Julian day numbers, in unsigned 32-bit integers.
#include "mg/datetime.h"

extern "C" {

const int32_t DaysBeforeMonth[13] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
const int32_t DaysInMonth[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

int32_t IsValidDate(int32_t day, int32_t month, int32_t year) {
    if (month < 1 || month > 12 || day < 1) return 0;
    if (day <= DaysInMonth[month]) return 1;
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && day == 29 && leap ? 1 : 0;
}

uint32_t DateToDayNumber(int32_t day, int32_t month, int32_t year) {
    if (year == 0 || month == 0 || month > 12 || day == 0) return 0;
    const uint32_t early = month < 3 ? 1 : 0;
    const uint32_t y = static_cast<uint32_t>(year) + 4800 - early;
    const uint32_t m = early ? static_cast<uint32_t>(month) + 9 : static_cast<uint32_t>(month) - 3;
    return ((y / 100 * 146097) >> 2) + ((y % 100 * 1461) >> 2) + (m * 153 + 2) / 5 +
           static_cast<uint32_t>(day) - 32045;
}

void DayNumberToDate(uint32_t number, int16_t* day, int16_t* month, int16_t* year) {
    if (number == 0) {
        *day = *month = *year = 0;
        return;
    }
    const uint32_t a = 4 * number + 128179;
    const uint32_t c = a / 146097;
    const uint32_t r = (a % 146097 & ~uint32_t{3}) + 3;
    uint32_t y = c * 100 + r / 1461;
    const uint32_t d = ((r % 1461) >> 2) + 1;
    const uint32_t t = 5 * d - 3;
    const uint32_t m = t / 153;
    if (m >= 10) {
        ++y;
        *month = static_cast<int16_t>(m - 9);
    } else {
        *month = static_cast<int16_t>(m + 3);
    }
    *day = static_cast<int16_t>(t % 153 / 5 + 1);
    *year = static_cast<int16_t>(y - 4800);
}

int32_t TimestampDifference(Timestamp a, Timestamp b) {
    return static_cast<int32_t>(a - b);
}

}  // extern "C"
