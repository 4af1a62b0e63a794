// Helpers of the format suite: one call that formats both ways (counting and writing) and
// checks that the two agree.
#pragma once

#include <gtest/gtest.h>
#include <stdarg.h>

#include <string>

#include "mg/format.h"

namespace formattest {

// The text of a format, from a bounded call into a large buffer; the counting call with a
// null destination must give the same length.
inline std::string Format(const char* format, ...) {
    va_list args, copy;
    va_start(args, format);
    va_copy(copy, args);
    int32_t length = static_cast<int32_t>(strlen(format));
    char buffer[2048];
    int32_t written = StrFormatV(buffer, sizeof buffer, format, length, args);
    int32_t counted = StrFormatV(nullptr, 0, format, length, copy);
    va_end(copy);
    va_end(args);
    EXPECT_EQ(written, counted) << "format " << format;
    return std::string(buffer, static_cast<size_t>(written));
}

}  // namespace formattest
