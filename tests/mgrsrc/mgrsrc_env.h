// Helpers of the mgrsrc suite: running the built tool and writing files for it; files made
// through the library itself (so that they hold exactly what the write-back writes) and the
// round trip through the tool.
#pragma once

#include <string_view>

#include "resource/crafted_files.h"
#include "resource/resource_env.h"
#include "support/host_rules.h"
#include "support/run_tool.h"

namespace fs = std::filesystem;

inline ToolResult Mgrsrc(const std::vector<std::string>& args, const std::filesystem::path& dir) {
    return RunProgram(ToolPath(MGRSRC_NAME), args, dir);
}

// The tool's text as its standard streams carry it: lines end with the host's line end.
inline std::string Lined(std::string text) {
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += TextLineEnd().size())
        text.replace(at, 1, TextLineEnd());
    return text;
}

// Whether `got` is `want`, where each "..." of `want` stands for any text.
inline bool Fits(std::string_view got, std::string_view want) {
    size_t cut = want.find("...");
    if (cut == want.npos) return got == want;
    if (got.substr(0, cut) != want.substr(0, cut)) return false;
    for (got.remove_prefix(cut), want.remove_prefix(cut + 3); (cut = want.find("...")) != want.npos;
         want.remove_prefix(cut + 3)) {
        const size_t at = got.find(want.substr(0, cut));
        if (at == got.npos) return false;
        got.remove_prefix(at + cut);
    }
    return got.size() >= want.size() && got.substr(got.size() - want.size()) == want;
}

// A run of the tool in a directory (its words with blanks between them) and what it must give:
// its status and its two streams as Fits takes them, in lines that end as the host's do.
struct ToolRun {
    std::string args;
    int status;
    std::string out, err = "";
};
inline void ExpectRuns(const std::filesystem::path& dir, const std::vector<ToolRun>& runs) {
    for (const ToolRun& run : runs) {
        const ToolResult r = Mgrsrc(Words(run.args), dir);
        EXPECT_TRUE(r.status == run.status && Fits(r.out, Lined(run.out)) &&
                    Fits(r.err, Lined(run.err)))
            << run.args << " gave " << r.status << ":\n" + r.out + "\n" + r.err;
    }
}

// One edit of an open file. Adds and changes carry `data`; kSetAttrs keeps a pending change.
struct Edit {
    enum Kind { kAdd, kChange, kRemove, kSetAttrs, kUpdate } kind = kAdd;
    std::string type = "AAAA";
    int32_t id = 0;
    std::string name;  // kAdd: empty for none
    Bytes data;
    int32_t attrs = 0;
};

inline std::ostream& operator<<(std::ostream& os, const Edit& e) {
    return os << "{" << int(e.kind) << " '" << e.type << "' " << e.id << " name of "
              << e.name.size() << " data of " << e.data.size() << " attrs " << e.attrs << "}";
}

// Makes `file` a new resource file and applies the edits in order through the library, then
// closes it. Edits the library refuses are skipped; so are removes whose result the library
// keeps wrong on purpose (an unnamed resource out of a map that never held a name makes the
// name-list offset negative) or can't open again (the last resource).
inline void MakeWithLibrary(const fs::path& file, const std::vector<Edit>& edits) {
    Path path = NewPath(file.string());
    ResFile f = 0;
    ASSERT_EQ(RCreateCorrectFile(path, 1, MgResType("CRTR"), MgResType("TEST"), 0644), MgNoError);
    ASSERT_EQ(ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr), MgNoError);
    FPathRelease(path);
    int live = 0;
    bool namesStored = false;
    for (const Edit& e : edits) {
        const ResType type = MgResType(e.type.c_str());
        Handle h = nullptr;
        if (e.kind == Edit::kAdd) {
            h = MemNewHandle(int32_t(e.data.size()));
            if (!e.data.empty()) memcpy(*h, e.data.data(), e.data.size());
            if (RAdd(h, f, type, e.id, PS(P(e.name))) == MgNoError) {
                ++live;
                namesStored = namesStored || !e.name.empty();
            } else {
                MemDisposeHandle(h);
            }
        } else if (e.kind == Edit::kUpdate) {
            EXPECT_EQ(RUpdateFile(f), MgNoError);
        } else if (RGet(f, type, e.id, &h) == MgNoError) {
            int32_t id = 0, attrs = 0;
            uint8_t name[256];
            RGetInfo(h, &id, nullptr, name);
            RGetAttrs(h, &attrs);
            if (e.kind == Edit::kChange) {
                ASSERT_EQ(MemResizeHandle(h, int32_t(e.data.size())), MgNoError);
                if (!e.data.empty()) memcpy(*h, e.data.data(), e.data.size());
                RChanged(h);
            } else if (e.kind == Edit::kSetAttrs) {
                RSetAttrs(h, (e.attrs & ~RAttrChanged) | (attrs & RAttrChanged));
            } else if (live > 1 && (name[0] || namesStored) && RRemove(h, f) == MgNoError) {
                MemDisposeHandle(h);
                --live;
            }
        }
    }
    ASSERT_EQ(RCloseFile(f), MgNoError);
}

// unpack `file` (in `dir`) into "unpacked", then pack that as "packed"; the packed file's bytes.
inline Bytes RoundTrip(const fs::path& dir, const std::string& file) {
    const ToolResult unpack = Mgrsrc({"unpack", file, "unpacked"}, dir),
                     pack = Mgrsrc({"pack", "unpacked", "packed"}, dir);
    EXPECT_TRUE(unpack.status == 0 && pack.status == 0) << unpack.err << pack.err;
    return B(SlurpFile(dir / "packed"));
}
