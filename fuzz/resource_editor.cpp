// The resource editor: edits, write-back and reopen. Input: a count of edits (low 4 bits of
// the first byte), that many 8-byte edits, then a resource file. A file that doesn't open for
// writing is replaced by a new empty one.
//
// Each edit: kind, type index, id (16 bits), data length (16 bits), fill byte, attribute
// byte. Kinds: add, change (new data), remove, release, detach, set attributes, update.
//
// When every resource of the file loaded at the start and its names lie apart in the name
// list, the edits are kept in a model of the file; after closing and reopening, the file must
// hold exactly the model. What the manager does on purpose is left out of the model: an
// emptied file may not open again, a name added after the name-list offset went wrong (see
// namesSkewed) reads back wrong, and an add to a type whose ids span 2^31 or more may go in
// out of order, as may one that came so (see IdsWrap).
#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <vector>

#include "fuzz_input.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/rescheck.h"
#include "resource_walk.h"

namespace {

const char* const kTypes[] = {"TEST", "STR#", "DATA", "PATH"};

struct Edit {
    uint8_t kind, type;
    int16_t id;
    uint16_t length;
    uint8_t fill, attrs;
};

Edit ReadEdit(fuzz::Input& in) {
    Edit e;
    e.kind = in.Byte() % 7;
    e.type = in.Byte() % 4;
    // One read a statement: the operands of one expression may be read in either order.
    const int idHigh = in.Byte();
    e.id = static_cast<int16_t>(idHigh << 8 | in.Byte());
    const int lengthHigh = in.Byte();
    e.length = static_cast<uint16_t>((lengthHigh << 8 | in.Byte()) % 4096);
    e.fill = in.Byte();
    e.attrs = in.Byte();
    return e;
}

struct Session {
    ResFile file;
    fuzz::Contents model;
    bool trusted;
    std::set<std::pair<ResType, int32_t>> changed;  // may not be released or detached
    // Removing an unnamed resource from a map with no names leaves the name-list offset
    // negative, and a name added later is read back from the wrong place; a file may come so,
    // or with bytes behind its lists where its name-list offset doesn't start (see
    // NamesAreStable).
    bool namesSkewed = false;

    void Apply(const Edit& e);
};

// Where the names of a file lie: the end of its reference lists, each name's bytes, and
// whether a name offset points outside the map.
struct NameSpans {
    const uint8_t* bytes;
    int64_t listsEnd = 0;
    std::vector<std::pair<int64_t, int64_t>> names;
    bool unreadable = false;
};

uint32_t BigWord(const uint8_t* p) {
    return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

void CollectName(void* context, const RCheckedRef* ref) {
    auto* spans = static_cast<NameSpans*>(context);
    spans->listsEnd = std::max(spans->listsEnd, ref->entryAt + 20);
    if (ref->name) {
        const int64_t at = ref->name - spans->bytes;
        spans->names.emplace_back(at, at + 1 + ref->name[0]);
    } else if (BigWord(spans->bytes + ref->entryAt + 4) != 0xFFFFFFFF) {
        spans->unreadable = true;
    }
}

// Whether the names of a file stay what they read as through edits and a write-back: each in
// the name list behind the reference lists, none sharing bytes with another. The manager
// reads names where their offsets put them; a file may put them over the map's header and
// lists, whose run-time words and offsets change, or share them, and the arithmetic of a
// removal then moves what another reads. `skewed`: a name added later reads back wrong. An add
// puts the name at the block's end and gives it the offset of the bytes behind the reference
// lists as the name list's size; the name-list offset moves with the lists, or, at 0, becomes
// the new name's place. So the name reads right only while that offset is where the bytes
// behind the lists start, or is 0 with no bytes behind them.
bool NamesAreStable(const std::string& file, bool* skewed) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(file.data());
    NameSpans spans{bytes, 0, {}, false};
    RCheckSink sink{&spans, nullptr, CollectName, 0};
    RCheckSummary sum{};
    if (RCheckBytes(bytes, static_cast<int64_t>(file.size()), &sink, &sum) != MgNoError ||
        sum.openStatus != MgNoError || spans.unreadable)
        return false;
    // A file opened for writing has its header at 0.
    const int64_t map = sum.header.mapOffset;
    if (sum.header.mapSize == 0) return true;
    const int64_t nameList = static_cast<int32_t>(BigWord(bytes + map + 48));
    const int64_t typeList = map + static_cast<int32_t>(BigWord(bytes + map + 44));
    const int64_t types = static_cast<int32_t>(BigWord(bytes + typeList)) + int64_t{1};
    const int64_t listsEnd = std::max(spans.listsEnd, typeList + 4 + 12 * types);
    *skewed = nameList != 0 ? map + nameList != listsEnd : map + sum.header.mapSize != listsEnd;
    if (spans.names.empty()) return true;
    int64_t end = map + nameList;
    if (end < spans.listsEnd) return false;
    std::sort(spans.names.begin(), spans.names.end());
    for (const auto& [start, stop] : spans.names) {
        if (start < end) return false;
        end = stop;
    }
    return true;
}

// Whether the ids of `type` in the model span 2^31 or more. The lists' search compares ids by
// wrapping subtraction, which then disagrees with their order as numbers: an add may go in
// out of order, or beside an id the search misses, and reopening sorts the list as numbers,
// out of the search's reach. All of it is the search's kept arithmetic.
bool IdsWrap(const fuzz::Contents& model, ResType type) {
    auto first = model.lower_bound({type, INT32_MIN});
    auto end = model.upper_bound({type, INT32_MAX});
    if (first == end) return false;
    return int64_t{std::prev(end)->first.second} - first->first.second > INT32_MAX;
}

// Whether every type whose ids span 2^31 or more stands in their order as numbers. A file of a
// version that isn't sorted on opening may hold such a list that the search still finds each
// id in; once written back, it is sorted when reopened, and the search misses some.
bool WideListsRise(ResFile file, const fuzz::Contents& model) {
    for (auto it = model.begin(); it != model.end();) {
        const ResType type = it->first.first;
        it = model.upper_bound({type, INT32_MAX});
        if (!IdsWrap(model, type)) continue;
        int32_t count = 0, previous = INT32_MIN;
        if (RCount(file, type, &count) != MgNoError) return false;
        for (int32_t i = 1; i <= count; ++i) {
            Handle h = nullptr;
            int32_t id = 0;
            ResType infoType = 0;
            uint8_t name[256];
            if (RGetInd(file, type, i, &h) != MgNoError ||
                RGetInfo(h, &id, &infoType, name) != MgNoError || id < previous)
                return false;
            previous = id;
        }
    }
    return true;
}

std::string Pattern(const Edit& e) {
    std::string data(e.length, '\0');
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(e.fill + i * 7);
    return data;
}

void Session::Apply(const Edit& e) {
    ResType type = MgResType(kTypes[e.type]);
    auto key = std::make_pair(type, static_cast<int32_t>(e.id));
    Handle h = nullptr;
    if (e.kind == 0) {  // add, under a name for odd fill bytes
        // Only a (type, id) the file doesn't hold; RExists calls that 15, and a new type too.
        int32_t found = 0;
        if (RExists(file, type, e.id, &found) != MgResourceNotFound) return;
        std::string data = Pattern(e);
        h = MemNewHandle(static_cast<int32_t>(data.size()));
        if (!h) return;
        memcpy(*h, data.data(), data.size());
        std::string name = e.fill & 1 ? "n" + std::to_string(e.id) : "";
        std::string pstr = std::string(1, static_cast<char>(name.size())) + name;
        if (RAdd(h, file, type, e.id,
                 name.empty() ? nullptr : reinterpret_cast<ConstPStr>(pstr.data())) != MgNoError) {
            MemDisposeHandle(h);
            return;
        }
        if (!name.empty() && namesSkewed) trusted = false;
        model[key] = {name, data};
        if (IdsWrap(model, type)) trusted = false;
        changed.insert(key);
        return;
    }
    if (e.kind == 6) {
        if (RUpdateFile(file) != MgNoError) trusted = false;
        return;
    }
    if (RGet(file, type, e.id, &h) != MgNoError) return;
    bool isChanged = changed.count(key) != 0;
    switch (e.kind) {
        case 1: {  // change
            std::string data = Pattern(e);
            if (MemResizeHandle(h, static_cast<int32_t>(data.size())) != MgNoError) return;
            memcpy(*h, data.data(), data.size());
            if (RChanged(h) != MgNoError) {
                trusted = false;
                return;
            }
            model[key].second = data;
            changed.insert(key);
            break;
        }
        case 2: {  // remove; the handle is the caller's afterwards
            bool named = false;
            for (const auto& [k, v] : model) named = named || !v.first.empty();
            if (RRemove(h, file) == MgNoError) {
                MemDisposeHandle(h);
                model.erase(key);
                changed.erase(key);
                // An emptied map starts its names afresh.
                namesSkewed = !model.empty() && (namesSkewed || !named);
            }
            break;
        }
        case 3:
            if (!isChanged) RRelease(h);
            break;
        case 4:
            if (!isChanged && RDetach(h) == MgNoError) MemDisposeHandle(h);
            break;
        default:  // protection on or off; the changed bit as it stands
            RSetAttrs(h, (e.attrs & RAttrProtected) | (isChanged ? RAttrChanged : 0));
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::StartManagers(true);
    fuzz::Input in(data, size);
    int edits = in.Byte() & 15;
    std::vector<Edit> script;
    for (int k = 0; k < edits; ++k) script.push_back(ReadEdit(in));

    const std::string& file = fuzz::ScratchFile("editor.rsrc");
    const std::string bytes = in.Rest();
    fuzz::WriteWholeFile(file, bytes);
    Path path = fuzz::NativePath(file);
    Session s{0, {}, true, {}};
    bool namesStable = true;
    if (ROpenFile(path, FMModeReadWrite, &s.file, nullptr, nullptr) == MgNoError) {
        namesStable = NamesAreStable(bytes, &s.namesSkewed);
    } else if (RCreateCorrectFile(path, 1, MgResType("CRTR"), MgResType("TEST"), 0644) !=
                   MgNoError ||
               ROpenFile(path, FMModeReadWrite, &s.file, nullptr, nullptr) != MgNoError) {
        abort();
    }
    s.trusted =
        fuzz::LoadEverything(s.file, &s.model) && namesStable && WideListsRise(s.file, s.model);
    for (const Edit& e : script) s.Apply(e);
    if (RCloseFile(s.file) != MgNoError) {
        // A close that can't write back (data of an untouched resource outside the file, say)
        // leaves the file open with every handle; dropping the dirty bit gives up the edits,
        // and then the close must succeed. Leaving it open would leak its map, its handles and
        // its descriptor for the rest of the run.
        s.trusted = false;
        int32_t attrs = 0;
        if (RGetFileAttrs(s.file, &attrs) != MgNoError ||
            RSetFileAttrs(s.file, attrs & ~RFileDirty) != MgNoError ||
            RCloseFile(s.file) != MgNoError)
            abort();
    }

    ResFile again = 0;
    MgStatus reopened = ROpenFile(path, FMModeRead, &again, nullptr, nullptr);
    // An emptied file is cut to its header, which still names the old map: it may not open.
    if (s.trusted && !s.model.empty() && reopened != MgNoError) abort();
    if (reopened == MgNoError) {
        fuzz::Contents after;
        bool complete = fuzz::LoadEverything(again, &after);
        // A file whose every resource loaded comes back with exactly what was done to it.
        if (s.trusted && (!complete || after != s.model)) abort();
        RCloseFile(again);
    }
    FPathRelease(path);
    return 0;
}
