// Matrix builders and the decomposition into scale, skew, rotation
// and origin. Builders are checked by the points they fix and the images of
// chosen points, not by their formulas.

#include <array>

#include "../test_util.h"

using namespace QorMath;
using namespace qtest;

namespace {
using P = Point2d;
using V = Vector2d;

// |sin| of the angle between the images of the axes; the decomposition refuses
// below sin(0.9°) = 0.0157 and loses precision as 1 / sin².
double AxisSine(const MATRIX& m) { return std::fabs(m.a * m.d - m.b * m.c) / std::hypot(m.a, m.c) / std::hypot(m.b, m.d); }
std::array<double, 6> Fields(const AFF_TRANSFORM& t) {
    return {t.scaleX, t.scaleY, t.skew, t.rotation, t.origin.x, t.origin.y};
}
}  // namespace

TEST(MatrixConstruct, BuildersFixTheirCentresAndMoveChosenPoints) {
    const double tol = 1e-14;  // coordinates below 10, a few roundings each
    const P p{3, -2};
    const MATRIX r = ConstructRotationMatrix(Pi / 2), sa = ConstructScaleAroundMatrix(2, -0.5, p);
    EXPECT_TRUE(IdentityMatrix().IsIdentity(false, 0) && Near(SwapXYMatrix()(P{2, 5}), P{5, 2}));
    EXPECT_TRUE(Near(ConstructMatrix(V{2, 1}, V{-1, 3}, V{4, -5}), {2, -1, 4, 1, 3, -5}));  // columns x, y, origin
    EXPECT_TRUE(Near(ConstructTranslationMatrix(V{3, -2}), {1, 0, 3, 0, 1, -2}));
    EXPECT_TRUE(Near(sa(p), p) && Near(sa(P{4, 0}), P{5, -3}));  // p + (2·1, -0.5·2)
    EXPECT_TRUE(Near(r(P{1, 0}), P{0, 1}, tol) && Near(r(P{0, 1}), P{-1, 0}, tol));  // counter-clockwise
    for (double a : {0.3, -2.0, Pi})
        EXPECT_TRUE(Near(ConstructRotateAroundMatrix(a, p)(p), p, tol) &&
                    Near(ConstructRotateAroundMatrix(a, p)(p + V{2, 0}), p + 2.0 * V{std::cos(a), std::sin(a)}, tol)) << a;
    // The x axis is scaled first, then turned: (1, 0) -> 2·(cos 30°, sin 30°), (0, 1) -> -3·(-sin 30°, cos 30°).
    const MATRIX sr = ConstructScaledRotationMatrix(2, -3, Pi / 6);
    EXPECT_TRUE(Near(sr(V{1, 0}), V{std::sqrt(3.0), 1}, tol) && Near(sr(V{0, 1}), V{1.5, -1.5 * std::sqrt(3.0)}, tol));
    // x' = x - h·y first, then y' = v·x + y: the axes go to (1, v) and (-h, 1 - v·h); here h = 1/2, v = 1/4.
    const MATRIX sk = ConstructSkewAroundMatrix(std::atan(0.5), std::atan(0.25), P{-3, 5});
    EXPECT_TRUE(Near(sk(V{1, 0}), V{1, 0.25}, 1e-15) && Near(sk(V{0, 1}), V{-0.5, 0.875}, 1e-15));
    EXPECT_TRUE(Near(sk(P{-3, 5}), P{-3, 5}, tol) && Near(sr(P{0, 0}), P{0, 0}));
    const MATRIX m{0, -2, 1, 3, 0.5, -1}, ta = ConstructTransformAroundMatrix(m, P{2, 3});
    for (const P q : {P{2, 3}, P{0, 0}, P{-4, 7.5}})  // m acts on the offset from the centre
        EXPECT_TRUE(Near(ta(q), m(AsPoint(q - P{2, 3})) + V{2, 3}, 1e-13));
}

TEST(MatrixConstruct, VectorSegmentAndRectangleMaps) {
    const P p1{1, 2}, p2{4, 6}, q1{-2, 0}, q2{-2, 10};
    const MATRIX vt = ConstructVectorTransformMatrix(V{3, 4}, V{0, -10});
    const MATRIX ls = ConstructLineSegmentTransformMatrix(p1, p2, q1, q2);
    // The left normal follows the vector; a zero source gives scale 1, a zero target scale 0.
    EXPECT_TRUE(Near(vt(V{3, 4}), V{0, -10}, 1e-13) && Near(vt(V{-4, 3}), V{10, 0}, 1e-13) && Near(vt(P{0, 0}), P{0, 0}));
    EXPECT_TRUE(ConstructVectorTransformMatrix(V{0, 0}, V{5, 5}).IsIdentity(true, 0) &&
                IsZero(ConstructVectorTransformMatrix(V{1, 0}, V{0, 0}), 0));
    EXPECT_TRUE(Near(ls(p1), q1, 1e-13) && Near(ls(p2), q2, 1e-13) && ls.IsUniformOrthogonal(1e-12) && !ls.IsMirrored());
    EXPECT_TRUE(Near(ConstructLineSegmentTransformMatrix(p1, p1, q1, q2), {1, 0, -3, 0, 1, -2}));  // degenerate source
    // The unit square onto b; extents of magnitude at most DBL_EPSILON count as 1, reversed ones keep their sign.
    const struct { BoundsT<double> b; bool offset; MATRIX want; } boxes[] = {
        {{2, 7, 6, 4}, true, {4, 0, 2, 0, 3, 4}}, {{2, 7, 6, 4}, false, {4, 0, 0, 0, 3, 0}},
        {{6, 4, 2, 7}, true, {-4, 0, 6, 0, -3, 7}}, {{5, 3, 5, 1}, false, {1, 0, 0, 0, 2, 0}},
        {{0, DBL_EPSILON, 2 * DBL_EPSILON, 0}, false, {2 * DBL_EPSILON, 0, 0, 0, 1, 0}}};
    for (const auto& x : boxes) EXPECT_TRUE(Near(ConstructBBoxScaleMatrix(x.b, x.offset), x.want)) << x.b.left;
    // Centre onto centre with the mode's scales; each axis keeps its sign, so a target stored right to
    // left mirrors x only. Modes other than Stretch and Fit act as Fill.
    const BoundsT<double> sq{0, 10, 10, 0}, to{0, 10, 40, 0}, flip{40, 10, 0, 0}, wide{0, 2, 4, 0}, big{0, 8, 8, 0};
    const struct { BoundsT<double> from, to; MapMode mode; MATRIX want; } rects[] = {
        {sq, to, MapMode::Stretch, {4, 0, 0, 0, 1, 0}}, {sq, to, MapMode::Fit, {1, 0, 15, 0, 1, 0}},
        {sq, to, MapMode::Fill, {4, 0, 0, 0, 4, -15}}, {wide, big, MapMode(7), {4, 0, -4, 0, 4, 0}},
        {sq, flip, MapMode::Fit, {-1, 0, 25, 0, 1, 0}}, {sq, flip, MapMode::Fill, {-4, 0, 40, 0, 4, -15}},
        {wide, big, MapMode::Fit, {2, 0, 0, 0, 2, 2}}, {wide, big, MapMode::Fill, {4, 0, -4, 0, 4, 0}}};
    for (const auto& x : rects) EXPECT_TRUE(Near(ConstructRectTransformMatrix(x.from, x.to, x.mode), x.want)) << int(x.mode);
    EXPECT_FALSE(std::isfinite(ConstructRectTransformMatrix({3, 1, 3, 0}, to, MapMode::Stretch).a));  // unguarded
    const struct { MapMode mode; V want; } sizes[] = {
        {MapMode::Stretch, {1, -2}}, {MapMode::Fit, {1, -1}}, {MapMode::Fill, {2, -2}}, {MapMode(7), {2, -2}}};
    for (const auto& x : sizes) EXPECT_TRUE(Near(GetScaleForSizeTransform(V{4, -2}, V{4, 4}, x.mode), x.want));
}

TEST(AffineDecomposition, WorkedExamplesAndFailures) {
    // A mirror goes into scaleX only when the x axis points left; otherwise scaleY turns negative.
    const struct { MATRIX m; std::array<double, 6> want; double tol; } examples[] = {
        {{1, 0, 5, 0, 1, -6}, {1, 1, 0, 0, 5, -6}, 0}, {{-1, 0, 0, 0, 1, 0}, {-1, 1, 0, 0, 0, 0}, 0},
        {{1, 0, 0, 0, -1, 0}, {1, -1, 0, 0, 0, 0}, 0},
        {{-1, 0, 0, 0, -1, 0}, {1, 1, 0, Pi, 0, 0}, 1e-15},  // a half turn, not two mirrors; sin π is not 0
    };
    AFF_TRANSFORM d{};
    MATRIX back{9, 9, 9, 9, 9, 9};
    for (const auto& e : examples)
        EXPECT_TRUE(DecomposeAffineTransform(d, e.m) && Fields(d) == e.want && ComposeAffineTransform(back, d) &&
                    Near(back, e.m, e.tol)) << ::testing::PrintToString(Fields(d));
    // Failures leave the fields not yet reached as they were.
    const AFF_TRANSFORM held{42, 42, 43, 44, {45, 46}};
    EXPECT_TRUE(!DecomposeAffineTransform(d = held, MATRIX{1, 1, 0, 0, 0, 0}) && d.skew == 43);  // y axis onto x
    EXPECT_TRUE(!DecomposeAffineTransform(d = held, MATRIX{1, 0, 0, 0, 0, 0}) && d.scaleY == 42 && d.skew == 43);  // zero y
    // The y axis leaning 89.15° either way is past the 89.1° limit; 89.05° is accepted.
    const double lean = std::tan(89.15 * RadiansPerDegree), ok = std::tan(89.05 * RadiansPerDegree);
    for (const double sign : {1.0, -1.0}) {
        EXPECT_TRUE(!DecomposeAffineTransformFromVectors(d = held, P{0, 0}, V{1, 0}, V{sign * lean, 1}) && d.skew == 43);
        ASSERT_TRUE(DecomposeAffineTransformFromVectors(d, P{0, 0}, V{1, 0}, V{sign * ok, 1}));
        EXPECT_NEAR(d.skew, sign * ok, 1e-9 * ok);  // tan near 89° magnifies the acos error ~3000-fold
    }
    // A failed decomposition inside TransformMatrixAndSeparateScale keeps its start values: scaleY 1.
    V sep{};
    EXPECT_TRUE(Near(TransformMatrixAndSeparateScale(MATRIX{2, 0, 0, 0, 0, 0}, IdentityMatrix(), sep), {2, 0, 0, 0, 1, 0}));
    EXPECT_TRUE(Near(sep, V{1, 1}));
    // A zero scale reports false but still writes the matrix.
    EXPECT_TRUE(!ComposeAffineTransform(back, AFF_TRANSFORM{0, 2, 0.5, 0, {3, 4}}) && Near(back, {0, 1, 3, 0, 2, 4}));
    EXPECT_TRUE(!ComposeAffineTransform(back, AFF_TRANSFORM{2, -0.0, 0.5, 0, {0, 0}}) && Near(back, {2, 0, 0, 0, 0, 0}));
}

TEST(AffineDecomposition, RandomRoundTripsAndSeparatedScale) {
    // Matrix -> record -> matrix, both entry points, on axes at least 5.7° apart (skew error below
    // 1e-13). Record -> matrix -> record: positive scales and |skew| <= 3 come back field by field;
    // with mirrors the record may change form but recomposes to the same matrix.
    // TransformMatrixAndSeparateScale divides each column of n·m by its own change of scale (the
    // recomposition is linear in scaleX for the x column, in scaleY for the y column); m's x axis
    // length and the product's origin stay.
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> scale(0.2, 5), skew(-3, 3), rot(-3.1, 3.1), org(-10, 10);
    for (int i = 0; i < 200; ++i) {
        const MATRIX m = RandomMatrix(rng), n = RandomMatrix(rng), p = n * m;
        AFF_TRANSFORM d{}, e{};
        MATRIX back{}, mm{};
        V sep{};
        if (AxisSine(m) >= 0.1) {
            ASSERT_TRUE(DecomposeAffineTransform(d, m) && ComposeAffineTransform(back, d));
            EXPECT_TRUE(std::fabs(d.rotation) <= Pi && Near(back, m, 1e-12));
            ASSERT_TRUE(DecomposeAffineTransformFromVectors(e, P{m.tx, m.ty}, V{m.a, m.c}, V{m.b, m.d}));
            EXPECT_EQ(Fields(d), Fields(e));
        }
        if (AxisSine(m) >= 0.1 && AxisSine(p) >= 0.1) {
            const MATRIX t = TransformMatrixAndSeparateScale(m, n, sep);
            EXPECT_TRUE(Near(t(V{1, 0}) * sep.x, p(V{1, 0}), 1e-11) && Near(t(V{0, 1}) * sep.y, p(V{0, 1}), 1e-11));
            EXPECT_TRUE(Near(t(P{0, 0}), p(P{0, 0})) && std::fabs(std::hypot(t.a, t.c) - std::hypot(m.a, m.c)) <= 1e-12);
        }
        const double sx = scale(rng), sy = scale(rng), k = skew(rng), r = rot(rng);
        const AFF_TRANSFORM in{sx, sy, k, r, {org(rng), org(rng)}};
        const AFF_TRANSFORM mirrored{i % 2 ? -sx : sx, i % 4 >= 2 ? -sy : sy, k, r, in.origin};
        ASSERT_TRUE(ComposeAffineTransform(back, in) && DecomposeAffineTransform(d, back));
        for (int f = 0; f < 6; ++f) EXPECT_NEAR(Fields(d)[f], Fields(in)[f], 1e-12) << "field " << f;
        ASSERT_TRUE(ComposeAffineTransform(mm, mirrored) && DecomposeAffineTransform(d, mm));
        EXPECT_TRUE(ComposeAffineTransform(back, d) && Near(back, mm, 1e-12));
    }
}
