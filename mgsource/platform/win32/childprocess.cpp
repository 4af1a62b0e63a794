// Child processes on Windows hosts: CreateProcess with the standard handles given.
#include "platform/childprocess.h"

#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include <string>

namespace plat {
namespace {

// Quotes one argument so that the C runtime's command-line parser gives it back unchanged:
// backslashes are literal except before a quote, the closing one included, where they double.
void AppendQuoted(std::string& line, const char* arg) {
    if (!line.empty()) line += ' ';
    if (*arg != 0 && strpbrk(arg, " \t\"") == nullptr) {
        line += arg;
        return;
    }
    line += '"';
    size_t slashes = 0;
    for (const char* p = arg;; ++p) {
        if (*p == '\\') {
            ++slashes;
            continue;
        }
        line.append(*p == 0 || *p == '"' ? 2 * slashes : slashes, '\\');
        slashes = 0;
        if (*p == 0) break;
        if (*p == '"') line += '\\';
        line += *p;
    }
    line += '"';
}

// An inheritable handle for a standard stream of the child: the file, the null device, or
// this process's own stream.
HANDLE StreamHandle(const char* file, bool inherit, DWORD own) {
    if (file == nullptr && inherit) return GetStdHandle(own);
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    return CreateFileA(file ? file : "NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &sa,
                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Sets or, with a null value, removes one variable; returns the value it had, if any.
bool SwapVariable(const std::string& name, const char* value, std::string* old) {
    char buffer[32768];
    DWORD n = GetEnvironmentVariableA(name.c_str(), buffer, sizeof buffer);
    bool had = n > 0 && n < sizeof buffer;
    if (old) *old = had ? std::string(buffer, n) : std::string();
    SetEnvironmentVariableA(name.c_str(), value);
    return had;
}

}  // namespace

int64_t StartChild(const ChildSpec& child) {
    std::string line;
    AppendQuoted(line, child.program);
    for (const char* const* a = child.args; a && *a; ++a) AppendQuoted(line, *a);

    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE in = CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &sa,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    HANDLE out = StreamHandle(child.outFile, child.inherit, STD_OUTPUT_HANDLE);
    HANDLE err = StreamHandle(child.errFile, child.inherit, STD_ERROR_HANDLE);

    // The child takes a copy of this process's environment as it stands at the start.
    std::string name, old;
    bool had = false;
    if (child.variable) {
        const char* eq = strchr(child.variable, '=');
        name.assign(child.variable, eq ? eq - child.variable : strlen(child.variable));
        had = SwapVariable(name, eq ? eq + 1 : "", &old);
    }
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = in;
    si.hStdOutput = out;
    si.hStdError = err;
    PROCESS_INFORMATION pi = {};
    BOOL ok = CreateProcessA(child.program, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                             child.directory, &si, &pi);
    if (child.variable) SwapVariable(name, had ? old.c_str() : nullptr, nullptr);
    for (HANDLE h : {in, out, err}) {
        if (h != INVALID_HANDLE_VALUE && h != GetStdHandle(STD_OUTPUT_HANDLE) &&
            h != GetStdHandle(STD_ERROR_HANDLE))
            CloseHandle(h);
    }
    if (!ok) return 0;
    CloseHandle(pi.hThread);
    return static_cast<int64_t>(reinterpret_cast<intptr_t>(pi.hProcess));
}

int32_t WaitChild(int64_t child, int32_t timeoutMs) {
    HANDLE process = reinterpret_cast<HANDLE>(static_cast<intptr_t>(child));
    int32_t result = -1;
    if (WaitForSingleObject(process, static_cast<DWORD>(timeoutMs)) != WAIT_OBJECT_0) {
        TerminateProcess(process, 255);
        WaitForSingleObject(process, INFINITE);
    } else {
        DWORD code = 0;
        // Exit codes of 0xC0000000 and above are faults the system reported, not exits.
        if (GetExitCodeProcess(process, &code) && code < 0xC0000000u)
            result = static_cast<int32_t>(code);
    }
    CloseHandle(process);
    return result;
}

int64_t OpenHandleCount() {
    DWORD count = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &count) ? int64_t(count) : -1;
}

// The C runtime keeps its own copy of the environment; _putenv updates both it and the
// process's, which GetTempPathA and CreateProcess read. "NAME=" removes the variable.
bool SetVariable(const char* name, const char* value) {
    std::string setting = std::string(name) + "=" + (value ? value : "");
    return _putenv(setting.c_str()) == 0;
}

}  // namespace plat
