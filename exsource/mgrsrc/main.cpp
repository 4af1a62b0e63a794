// mgrsrc: lists, extracts, verifies, compares, unpacks, packs and edits resource files such as
// the packages that mxsbutil writes. Unlike mxsbutil it speaks: results on standard output,
// messages on standard error, and the exit statuses of mgrsrc.h.
#include <cstdio>
#include <string>
#include <vector>

#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/resource.h"
#include "mg/version.h"
#include "mgrsrc/mgrsrc.h"

namespace {

const char kUsage[] =
    "usage: mgrsrc COMMAND [OPTIONS] ARGS...\n"
    "\n"
    "Looks into, builds and edits resource files, such as the packages that mxsbutil makes.\n"
    "\n"
    "commands:\n"
    "  list [--json] FILE                          header fields, then one line per resource\n"
    "  extract [-o OUT] [--name] FILE TYPE ID|NAME writes one resource's data\n"
    "  extract --all FILE DIR                      writes every resource's data into DIR\n"
    "  verify FILE                                 checks every structure, with byte offsets\n"
    "  diff A B                                    resources added, removed and changed\n"
    "  unpack FILE DIR                             the data as files, and a manifest\n"
    "  pack DIR FILE                               the file again from an unpacked DIR\n"
    "  add FILE TYPE ID DATAFILE [--name N] [--attrs A]\n"
    "                                              adds a resource in place\n"
    "  remove FILE TYPE ID|NAME                    removes a resource in place\n"
    "  set FILE TYPE ID|NAME [--id N] [--name N] [--attrs A]\n"
    "                                              changes id, name or attributes in place\n"
    "\n"
    "'mgrsrc help COMMAND' or 'mgrsrc COMMAND --help' tells more about a command;\n"
    "'mgrsrc --version' gives the version.\n"
    "exit status: 0 success, 1 bad command line or manifest, 2 failure (unreadable, unsound,\n"
    "not found, refused by the library), 3 diff found differences.\n";

using Command = int (*)(const std::vector<std::string>&);
const std::pair<const char*, Command> kCommands[] = {
    {"list", ListCommand}, {"extract", ExtractCommand}, {"verify", VerifyCommand},
    {"diff", DiffCommand}, {"unpack", UnpackCommand},   {"pack", PackCommand},
    {"add", AddCommand},   {"remove", RemoveCommand},   {"set", SetCommand},
};

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
    std::string command = argv[1];
    std::vector<std::string> args(argv + 2, argv + argc);
    if (command == "--version") {
        std::fputs("mgrsrc " MG_VERSION "\n", stdout);
        return kExitOk;
    }
    // "help list" is "list --help".
    if (command == "help" && argc == 3) {
        command = argv[2];
        args = {"--help"};
    }
    if (command == "-h" || command == "--help" || command == "help") {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    if (InitMemoryManager() != MgNoError || (FMInit(), RInit()) != MgNoError) {
        std::fputs("mgrsrc: cannot start the managers\n", stderr);
        return kExitFailed;
    }
    for (const auto& [name, run] : kCommands)
        if (command == name) return run(args);
    return UsageError("", "unknown command '" + command + "'");
}
