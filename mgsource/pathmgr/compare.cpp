// Comparing and ordering paths. Names compare without regard to case.
#include "mg/pstring.h"
#include "pathmgr/pathblock.h"

using namespace pathmgr;

namespace {

// Kinds 0 and 3 sort together: both are rooted.
int32_t Rank(int32_t kind) {
    return kind == PathKindUNC ? PathKindAbsolute : kind;
}

// Walks the first `limit` names of both paths side by side until `differ` gives nonzero for a
// pair; returns that value and stores the pair's index in *at. Gives 0 when no pair differs.
template <class Differ>
int32_t FirstDifferingPair(Path a, Path b, int32_t limit, Differ differ, int32_t* at) {
    int32_t aSize = MemHandleSize(a);
    int32_t bSize = MemHandleSize(b);
    int32_t aOffset = kHeaderSize;
    int32_t bOffset = kHeaderSize;
    for (int32_t i = 0; i < limit; ++i) {
        int32_t d = differ(NameAtOffset(*a, aSize, aOffset), NameAtOffset(*b, bSize, bOffset));
        if (d != 0) {
            *at = i;
            return d;
        }
        aOffset = SkipName(*a, aSize, aOffset);
        bOffset = SkipName(*b, bSize, bOffset);
    }
    return 0;
}

}  // namespace

int32_t FPathFirstDifference(Path a, Path b) {
    if (a == nullptr || b == nullptr) return a == b ? 0 : -1;
    if (!HasHeader(a) || !HasHeader(b)) return -1;
    if (KindOf(a) != KindOf(b)) return -1;
    int32_t aCount = CountOf(a);
    int32_t bCount = CountOf(b);
    int32_t limit = aCount < bCount ? aCount : bCount;
    int32_t at = 0;
    auto differs = [](ConstPStr x, ConstPStr y) -> int32_t { return SameName(x, y) ? 0 : 1; };
    if (FirstDifferingPair(a, b, limit, differs, &at)) return at + 1;
    return aCount == bCount ? 0 : limit + 1;
}

int32_t FPathSame(Path a, Path b) {
    return FPathFirstDifference(a, b) == 0 ? 1 : 0;
}

int32_t FPathOrder(Path a, Path b) {
    if (a == b) return 0;
    if (a == nullptr || !HasHeader(a)) return -1;
    if (b == nullptr || !HasHeader(b)) return 1;
    int32_t aRank = Rank(KindOf(a));
    int32_t bRank = Rank(KindOf(b));
    if (aRank != bRank) return aRank < bRank ? -1 : 1;
    if (aRank == PathKindNone) return 0;
    int32_t aCount = CountOf(a);
    int32_t bCount = CountOf(b);
    int32_t limit = aCount < bCount ? aCount : bCount;
    int32_t at = 0;
    if (int32_t order = FirstDifferingPair(a, b, limit, PStringOrderNoCase, &at)) return order;
    return aCount - bCount;
}
