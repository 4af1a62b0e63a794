// Shortcut resolution for hosts without shell shortcuts: no name ever stands for another,
// so both answers are "not a shortcut" and names pass through unchanged. The Windows resolver
// takes this file's place on hosts that have shortcut files.
#include "mg/shortcut.h"

int32_t FResolveShortcut(char* /*name*/) {
    return 0;
}

int32_t FResolveShortcutPath(char* /*name*/) {
    return 0;
}
