// The POSIX backend's last error, shared by its files.
#pragma once

#include <stdint.h>

namespace plat {

// Records `code` (an errno value) as the last error; returns false.
bool RecordErrno(int code);
// The status-table meaning of an errno value.
int32_t StatusOfErrno(int code);

}  // namespace plat
