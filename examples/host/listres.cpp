// listres: lists the resources of a resource file, such as a package that mxsbutil made.
//
//   listres <resource file>
//
// Prints the file's type and creator and the count of its resources, then one line for each
// resource: type, id, name and size. Exit status 0, or 1 when the file cannot be read as a
// resource file.
//
// A host of the layer starts the managers it uses, in this order, before any other call. The
// host services of mg/host.h come from mg::host here; a host may supply its own instead.
#include <mg/filemgr.h>
#include <mg/memory.h>
#include <mg/path.h>
#include <mg/resource.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

std::string TypeText(ResType type) {
    // A ResType holds its four characters in text order.
    return std::string(reinterpret_cast<const char*>(&type), 4);
}

// One line for each resource, type by type in the file's order.
MgStatus Describe(ResFile file, std::vector<std::string>* lines) {
    int32_t typeCount = 0;
    if (MgStatus status = RCountTypes(file, &typeCount)) return status;
    for (int32_t t = 1; t <= typeCount; ++t) {
        ResType type = 0;
        int32_t count = 0;
        if (MgStatus status = RGetIndType(file, &type, t)) return status;
        if (MgStatus status = RCount(file, type, &count)) return status;
        for (int32_t i = 1; i <= count; ++i) {
            Handle h = nullptr;
            int32_t id = 0;
            int32_t size = 0;
            uint8_t name[256] = {0};  // a PStr: count byte, then the characters
            if (MgStatus status = RGetInd(file, type, i, &h)) return status;
            if (MgStatus status = RGetInfo(h, &id, &type, name)) return status;
            if (MgStatus status = RGetSize(h, &size)) return status;
            char line[400];
            std::snprintf(line, sizeof line, "%s %ld \"%.*s\" %ld bytes", TypeText(type).c_str(),
                          long(id), int(name[0]), reinterpret_cast<const char*>(name + 1),
                          long(size));
            lines->push_back(line);
        }
    }
    return MgNoError;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: listres <resource file>\n");
        return 1;
    }
    if (InitMemoryManager() != MgNoError) return 1;
    FMInit();
    RInit();

    // The layer takes absolute paths only.
    const std::string text = std::filesystem::absolute(argv[1]).string();
    Path path = nullptr;
    if (FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &path)) {
        std::fprintf(stderr, "listres: bad path %s\n", text.c_str());
        return 1;
    }
    ResFile file = 0;
    ResType fileType = 0;
    ResType creator = 0;
    MgStatus status = ROpenFile(path, FMModeRead, &file, &fileType, &creator);
    FPathRelease(path);
    if (status) {
        std::fprintf(stderr, "listres: %s is not a readable resource file (%ld)\n", text.c_str(),
                     long(status));
        return 1;
    }
    std::vector<std::string> lines;
    status = Describe(file, &lines);
    RCloseFile(file);
    if (status) {
        std::fprintf(stderr, "listres: error %ld while listing %s\n", long(status), text.c_str());
        return 1;
    }
    std::printf("file type %s, creator %s, %zu resources\n", TypeText(fileType).c_str(),
                TypeText(creator).c_str(), lines.size());
    for (const std::string& line : lines) std::printf("%s\n", line.c_str());
    return 0;
}
