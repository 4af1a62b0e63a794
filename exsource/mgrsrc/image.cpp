// Reading a resource file whole and checking it with the library.
#include <cstdio>
#include <fstream>

#include "mgrsrc/mgrsrc.h"
#include "mgrsrc/resfile.h"

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
    if (ref->name) r.nameAt = ref->name - loading->image->bytes.get();
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

}  // namespace

bool LoadImage(const std::string& command, const std::string& path, bool keepFindings, bool notices,
               Image* image, const EachResource& each) {
    image->path = path;
    std::ifstream in(path, std::ios::binary);
    if (in) {
        in.seekg(0, std::ios::end);
        const std::streamoff size = in.tellg();
        in.seekg(0, std::ios::beg);
        if (size >= 0) {
            // Not cleared first: the read fills it.
            image->bytes = std::make_unique_for_overwrite<uint8_t[]>(size_t(size) + 1);
            image->length = size;
            in.read(reinterpret_cast<char*>(image->bytes.get()), size);
        }
    }
    if (!in) {
        std::fprintf(stderr, "mgrsrc %s: cannot read %s: %s\n", command.c_str(), path.c_str(),
                     WhyUnreadable(path).c_str());
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
