// Resource files built byte by byte, the way the manager lays them out, so that tests can
// spoil any field afterwards. Header-only: the resource and command-line suites share it.
#pragma once

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// One resource for FileBuilder.
struct RefLayout {
    int32_t id;
    std::string name;  // empty: no name
    Bytes data;
    int32_t attrs = 0;
};
struct TypeLayout {
    std::string type;
    std::vector<RefLayout> refs;  // written in this order, sorted or not
};

// `size` bytes that differ with `seed` and don't repeat every 256.
inline Bytes Fill(size_t size, int seed) {
    Bytes b(size);
    for (size_t i = 0; i < size; ++i) b[i] = uint8_t(size_t(seed) + i * 7 + (i >> 8));
    return b;
}

inline void PutBig32(Bytes& b, size_t at, uint32_t v) {
    for (size_t i = 0; i < 4; ++i) b[at + i] = uint8_t(v >> (24 - 8 * i));
}

inline void AppendBig32(Bytes& b, uint32_t v) {
    b.resize(b.size() + 4);
    PutBig32(b, b.size() - 4, v);
}

// Grows `to` first and copies after, rather than a vector range insert, which GCC 12 at -O3
// misjudges as writing out of bounds.
inline void Append(Bytes& to, const Bytes& from) {
    const size_t at = to.size();
    to.resize(at + from.size());
    std::copy(from.begin(), from.end(), to.begin() + std::ptrdiff_t(at));
}

inline uint32_t Big32At(const Bytes& b, size_t at) {
    return (uint32_t(b[at]) << 24) | (uint32_t(b[at + 1]) << 16) | (uint32_t(b[at + 2]) << 8) |
           b[at + 3];
}

inline Bytes BuildFile(const std::vector<TypeLayout>& types, int16_t version = 3,
                       const char* fileType = "TEST", const char* creator = "CRTR") {
    Bytes data, refs, names, typeList;
    AppendBig32(typeList, uint32_t(int32_t(types.size()) - 1));
    int32_t listOffset = 4 + 12 * int32_t(types.size());
    for (const auto& t : types) {
        typeList.insert(typeList.end(), t.type.begin(), t.type.end());
        AppendBig32(typeList, uint32_t(int32_t(t.refs.size()) - 1));
        AppendBig32(typeList, uint32_t(listOffset));
        listOffset += 20 * int32_t(t.refs.size());
        for (const auto& r : t.refs) {
            const uint32_t nameAt = r.name.empty() ? 0xFFFFFFFFu : uint32_t(names.size());
            for (uint32_t v :
                 {uint32_t(r.id), nameAt, uint32_t(r.attrs), uint32_t(data.size()), 0u})
                AppendBig32(refs, v);
            if (!r.name.empty()) names.push_back(uint8_t(r.name.size()));
            names.insert(names.end(), r.name.begin(), r.name.end());
            AppendBig32(data, uint32_t(r.data.size()));
            data.insert(data.end(), r.data.begin(), r.data.end());
            while (data.size() % 4) data.push_back(0);
        }
    }
    Bytes header(32, 0);
    memcpy(header.data(), "RSRC", 4);
    PutBig32(header, 4, 0x0D0A0000u | uint16_t(version));
    memcpy(header.data() + 8, fileType, 4);
    memcpy(header.data() + 12, creator, 4);
    const uint32_t mapSize =
        refs.empty() ? 0 : uint32_t(52 + typeList.size() + refs.size() + names.size());
    const uint32_t fields[] = {uint32_t(32 + data.size()), mapSize, 32, uint32_t(data.size())};
    for (size_t i = 0; i < 4; ++i) PutBig32(header, 16 + 4 * i, fields[i]);
    Bytes file = header;
    Append(file, data);
    if (refs.empty()) return file;
    Bytes map = header;
    map.resize(52, 0);
    PutBig32(map, 44, 52);
    PutBig32(map, 48, names.empty() ? 0 : uint32_t(52 + typeList.size() + refs.size()));
    for (const Bytes* part : {&map, &typeList, &refs, &names}) Append(file, *part);
    return file;
}

inline void WriteBytes(const std::filesystem::path& p, const Bytes& b) {
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(b.data()), std::streamsize(b.size()));
}
