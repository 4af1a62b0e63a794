// The POSIX backend's last error, shared by its files.
#pragma once

namespace plat {

// Records `code` (an errno value) as the last error; returns false.
bool RecordErrno(int code);

}  // namespace plat
