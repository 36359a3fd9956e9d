// MATRIX members: application, composition, in-place bulk transforms, inversion,
// the modifiers, comparison, fixed points and lines, the largest scale, and classification.

#include <algorithm>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace qtest;

namespace {
using P = Point2d;
using V = Vector2d;
const MATRIX kId{1, 0, 0, 0, 1, 0};
V Dir(double t) { return {std::cos(t), std::sin(t)}; }
V Turn(V v, double t) { return {std::cos(t) * v.x - std::sin(t) * v.y, std::sin(t) * v.x + std::cos(t) * v.y}; }
}  // namespace

TEST(MatrixWorkedExamples, ApplyProductInvertScaleAndDirections) {
    // The columns are the images of the unit axes, the translation that of the origin; vectors ignore it.
    const MATRIX g{0.5, -2, 3.25, 1.5, 0.25, -7}, shift{1, 0, 5, 0, 1, 0}, quarter{0, -1, 0, 1, 0, 0};
    EXPECT_TRUE(Near(g(V{1, 0}), V{0.5, 1.5}) && Near(g(V{0, 1}), V{-2, 0.25}) && Near(g(V{2, -4}), V{9, 2}));
    EXPECT_TRUE(Near(g(P{0, 0}), P{3.25, -7}) && Near(g(P{2, -4}), P{12.25, -5}));
    EXPECT_TRUE(Near((shift * quarter)(P{1, 0}), P{5, 1}) && Near((quarter * shift)(P{1, 0}), P{0, 6}));  // right first
    MATRIX m{2, 0, 4, 0, 4, 8}, s{1, 2, 0, 2, 4, 0}, swap{0, 1, 3, 1, 0, -1}, h{1, 0, 3, 0, 0.5, 0}, n{kNaN, 0, 0, 0, 1, 0};
    EXPECT_TRUE(m.Invert(1e-12) && Near(m, {0.5, 0, -2, 0, 0.25, -2}) && !s.Invert(1e-12) && Near(s, {0, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(swap.Invert(0) && Near(swap, {0, 1, 1, 1, 0, -3}));  // negative determinant
    EXPECT_TRUE(!MATRIX(h).Invert(0.5) && h.Invert(0.25) && Near(h, {1, 0, -3, 0, 2, 0}));  // det 0.5: inclusive
    EXPECT_TRUE(n.Invert(1e-12) && std::isnan(n.a));  // a NaN determinant is not "at most the tolerance"
    EXPECT_TRUE(Near(s.GetUntransformedVector(V{3, -5}), V{3, -5}));  // singular: unchanged
    // Each column alone, skew kept; only squared lengths strictly above DBL_EPSILON: (2^-26)^2 is 2^-52.
    EXPECT_TRUE(Near(Apply(&MATRIX::RemoveScaling, MATRIX{3, 1, 5, 4, 0, 7}), {0.6, 1, 5, 0.8, 0, 7}, 1e-16));
    EXPECT_TRUE(Near(Apply(&MATRIX::RemoveScaling, MATRIX{0x1p-26, 0x1p-25, 1, 0, 0, 2}), {0x1p-26, 1, 1, 0, 0, 2}));
    EXPECT_EQ(MATRIX({3, 0, 7, 0, -4, 9}).GetMaximumMatrixVectorScale(), 4.0);
    EXPECT_NEAR(MATRIX({1, 1, 0, 0, 1, 0}).GetMaximumMatrixVectorScale(), (1 + std::sqrt(5.0)) / 2, 1e-15);
    EXPECT_NEAR(MATRIX({1, 0, 0, 0, -1, 0}).GetTransformedRadians(Pi / 2), 3 * Pi / 2, 1e-15);
    EXPECT_NEAR(MATRIX({1, 2, 0, 2, 4, 0}).GetUntransformedRadians(-Pi / 2), 3 * Pi / 2, 1e-15);  // singular
}

TEST(MatrixTransformPoints, DoubleAndIntegerBulkPaths) {
    // Dyadic entries and coordinates make every product exact, so each length of the bulk
    // path (vector body and tail) must agree with single application bit for bit.
    const MATRIX g{0.5, -2, 3.25, 1.5, 0.25, -7}, m{1.5, 0, 0, 0, -0.5, 0.25}, big{1e6, 0, 0, 0, 1e6, 0};
    auto src = [](size_t i) { return P{i - 3.0, 0.5 * i * i - 4}; };
    for (size_t n = 0; n <= 9; ++n) {
        P pts[9];
        for (size_t i = 0; i < 9; ++i) pts[i] = src(i);
        g.TransformPoints(pts, n);
        for (size_t i = 0; i < 9; ++i) EXPECT_TRUE(Near(pts[i], i < n ? g(src(i)) : src(i))) << n << ", " << i;
    }
    // Integers round half away from zero: (1.5, -0.25), (-1.5, -1.25), (4.5, 0.75); 3221225470.5 does not fit.
    tagPOINT pts[] = {{1, 1}, {-1, 3}, {3, -1}, {2147483647, 9}, {5, 5}};
    m.TransformPoints(pts, 4);
    EXPECT_TRUE(Same(pts, {{2, 0}, {-2, -1}, {5, 1}, {INT32_MIN, -4}, {5, 5}}));
    // The range check clamps after the int32 conversion: 3e9 becomes -2^31 first and so clamps low.
    // The extreme in-range results pass; half a unit further they round out and are clamped back.
    tagPOINT r[] = {{1000, -1000}, {3000, 0}, {-3000, 1}}, e[] = {{0, 0}, {1, -1}};
    big.TransformPointsWithRangeCheck(r, 3);
    MATRIX{1, 0, 536870910.5, 0, 1, -536870911.5}.TransformPointsWithRangeCheck(e, 2);
    EXPECT_TRUE(Same(r, {{536870911, -536870912}, {-536870912, 0}, {-536870912, 1000000}}));
    EXPECT_TRUE(Same(e, {{536870911, -536870912}, {536870911, -536870912}}));
}

TEST(MatrixRandom, AgreesWithIndependentComputation) {
    // Composition, the inverse, where a point lands when a modifier follows the matrix, fixed
    // points, the largest scale against sampled directions, and directions of images and pre-images.
    std::mt19937 rng(3);
    for (int i = 0; i < 100; ++i) {
        // |det| >= 0.25 with entries in [-3, 3]: cond <= 144 and |a · u| >= det / 6; coordinates below ~400.
        const MATRIX a = RandomMatrix(rng, 0.25), n = RandomMatrix(rng);
        const P q = RandomPoint(rng), p = RandomPoint(rng), img = a(q);
        const V s{1.5 - i * 0.03, -0.75 + i * 0.02}, w{1.5, -2.5};
        const double t = 0.2 * i - 10, tol = 1e-11;
        MATRIX inv = a;
        EXPECT_TRUE(inv.Invert(1e-12) && Near(a * inv, kId, tol) && Near(inv * a, kId, tol));
        EXPECT_TRUE(Near((n * a)(q), n(img), tol) && Near(a(a.GetUntransformedVector(w)), w, 1e-12));
        // Where q lands when the modifier op is applied to a copy of a.
#define AFTER(op) [&] { MATRIX k = a; k.op; return k(q); }()
        EXPECT_TRUE(Near(AFTER(ScaleMatrix(s)), P{s.x * img.x, s.y * img.y}, tol));
        EXPECT_TRUE(Near(AFTER(ScaleMatrix(s, p)), p + V{s.x * (img.x - p.x), s.y * (img.y - p.y)}, tol));
        EXPECT_TRUE(Near(AFTER(Rotate(t)), AsPoint(Turn(AsVector(img), t)), tol));
        EXPECT_TRUE(Near(AFTER(RotateAroundPoint(t, p)), p + Turn(img - p, t), tol));
        EXPECT_TRUE(Near(AFTER(TransformAroundPoint(n, p)), n(AsPoint(img - p)) + AsVector(p), tol));
#undef AFTER
        P c;
        EXPECT_TRUE(!n.GetCenterOfTransformation(c) || Near(n(c), c, 1e-9 * (1 + std::fabs(c.x) + std::fabs(c.y))));
        // 4096 directions: the best lies within 7.7e-4 rad of the maximiser, short by at most 3e-7 relative.
        double best = 0, top = a.GetMaximumMatrixVectorScale();
        for (int k = 0; k < 4096; ++k) best = std::max(best, Magnitude(a(Dir(k * Pi / 2048))));
        EXPECT_TRUE(best <= top * (1 + 1e-14) && best >= top * (1 - 1e-6)) << best << " " << top;
        const double r = a.GetTransformedRadians(t), u = a.GetUntransformedRadians(t);
        const V fwd = a(Dir(t)), pre = a(Dir(u));
        EXPECT_TRUE(r >= 0 && r < TwoPi && u >= 0 && u < TwoPi) << r << " " << u;
        EXPECT_TRUE(Near(Dir(r), fwd / Magnitude(fwd), 1e-12) && Near(pre / Magnitude(pre), Dir(t), 1e-12));
    }
}

TEST(MatrixCompare, IsIdentityIsEqualAndIsZeroPerField) {
    // Tolerances are inclusive and NaN never matches. Without tolerance IsIdentity compares bytes, so -0.0
    // off the diagonal is not the identity (the tolerance argument is then unused).
    EXPECT_TRUE(kId.IsIdentity(false, 0) && kId.IsIdentity(true, 0) && IsEqual(kId, kId, 0));
    for (double MATRIX::*f : {&MATRIX::a, &MATRIX::b, &MATRIX::tx, &MATRIX::c, &MATRIX::d, &MATRIX::ty}) {
        MATRIX neg = kId, off = kId, zero{0, 0, 0, 0, 0, 0};
        neg.*f = -(neg.*f);
        off.*f += 0.25;
        zero.*f = -0.25;
        EXPECT_TRUE(!neg.IsIdentity(false, 1) && neg.IsIdentity(true, 0) == (neg.*f == 0));
        EXPECT_TRUE(!off.IsIdentity(false, 1) && off.IsIdentity(true, 0.25) && !off.IsIdentity(true, 0.125));
        EXPECT_TRUE(IsEqual(kId, off, 0.25) && IsEqual(off, kId, 0.25) && !IsEqual(kId, off, 0.125));
        EXPECT_TRUE(IsZero(zero, 0.25) && !IsZero(zero, 0.125));
        off.*f = zero.*f = kNaN;
        EXPECT_TRUE(!off.IsIdentity(true, 1e300) && !IsEqual(kId, off, 1e300) && !IsZero(zero, 1e300));
    }
}

TEST(MatrixFixedPoints, CenterAndLineOfTransformation) {
    P c{5, 5};
    EXPECT_TRUE(!MATRIX({1, 0, 3, 0, 1, -2}).GetCenterOfTransformation(c) && Near(c, P{0, 0}));  // a translation: none
    EXPECT_TRUE(MATRIX({0, -1, 2, 1, 0, 0}).GetCenterOfTransformation(c) && Near(c, P{1, 1}));  // quarter turn about (1, 1)
    EXPECT_TRUE(MATRIX({2, 0, -3, 0, 2, 1}).GetCenterOfTransformation(c) && Near(c, P{3, -1}));  // doubling about (3, -1)
    // Reflections across y = 3, x = 0, y = x and obliquely fixing y = x + 3, a shear along y = -2, a projection;
    // then identity, turn, translation and a shear with a y shift, which leave the outputs untouched, as do
    // two lines the first row of M - I misses: an oblique reflection and a shear along x = 0.
    const struct { MATRIX m; bool ok; P p1, p2; } lines[] = {
        {{1, 0, 0, 0, -1, 6}, true, {0, 3}, {1, 3}}, {{-1, 0, 0, 0, 1, 0}, true, {0, 0}, {0, 1}},
        {{0, 1, 0, 1, 0, 0}, true, {0, 0}, {1, 1}}, {{-1, 2, -6, 0, 1, 0}, true, {-3, 0}, {-2, 1}},
        {{1, 2, 4, 0, 1, 0}, true, {0, -2}, {1, -2}}, {{1, 0, 0, 0, 0, 0}, true, {0, 0}, {1, 0}},
        {kId, false, {9, 9}, {-9, 9}}, {{0, -1, 2, 1, 0, 0}, false, {9, 9}, {-9, 9}},
        {{1, 0, 5, 0, 1, 0}, false, {9, 9}, {-9, 9}}, {{1, 2, 0, 0, 1, 3}, false, {9, 9}, {-9, 9}},
        {{1, -2, 4, 0, -1, 4}, false, {9, 9}, {-9, 9}}, {{1, 0, 0, 3, 1, 0}, false, {9, 9}, {-9, 9}},
    };
    for (const auto& l : lines) {
        P p1{9, 9}, p2{-9, 9};
        EXPECT_TRUE(l.m.GetLineOfTransformation(p1, p2) == l.ok && Near(p1, l.p1) && Near(p2, l.p2)) << l.m.a;
    }
}

TEST(MatrixClassification, PredicatesWithTheirToleranceRules) {
    // Tolerances are inclusive and NaN is never within one. IsRotated and IsScaledOnly ignore theirs,
    // and IsScaledOnly rejects a scale of one axis; IsScaled measures columns, not rows.
    struct Case { MATRIX m; double tol; bool want; };
    const double r = std::sqrt(0.5), nan = kNaN;
    const MATRIX sk{1, 0.5, 0, 0, 1, 0}, s21{2, 0, 0, 0, 1, 0}, s23{2, 0, 0, 0, 3, 0}, turn{0, -1, 0, 1, 0, 0};
    const struct { bool (MATRIX::*f)(double) const; std::vector<Case> cases; } preds[] = {
        {&MATRIX::IsRotated,
         {{turn, 0, true}, {{1, 1e-300, 0, 1e-300, 1, 0}, 1, true}, {{1, -0.0, 0, 0, 1, 0}, 0, false}, {sk, 0, false}}},
        {&MATRIX::IsScaledOnly, {{s21, 0, false}, {{2, 0, 5, 0, 3, 7}, 0, true}, {{2, 1e-300, 0, 0, 3, 0}, 1, false}}},
        {&MATRIX::IsSkewedOrRotated, {{sk, 0.5, false}, {sk, 0.25, true}, {{1, nan, 0, 0, 1, 0}, 1, true}}},
        {&MATRIX::IsSkewedOrRotatedOrMirrored,
         {{{2, 0.25, 0, 0, 3, 0}, 0.25, false}, {{-1, 0, 0, 0, 1, 0}, 1, true}, {{1, 0, 0, 0, 0, 0}, 1, true}}},
        {&MATRIX::IsScaledOrSkewedOrRotated,
         {{{1.25, 0, 8, 0, 1, -8}, 0.25, false}, {{1, 0, 0, 0, 0.75, 0}, 0.125, true}, {{1, 0, 0, nan, 1, 0}, 1, true}}},
        {&MATRIX::IsNonUniformScaledOrSkewedOrRotated, {{s23, 1, false}, {s23, 0.5, true}, {{-2, 0, 0, 0, -2, 0}, 0, true}}},
        {&MATRIX::IsScaled, {{{1, 1, 0, 0, 0, 0}, 0, false}, {{0.6, -0.8, 0, 0.8, 0.6, 0}, 1e-15, false},
                             {{1, 0, 0, 0, 1.5, 0}, 0.25, true}, {{1, 0, 0, 0, nan, 0}, 1, true}}},
        {&MATRIX::IsOrthogonal,
         {{{0, 2, 0, 3, 0, 0}, 0, true}, {sk, 0.5, true}, {sk, 0.25, false}, {{1, nan, 0, 0, 1, 0}, 1, false}}},
        {&MATRIX::IsOrthonormal, {{turn, 0, true}, {s21, 1, false}, {s21, 3, true}, {sk, 0.25, false}}},
        {&MATRIX::IsUniformOrthogonal, {{{0, -3, 0, 3, 0, 0}, 0, true}, {s23, 5, true}, {s23, 4, false}}},
        {&MATRIX::IsOrthonormalAxisAligned, {{{0, -1, 0, -1, 0, 0}, 0, true}, {{-1, 0, 0, 0, 1, 0}, 0, true},
                                             {{0, 2, 0, 1, 0, 0}, 0.5, false}, {{0, 2, 0, 1, 0, 0}, 1, true},
                                             {{r, -r, 0, r, r, 0}, 0.25, false}}},
    };
    for (const auto& p : preds)
        for (const Case& c : p.cases) EXPECT_EQ((c.m.*p.f)(c.tol), c.want) << "predicate " << &p - preds << " " << c.m.a;
    EXPECT_TRUE(SwapXYMatrix().IsMirrored() && MATRIX({2, 3, 0, 1, 1, 0}).IsMirrored());  // det -1
    EXPECT_TRUE(!MATRIX({-1, 0, 0, 0, -1, 0}).IsMirrored() && !MATRIX({1, 1, 0, 1, 1, 0}).IsMirrored());  // det 1, 0
}
