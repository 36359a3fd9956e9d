#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <random>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using LD = long double;

// x′, y′, x″, y″ at t by the Bernstein form of the derivatives, in long double.
struct Jet {
    LD x1, y1, x2, y2;
    LD Cross() const { return x1 * y2 - y1 * x2; }
    LD Curvature() const { return Cross() / std::pow(x1 * x1 + y1 * y1, LD(1.5)); }
    LD SpeedSqrdSlope() const { return 2 * (x1 * x2 + y1 * y2); }  // d|B′|²/dt
};
Jet At(const P p[4], LD t) {
    const LD s = 1 - t;
    auto d = [&](int i, int j, bool y) { return y ? LD(p[j].y) - p[i].y : LD(p[j].x) - p[i].x; };
    auto one = [&](bool y) { return 3 * (s * s * d(0, 1, y) + 2 * s * t * d(1, 2, y) + t * t * d(2, 3, y)); };
    auto two = [&](bool y) { return 6 * (s * (d(1, 2, y) - d(0, 1, y)) + t * (d(2, 3, y) - d(1, 2, y))); };
    return {one(false), one(true), two(false), two(true)};
}
// The same from power-basis coefficients (exact inputs only).
Jet At(const P& a, const P& b, const P& c, LD t) {
    return {(3 * a.x * t + 2 * b.x) * t + c.x, (3 * a.y * t + 2 * b.y) * t + c.y, 6 * a.x * t + 2 * b.x,
            6 * a.y * t + 2 * b.y};
}

struct Basis {
    P a, b, c, d;
    explicit Basis(const P p[4]) { GetPowerBasis(p, a, b, c, d); }
};

bool RelNear(LD got, LD want, LD rel) { return std::fabs(got - want) <= rel * std::fabs(want); }

}  // namespace

TEST(BezierCurvature, QuarterCircleBothWays) {
    // Handles 4/3·tan(π/8)·r: curvature 2(1 − k)/(3k²r) at the ends and 16k/(3√2(2 − k)²r) at the middle.
    const double r = 7, k = 4.0 / 3 * std::tan(std::atan(1.0) / 2);
    const LD kL = k, end = 2 * (1 - kL) / (3 * kL * kL * r), mid = 16 * kL / (3 * std::sqrt(LD(2)) * (2 - kL) * (2 - kL) * r);
    const P ccw[4] = {{3 + r, -2}, {3 + r, -2 + k * r}, {3 + k * r, -2 + r}, {3, -2 + r}};
    const P cw[4] = {ccw[3], ccw[2], ccw[1], ccw[0]};
    for (int dir = 0; dir < 2; ++dir) {
        const P* p = dir ? cw : ccw;
        const Basis B(p);
        const LD sign = dir ? -1 : 1;
        for (int i = 0; i <= 64; ++i) {
            const double t = i / 64.0;
            const LD want = i == 0 || i == 64 ? sign * end : i == 32 ? sign * mid : At(p, t).Curvature();
            double kappa = 0, radius = 0;
            ASSERT_TRUE(GetCurvatureAt(t, B.a, B.b, B.c, kappa));
            ASSERT_TRUE(GetCurvatureRadiusAt(t, B.a, B.b, B.c, radius));
            EXPECT_TRUE(RelNear(kappa, want, 1e-12)) << dir << ' ' << t << ' ' << kappa;
            EXPECT_TRUE(RelNear(radius, 1 / want, 1e-12)) << dir << ' ' << t << ' ' << radius;
            EXPECT_NEAR(sign * kappa * r, 1, 0.025) << t;  // a close circle, turning the right way
            EXPECT_EQ(SafeBezierCurvature(t, B.a, B.b, B.c), kappa);
        }
    }
}

TEST(BezierCurvature, ParabolaRaisedToCubic) {
    // y = A·x² from x = −2 to 3 as a quadratic raised to a cubic; x(t) = −2 + 5t is linear.
    for (double A : {0.5, -1.5, 3.0}) {
        const P q0{-2, 4 * A}, q1{0.5, -6 * A}, q2{3, 9 * A};
        const P p[4] = {q0, {q0.x + 2.0 / 3 * (q1.x - q0.x), q0.y + 2.0 / 3 * (q1.y - q0.y)},
                        {q2.x + 2.0 / 3 * (q1.x - q2.x), q2.y + 2.0 / 3 * (q1.y - q2.y)}, q2};
        const Basis B(p);
        for (int i = 0; i <= 40; ++i) {
            const double t = i / 40.0;
            const LD x = -2 + 5 * LD(t), want = 2 * A / std::pow(1 + 4 * A * A * x * x, LD(1.5));
            double kappa = 0, radius = 0;
            ASSERT_TRUE(GetCurvatureAt(t, B.a, B.b, B.c, kappa));
            ASSERT_TRUE(GetCurvatureRadiusAt(t, B.a, B.b, B.c, radius));
            EXPECT_TRUE(RelNear(kappa, want, 1e-11)) << A << ' ' << t << ' ' << kappa;
            EXPECT_TRUE(RelNear(radius, 1 / want, 1e-11)) << A << ' ' << t << ' ' << radius;
        }
    }
}

TEST(BezierCurvature, StraightSegmentAndZeroSpeed) {
    // Along y = 2x with the handles out of order: x″ ≠ 0, but y′ = 2x′ and y″ = 2x″ exactly.
    const P line[4] = {{0, 0}, {2, 4}, {1, 2}, {3, 6}}, cusp[4] = {{0, 0}, {1, 1}, {0, 1}, {1, 0}}, dot[4] = {{5, -3}, {5, -3}, {5, -3}, {5, -3}};
    const Basis L(line), C(cusp), D(dot);
    for (double t : {0.0, 0.3, 0.5, 1.0}) {
        double kappa = 42, radius = 42;
        EXPECT_TRUE(GetCurvatureAt(t, L.a, L.b, L.c, kappa));
        EXPECT_EQ(kappa, 0.0);
        EXPECT_FALSE(GetCurvatureRadiusAt(t, L.a, L.b, L.c, radius));
        EXPECT_EQ(radius, DBL_MAX);
        kappa = 42, radius = 42;
        EXPECT_FALSE(GetCurvatureAt(t, D.a, D.b, D.c, kappa));
        EXPECT_EQ(kappa, 42);
        EXPECT_FALSE(GetCurvatureRadiusAt(t, D.a, D.b, D.c, radius));
        EXPECT_EQ(radius, DBL_MAX);
        EXPECT_EQ(SafeBezierCurvature(t, D.a, D.b, D.c), 0.0);  // the second try fails too
    }
    double kappa = 42, radius = 42;  // B′(½) = 0 exactly
    EXPECT_FALSE(GetCurvatureAt(0.5, C.a, C.b, C.c, kappa));
    EXPECT_EQ(kappa, 42);
    EXPECT_FALSE(GetCurvatureRadiusAt(0.5, C.a, C.b, C.c, radius));
    EXPECT_EQ(radius, DBL_MAX);
}

TEST(BezierCurvature, SafeCurvatureRetriesTowardTheMiddle) {
    // x′ = 3(t − s)², y′ = 3(t − s)(t − s − w): zero speed at s, and the curvature is
    // lopsided about s (by about 6·1e-5/w), so the side of the second try shows.
    const double w = 1.0 / 64;
    for (double s : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        const P a{1, 1}, b{-3 * s, -1.5 * (2 * s + w)}, c{3 * s * s, 3 * s * (s + w)};
        double kappa = 42;
        ASSERT_FALSE(GetCurvatureAt(s, a, b, c, kappa)) << s;
        const double in = s <= 0.5 ? s + 1e-5 : s - 1e-5, out = s <= 0.5 ? s - 1e-5 : s + 1e-5;
        const LD want = At(a, b, c, in).Curvature(), wrong = At(a, b, c, out).Curvature();
        ASSERT_FALSE(RelNear(wrong, want, 1e-4));
        EXPECT_TRUE(RelNear(SafeBezierCurvature(s, a, b, c), want, 1e-5)) << s;
    }
}

TEST(BezierInflections, RootsOfTheCrossProductQuadratic) {
    // cross(B′, B″) is a quadratic: fitted through its long double values at 0, ½ and 1.
    const struct { P p[4]; int n; } cases[] = {
        {{{0, 0}, {1, 3}, {2, -3}, {4, 1}}, 2},     // S-curve, both roots in (0, 1)
        {{{0, 0}, {1, -3}, {2, 3}, {4, -1}}, 2},    // its mirror: the leading coefficient changes sign
        {{{-3, 1}, {4, 7}, {-2, -5}, {6, 2}}, 2},   // a loop
        {{{0, 0}, {0, 2}, {3, 3}, {5, 1}}, 0},      // an arch: no real roots
    };
    for (const auto& k : cases) {
        const Basis B(k.p);
        const LD f0 = At(k.p, 0).Cross(), fh = At(k.p, 0.5).Cross(), f1 = At(k.p, 1).Cross();
        const LD A = 2 * f1 - 4 * fh + 2 * f0, Bq = 4 * fh - f1 - 3 * f0, D = Bq * Bq - 4 * A * f0;
        double out[2] = {kNaN, kNaN};
        ASSERT_EQ(BezierInflectionPoints(B.a, B.b, B.c, out), k.n);
        ASSERT_EQ(k.n == 2, D >= 0);
        if (k.n == 0) continue;
        EXPECT_NEAR(out[0], (std::sqrt(D) - Bq) / (2 * A), 1e-12);
        EXPECT_NEAR(out[1], (-std::sqrt(D) - Bq) / (2 * A), 1e-12);
    }
    // S-curve: both inside (0, 1).
    const Basis S(cases[0].p);
    double out[2];
    BezierInflectionPoints(S.a, S.b, S.c, out);
    for (double t : out) EXPECT_TRUE(t > 0 && t < 1) << t;
    // No cubic term: the quadratic degenerates, 0 · ∞ gives two NaNs.
    const P line[4] = {{0, 0}, {2, 4}, {1, 2}, {3, 6}};
    const Basis L(line);
    const P zero{0, 0}, b{1, -2}, c{2, 4};
    for (const Basis* q : {static_cast<const Basis*>(nullptr), &L}) {
        out[0] = out[1] = 0;
        ASSERT_EQ(BezierInflectionPoints(q ? q->a : zero, q ? q->b : b, q ? q->c : c, out), 2);
        EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]));
    }
}

TEST(BezierCurvatureMinMax, CandidatesAreTheStationaryPointsOfTheSpeed) {
    // Every sign change of d|B′|²/dt on a fine long double grid holds exactly one candidate.
    std::mt19937 rng(4);
    for (int i = 0; i < 300; ++i) {
        P p[4];
        for (P& q : p) q = qtest::RandomPoint(rng);
        if (i == 0) p[0] = {0, 0}, p[1] = {1, 1}, p[2] = {0, 1}, p[3] = {1, 0};  // cusp: |B′| = 0 at ½
        if (i == 1) p[0] = {0, 0}, p[1] = {1, 2}, p[2] = {2, 4}, p[3] = {3, 6};  // constant speed: none
        const Basis B(p);
        double out[13];
        const int n = FindCurvatureMinMax(B.a, B.b, B.c, out);
        const int N = 4096;
        std::vector<double> lo;
        LD prev = At(p, 0).SpeedSqrdSlope();
        for (int j = 1; j <= N; ++j) {
            const LD cur = At(p, LD(j) / N).SpeedSqrdSlope();
            if ((prev < 0 && cur >= 0) || (prev > 0 && cur <= 0)) lo.push_back(double(j - 1) / N);
            prev = cur;
        }
        if (i == 1) lo.clear();  // the slope is rounding noise around 0
        ASSERT_EQ(n, int(lo.size())) << i;
        for (int j = 0; j < n; ++j) EXPECT_TRUE(out[j] >= lo[j] - 1e-6 && out[j] <= lo[j] + 1.0 / N + 1e-6) << i << ' ' << out[j];
    }
}
