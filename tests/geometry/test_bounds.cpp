#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <utility>
#include <vector>

using namespace QorMath;

namespace {

using R4 = std::array<int32_t, 4>;
using B4 = std::array<double, 4>;
R4 A(const tagRECT& r) { return {r.left, r.top, r.right, r.bottom}; }
B4 A(const BoundsT<double>& b) { return {b.left, b.top, b.right, b.bottom}; }
tagRECT Rc(const R4& a) { return {a[0], a[1], a[2], a[3]}; }

constexpr R4 kEmpty{INT32_MAX, INT32_MIN, INT32_MIN, INT32_MAX};
constexpr B4 kEmptyB{2147483647.0, -2147483648.0, -2147483648.0, 2147483647.0};

// Exact box {min x, max y, max x, min y} of the unrounded images of pts under m.
template <typename P>
B4 BruteBox(const P* pts, size_t n, const MATRIX& m) {
    B4 b{1e300, -1e300, -1e300, 1e300};
    for (size_t i = 0; i < n; ++i) {
        const Point2d q = m(Point2d{double(pts[i].x), double(pts[i].y)});
        b = {std::min(b[0], q.x), std::max(b[1], q.y), std::max(b[2], q.x), std::min(b[3], q.y)};
    }
    return b;
}
R4 Outward(const B4& b) {
    return {int32_t(std::floor(b[0])), int32_t(std::ceil(b[1])), int32_t(std::ceil(b[2])), int32_t(std::floor(b[3]))};
}

}  // namespace

TEST(Rects, NormalizeInflateCornersPointRects) {
    for (auto [in, out] : {std::pair<R4, R4>{{0, 10, 10, 0}, {0, 10, 10, 0}}, {{10, 10, 0, 0}, {0, 10, 10, 0}},
                           {{0, 0, 10, 10}, {0, 10, 10, 0}}, {{10, -5, -10, 5}, {-10, 5, 10, -5}}}) {
        tagRECT r = Rc(in);
        NormalizeRect(r);
        EXPECT_EQ(A(r), out);
    }
    tagRECT r{0, 10, 10, 0};
    InflateRect(r, 2, 3);
    EXPECT_EQ(A(r), (R4{-2, 13, 12, -3}));  // y-up: positive values grow
    tagPOINT c[4];
    GetRectCorners(tagRECT{1, 9, 5, 2}, c);
    EXPECT_TRUE(c[0].x == 1 && c[0].y == 9 && c[1].x == 5 && c[1].y == 9 && c[2].x == 5 && c[2].y == 2 &&
                c[3].x == 1 && c[3].y == 2);
    Point2d cd[4];
    GetRectCorners(BoundsT<double>{1.5, 9.5, 5.5, 2.5}, cd);
    EXPECT_TRUE(cd[0] == (Point2d{1.5, 9.5}) && cd[1] == (Point2d{5.5, 9.5}) && cd[2] == (Point2d{5.5, 2.5}) &&
                cd[3] == (Point2d{1.5, 2.5}));
    EXPECT_EQ(A(GetPointRect({5, 7}, 2)), (R4{3, 9, 7, 5}));
    EXPECT_EQ(A(GetPointRect({5, 7}, 2, 4)), (R4{3, 11, 7, 3}));
}

TEST(Rects, PointsBBox) {
    const tagPOINT pts[5] = {{3, 4}, {-2, 9}, {7, -1}, {0, 0}, {5, 12}};
    EXPECT_EQ(A(GetPointsBBox(static_cast<const tagPOINT*>(nullptr), 3)), kEmpty);
    EXPECT_EQ(A(GetPointsBBox(pts, 0)), kEmpty);
    EXPECT_EQ(A(GetPointsBBox(pts, -4)), kEmpty);
    EXPECT_EQ(A(GetPointsBBox(pts, 1)), (R4{3, 4, 3, 4}));
    EXPECT_EQ(A(GetPointsBBox(pts, 5)), (R4{-2, 12, 7, -1}));
    tagRECT out{1, 2, 3, 4};
    GetPointsBBox(pts, 3, out);
    EXPECT_EQ(A(out), (R4{-2, 9, 7, -1}));
    const Point2d pd[4] = {{0.5, -1.25}, {-3.5, 2.0}, {8.0, 0.0}, {1.0, 6.75}};
    EXPECT_EQ(A(GetPointsBBox(pd, 4)), (B4{-3.5, 6.75, 8.0, -1.25}));
    EXPECT_EQ(A(GetPointsBBox(pd, 0)), kEmptyB);
    EXPECT_EQ(A(GetPointsBBox(static_cast<const Point2d*>(nullptr), 4)), kEmptyB);
}

TEST(Rects, UnionPointWithRect) {
    tagRECT r = GetEmptyRect();
    UnionPointWithRect(r, tagPOINT{3, 4});
    UnionPointWithRect(r, tagPOINT{-1, 10});
    EXPECT_EQ(A(r), (R4{-1, 10, 3, 4}));

    // Double points grow the rect outward to whole numbers.
    r = GetEmptyRect();
    UnionPointWithRect(r, Point2d{1.2, -3.7});
    EXPECT_EQ(A(r), (R4{1, -3, 2, -4}));
    r = {0, 5, 5, 0};
    UnionPointWithRect(r, Point2d{5.0, 5.0});  // on the edges: nothing moves
    UnionPointWithRect(r, Point2d{2.5, 0.0});
    EXPECT_EQ(A(r), (R4{0, 5, 5, 0}));
    UnionPointWithRect(r, Point2d{5.0000001, -0.1});
    UnionPointWithRect(r, Point2d{-0.5, 6.2});
    EXPECT_EQ(A(r), (R4{-1, 7, 6, -1}));
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-500.0, 500.0);
    std::vector<Point2d> pts(200);
    r = GetEmptyRect();
    for (auto& p : pts) UnionPointWithRect(r, p = {u(rng), u(rng)});
    EXPECT_EQ(A(r), Outward(BruteBox(pts.data(), pts.size(), IdentityMatrix())));

    tagRECT s{0, 1, 1, 0};
    const tagPOINT more[2] = {{-4, 2}, {3, -6}};
    UnionPointsWithRect(s, more, 0);
    UnionPointsWithRect(s, more, -1);
    EXPECT_EQ(A(s), (R4{0, 1, 1, 0}));
    UnionPointsWithRect(s, more, 2);
    EXPECT_EQ(A(s), (R4{-4, 2, 3, -6}));
}

// UnionRect and IntersectRect judge validity differently on purpose.
TEST(Rects, UnionAndIntersect) {
    const struct {
        R4 r1, r2, out;
        bool ok;
    } unions[] = {
        {kEmpty, {0, 5, 5, 0}, {0, 5, 5, 0}, true},
        {{0, 5, 5, 0}, kEmpty, {0, 5, 5, 0}, true},
        {kEmpty, kEmpty, kEmpty, false},
        {{0, 5, 5, 0}, {3, 9, 8, 2}, {0, 9, 8, 0}, true},
        {{0, 5, 5, 0}, {8, 9, 3, 2}, {0, 5, 5, 0}, true},   // inverted r2 is ignored
        {{0, 5, 5, 0}, {3, 3, 8, 3}, {0, 5, 5, 0}, true},   // so is a zero-height one
        {{3, 4, 3, 4}, {8, 9, 3, 2}, {8, 9, 3, 2}, false},  // invalid r1 becomes r2, whatever it holds
        {{3, 4, 3, 4}, {1, 2, 6, 0}, {1, 2, 6, 0}, true},
    },
      intersections[] = {
          {{0, 10, 10, 0}, {5, 20, 20, 5}, {5, 10, 10, 5}, true},
          {{0, 10, 10, 0}, {10, 10, 20, 0}, {10, 10, 10, 0}, false},  // zero width, values kept
          {{0, 10, 10, 0}, {2, 0, 8, 10}, {0, 10, 10, 0}, false},     // vertically inverted: untouched
          {{2, 0, 8, 10}, {0, 10, 10, 0}, {2, 0, 8, 10}, false},
          {{0, 10, 10, 0}, {20, 10, 5, 0}, {20, 10, 5, 0}, false},    // horizontally inverted: clipped
          {{0, 10, 10, 0}, {-5, 15, 15, -5}, {0, 10, 10, 0}, true},
          {{3, 4, 3, 4}, {0, 10, 10, 0}, {3, 4, 3, 4}, false},
          {{0, 10, 10, 0}, {20, 30, 30, 20}, {20, 10, 10, 20}, false},
      };
    for (const auto& c : unions) {
        tagRECT r1 = Rc(c.r1);
        EXPECT_EQ(UnionRect(r1, Rc(c.r2)), c.ok);
        EXPECT_EQ(A(r1), c.out);
    }
    for (const auto& c : intersections) {
        tagRECT r1 = Rc(c.r1);
        EXPECT_EQ(IntersectRect(r1, Rc(c.r2)), c.ok);
        EXPECT_EQ(A(r1), c.out);
    }
}

TEST(Rects, TranslateRectAndTranslateValidRect) {
    tagRECT e = GetEmptyRect(), v = GetEmptyRect();
    TranslateValidRect(v, 1, 1);
    EXPECT_EQ(A(v), kEmpty);
    TranslateRect(e, 1, 1);  // moved, with wrap-around
    EXPECT_EQ(A(e), (R4{INT32_MIN, INT32_MIN + 1, INT32_MIN + 1, INT32_MIN}));
    // Non-inverted (zero extents allowed) moves; inverted in either axis does not.
    for (auto [r, moves] : {std::pair<R4, bool>{{0, 5, 5, 0}, true}, {{3, 4, 3, 4}, true}, {{3, 4, 3, 0}, true},
                            {{5, 5, 0, 0}, false}, {{0, 0, 5, 5}, false}}) {
        tagRECT a = Rc(r), b = Rc(r);
        TranslateRect(a, -7, 11);
        TranslateValidRect(b, -7, 11);
        EXPECT_EQ(A(a), (R4{r[0] - 7, r[1] + 11, r[2] - 7, r[3] + 11}));
        EXPECT_EQ(A(b), moves ? A(a) : r);
    }
}

TEST(Rects, CenterAreaAndContainment) {
    EXPECT_TRUE(GetRectCenter({-3, 0, 0, -3}).x == -1 && GetRectCenter({-3, 0, 0, -3}).y == -1);  // truncation
    EXPECT_EQ(GetRectCenter({0, 10, 5, 0}).x, 2);
    EXPECT_EQ(GetRectCenter({INT32_MAX, 2, 1, 0}).x, -1073741824);  // the int32 sum wraps
    EXPECT_EQ(GetRectArea({0, 0, 10, 5}), 50.0);
    EXPECT_EQ(GetRectArea({10, 5, 0, 0}), 50.0);
    EXPECT_EQ(GetRectArea({INT32_MIN, 0, INT32_MAX, 1}), 1.0);  // both extents wrap to -1

    const tagRECT r{0, 10, 10, 0};
    EXPECT_TRUE(IsPointInRect(tagPOINT{5, 5}, tagRECT{0, 0, 10, 10}));   // either vertical order
    EXPECT_FALSE(IsPointInRect(tagPOINT{5, 5}, tagRECT{10, 10, 0, 0}));  // but not horizontal
    EXPECT_TRUE(IsPointInRect(tagPOINT{10, 0}, r));                      // edges are inside
    EXPECT_FALSE(IsPointInRect(tagPOINT{11, 0}, r));
    EXPECT_FALSE(IsPointInRect(tagPOINT{0, -1}, r));
    EXPECT_TRUE(IsPointInRect(Point2d{10.0, 5.0}, r));
    EXPECT_FALSE(IsPointInRect(Point2d{10.0000001, 5.0}, r));
    EXPECT_FALSE(IsPointInRect(Point2d{-1e-9, 5.0}, r));
    EXPECT_TRUE(IsPointInRect(Point2d{3.5, 0.5}, tagRECT{0, 0, 10, 10}));
    const tagPOINT pts[3] = {{-1, -1}, {20, 3}, {4, 4}};
    EXPECT_FALSE(IsAnyPointInRect(pts, 0, r));
    EXPECT_FALSE(IsAnyPointInRect(pts, 2, r));
    EXPECT_TRUE(IsAnyPointInRect(pts, 3, r));
}

TEST(BBoxes, TransformedAndUntransformedRect) {
    // The integer form rounds each corner (1.2 → 1) before taking the box; the
    // points form grows outward from the unrounded images (1.2 → 2).
    const MATRIX s{0.4, 0, 0, 0, 0.4, 0};
    EXPECT_EQ(A(GetTransformedBBox(tagRECT{0, 3, 3, 0}, s)), (R4{0, 1, 1, 0}));
    EXPECT_EQ(A(GetTransformedBBox(BoundsT<double>{0, 3, 3, 0}, s)), (B4{0, 0.4 * 3, 0.4 * 3, 0}));
    const tagPOINT diag[2] = {{0, 0}, {3, 3}};
    EXPECT_EQ(A(GetTransformedPointsBBox(diag, 2, s)), (R4{0, 2, 2, 0}));
    EXPECT_EQ(A(GetTransformedPointsBBox(diag + 1, 1, s)), (R4{1, 2, 2, 1}));
    // The empty rect is four far corners, not treated apart: the full int32 range.
    EXPECT_EQ(A(GetTransformedBBox(GetEmptyRect(), IdentityMatrix())), (R4{INT32_MIN, INT32_MAX, INT32_MAX, INT32_MIN}));

    const MATRIX m = ConstructRotateAroundMatrix(0.7, {3, 4}) * MATRIX{1.5, 0.3, -2, 0, -0.8, 5};
    const BoundsT<double> b{-4.0, 9.0, 6.5, 1.0};
    Point2d c[4];
    GetRectCorners(b, c);
    const B4 got = A(GetTransformedBBox(b, m)), want = BruteBox(c, 4, m);
    for (int i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(got[i], want[i]) << i;
    tagPOINT ci[4];
    GetRectCorners(tagRECT{-4, 9, 7, 1}, ci);
    m.TransformPoints(ci, 4);
    EXPECT_EQ(A(GetTransformedBBox(tagRECT{-4, 9, 7, 1}, m)), Outward(BruteBox(ci, 4, IdentityMatrix())));

    // Undoing an axis-aligned matrix is exact.
    const MATRIX st{2, 0, 10, 0, -4, 1};
    EXPECT_EQ(A(GetUntransformedBBox(BoundsT<double>{12, 1, 18, -19}, st)), (B4{1, 5, 4, 0}));
    EXPECT_EQ(A(GetUntransformedBBox(tagRECT{12, 1, 18, -19}, st)), (R4{1, 5, 4, 0}));
    // A singular matrix inverts to all zeros, translation included.
    for (const MATRIX& z : {MATRIX{0, 0, 0, 0, 0, 0}, MATRIX{1, 2, 5, 2, 4, 7}, MATRIX{1e-17, 0, 3, 0, 1e-17, 3}}) {
        EXPECT_EQ(A(GetUntransformedBBox(tagRECT{-3, 8, 9, 2}, z)), (R4{0, 0, 0, 0}));
        EXPECT_EQ(A(GetUntransformedBBox(BoundsT<double>{-3, 8, 9, 2}, z)), (B4{0, 0, 0, 0}));
    }
}

TEST(BBoxes, TransformedPoints) {
    const MATRIX m{0.83, -1.27, 3.3, 0.41, 0.66, -7.9};
    EXPECT_EQ(A(GetTransformedPointsBBox(static_cast<const tagPOINT*>(nullptr), 0, m)), kEmpty);
    EXPECT_EQ(A(GetTransformedPointsBBox(static_cast<const Point2d*>(nullptr), 0, m)), kEmptyB);
    std::mt19937 rng(11);
    std::uniform_int_distribution<int32_t> ui(-1000, 1000);
    std::uniform_real_distribution<double> ud(-1000.0, 1000.0);
    std::vector<tagPOINT> ip(300);
    std::vector<Point2d> dp(300);
    for (auto& p : ip) p = {ui(rng), ui(rng)};
    for (auto& p : dp) p = {ud(rng), ud(rng)};
    const B4 got = A(GetTransformedPointsBBox(dp.data(), dp.size(), m)), want = BruteBox(dp.data(), dp.size(), m);
    for (int i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(got[i], want[i]) << i;
    EXPECT_EQ(A(GetTransformedPointsBBox(ip.data(), ip.size(), m)), Outward(BruteBox(ip.data(), ip.size(), m)));
}

TEST(BBoxes, RemappedPoint) {
    const BoundsT<double> from{0, 10, 10, 0}, to{100, 300, 200, 100};
    for (auto [p, q] : {std::pair<Point2d, Point2d>{{0, 0}, {100, 100}}, {{10, 10}, {200, 300}},
                        {{5, 5}, {150, 200}}, {{-1, 12}, {90, 340}}})
        EXPECT_EQ(GetRemappedPoint(p, from, to), q) << p.x;
    EXPECT_EQ(GetRemappedPoint({0, 0}, from, {200, 100, 100, 300}), (Point2d{200, 300}));  // flipped target
    const Point2d n = GetRemappedPoint({2.5, 7.5}, from, IdentityBounds());
    EXPECT_NEAR(n.x, 0.25, 1e-15);
    EXPECT_NEAR(n.y, 0.75, 1e-15);
}
