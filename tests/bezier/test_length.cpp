#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using LD = long double;

// |B′(t)| from the control points, Bernstein form in long double.
LD Speed(const P p[4], LD t) { const qtest::LongPoint d = qtest::BernsteinAt(p, t, true); return std::hypot(d.x, d.y); }

// Gauss–Legendre nodes and weights on [−1, 1]: Newton on the Legendre polynomial P_n.
const std::vector<std::pair<LD, LD>>& Rule(int n) {
    static std::vector<std::pair<LD, LD>> rules[17];
    for (int i = int(rules[n].size()); i < n; ++i) {
        LD x = std::cos(3.14159265358979323846264L * (i + 0.75L) / (n + 0.5L)), dp = 0;
        for (int k = 0; k < 100; ++k) {
            LD p0 = 1, p1 = x;
            for (int j = 2; j <= n; ++j) std::tie(p0, p1) = std::pair(p1, ((2 * j - 1) * x * p1 - (j - 1) * p0) / j);
            dp = n * (x * p1 - p0) / (x * x - 1);
            x -= p1 / dp;
        }
        rules[n].push_back({x, 2 / ((1 - x * x) * dp * dp)});
    }
    return rules[n];
}

// The n-point rule over [t0, t1].
LD Gauss(const P p[4], int n, LD t0 = 0, LD t1 = 1) {
    LD sum = 0;
    for (const auto& [x, w] : Rule(n)) sum += w * Speed(p, (t1 - t0) / 2 * x + (t0 + t1) / 2);
    return sum * (t1 - t0) / 2;
}

// Adaptive Simpson over the speed: the reference length of [a, b].
LD Simpson(const P p[4], LD a, LD b, LD fa, LD fm, LD fb, LD whole, int depth) {
    const LD m = (a + b) / 2, fl = Speed(p, (a + m) / 2), fr = Speed(p, (m + b) / 2);
    const LD left = (m - a) / 6 * (fa + 4 * fl + fm), right = (b - m) / 6 * (fm + 4 * fr + fb);
    const LD d = left + right - whole;
    if (depth > 40 || (depth > 4 && std::fabs(d) <= 1e-13L * (b - a))) return left + right + d / 15;
    return Simpson(p, a, m, fa, fl, fm, left, depth + 1) + Simpson(p, m, b, fm, fr, fb, right, depth + 1);
}
LD Reference(const P p[4], LD a, LD b) {
    const LD fa = Speed(p, a), fm = Speed(p, (a + b) / 2), fb = Speed(p, b);
    return Simpson(p, a, b, fa, fm, fb, (b - a) / 6 * (fa + 4 * fm + fb), 0);
}

double Len(const P p[4], int n) { const qtest::Basis B(p); return Length(B.a, B.b, B.c, static_cast<LengthAccuracy>(n)); }

}  // namespace

TEST(BezierLength, AccuracySelectsTheRule) {
    // Evenly spaced handles: constant speed 15, so an n-point rule gives 7.5·Σw, the chord to the
    // rounding of the stored weights. A tight turn makes every rule (they differ by 8e-4 at least
    // there) give a visibly different length: the result must be the mapped one.
    const P line[4] = {{0, 0}, {3, 4}, {6, 8}, {9, 12}}, turn[4] = {{0, 0}, {4, 3}, {-3, 3}, {1, 0}};
    const struct { int accuracy, points; } map[] = {{-1, 2}, {0, 2}, {1, 2}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6},
                                                    {7, 7}, {8, 8}, {9, 10}, {10, 10}, {11, 16}, {16, 16}, {50, 16}};
    for (const auto& m : map) {
        EXPECT_NEAR(Len(line, m.accuracy), 15, 15 * 5e-8) << m.accuracy;
        const LD got = Len(turn, m.accuracy);
        for (int n : {2, 3, 4, 5, 6, 7, 8, 10, 16})
            EXPECT_EQ(std::fabs(got - Gauss(turn, n)) < 1e-6L, n == m.points) << m.accuracy << " vs " << n;
    }
    // The five-point weights as stored sum to 2.00000001, which a full-precision rule would not show.
    const LD w5 = 0.23692689L + 0.47862867L + 0.56888889L + 0.47862867L + 0.23692689L;
    EXPECT_TRUE(std::fabs(Len(line, 5) - double(7.5L * w5)) < 1e-13 && Len(line, 5) - 15 > 5e-8);
}

TEST(BezierLength, EndsAreNotIntegrated) {
    // LengthTo(0) and LengthFrom(1) return 0 without building a piece: an infinite control point cannot
    // reach the result. Fractions outside (0, 1) give the ends: nor can a NaN curve.
    const P far[4] = {{0, 0}, {1, 1}, {2, 0}, {qtest::kInf, 0}}, nan{qtest::kNaN, qtest::kNaN};
    EXPECT_TRUE(qtest::SameBits(LengthTo(0, far), 0.0) && qtest::SameBits(LengthFrom(1, far), 0.0));
    for (double f : {-qtest::kInf, -1.0, 0.0, 1.0, 2.5, qtest::kInf})
        EXPECT_EQ(GetCurveRelativeLengthParameter(f, nan, nan, nan, 0, LengthAccuracy::Gauss16), f > 0 ? 1.0 : 0.0) << f;
    // Symmetric curves: a loose tolerance accepts the first midpoint as it is; on a gentle one, where the
    // rule is exact to rounding, a zero tolerance converges to 0.5.
    const P arch[4] = {{0, 0}, {1, 3}, {3, 3}, {4, 0}}, gentle[4] = {{0, 0}, {1, 0.5}, {2, 0.5}, {3, 0}};
    const qtest::Basis A(arch), G(gentle);
    EXPECT_EQ(GetCurveRelativeLengthParameter(0.5, A.a, A.b, A.c, 1e-6, LengthAccuracy::Gauss16), 0.5);
    EXPECT_NEAR(GetCurveRelativeLengthParameter(0.5, G.a, G.b, G.c, 0, LengthAccuracy::Gauss16), 0.5, 1e-13);
}

TEST(BezierLength, GentleCurvesAgainstReferences) {
    // Handles near the chord's thirds, speed nearly constant, so that every rule is accurate (the 16-point
    // one to rounding); integer-valued, so that the integer forms convert exactly.
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(0.01, 0.99), g(-0.1, 0.1);
    for (int i = 0; i < 300; ++i) {
        P p[4] = {qtest::RandomPoint(rng), {}, {}, qtest::RandomPoint(rng)};
        tagPOINT ip[4];
        for (int j = 1; j < 3; ++j) {
            const double dx = p[3].x - p[0].x, dy = p[3].y - p[0].y, along = g(rng) + j / 3.0, across = g(rng);
            p[j] = {p[0].x + along * dx - across * dy, p[0].y + along * dy + across * dx};
        }
        for (int j = 0; j < 4; ++j) ip[j] = {int(p[j].x * 100), int(p[j].y * 100)}, p[j] = {1. * ip[j].x, 1. * ip[j].y};
        // The 16-point rule is the reference length to rounding; the 10-point one to its eight-decimal table.
        const double ref = double(Reference(p, 0, 1)), whole = Len(p, 10);
        EXPECT_TRUE(std::fabs(Len(p, 16) - ref) <= ref * 1e-13 && std::fabs(whole - ref) <= ref * 5e-8) << i;
        EXPECT_TRUE(std::fabs(LengthTo(1, p) - whole) <= whole * 1e-13 && std::fabs(LengthFrom(0, p) - whole) <= whole * 1e-13);
        for (int k = 1; k <= 10; ++k) {
            // The piece integrated whole by the 10-point rule: on the original curve, that rule over [0, t].
            const double t = k / 11.0, to = LengthTo(t, p), from = LengthFrom(t, p);
            EXPECT_TRUE(std::fabs(to - double(Gauss(p, 10, 0, t))) <= whole * 1e-7 && std::fabs(to + from - whole) <= whole * 1e-7)
                << i << " " << t;
            EXPECT_TRUE(qtest::SameBits(LengthTo(t, ip), to) && qtest::SameBits(LengthFrom(t, ip), from)) << i;
        }
        // The length up to the returned t, by the requested rule, is fraction·L within the tolerance;
        // tolerance 0 stops too (exact bracket or the iteration limit). The rules differ from the true length
        // (Simpson) on curved paths, so a wrong rule shows for the two-point one.
        const qtest::Basis B(p);
        const int n = i % 3 == 0 ? 2 : 16;
        const double f = u(rng), tol = i % 2 ? 1e-6 : 0;
        const double t = GetCurveRelativeLengthParameter(f, B.a, B.b, B.c, tol, static_cast<LengthAccuracy>(n));
        const LD L = n == 2 ? Gauss(p, n) : Reference(p, 0, 1), got = n == 2 ? Gauss(p, n, 0, t) : Reference(p, 0, t);
        EXPECT_NEAR(double(got), double(f * L), 2 * tol + 1e-10 * double(L)) << i << " n=" << n << " f=" << f;
    }
}
