// Matrix builders, comparison, and the decomposition into scale, skew, rotation
// and origin. Builders are checked by the points they fix and the images of
// chosen points, not by their formulas.

#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <iomanip>
#include <limits>
#include <random>

using namespace QorMath;

namespace {
using P = Point2d;
using V = Vector2d;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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

// |sin| of the angle between the images of the axes; the decomposition refuses
// below sin(0.9°) = 0.0157 and loses precision as 1 / sin².
double AxisSine(const MATRIX& m) {
    const V x{m.a, m.c}, y{m.b, m.d};
    return std::fabs(Cross(x, y)) / (Magnitude(x) * Magnitude(y));
}
MATRIX Random(std::mt19937& rng) {
    std::uniform_real_distribution<double> u(-3.0, 3.0);
    return {u(rng), u(rng), u(rng), u(rng), u(rng), u(rng)};
}
std::array<double, 6> Fields(const AFF_TRANSFORM& t) {
    return {t.scaleX, t.scaleY, t.skew, t.rotation, t.origin.x, t.origin.y};
}
}  // namespace

TEST(MatrixConstruct, AxesSwapAndTranslation) {
    const MATRIX swap = SwapXYMatrix();
    EXPECT_TRUE(IdentityMatrix().IsIdentity(false, 0));
    EXPECT_TRUE(Near(swap(P{2, 5}), P{5, 2}, 0) && swap.IsMirrored());
    const MATRIX cm = ConstructMatrix(V{2, 1}, V{-1, 3}, V{4, -5});
    EXPECT_TRUE(Near(cm(V{1, 0}), V{2, 1}, 0) && Near(cm(V{0, 1}), V{-1, 3}, 0));
    EXPECT_TRUE(Near(cm(P{0, 0}), P{4, -5}, 0));
    const MATRIX t = ConstructTranslationMatrix(V{3, -2});
    EXPECT_TRUE(Near(t(P{1, 1}), P{4, -1}, 0) && Near(t(V{1, 1}), V{1, 1}, 0));
}

TEST(MatrixConstruct, RotationsAndScalesAboutPoints) {
    const double tol = 1e-14;  // coordinates below 10, a few roundings each
    const MATRIX r = ConstructRotationMatrix(Pi / 2);
    EXPECT_TRUE(Near(r(P{1, 0}), P{0, 1}, tol));  // counter-clockwise
    EXPECT_TRUE(Near(r(P{0, 1}), P{-1, 0}, tol));
    const P p{3, -2};
    for (double angle : {0.3, -2.0, Pi}) {
        const MATRIX ra = ConstructRotateAroundMatrix(angle, p);
        EXPECT_TRUE(Near(ra(p), p, tol));
        EXPECT_TRUE(Near(ra(P{p.x + 2, p.y}), P{p.x + 2 * std::cos(angle), p.y + 2 * std::sin(angle)}, tol));
        const MATRIX viaOrigin = ConstructTranslationMatrix(AsVector(p)) * ConstructRotationMatrix(angle) *
                                 ConstructTranslationMatrix(-AsVector(p));
        EXPECT_TRUE(Near(ra, viaOrigin, tol));
    }
    // The x axis is scaled first, then turned: (1, 0) -> 2·(cos 30°, sin 30°), (0, 1) -> -3·(-sin 30°, cos 30°).
    const MATRIX sr = ConstructScaledRotationMatrix(2, -3, Pi / 6);
    EXPECT_TRUE(Near(sr(V{1, 0}), V{std::sqrt(3.0), 1}, tol) && Near(sr(V{0, 1}), V{1.5, -1.5 * std::sqrt(3.0)}, tol));
    EXPECT_TRUE(Near(sr(P{0, 0}), P{0, 0}, 0));
    const MATRIX sa = ConstructScaleAroundMatrix(2, -0.5, p);
    EXPECT_TRUE(Near(sa(p), p, 0));
    EXPECT_TRUE(Near(sa(P{4, 0}), P{5, -3}, 0));  // p + (2·1, -0.5·2)
}

TEST(MatrixConstruct, SkewAndTransformAboutPoints) {
    const MATRIX s = ConstructSkewAroundMatrix(Pi / 4, 0, P{0, 2});
    EXPECT_TRUE(Near(s(P{0, 2}), P{0, 2}, 1e-15) && Near(s(P{0, 0}), P{2, 0}, 1e-15));
    // x' = x - h·y first, then y' = v·x + y: the axes go to (1, v) and (-h, 1 - v·h).
    const double h = 0.5, v = 0.25;
    const P p{-3, 5};
    const MATRIX g = ConstructSkewAroundMatrix(std::atan(h), std::atan(v), p);
    EXPECT_TRUE(Near(g(V{1, 0}), V{1, v}, 1e-15) && Near(g(V{0, 1}), V{-h, 1 - v * h}, 1e-15));
    EXPECT_TRUE(Near(g(p), p, 1e-14));

    const MATRIX m{0, -2, 1, 3, 0.5, -1};
    const P c{2, 3};
    const MATRIX ta = ConstructTransformAroundMatrix(m, c);
    for (const P q : {P{2, 3}, P{0, 0}, P{-4, 7.5}})  // m acts on the offset from c
        EXPECT_TRUE(Near(ta(q), m(AsPoint(q - c)) + AsVector(c), 1e-13));
    const MATRIX linear{0, -2, 0, 3, 0.5, 0};
    EXPECT_TRUE(Near(ConstructTransformAroundMatrix(linear, c)(c), c, 1e-14));
}

TEST(MatrixConstruct, VectorAndSegmentMaps) {
    const MATRIX vt = ConstructVectorTransformMatrix(V{3, 4}, V{0, -10});
    EXPECT_TRUE(Near(vt(V{3, 4}), V{0, -10}, 1e-13));
    EXPECT_TRUE(Near(vt(V{-4, 3}), V{10, 0}, 1e-13));  // a similarity: the left normal follows
    EXPECT_TRUE(Near(vt(P{0, 0}), P{0, 0}, 0));
    EXPECT_TRUE(ConstructVectorTransformMatrix(V{0, 0}, V{5, 5}).IsIdentity(true, 0));  // zero source: scale 1, angle 0
    EXPECT_TRUE(IsZero(ConstructVectorTransformMatrix(V{1, 0}, V{0, 0}), 0));  // zero target: scale 0

    const P p1{1, 2}, p2{4, 6}, q1{-2, 0}, q2{-2, 10};
    const MATRIX ls = ConstructLineSegmentTransformMatrix(p1, p2, q1, q2);
    EXPECT_TRUE(Near(ls(p1), q1, 1e-13) && Near(ls(p2), q2, 1e-13));
    EXPECT_TRUE(ls.IsUniformOrthogonal(1e-12));
    EXPECT_FALSE(ls.IsMirrored());
    EXPECT_TRUE(Same(ConstructLineSegmentTransformMatrix(p1, p1, q1, q2), {1, 0, -3, 0, 1, -2}));
}

TEST(MatrixConstruct, BBoxScaleMapsTheUnitSquare) {
    const BoundsT<double> b{2, 7, 6, 4};
    const MATRIX off = ConstructBBoxScaleMatrix(b, true);
    EXPECT_TRUE(Near(off(P{0, 0}), P{2, 4}, 0) && Near(off(P{1, 1}), P{6, 7}, 0));
    EXPECT_TRUE(Same(ConstructBBoxScaleMatrix(b, false), {4, 0, 0, 0, 3, 0}));
    // Extents of magnitude at most DBL_EPSILON count as 1; reversed extents keep their sign.
    EXPECT_TRUE(Same(ConstructBBoxScaleMatrix({5, 3, 5, 1}, false), {1, 0, 0, 0, 2, 0}));
    EXPECT_TRUE(Same(ConstructBBoxScaleMatrix({0, DBL_EPSILON, 2 * DBL_EPSILON, 0}, false), {2 * DBL_EPSILON, 0, 0, 0, 1, 0}));
    EXPECT_TRUE(Same(ConstructBBoxScaleMatrix({6, 4, 2, 7}, true), {-4, 0, 6, 0, -3, 7}));
}

TEST(MatrixConstruct, RectTransformInEachMapMode) {
    const BoundsT<double> from{0, 10, 10, 0}, to{0, 10, 40, 0}, flipped{40, 10, 0, 0};
    EXPECT_TRUE(Same(ConstructRectTransformMatrix(from, to, MapMode::Fit), {1, 0, 15, 0, 1, 0}));
    EXPECT_TRUE(Same(ConstructRectTransformMatrix(from, to, MapMode::Fill), {4, 0, 0, 0, 4, -15}));
    EXPECT_TRUE(Same(ConstructRectTransformMatrix(from, to, MapMode::Stretch), {4, 0, 0, 0, 1, 0}));
    EXPECT_TRUE(Same(ConstructRectTransformMatrix(from, to, static_cast<MapMode>(7)), {4, 0, 0, 0, 4, -15}));
    // Each axis keeps its sign: a target stored right to left mirrors x only.
    EXPECT_TRUE(Same(ConstructRectTransformMatrix(from, flipped, MapMode::Fit), {-1, 0, 25, 0, 1, 0}));
    EXPECT_TRUE(Same(ConstructRectTransformMatrix(from, flipped, MapMode::Fill), {-4, 0, 40, 0, 4, -15}));

    // Scales 4 and 1/3: the mapped rectangle is centred in the target with the mode's size.
    const BoundsT<double> src{1, 5, 4, -1}, dst{-2, 3, 10, 1};
    const struct { MapMode mode; V size; } modes[] = {
        {MapMode::Stretch, {12, 2}}, {MapMode::Fit, {1, 2}}, {MapMode::Fill, {12, 24}}, {static_cast<MapMode>(-1), {12, 24}}};
    for (const auto& md : modes) {
        const MATRIX m = ConstructRectTransformMatrix(src, dst, md.mode);
        const P lo = m(P{src.left, src.bottom}), hi = m(P{src.right, src.top});
        EXPECT_TRUE(Near(hi - lo, md.size, 1e-13)) << static_cast<int>(md.mode);
        EXPECT_TRUE(Near(P{(lo.x + hi.x) / 2, (lo.y + hi.y) / 2}, P{4, 2}, 1e-13)) << static_cast<int>(md.mode);
    }
    EXPECT_FALSE(std::isfinite(ConstructRectTransformMatrix({3, 1, 3, 0}, to, MapMode::Stretch).a));  // unguarded
}

TEST(MatrixConstruct, ScaleForSizeTransform) {
    const V from{2, -4}, to{4, 4};
    EXPECT_TRUE(Near(GetScaleForSizeTransform(from, to, MapMode::Stretch), V{2, -1}, 0));
    EXPECT_TRUE(Near(GetScaleForSizeTransform(from, to, MapMode::Fit), V{1, -1}, 0));
    EXPECT_TRUE(Near(GetScaleForSizeTransform(from, to, MapMode::Fill), V{2, -2}, 0));
    EXPECT_TRUE(Near(GetScaleForSizeTransform(from, to, static_cast<MapMode>(7)), V{2, -2}, 0));
}

TEST(MatrixCompare, IsEqualAndIsZeroAreInclusivePerField) {
    const MATRIX base{1, -2, 3, 0.5, 4, -6};
    EXPECT_TRUE(IsEqual(base, base, 0));
    for (double MATRIX::*f : {&MATRIX::a, &MATRIX::b, &MATRIX::tx, &MATRIX::c, &MATRIX::d, &MATRIX::ty}) {
        MATRIX m = base, z{0, 0, 0, 0, 0, 0};
        m.*f += 0.25;  // exact: every field and 0.25 are dyadic
        z.*f = -0.25;
        EXPECT_TRUE(IsEqual(base, m, 0.25) && IsEqual(m, base, 0.25) && !IsEqual(base, m, 0.125));
        EXPECT_TRUE(IsZero(z, 0.25) && !IsZero(z, 0.125));
        m.*f = kNaN;
        z.*f = kNaN;
        EXPECT_TRUE(!IsEqual(base, m, 1e300) && !IsZero(z, 1e300));
    }
}

TEST(AffineDecomposition, WorkedExamplesAndFailures) {
    // A mirror goes into scaleX only when the x axis points left; otherwise scaleY turns negative.
    const struct { MATRIX m; std::array<double, 6> want; double tol; } examples[] = {
        {{1, 0, 5, 0, 1, -6}, {1, 1, 0, 0, 5, -6}, 0},
        {{-1, 0, 0, 0, 1, 0}, {-1, 1, 0, 0, 0, 0}, 0},
        {{1, 0, 0, 0, -1, 0}, {1, -1, 0, 0, 0, 0}, 0},
        {{-1, 0, 0, 0, -1, 0}, {1, 1, 0, Pi, 0, 0}, 1e-15},  // a half turn, not two mirrors; sin π is not 0
    };
    AFF_TRANSFORM d{};
    for (const auto& e : examples) {
        MATRIX back{};
        ASSERT_TRUE(DecomposeAffineTransform(d, e.m));
        EXPECT_EQ(Fields(d), e.want);
        ASSERT_TRUE(ComposeAffineTransform(back, d));
        EXPECT_TRUE(Near(back, e.m, e.tol));
    }

    // Failures leave the fields not yet reached as they were.
    const AFF_TRANSFORM held{42, 42, 43, 44, {45, 46}};
    d = held;
    EXPECT_FALSE(DecomposeAffineTransform(d, MATRIX{1, 1, 0, 0, 0, 0}));  // y axis collapsed onto x
    EXPECT_EQ(d.skew, 43);
    d = held;
    EXPECT_FALSE(DecomposeAffineTransform(d, MATRIX{1, 0, 0, 0, 0, 0}));  // zero y axis
    EXPECT_TRUE(d.scaleY == 42 && d.skew == 43);
    // The y axis leaning 89.5° either way is past the 89.1° limit; 89° is accepted.
    const double lean = std::tan(89.5 * RadiansPerDegree), ok = std::tan(89 * RadiansPerDegree);
    for (const double sign : {1.0, -1.0}) {
        d = held;
        EXPECT_FALSE(DecomposeAffineTransformFromVectors(d, P{0, 0}, V{1, 0}, V{sign * lean, 1}));
        EXPECT_EQ(d.skew, 43);
        ASSERT_TRUE(DecomposeAffineTransformFromVectors(d, P{0, 0}, V{1, 0}, V{sign * ok, 1}));
        EXPECT_NEAR(d.skew, sign * ok, 1e-9 * ok);  // tan near 89° magnifies the acos error ~3000-fold
    }

    MATRIX out{9, 9, 9, 9, 9, 9};  // a zero scale reports false but still writes the matrix
    EXPECT_FALSE(ComposeAffineTransform(out, AFF_TRANSFORM{0, 2, 0.5, 0, {3, 4}}));
    EXPECT_TRUE(Same(out, {0, 1, 3, 0, 2, 4}));
    EXPECT_FALSE(ComposeAffineTransform(out, AFF_TRANSFORM{2, -0.0, 0.5, 0, {0, 0}}));
    EXPECT_TRUE(Same(out, {2, 0, 0, 0, 0, 0}));
}

TEST(AffineDecomposition, RoundTrips) {
    std::mt19937 rng(7);
    // Matrix -> record -> matrix on random matrices whose axes are at least 5.7° apart
    // (skew error grows as 1 / sin² of that angle: below 1e-13 here).
    for (int i = 0; i < 300; ++i) {
        const MATRIX m = Random(rng);
        if (AxisSine(m) < 0.1) continue;
        AFF_TRANSFORM d{}, e{};
        ASSERT_TRUE(DecomposeAffineTransform(d, m));
        EXPECT_LE(std::fabs(d.rotation), Pi);
        EXPECT_NEAR(std::fabs(d.scaleX), std::hypot(m.a, m.c), 1e-14);
        MATRIX back{};
        ASSERT_TRUE(ComposeAffineTransform(back, d));
        EXPECT_TRUE(Near(back, m, 1e-12));
        ASSERT_TRUE(DecomposeAffineTransformFromVectors(e, P{m.tx, m.ty}, V{m.a, m.c}, V{m.b, m.d}));
        EXPECT_EQ(Fields(d), Fields(e));
    }
    // Record -> matrix -> record: positive scales and |skew| <= 3 come back field by field;
    // with mirrors the record may change form but recomposes to the same matrix.
    std::uniform_real_distribution<double> scale(0.2, 5), skew(-3, 3), rot(-3.1, 3.1), org(-10, 10);
    for (int i = 0; i < 200; ++i) {
        const double sx = scale(rng), sy = scale(rng), k = skew(rng), r = rot(rng);
        const AFF_TRANSFORM in{sx, sy, k, r, {org(rng), org(rng)}};
        MATRIX m{}, back{};
        ASSERT_TRUE(ComposeAffineTransform(m, in));
        AFF_TRANSFORM out{};
        ASSERT_TRUE(DecomposeAffineTransform(out, m));
        const std::array<double, 6> got = Fields(out), want = Fields(in);
        for (int f = 0; f < 6; ++f) EXPECT_NEAR(got[f], want[f], 1e-12) << "field " << f;
        const AFF_TRANSFORM mirrored{i % 2 ? -sx : sx, i % 4 >= 2 ? -sy : sy, k, r, in.origin};
        ASSERT_TRUE(ComposeAffineTransform(m, mirrored));
        ASSERT_TRUE(DecomposeAffineTransform(out, m));
        ASSERT_TRUE(ComposeAffineTransform(back, out));
        EXPECT_TRUE(Near(back, m, 1e-12));
    }
}

TEST(AffineDecomposition, TransformMatrixAndSeparateScale) {
    // A uniform scaling about a point after m: m's rotation and scales survive, the
    // factor 5 comes apart, and the translation is that of the product.
    const MATRIX m = ConstructTranslationMatrix(V{1, -1}) * ConstructScaledRotationMatrix(2, 3, 0.3);
    const MATRIX t = ConstructScaleAroundMatrix(5, 5, P{4, 2}), prod = t * m;
    V scale{};
    MATRIX r = TransformMatrixAndSeparateScale(m, t, scale);
    EXPECT_TRUE(Near(scale, V{5, 5}, 1e-13) && Near(r, {m.a, m.b, prod.tx, m.c, m.d, prod.ty}, 1e-12));

    // In general each column of t·m is divided by its own scale change, since the
    // recomposition is linear in scaleX for the x column and in scaleY for the y column.
    std::mt19937 rng(13);
    for (int i = 0; i < 200; ++i) {
        const MATRIX a = Random(rng), b = Random(rng), p = b * a;
        if (AxisSine(a) < 0.1 || AxisSine(p) < 0.1) continue;
        r = TransformMatrixAndSeparateScale(a, b, scale);
        EXPECT_TRUE(Near(r(V{1, 0}) * scale.x, p(V{1, 0}), 1e-11) && Near(r(V{0, 1}) * scale.y, p(V{0, 1}), 1e-11));
        EXPECT_TRUE(Near(r(P{0, 0}), p(P{0, 0}), 0));
        EXPECT_NEAR(std::hypot(r.a, r.c), std::hypot(a.a, a.c), 1e-12);
    }

    // A decomposition that fails keeps its start values: the zero y axis keeps scaleY 1.
    r = TransformMatrixAndSeparateScale(MATRIX{2, 0, 0, 0, 0, 0}, IdentityMatrix(), scale);
    EXPECT_TRUE(Same(r, {2, 0, 0, 0, 1, 0}) && Near(scale, V{1, 1}, 0));
}
