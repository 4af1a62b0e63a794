// Path text and flattened paths. Input: a mode byte, then the rest as text (mode bit 0 clear)
// or as a flattened path (set); bit 1 picks the syntax, bit 2 the byte order.
//
// Text is read in the chosen syntax; a path that reads is written back, measured first and
// then into a buffer of exactly the measured size, and read again, which must give the same
// value. A flattened path goes through every operation on path values: untrusted blocks
// (counts beyond their bytes, names cut off, any kind) may not be read out of bounds.
#include <stdlib.h>

#include <vector>

#include "fuzz_input.h"
#include "mg/memory.h"
#include "mg/path.h"

namespace {

// The path's text: measured, then written into exactly that much.
std::vector<uint8_t> Text(Path path, int32_t syntax, bool* ok) {
    std::vector<uint8_t> buffer(sizeof(int32_t));
    LStr* l = reinterpret_cast<LStr*>(buffer.data());
    l->count = -1;
    *ok = FPathTextIntoSyntax(path, l, syntax) == MgNoError && l->count >= 0;
    if (!*ok) return {};
    int32_t length = l->count;
    buffer.assign(sizeof(int32_t) + static_cast<size_t>(length), 0);
    l = reinterpret_cast<LStr*>(buffer.data());
    l->count = 0;
    if (FPathTextIntoSyntax(path, l, syntax) != MgNoError || l->count != length) abort();
    return std::vector<uint8_t>(l->text, l->text + length);
}

void FromText(const std::string& text, int32_t syntax) {
    Path path = nullptr;
    MgStatus status = FTextToPathSyntax(reinterpret_cast<const uint8_t*>(text.data()),
                                        static_cast<int32_t>(text.size()), &path, syntax);
    if (status == MgNoError && path) {
        bool ok;
        std::vector<uint8_t> written = Text(path, syntax, &ok);
        written.push_back(0);  // never a null pointer, also for the empty text
        Path again = nullptr;
        if (ok && FTextToPathSyntax(written.data(), static_cast<int32_t>(written.size() - 1),
                                    &again, syntax) == MgNoError) {
            // Text that reads gives a normalised path; its own text reads as the same value.
            // Not so for network paths (a share name may be empty, and a POSIX name that
            // starts with a backslash makes one, whose text has no leading '/'), nor for a
            // Windows path whose first name holds a colon: it reads back as a volume and more
            // (`.:a:b` gives the volume `a:b`).
            int32_t kind = PathKindNone;
            FPathKind(path, &kind);
            uint8_t first[256] = {};
            FNameAt(path, 0, first);
            bool volumeLike =
                syntax == PathSyntaxWindows && memchr(first + 1, ':', first[0]) != nullptr;
            if (kind != PathKindUNC && !volumeLike && FPathFirstDifference(path, again) != 0)
                abort();
        }
        FPathRelease(again);
        std::vector<char> native(FNativeNameBufferSize);
        FPathToNativeNameSyntax(path, native.data(), syntax);
    }
    FPathRelease(path);
}

// Every operation that takes a path value, on a block from outside.
void Exercise(Path path, int32_t syntax) {
    if (!FPathValid(path)) return;
    FPathByteSize(path);
    bool ok;
    Text(path, syntax, &ok);
    std::vector<char> native(FNativeNameBufferSize);
    FPathToNativeNameSyntax(path, native.data(), syntax);
    uint8_t name[256];
    FLastName(path, name);
    FNameAt(path, 0, name);
    Path other = FEmptyPath(nullptr);
    if (!other) return;
    FDirName(path, other);
    FRootOf(path, other);
    FPathFirstDifference(path, other);
    FPathOrder(path, other);
    FPathRelativeFrom(path, path, other);
    FPathJoin(path, other, other);
    FPathAssign(other, path);
    FPathTrimToCommon(other, path);
    FPathNormalize(path);
    FPathJoin(path, path, other);
    std::vector<uint8_t> flat(static_cast<size_t>(FPathFlatten(path, nullptr)));
    FPathFlatten(path, flat.data());
    FPathRelease(other);
}

void FromFlattened(const std::string& bytes, int32_t syntax, int32_t swap) {
    const uint8_t* buffer = reinterpret_cast<const uint8_t*>(bytes.data());
    int32_t available = static_cast<int32_t>(bytes.size());
    FPathUnflattenOrder(buffer, nullptr, available, swap);
    Path path = nullptr;
    FPathUnflattenOrder(buffer, &path, available, swap);
    if (path) Exercise(path, syntax);
    FPathRelease(path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::StartManagers(false);
    fuzz::Input in(data, size);
    uint8_t mode = in.Byte();
    int32_t syntax = mode & 2 ? PathSyntaxPosix : PathSyntaxWindows;
    // An exact copy, so that reads past the input are seen.
    std::string rest = in.Rest();
    if (mode & 1)
        FromFlattened(rest, syntax, (mode >> 2) & 1);
    else
        FromText(rest, syntax);
    return 0;
}
