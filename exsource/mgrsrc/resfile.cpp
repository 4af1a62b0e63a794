// Files through the library for the commands that write: paths, statuses in words, edits.
#include "mgrsrc/resfile.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "mg/filemgr.h"
#include "mg/path.h"
#include "mgrsrc/mgrsrc.h"

std::string StatusWords(MgStatus status) {
    return std::string(MgStatusText(status)) + " (" + MgStatusName(status) + ", " +
           std::to_string(status) + ")";
}

LibraryPath::LibraryPath(const std::string& name) {
    std::error_code error;
    const std::string text = std::filesystem::absolute(std::filesystem::path(name), error).string();
    status = error ? MgBadArgument
                   : FTextToPath(reinterpret_cast<const uint8_t*>(text.data()),
                                 int32_t(text.size()), &path);
}

LibraryPath::~LibraryPath() {
    if (path) FPathRelease(path);
}

// The library's own answer, which names the same conditions on every host.
std::string WhyUnreadable(const std::string& name) {
    LibraryPath p(name);
    FileRef ref = 0;
    MgStatus status = p.status ? p.status : FMOpen(&ref, p.path, FMModeRead, FMShareAll);
    if (ref) FMClose(ref);
    return status ? MgStatusText(status) : "a read error";
}

bool ReadWholeFile(const std::string& name, std::string* bytes, std::string* why) {
    std::ifstream in(std::filesystem::path(name), std::ios::binary);
    if (in) {
        in.seekg(0, std::ios::end);
        const std::streamoff size = in.tellg();
        in.seekg(0, std::ios::beg);
        if (size > INT32_MAX - 8) {
            *why = "too large for a resource";
            return false;
        }
        if (size >= 0) {
            bytes->resize(size_t(size));
            in.read(bytes->data(), size);
        }
    }
    if (!in) *why = WhyUnreadable(name);
    return bool(in);
}

MgStatus EditedFile::OpenAs(const std::string& name) {
    name_ = name;
    LibraryPath p(name);
    return p.status ? p.status : ROpenFile(p.path, FMModeReadWrite, &id_, nullptr, nullptr);
}

bool EditedFile::Open(const std::string& command, const std::string& name) {
    {
        // The library would open a file whose data is out of place, and a write-back that
        // has to run in place could then stop halfway: such a file isn't edited at all.
        Image image;
        if (!LoadImage(command, name, false, false, &image) || !RequireVerified(command, image))
            return false;
    }
    if (MgStatus status = OpenAs(name)) {
        std::fprintf(stderr, "mgrsrc %s: cannot open %s: %s\n", command.c_str(), name.c_str(),
                     StatusWords(status).c_str());
        return false;
    }
    return true;
}

MgStatus EditedFile::Close() {
    const MgStatus status = RCloseFile(id_);
    if (!status) id_ = 0;
    return status;
}

bool EditedFile::Commit(const std::string& command) {
    if (MgStatus status = Close()) {
        std::fprintf(stderr, "mgrsrc %s: cannot write %s: %s\n", command.c_str(), name_.c_str(),
                     StatusWords(status).c_str());
        return false;
    }
    return true;
}

EditedFile::~EditedFile() {
    if (!id_) return;
    int32_t attrs = 0;
    RGetFileAttrs(id_, &attrs);
    RSetFileAttrs(id_, attrs & ~RFileDirty);
    RCloseFile(id_);
}
