// mgrsrc verify: every check of the reader, each fault with its byte offset, and what a
// reader accepts but is likely a mistake.
#include <cstdio>

#include "mgrsrc/mgrsrc.h"

namespace {

const char kHelp[] =
    "usage: mgrsrc verify FILE\n"
    "\n"
    "Runs every structural check that opening and loading a resource file apply, and prints\n"
    "each fault with its byte offset, in the order a reader meets them: the header (or the\n"
    "trailer of an embedded file), the place of the map, its type and reference lists, the\n"
    "map's copy of the header, then each resource's data. Also prints, as warnings, what a\n"
    "reader accepts but is suspicious: ids out of order in a version-4 file, ids twice in a\n"
    "type, data that no reference uses, references that share or overlap data, run-time bits\n"
    "stored in the file, names outside the map.\n"
    "\n"
    "exit status: 0 sound (warnings allowed), 1 bad command line, 2 unsound or unreadable.\n";

}  // namespace

int VerifyCommand(const std::vector<std::string>& args) {
    CommandLine line;
    if (int done = SplitArgs("verify", kHelp, args, {}, {}, &line); done >= 0) return done;
    if (line.operands.size() != 1) return UsageError("verify", "expects one FILE");
    Image image;
    if (!LoadImage("verify", line.operands[0], true, true, &image)) return kExitFailed;
    std::string out;
    for (const RCheckFinding& f : image.findings) {
        char text[256];
        std::snprintf(text, sizeof text, ": offset %lld (0x%llX): %s: %s\n",
                      static_cast<long long>(f.offset), static_cast<unsigned long long>(f.offset),
                      f.notice ? "warning" : "error", f.text);
        out += image.path + text;
    }
    const RCheckSummary& s = image.summary;
    char text[128];
    if (s.faults)
        std::snprintf(text, sizeof text, ": unsound: %d error%s, %d warning%s%s\n", s.faults,
                      s.faults == 1 ? "" : "s", s.notices, s.notices == 1 ? "" : "s",
                      s.openStatus ? "; the reader refuses to open it" : "");
    else
        std::snprintf(text, sizeof text, ": sound: %d resource%s, %d warning%s\n", s.resources,
                      s.resources == 1 ? "" : "s", s.notices, s.notices == 1 ? "" : "s");
    out += image.path + text;
    if (!WriteOut(out)) return kExitFailed;
    return s.faults ? kExitFailed : kExitOk;
}

bool RequireVerified(const std::string& command, const Image& image) {
    if (!image.summary.faults) return true;
    std::fprintf(stderr, "mgrsrc %s: %s is not a sound resource file: %s\n", command.c_str(),
                 image.path.c_str(), FirstFault(image).c_str());
    return false;
}
