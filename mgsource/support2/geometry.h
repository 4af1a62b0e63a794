// Shared helpers of the point and rectangle files.
#pragma once

#include <stdint.h>

namespace geom {

// Wraps a value to the 16-bit fields, as the machine's 16-bit arithmetic does.
inline int16_t Wrap16(int64_t v) {
    return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint64_t>(v)));
}
inline int32_t Wrap32(int64_t v) {
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(v)));
}

}  // namespace geom
