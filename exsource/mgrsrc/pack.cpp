// mgrsrc pack: a resource file built from an unpacked folder through the library.
//
// The library lays a file out from the order of its edits: types stand in the order they were
// first added, names in the order they were stored, and data in the order it was written. So
// the resources are added in an order that gives the manifest's type and name order (a type
// that must exist before a name is stored, and has no resource without a name to make it,
// gets a stand-in that goes again before anything is written), and then written one by one in
// the manifest's data order with RWriteNow, each from its data file, so that only one
// resource's data is in memory at a time. The closing write-back then finds the data packed
// in place and adds the map. The file is built beside FILE under a hidden name and put in its
// place only when it is complete.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mgrsrc/manifest.h"
#include "mgrsrc/mgrsrc.h"
#include "mgrsrc/resfile.h"

namespace {

const char kHelp[] =
    "usage: mgrsrc pack DIR FILE\n"
    "\n"
    "Builds the resource file FILE from DIR/resources.json and the data files it names, as\n"
    "unpack writes them, through the library: the file type and creator, and every resource\n"
    "with its type, id, name, attributes and data. The resources take the library's layout\n"
    "(version 3, the data section at 32 and packed, ids in order); a file that the library\n"
    "wrote comes back byte for byte from its unpacked folder, also after edits, since the\n"
    "manifest keeps the order of its data and names. The changed bit of an attribute isn't\n"
    "kept. FILE is replaced only once the new file is complete.\n"
    "\n"
    "A manifest that isn't valid JSON, names a missing data file, repeats a type and id, or\n"
    "has a type that isn't four bytes, an id outside 32 bits, a name over 255 bytes or a\n"
    "character above \\u00ff is refused with its line and the reason, and nothing is written.\n"
    "\n"
    "exit status: 0 packed, 1 bad command line or manifest, 2 an unreadable manifest or data\n"
    "file, or a FILE that can't be written.\n";

constexpr int32_t kPermissions = 0666;  // less the creation mask

// One step of the adding: a resource of the manifest, or a stand-in of `type`.
struct AddStep {
    int64_t resource;  // -1: a stand-in
    ResType type;
    bool named;
};

// The adds that give the manifest's type order (the order types first appear in it) and name
// order ("nameOrder", else map order: type, then id).
std::vector<AddStep> AddOrder(const Manifest& m) {
    std::vector<ResType> types;
    std::map<ResType, size_t> typeIndex;
    for (const ManifestResource& r : m.resources)
        if (typeIndex.emplace(r.type, types.size()).second) types.push_back(r.type);
    std::vector<std::vector<int64_t>> unnamed(types.size());
    std::vector<int64_t> named;
    for (size_t i = 0; i < m.resources.size(); ++i) {
        const ManifestResource& r = m.resources[i];
        if (r.named)
            named.push_back(int64_t(i));
        else
            unnamed[typeIndex[r.type]].push_back(int64_t(i));
    }
    auto nameKey = [&](int64_t i) {
        const ManifestResource& r = m.resources[size_t(i)];
        return std::tuple(r.nameOrder < 0, r.nameOrder, typeIndex[r.type], r.id);
    };
    std::stable_sort(named.begin(), named.end(),
                     [&](int64_t a, int64_t b) { return nameKey(a) < nameKey(b); });
    std::vector<AddStep> steps;
    std::vector<size_t> used(types.size(), 0);  // unnamed resources added, per type
    size_t made = 0;                            // types that exist, a prefix of `types`
    auto makeTypesBefore = [&](size_t end) {
        for (; made < end; ++made) {
            if (used[made] < unnamed[made].size())
                steps.push_back({unnamed[made][used[made]++], types[made], false});
            else
                steps.push_back({-1, types[made], false});
        }
    };
    // A name stored and removed again leaves the name list there, empty.
    if (m.emptyNameList && named.empty() && !types.empty()) {
        steps.push_back({-1, types[0], true});
        made = 1;
    }
    for (int64_t i : named) {
        const size_t t = typeIndex[m.resources[size_t(i)].type];
        makeTypesBefore(t);
        steps.push_back({i, types[t], true});
        made = std::max(made, t + 1);
    }
    makeTypesBefore(types.size());
    for (size_t t = 0; t < types.size(); ++t)
        for (; used[t] < unnamed[t].size(); ++used[t])
            steps.push_back({unnamed[t][used[t]], types[t], false});
    return steps;
}

// The data order: "dataOrder", else map order.
std::vector<size_t> DataOrder(const Manifest& m) {
    std::map<ResType, size_t> typeIndex;
    for (const ManifestResource& r : m.resources) typeIndex.emplace(r.type, typeIndex.size());
    std::vector<size_t> order(m.resources.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    auto key = [&](size_t i) {
        const ManifestResource& r = m.resources[i];
        return std::tuple(r.dataOrder < 0, r.dataOrder, typeIndex[r.type], r.id);
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return key(a) < key(b); });
    return order;
}

// An id of `type` that no resource of the manifest has.
int32_t FreeId(const Manifest& m, ResType type) {
    std::vector<int32_t> ids;
    for (const ManifestResource& r : m.resources)
        if (r.type == type) ids.push_back(r.id);
    std::sort(ids.begin(), ids.end());
    int32_t id = 0;
    for (int32_t taken : ids)
        if (taken == id) ++id;
    return id;
}

// Fills `h` from the data file of `r`.
MgStatus ReadData(const ManifestResource& r, Handle h, std::string* why) {
    if (MgStatus status = MemResizeHandle(h, int32_t(r.size))) return status;
    std::ifstream in(r.path, std::ios::binary);
    in.read(reinterpret_cast<char*>(*h), std::streamsize(r.size));
    if (in && in.gcount() == std::streamsize(r.size) && in.peek() == EOF) return MgNoError;
    *why = "cannot read " + r.path.string() + ", or it changed";
    return MgIOError;
}

// Builds the file `id` from the manifest. The empty text when that worked, else the reason.
std::string Build(const Manifest& m, ResFile id) {
    std::vector<Handle> handles(m.resources.size(), nullptr);
    std::vector<Handle> standIns;
    uint8_t name[256];
    for (const AddStep& step : AddOrder(m)) {
        Handle h = MemNewHandle(0);
        if (!h) return StatusWords(MgNoMemory);
        const ManifestResource* r =
            step.resource >= 0 ? &m.resources[size_t(step.resource)] : nullptr;
        name[0] = 0;
        if (r) {
            name[0] = uint8_t(r->name.size());
            memcpy(name + 1, r->name.data(), r->name.size());
        } else if (step.named) {
            memcpy(name, "\1-", 2);
        }
        const int32_t resId = r ? r->id : FreeId(m, step.type);
        if (MgStatus status = RAdd(h, id, step.type, resId, name)) {
            MemDisposeHandle(h);
            return "cannot add " + TypeText(step.type) + ' ' + std::to_string(resId) + ": " +
                   StatusWords(status);
        }
        if (r)
            handles[size_t(step.resource)] = h;
        else
            standIns.push_back(h);
    }
    for (Handle h : standIns) {
        if (MgStatus status = RRemove(h, id))
            return "cannot remove a stand-in: " + StatusWords(status);
        MemDisposeHandle(h);
    }
    std::string why;
    for (size_t i : DataOrder(m)) {
        const ManifestResource& r = m.resources[i];
        Handle h = handles[i];
        MgStatus status = ReadData(r, h, &why);
        if (!status) status = RWriteNow(h);
        // The changed bit would have the write-back write the data a second time.
        if (!status) status = RSetAttrs(h, r.attrs & ~RAttrChanged);
        if (!status) status = RRelease(h);
        if (status)
            return why.empty() ? "cannot write " + TypeText(r.type) + ' ' + std::to_string(r.id) +
                                     ": " + StatusWords(status)
                               : why;
    }
    return "";
}

// Makes an empty resource file beside `target` under a hidden name of its own.
MgStatus CreateBeside(const std::filesystem::path& target, const Manifest& m,
                      std::filesystem::path* temp) {
    std::random_device random;
    MgStatus status = MgDuplicate;
    for (int tries = 0; status == MgDuplicate && tries < 100; ++tries) {
        char suffix[16];
        std::snprintf(suffix, sizeof suffix, ".%08X", unsigned(random()));
        *temp = target.parent_path() / ("." + target.filename().string() + suffix);
        LibraryPath p(temp->string());
        status = p.status ? p.status
                          : RCreateCorrectFile(p.path, 0, m.creator, m.fileType,
                                               FMPermissionMask(kPermissions));
    }
    return status;
}

// Builds the file at `temp`; the empty text when that worked, else the reason.
std::string BuildAt(const std::filesystem::path& temp, const Manifest& m) {
    EditedFile file;  // drops whatever a failed build left unwritten
    if (MgStatus status = file.OpenAs(temp.string())) return StatusWords(status);
    std::string why = Build(m, file.id());
    if (why.empty())
        if (MgStatus status = file.Close()) why = StatusWords(status);
    return why;
}

}  // namespace

int PackCommand(const std::vector<std::string>& args) {
    CommandLine line;
    if (int done = SplitArgs("pack", kHelp, args, {}, {}, &line); done >= 0) return done;
    if (line.operands.size() != 2) return UsageError("pack", "expects DIR FILE");
    const std::string& file = line.operands[1];
    Manifest manifest;
    if (int status = ReadManifest(line.operands[0], &manifest)) return status;

    namespace fs = std::filesystem;
    fs::path temp;
    std::string why;
    if (MgStatus status = CreateBeside(fs::path(file), manifest, &temp)) {
        why = StatusWords(status);
        temp.clear();
    } else {
        why = BuildAt(temp, manifest);
    }
    std::error_code error;
    if (why.empty()) {
        fs::rename(temp, fs::path(file), error);
        if (error) why = error.message();
    }
    if (!why.empty()) {
        if (!temp.empty()) fs::remove(temp, error);
        std::fprintf(stderr, "mgrsrc pack: cannot write %s: %s\n", file.c_str(), why.c_str());
        return kExitFailed;
    }
    std::printf("packed %s into %s\n", Count(manifest.resources.size(), "resource").c_str(),
                file.c_str());
    return kExitOk;
}
