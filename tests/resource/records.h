// Resources as whole records: what a file holds, read through the manager and compared at once,
// and the layout that writes a list of them. Header-only: the resource, command-line and
// packager suites share it.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "resource/file_builder.h"

struct Res {
    std::string type;
    int32_t id;
    std::string name;  // empty: none
    Bytes data;
    int32_t attrs = 0;
    bool operator==(const Res&) const = default;
};

inline void PrintTo(const Res& r, std::ostream* os) {
    *os << "'" << r.type << "' " << r.id << " \"" << r.name << "\" [" << r.data.size()
        << " bytes] attrs " << r.attrs;
}

inline Bytes B(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

inline Path NewPath(const std::string& text) {
    Path p = nullptr;
    EXPECT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p),
              MgNoError);
    return p;
}

// Every resource of an open file, loaded, in type-list order and within a type in index order.
inline std::vector<Res> Records(ResFile f) {
    std::vector<Res> out;
    int32_t types = 0, n = 0;
    EXPECT_EQ(RCountTypes(f, &types), MgNoError);
    for (int32_t t = 1; t <= types; ++t) {
        ResType type = 0;
        EXPECT_EQ(RGetIndType(f, &type, t), MgNoError);
        EXPECT_EQ(RCount(f, type, &n), MgNoError);
        for (int32_t i = 1; i <= n; ++i) {
            Handle h = nullptr;
            uint8_t name[256] = {0};
            Res r{std::string(reinterpret_cast<const char*>(&type), 4), 0, "", {}};
            EXPECT_EQ(RGetInd(f, type, i, &h), MgNoError);
            if (!h) continue;
            EXPECT_EQ(RGetInfo(h, &r.id, nullptr, name), MgNoError);
            EXPECT_EQ(RGetAttrs(h, &r.attrs), MgNoError);
            r.name.assign(reinterpret_cast<const char*>(name + 1), name[0]);
            r.data.assign(*h, *h + MemHandleSize(h));
            out.push_back(r);
        }
    }
    return out;
}

// The records of the file named `file`, opened for reading; none when it doesn't open.
inline std::vector<Res> FileRecords(const std::string& file) {
    Path p = NewPath(file);
    ResFile f = 0;
    const MgStatus opened = ROpenFile(p, FMModeRead, &f, nullptr, nullptr);
    FPathRelease(p);
    if (opened) return {};
    const std::vector<Res> records = Records(f);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    return records;
}

// The layout that holds `records`: each run of one type becomes one type entry.
inline std::vector<TypeLayout> Layout(const std::vector<Res>& records) {
    std::vector<TypeLayout> layout;
    for (const Res& r : records) {
        if (layout.empty() || layout.back().type != r.type) layout.push_back({r.type, {}});
        layout.back().refs.push_back({r.id, r.name, r.data, r.attrs});
    }
    return layout;
}

// The records a layout holds, in its own order.
inline std::vector<Res> Flat(const std::vector<TypeLayout>& layout) {
    std::vector<Res> records;
    for (const auto& t : layout)
        for (const auto& r : t.refs) records.push_back({t.type, r.id, r.name, r.data, r.attrs});
    return records;
}
