// Helpers of the mgrsrc suite: running the built tool and writing files for it.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "resource/file_builder.h"
#include "support/host_rules.h"
#include "support/run_tool.h"

inline ToolResult Mgrsrc(const std::vector<std::string>& args, const std::filesystem::path& dir) {
    return RunProgram(ToolPath(MGRSRC_NAME), args, dir);
}

// The words of a command line written out with blanks between them.
inline std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words;
    std::istringstream in(line);
    for (std::string w; in >> w;) words.push_back(w);
    return words;
}

inline Bytes AsBytes(const std::string& s) {
    return Bytes(s.begin(), s.end());
}

// The tool's text as its standard streams carry it: lines end with the host's line end.
inline std::string Lined(std::string text) {
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += TextLineEnd().size())
        text.replace(at, 1, TextLineEnd());
    return text;
}

// The lines of the tool's text, each of which must end with the host's line end.
inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    const std::string& end = TextLineEnd();
    size_t from = 0;
    for (size_t at; (at = text.find(end, from)) != std::string::npos; from = at + end.size())
        lines.push_back(text.substr(from, at - from));
    if (from < text.size()) lines.push_back(text.substr(from));
    return lines;
}
