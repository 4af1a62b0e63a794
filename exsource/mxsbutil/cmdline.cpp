// The command line: one pass over the arguments, then three checks in a fixed order. Every
// complaint goes to DPrintf, which is silent in this tool, so a bad command line shows only
// in the exit status 1.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/pstring.h"
#include "mxsbutil/options.h"
#include "platform/platform.h"

PackageOptions gOptions;

namespace {

const char kUsage[] =
    "# Usage - mxsbutil -c <code name> [<any of the following arguments>]\n"
    "\t-t <type>\tType of external code\n"
    "\t-d <directory>\tGive directory of the code\n"
    "\t-v <version>\tSet the MXSB version\n"
    "\t-r <resource file>\n"
    "\t-vi <vi>";

// Fills the default directory: the current directory and one separator.
void MakeStartDirectory(PackageOptions& o) {
    int32_t n = plat::CurrentDirectory(o.startDir, sizeof o.startDir - 1);
    o.startDir[n] = plat::DirectorySeparator();
    o.startDir[n + 1] = 0;
}

// Four characters of the value over four blanks, after one optional leading quote.
ResType ReadType(const char* value) {
    char work[4] = {' ', ' ', ' ', ' '};
    if (*value == '\'') ++value;
    for (int i = 0; i < 4 && value[i]; ++i) work[i] = value[i];
    return MgResType(work);
}

bool SameType(ResType t, const char* text) {
    return t == MgResType(text);
}

}  // namespace

void PrintUsage(const char* argv0) {
    DPrintf(kUsage, argv0);
}

int32_t ReadArguments(int argc, char** argv) {
    PackageOptions& o = gOptions;
    [[maybe_unused]] int32_t version = 4;  // checked, never read: -v has no effect
    MakeStartDirectory(o);
    o.codeDir = o.startDir;
    o.resFileName = nullptr;
    o.viName = nullptr;
    o.codePath = nullptr;
    o.resFilePath = nullptr;
    o.viPath = nullptr;
    o.codeType = MgResType("CIN ");
    o.codeName[0] = 0;

    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        int32_t len = StrLen(arg);
        if (arg[0] != '-') {
            if (o.codeName[0] != 0) {
                DPrintf("multiple name arguments not allowed");
                return 1;
            }
            TextToPString(arg, o.codeName);
            continue;
        }
        uint32_t letter = CharToLower(static_cast<uint8_t>(arg[1]));
        bool takesValue =
            (len == 2 &&
             (letter == 't' || letter == 'v' || letter == 'c' || letter == 'd' || letter == 'r')) ||
            (len == 3 && letter == 'v' && CharToLower(static_cast<uint8_t>(arg[2])) == 'i');
        if (!takesValue) {
            DPrintf("%s: \"%s\" is not an option.", argv[0], arg);
            PrintUsage(argv[0]);
            return 1;
        }
        // The value is the next argument, whatever it looks like. A missing one ends the run
        // for the options whose value is needed at once; -d, -r and -vi take a null.
        const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
        ++i;
        if (len == 3) {
            o.viName = value;
        } else if (letter == 'd') {
            o.codeDir = value;
        } else if (letter == 'r') {
            o.resFileName = value;
        } else if (value == nullptr) {
            DPrintf("%s: \"%s\" needs a value.", argv[0], arg);
            PrintUsage(argv[0]);
            return 1;
        } else if (letter == 't') {
            o.codeType = ReadType(value);
        } else if (letter == 'v') {
            if (StrLen(value) != 1) {
                DPrintf("version must be one digit");
                return 1;
            }
            version = IsDigitChar(static_cast<uint8_t>(value[0])) ? value[0] - '0' : 0;
        } else {  // 'c'
            if (o.codeName[0] != 0) {
                DPrintf("multiple name arguments not allowed");
                return 1;
            }
            TextToPString(value, o.codeName);
        }
    }

    if (o.codeName[0] == 0) {
        DPrintf("%s: needs a -c [code name] option", argv[0]);
        PrintUsage(argv[0]);
        return 1;
    }
    if (!SameType(o.codeType, "CIN ") && !SameType(o.codeType, "DRVR")) {
        if (SameType(o.codeType, "MXSB"))
            DPrintf("%s: External subroutines are no longer supported", argv[0]);
        else
            DPrintf("%s: has an unrecognized type '%.4s'", argv[0], &o.codeType);
        PrintUsage(argv[0]);
        return 1;
    }
    if (o.codeDir == nullptr) {
        DPrintf("%s - needs an -d [code directory] option", argv[0]);
        PrintUsage(argv[0]);
        return 1;
    }
    return 0;
}

// Nothing is started before the whole command line has passed its checks.
int32_t ParseArguments(int argc, char** argv) {
    int32_t status = ReadArguments(argc, argv);
    return status != 0 ? status : RunPackager(argv[0]);
}
