// MATRIX members: application, composition, in-place bulk transforms, inversion,
// the modifiers, fixed points and lines, the largest scale, and classification.

#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <random>
#include <vector>

using namespace QorMath;

namespace {
using P = Point2d;
using V = Vector2d;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int32_t kMin = std::numeric_limits<int32_t>::min();

::testing::AssertionResult Near(const MATRIX& g, const MATRIX& w, double tol) {
    const double gv[] = {g.a, g.b, g.tx, g.c, g.d, g.ty}, wv[] = {w.a, w.b, w.tx, w.c, w.d, w.ty};
    const char* names[] = {"a", "b", "tx", "c", "d", "ty"};
    for (int i = 0; i < 6; ++i)
        if (!(std::fabs(gv[i] - wv[i]) <= tol))
            return ::testing::AssertionFailure() << std::setprecision(17) << names[i] << ": " << gv[i] << " vs " << wv[i];
    return ::testing::AssertionSuccess();
}
template <int K>
::testing::AssertionResult Near(vector2dT<double, K> g, vector2dT<double, K> w, double tol) {
    if (std::fabs(g.x - w.x) <= tol && std::fabs(g.y - w.y) <= tol) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << std::setprecision(17) << "(" << g.x << ", " << g.y << ") vs (" << w.x
                                         << ", " << w.y << ")";
}
::testing::AssertionResult Same(const MATRIX& g, const MATRIX& w) { return Near(g, w, 0.0); }
void ExpectPoints(const tagPOINT* got, std::initializer_list<tagPOINT> want) {
    for (const tagPOINT& w : want) {
        EXPECT_TRUE(got->x == w.x && got->y == w.y) << got->x << ", " << got->y << " vs " << w.x << ", " << w.y;
        ++got;
    }
}

// Entries in [-3, 3]; |det| >= minDet keeps inverses well conditioned (cond <= 36 / minDet).
MATRIX RandomMatrix(std::mt19937& rng, double minDet = 0.25) {
    std::uniform_real_distribution<double> u(-3.0, 3.0);
    for (;;) {
        const MATRIX m{u(rng), u(rng), u(rng), u(rng), u(rng), u(rng)};
        if (std::fabs(m.a * m.d - m.b * m.c) >= minDet) return m;
    }
}
P RandomPoint(std::mt19937& rng) {
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    return {u(rng), u(rng)};
}
V Turn(V v, double t) { return {std::cos(t) * v.x - std::sin(t) * v.y, std::sin(t) * v.x + std::cos(t) * v.y}; }
}  // namespace

TEST(MatrixApply, PointsTakeTheTranslationVectorsDoNot) {
    const MATRIX m{2, 0, 5, 0, 3, 7};
    EXPECT_TRUE(Near(m(P{1, 1}), P{7, 10}, 0) && Near(m(V{1, 1}), V{2, 3}, 0));
    // The columns are the images of the unit axes, the translation that of the origin.
    const MATRIX g{0.5, -2, 3.25, 1.5, 0.25, -7};
    EXPECT_TRUE(Near(g(V{1, 0}), V{0.5, 1.5}, 0) && Near(g(V{0, 1}), V{-2, 0.25}, 0));
    EXPECT_TRUE(Near(g(P{0, 0}), P{3.25, -7}, 0) && Near(g(P{2, -4}), P{12.25, -5}, 0));
}

TEST(MatrixApply, ProductAppliesTheRightOperandFirst) {
    const MATRIX shift{1, 0, 5, 0, 1, 0}, quarter{0, -1, 0, 1, 0, 0};
    EXPECT_TRUE(Near((shift * quarter)(P{1, 0}), P{5, 1}, 0) && Near((quarter * shift)(P{1, 0}), P{0, 6}, 0));
    std::mt19937 rng(11);
    for (int i = 0; i < 100; ++i) {
        const MATRIX a = RandomMatrix(rng, 0), b = RandomMatrix(rng, 0);
        const P q = RandomPoint(rng);
        EXPECT_TRUE(Near((a * b)(q), a(b(q)), 1e-11));  // magnitudes below ~400: a few ulps are ~2e-13
    }
}

TEST(MatrixTransformPoints, DoubleArrayInPlaceForEveryLength) {
    // Dyadic entries and coordinates: every product and sum is exact, so the bulk
    // path must agree with single application bit for bit whatever its grouping.
    const MATRIX g{0.5, -2, 3.25, 1.5, 0.25, -7};
    std::vector<P> src;
    for (int i = 0; i < 9; ++i) src.push_back({i - 3.0, 0.5 * i * i - 4});
    for (size_t n = 0; n <= src.size(); ++n) {
        std::vector<P> pts = src;
        g.TransformPoints(pts.data(), n);
        for (size_t i = 0; i < src.size(); ++i)
            EXPECT_TRUE(Near(pts[i], i < n ? g(src[i]) : src[i], 0)) << "count " << n << ", point " << i;
    }
}

TEST(MatrixTransformPoints, IntegerRoundsHalfAwayFromZero) {
    const MATRIX m{1.5, 0, 0, 0, -0.5, 0.25};
    tagPOINT pts[] = {{1, 1}, {-1, 3}, {3, -1}, {0, 0}, {2147483647, 9}};
    m.TransformPoints(pts, 4);  // (1.5, -0.25), (-1.5, -1.25), (4.5, 0.75), (0, 0.25); the last is beyond count
    ExpectPoints(pts, {{2, 0}, {-2, -1}, {5, 1}, {0, 0}, {2147483647, 9}});
    m.TransformPoints(pts + 4, 1);
    ExpectPoints(pts + 4, {{kMin, -4}});  // 3221225470.5 does not fit: the integer-indefinite value
}

TEST(MatrixTransformPoints, RangeCheckClampsAfterTheInt32Conversion) {
    const MATRIX big{1e6, 0, 0, 0, 1e6, 0};
    tagPOINT pts[] = {{1000, -1000}, {3000, 0}, {-3000, 1}, {1, -2}}, raw[] = {{3000, 0}};
    big.TransformPointsWithRangeCheck(pts, 4);
    // 3e9 converts to -2^31 first and so clamps low, not high.
    ExpectPoints(pts, {{536870911, -536870912}, {-536870912, 0}, {-536870912, 1000000}, {1000000, -2000000}});
    big.TransformPoints(raw, 1);
    ExpectPoints(raw, {{kMin, 0}});
    // The extreme in-range results pass; half a unit further they round out and are clamped back.
    tagPOINT e[] = {{0, 0}, {1, -1}};
    MATRIX{1, 0, 536870910.5, 0, 1, -536870911.5}.TransformPointsWithRangeCheck(e, 2);
    ExpectPoints(e, {{536870911, -536870912}, {536870911, -536870912}});
}

TEST(MatrixInvert, WorkedExamplesAndSingularity) {
    MATRIX m{2, 0, 4, 0, 4, 8};
    ASSERT_TRUE(m.Invert(1e-12));
    EXPECT_TRUE(Same(m, {0.5, 0, -2, 0, 0.25, -2}));
    MATRIX s{1, 2, 0, 2, 4, 0}, swap{0, 1, 3, 1, 0, -1}, h{1, 0, 3, 0, 0.5, 0}, h2 = h, n{kNaN, 0, 0, 0, 1, 0};
    EXPECT_FALSE(s.Invert(1e-12));
    EXPECT_TRUE(Same(s, {0, 0, 0, 0, 0, 0}));
    ASSERT_TRUE(swap.Invert(0));  // negative determinant; its own inverse up to translation
    EXPECT_TRUE(Same(swap, {0, 1, 1, 1, 0, -3}));
    // |det| <= tolerance counts as singular, inclusively; det here is exactly 0.5.
    EXPECT_FALSE(h.Invert(0.5));
    ASSERT_TRUE(h2.Invert(0.25));
    EXPECT_TRUE(Same(h2, {1, 0, -3, 0, 2, 0}));
    EXPECT_TRUE(n.Invert(1e-12) && std::isnan(n.a));  // a NaN determinant is not "at most the tolerance"
}

TEST(MatrixInvert, RandomMatricesTimesInverseGiveIdentity) {
    std::mt19937 rng(5);
    const MATRIX id{1, 0, 0, 0, 1, 0};
    for (int i = 0; i < 200; ++i) {
        const MATRIX m = RandomMatrix(rng);
        MATRIX inv = m;
        ASSERT_TRUE(inv.Invert(1e-12));
        MATRIX back = inv;
        ASSERT_TRUE(back.Invert(1e-12));
        // cond <= 144 and translations below ~100: errors stay near 1e-13.
        EXPECT_TRUE(Near(m * inv, id, 1e-11) && Near(inv * m, id, 1e-11) && Near(back, m, 1e-11));
        const V w{1.5, -2.5};
        EXPECT_TRUE(Near(m(m.GetUntransformedVector(w)), w, 1e-12));
    }
    const MATRIX flat{1, 2, 7, 2, 4, 7};  // singular: the vector comes back unchanged
    EXPECT_TRUE(Near(flat.GetUntransformedVector(V{3, -5}), V{3, -5}, 0));
}

TEST(MatrixModifiers, RemoveScalingNormalisesEachColumnAlone) {
    MATRIX m{3, 1, 5, 4, 0, 7};
    m.RemoveScaling();
    EXPECT_TRUE(Near(m, {0.6, 1, 5, 0.8, 0, 7}, 1e-16));  // still skewed: columns not made perpendicular
    // Only squared lengths strictly above DBL_EPSILON are normalised: (2^-26)^2 is exactly 2^-52.
    MATRIX tiny{0x1p-26, 0x1p-25, 1, 0, 0, 2}, zero{0, 0, 1, 0, 0, 2};
    tiny.RemoveScaling();
    zero.RemoveScaling();
    EXPECT_TRUE(Same(tiny, {0x1p-26, 1, 1, 0, 0, 2}) && Same(zero, {0, 0, 1, 0, 0, 2}));
}

TEST(MatrixModifiers, ScaleRotateAndTransformApplyAfterThisMatrix) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> ang(-4.0, 4.0);
    for (int i = 0; i < 100; ++i) {
        const MATRIX m = RandomMatrix(rng, 0), n = RandomMatrix(rng, 0);
        const P q = RandomPoint(rng), p = RandomPoint(rng), img = m(q);
        const V s{1.5 - i * 0.03, -0.75 + i * 0.02};
        const double t = ang(rng), tol = 1e-11;  // coordinates below ~200
        // Where q lands once the modifier has been applied to a copy of m.
        auto after = [&](auto modify) { MATRIX k = m; modify(k); return k(q); };
        EXPECT_TRUE(Near(after([&](MATRIX& k) { k.ScaleMatrix(s); }), P{s.x * img.x, s.y * img.y}, tol));
        EXPECT_TRUE(Near(after([&](MATRIX& k) { k.ScaleMatrix(s, p); }),
                         P{p.x + s.x * (img.x - p.x), p.y + s.y * (img.y - p.y)}, tol));
        EXPECT_TRUE(Near(after([&](MATRIX& k) { k.Rotate(t); }), AsPoint(Turn(AsVector(img), t)), tol));
        EXPECT_TRUE(Near(after([&](MATRIX& k) { k.RotateAroundPoint(t, p); }), p + Turn(img - p, t), tol));
        EXPECT_TRUE(Near(after([&](MATRIX& k) { k.TransformAroundPoint(n, p); }), n(AsPoint(img - p)) + AsVector(p), tol));
    }
}

TEST(MatrixIsIdentity, BytewiseOrWithinTolerance) {
    const MATRIX id{1, 0, 0, 0, 1, 0};
    EXPECT_TRUE(id.IsIdentity(false, 0) && id.IsIdentity(true, 0));
    for (double MATRIX::*f : {&MATRIX::b, &MATRIX::tx, &MATRIX::c, &MATRIX::ty}) {
        MATRIX z = id;
        z.*f = -0.0;  // equal to 0 but not the same bytes; the tolerance is unused without the flag
        EXPECT_TRUE(!z.IsIdentity(false, 1) && z.IsIdentity(true, 0));
    }
    for (double MATRIX::*f : {&MATRIX::a, &MATRIX::b, &MATRIX::tx, &MATRIX::c, &MATRIX::d, &MATRIX::ty}) {
        MATRIX z = id;
        z.*f += 0x1p-20;
        EXPECT_TRUE(!z.IsIdentity(false, 1) && z.IsIdentity(true, 0x1p-20) && !z.IsIdentity(true, 0x1p-21));
        z.*f = kNaN;
        EXPECT_FALSE(z.IsIdentity(true, 1e300));
    }
}

TEST(MatrixFixedPoints, CenterOfTransformation) {
    P c;
    for (const MATRIX& m : {MATRIX{1, 0, 3, 0, 1, -2}, MATRIX{1, 0, 0, 0, 1, 0}}) {  // none, or not unique
        c = {5, 5};
        EXPECT_FALSE(m.GetCenterOfTransformation(c));
        EXPECT_TRUE(Near(c, P{0, 0}, 0));
    }
    ASSERT_TRUE((MATRIX{0, -1, 2, 1, 0, 0}).GetCenterOfTransformation(c));  // quarter turn about (1, 1)
    EXPECT_TRUE(Near(c, P{1, 1}, 0));
    ASSERT_TRUE((MATRIX{2, 0, -3, 0, 2, 1}).GetCenterOfTransformation(c));  // doubling about (3, -1)
    EXPECT_TRUE(Near(c, P{3, -1}, 0));
    std::mt19937 rng(9);
    for (int i = 0; i < 100; ++i) {
        const MATRIX m = RandomMatrix(rng, 0);
        if (m.GetCenterOfTransformation(c)) {
            EXPECT_TRUE(Near(m(c), c, 1e-9 * (1 + std::fabs(c.x) + std::fabs(c.y))));
        }
    }
}

TEST(MatrixFixedPoints, LineOfTransformation) {
    const struct { const char* name; MATRIX m; P p1, p2; } lines[] = {
        {"reflection across the x axis", {1, 0, 0, 0, -1, 0}, {0, 0}, {1, 0}},
        {"reflection across y = 3", {1, 0, 0, 0, -1, 6}, {0, 3}, {1, 3}},
        {"reflection across the y axis", {-1, 0, 0, 0, 1, 0}, {0, 0}, {0, 1}},
        {"reflection across y = x", {0, 1, 0, 1, 0, 0}, {0, 0}, {1, 1}},
        {"oblique reflection fixing y = x + 3", {-1, 2, -6, 0, 1, 0}, {-3, 0}, {-2, 1}},
        {"shear along y = -2", {1, 2, 4, 0, 1, 0}, {0, -2}, {1, -2}},
        {"projection onto the x axis", {1, 0, 0, 0, 0, 0}, {0, 0}, {1, 0}},
    };
    for (const auto& l : lines) {
        SCOPED_TRACE(l.name);
        P p1{99, 99}, p2{99, 99};
        ASSERT_TRUE(l.m.GetLineOfTransformation(p1, p2));
        EXPECT_TRUE(Near(p1, l.p1, 0) && Near(p2, l.p2, 0)) << p1.x << ", " << p1.y << "; " << p2.x << ", " << p2.y;
        EXPECT_TRUE(Near(l.m(p1), p1, 0) && Near(l.m(p2), p2, 0));  // both points really are fixed
    }
    const struct { const char* name; MATRIX m; } none[] = {
        {"identity", {1, 0, 0, 0, 1, 0}},        {"quarter turn", {0, -1, 2, 1, 0, 0}},
        {"translation", {1, 0, 5, 0, 1, 0}},     {"shear with a y shift", {1, 2, 0, 0, 1, 3}},
        {"uniform scale", {2, 0, 0, 0, 2, 0}},
    };
    for (const auto& n : none) {
        SCOPED_TRACE(n.name);
        P p1{99, 99}, p2{-99, -99};
        EXPECT_FALSE(n.m.GetLineOfTransformation(p1, p2));
        EXPECT_TRUE(Near(p1, P{99, 99}, 0) && Near(p2, P{-99, -99}, 0));  // untouched
    }
}

TEST(MatrixMaximumScale, LargestStretchOfAnyUnitVector) {
    EXPECT_EQ((MATRIX{3, 0, 7, 0, -4, 9}).GetMaximumMatrixVectorScale(), 4.0);
    EXPECT_EQ((MATRIX{0, 0, 1, 0, 0, 1}).GetMaximumMatrixVectorScale(), 0.0);
    EXPECT_NEAR((MATRIX{1, 1, 0, 0, 1, 0}).GetMaximumMatrixVectorScale(), (1 + std::sqrt(5.0)) / 2, 1e-15);
    // Dense sampling: with 4096 directions the best sample is within 7.7e-4 rad of the
    // maximising one, so it falls short by at most a relative (7.7e-4)^2 / 2 = 3e-7.
    std::mt19937 rng(21);
    for (int i = 0; i < 40; ++i) {
        const MATRIX m = RandomMatrix(rng, 0);
        double best = 0;
        for (int k = 0; k < 4096; ++k) {
            const double t = 2 * Pi * k / 4096;
            best = std::max(best, Magnitude(m(V{std::cos(t), std::sin(t)})));
        }
        const double s = m.GetMaximumMatrixVectorScale();
        EXPECT_LE(best, s * (1 + 1e-14));
        EXPECT_GE(best, s * (1 - 1e-6));
    }
}

TEST(MatrixRadians, TransformedAndUntransformedDirections) {
    EXPECT_NEAR((MATRIX{1, 0, 0, 0, -1, 0}).GetTransformedRadians(Pi / 2), 3 * Pi / 2, 1e-15);
    EXPECT_NEAR((MATRIX{1, 2, 0, 2, 4, 0}).GetUntransformedRadians(-Pi / 2), 3 * Pi / 2, 1e-15);  // singular
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> ang(-10.0, 10.0);
    for (int i = 0; i < 200; ++i) {
        const MATRIX m = RandomMatrix(rng);  // translation ignored; |linear · u| >= det / 6 > 0.04
        const double t = ang(rng), r = m.GetTransformedRadians(t), u = m.GetUntransformedRadians(t);
        EXPECT_TRUE(r >= 0 && r < TwoPi && u >= 0 && u < TwoPi) << r << " " << u;
        const V img = m(V{std::cos(t), std::sin(t)}), pre = m(V{std::cos(u), std::sin(u)});
        EXPECT_TRUE(Near(V{std::cos(r), std::sin(r)}, img / Magnitude(img), 1e-12));
        EXPECT_TRUE(Near(pre / Magnitude(pre), V{std::cos(t), std::sin(t)}, 1e-12));
    }
}

TEST(MatrixClassification, PredicatesWithTheirToleranceRules) {
    // Tolerances are inclusive and NaN is never within one. IsRotated and IsScaledOnly ignore
    // theirs, and IsScaledOnly rejects a scale of one axis; signs are tested without tolerance;
    // IsScaled measures columns, so {1, 1; 0, 0} (unit columns, non-unit rows) is not scaled.
    struct Case { MATRIX m; double tol; bool want; };
    const double r = std::sqrt(0.5), nan = kNaN;
#define PR(fn) #fn, &MATRIX::fn
    const struct { const char* name; bool (MATRIX::*f)(double) const; std::vector<Case> cases; } preds[] = {
        {PR(IsRotated), {{{1, -0.0, 0, 0, 1, 0}, 0, false}, {{0, -1, 0, 1, 0, 0}, 0, true},
                         {{1, 1e-300, 0, 1e-300, 1, 0}, 1, true}, {{1, 0.5, 0, 0, 1, 0}, 0, false}}},
        {PR(IsScaledOnly), {{{2, 0, 0, 0, 1, 0}, 0, false}, {{1, 0, 0, 0, 3, 0}, 0, false}, {{2, 0, 5, 0, 3, 7}, 0, true},
                            {{-1, 0, 0, 0, -1, 0}, 0, true}, {{2, 1e-300, 0, 0, 3, 0}, 1, false}}},
        {PR(IsSkewedOrRotated), {{{1, 0.25, 0, 0, 1, 0}, 0.25, false}, {{1, 0.25, 0, 0, 1, 0}, 0.125, true},
                                 {{1, 0, 0, -0.25, 1, 0}, 0.125, true}, {{-3, 0, 9, 0, 5, 9}, 0, false},
                                 {{1, nan, 0, 0, 1, 0}, 1, true}}},
        {PR(IsSkewedOrRotatedOrMirrored), {{{2, 0.25, 0, 0, 3, 0}, 0.25, false}, {{-1, 0, 0, 0, 1, 0}, 1, true},
                                           {{1, 0, 0, 0, 0, 0}, 1, true}, {{1, 0, 0, 0.5, 1, 0}, 0.25, true}}},
        {PR(IsScaledOrSkewedOrRotated), {{{1.25, 0, 0, 0, 1, 0}, 0.25, false}, {{1.25, 0, 0, 0, 1, 0}, 0.125, true},
                                         {{1, 0, 8, 0, 0.75, -8}, 0.125, true}, {{1, 0, 8, 0, 1, -8}, 0, false},
                                         {{1, 0, 0, nan, 1, 0}, 1, true}}},
        {PR(IsNonUniformScaledOrSkewedOrRotated),
         {{{2, 0, 0, 0, 2, 0}, 0, false}, {{2, 0, 0, 0, 3, 0}, 1, false}, {{2, 0, 0, 0, 3, 0}, 0.5, true},
          {{-2, 0, 0, 0, -2, 0}, 0, true}, {{2, 0.25, 0, 0, 2, 0}, 0.125, true}}},
        {PR(IsScaled), {{{1, 1, 0, 0, 0, 0}, 0, false}, {{1, 0, 0, 0, 1.5, 0}, 0.5, false}, {{1, 0, 0, 0, 1.5, 0}, 0.25, true},
                        {{0.6, -0.8, 0, 0.8, 0.6, 0}, 1e-15, false}, {{1, 0, 0, 0, nan, 0}, 1, true}}},
        {PR(IsOrthogonal), {{{2, 0, 0, 0, 3, 0}, 0, true}, {{0, 2, 0, 3, 0, 0}, 0, true}, {{1, 0.5, 0, 0, 1, 0}, 0.5, true},
                            {{1, 0.5, 0, 0, 1, 0}, 0.25, false}, {{1, nan, 0, 0, 1, 0}, 1, false}}},
        {PR(IsOrthonormal), {{{0, -1, 0, 1, 0, 0}, 0, true}, {{1, 0, 0, 0, -1, 0}, 0, true}, {{2, 0, 0, 0, 1, 0}, 1, false},
                             {{2, 0, 0, 0, 1, 0}, 3, true}, {{1, 0.5, 0, 0, 1, 0}, 0.25, false},
                             {{1, 0.5, 0, 0, 1, 0}, 0.5, true}}},
        {PR(IsUniformOrthogonal), {{{2, 0, 0, 0, -2, 0}, 0, true}, {{0, -3, 0, 3, 0, 0}, 0, true},
                                   {{2, 0, 0, 0, 3, 0}, 5, true}, {{2, 0, 0, 0, 3, 0}, 4, false}}},
        {PR(IsOrthonormalAxisAligned),
         {{{0, 1, 0, 1, 0, 0}, 0, true}, {{0, -1, 0, -1, 0, 0}, 0, true}, {{-1, 0, 0, 0, 1, 0}, 0, true},
          {{1, 0, 0, 0, 2, 0}, 0.5, false}, {{1, 0, 0, 0, 2, 0}, 1, true}, {{0, 2, 0, 1, 0, 0}, 0.5, false},
          {{0, 2, 0, 1, 0, 0}, 1, true}, {{r, -r, 0, r, r, 0}, 0.25, false}}},
    };
#undef PR
    for (const auto& p : preds)
        for (size_t i = 0; i < p.cases.size(); ++i)
            EXPECT_EQ((p.cases[i].m.*p.f)(p.cases[i].tol), p.cases[i].want) << p.name << " case " << i;
    for (const MATRIX& m : {MATRIX{1, 0, 0, 0, -1, 0}, MATRIX{0, 1, 0, 1, 0, 0}, MATRIX{2, 3, 0, 1, 1, 0}})
        EXPECT_TRUE(m.IsMirrored()) << m.a;
    for (const MATRIX& m : {MATRIX{-1, 0, 0, 0, -1, 0}, MATRIX{1, 1, 0, 1, 1, 0}}) EXPECT_FALSE(m.IsMirrored()) << m.a;
}
