// A PStr built from a std::string, for readable tables; texts over 255 bytes are cut.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace mgtest {

struct P {
    uint8_t b[256];
    explicit P(const std::string& s) {
        b[0] = static_cast<uint8_t>(std::min<size_t>(s.size(), 255));
        memcpy(b + 1, s.data(), b[0]);
    }
    std::string str() const { return Text(b); }
    // The count byte and the text.
    std::string bytes() const { return std::string(reinterpret_cast<const char*>(b), b[0] + 1); }
    static std::string Text(const uint8_t* p) {
        return std::string(reinterpret_cast<const char*>(p + 1), p[0]);
    }
};

}  // namespace mgtest
