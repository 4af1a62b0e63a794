// Files through the library for the commands that write: statuses in words, edits.
#include "mgrsrc/resfile.h"

#include <cstdio>

#include "mg/filemgr.h"
#include "mgrsrc/mgrsrc.h"

std::string StatusWords(MgStatus status) {
    return std::string(MgStatusText(status)) + " (" + MgStatusName(status) + ", " +
           std::to_string(status) + ")";
}

MgStatus EditedFile::OpenAs(const std::string& name) {
    name_ = name;
    LibraryPath p(name);
    return p.status ? p.status : ROpenFile(p.path, FMModeReadWrite, &id_, nullptr, nullptr);
}

bool EditedFile::Open(const std::string& command, const std::string& name) {
    {
        // The library would open a file whose data is out of place, and a write-back would
        // then fail on that data or carry it over: such a file isn't edited at all.
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
