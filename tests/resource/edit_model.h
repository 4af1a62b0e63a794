// A model of a new file's map under adds, removes, changes and lookups, and a runner that
// applies the same steps to a real file and compares. The model keeps types, references and
// the name list's bytes, with the name-list offset as the edits' arithmetic leaves it (the
// negative one included), and renders the map as it stands in memory and the file that
// closing writes. Shared by the property test and the replay of fixed sequences against files
// that the earlier map edits wrote.
#pragma once

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "mg/pstring.h"
#include "resource/resource_env.h"

namespace edits {

enum Kind : uint8_t { kAdd, kAddTwice, kRemove, kChange, kLookup, kKinds };

struct Step {
    uint8_t kind, type, name, pick, extra;
    int8_t id;
    bool look;  // compare the map seen through RLookupFile after the step
};

inline const char* const kTypes[] = {"AAAA", "BBBB", "CCCC"};
inline const std::string kNames[] = {
    "", "", "alpha", "ALPHA", "b", "name 3", std::string(200, 'z')};

inline void Put32(Bytes& b, size_t at, int32_t v, bool big) {
    if (big) return PutBig32(b, at, uint32_t(v));
    memcpy(b.data() + at, &v, 4);
}

struct Ref {
    int32_t id, nameOffset, attrs;
    Handle h;
    Bytes data;
};
struct Type {
    ResType type;
    std::vector<Ref> refs;
};

struct Model {
    std::vector<Type> types;
    Bytes names;
    int32_t nameList = 0;
    bool dirty = false;

    int32_t RefCount() const {
        int32_t n = 0;
        for (const Type& t : types) n += int32_t(t.refs.size());
        return n;
    }
    int32_t NamesAt() const { return 56 + 12 * int32_t(types.size()) + 20 * RefCount(); }
    int32_t Size() const { return types.empty() ? 0 : NamesAt() + int32_t(names.size()); }
    Type* Find(ResType type) {
        for (Type& t : types)
            if (t.type == type) return &t;
        return nullptr;
    }
    // The map in memory (file id `f`, tokens in the handle words), or as closing writes it
    // behind `dataSize` bytes of data laid out in map order.
    Bytes Render(ResFile f, bool file, int32_t dataSize = 0) const {
        Bytes m(types.empty() ? 52 : size_t(Size()), 0);
        memcpy(m.data(), "RSRC\r\n\0\3TESTCRTR", 16);
        if (!file) std::swap(m[6], m[7]);
        const int32_t header[] = {
            32 + dataSize,          Size(), 32,      dataSize, 0, file ? 0 : f,
            dirty ? RFileDirty : 0, 52,     nameList};
        for (int i = 0; i < 9; ++i) Put32(m, 16 + 4 * size_t(i), header[i], file);
        if (types.empty()) return m;
        Put32(m, 52, int32_t(types.size()) - 1, file);
        size_t at = 56 + 12 * types.size();
        int32_t offset = 0;
        for (size_t i = 0; i < types.size(); ++i) {
            memcpy(m.data() + 56 + 12 * i, &types[i].type, 4);
            Put32(m, 60 + 12 * i, int32_t(types[i].refs.size()) - 1, file);
            Put32(m, 64 + 12 * i, int32_t(at) - 52, file);
            for (const Ref& r : types[i].refs) {
                const int32_t words[] = {
                    r.id, r.nameOffset, file ? r.attrs & ~RAttrChanged : r.attrs, file ? offset : 0,
                    file ? 0 : int32_t(MemHandleToken(r.h))};
                for (int w = 0; w < 5; ++w) Put32(m, at + 4 * size_t(w), words[w], file);
                at += 20;
                offset += (int32_t(r.data.size()) + 7) & ~3;
            }
        }
        std::copy(names.begin(), names.end(), m.begin() + NamesAt());
        return m;
    }
    // The file that closing leaves: the new file's header alone while the map is empty.
    Bytes FileBytes() const {
        Bytes out = Render(0, true);
        out.resize(32);
        if (types.empty()) return out;
        for (const Type& t : types)
            for (const Ref& r : t.refs) {
                AppendBig32(out, uint32_t(r.data.size()));
                Append(out, r.data);
                out.resize((out.size() + 3) & ~size_t(3), 0);
            }
        const Bytes map = Render(0, true, int32_t(out.size()) - 32);
        std::copy(map.begin(), map.begin() + 32, out.begin());
        Append(out, map);
        return out;
    }
    // A reference's name as the manager reads it: through the name-list offset, bounded by
    // the size word.
    std::string NameOf(const Bytes& map, const Ref& r) const {
        const int64_t at = int64_t{nameList} + r.nameOffset;
        if (r.nameOffset == -1 || at < 0 || at >= Size() || at + 1 + map[at] > Size()) return "";
        return std::string(map.begin() + at, map.begin() + at + 1 + map[at]);
    }
};

// Applies steps to an open, new, empty file and to the model alike.
class Runner {
  public:
    explicit Runner(ResFile f) : f_(f) {}
    ~Runner() {
        for (Handle h : loose_) MemDisposeHandle(h);
    }
    // "" when the file behaved as the model, else what differed.
    std::string Apply(const Step& s);
    std::string Look() const {
        ResFileEntry* e = nullptr;
        if (RLookupFile(f_, &e)) return "RLookupFile failed";
        const Bytes got(e->map, e->map + MemHandleSize(e->mapHandle));
        const Bytes want = model_.Render(f_, false);
        if (got == want) return "";
        size_t at = 0;
        while (at < got.size() && at < want.size() && got[at] == want[at]) ++at;
        return "the map (" + std::to_string(got.size()) + " bytes) differs from the model's (" +
               std::to_string(want.size()) + ") at " + std::to_string(at);
    }
    const Model& model() const { return model_; }

  private:
    // The reference `pick` counts to in map order, or null in an empty map.
    Ref* Pick(uint8_t pick, size_t* type = nullptr, size_t* index = nullptr);
    std::string Lookup(const Step& s, ResType type);

    ResFile f_;
    Model model_;
    std::vector<Handle> loose_;  // handles taken back from the file, disposed at the end
    int32_t serial_ = 0;
};

inline Ref* Runner::Pick(uint8_t pick, size_t* type, size_t* index) {
    int32_t n = model_.RefCount();
    if (n == 0) return nullptr;
    n = pick % n;
    for (size_t t = 0; t < model_.types.size(); ++t)
        for (size_t i = 0; i < model_.types[t].refs.size(); ++i)
            if (n-- == 0) {
                if (type) *type = t, *index = i;
                return &model_.types[t].refs[i];
            }
    return nullptr;
}

#define EDIT_EXPECT(got, want)                                                       \
    if ((got) != (want))                                                             \
        return std::string(#got) + " gave " + std::to_string(got) + ", the model " + \
               std::to_string(want);

inline std::string Runner::Apply(const Step& s) {
    Model& m = model_;
    const ResType type = T(kTypes[s.type % 3]);
    const std::string& name = kNames[s.name % std::size(kNames)];
    Ref* r = Pick(s.pick);
    switch (s.kind % kKinds) {
        case kAdd: {
            Ref add{s.id, name.empty() ? -1 : int32_t(m.names.size()), RAttrChanged, nullptr, {}};
            for (int i = 0; i < s.extra % 6; ++i) add.data.push_back(uint8_t(serial_ * 7 + i));
            ++serial_;
            add.h = MemNewHandle(int32_t(add.data.size()));
            if (!add.data.empty()) memcpy(*add.h, add.data.data(), add.data.size());
            const std::string p = P(name);
            const MgStatus got = RAdd(add.h, f_, type, s.id, name.empty() ? nullptr : PS(p));
            Type* t = m.Find(type);
            bool taken = false;
            for (const Ref& o : t ? t->refs : std::vector<Ref>()) taken |= o.id == s.id;
            if (taken) MemDisposeHandle(add.h);
            EDIT_EXPECT(got, taken ? MgResourceDuplicate : MgNoError);
            if (taken) break;
            const int32_t delta = m.types.empty() ? 36 : t ? 20 : 32;
            const int32_t size = (m.types.empty() ? 52 : m.Size()) + delta + int32_t(p.size());
            if (m.types.empty())
                m.nameList = name.empty() ? 0 : 88;
            else if (m.nameList != 0)
                m.nameList += delta;
            else if (!name.empty())
                m.nameList = size - int32_t(p.size());
            if (!name.empty()) m.names.insert(m.names.end(), p.begin(), p.end());
            if (!t) t = &m.types.emplace_back(Type{type, {}});
            auto at = t->refs.begin();
            while (at != t->refs.end() && at->id < s.id) ++at;
            t->refs.insert(at, add);
            m.dirty = true;
            break;
        }
        case kAddTwice:
            if (r) EDIT_EXPECT(RAdd(r->h, f_, type, s.id, nullptr), MgResourceDuplicate);
            return "";
        case kRemove: {
            size_t ti = 0, ri = 0;
            if (!(r = Pick(s.pick, &ti, &ri))) {
                EDIT_EXPECT(RRemove(nullptr, f_), MgResourceDuplicate);
                return "";
            }
            const Bytes map = m.Render(f_, false);
            int32_t refEnd = 56 + 12 * int32_t(m.types.size()) + 20 * int32_t(ri + 1);
            for (size_t i = 0; i < ti; ++i) refEnd += 20 * int32_t(m.types[i].refs.size());
            const int64_t at = int64_t{m.nameList} + r->nameOffset;
            const bool named = r->nameOffset != -1;
            MgStatus want = r->attrs & RAttrProtected ? MgResourceNotFound : MgNoError;
            if (!want && named && (at < refEnd || at >= m.Size() || at + 1 + map[at] > m.Size()))
                want = MgIOError;
            // A name that the broken offset places among the references would be cut out of
            // them: no sound map comes out, so that step isn't taken.
            if (!want && named && at < m.NamesAt()) return "";
            EDIT_EXPECT(RRemove(r->h, f_), want);
            if (want) return "";
            loose_.push_back(r->h);
            m.dirty = true;
            Type& t = m.types[ti];
            const int32_t removed = r->nameOffset;
            const bool entryGoes = t.refs.size() == 1;
            if (entryGoes && m.types.size() == 1) {
                m = Model{{}, {}, 0, true};
                break;
            }
            m.nameList -= entryGoes ? 32 : 20;
            if (named) {
                const int32_t cut = 1 + map[at];
                m.names.erase(m.names.begin() + (at - m.NamesAt()),
                              m.names.begin() + (at - m.NamesAt() + cut));
                for (Type& o : m.types)
                    for (Ref& x : o.refs)
                        if (x.nameOffset > removed) x.nameOffset -= cut;
            }
            t.refs.erase(t.refs.begin() + std::ptrdiff_t(ri));
            if (entryGoes) m.types.erase(m.types.begin() + std::ptrdiff_t(ti));
            break;
        }
        case kChange: {
            const int32_t attrs[] = {0, RAttrChanged | RAttrProtected, RAttrChanged | 0x40};
            const int32_t a = attrs[s.extra % 3];
            if (!r) {
                EDIT_EXPECT(RChanged(nullptr), MgResourceNotFound);
                return "";
            }
            EDIT_EXPECT(a ? RSetAttrs(r->h, a) : RChanged(r->h), MgNoError);
            r->attrs = a ? a : r->attrs | RAttrChanged;
            m.dirty = true;
            break;
        }
        default:
            return Lookup(s, type);
    }
    return "";
}

inline std::string Runner::Lookup(const Step& s, ResType type) {
    const Model& m = model_;
    const Bytes map = m.Render(f_, false);
    const Type* t = model_.Find(type);
    const std::vector<Ref> none;
    const std::vector<Ref>& refs = t ? t->refs : none;
    Handle h = nullptr, want = nullptr;
    switch (s.extra % 5) {
        case 0:
            for (const Ref& r : refs)
                if (r.id == s.id) want = r.h;
            EDIT_EXPECT(RGet(f_, type, s.id, &h), want ? MgNoError : MgResourceNotFound);
            break;
        case 1: {
            const std::string p = P(kNames[s.name % std::size(kNames)]);
            for (const Ref& r : refs) {
                const std::string n = m.NameOf(map, r);
                if (!want && r.nameOffset != -1 && n.size() == p.size() &&
                    PStringSameNoCase(PS(n), PS(p)))
                    want = r.h;
            }
            EDIT_EXPECT(RGetNamed(f_, type, PS(p), &h), want ? MgNoError : MgResourceNotFound);
            break;
        }
        case 2: {
            const size_t index = s.pick % (refs.size() + 2);
            if (index >= 1 && index <= refs.size()) want = refs[index - 1].h;
            EDIT_EXPECT(RGetInd(f_, type, int32_t(index), &h),
                        want ? MgNoError : MgResourceNotFound);
            break;
        }
        case 3: {
            // Free ids from the counter, started at a resource's id: the first the counter
            // reaches that the type doesn't have.
            size_t ti = 0, ri = 0;
            const Ref* taken = const_cast<Runner*>(this)->Pick(s.pick, &ti, &ri);
            const int32_t start = taken ? taken->id : s.id, saved = gNextResId;
            const std::vector<Ref>& in = taken ? m.types[ti].refs : refs;
            int32_t want = m.types.empty() ? 128 : start;
            while (std::any_of(in.begin(), in.end(), [&](const Ref& r) { return r.id == want; }))
                ++want;
            gNextResId = start;
            const int32_t got = RUniqueID(f_, taken ? m.types[ti].type : type), next = gNextResId;
            gNextResId = saved;
            EDIT_EXPECT(got, want);
            EDIT_EXPECT(next, m.types.empty() ? start : 128);
            return "";
        }
        default: {
            int32_t types = -1, count = -1, id = 0;
            ResType got = 0;
            uint8_t name[256] = {};
            EDIT_EXPECT(RCountTypes(f_, &types), MgNoError);
            EDIT_EXPECT(types, int32_t(m.types.size()));
            EDIT_EXPECT(RCount(f_, type, &count), MgNoError);
            EDIT_EXPECT(count, int32_t(refs.size()));
            size_t ti = 0, ri = 0;
            const Ref* r = const_cast<Runner*>(this)->Pick(s.pick, &ti, &ri);
            if (!r) return "";
            EDIT_EXPECT(RGetInfo(r->h, &id, &got, name), MgNoError);
            const std::string n = m.NameOf(map, *r);
            if (id != r->id || got != m.types[ti].type ||
                std::string(name, name + 1 + name[0]) != (n.empty() ? std::string(1, '\0') : n))
                return "RGetInfo differs";
            return "";
        }
    }
    return h == want ? "" : "a lookup gave another handle";
}

// A step from any source of random bytes: `next(n)` gives a number below n.
template <typename Next>
Step MakeStep(Next next) {
    // Adds come most often, so that maps grow as well as shrink.
    const Kind kinds[] = {kAdd, kAdd, kAdd, kAddTwice, kRemove, kChange, kLookup, kLookup};
    Step s;
    s.kind = kinds[next(8)];
    s.type = uint8_t(next(3));
    s.name = uint8_t(next(std::size(kNames)));
    s.pick = uint8_t(next(256));
    s.extra = uint8_t(next(256));
    s.id = int8_t(int(next(14)) - 3);
    s.look = next(2) == 1;
    return s;
}

// Runs `steps` on a new file at `path` and closes it; "" when every step and the closed file's
// bytes matched the model, else the first difference. `closed` gets the file's bytes.
inline std::string RunSteps(Path path, const std::string& leafPath, const std::vector<Step>& steps,
                            Bytes* closed) {
    ResFile f = 0;
    if (RCreateCorrectFile(path, 1, T("CRTR"), T("TEST"), 0644) ||
        ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr))
        return "can't make the file";
    Bytes expected;
    {
        Runner run(f);
        for (size_t i = 0; i < steps.size(); ++i) {
            std::string why = run.Apply(steps[i]);
            if (why.empty() && steps[i].look) why = run.Look();
            if (!why.empty()) {
                RCloseFile(f);
                return "step " + std::to_string(i) + ": " + why;
            }
        }
        if (std::string why = run.Look(); !why.empty()) {
            RCloseFile(f);
            return "at the end: " + why;
        }
        expected = run.model().FileBytes();
        EDIT_EXPECT(RCloseFile(f), MgNoError);
    }
    std::ifstream in(leafPath, std::ios::binary);
    *closed = Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return *closed == expected ? "" : "the closed file differs from the model's";
}

}  // namespace edits
