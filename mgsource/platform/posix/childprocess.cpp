// Child processes on POSIX hosts: fork and exec.
#include "platform/childprocess.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <vector>

#include "platform/platform.h"

namespace plat {
namespace {

// Points standard stream `fd` at `file`, or at the null device when `file` is null.
void Redirect(int fd, const char* file, bool inherit) {
    if (file == nullptr && inherit) return;
    int to = file ? open(file, O_WRONLY | O_CREAT | O_TRUNC, 0644) : open("/dev/null", O_WRONLY);
    if (to < 0) _exit(126);
    dup2(to, fd);
    close(to);
}

}  // namespace

int64_t StartChild(const ChildSpec& child) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(child.program));
    for (const char* const* a = child.args; a && *a; ++a) argv.push_back(const_cast<char*>(*a));
    argv.push_back(nullptr);
    std::vector<char> variable;
    if (child.variable)
        variable.assign(child.variable, child.variable + strlen(child.variable) + 1);
    pid_t pid = fork();
    if (pid < 0) return 0;
    if (pid == 0) {
        Redirect(1, child.outFile, child.inherit);
        Redirect(2, child.errFile, child.inherit);
        int null = open("/dev/null", O_RDONLY);
        dup2(null, 0);
        if (child.directory && chdir(child.directory) != 0) _exit(126);
        if (!variable.empty()) putenv(variable.data());
        execv(child.program, argv.data());
        _exit(127);
    }
    return pid;
}

int32_t WaitChild(int64_t child, int32_t timeoutMs) {
    const pid_t pid = static_cast<pid_t>(child);
    int status = 0;
    for (int32_t waited = 0;; waited += 5) {
        pid_t got = waitpid(pid, &status, WNOHANG);
        if (got == pid) break;
        if (got < 0 && errno != EINTR) return -1;
        if (waited >= timeoutMs) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return -1;
        }
        SleepMilliseconds(5);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int64_t OpenHandleCount() {
    DIR* fds = opendir("/proc/self/fd");
    if (fds == nullptr) return -1;
    int64_t count = -1;  // the listing's own descriptor
    while (readdir(fds) != nullptr) ++count;
    closedir(fds);
    return count - 2;  // "." and ".."
}

bool SetVariable(const char* name, const char* value) {
    return (value ? setenv(name, value, 1) : unsetenv(name)) == 0;
}

}  // namespace plat
