// Shortcuts: native names that stand for another file, followed on the way to the platform.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Replaces a shortcut's native name in place by its target's; 1 when it did, else 0.
int32_t FResolveShortcut(char* name);
// Resolves every directory level of a native name in place; 1 when any part was replaced.
int32_t FResolveShortcutPath(char* name);
// `out` gets the universal (network) form of a rooted path, or a copy of it where it has none.
MgStatus FPathToUniversal(Path path, Path* out);

MG_EXTERN_C_END
