// What tests expect where the host rightly decides. A Windows host is the one whose native
// names start with a drive; the others are POSIX hosts.
#pragma once

#include <stdint.h>

#include <string>

#include "mg/mgtypes.h"
#include "platform/platform.h"

inline bool WindowsHost() {
    return plat::VolumeDepth() == 1;
}

// How a line written to a standard stream ends: Windows streams are in text mode.
inline std::string TextLineEnd() {
    return WindowsHost() ? "\r\n" : "\n";
}

// A write through a file opened for reading only: Windows denies the access, while a POSIX
// descriptor opened for reading is simply a bad one for writing, an I/O error.
inline MgStatus WriteToReadOnlyStatus() {
    return WindowsHost() ? MgNoPermission : MgIOError;
}

// The environment variable that names the temporary directory.
inline const char* TempVariable() {
    return WindowsHost() ? "TMP" : "TMPDIR";
}

// The longest command line a program can be started with: Windows holds 32767 characters.
inline size_t CommandLineLimit() {
    return WindowsHost() ? 32767 : SIZE_MAX;
}

// The permission bits the host reports after `bits` were set: a Windows host keeps only the
// read-only attribute (no owner write bit), read as 0444 or 0666, and 0111 more for a directory.
inline int32_t HostPermissions(int32_t bits, bool directory) {
    if (!WindowsHost()) return bits;
    return ((bits & 0200) ? 0666 : 0444) | (directory ? 0111 : 0);
}

// The steps of a directory listing that go to the directory's own "." and "..": a Windows
// listing gives them first, a POSIX one is not asked to.
inline uint32_t ListedDotEntries() {
    return WindowsHost() ? 2 : 0;
}

// A zone set from a TZ text: POSIX hosts follow the text's daylight rule; Windows hosts take
// its names and offsets but the runtime's own daylight rule.
inline bool ZoneTextRuleApplies() {
    return !WindowsHost();
}

// Whether the local fields of an instant take the zone's summer offset: POSIX hosts follow the
// zone's rule on the instant's day; Windows hosts apply the offset in force now to every
// instant, as the system's conversion does.
inline bool SummerOffsetFor(bool instantInSummer) {
    return WindowsHost() ? plat::TimeZoneState() == 2 : instantInSummer;
}

// How a stack trace names one of the program's functions: POSIX hosts demangle the linker's
// name, parameter list and all; the Windows symbol library gives the qualified name alone.
inline std::string TracedFunctionName(const std::string& qualified, const std::string& parameters) {
    return WindowsHost() ? qualified : qualified + "(" + parameters + ")";
}

// What of a console sink's text a redirected standard output (a file or a pipe, as a test
// captures it) receives: on POSIX hosts the console is the standard output; a Windows host
// writes to a console alone, and a handle that isn't one takes nothing.
inline std::string ConsoleTextInStandardOutput(const std::string& text) {
    return WindowsHost() ? "" : text;
}

// How a stack trace qualifies a function of an anonymous namespace: the Windows symbol
// library leaves the namespace out.
inline std::string InAnonymousNamespace(const std::string& name) {
    return WindowsHost() ? name : "(anonymous namespace)::" + name;
}
