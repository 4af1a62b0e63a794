// The bound of the two logs, the failure log and dprintf.txt. Before a record is appended, a
// log larger than this is renamed to its old name (Meridax_Failure_Log.old.txt,
// dprintf.old.txt), replacing an older one, and the record starts a new log: at most two files
// of about this size each. A rename that fails leaves the log as it is, and the record is
// appended to it all the same. Records themselves are never changed.
#pragma once

#include <stdint.h>

constexpr uint64_t kLogBound = 1 << 20;
