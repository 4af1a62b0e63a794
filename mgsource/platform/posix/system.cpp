// Process and text services on POSIX hosts.
#include <ctype.h>
#include <errno.h>
#include <limits.h>
#include <locale.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

// Only whole pages inside the block are advised, so no neighbouring block is touched.
void AdviseLargeBlock(void* block, size_t size) {
#ifdef MADV_HUGEPAGE
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pageSize <= 0) return;
    const uintptr_t page = static_cast<uintptr_t>(pageSize);
    const uintptr_t start = (reinterpret_cast<uintptr_t>(block) + page - 1) & ~(page - 1);
    const uintptr_t end = (reinterpret_cast<uintptr_t>(block) + size) & ~(page - 1);
    if (end > start) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
#else
    (void)block;
    (void)size;
#endif
}

void* AlignedBlock(size_t size) {
    void* block = nullptr;
    return posix_memalign(&block, size, size) == 0 ? block : nullptr;
}

void FreeAlignedBlock(void* block) {
    free(block);
}

int32_t CurrentDirectory(char* buffer, int32_t size) {
    int32_t length = 0;
    if (CurrentDirectoryOverride(buffer, size, &length)) return length;
    if (size <= 0 || getcwd(buffer, static_cast<size_t>(size)) == nullptr) return 0;
    return static_cast<int32_t>(strlen(buffer));
}

char DirectorySeparator() {
    return '/';
}

int32_t VolumeDepth() {
    return 0;
}

int32_t NativeNameMax() {
    return PATH_MAX - 1;
}

// The "C" locale is the host code page here: the layer never calls setlocale for case.
uint8_t CharLower(uint8_t c) {
    return static_cast<uint8_t>(tolower(c));
}
uint8_t CharUpper(uint8_t c) {
    return static_cast<uint8_t>(toupper(c));
}

uint32_t CharValueLower(uint16_t c) {
    return c > 0xFF ? c : CharLower(static_cast<uint8_t>(c));
}
uint32_t CharValueUpper(uint16_t c) {
    return c > 0xFF ? c : CharUpper(static_cast<uint8_t>(c));
}

int32_t ModuleFileName(char* buffer, int32_t size) {
    if (size <= 0) return 0;
    // A name that fills the whole buffer may have been cut: no room for the terminator.
    ssize_t n = readlink("/proc/self/exe", buffer, static_cast<size_t>(size));
    if (n <= 0 || n >= size) {
        buffer[0] = 0;
        return 0;
    }
    buffer[n] = 0;
    return static_cast<int32_t>(n);
}

int32_t ProcessId() {
    return static_cast<int32_t>(getpid());
}

void UseUserLocaleForTimeAndNumbers() {
    setlocale(LC_NUMERIC, "");
    setlocale(LC_TIME, "");
}

// The user's numeric settings, read apart from the process locale.
char UserDecimalMark() {
    locale_t user = newlocale(LC_NUMERIC_MASK, "", static_cast<locale_t>(0));
    if (user == static_cast<locale_t>(0)) return 0;
    locale_t previous = uselocale(user);
    char mark = localeconv()->decimal_point[0];
    uselocale(previous);
    freelocale(user);
    return mark;
}

}  // namespace plat
