// The library's global allocation functions. A failed allocation calls MXNewHandler once;
// when that returns instead of throwing, operator new gives the null pointer: there is no
// retry loop.
#include <new>

#include "mg/mxexcept.h"
#include "platform/platform.h"

namespace {

// bad_alloc with the text the library gives it.
class BadAllocation : public std::bad_alloc {
  public:
    const char* what() const noexcept override { return "bad allocation"; }
};

// Hooks for a host that tracks blocks; empty.
void AllocationHook(void*, size_t) {}
void ReleaseHook(void*) {}

}  // namespace

extern "C" {

int MXNewHandler(size_t size) {
    if (gPreviousNewHandler != nullptr && gPreviousNewHandler(size) != 0) return 1;
    throw BadAllocation();
}

// Registered at start-up, keeping the handler it replaces.
int (*gPreviousNewHandler)(size_t) = plat::SetRuntimeNewHandler(MXNewHandler);

}  // extern "C"

namespace {

// The allocation of both forms: null when the replaced handler answered yes.
void* Allocate(size_t size) {
    if (size == 0) size = 1;
    void* block = plat::GlobalNewBlock(size);
    if (block == nullptr) MXNewHandler(size);
    AllocationHook(block, size);
    return block;
}

}  // namespace

void* operator new(size_t size) {
    return Allocate(size);
}

// The same allocation, with every exception turned into null.
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (...) {
        return nullptr;
    }
}

void operator delete(void* block) noexcept {
    if (block == nullptr) return;
    ReleaseHook(block);
    plat::GlobalFreeBlock(block);
}

// The other forms go through the three above, so that every block is paired.
void* operator new[](size_t size) {
    return operator new(size);
}
void* operator new[](size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void operator delete[](void* block) noexcept {
    operator delete(block);
}
void operator delete(void* block, size_t) noexcept {
    operator delete(block);
}
void operator delete[](void* block, size_t) noexcept {
    operator delete(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    operator delete(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    operator delete(block);
}
