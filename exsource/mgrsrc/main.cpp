// mgrsrc: lists, extracts, verifies and compares resource files such as the packages that
// mxsbutil writes. Unlike mxsbutil it speaks: results on standard output, messages on
// standard error, and the exit statuses of mgrsrc.h.
#include <cstdio>
#include <string>
#include <vector>

#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mgrsrc/mgrsrc.h"

namespace {

const char kUsage[] =
    "usage: mgrsrc COMMAND [OPTIONS] ARGS...\n"
    "\n"
    "Looks into resource files, such as the packages that mxsbutil makes.\n"
    "\n"
    "commands:\n"
    "  list [--json] FILE                  header fields, then one line per resource\n"
    "  extract [-o OUT] FILE TYPE ID|NAME  writes one resource's data\n"
    "  extract --all FILE DIR              writes every resource's data into DIR\n"
    "  verify FILE                         checks every structure, with byte offsets\n"
    "  diff A B                            resources added, removed and changed\n"
    "\n"
    "'mgrsrc COMMAND --help' tells more about a command.\n"
    "exit status: 0 success, 1 bad command line, 2 failure (unreadable, unsound, not found),\n"
    "3 diff found differences.\n";

}  // namespace

int UsageError(const std::string& command, const std::string& message) {
    std::fprintf(stderr, "mgrsrc%s%s: %s\nTry 'mgrsrc %s--help'.\n", command.empty() ? "" : " ",
                 command.c_str(), message.c_str(), command.empty() ? "" : (command + " ").c_str());
    return kExitUsage;
}

bool WriteOut(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
           std::fflush(stdout) == 0;
}

int main(int argc, char** argv) {
    SetApplicationName(argv[0]);
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    const std::string command = argv[1];
    if (command == "-h" || command == "--help" || command == "help") {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    if (InitMemoryManager() != MgNoError) {
        std::fputs("mgrsrc: cannot start the memory manager\n", stderr);
        return kExitFailed;
    }
    const std::vector<std::string> args(argv + 2, argv + argc);
    if (command == "list") return ListCommand(args);
    if (command == "extract") return ExtractCommand(args);
    if (command == "verify") return VerifyCommand(args);
    if (command == "diff") return DiffCommand(args);
    return UsageError("", "unknown command '" + command + "'");
}
