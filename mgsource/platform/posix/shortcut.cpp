// Shortcuts on POSIX hosts: there are no shortcut files. Symbolic links do their work, and the
// kernel follows them in every call, so no name needs rewriting; nor has a name a universal
// form beyond itself.
#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

bool ResolveShortcutFile(char* name) {
    return gFaults.shortcutResolver != nullptr && gFaults.shortcutResolver(name);
}

uint32_t UniversalNameSize(const char*) {
    return 0;
}

bool UniversalName(const char*, void*, uint32_t, const char** text) {
    *text = nullptr;
    return false;
}

}  // namespace plat
