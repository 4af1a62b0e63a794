// New identifiers on POSIX hosts: 16 bytes from the kernel's random source, marked as a
// random (version 4) identifier in the byte layout a Windows GUID has in memory.
#include <errno.h>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include "platform/platform.h"

namespace plat {

namespace {

// Reads exactly n random bytes; returns 0 or an errno value.
int ReadRandom(uint8_t* out, size_t n) {
    size_t done = 0;
    while (done < n) {
        ssize_t got = getrandom(out + done, n - done, 0);
        if (got > 0) {
            done += static_cast<size_t>(got);
        } else if (got < 0 && errno == EINTR) {
            continue;
        } else {
            break;
        }
    }
    if (done == n) return 0;
    // Kernels without getrandom still have the device.
    int fd = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return errno ? errno : EIO;
    while (done < n) {
        ssize_t got = read(fd, out + done, n - done);
        if (got > 0) {
            done += static_cast<size_t>(got);
        } else if (got < 0 && errno == EINTR) {
            continue;
        } else {
            int err = got < 0 ? errno : EIO;
            close(fd);
            return err ? err : EIO;
        }
    }
    close(fd);
    return 0;
}

}  // namespace

int32_t NewGuidBytes(uint8_t guid[16]) {
    int err = ReadRandom(guid, 16);
    if (err != 0) return err;
    guid[7] = static_cast<uint8_t>((guid[7] & 0x0F) | 0x40);  // version 4, high nibble of Data3
    guid[8] = static_cast<uint8_t>((guid[8] & 0x3F) | 0x80);  // variant 10xx
    return 0;
}

}  // namespace plat
