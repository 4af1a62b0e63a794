// Points and rectangles: plain coordinate arithmetic for graphical hosts. Nothing here checks
// its input beyond not crashing on it; 16-bit fields wrap at 16 bits.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

typedef struct Point {
    int16_t y;
    int16_t x;
} Point;

// A Point passed by value: one word with y in the low half and x in the high half.
typedef uint32_t PointWord;

// Half-open: bottom and right lie outside. Empty when right <= left or bottom <= top.
typedef struct Rect {
    int16_t top;
    int16_t left;
    int16_t bottom;
    int16_t right;
} Rect;

typedef struct LongRect {
    int32_t top;
    int32_t left;
    int32_t bottom;
    int32_t right;
} LongRect;

typedef struct LongPoint {
    int32_t y;
    int32_t x;
} LongPoint;

PointWord PointToWord(Point p);
Point PointFromWord(PointWord w);

// q += p, q -= p; both halves wrap.
void PointAdd(PointWord p, Point* q);
void PointSubtract(PointWord p, Point* q);
// Multiplies by the factors, rounding half away from zero.
void PointScale(Point* p, double yScale, double xScale);
double PointDistance(PointWord a, PointWord b);
// Column (x) and row (y) of the cell holding `p` in the endless grid of which `rect` is one
// cell, rounded towards minus infinity. An axis of size 0 gives 0.
void PointToCell(PointWord p, const Rect* rect, Point* cell);

// The argument order is not the field order.
void RectSet(Rect* r, int32_t left, int32_t top, int32_t right, int32_t bottom);
void LongRectSet(LongRect* r, int32_t left, int32_t top, int32_t right, int32_t bottom);
void RectCenteredAt(Rect* r, int32_t x, int32_t y, int32_t width, int32_t height);
int32_t RectHeight(const Rect* r);
int32_t RectWidth(const Rect* r);
int32_t LongRectHeight(const LongRect* r);
int32_t LongRectWidth(const LongRect* r);

// Maps from `from`'s coordinates to `to`'s, pinned to -15000..15000; a null `to` does
// nothing. An axis of `from` with size 0 maps everything to `to`'s edge.
void MapPoint(Point* p, const Rect* from, const Rect* to);
// Maps both corners; a size that was there stays at least 1, and none stays none.
void MapRect(Rect* r, const Rect* from, const Rect* to);
// 0 same top and left, 1 same left and bottom, 3 same right and bottom, 2 same right and top,
// tested in that order; -1 otherwise or when either is null.
int32_t RectSharedCorner(const Rect* a, const Rect* b);

void RectInset(Rect* r, int32_t dx, int32_t dy);
void RectOffset(Rect* r, int32_t dx, int32_t dy);
void LongRectOffset(LongRect* r, int32_t dx, int32_t dy);
// b's fields += a's, or -= a's.
void RectAddEdges(const Rect* a, Rect* b);
void RectSubtractEdges(const Rect* a, Rect* b);
// 1 when non-empty. `result` may be null, `a` or `b`; an empty result has its right and
// bottom raised to its left and top where they fell below.
int32_t RectIntersect(const Rect* a, const Rect* b, Rect* result);
int32_t LongRectIntersect(const LongRect* a, const LongRect* b, LongRect* result);
int32_t RectEqual(const Rect* a, const Rect* b);
int32_t LongRectEqual(const LongRect* a, const LongRect* b);
int32_t RectEmpty(const Rect* r);
int32_t LongRectEmpty(const LongRect* r);
void RectCenter(const Rect* r, Point* p);
void LongRectCenter(const LongRect* r, LongPoint* p);
// Adds b - a to each field of c.
void RectAddDelta(const Rect* a, const Rect* b, Rect* c);
int32_t PointInRect(PointWord p, const Rect* r);
// All of a within b; edges may coincide.
int32_t RectInRect(const Rect* a, const Rect* b);
// The nearest point inside r: at most right - 1 and bottom - 1.
void PinPoint(PointWord p, const Rect* r, Point* result);
void RectFromPoints(PointWord a, PointWord b, Rect* r);
void RectAddPoint(PointWord p, Rect* r);
// An empty source changes nothing; an empty r becomes a copy of source.
void RectUnion(const Rect* source, Rect* r);
// Per axis: aligns the start when r starts before bounds, else the end when it ends beyond.
void RectMoveInside(const Rect* bounds, Rect* r);
void RectCenterOnOrigin(Rect* r);
// Swaps width and height about the centre.
void RectSwapSides(Rect* r);

MG_EXTERN_C_END
