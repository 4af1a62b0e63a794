// The settings of one run of the packager, filled by the command line and read by the build.
#pragma once

#include "mg/mgtypes.h"

struct PackageOptions {
    ResType codeType;
    uint8_t codeName[256];  // PStr
    const char* codeDir;
    const char* resFileName;
    const char* viName;
    Path codePath;
    Path resFilePath;
    Path viPath;
    // The start-up directory and its separator; the default of codeDir. Sized for the
    // longest directory the host may report, with room for the separator and terminator.
    char startDir[4096 + 2];
};

extern PackageOptions gOptions;

// Reads and checks the command line, then runs the packager; returns the exit status.
int32_t ParseArguments(int argc, char** argv);
// The reading and checking alone: fills gOptions and returns 0, or 1 for a bad command line.
int32_t ReadArguments(int argc, char** argv);
// Passes the usage text to the debug print.
void PrintUsage(const char* argv0);
// Builds the package the options describe; returns the exit status (0, 1 or 2).
int32_t RunPackager(const char* argv0);
