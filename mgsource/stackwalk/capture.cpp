// Capture: a walk along the frame-pointer chain, or along the host's unwind tables where its
// code keeps no usable chain. Each frame starts with the caller's frame pointer and the
// return address into the caller. The frames are read through the platform,
// which refuses an unreadable one instead of faulting, so a broken chain only ends the walk.
// Nothing here allocates.
#include "mg/stackwalk.h"
#include "platform/platform.h"

namespace {

// Not inlined, so that its own frame is always the first one read: the first address is in
// the function that called it.
[[gnu::noinline]] int32_t Walk(StackAddress* out, int32_t limit, StackAddress frame,
                               StackAddress pc, int32_t skip) {
    int32_t left = skip;
    int32_t n = 0;
    if (pc != 0) {
        if (left == 0)
            out[n++] = pc;
        else
            --left;
    }
    if (frame == 0) {
        // Where the host's code keeps no frame-pointer chain, its unwind tables give the
        // frames above this one, which the address of `left` marks.
        int32_t unwound = 0;
        if (plat::UnwindOwnStack(reinterpret_cast<StackAddress>(&left), left, out + n, limit - n,
                                 &unwound))
            return n + unwound;
        frame = reinterpret_cast<StackAddress>(__builtin_frame_address(0));
    }
    // No test that frames rise: the limit or the first unreadable frame ends the walk.
    while (n < limit) {
        StackAddress words[2];  // next frame, return address
        if (!plat::ReadOwnMemory(frame, words, sizeof words)) break;
        if (left == 0)
            out[n++] = words[1];
        else
            --left;
        frame = words[0];
    }
    return n;
}

}  // namespace

void StackTrace::Capture(int32_t skip) {
    count = Walk(Addresses(), Capacity(), 0, 0, skip);
}

void StackTrace::CaptureFrom(StackAddress frame, StackAddress pc, int32_t skip) {
    count = Walk(Addresses(), Capacity(), frame, pc, skip);
}

std::unique_ptr<StackDecoder> StackTrace::MakeDecoder() const {
    return std::make_unique<StackDecoder>(Addresses(), count);
}
