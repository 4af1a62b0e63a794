// mgrsrc extract: the data bytes of one resource, or of all of them, exactly as they stand
// in the file.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>

#include "mg/pstring.h"
#include "mgrsrc/mgrsrc.h"
#include "platform/platform.h"

namespace {

const char kHelp[] =
    "usage: mgrsrc extract [-o OUT] [--name] FILE TYPE ID|NAME\n"
    "       mgrsrc extract --all FILE DIR\n"
    "\n"
    "Writes the data bytes of one resource to OUT (- for standard output), by default to\n"
    "TYPE_ID.bin in the current directory. TYPE has up to four characters, blanks fill.\n"
    "An argument that reads as a whole decimal number is an id, anything else a name\n"
    "(compared without regard to case; the first in id order wins); --name takes it as a\n"
    "name always. With --all, writes every resource into DIR (made if missing) as\n"
    "TYPE_ID.bin, where every character of the type other than A-Z, a-z, 0-9 and - is\n"
    "written %HH, so that the names are safe on every host; a name met twice (ids repeated,\n"
    "or types that differ only in case) gets ~2, ~3, ... before .bin.\n"
    "\n"
    "Says on standard output what it wrote, unless that is where the data went.\n"
    "\n"
    "exit status: 0 written, 1 bad command line, 2 unreadable or unsound file, no such\n"
    "resource, data that can't be loaded, or an output that can't be written.\n";

bool WriteResource(const Image& image, const Resource& r, const std::string& to) {
    if (r.size < 0) {
        std::fprintf(stderr, "mgrsrc extract: the data of %s %d in %s can't be loaded\n",
                     TypeText(r.type).c_str(), r.id, image.path.c_str());
        return false;
    }
    if (!WriteBytes(to, image.Data(r), r.size)) {
        std::fprintf(stderr, "mgrsrc extract: cannot write %s\n", to.c_str());
        return false;
    }
    return true;
}

int ExtractAll(const Image& image, const std::string& dir) {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(dir), error);
    if (error) {
        std::fprintf(stderr, "mgrsrc extract: cannot make %s: %s\n", dir.c_str(),
                     error.message().c_str());
        return kExitFailed;
    }
    const std::vector<std::string> names = DataFileNames(image);
    int status = kExitOk;
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string to = (std::filesystem::path(dir) / names[i]).string();
        if (!WriteResource(image, image.resources[i], to)) status = kExitFailed;
    }
    if (status == kExitOk)
        std::printf("wrote %s into %s\n", Count(names.size(), "resource").c_str(), dir.c_str());
    return status;
}

const Resource* Find(const Image& image, ResType type, const std::string& key, bool byName) {
    int32_t id = 0;
    if (!byName && ParseId(key, &id)) {
        for (const Resource& r : image.resources)
            if (r.type == type && r.id == id) return &r;
        return nullptr;
    }
    if (key.size() > 255) return nullptr;
    uint8_t wanted[256];
    wanted[0] = uint8_t(key.size());
    std::copy(key.begin(), key.end(), wanted + 1);
    const Resource* found = nullptr;
    for (const Resource& r : image.resources) {
        if (r.type != type || !r.named || (found && found->id <= r.id)) continue;
        uint8_t name[256];
        name[0] = uint8_t(r.name.size());
        std::copy(r.name.begin(), r.name.end(), name + 1);
        if (PStringSameNoCase(name, wanted)) found = &r;
    }
    return found;
}

}  // namespace

bool WriteBytes(const std::string& path, const uint8_t* data, int32_t size) {
    if (path == "-") {
        return plat::BinaryStandardOutput() &&
               std::fwrite(data, 1, size_t(size), stdout) == size_t(size) &&
               std::fflush(stdout) == 0;
    }
    std::ofstream out(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), size);
    out.close();
    return bool(out);
}

std::vector<std::string> DataFileNames(const Image& image) {
    std::vector<std::string> names;
    names.reserve(image.resources.size());
    std::set<std::string> used;  // lower-cased: some hosts don't tell case apart
    for (const Resource& r : image.resources) {
        const std::string base = SafeFileName(r.type, r.id);
        std::string name = base;
        for (int n = 2;; ++n) {
            if (used.insert(FoldedFileName(name)).second) break;
            name = base.substr(0, base.size() - 4) + '~' + std::to_string(n) + ".bin";
        }
        names.push_back(std::move(name));
    }
    return names;
}

int ExtractCommand(const std::vector<std::string>& args) {
    CommandLine line;
    if (int done = SplitArgs("extract", kHelp, args, {"--all", "--name"}, {"-o"}, &line); done >= 0)
        return done;
    const auto& ops = line.operands;
    const bool all = line.Has("--all");
    if (all && (ops.size() != 2 || line.Value("-o") || line.Has("--name")))
        return UsageError("extract", "--all expects FILE DIR and no -o or --name");
    if (!all && ops.size() != 3) return UsageError("extract", "expects FILE TYPE ID|NAME");
    ResType type = 0;
    if (!all && !ParseType(ops[1], &type))
        return UsageError("extract", "TYPE '" + ops[1] + "' isn't one to four characters");
    Image image;
    if (!LoadImage("extract", ops[0], false, false, &image)) return kExitFailed;
    if (!RequireSound("extract", image)) return kExitFailed;
    if (all) return ExtractAll(image, ops[1]);
    const Resource* r = Find(image, type, ops[2], line.Has("--name"));
    if (!r) {
        std::fprintf(stderr, "mgrsrc extract: %s has no resource %s %s\n", image.path.c_str(),
                     TypeText(type).c_str(), ops[2].c_str());
        return kExitFailed;
    }
    const std::string* out = line.Value("-o");
    const std::string to = out ? *out : SafeFileName(r->type, r->id);
    if (!WriteResource(image, *r, to)) return kExitFailed;
    // Standard output holds the data itself when it is the output.
    if (to != "-")
        std::printf("wrote %s %d, %s, to %s\n", TypeText(r->type).c_str(), r->id,
                    Count(size_t(r->size), "byte").c_str(), to.c_str());
    return kExitOk;
}
