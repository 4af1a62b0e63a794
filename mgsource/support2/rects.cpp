// Rectangles, 16-bit (Rect) and 32-bit (LongRect); half-open, top and left inside.
#include <algorithm>

#include "mg/points.h"
#include "support2/geometry.h"

using geom::Wrap16;
using geom::Wrap32;

namespace {

template <typename R>
bool Empty(const R* r) {
    return r->right <= r->left || r->bottom <= r->top;
}

template <typename R>
bool Equal(const R* a, const R* b) {
    return a->top == b->top && a->left == b->left && a->bottom == b->bottom && a->right == b->right;
}

template <typename R>
int32_t Intersect(const R* a, const R* b, R* result) {
    R r;
    r.top = std::max(a->top, b->top);
    r.left = std::max(a->left, b->left);
    r.bottom = std::min(a->bottom, b->bottom);
    r.right = std::min(a->right, b->right);
    const bool empty = Empty(&r);
    if (empty) {
        if (r.right < r.left) r.right = r.left;
        if (r.bottom < r.top) r.bottom = r.top;
    }
    if (result) *result = r;
    return empty ? 0 : 1;
}

void Offset(Rect* r, int32_t dx, int32_t dy) {
    r->left = Wrap16(r->left + dx);
    r->right = Wrap16(r->right + dx);
    r->top = Wrap16(r->top + dy);
    r->bottom = Wrap16(r->bottom + dy);
}

}  // namespace

extern "C" {

void RectSet(Rect* r, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    *r = Rect{Wrap16(top), Wrap16(left), Wrap16(bottom), Wrap16(right)};
}

void LongRectSet(LongRect* r, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    *r = LongRect{top, left, bottom, right};
}

void RectCenteredAt(Rect* r, int32_t x, int32_t y, int32_t width, int32_t height) {
    const int64_t left = int64_t{x} - (width >> 1), top = int64_t{y} - (height >> 1);
    *r = Rect{Wrap16(top), Wrap16(left), Wrap16(top + height), Wrap16(left + width)};
}

int32_t RectHeight(const Rect* r) {
    return r->bottom - r->top;
}
int32_t RectWidth(const Rect* r) {
    return r->right - r->left;
}
int32_t LongRectHeight(const LongRect* r) {
    return Wrap32(int64_t{r->bottom} - r->top);
}
int32_t LongRectWidth(const LongRect* r) {
    return Wrap32(int64_t{r->right} - r->left);
}

void MapRect(Rect* r, const Rect* from, const Rect* to) {
    if (!to) return;
    const int32_t width = RectWidth(r), height = RectHeight(r);
    Point topLeft{r->top, r->left}, bottomRight{r->bottom, r->right};
    MapPoint(&topLeft, from, to);
    MapPoint(&bottomRight, from, to);
    *r = Rect{topLeft.y, topLeft.x, bottomRight.y, bottomRight.x};
    if (width > 0 && r->right <= r->left) r->right = Wrap16(r->left + 1);
    if (width <= 0 && r->right > r->left) r->right = r->left;
    if (height > 0 && r->bottom <= r->top) r->bottom = Wrap16(r->top + 1);
    if (height <= 0 && r->bottom > r->top) r->bottom = r->top;
}

int32_t RectSharedCorner(const Rect* a, const Rect* b) {
    if (!a || !b) return -1;
    if (a->top == b->top && a->left == b->left) return 0;
    if (a->left == b->left && a->bottom == b->bottom) return 1;
    if (a->right == b->right && a->bottom == b->bottom) return 3;
    if (a->right == b->right && a->top == b->top) return 2;
    return -1;
}

void RectInset(Rect* r, int32_t dx, int32_t dy) {
    r->left = Wrap16(r->left + dx);
    r->right = Wrap16(r->right - dx);
    r->top = Wrap16(r->top + dy);
    r->bottom = Wrap16(r->bottom - dy);
}

void RectOffset(Rect* r, int32_t dx, int32_t dy) {
    Offset(r, dx, dy);
}

void LongRectOffset(LongRect* r, int32_t dx, int32_t dy) {
    r->left = Wrap32(int64_t{r->left} + dx);
    r->right = Wrap32(int64_t{r->right} + dx);
    r->top = Wrap32(int64_t{r->top} + dy);
    r->bottom = Wrap32(int64_t{r->bottom} + dy);
}

void RectAddEdges(const Rect* a, Rect* b) {
    *b = Rect{Wrap16(b->top + a->top), Wrap16(b->left + a->left), Wrap16(b->bottom + a->bottom),
              Wrap16(b->right + a->right)};
}

void RectSubtractEdges(const Rect* a, Rect* b) {
    *b = Rect{Wrap16(b->top - a->top), Wrap16(b->left - a->left), Wrap16(b->bottom - a->bottom),
              Wrap16(b->right - a->right)};
}

int32_t RectIntersect(const Rect* a, const Rect* b, Rect* result) {
    return Intersect(a, b, result);
}
int32_t LongRectIntersect(const LongRect* a, const LongRect* b, LongRect* result) {
    return Intersect(a, b, result);
}
int32_t RectEqual(const Rect* a, const Rect* b) {
    return Equal(a, b);
}
int32_t LongRectEqual(const LongRect* a, const LongRect* b) {
    return Equal(a, b);
}
int32_t RectEmpty(const Rect* r) {
    return Empty(r);
}
int32_t LongRectEmpty(const LongRect* r) {
    return Empty(r);
}

void RectCenter(const Rect* r, Point* p) {
    p->y = Wrap16((r->top + r->bottom) >> 1);
    p->x = Wrap16((r->left + r->right) >> 1);
}

void LongRectCenter(const LongRect* r, LongPoint* p) {
    p->y = Wrap32((int64_t{r->top} + r->bottom) >> 1);
    p->x = Wrap32((int64_t{r->left} + r->right) >> 1);
}

void RectAddDelta(const Rect* a, const Rect* b, Rect* c) {
    *c = Rect{Wrap16(c->top + b->top - a->top), Wrap16(c->left + b->left - a->left),
              Wrap16(c->bottom + b->bottom - a->bottom), Wrap16(c->right + b->right - a->right)};
}

int32_t PointInRect(PointWord p, const Rect* r) {
    const Point a = PointFromWord(p);
    return a.x >= r->left && a.x < r->right && a.y >= r->top && a.y < r->bottom;
}

int32_t RectInRect(const Rect* a, const Rect* b) {
    return a->top >= b->top && a->left >= b->left && a->bottom <= b->bottom && a->right <= b->right;
}

void PinPoint(PointWord p, const Rect* r, Point* result) {
    Point a = PointFromWord(p);
    if (a.x > r->right - 1) a.x = Wrap16(r->right - 1);
    if (a.x < r->left) a.x = r->left;
    if (a.y > r->bottom - 1) a.y = Wrap16(r->bottom - 1);
    if (a.y < r->top) a.y = r->top;
    *result = a;
}

void RectFromPoints(PointWord a, PointWord b, Rect* r) {
    const Point p = PointFromWord(a), q = PointFromWord(b);
    *r = Rect{std::min(p.y, q.y), std::min(p.x, q.x), std::max(p.y, q.y), std::max(p.x, q.x)};
}

void RectAddPoint(PointWord p, Rect* r) {
    const Point a = PointFromWord(p);
    if (a.x < r->left) r->left = a.x;
    if (a.x > r->right) r->right = a.x;
    if (a.y < r->top) r->top = a.y;
    if (a.y > r->bottom) r->bottom = a.y;
}

void RectUnion(const Rect* source, Rect* r) {
    if (Empty(source)) return;
    if (Empty(r)) {
        *r = *source;
        return;
    }
    *r = Rect{std::min(r->top, source->top), std::min(r->left, source->left),
              std::max(r->bottom, source->bottom), std::max(r->right, source->right)};
}

void RectMoveInside(const Rect* bounds, Rect* r) {
    int32_t dx = 0, dy = 0;
    if (r->left < bounds->left)
        dx = bounds->left - r->left;
    else if (r->right > bounds->right)
        dx = bounds->right - r->right;
    if (r->top < bounds->top)
        dy = bounds->top - r->top;
    else if (r->bottom > bounds->bottom)
        dy = bounds->bottom - r->bottom;
    Offset(r, dx, dy);
}

void RectCenterOnOrigin(Rect* r) {
    Point c;
    RectCenter(r, &c);
    Offset(r, -c.x, -c.y);
}

void RectSwapSides(Rect* r) {
    Point c;
    RectCenter(r, &c);
    RectCenteredAt(r, c.x, c.y, RectHeight(r), RectWidth(r));
}

}  // extern "C"
