// Helpers of the mgrsrc suite: running the built tool and writing files for it.
#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "resource/file_builder.h"
#include "support/host_rules.h"
#include "support/run_tool.h"

inline ToolResult Mgrsrc(const std::vector<std::string>& args, const std::filesystem::path& dir) {
    return RunProgram(ToolPath(MGRSRC_NAME), args, dir);
}

inline std::vector<std::string> Concat(std::vector<std::string> a,
                                       const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
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

// Whether `got` is `want`, where each "..." of `want` stands for any text.
inline bool Fits(std::string_view got, std::string_view want) {
    size_t cut = want.find("...");
    if (cut == want.npos) return got == want;
    if (got.substr(0, cut) != want.substr(0, cut)) return false;
    for (got.remove_prefix(cut), want.remove_prefix(cut + 3); (cut = want.find("...")) != want.npos;
         want.remove_prefix(cut + 3)) {
        const size_t at = got.find(want.substr(0, cut));
        if (at == got.npos) return false;
        got.remove_prefix(at + cut);
    }
    return got.size() >= want.size() && got.substr(got.size() - want.size()) == want;
}

// A run of the tool in a directory (its words with blanks between them) and what it must give:
// its status and its two streams as Fits takes them, in lines that end as the host's do.
struct ToolRun {
    std::string args;
    int status;
    std::string out, err = "";
};
inline void ExpectRuns(const std::filesystem::path& dir, const std::vector<ToolRun>& runs) {
    for (const ToolRun& run : runs) {
        const ToolResult r = Mgrsrc(Words(run.args), dir);
        EXPECT_TRUE(r.status == run.status && Fits(r.out, Lined(run.out)) &&
                    Fits(r.err, Lined(run.err)))
            << run.args << " gave " << r.status << "\n"
            << r.out << "\n"
            << r.err;
    }
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
