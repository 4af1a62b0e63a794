// Resource files made to break a reader that trusts them: each is a small sound file spoiled
// in one way, found by fuzzing or by hand. Header-only, so that the resource and
// command-line suites (and a fuzz corpus) can share them.
#pragma once

#include <functional>

#include "mg/mgtypes.h"
#include "resource/file_builder.h"

namespace crafted {

// Three resources of two types, named and unnamed; the map starts at MapAt(file).
inline const std::vector<TypeLayout>& BaseLayout() {
    static const std::vector<TypeLayout> layout = {
        {"AAAA", {{1, "one", {1, 2, 3}}, {2, "", {4}}}},
        {"BBBB", {{7, "seven", {5, 6, 7, 8, 9}}}},
    };
    return layout;
}

inline uint32_t MapAt(const Bytes& b) {
    return Big32At(b, 16);
}

// Offsets within the base file's map: the type list at 52, AAAA's entry at 56, BBBB's at 68,
// AAAA's references at 80 and 100, BBBB's at 120.
constexpr uint32_t kTypeCount = 52, kTypeA = 56, kTypeB = 68, kRefA1 = 80, kRefA2 = 100,
                   kRefB7 = 120;

inline void PutMap32(Bytes& b, uint32_t mapOffset, uint32_t v) {
    PutBig32(b, MapAt(b) + mapOffset, v);
}

// Sets the data section's offset or size in the header and in the map's copy alike.
inline void PutBothHeaders(Bytes& b, uint32_t headerOffset, uint32_t v) {
    PutMap32(b, headerOffset, v);
    PutBig32(b, headerOffset, v);
}

struct Spoiled {
    const char* what;
    std::function<void(Bytes&)> spoil;
    MgStatus open;         // what opening gives, for reading and for writing alike
    uint32_t faultAt = 0;  // where a check of the bytes meets the first fault: from the start of
                           // the map (maps) or of the file (data)
};

// Maps whose lists can't be trusted: every one is refused on opening.
inline const std::vector<Spoiled>& BadMaps() {
    static const std::vector<Spoiled> rows = {
        {"reference list over the type list", [](Bytes& b) { PutMap32(b, kTypeA + 8, 4); },
         MgIOError, kTypeA + 8},
        {"reference lists over each other", [](Bytes& b) { PutMap32(b, kTypeB + 8, 48); },
         MgIOError, kTypeB + 8},
        {"reference list over the map header",
         [](Bytes& b) { PutMap32(b, kTypeA + 8, uint32_t(-40)); }, MgIOError, kTypeA + 8},
        {"type list inside the map header", [](Bytes& b) { PutMap32(b, 44, 40); }, MgIOError, 44},
        // Everything from the type list on moves up by 2, so that only the alignment is wrong.
        {"type list not on a word",
         [](Bytes& b) {
             const uint32_t map = MapAt(b);
             b.insert(b.begin() + map + kTypeCount, 2, 0);
             PutMap32(b, 44, kTypeCount + 2);
             PutMap32(b, 48, Big32At(b, map + 48) + 2);
             PutBothHeaders(b, 20, Big32At(b, 20) + 2);
         },
         MgIOError, 44},
        {"reference list not on a word", [](Bytes& b) { PutMap32(b, kTypeB + 8, 70); }, MgIOError,
         kTypeB + 8},
        {"type count 7FFFFFFF", [](Bytes& b) { PutMap32(b, kTypeCount, 0x7FFFFFFF); }, MgIOError,
         kTypeCount},
        {"reference count 7FFFFFFF", [](Bytes& b) { PutMap32(b, kTypeA + 4, 0x7FFFFFFF); },
         MgIOError, kTypeA + 8},
        {"reference count below -1", [](Bytes& b) { PutMap32(b, kTypeB + 4, uint32_t(-2)); },
         MgIOError, kTypeB + 4},
        // The name list starts at 140; an edit would cut "names" out of the lists.
        {"name list over the reference lists", [](Bytes& b) { PutMap32(b, 48, kRefA2); }, MgIOError,
         48},
        {"a name over the lists", [](Bytes& b) { PutMap32(b, kRefB7 + 4, uint32_t(-40)); },
         MgIOError, kRefB7 + 4},
    };
    return rows;
}

// Files that open, whose one bad resource fails its own load with 4 before any memory is
// taken for it, while the others load. A fault at 0 is the bad reference's data offset.
inline const std::vector<Spoiled>& BadData() {
    static const std::vector<Spoiled> rows = {
        // A short file that claims a data section and a resource of nearly 2 GiB.
        {"size word far beyond a short file",
         [](Bytes& b) {
             PutBothHeaders(b, 28, 0x7FFFFF00);
             PutBig32(b, 32, 0x7FFFF000);
         },
         MgNoError, 32},
        {"negative size word", [](Bytes& b) { PutBig32(b, 32, 0xFFFFFFF0); }, MgNoError, 32},
        {"data offset beyond the section", [](Bytes& b) { PutMap32(b, kRefA1 + 12, 0x7FFFFFF0); },
         MgNoError, 0},
    };
    return rows;
}

inline Bytes Base() {
    return BuildFile(BaseLayout());
}

// The changed bit and a handle word, stored by some other writer: AAAA 1 has attributes
// 0A (changed and protected) and a nonzero handle word.
inline Bytes RunTimeBitsFromTheFile() {
    Bytes b = Base();
    PutMap32(b, kRefA1 + 8, 0x0A);
    PutMap32(b, kRefA1 + 16, 0x12345678);
    return b;
}

// AAAA 1 and AAAA 2 share one data block (AAAA 1's); BBBB 7 stands behind it.
inline Bytes SharedData() {
    Bytes b = Base();
    PutMap32(b, kRefA2 + 12, 0);
    return b;
}

// A data section that starts behind a gap of `gap` bytes after the header.
inline Bytes DataBehindAGap(uint32_t gap) {
    const Bytes sound = Base();
    const uint32_t dataSize = Big32At(sound, 28);
    Bytes b(sound.begin(), sound.begin() + 32);
    b.resize(32 + gap, 0xEE);
    b.insert(b.end(), sound.begin() + 32, sound.end());
    PutBig32(b, 16, 32 + gap + dataSize);  // first: the map is found through it
    PutMap32(b, 16, 32 + gap + dataSize);
    PutBothHeaders(b, 24, 32 + gap);
    return b;
}

// `inner` carried behind `at` bytes of another file, found through the last four bytes, which
// give `at` in host order.
inline Bytes Embedded(const Bytes& inner, int32_t at) {
    Bytes b(size_t(at), 0xEE);
    Append(b, inner);
    b.resize(b.size() + 4);
    memcpy(b.data() + b.size() - 4, &at, 4);
    return b;
}

}  // namespace crafted
