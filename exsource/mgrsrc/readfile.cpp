// Files read whole through the library's byte files, and the library's paths of file names.
#include <filesystem>

#include "mg/filemgr.h"
#include "mg/path.h"
#include "mgrsrc/resfile.h"

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

// The byte files open regular files only and never wait on one (a pipe, say); the reasons are
// the library's own, which name the same conditions on every host.
bool ReadWholeFile(const std::string& name, const std::function<uint8_t*(size_t)>& room,
                   std::string* why) {
    std::error_code error;
    const auto type = std::filesystem::status(name, error).type();
    if (!error && type != std::filesystem::file_type::regular) {
        *why = "not a regular file";
        return false;
    }
    if (!error && std::filesystem::file_size(name, error) > uintmax_t(INT32_MAX - 8)) {
        *why = "too large for a resource";
        return false;
    }
    LibraryPath p(name);
    FileRef ref = 0;
    int32_t size = 0;
    MgStatus status = p.status ? p.status : FMOpen(&ref, p.path, FMModeRead, FMShareAll);
    if (!status) status = FGetEOF(ref, &size);
    if (!status) status = FMRead(ref, size, nullptr, room(size_t(size)));
    if (ref) FMClose(ref);
    if (status) *why = MgStatusText(status);
    return !status;
}

bool ReadWholeFile(const std::string& name, std::string* bytes, std::string* why) {
    return ReadWholeFile(
        name,
        [bytes](size_t size) {
            bytes->resize(size);
            return reinterpret_cast<uint8_t*>(bytes->data());
        },
        why);
}
