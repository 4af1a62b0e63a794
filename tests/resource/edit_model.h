// A model of a new file's map under adds, removes, changes and lookups, applied beside a real
// file. It keeps types, references and the name list's bytes, with the name-list offset as the
// edits' arithmetic leaves it (the negative one included), and renders the map as it stands in
// memory and the file that closing writes. Shared by the property test and the replay of fixed
// sequences (edit_test.cpp) against the files that the earlier map edits wrote.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "mg/pstring.h"
#include "resource/resource_env.h"

namespace edits {

enum Kind : uint8_t { kAdd, kAddTwice, kRemove, kChange, kLookup };

struct Step {
    uint8_t kind, type, name, pick, extra;
    int8_t id;
    bool look;  // compare the map seen through RLookupFile after the step
};

inline const char* const kTypes[] = {"AAAA", "BBBB", "CCCC"};
inline const std::string kNames[] = {
    "", "", "alpha", "ALPHA", "b", "name 3", std::string(200, 'z')};

// A step from seven random numbers. Adds come most often.
inline Step MakeStep(const std::array<uint32_t, 7>& r) {
    const Kind kinds[] = {kAdd, kAdd, kAdd, kAddTwice, kRemove, kChange, kLookup, kLookup};
    return {kinds[r[0] % 8], uint8_t(r[1] % 3), uint8_t(r[2] % std::size(kNames)),
            uint8_t(r[3]),   uint8_t(r[4]),     int8_t(int(r[5] % 14) - 3),
            r[6] % 2 == 1};
}

// The map of an open file as it stands in memory; none when the file isn't open.
inline Bytes MapBytes(ResFile f) {
    ResFileEntry* e = nullptr;
    return RLookupFile(f, &e) ? Bytes() : Bytes(e->map, e->map + MemHandleSize(e->mapHandle));
}

struct Ref {
    int32_t id, nameOffset, attrs;
    Handle h;
    Bytes data;
};
using Type = std::pair<ResType, std::vector<Ref>>;

inline void Put32(Bytes& b, size_t at, int32_t v, bool big) {
    if (big) return PutBig32(b, at, uint32_t(v));
    memcpy(b.data() + at, &v, 4);
}

#define EDIT_EXPECT(got, want)                                                       \
    if ((got) != (want))                                                             \
        return std::string(#got) + " gave " + std::to_string(got) + ", the model " + \
               std::to_string(want);

struct Runner {
    explicit Runner(ResFile f) : f_(f) {}
    // "" when the file did as the model, else what differed.
    std::string Apply(const Step& s);
    std::string Look() const { return MapBytes(f_) == Render(false) ? "" : "map"; }
    // What closing writes: the new file's header alone while the map is empty.
    Bytes FileBytes() const {
        Bytes out(32, 0);
        for (const Type& t : types_)
            for (const Ref& r : t.second) {
                AppendBig32(out, uint32_t(r.data.size()));
                Append(out, r.data);
                out.resize((out.size() + 3) & ~size_t(3), 0);
            }
        const Bytes map = Render(true, int32_t(out.size()) - 32);
        std::copy(map.begin(), map.begin() + 32, out.begin());
        if (!types_.empty()) Append(out, map);
        return out;
    }

    int32_t NamesAt() const {
        int32_t at = 56 + 12 * int32_t(types_.size());
        for (const Type& t : types_) at += 20 * int32_t(t.second.size());
        return at;
    }
    int32_t Size() const { return types_.empty() ? 0 : NamesAt() + int32_t(names_.size()); }
    // The map in memory, or in the file behind `dataSize` bytes of data in map order.
    Bytes Render(bool file, int32_t dataSize = 0) const {
        Bytes m(types_.empty() ? 52 : size_t(Size()), 0);
        memcpy(m.data(), file ? "RSRC\r\n\0\3TESTCRTR" : "RSRC\r\n\3\0TESTCRTR", 16);
        const int32_t words[] = {
            32 + dataSize,           Size(), 32,       dataSize, 0, file ? 0 : f_,
            dirty_ ? RFileDirty : 0, 52,     nameList_};
        for (size_t i = 0; i < 9; ++i) Put32(m, 16 + 4 * i, words[i], file);
        if (types_.empty()) return m;
        Put32(m, 52, int32_t(types_.size()) - 1, file);
        size_t at = 56 + 12 * types_.size();
        int32_t offset = 0;
        for (size_t i = 0; i < types_.size(); ++i) {
            memcpy(m.data() + 56 + 12 * i, &types_[i].first, 4);
            Put32(m, 60 + 12 * i, int32_t(types_[i].second.size()) - 1, file);
            Put32(m, 64 + 12 * i, int32_t(at) - 52, file);
            for (const Ref& r : types_[i].second) {
                const int32_t ref[] = {r.id, r.nameOffset, file ? r.attrs & ~RAttrChanged : r.attrs,
                                       file ? offset : 0, file ? 0 : int32_t(MemHandleToken(r.h))};
                for (size_t w = 0; w < 5; ++w, at += 4) Put32(m, at, ref[w], file);
                offset += (int32_t(r.data.size()) + 7) & ~3;
            }
        }
        std::copy(names_.begin(), names_.end(), m.begin() + NamesAt());
        return m;
    }
    // A name as the manager reads it: through the name-list offset, within the size word.
    std::string NameOf(const Bytes& map, const Ref& r) const {
        const int64_t at = int64_t{nameList_} + r.nameOffset;
        if (r.nameOffset == -1 || at < 0 || at >= Size() || at + 1 + map[at] > Size()) return "";
        return std::string(map.begin() + at, map.begin() + at + 1 + map[at]);
    }
    std::string Lookup(const Step& s, const std::string& p, ResType type, Type* t, Ref* r,
                       size_t ti);

    ResFile f_;
    std::vector<Type> types_;
    Bytes names_;
    int32_t nameList_ = 0;
    bool dirty_ = false;
    int32_t serial_ = 0;
};

inline std::string Runner::Apply(const Step& s) {
    const ResType type = T(kTypes[s.type % 3]);
    const std::string p = P(kNames[s.name % std::size(kNames)]);
    const bool named = p.size() > 1;
    Type* t = nullptr;
    for (Type& o : types_) t = o.first == type ? &o : t;
    // The reference `pick` counts to in map order.
    size_t ti = 0, n = 0;
    for (const Type& o : types_) n += o.second.size();
    size_t ri = n ? s.pick % n : 0;
    while (n && ri >= types_[ti].second.size()) ri -= types_[ti++].second.size();
    Ref* r = n ? &types_[ti].second[ri] : nullptr;
    switch (s.kind) {
        case kAdd: {
            Ref add{s.id, named ? int32_t(names_.size()) : -1, RAttrChanged, nullptr, {}};
            for (int i = 0; i < s.extra % 6; ++i) add.data.push_back(uint8_t(serial_ * 7 + i));
            ++serial_;
            add.h = MemNewHandle(0);
            MemSetHandleBytes(&add.h, add.data.data(), int32_t(add.data.size()));
            const bool taken = t && std::any_of(t->second.begin(), t->second.end(),
                                                [&](const Ref& o) { return o.id == s.id; });
            EDIT_EXPECT(RAdd(add.h, f_, type, s.id, named ? PS(p) : nullptr),
                        taken ? MgResourceDuplicate : MgNoError);
            if (taken) {  // refused: the handle stays the caller's
                MemDisposeHandle(add.h);
                return "";
            }
            // The name-list offset grows by what the add moves it, or is set by a first name.
            const int32_t delta = types_.empty() ? 36 : t ? 20 : 32;
            const int32_t size =
                (types_.empty() ? 52 : Size()) + delta + int32_t(named ? p.size() : 0);
            if (types_.empty())
                nameList_ = named ? 88 : 0;
            else if (nameList_ != 0)
                nameList_ += delta;
            else if (named)
                nameList_ = size - int32_t(p.size());
            if (named) names_.insert(names_.end(), p.begin(), p.end());
            if (!t) t = &types_.emplace_back(type, std::vector<Ref>());
            auto at = std::find_if(t->second.begin(), t->second.end(),
                                   [&](const Ref& o) { return o.id > s.id; });
            t->second.insert(at, add);
            dirty_ = true;
            break;
        }
        case kAddTwice:
            if (r) EDIT_EXPECT(RAdd(r->h, f_, type, s.id, nullptr), MgResourceDuplicate);
            return "";
        case kRemove: {
            if (!r) return RRemove(nullptr, f_) == MgResourceDuplicate ? "" : "RRemove(nullptr)";
            const Bytes map = Render(false);
            int32_t refEnd = 56 + 12 * int32_t(types_.size()) + 20 * int32_t(ri + 1);
            for (size_t i = 0; i < ti; ++i) refEnd += 20 * int32_t(types_[i].second.size());
            const int64_t at = int64_t{nameList_} + r->nameOffset;
            const bool withName = r->nameOffset != -1;
            MgStatus want = r->attrs & RAttrProtected ? MgResourceNotFound : MgNoError;
            if (!want && withName && (at < refEnd || at >= Size() || at + 1 + map[at] > Size()))
                want = MgIOError;
            // A name the broken offset places among the references would be cut out of them:
            // no sound map comes out, so that step isn't taken.
            if (!want && withName && at < NamesAt()) return "";
            const Handle h = r->h;
            EDIT_EXPECT(
                s.extra % 2 ? RRemoveInd(f_, types_[ti].first, int32_t(ri + 1)) : RRemove(h, f_),
                want);
            if (want) return "";
            MemDisposeHandle(h);
            dirty_ = true;
            if (n == 1) {
                types_.clear(), names_.clear(), nameList_ = 0;
                break;
            }
            auto& refs = types_[ti].second;
            nameList_ -= refs.size() == 1 ? 32 : 20;
            if (withName) {
                const int32_t cut = 1 + map[at], removed = r->nameOffset;
                names_.erase(names_.begin() + (at - NamesAt()),
                             names_.begin() + (at - NamesAt() + cut));
                for (Type& o : types_)
                    for (Ref& x : o.second) x.nameOffset -= x.nameOffset > removed ? cut : 0;
            }
            refs.erase(refs.begin() + std::ptrdiff_t(ri));
            if (refs.empty()) types_.erase(types_.begin() + std::ptrdiff_t(ti));
            break;
        }
        case kChange: {
            const int32_t attrs[] = {0, RAttrChanged | RAttrProtected, RAttrChanged | 0x40};
            const int32_t a = attrs[s.extra % 3];
            if (!r) return RChanged(nullptr) == MgResourceNotFound ? "" : "RChanged(nullptr)";
            EDIT_EXPECT(a ? RSetAttrs(r->h, a) : RChanged(r->h), MgNoError);
            r->attrs = a ? a : r->attrs | RAttrChanged;
            dirty_ = true;
            break;
        }
        default:
            return Lookup(s, p, type, t, r, ti);
    }
    return "";
}

inline std::string Runner::Lookup(const Step& s, const std::string& p, ResType type, Type* t,
                                  Ref* r, size_t ti) {
    const Bytes map = Render(false);
    switch (s.extra % 3) {
        case 0: {
            // The first name that matches without regard to case, in id order, without loading.
            Handle h = nullptr, want = nullptr;
            int32_t index = 0, id = 0, wantIndex = 0, wantId = 0;
            for (size_t i = 0; t && !want && i < t->second.size(); ++i) {
                const std::string name = NameOf(map, t->second[i]);
                if (!name.empty() && name.size() == p.size() && PStringSameNoCase(PS(name), PS(p)))
                    want = t->second[i].h, wantIndex = int32_t(i + 1), wantId = t->second[i].id;
            }
            const MgStatus status = want ? MgNoError : MgResourceNotFound;
            EDIT_EXPECT(RFindNamed(f_, type, PS(p), &index, &id), status);
            EDIT_EXPECT(index + 1000 * id, wantIndex + 1000 * wantId);
            EDIT_EXPECT(RGetNamed(f_, type, PS(p), &h), status);
            return h == want ? "" : "RGetNamed gave another handle";
        }
        case 1: {
            if (!r) return "";
            int32_t id = 0;
            ResType got = 0;
            uint8_t name[256] = {};
            EDIT_EXPECT(RGetInfo(r->h, &id, &got, name), MgNoError);
            const std::string n = NameOf(map, *r);
            const bool same = std::string(name, name + 1 + name[0]) == (n.empty() ? P("") : n);
            return id == r->id && got == types_[ti].first && same ? "" : "RGetInfo";
        }
        default: {
            // Free ids from the counter, started at a resource's id: the first the counter
            // reaches that the type doesn't have.
            const int32_t start = r ? r->id : s.id, saved = gNextResId;
            const std::vector<Ref>& in = r ? types_[ti].second : t ? t->second : std::vector<Ref>();
            int32_t want = types_.empty() ? 128 : start;
            while (std::any_of(in.begin(), in.end(), [&](const Ref& o) { return o.id == want; }))
                ++want;
            gNextResId = start;
            const int32_t got = RUniqueID(f_, r ? types_[ti].first : type), next = gNextResId;
            gNextResId = saved;
            EDIT_EXPECT(got, want);
            EDIT_EXPECT(next, types_.empty() ? start : 128);
            return "";
        }
    }
}

// Runs `steps` on a new file at `path` (`name` natively) and closes it: "" when every step and
// the closed file matched the model, else the first difference.
inline std::string RunSteps(Path path, const std::string& name, const std::vector<Step>& steps) {
    ResFile f = 0;
    if (RCreateCorrectFile(path, 1, T("CRTR"), T("TEST"), 0644) ||
        ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr))
        return "no file";
    Runner run(f);
    std::string why;
    for (size_t i = 0; i < steps.size() && why.empty(); ++i) {
        why = run.Apply(steps[i]);
        if (why.empty() && steps[i].look) why = run.Look();
        if (!why.empty()) why = "step " + std::to_string(i) + ": " + why;
    }
    if (why.empty()) why = run.Look();
    const MgStatus status = RCloseFile(f);
    if (!why.empty()) return why;
    EDIT_EXPECT(status, MgNoError);
    return B(SlurpFile(name)) == run.FileBytes() ? "" : "the closed file";
}

}  // namespace edits
