// Points and rectangles: field orders, wrapping, rounding and the edge rules.
#include "mg/points.h"

#include <gtest/gtest.h>

#include <string>

#include "support/rows.h"

namespace {

using namespace mgtest;

Rect R(int top, int left, int bottom, int right) {
    return Rect{int16_t(top), int16_t(left), int16_t(bottom), int16_t(right)};
}
PointWord W(int y, int x) {
    return PointToWord(Point{int16_t(y), int16_t(x)});
}
// "y,x" and "top,left,bottom,right", for whole-record comparisons.
std::string S(Point p) {
    return std::to_string(p.y) + "," + std::to_string(p.x);
}
std::string S(Rect r) {
    return S(Point{r.top, r.left}) + "," + S(Point{r.bottom, r.right});
}

TEST(Point, WordOrderWrappingAndRounding) {
    Point q{32767, -32768}, scaled[4] = {{5, 0}, {-5, 0}, {7, 0}, {100, 0}};
    PointAdd(W(1, -1), &q);
    const double factors[] = {0.5, 0.5, 0.3, -1.5};
    for (int i = 0; i < 4; ++i) PointScale(&scaled[i], factors[i], 1);
    // Cells of a grid 5 high and 10 wide at (10, 20); a rectangle with no size counts none.
    const Rect cell = R(10, 20, 15, 30), flat = R(10, 20, 10, 20);
    Point cells[5] = {{}, {}, {}, {}, {1, 1}};
    const PointWord at[] = {W(14, 29), W(15, 30), W(9, 19), W(-1, 10), W(50, 50)};
    for (int i = 0; i < 5; ++i) PointToCell(at[i], i < 4 ? &cell : &flat, &cells[i]);
    ExpectRows({Row(W(1, 2), 0x00020001), Row(S(q), "-32768,32767"), Row(S(scaled[0]), "3,0"),
                Row(S(scaled[1]), "-3,0"), Row(S(scaled[2]), "2,0"), Row(S(scaled[3]), "-150,0"),
                Row(S(cells[0]), "0,0"), Row(S(cells[1]), "1,1"), Row(S(cells[2]), "-1,-1"),
                Row(S(cells[3]), "-3,-1"), Row(S(cells[4]), "0,0")});
}

TEST(Rect, SetCentreAndMap) {
    Rect set, centred, origin = R(10, 20, 30, 60), small = R(10, 10, 11, 12),
                       none = R(10, 10, 10, 10), mid = R(10, 10, 90, 50);
    RectSet(&set, 1, 2, 3, 4);                // left, top, right, bottom
    RectCenteredAt(&centred, 10, 20, 5, -3);  // -3 >> 1 is -2
    RectCenterOnOrigin(&origin);
    const LongRect wide{0, -5, 200000, 2};
    LongPoint c;
    LongRectCenter(&wide, &c);
    // Mapping pins points, and a size shrunk below 1 keeps 1; none stays none.
    const Rect from = R(0, 0, 100, 100), to = R(0, 0, 10, 10), big = R(0, 0, 30000, 30000);
    Point far{32000, -32000};
    MapPoint(&far, &to, &big);
    for (Rect* r : {&small, &none, &mid}) MapRect(r, &from, &to);
    ExpectRows({Row(S(set), "2,1,4,3"), Row(S(centred), "22,8,19,13"),
                Row(S(origin), "-10,-20,10,20"), Row(c.y, 100000), Row(c.x, -2),
                Row(S(far), "15000,-15000"), Row(S(small), "1,1,2,2"), Row(S(none), "1,1,1,1"),
                Row(S(mid), "1,1,9,5")});
}

TEST(Rect, SharedCornerContainmentAndPinning) {
    const Rect a = R(0, 0, 10, 10), r = R(10, 20, 30, 40), wider = R(10, 19, 30, 40);
    // A rectangle's shared corner with `a`; a point in `r` (half open) and pinned inside it.
    // clang-format off
    const struct { Rect b; PointWord p; const char* want; } rows[] = {
        {R(0, 0, 10, 10), W(10, 20), "0 1 10,20"}, {R(5, 0, 10, 10), W(29, 39), "1 1 29,39"},
        {R(5, 5, 10, 10), W(30, 25), "3 0 29,25"}, {R(0, 5, 9, 10), W(15, 40), "2 0 15,39"},
        {R(1, 1, 9, 10), W(5, 0), "-1 0 10,20"}};
    // clang-format on
    for (const auto& row : rows) {
        Point pinned;
        PinPoint(row.p, &r, &pinned);
        EXPECT_EQ(std::to_string(RectSharedCorner(&a, &row.b)) + " " +
                      std::to_string(PointInRect(row.p, &r)) + " " + S(pinned),
                  row.want);
    }
    ExpectRows({Row(RectSharedCorner(nullptr, &a), -1), Row(RectInRect(&r, &r), 1),  // edges meet
                Row(RectInRect(&r, &wider), 1), Row(RectInRect(&wider, &r), 0)});
    for (int16_t Rect::*field : {&Rect::top, &Rect::left, &Rect::bottom, &Rect::right}) {
        Rect other = r;
        other.*field += 1;
        EXPECT_FALSE(RectEqual(&r, &other));
    }
}

TEST(Rect, IntersectGrowAndMove) {
    // Overlapping, touching and apart, each computed in place.
    Rect in[] = {R(0, 0, 10, 10), R(0, 0, 10, 10), R(0, 0, 10, 10)};
    const Rect with[] = {R(5, 5, 20, 20), R(0, 10, 10, 20), R(20, 20, 30, 30)};
    int32_t meets[3];
    for (int i = 0; i < 3; ++i) meets[i] = RectIntersect(&in[i], &with[i], &in[i]);
    // An empty one becomes the other in a union.
    const Rect none = R(5, 5, 5, 9), a = R(5, 5, 10, 10), b = R(0, 8, 3, 20);
    Rect u = none, u2, grown = R(10, 10, 20, 20), swapped = R(0, 0, 10, 30);
    RectUnion(&a, &u);
    u2 = u;
    RectUnion(&b, &u2);
    RectUnion(&none, &u2);
    RectAddPoint(W(25, 5), &grown);
    RectAddPoint(W(0, 30), &grown);
    RectSwapSides(&swapped);
    // Moved inside: starts before and ends beyond; too wide (the starts agree); beyond.
    const Rect bounds = R(0, 0, 100, 60);
    Rect moves[] = {R(-5, 50, 5, 70), R(10, -10, 20, 200), R(90, 10, 120, 20)};
    for (Rect& m : moves) RectMoveInside(&bounds, &m);
    ExpectRows({Row(meets[0], 1), Row(S(in[0]), "5,5,10,10"), Row(meets[1], 0),
                Row(S(in[1]), "0,10,10,10"), Row(meets[2], 0), Row(S(in[2]), "20,20,20,20"),
                Row(S(u), S(a)), Row(S(u2), "0,5,10,20"), Row(S(grown), "0,5,25,30"),
                Row(S(swapped), "-10,10,20,20"), Row(S(moves[0]), "0,40,10,60"),
                Row(S(moves[1]), "10,0,20,210"), Row(S(moves[2]), "70,10,100,20")});
}

}  // namespace
