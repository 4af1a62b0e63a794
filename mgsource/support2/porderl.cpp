// Order of a PStr against an LStr, exact or with case folded. A null string is empty.
#include "mg/ansi.h"
#include "mg/textutil.h"

namespace {

template <bool kFold>
int32_t OrderL(ConstPStr p, const LStr* l) {
    int32_t pCount = p ? p[0] : 0;
    int32_t lCount = (l && l->count > 0) ? l->count : 0;
    int32_t n = pCount < lCount ? pCount : lCount;
    for (int32_t i = 0; i < n; i++) {
        uint32_t a = p[1 + i];
        uint32_t b = l->text[i];
        if (a == b) continue;
        if (!kFold) return static_cast<int32_t>(a) - static_cast<int32_t>(b);
        int32_t d = static_cast<int32_t>(CharToLower(a)) - static_cast<int32_t>(CharToLower(b));
        if (d != 0) return d;
    }
    return pCount - lCount;
}

}  // namespace

int32_t PStringOrderL(ConstPStr p, const LStr* l) {
    return OrderL<false>(p, l);
}

int32_t PStringOrderLNoCase(ConstPStr p, const LStr* l) {
    return OrderL<true>(p, l);
}
