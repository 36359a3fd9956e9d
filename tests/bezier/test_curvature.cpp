#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>
#include <tuple>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using LD = long double;

// B′ and B″ in long double, by the derivatives of the Bernstein weights.
struct Jet {
    LD x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    LD Cross() const { return x1 * y2 - y1 * x2; }
    LD Curvature() const { return Cross() / std::pow(x1 * x1 + y1 * y1, LD(1.5)); }
};
Jet At(const P p[4], LD t) {
    const LD s = 1 - t, w[2][4] = {{-3 * s * s, 3 * s * (s - 2 * t), 3 * t * (2 * s - t), 3 * t * t},
                                   {6 * s, 6 * (t - 2 * s), 6 * (s - 2 * t), 6 * t}};
    Jet j;
    for (int i = 0; i < 4; ++i)
        j.x1 += w[0][i] * p[i].x, j.y1 += w[0][i] * p[i].y, j.x2 += w[1][i] * p[i].x, j.y2 += w[1][i] * p[i].y;
    return j;
}
using qtest::Basis;
bool RelNear(LD got, LD want, LD rel) { return std::fabs(got - want) <= rel * std::fabs(want); }

}  // namespace

TEST(BezierCurvature, QuarterCircleAndParabola) {
    // Handles k·r, k = 4/3·tan(π/8): curvature 2(1 − k)/(3k²r) at the ends, 16k/(3√2(2 − k)²r) halfway,
    // negative clockwise. Then y = A·x², x in [−2, 3], raised from a quadratic (x = −2 + 5t): 2A/(1 + 4A²x²)^1.5.
    const double r = 7, k = 4.0 / 3 * std::tan(std::atan(1.0) / 2);
    const LD end = 2 * (1 - LD(k)) / (3 * k * k * r), mid = 16 * k / (3 * std::sqrt(LD(2)) * (2 - LD(k)) * (2 - k) * r);
    const P ccw[4] = {{3 + r, -2}, {3 + r, -2 + k * r}, {3 + k * r, -2 + r}, {3, -2 + r}};
    const P cw[4] = {ccw[3], ccw[2], ccw[1], ccw[0]};
    std::vector<std::tuple<Basis, double, LD>> cases;
    for (int i = 0; i <= 2; ++i) cases.emplace_back(Basis(ccw), i / 2.0, i == 1 ? mid : end);
    for (int i = 0; i <= 2; ++i) cases.emplace_back(Basis(cw), i / 2.0, i == 1 ? -mid : -end);
    for (double A : {0.5, -1.5, 3.0}) {
        const P p[4] = {{-2, 4 * A}, {-2 + 5 / 3.0, -8 / 3.0 * A}, {3 - 5 / 3.0, -A}, {3, 9 * A}};
        for (int i = 0; i <= 40; ++i)
            cases.emplace_back(Basis(p), i / 40.0, 2 * A / std::pow(1 + 4 * A * A * (i / 8.0L - 2) * (i / 8.0L - 2), 1.5L));
    }
    for (const auto& [B, t, want] : cases) {
        double kappa = 0, radius = 0;
        ASSERT_TRUE(GetCurvatureAt(t, B.a, B.b, B.c, kappa) && GetCurvatureRadiusAt(t, B.a, B.b, B.c, radius)) << t;
        EXPECT_TRUE(RelNear(kappa, want, 1e-11) && RelNear(radius, 1 / want, 1e-11)) << t << ' ' << kappa;
        EXPECT_EQ(SafeBezierCurvature(t, B.a, B.b, B.c), kappa);
    }
}

TEST(BezierCurvature, StraightAndZeroSpeed) {
    // Along y = 2x, handles out of order (x″ ≠ 0, but y′ = 2x′ and y″ = 2x″ exactly); a cusp (B′(½) = 0
    // exactly); a point, where SafeBezierCurvature's retry fails too.
    const P line[4] = {{0, 0}, {2, 4}, {1, 2}, {3, 6}}, cusp[4] = {{0, 0}, {1, 1}, {0, 1}, {1, 0}},
            dot[4] = {{5, -3}, {5, -3}, {5, -3}, {5, -3}};
    for (const auto& [p, t, moving] : {std::tuple{line, 0.0, true}, {line, 0.3, true}, {line, 1.0, true},
                                       {cusp, 0.5, false}, {dot, 0.0, false}, {dot, 0.5, false}}) {
        const Basis B(p);
        double kappa = 42, radius = 42;
        EXPECT_TRUE(GetCurvatureAt(t, B.a, B.b, B.c, kappa) == moving && kappa == (moving ? 0 : 42)) << t;
        EXPECT_TRUE(!GetCurvatureRadiusAt(t, B.a, B.b, B.c, radius) && radius == DBL_MAX) << t;
        EXPECT_TRUE(p != dot || SafeBezierCurvature(t, B.a, B.b, B.c) == 0);
    }
    // Zero speed at s: x′ = 3(t − s)², y′ = 3(t − s)(t − s − w). The curvature is lopsided about s (by
    // about 6·1e-5/w), so the side of the retry, 1e-5 toward the middle, shows.
    const double w = 1.0 / 64;
    for (double s : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        const P a{1, 1}, b{-3 * s, -1.5 * (2 * s + w)}, c{3 * s * s, 3 * s * (s + w)};
        const P p[4] = {{0, 0}, {s * s, s * (s + w)}, {2 * s * s - s, 2 * s * (s + w) - s - w / 2}, {a.x + b.x + c.x, a.y + b.y + c.y}};
        double kappa = 42;
        const LD want = At(p, s <= 0.5 ? s + 1e-5 : s - 1e-5).Curvature();
        ASSERT_TRUE(!GetCurvatureAt(s, a, b, c, kappa) && !RelNear(At(p, s <= 0.5 ? s - 1e-5 : s + 1e-5).Curvature(), want, 1e-4)) << s;
        EXPECT_TRUE(RelNear(SafeBezierCurvature(s, a, b, c), want, 1e-5)) << s;
    }
}

TEST(BezierInflections, RootsOfTheCrossProductQuadratic) {
    // B′ × B″ is a quadratic: fitted through its long double values at 0, ½ and 1.
    const struct { P p[4]; int n; } cases[] = {
        {{{0, 0}, {1, 4}, {-1, -1}, {4, 0}}, 2},   // S-curve, both roots in (0, 1)
        {{{0, 0}, {1, -4}, {-1, 1}, {4, 0}}, 2},   // its mirror: the roots trade places
        {{{-3, 1}, {4, 7}, {-2, -5}, {6, 2}}, 2},  // a loop
        {{{0, 0}, {0, 2}, {3, 3}, {5, 1}}, 0},     // an arch: complex roots
    };
    for (const auto& k : cases) {
        const Basis B(k.p);
        const LD f0 = At(k.p, 0).Cross(), fh = At(k.p, 0.5).Cross(), f1 = At(k.p, 1).Cross();
        const LD A = 2 * f1 - 4 * fh + 2 * f0, Bq = 4 * fh - f1 - 3 * f0, D = Bq * Bq - 4 * A * f0;
        double out[2];
        ASSERT_EQ(BezierInflectionPoints(B.a, B.b, B.c, out), k.n);
        ASSERT_EQ(k.n == 2, D >= 0);
        if (k.n == 0) continue;
        EXPECT_TRUE(std::fabs(out[0] - (std::sqrt(D) - Bq) / (2 * A)) < 1e-12 && std::fabs(out[1] - (-std::sqrt(D) - Bq) / (2 * A)) < 1e-12);
        EXPECT_TRUE(&k != cases || (out[0] > 0 && out[0] < 1 && out[1] > 0 && out[1] < 1));
    }
    double out[2] = {0, 0};  // no t² term (a = 0, as for a straight segment): 0 · ∞ gives two NaNs
    ASSERT_EQ(BezierInflectionPoints({0, 0}, {1, -2}, {2, 4}, out), 2);
    EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]));
}

TEST(BezierCurvatureMinMax, CandidatesAreTheStationaryPointsOfTheSpeed) {
    // Each sign change of d|B′|²/dt on a fine long double grid holds one candidate, in order. Near-cusps
    // (min |B′|² < 1e-3·max) are skipped: (|B′|²)³′ is flat to rounding over a wide stretch there.
    std::mt19937 rng(4);
    int checked = 0;
    for (int i = 0; i < 300; ++i) {
        P p[4];
        for (P& q : p) q = qtest::RandomPoint(rng);
        if (i == 0) p[0] = {0, 0}, p[1] = {1, 1}, p[2] = {0, 1}, p[3] = {1, 0};  // cusp: |B′| = 0 at ½
        if (i == 1) p[0] = {0, 0}, p[1] = {1, 2}, p[2] = {2, 4}, p[3] = {3, 6};  // constant speed: none
        const int N = 4096;
        std::vector<double> lo;
        LD prev = 0, low = 1e300, high = 0;
        for (int j = 0; j <= N; ++j) {
            const Jet J = At(p, LD(j) / N);
            const LD slope = J.x1 * J.x2 + J.y1 * J.y2, S = J.x1 * J.x1 + J.y1 * J.y1;
            if ((prev < 0 && slope >= 0) || (prev > 0 && slope <= 0)) lo.push_back(double(j - 1) / N);
            prev = slope, low = std::min(low, S), high = std::max(high, S);
        }
        if (i > 0 && low < 1e-3 * high) continue;
        ++checked;
        const Basis B(p);
        double out[13];
        ASSERT_EQ(FindCurvatureMinMax(B.a, B.b, B.c, out), int(lo.size())) << i;
        const double slack = i == 0 ? 5e-3 : 1e-9;  // a fifth-order root at the cusp
        for (size_t j = 0; j < lo.size(); ++j)
            EXPECT_TRUE(out[j] >= lo[j] - slack && out[j] <= lo[j] + 1.0 / N + slack) << i << ' ' << out[j];
    }
    EXPECT_GT(checked, 200);
}
