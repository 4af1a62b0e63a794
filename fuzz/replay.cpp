// Runs a fuzz target's entry over every file of the directories (or files) on the command
// line, without libFuzzer: the corpus as a plain regression test.
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_input.h"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
            for (const auto& entry : fs::directory_iterator(argv[i]))
                if (entry.is_regular_file()) files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        fprintf(stderr, "no input\n");
        return 1;
    }
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            fprintf(stderr, "cannot read %s\n", file.string().c_str());
            return 1;
        }
        std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                   std::istreambuf_iterator<char>());
        fprintf(stderr, "%s\n", file.string().c_str());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    fprintf(stderr, "%zu inputs\n", files.size());
    return 0;
}
