// Reading a resource file whole and checking it with the library.
#include <cstdio>
#include <fstream>
#include <iterator>

#include "mgrsrc/mgrsrc.h"

namespace {

void KeepFinding(void* context, const RCheckFinding* finding) {
    static_cast<Image*>(context)->findings.push_back(*finding);
}

void KeepResource(void* context, const RCheckedRef* ref) {
    Resource r;
    r.type = ref->type;
    r.id = ref->id;
    r.attrs = ref->attrs;
    r.named = ref->name != nullptr;
    if (ref->name) r.name.assign(reinterpret_cast<const char*>(ref->name + 1), ref->name[0]);
    r.entryAt = ref->entryAt;
    r.dataAt = ref->dataAt;
    r.size = ref->size;
    static_cast<Image*>(context)->resources.push_back(std::move(r));
}

std::string OffsetText(int64_t offset) {
    char text[48];
    std::snprintf(text, sizeof text, "offset %lld (0x%llX)", static_cast<long long>(offset),
                  static_cast<unsigned long long>(offset));
    return text;
}

}  // namespace

bool LoadImage(const std::string& command, const std::string& path, bool keepFindings, bool notices,
               Image* image) {
    image->path = path;
    std::ifstream in(path, std::ios::binary);
    if (in) {
        in.seekg(0, std::ios::end);
        const std::streamoff size = in.tellg();
        in.seekg(0, std::ios::beg);
        if (size >= 0) {
            image->bytes.resize(size_t(size));
            in.read(reinterpret_cast<char*>(image->bytes.data()), size);
        }
    }
    if (!in) {
        std::fprintf(stderr, "mgrsrc %s: cannot read %s\n", command.c_str(), path.c_str());
        return false;
    }
    RCheckSink sink{};
    sink.context = image;
    sink.finding = keepFindings ? KeepFinding : nullptr;
    sink.resource = KeepResource;
    sink.notices = notices;
    // The first fault is needed for messages even when the findings aren't kept.
    if (!keepFindings)
        sink.finding = [](void* context, const RCheckFinding* f) {
            auto* img = static_cast<Image*>(context);
            if (!f->notice && img->findings.empty()) img->findings.push_back(*f);
        };
    if (RCheckBytes(image->bytes.data(), int64_t(image->bytes.size()), &sink, &image->summary)) {
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
