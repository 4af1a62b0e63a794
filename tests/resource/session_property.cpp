// Random edit sessions on two open files, against a model of what each file holds: adds (of
// ids the other file holds too), changes to other sizes, removals through the other file's
// id, releases, detaches, updates and reopenings. After every step the handle index finds each
// held handle in its own file and type, and no other; at the end each file holds the model,
// read from memory, from the file its memory image makes, and from the disk after closing.
// Also the edit model's property: the exact map and file of random edits of one new file.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <map>
#include <tuple>

#include "resource/edit_model.h"

namespace {

// Sizes around the 4-byte pad and the 4096-byte copy steps.
Bytes Data(uint8_t choice, int32_t seed) {
    const size_t sizes[] = {0, 1, 3, 4, 17, 4093, 6000};
    return Fill(sizes[choice % 7], seed);
}

// Every case makes and syncs files: fewer, longer sessions keep the suite's time, unless
// RC_PARAMS asks otherwise.
[[maybe_unused]] const int kCases = setenv("RC_PARAMS", "max_success=25", 0);

using Step = std::tuple<uint8_t, uint8_t, uint8_t, uint8_t>;  // operation, file, type, detail

RC_GTEST_FIXTURE_PROP(ResourceTest, EditSessionsKeepTheModel, ()) {
    const auto steps = *rc::gen::resize(80, rc::gen::arbitrary<std::vector<Step>>());
    const char* const types[] = {"AAAA", "BBBB", "CCCC"};
    const std::string leaves[] = {"f0", "f1"};
    ResFile files[2] = {CreateAndOpen(leaves[0]), CreateAndOpen(leaves[1])};
    // What each file holds: types in the order of their first addition, ids sorted within a
    // type, as the file lists them.
    std::vector<Res> models[2];
    // Handles still allocated (loaded, added or detached), with the file and type holding
    // them: file -1 once detached. Closing a file disposes every handle it holds.
    std::map<Handle, std::pair<int, std::string>> held;
    auto forget = [&](int which) {
        std::erase_if(held, [&](auto& e) { return e.second.first == which; });
    };
    int32_t step = 0;
    for (const auto& [op, which, typeChoice, detail] : steps) {
        ResFile& f = files[which % 2];
        std::vector<Res>& model = models[which % 2];
        const std::string type = types[typeChoice % 3];
        auto ofType = [&](const Res& r) { return r.type == type; };
        const auto group = std::find_if(model.begin(), model.end(), ofType);
        const int32_t count = int32_t(std::count_if(group, model.end(), ofType));
        Handle h = nullptr;
        ++step;
        if (op % 8 < 3) {  // add
            const int32_t id = detail % 40 - 8;
            const std::string name = detail & 0x40 ? "n" + std::to_string(step) : "";
            const Bytes data = Data(detail / 7, step);
            // Ids taken in this file: the edit model's. The other file's don't count.
            if (std::any_of(group, group + count, [&](const Res& r) { return r.id == id; }))
                continue;
            held[AddData(f, type.c_str(), id, data, name)] = {which % 2, type};
            model.insert(
                std::find_if(group, group + count, [&](const Res& r) { return r.id > id; }),
                {type, id, name, data, RAttrChanged});
        } else if (op % 8 < 6 && count) {  // change, remove, release or detach
            const auto ref = group + detail % count;
            // Removing an unnamed resource from a map with no names spoils the name-list
            // offset, as it is meant to; the example tests follow that road.
            if (op % 8 == 4 &&
                std::all_of(model.begin(), model.end(), [](auto& r) { return r.name.empty(); }))
                continue;
            RC_ASSERT(RGetInd(f, T(type.c_str()), 1 + detail % count, &h) == MgNoError);
            held[h] = {which % 2, type};
            if (op % 8 == 3) {
                ref->data = Data(detail / 7, step);
                ref->attrs = RAttrChanged;
                MemSetHandleBytes(&h, ref->data.data(), int32_t(ref->data.size()));
                RC_ASSERT(RChanged(h) == MgNoError);
            } else if (op % 8 == 4) {
                RC_ASSERT(RRemove(h, files[1 - which % 2]) == MgNoError);
                held.erase(h);
                MemDisposeHandle(h);
                model.erase(ref);
            } else if (!(ref->attrs & RAttrChanged)) {  // unloaded again, or let go
                RC_ASSERT((detail & 1 ? RDetach(h) : RRelease(h)) == MgNoError);
                detail & 1 ? void(held[h].first = -1) : void(held.erase(h));
            }
        } else if (op % 8 == 6 || (op % 8 == 7 && detail % 8 == 0)) {  // update, or reopen
            if (op % 8 == 7) forget(which % 2);
            RC_ASSERT((op % 8 == 6 ? RUpdateFile(f) : RCloseFile(f)) == MgNoError);
            if (op % 8 == 7) f = Open(leaves[which % 2]);
            for (Res& r : model) r.attrs = 0;
        }
        for (const auto& [k, by] : held) {  // the index finds each handle's own reference
            ResFileEntry* entry = nullptr;
            ResRefEntry* ref = nullptr;
            ResType t = 0;
            const MgStatus found = RFindHandle(k, &entry, &ref, &t);
            RC_ASSERT(found == (by.first >= 0 ? MgNoError : MgResourceNotFound));
            if (!found)
                RC_ASSERT(std::make_tuple(entry->fileId, MemHandleFromToken(ref->handle), t) ==
                          std::make_tuple(files[by.first], k, T(by.second.c_str())));
        }
    }
    // The first file through its memory image, which then describes the map; the second
    // through the disk.
    RC_ASSERT(Records(files[0]) == models[0] && Records(files[1]) == models[1]);
    for (auto& model : models)  // no changed bits on disk
        for (Res& r : model) r.attrs = 0;
    WriteFile("image", Image(files[0]));
    RC_ASSERT(FileRecords(FilePath("image")) == models[0]);
    forget(0);
    Drop(files[0]);
    forget(1);
    RC_ASSERT(RCloseFile(files[1]) == MgNoError);
    RC_ASSERT(FileRecords(FilePath(leaves[1])) == models[1]);
    for (const auto& e : held) MemDisposeHandle(e.first);
}

// Random sequences of adds (named and not), removes, changes and lookups on a new file,
// against the edit model: after every step that looks, the map seen through RLookupFile is the
// model's, byte for byte, and the closed file holds the model's bytes. Steps that don't look
// let adds pile up unobserved, so that the map is also seen after many at once.
RC_GTEST_FIXTURE_PROP(ResourceTest, MapAndFileFollowTheEditModel, ()) {
    const auto raw = *rc::gen::arbitrary<std::vector<std::array<uint32_t, 7>>>();
    std::vector<edits::Step> steps;
    for (const auto& r : raw) steps.push_back(edits::MakeStep(r));
    RC_ASSERT(edits::RunSteps(MakePath("edits"), FilePath("edits"), steps) == "");
}

}  // namespace
