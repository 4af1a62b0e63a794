#include <stdio.h>
#include <stdlib.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>

#include "fuzz_input.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mg/resource.h"
#include "platform/childprocess.h"

namespace fuzz {

namespace {

std::string gDirectory;

void RemoveDirectory() {
    std::error_code ignored;
    if (!gDirectory.empty()) std::filesystem::remove_all(gDirectory, ignored);
}

// A fresh directory of this run's own, found by trying random names, removed at exit.
const std::string& ScratchDirectory() {
    if (gDirectory.empty()) {
        std::random_device random;
        const auto base = std::filesystem::temp_directory_path();
        std::filesystem::path made;
        std::error_code error;
        do {
            made = base / ("mgfuzz." + std::to_string(random()));
        } while (!std::filesystem::create_directory(made, error) && !error);
        if (error) abort();
        gDirectory = made.string();
        atexit(RemoveDirectory);
    }
    return gDirectory;
}

}  // namespace

void StartManagers(bool resources) {
    static bool memory = false, resource = false;
    if (!memory) {
        // Text, numbers and paths report bad input by design and go on; a resource file from
        // outside must never reach a report, which ends the run (a finding).
        gFailureNoExit = resources ? 0 : 1;
        gFailureToHost = resources ? 1 : 0;
        // Each report appends a record to the failure log in the temporary directory, an input
        // after another for as long as a fuzzer runs: that log goes into the scratch directory.
        if (!resources) {
            for (const char* name : {"TMPDIR", "TMP", "TEMP"})
                plat::SetVariable(name, ScratchDirectory().c_str());
        }
        if (InitMemoryManager() != MgNoError) abort();
        memory = true;
    }
    if (resources && !resource) {
        if (RInit() != MgNoError) abort();
        resource = true;
    }
}

const std::string& ScratchFile(const char* leaf) {
    static std::map<std::string, std::string> files;
    std::string& file = files[leaf];
    if (file.empty()) file = (std::filesystem::path(ScratchDirectory()) / leaf).string();
    return file;
}

void WriteWholeFile(const std::string& file, const std::string& bytes) {
    FILE* f = fopen(file.c_str(), "wb");
    if (!f) abort();
    if (!bytes.empty() && fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size()) abort();
    fclose(f);
}

}  // namespace fuzz
