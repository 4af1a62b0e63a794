// Helpers of the mgrsrc suite: running the built tool and writing files for it.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "resource/file_builder.h"
#include "support/run_tool.h"

inline ToolResult Mgrsrc(const std::vector<std::string>& args, const std::filesystem::path& dir) {
    return RunProgram(ToolPath(MGRSRC_NAME), args, dir);
}

inline void WriteBytes(const std::filesystem::path& p, const Bytes& b) {
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(b.data()), std::streamsize(b.size()));
}

inline Bytes AsBytes(const std::string& s) {
    return Bytes(s.begin(), s.end());
}

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}
