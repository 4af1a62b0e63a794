// The resource reader: the input is a resource file. It is opened read-only, every type and
// resource is enumerated and loaded by index, by id and by name, the string getters are asked,
// and the file is closed.
#include "fuzz_input.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "resource_walk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::StartManagers(true);
    const std::string& file = fuzz::ScratchFile("reader.rsrc");
    fuzz::WriteWholeFile(file, std::string(reinterpret_cast<const char*>(data), size));
    Path path = fuzz::NativePath(file);
    ResFile id = 0;
    if (ROpenFile(path, FMModeRead, &id, nullptr, nullptr) == MgNoError) {
        fuzz::LoadEverything(id, nullptr);
        RCloseFile(id);
    }
    FPathRelease(path);
    return 0;
}
