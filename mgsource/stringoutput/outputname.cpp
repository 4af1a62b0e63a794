// OutputFileName: an output file's name in the temporary directory, beside the program, or
// as given, with an optional ".txt".
#include <new>

#include "mg/dbgtools.h"
#include "mg/host.h"
#include "mg/mxexcept.h"
#include "mg/stringoutput.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\stringoutput\\outputname.cpp", "$Revision: 1 $");

namespace {

// The error of every name that can't be built.
constexpr int32_t kNameError = 7;

[[noreturn]] void Throw(int32_t err, const char* detail, int32_t line) {
    ThrowMXExcept(err, detail, kMgSourcePath, line);
}

}  // namespace

OutputFileName::OutputFileName(int32_t kind, const char* inFilename, uint8_t addSuffix) {
    name[0] = 0;
    if (inFilename == nullptr) Throw(MgBadArgument, "inFilename is NULL", __LINE__);
    const size_t n = strlen(inFilename);
    const size_t limit = kNameSize;
    switch (kind) {
        case kOutputInTempDirectory:
        case kOutputInTempDirectoryToo:
            // A directory that doesn't fit leaves `name` empty: the file would land in the
            // current directory.
            if (plat::TempDirectory(name, kNameSize) == 0 || strlen(name) + n + 2 > limit)
                Throw(kNameError, "Path too long", __LINE__);
            strcat(name, inFilename);
            break;
        case kOutputBesideProgram: {
            DPrintf("You shouldn't be using this option in Meridax");
            if (HostGetModuleFileName(nullptr, name, kNameSize) == 0)
                Throw(kNameError, "GetModuleFileName failed", __LINE__);
            // Keep the directory, up to its last separator (the start when there is none).
            const char separator = plat::DirectorySeparator();
            size_t end = strlen(name);
            while (end > 0 && name[end] != separator) --end;
            name[end] = 0;
            const char tail[2] = {separator, 0};
            strcat(name, tail);
            if (strlen(name) + n + 1 > limit) Throw(kNameError, "Path too long", __LINE__);
            strcat(name, inFilename);
            break;
        }
        default:
            if (n + 1 > limit) Throw(kNameError, "Path too long", __LINE__);
            strcpy(name, inFilename);
            break;
    }
    // The text of the module-name failure stands for this overflow as well.
    if (addSuffix) {
        if (strlen(name) + 4 + 1 > limit) Throw(kNameError, "GetModuleFileName failed", __LINE__);
        strcat(name, ".txt");
    }
}

OutputName* OutputFileName::Clone() const {
    return new (std::nothrow) OutputFileName(*this);
}
