// Handles of either zone and counted text, for suites that work on what handles hold. Including
// it starts the memory manager (memory_env.h).
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "mg/memory.h"
#include "support/memory_env.h"

namespace mgtest {

inline int32_t HandleBytes(Handle h, bool mainZone = true) {
    return mainZone ? MemHandleSize(h) : CompactHandleSize(h);
}
inline void DisposeIn(Handle h, bool mainZone = true) {
    mainZone ? MemDisposeHandle(h) : CompactDisposeHandle(h);
}
// A new handle of the zone holding `bytes`, and what a handle holds.
inline Handle NewHandleOf(const std::string& bytes, bool mainZone = true) {
    Handle h = nullptr;
    const int32_t n = static_cast<int32_t>(bytes.size());
    EXPECT_EQ(mainZone ? MemHandleFromBytes(bytes.data(), &h, n)
                       : CompactHandleFromBytes(bytes.data(), &h, n),
              MgNoError);
    return h;
}
inline std::string Contents(Handle h, bool mainZone = true) {
    return std::string(reinterpret_cast<const char*>(*h), HandleBytes(h, mainZone));
}

// The bytes of an LStr: its count, then its text.
inline std::string LStrBytes(const std::string& text) {
    const int32_t n = static_cast<int32_t>(text.size());
    return std::string(reinterpret_cast<const char*>(&n), 4) + text;
}
inline std::string LText(const LStr* l) {
    return std::string(reinterpret_cast<const char*>(l->text), static_cast<size_t>(l->count));
}
inline std::string LText(LStrHandle h) {
    return LText(*h);
}
inline LStrHandle NewLStr(const std::string& text, bool mainZone = true) {
    return reinterpret_cast<LStrHandle>(NewHandleOf(LStrBytes(text), mainZone));
}

// An LStr in memory of its own, with room behind it.
struct L {
    std::vector<uint8_t> mem;
    explicit L(const std::string& text, size_t room = 1) {
        const std::string bytes = LStrBytes(text);
        mem.assign(bytes.begin(), bytes.end());
        mem.resize(mem.size() + room);
    }
    LStr* get() { return reinterpret_cast<LStr*>(mem.data()); }
    operator LStr*() { return get(); }
};

}  // namespace mgtest
