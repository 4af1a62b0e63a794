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
void ExpectRect(const Rect& r, const Rect& want) {
    EXPECT_TRUE(RectEqual(&r, &want))
        << r.top << "," << r.left << "," << r.bottom << "," << r.right;
}

TEST(Point, WordOrderWrappingAndRounding) {
    EXPECT_EQ(W(1, 2), 0x00020001u);
    Point q{32767, -32768};
    PointAdd(W(1, -1), &q);
    EXPECT_EQ(q.y, -32768);
    EXPECT_EQ(q.x, 32767);
    struct {
        int v;
        double f;
        int want;
    } scales[] = {{5, 0.5, 3}, {-5, 0.5, -3}, {7, 0.3, 2}, {100, -1.5, -150}};
    for (auto c : scales) {
        Point p{int16_t(c.v), 0};
        PointScale(&p, c.f, 1);
        EXPECT_EQ(p.y, c.want) << c.v << " * " << c.f;
    }
    const Rect cell = R(10, 20, 15, 30);  // 5 high, 10 wide
    struct {
        int y, x, row, column;
    } cells[] = {{14, 29, 0, 0}, {15, 30, 1, 1}, {9, 19, -1, -1}, {-1, 10, -3, -1}};
    for (auto c : cells) {
        Point out{};
        PointToCell(W(c.y, c.x), &cell, &out);
        EXPECT_EQ(out.y, c.row) << c.y;
        EXPECT_EQ(out.x, c.column) << c.x;
    }
}

TEST(Rect, SetTakesLeftTopRightBottomAndCentresByShift) {
    Rect r;
    RectSet(&r, 1, 2, 3, 4);
    ExpectRect(r, R(2, 1, 4, 3));
    RectCenteredAt(&r, 10, 20, 5, -3);  // -3 >> 1 is -2
    ExpectRect(r, R(22, 8, 19, 13));
}

TEST(Rect, MappingPinsAndKeepsSizes) {
    const Rect from = R(0, 0, 100, 100), to = R(0, 0, 10, 10), big = R(0, 0, 30000, 30000);
    Point far{32000, -32000};
    MapPoint(&far, &to, &big);
    EXPECT_EQ(far.y, 15000);
    EXPECT_EQ(far.x, -15000);
    struct {
        Rect in, want;
    } cases[] = {
        {R(10, 10, 12, 12), R(1, 1, 2, 2)},  // a size shrunk below 1 keeps 1
        {R(10, 10, 10, 10), R(1, 1, 1, 1)},  // none stays none
        {R(10, 10, 90, 50), R(1, 1, 9, 5)},
    };
    for (auto c : cases) {
        Rect r = c.in;
        MapRect(&r, &from, &to);
        ExpectRect(r, c.want);
    }
}

TEST(Rect, SharedCornerTestsInItsOrder) {
    const Rect a = R(0, 0, 10, 10);
    struct {
        Rect b;
        int want;
    } cases[] = {{R(0, 0, 10, 10), 0},
                 {R(5, 0, 10, 10), 1},
                 {R(5, 5, 10, 10), 3},
                 {R(0, 5, 9, 10), 2},
                 {R(1, 1, 9, 9), -1}};
    for (auto c : cases) EXPECT_EQ(RectSharedCorner(&a, &c.b), c.want);
    EXPECT_EQ(RectSharedCorner(nullptr, &a), -1);
}

TEST(Rect, IntersectionsInPlaceAndEmpty) {
    struct {
        Rect a, b;
        int want;
        Rect result;
    } cases[] = {
        {R(0, 0, 10, 10), R(5, 5, 20, 20), 1, R(5, 5, 10, 10)},
        {R(0, 0, 10, 10), R(0, 10, 10, 20), 0, R(0, 10, 10, 10)},  // touching
        {R(0, 0, 10, 10), R(20, 20, 30, 30), 0, R(20, 20, 20, 20)},
    };
    for (auto c : cases) {
        Rect inPlace = c.a;
        EXPECT_EQ(RectIntersect(&inPlace, &c.b, &inPlace), c.want);
        ExpectRect(inPlace, c.result);
    }
}

}  // namespace
