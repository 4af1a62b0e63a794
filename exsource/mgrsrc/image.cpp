// Reading a resource file whole and checking it with the library.
#include <cstdio>
#include <filesystem>

#include "mg/filemgr.h"
#include "mg/path.h"
#include "mgrsrc/mgrsrc.h"

namespace {

struct Loading {
    Image* image;
    bool keepFindings;
    const EachResource* each;
};

void KeepFinding(void* context, const RCheckFinding* f) {
    auto* loading = static_cast<Loading*>(context);
    auto& findings = loading->image->findings;
    // The first fault is needed for messages even when the findings aren't kept.
    if (loading->keepFindings || (!f->notice && findings.empty())) findings.push_back(*f);
}

void KeepResource(void* context, const RCheckedRef* ref) {
    auto* loading = static_cast<Loading*>(context);
    if (*loading->each) {
        (*loading->each)(*ref);
        return;
    }
    Resource r;
    r.type = ref->type;
    r.id = ref->id;
    r.attrs = ref->attrs;
    r.named = ref->name != nullptr;
    if (ref->name) r.name.assign(reinterpret_cast<const char*>(ref->name + 1), ref->name[0]);
    r.entryAt = ref->entryAt;
    r.dataAt = ref->dataAt;
    r.size = ref->size;
    loading->image->resources.push_back(std::move(r));
}

std::string OffsetText(int64_t offset) {
    char text[48];
    std::snprintf(text, sizeof text, "offset %lld (0x%llX)", static_cast<long long>(offset),
                  static_cast<unsigned long long>(offset));
    return text;
}

// Reads the whole file through the library's byte files, which open regular files only and
// never wait on one (a pipe, say), and give no length that doesn't fit the format's offsets.
bool ReadWhole(const std::string& path, Image* image) {
    std::error_code error;
    const std::string name = std::filesystem::absolute(path, error).string();
    Path p = nullptr;
    if (error || FTextToPath(reinterpret_cast<const uint8_t*>(name.data()),
                             static_cast<int32_t>(name.size()), &p))
        return false;
    FileRef ref = 0;
    int32_t size = 0;
    bool read = !FMOpen(&ref, p, FMModeRead, FMShareAll) && !FGetEOF(ref, &size);
    if (read) {
        // Not cleared first: the read fills it.
        image->bytes = std::make_unique_for_overwrite<uint8_t[]>(size_t(size) + 1);
        image->length = size;
        read = !FMRead(ref, size, nullptr, image->bytes.get());
    }
    if (ref) FMClose(ref);
    FPathRelease(p);
    return read;
}

}  // namespace

bool LoadImage(const std::string& command, const std::string& path, bool keepFindings, bool notices,
               Image* image, const EachResource& each) {
    image->path = path;
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    if (!error && type != std::filesystem::file_type::regular) {
        std::fprintf(stderr, "mgrsrc %s: %s: not a regular file\n", command.c_str(), path.c_str());
        return false;
    }
    if (!ReadWhole(path, image)) {
        std::fprintf(stderr, "mgrsrc %s: cannot read %s\n", command.c_str(), path.c_str());
        return false;
    }
    Loading loading{image, keepFindings, &each};
    RCheckSink sink{};
    sink.context = &loading;
    sink.finding = KeepFinding;
    sink.resource = KeepResource;
    sink.notices = notices;
    if (RCheckBytes(image->bytes.get(), image->length, &sink, &image->summary)) {
        std::fprintf(stderr, "mgrsrc %s: out of memory checking %s\n", command.c_str(),
                     path.c_str());
        return false;
    }
    return true;
}

std::string FirstFault(const Image& image) {
    for (const RCheckFinding& f : image.findings)
        if (!f.notice) return OffsetText(f.offset) + ": " + f.text;
    return "";
}

bool RequireSound(const std::string& command, const Image& image) {
    if (!image.summary.openStatus) return true;
    std::fprintf(stderr, "mgrsrc %s: %s is not a sound resource file: %s\n", command.c_str(),
                 image.path.c_str(), FirstFault(image).c_str());
    return false;
}
