// Points: the by-value word form, wrapping sums, scaling, distance, grid cells and mapping.
#include "mg/points.h"

#include <math.h>

#include "mg/ansi.h"
#include "support2/geometry.h"

using geom::Wrap16;

namespace {

constexpr int32_t kMapLimit = 15000;

int64_t FloorDiv(int64_t a, int64_t b) {
    int64_t q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
    return q;
}

int16_t Scaled(int16_t v, double factor) {
    const double s = v * factor;
    // No number, or one far beyond any field: 0. Anything else wraps to the field.
    if (!(s > -2147483648.0 && s < 2147483648.0)) return 0;
    return Wrap16(lround(s));
}

// ((v - fromStart) * toSize) / fromSize + toStart, the product in 32 bits.
int16_t MapCoordinate(int16_t v, int32_t fromStart, int32_t fromSize, int32_t toStart,
                      int32_t toSize) {
    const int32_t product = geom::Wrap32(int64_t{v - fromStart} * toSize);
    const int64_t quotient = fromSize == 0 ? 0 : int64_t{product} / fromSize;
    return static_cast<int16_t>(
        PinToRange(geom::Wrap32(quotient + toStart), -kMapLimit, kMapLimit));
}

}  // namespace

extern "C" {

PointWord PointToWord(Point p) {
    return static_cast<uint16_t>(p.y) | (static_cast<uint32_t>(static_cast<uint16_t>(p.x)) << 16);
}

Point PointFromWord(PointWord w) {
    return Point{Wrap16(w & 0xFFFF), Wrap16(w >> 16)};
}

void PointAdd(PointWord p, Point* q) {
    const Point a = PointFromWord(p);
    q->y = Wrap16(q->y + a.y);
    q->x = Wrap16(q->x + a.x);
}

void PointSubtract(PointWord p, Point* q) {
    const Point a = PointFromWord(p);
    q->y = Wrap16(q->y - a.y);
    q->x = Wrap16(q->x - a.x);
}

void PointScale(Point* p, double yScale, double xScale) {
    p->y = Scaled(p->y, yScale);
    p->x = Scaled(p->x, xScale);
}

double PointDistance(PointWord a, PointWord b) {
    const Point p = PointFromWord(a), q = PointFromWord(b);
    const double dy = q.y - p.y, dx = q.x - p.x;
    return sqrt(dx * dx + dy * dy);
}

void PointToCell(PointWord p, const Rect* rect, Point* cell) {
    const Point a = PointFromWord(p);
    const int32_t width = rect->right - rect->left, height = rect->bottom - rect->top;
    cell->x = width == 0 ? 0 : Wrap16(FloorDiv(a.x - rect->left, width));
    cell->y = height == 0 ? 0 : Wrap16(FloorDiv(a.y - rect->top, height));
}

void MapPoint(Point* p, const Rect* from, const Rect* to) {
    if (!to) return;
    p->y = MapCoordinate(p->y, from->top, from->bottom - from->top, to->top, to->bottom - to->top);
    p->x =
        MapCoordinate(p->x, from->left, from->right - from->left, to->left, to->right - to->left);
}

}  // extern "C"
