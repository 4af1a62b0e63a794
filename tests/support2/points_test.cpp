// Points and rectangles: field orders, wrapping, rounding and the edge rules.
#include "mg/points.h"

#include <gtest/gtest.h>

namespace {

Rect R(int top, int left, int bottom, int right) {
    return Rect{int16_t(top), int16_t(left), int16_t(bottom), int16_t(right)};
}
PointWord W(int y, int x) {
    return PointToWord(Point{int16_t(y), int16_t(x)});
}
::testing::AssertionResult Is(const Rect& r, int top, int left, int bottom, int right) {
    if (r.top == top && r.left == left && r.bottom == bottom && r.right == right)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << r.top << "," << r.left << "," << r.bottom << "," << r.right;
}

TEST(Point, WordHasYInTheLowHalfAndSumsWrap) {
    EXPECT_EQ(W(1, 2), 0x00020001u);
    EXPECT_EQ(W(-1, 0), 0x0000FFFFu);
    Point q{32767, -32768};
    PointAdd(W(1, -1), &q);
    EXPECT_EQ(q.y, -32768);
    EXPECT_EQ(q.x, 32767);
    PointSubtract(W(1, -1), &q);
    EXPECT_EQ(q.y, 32767);
    EXPECT_EQ(q.x, -32768);
}

TEST(Point, ScaleRoundsHalfAwayFromZero) {
    struct {
        int v;
        double f;
        int want;
    } cases[] = {{5, 0.5, 3}, {-5, 0.5, -3}, {3, 0.5, 2}, {7, 0.3, 2}, {100, -1.5, -150}};
    for (auto c : cases) {
        Point p{int16_t(c.v), int16_t(c.v)};
        PointScale(&p, c.f, c.f);
        EXPECT_EQ(p.y, c.want) << c.v << " * " << c.f;
        EXPECT_EQ(p.x, c.want) << c.v << " * " << c.f;
    }
    EXPECT_DOUBLE_EQ(PointDistance(W(0, 0), W(3, 4)), 5.0);
}

TEST(Point, CellRoundsTowardsMinusInfinity) {
    const Rect cell = R(10, 20, 15, 30);  // 5 high, 10 wide
    struct {
        int y, x, row, column;
    } cases[] = {{10, 20, 0, 0},  {14, 29, 0, 0}, {15, 30, 1, 1},
                 {9, 19, -1, -1}, {0, 0, -2, -2}, {-1, 10, -3, -1}};
    for (auto c : cases) {
        Point out{};
        PointToCell(W(c.y, c.x), &cell, &out);
        EXPECT_EQ(out.y, c.row) << c.y;
        EXPECT_EQ(out.x, c.column) << c.x;
    }
}

TEST(Rect, SetTakesLeftTopRightBottomAndCentresByShift) {
    Rect r;
    RectSet(&r, 1, 2, 3, 4);
    EXPECT_TRUE(Is(r, 2, 1, 4, 3));
    LongRect l;
    LongRectSet(&l, 1, 2, 3, 4);
    EXPECT_EQ(l.top, 2);
    EXPECT_EQ(l.left, 1);
    RectCenteredAt(&r, 10, 20, 5, -3);  // -3 >> 1 is -2
    EXPECT_TRUE(Is(r, 22, 8, 19, 13));
    Point c;
    RectCenter(&r, &c);
    EXPECT_EQ(c.x, 10);
    EXPECT_EQ(c.y, 20);  // (22 + 19) >> 1
    Rect s = R(0, 0, 10, 4);
    RectSwapSides(&s);
    EXPECT_TRUE(Is(s, 3, -3, 7, 7));
    RectCenterOnOrigin(&s);
    EXPECT_TRUE(Is(s, -2, -5, 2, 5));
}

TEST(Rect, MapPointPinsAndMapRectKeepsASize) {
    const Rect from = R(0, 0, 100, 100), to = R(0, 0, 10, 10);
    Point p{50, 1000};
    MapPoint(&p, &from, &to);
    EXPECT_EQ(p.y, 5);
    EXPECT_EQ(p.x, 100);
    Point far{32000, -32000};
    const Rect big = R(0, 0, 30000, 30000);
    MapPoint(&far, &to, &big);
    EXPECT_EQ(far.y, 15000);
    EXPECT_EQ(far.x, -15000);
    MapPoint(&p, &from, nullptr);
    EXPECT_EQ(p.y, 5);

    struct {
        Rect in;
        Rect want;
    } cases[] = {
        {R(10, 10, 12, 12), R(1, 1, 2, 2)},  // shrinks below 1: keeps 1
        {R(10, 10, 10, 10), R(1, 1, 1, 1)},  // none stays none
        {R(10, 10, 90, 50), R(1, 1, 9, 5)},
        {R(10, 20, 5, 10), R(1, 2, 0, 1)},  // negative stays without a size
    };
    for (auto c : cases) {
        Rect r = c.in;
        MapRect(&r, &from, &to);
        EXPECT_TRUE(Is(r, c.want.top, c.want.left, c.want.bottom, c.want.right));
    }
}

TEST(Rect, SharedCornerTestsInItsOrder) {
    const Rect a = R(0, 0, 10, 10);
    struct {
        Rect b;
        int want;
    } cases[] = {
        {R(0, 0, 10, 10), 0},  // all four corners: the first test wins
        {R(5, 0, 10, 10), 1},  // left and bottom (right too): 1 before 3
        {R(5, 5, 10, 10), 3}, {R(0, 5, 9, 10), 2}, {R(1, 1, 9, 9), -1},
    };
    for (auto c : cases) EXPECT_EQ(RectSharedCorner(&a, &c.b), c.want);
    EXPECT_EQ(RectSharedCorner(nullptr, &a), -1);
}

TEST(Rect, IntersectionsAndTheirEmptyResults) {
    struct {
        Rect a, b;
        int want;
        Rect result;
    } cases[] = {
        {R(0, 0, 10, 10), R(5, 5, 20, 20), 1, R(5, 5, 10, 10)},
        {R(0, 0, 10, 10), R(0, 10, 10, 20), 0, R(0, 10, 10, 10)},  // touching
        {R(0, 0, 10, 10), R(20, 20, 30, 30), 0, R(20, 20, 20, 20)},
        {R(0, 0, 10, 10), R(5, 20, 8, 30), 0, R(5, 20, 8, 20)},
    };
    for (auto c : cases) {
        Rect out;
        EXPECT_EQ(RectIntersect(&c.a, &c.b, &out), c.want);
        EXPECT_TRUE(Is(out, c.result.top, c.result.left, c.result.bottom, c.result.right));
        Rect inPlace = c.a;
        EXPECT_EQ(RectIntersect(&inPlace, &c.b, &inPlace), c.want);
        EXPECT_TRUE(RectEqual(&inPlace, &out));
        EXPECT_EQ(RectIntersect(&c.a, &c.b, nullptr), c.want);
        LongRect la{c.a.top, c.a.left, c.a.bottom, c.a.right};
        LongRect lb{c.b.top, c.b.left, c.b.bottom, c.b.right};
        LongRect lo;
        EXPECT_EQ(LongRectIntersect(&la, &lb, &lo), c.want);
        EXPECT_EQ(lo.right, out.right);
        EXPECT_EQ(lo.bottom, out.bottom);
    }
}

TEST(Rect, ContainmentIsHalfOpen) {
    const Rect r = R(0, 0, 10, 10);
    EXPECT_TRUE(PointInRect(W(0, 0), &r));
    EXPECT_FALSE(PointInRect(W(0, 10), &r));
    EXPECT_FALSE(PointInRect(W(10, 0), &r));
    EXPECT_TRUE(RectInRect(&r, &r));
    const Rect out = R(0, 0, 11, 10);
    EXPECT_FALSE(RectInRect(&out, &r));
    Point pinned;
    PinPoint(W(50, -5), &r, &pinned);
    EXPECT_EQ(pinned.y, 9);
    EXPECT_EQ(pinned.x, 0);
}

TEST(Rect, UnionsAndGrowth) {
    const Rect empty = R(5, 5, 5, 9), a = R(0, 0, 4, 4), b = R(2, 2, 8, 6);
    Rect r = a;
    RectUnion(&empty, &r);
    EXPECT_TRUE(RectEqual(&r, &a));
    r = empty;
    RectUnion(&a, &r);
    EXPECT_TRUE(RectEqual(&r, &a));
    RectUnion(&b, &r);
    EXPECT_TRUE(Is(r, 0, 0, 8, 6));
    RectFromPoints(W(5, 1), W(2, 7), &r);
    EXPECT_TRUE(Is(r, 2, 1, 5, 7));
    RectAddPoint(W(-1, 9), &r);
    EXPECT_TRUE(Is(r, -1, 1, 5, 9));
}

TEST(Rect, MoveInsideAlignsStartFirst) {
    const Rect bounds = R(0, 0, 100, 100);
    struct {
        Rect in, want;
    } cases[] = {
        {R(-10, 50, 10, 60), R(0, 50, 20, 60)},
        {R(95, 95, 105, 110), R(90, 85, 100, 100)},
        {R(-10, -10, 200, 50), R(0, 0, 210, 60)},  // too large: start aligned, end sticks out
    };
    for (auto c : cases) {
        Rect r = c.in;
        RectMoveInside(&bounds, &r);
        EXPECT_TRUE(Is(r, c.want.top, c.want.left, c.want.bottom, c.want.right));
    }
}

TEST(Rect, EdgeArithmetic) {
    Rect r = R(0, 0, 10, 20);
    RectInset(&r, 2, 3);
    EXPECT_TRUE(Is(r, 3, 2, 7, 18));
    const Rect d = R(1, 2, 3, 4);
    RectAddEdges(&d, &r);
    EXPECT_TRUE(Is(r, 4, 4, 10, 22));
    RectSubtractEdges(&d, &r);
    EXPECT_TRUE(Is(r, 3, 2, 7, 18));
    const Rect a = R(0, 0, 0, 0), b = R(1, 2, 3, 4);
    RectAddDelta(&a, &b, &r);
    EXPECT_TRUE(Is(r, 4, 4, 10, 22));
    EXPECT_EQ(RectWidth(&r), 18);
    EXPECT_EQ(RectHeight(&r), 6);
    LongRect l{0, 0, 10, 10};
    LongRectOffset(&l, 5, -5);
    EXPECT_EQ(LongRectWidth(&l), 10);
    EXPECT_EQ(l.top, -5);
    const LongRect flat{0, 0, 0, 5};
    EXPECT_TRUE(LongRectEmpty(&flat));
}

}  // namespace
