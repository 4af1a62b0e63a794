// mgrsrc unpack: a resource file as a folder: each resource's data as a file, and a manifest
// that holds everything else pack needs to build the file again.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>

#include "mgrsrc/manifest.h"
#include "mgrsrc/mgrsrc.h"

namespace {

const char kHelp[] =
    "usage: mgrsrc unpack FILE DIR\n"
    "\n"
    "Writes every resource's data into DIR (made if missing) under the names extract --all\n"
    "gives, and DIR/resources.json, the manifest: version, file type and creator, then one line\n"
    "per resource in map order with its type, id, name, attributes and data file. Bytes of\n"
    "types and names that aren't printable ASCII are written \\u00HH, the code point of the\n"
    "same number. Where the file's layout differs from the one pack makes, the manifest also\n"
    "keeps each resource's place in the data section (dataOrder), each name's place in the\n"
    "name list (nameOrder) and an empty name list (emptyNameList), so that pack gives back\n"
    "the same bytes. Files that a manifest already in DIR names and the new one doesn't are\n"
    "removed. A file that verify calls unsound is refused.\n"
    "\n"
    "exit status: 0 unpacked, 1 bad command line, 2 unreadable or unsound file, or an output\n"
    "that can't be written.\n";

}  // namespace

int UnpackCommand(const std::vector<std::string>& args) {
    CommandLine line;
    if (int done = SplitArgs("unpack", kHelp, args, {}, {}, &line); done >= 0) return done;
    if (line.operands.size() != 2) return UsageError("unpack", "expects FILE DIR");
    const std::string& dir = line.operands[1];
    Image image;
    if (!LoadImage("unpack", line.operands[0], false, false, &image) ||
        !RequireVerified("unpack", image))
        return kExitFailed;
    namespace fs = std::filesystem;
    std::error_code error;
    fs::create_directories(fs::path(dir), error);
    if (error) {
        std::fprintf(stderr, "mgrsrc unpack: cannot make %s: %s\n", dir.c_str(),
                     error.message().c_str());
        return kExitFailed;
    }
    const std::vector<std::string> before = ManifestFiles(dir);
    const std::vector<std::string> files = DataFileNames(image);
    for (size_t i = 0; i < files.size(); ++i) {
        const Resource& r = image.resources[i];
        const std::string to = (fs::path(dir) / files[i]).string();
        if (!WriteBytes(to, image.Data(r), r.size)) {
            std::fprintf(stderr, "mgrsrc unpack: cannot write %s\n", to.c_str());
            return kExitFailed;
        }
    }
    const std::string text = ManifestText(image, files);
    const std::string manifest = (fs::path(dir) / kManifestName).string();
    if (!WriteBytes(manifest, reinterpret_cast<const uint8_t*>(text.data()),
                    int32_t(text.size()))) {
        std::fprintf(stderr, "mgrsrc unpack: cannot write %s\n", manifest.c_str());
        return kExitFailed;
    }
    // What an earlier unpack left that this one doesn't write, so that a folder kept under
    // version control shows a resource that went as a file that went. Names compare without
    // regard to case, as some hosts' files do.
    std::set<std::string> now;
    for (const std::string& file : files) now.insert(FoldedFileName(file));
    for (const std::string& old : before)
        if (!now.count(FoldedFileName(old))) fs::remove(fs::path(dir) / old, error);
    std::printf("unpacked %s of %s into %s\n", Count(files.size(), "resource").c_str(),
                image.path.c_str(), dir.c_str());
    return kExitOk;
}
