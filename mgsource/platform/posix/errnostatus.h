// The errno values of the POSIX backend in the meanings of the status table: missing things 7,
// refusals 8, existing files 10, bad names 1, memory 2, anything else an I/O error.
#pragma once

#include <errno.h>
#include <stdint.h>

namespace plat {

inline int32_t StatusOfErrno(int code) {
    switch (code) {
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
        case ETXTBSY:
            return 8;
        case ENOENT:
        case ENOTDIR:
            return 7;
        case ENOMEM:
            return 2;
        case EEXIST:
            return 10;
        case EINVAL:
        case ENAMETOOLONG:
        case ELOOP:
            return 1;
        default:
            return 6;
    }
}

}  // namespace plat
