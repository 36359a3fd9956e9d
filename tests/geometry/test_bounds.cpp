#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <tuple>
#include <utility>
#include <vector>

using namespace QorMath;

namespace {

using R4 = std::array<int32_t, 4>;
using B4 = std::array<double, 4>;
R4 A(const tagRECT& r) { return {r.left, r.top, r.right, r.bottom}; }
B4 A(const BoundsT<double>& b) { return {b.left, b.top, b.right, b.bottom}; }
tagRECT Rc(const R4& a) { return {a[0], a[1], a[2], a[3]}; }
// The rect `in` after op has changed it in place.
template <typename Op>
R4 Applied(const R4& in, Op op) {
    tagRECT r = Rc(in);
    op(r);
    return A(r);
}

constexpr R4 kEmpty{INT32_MAX, INT32_MIN, INT32_MIN, INT32_MAX};
constexpr B4 kEmptyB{2147483647.0, -2147483648.0, -2147483648.0, 2147483647.0};

// Exact box {min x, max y, max x, min y} of the unrounded images of pts under m.
template <typename P>
B4 BruteBox(const std::vector<P>& pts, const MATRIX& m) {
    B4 b{1e300, -1e300, -1e300, 1e300};
    for (const P& p : pts) {
        const Point2d q = m(Point2d{double(p.x), double(p.y)});
        b = {std::min(b[0], q.x), std::max(b[1], q.y), std::max(b[2], q.x), std::min(b[3], q.y)};
    }
    return b;
}

}  // namespace

TEST(Rects, SmallOperations) {
    for (R4 in : {R4{10, 10, 0, 0}, R4{0, 0, 10, 10}, R4{0, 10, 10, 0}})  // each axis on its own
        EXPECT_EQ(Applied(in, [](tagRECT& r) { NormalizeRect(r); }), (R4{0, 10, 10, 0}));
    EXPECT_EQ(Applied({0, 10, 10, 0}, [](tagRECT& r) { InflateRect(r, 2, 3); }), (R4{-2, 13, 12, -3}));
    EXPECT_EQ(A(GetPointRect({5, 7}, 2)), (R4{3, 9, 7, 5}));
    EXPECT_EQ(A(GetPointRect({5, 7}, 2, 4)), (R4{3, 11, 7, 3}));
    tagPOINT c[4];
    Point2d cd[4];
    GetRectCorners(tagRECT{1, 9, 5, 2}, c);
    GetRectCorners(BoundsT<double>{1.5, 9.5, 5.5, 2.5}, cd);
    for (int i = 0; i < 4; ++i) {  // (left, top), (right, top), (right, bottom), (left, bottom)
        EXPECT_TRUE(c[i].x == (i == 1 || i == 2 ? 5 : 1) && c[i].y == (i < 2 ? 9 : 2)) << i;
        EXPECT_EQ(cd[i], (Point2d{c[i].x + 0.5, c[i].y + 0.5})) << i;
    }
    EXPECT_TRUE(GetRectCenter({-3, 0, 0, -3}).x == -1 && GetRectCenter({-3, 0, 0, -3}).y == -1);  // truncation
    EXPECT_EQ(GetRectCenter({INT32_MAX, 2, 1, 0}).x, -1073741824);  // the int32 sum wraps
    EXPECT_TRUE(GetRectArea({0, 0, 10, 5}) == 50.0 && GetRectArea({10, 5, 0, 0}) == 50.0);
    EXPECT_EQ(GetRectArea({INT32_MIN, 0, INT32_MAX, 1}), 1.0);  // both extents wrap to -1
    const BoundsT<double> from{0, 10, 10, 0}, to{100, 300, 200, 100};
    EXPECT_EQ(GetRemappedPoint({-1, 12}, from, to), (Point2d{90, 340}));  // outside stretches too
    EXPECT_EQ(GetRemappedPoint({0, 0}, from, {200, 100, 100, 300}), (Point2d{200, 300}));  // flipped target
}

TEST(Rects, PointsBBoxAndUnionPoints) {
    const tagPOINT pts[5] = {{3, 4}, {-2, 9}, {7, -1}, {0, 0}, {5, 12}};
    for (int n : {0, -4}) EXPECT_EQ(A(GetPointsBBox(pts, n)), kEmpty);
    EXPECT_EQ(A(GetPointsBBox(static_cast<const tagPOINT*>(nullptr), 3)), kEmpty);
    EXPECT_EQ(A(GetPointsBBox(pts, 1)), (R4{3, 4, 3, 4}));
    EXPECT_EQ(A(GetPointsBBox(pts, 5)), (R4{-2, 12, 7, -1}));
    EXPECT_EQ(Applied({1, 2, 3, 4}, [&](tagRECT& r) { GetPointsBBox(pts, 3, r); }), (R4{-2, 9, 7, -1}));
    const Point2d pd[4] = {{0.5, -1.25}, {-3.5, 2.0}, {8.0, 0.0}, {1.0, 6.75}};
    EXPECT_EQ(A(GetPointsBBox(pd, 4)), (B4{-3.5, 6.75, 8.0, -1.25}));
    EXPECT_EQ(A(GetPointsBBox(static_cast<const Point2d*>(nullptr), 4)), kEmptyB);

    EXPECT_EQ(Applied(kEmpty, [](tagRECT& r) { UnionPointWithRect(r, tagPOINT{3, 4}); }), (R4{3, 4, 3, 4}));
    auto unite = [&](tagRECT& r) { for (int n : {-1, 0, 2}) UnionPointsWithRect(r, pts + 1, n); };
    EXPECT_EQ(Applied({0, 1, 1, 0}, unite), (R4{-2, 9, 7, -1}));
    // Double points grow the rect outward to whole numbers; on an edge nothing moves.
    EXPECT_EQ(Applied(kEmpty, [](tagRECT& r) { UnionPointWithRect(r, Point2d{1.2, -3.7}); }), (R4{1, -3, 2, -4}));
    auto grown = [](std::initializer_list<Point2d> ps) {
        return Applied({0, 5, 5, 0}, [&](tagRECT& r) { for (const Point2d& p : ps) UnionPointWithRect(r, p); });
    };
    EXPECT_EQ(grown({{5.0, 5.0}, {2.5, 0.0}}), (R4{0, 5, 5, 0}));
    EXPECT_EQ(grown({{5.0000001, -0.1}, {-0.5, 6.2}}), (R4{-1, 7, 6, -1}));
}

// UnionRect and IntersectRect judge validity differently on purpose.
TEST(Rects, UnionAndIntersect) {
    struct Case { R4 r1, r2, out; bool ok; };
    const std::vector<Case> unions = {
        {kEmpty, {0, 5, 5, 0}, {0, 5, 5, 0}, true},       {{0, 5, 5, 0}, kEmpty, {0, 5, 5, 0}, true},
        {kEmpty, kEmpty, kEmpty, false},                  {{0, 5, 5, 0}, {3, 9, 8, 2}, {0, 9, 8, 0}, true},
        {{0, 5, 5, 0}, {3, 3, 8, 3}, {0, 5, 5, 0}, true},   // a zero-height r2 is ignored
        {{3, 4, 3, 4}, {8, 9, 3, 2}, {8, 9, 3, 2}, false},  // invalid r1 becomes r2, whatever it holds
    }, intersections = {
        {{0, 10, 10, 0}, {5, 20, 20, 5}, {5, 10, 10, 5}, true},
        {{0, 10, 10, 0}, {20, 30, 30, 20}, {20, 10, 10, 20}, false},
        {{0, 10, 10, 0}, {10, 10, 20, 0}, {10, 10, 10, 0}, false},  // zero width, values kept
        {{0, 10, 10, 0}, {2, 0, 8, 10}, {0, 10, 10, 0}, false},     // either vertically inverted: untouched
        {{2, 0, 8, 10}, {0, 10, 10, 0}, {2, 0, 8, 10}, false},
        {{0, 10, 10, 0}, {20, 10, 5, 0}, {20, 10, 5, 0}, false},    // horizontally inverted: clipped
    };
    for (auto [cases, op] : {std::pair{&unions, &UnionRect}, {&intersections, &IntersectRect}})
        for (const Case& c : *cases) {
            tagRECT r1 = Rc(c.r1);
            EXPECT_EQ(op(r1, Rc(c.r2)), c.ok) << c.r2[0];
            EXPECT_EQ(A(r1), c.out) << c.r2[0];
        }
}

TEST(Rects, TranslationAndContainment) {
    EXPECT_EQ(Applied(kEmpty, [](tagRECT& r) { TranslateValidRect(r, 1, 1); }), kEmpty);
    EXPECT_EQ(Applied(kEmpty, [](tagRECT& r) { TranslateRect(r, 1, 1); }),  // moved, with wrap-around
              (R4{INT32_MIN, INT32_MIN + 1, INT32_MIN + 1, INT32_MIN}));
    // Non-inverted (zero extents allowed) moves; inverted in either axis does not.
    for (auto [r, moves] : {std::pair<R4, bool>{{0, 5, 5, 0}, true}, {{3, 4, 3, 4}, true}, {{5, 5, 0, 0}, false},
                            {{0, 0, 5, 5}, false}}) {
        const R4 moved{r[0] - 7, r[1] + 11, r[2] - 7, r[3] + 11};
        EXPECT_EQ(Applied(r, [](tagRECT& q) { TranslateRect(q, -7, 11); }), moved);
        EXPECT_EQ(Applied(r, [](tagRECT& q) { TranslateValidRect(q, -7, 11); }), moves ? moved : r);
    }
    // Either vertical order, but not horizontal; edges are inside.
    const tagRECT r{0, 10, 10, 0}, up{0, 0, 10, 10}, mirrored{10, 10, 0, 0};
    for (auto [p, rect, in] : {std::tuple{Point2d{5, 5}, up, true}, {{5, 5}, mirrored, false}, {{10, 0}, r, true},
                               {{11, 0}, r, false}, {{0, -1}, r, false}, {{10.0000001, 5}, r, false},
                               {{-1e-9, 5}, r, false}, {{3.5, 0.5}, up, true}}) {
        EXPECT_EQ(IsPointInRect(p, rect), in) << p.x << ' ' << p.y;
        if (p.x == std::floor(p.x) && p.y == std::floor(p.y)) {
            EXPECT_EQ(IsPointInRect(tagPOINT{int32_t(p.x), int32_t(p.y)}, rect), in) << p.x << ' ' << p.y;
        }
    }
    const tagPOINT pts[3] = {{-1, -1}, {20, 3}, {4, 4}};
    EXPECT_TRUE(!IsAnyPointInRect(pts, 0, r) && !IsAnyPointInRect(pts, 2, r) && IsAnyPointInRect(pts, 3, r));
}

TEST(BBoxes, TransformedAndUntransformed) {
    // The integer form rounds each corner (1.2 → 1) before taking the box; the
    // points form grows outward from the unrounded images (1.2 → 2).
    const MATRIX s{0.4, 0, 0, 0, 0.4, 0};
    const tagPOINT diag[2] = {{0, 0}, {3, 3}};
    EXPECT_EQ(A(GetTransformedBBox(tagRECT{0, 3, 3, 0}, s)), (R4{0, 1, 1, 0}));
    EXPECT_EQ(A(GetTransformedPointsBBox(diag, 2, s)), (R4{0, 2, 2, 0}));
    EXPECT_EQ(A(GetTransformedPointsBBox(diag, 0, s)), kEmpty);
    EXPECT_EQ(A(GetTransformedPointsBBox(static_cast<const Point2d*>(nullptr), 0, s)), kEmptyB);
    // The empty rect is four far corners, not treated apart: the full int32 range.
    EXPECT_EQ(A(GetTransformedBBox(GetEmptyRect(), IdentityMatrix())),
              (R4{INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN}));

    // Under a rotation with shear every corner counts.
    const MATRIX m = ConstructRotateAroundMatrix(0.7, {3, 4}) * MATRIX{1.5, 0.3, -2, 0, -0.8, 5};
    const std::vector<Point2d> cd{{-4, 9}, {6.5, 9}, {6.5, 1}, {-4, 1}};
    const std::vector<tagPOINT> ci{{-4, 9}, {7, 9}, {7, 1}, {-4, 1}};
    const B4 got = A(GetTransformedBBox(BoundsT<double>{-4, 9, 6.5, 1}, m));
    const B4 want = BruteBox(cd, m), wi = BruteBox(ci, m);
    for (const B4& x : {got, A(GetTransformedPointsBBox(cd.data(), 4, m))})
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(x[i], want[i], 1e-13) << i;
    const R4 outward{int32_t(std::floor(wi[0])), int32_t(std::ceil(wi[1])), int32_t(std::ceil(wi[2])),
                     int32_t(std::floor(wi[3]))};
    EXPECT_EQ(A(GetTransformedPointsBBox(ci.data(), 4, m)), outward);

    // Undoing an axis-aligned matrix is exact; a singular one inverts to all zeros.
    const MATRIX st{2, 0, 10, 0, -4, 1};
    EXPECT_EQ(A(GetUntransformedBBox(BoundsT<double>{12, 1, 18, -19}, st)), (B4{1, 5, 4, 0}));
    EXPECT_EQ(A(GetUntransformedBBox(tagRECT{12, 1, 18, -19}, st)), (R4{1, 5, 4, 0}));
    EXPECT_EQ(A(GetUntransformedBBox(tagRECT{-3, 8, 9, 2}, MATRIX{0, 0, 0, 0, 0, 0})), (R4{0, 0, 0, 0}));
    EXPECT_EQ(A(GetUntransformedBBox(BoundsT<double>{-3, 8, 9, 2}, MATRIX{1, 2, 5, 2, 4, 7})), (B4{0, 0, 0, 0}));
}
