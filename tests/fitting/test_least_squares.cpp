#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using qtest::Near;

namespace {

using P = Point2d;
using V = Vector2d;

// Curves with non-zero end handles: an arch, an S, a loop and a skewed one.
const P kCurves[4][4] = {{{0, 0}, {1, 3}, {4, 3}, {5, 0}},
                         {{0, 0}, {3, 4}, {-1, 4}, {2, 8}},
                         {{-2, 1}, {6, 5}, {-4, 5}, {4, 1}},
                         {{1, 1}, {2, 1.5}, {6, 4}, {5, -3}}};

P At(const P p[4], long double t) {
    const qtest::LongPoint q = qtest::BernsteinAt(p, t);
    return {double(q.x), double(q.y)};
}

// Points at t = i / (n − 1), and those parameters.
std::vector<P> Sample(const P p[4], int n, std::vector<double>* u = nullptr) {
    std::vector<P> pts;
    for (int i = 0; i < n; ++i) {
        pts.push_back(At(p, double(i) / (n - 1)));
        if (u) u->push_back(double(i) / (n - 1));
    }
    return pts;
}

// The largest distance from the points to the cubic q, by dense sampling
// refined by ternary search: independent of the fitter's own measure.
double Deviation(const P* pts, int n, const P q[4]) {
    double worst = 0;
    for (int k = 0; k < n; ++k) {
        const auto dist = [&](long double t) {
            const qtest::LongPoint b = qtest::BernsteinAt(q, t);
            return std::hypot(b.x - pts[k].x, b.y - pts[k].y);
        };
        long double best = 0;
        for (int i = 1; i <= 400; ++i) best = dist(i / 400.0L) < dist(best) ? i / 400.0L : best;
        long double lo = std::max(0.0L, best - 1 / 400.0L), hi = std::min(1.0L, best + 1 / 400.0L);
        for (int it = 0; it < 100; ++it) {
            const long double m1 = (2 * lo + hi) / 3, m2 = (lo + 2 * hi) / 3;
            const bool left = dist(m1) < dist(m2);
            (left ? hi : lo) = left ? m2 : m1;
        }
        worst = std::max(worst, double(dist((lo + hi) / 2)));
    }
    return worst;
}

}  // namespace

TEST(ChordLength, WorkedExamples) {
    const struct { std::vector<P> pts; std::vector<double> u; } cases[] = {
        {{{4, 4}}, {1}},
        {{{0, 0}, {7, 1}}, {0, 1}},
        {{{2, 2}, {2, 2}}, {0, 1}},
        {{{0, 0}, {1, 0}, {1, 3}}, {0, 0.25, 1}},
        {{{0, 0}, {0, 2}, {0, 2}, {0, 4}}, {0, 0.5, 0.5, 1}},  // a repeated point repeats its parameter
    };
    for (const auto& c : cases) {
        std::vector<double> u(9, -1.0);
        Calculate_u(c.pts.data(), int(c.pts.size()), u);
        EXPECT_EQ(u, c.u) << c.pts.size();
    }
    const P same[3] = {{1, 1}, {1, 1}, {1, 1}};
    std::vector<double> u;
    Calculate_u(same, 3, u);
    EXPECT_TRUE(u.size() == 3 && u[0] == 0 && std::isnan(u[1]) && u[2] == 1);
    EXPECT_THROW(Calculate_u(same, 0, u), std::length_error);
}

TEST(LeastSquaresCubic, ExactDataIsRecoveredOnTheFirstPass) {
    for (const auto& c : kCurves) {
        std::vector<double> u, v;
        const std::vector<P> pts = Sample(c, 9, &u);
        v = u;
        // The error of the true curve is only its box's overshoot of the data's
        // box (the samples miss the extremes), found by dense sampling.
        double lx = pts[0].x, ly = pts[0].y, hx = lx, hy = ly;
        for (const P& q : pts) lx = std::min(lx, q.x), ly = std::min(ly, q.y), hx = std::max(hx, q.x), hy = std::max(hy, q.y);
        double over = 0;
        for (int i = 0; i <= 100000; ++i) {
            const P b = At(c, i / 100000.0L);
            over = std::max({over, lx - b.x, ly - b.y, b.x - hx, b.y - hy});
        }
        // Tangents twice the handles: the handle lengths come out as ½.
        P out[4], free[4];
        EXPECT_NEAR(LeastSquares(pts.data(), u.data(), 9, 2.0 * (c[1] - c[0]), 2.0 * (c[3] - c[2]), out, 1,
                                 nullptr, -1.0), over * over, 1e-9);
        EXPECT_NEAR(LeastSquares(pts.data(), v.data(), 9, free, 1, nullptr), over * over, 1e-9);
        for (int i = 0; i < 4; ++i) EXPECT_TRUE(Near(out[i], c[i], 1e-11) && Near(free[i], c[i], 1e-11)) << i;
    }
}

TEST(LeastSquaresCubic, ChordLengthStartConverges) {
    // The symmetric arch with its top sampled: both fits get there.
    const auto& c = kCurves[0];
    const std::vector<P> arch = Sample(c, 25);
    P out[4], free[4];
    EXPECT_LT(LeastSquares(arch.data(), 25, c[1] - c[0], c[3] - c[2], out, 30), 1e-24);
    EXPECT_LT(LeastSquares(arch.data(), 25, free, 200), 1e-20);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(Near(out[i], c[i], 1e-9) && Near(free[i], c[i], 1e-9));
}

TEST(LeastSquaresCubic, FreeFitKeepsTheBestPass) {
    // Twelve passes in one call against twelve single passes chained through
    // u and out: a pass no better than the best is dropped, and one more than
    // twice as bad ends the run. The loop curve drops its fourth pass and then
    // improves again.
    int recovered = 0;
    for (const auto& c : kCurves) {
        const std::vector<P> pts = Sample(c, 9);
        std::vector<double> u, chain;
        Calculate_u(pts.data(), 9, u);
        chain = u;
        P out[4] = {}, step[4] = {}, best[4] = {};
        double bestError = DBL_MAX;
        bool dropped = false;
        for (int k = 0; k < 12; ++k) {
            const double e = LeastSquares(pts.data(), chain.data(), 9, step, 1, nullptr);
            if (k > 0 && e >= bestError) {
                if (e > 2 * bestError) break;
                dropped = true;
                continue;
            }
            recovered += dropped;
            bestError = e;
            std::copy(step, step + 4, best);
        }
        EXPECT_EQ(LeastSquares(pts.data(), u.data(), 9, out, 12, nullptr), bestError);
        EXPECT_EQ(u, chain);
        for (int i = 0; i < 4; ++i) EXPECT_TRUE(out[i] == best[i]);
        // The error bounds the true distance of every interior point (the ends are not measured).
        EXPECT_LE(Deviation(pts.data() + 1, 7, out), std::sqrt(bestError) * 1.001 + 1e-12);
    }
    EXPECT_GT(recovered, 0);
}

TEST(LeastSquaresCubic, FewPointsAndNoPasses) {
    const P line[2] = {{0, 0}, {3, 0}}, three[3] = {{0, 0}, {1, 1}, {2, 0}}, mark{9, 9};
    P out[4] = {mark, mark, mark, mark};
    double u[3] = {0, 0.5, 1}, v[3] = {2, 3, 6}, u4[4] = {0, 0.3, 0.6, 1};
    EXPECT_EQ(LeastSquares(line, u, 1, V{1, 0}, V{1, 0}, out, 5, nullptr, -1.0), DBL_MAX);
    EXPECT_EQ(LeastSquares(line, u, 0, out, 5, nullptr), DBL_MAX);
    EXPECT_TRUE(out[0] == mark && out[3] == mark);
    // Two points: handles a third of the chord along the tangents as given.
    EXPECT_EQ(LeastSquares(line, 2, V{1, 0}, V{0, 2}, out, 5), 0.0);
    EXPECT_TRUE(out[0] == line[0] && out[1] == (P{1, 0}) && out[2] == (P{3, -2}) && out[3] == line[1]);
    EXPECT_EQ(LeastSquares(line, 2, out, 5), 0.0);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(Near(out[i], P{i * 1.0, 0}, 1e-15));
    // No passes. Three points: the chord-thirds curve, a straight y = 0 with
    // x = 2t, measured: (1, 1) lies 1 above its nearest point. Four: no fit.
    EXPECT_EQ(LeastSquares(three, u, 3, V{1, 0}, V{1, 0}, out, 0, nullptr, -1.0), 1.0);
    EXPECT_TRUE(Near(out[1], P{2.0 / 3, 0}, 1e-15) && Near(out[2], P{4.0 / 3, 0}, 1e-15));
    EXPECT_EQ(LeastSquares(Sample(kCurves[0], 4).data(), u4, 4, V{1, 0}, V{1, 0}, out, 0, nullptr, -1.0), DBL_MAX);
    // The free fit normalises u before it finds there is nothing to do.
    EXPECT_EQ(LeastSquares(three, v, 3, out, 0, nullptr), DBL_MAX);
    EXPECT_TRUE(v[0] == 0 && v[1] == 0.25 && v[2] == 1);
}

TEST(LeastSquaresCubic, BackwardHandleFallbackIsNeverAnImprovement) {
    // A start tangent pointing away from the data makes the start handle
    // negative, in this pass and the next: it becomes 0.333·|D| / max(|D|, |t0|)
    // times t0, a length of 0.333·|D| = 1.665 (a third would give 1.667).
    const std::vector<P> pts = Sample(kCurves[0], 9);  // chord D = (5, 0)
    const V t0{10, -20}, t1{1, -3};
    std::vector<double> u0(9), u1, u2, u12;
    Calculate_u(pts.data(), 9, u0);
    P first[4], second[4], both[4];
    double worst1 = -1, worst2 = -1, worstBoth = -1;
    u1 = u0;
    const double e1 = LeastSquares(pts.data(), u1.data(), 9, t0, t1, first, 1, &worst1, -1.0);
    EXPECT_TRUE(Near(first[1], P{0, 0} + (0.333 * 5 / Magnitude(t0)) * t0, 1e-14)) << first[1].x;
    // The second pass alone, from the parameters the first left behind.
    u2 = u1;
    const double e2 = LeastSquares(pts.data(), u2.data(), 9, t0, t1, second, 1, &worst2, -1.0);
    ASSERT_LT(e2, e1);
    ASSERT_NEAR(Magnitude(second[1] - second[0]), 0.333 * 5, 1e-14);
    ASSERT_NE(worst2, worst1);
    // Both passes in one call: the better second pass is invalid and dropped,
    // but the parameters and the worst point are those of the last pass.
    u12 = u0;
    EXPECT_EQ(LeastSquares(pts.data(), u12.data(), 9, t0, t1, both, 2, &worstBoth, -1.0), e1);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(both[i] == first[i]);
    EXPECT_EQ(u12, u2);
    EXPECT_EQ(worstBoth, worst2);
}

TEST(LeastSquaresCubic, ToleranceExitAndTheWrapper) {
    const auto& c = kCurves[1];
    const std::vector<P> pts = Sample(c, 15);
    const V t0 = c[1] - c[0], t1 = c[3] - c[2];
    std::vector<double> chord;
    Calculate_u(pts.data(), 15, chord);
    P a[4], b[4], w[4];
    std::vector<double> once = chord, early = chord, level = chord, full = chord;
    const double e1 = LeastSquares(pts.data(), once.data(), 15, t0, t1, a, 1, nullptr, -1.0);
    // The first pass beats the tolerance: nothing more is done. Equal to it is not enough.
    EXPECT_EQ(LeastSquares(pts.data(), early.data(), 15, t0, t1, b, 10, nullptr, e1 * 1.5), e1);
    EXPECT_EQ(early, once);
    EXPECT_LT(LeastSquares(pts.data(), level.data(), 15, t0, t1, b, 10, nullptr, e1), e1);
    // Without the exit (tolerance −1 in the wrapper) later passes run and improve.
    const double e10 = LeastSquares(pts.data(), full.data(), 15, t0, t1, b, 10, nullptr, -1.0);
    EXPECT_LT(e10, e1 * 0.5);
    EXPECT_EQ(LeastSquares(pts.data(), 15, t0, t1, w, 10), e10);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(w[i] == b[i]);
    EXPECT_LE(Deviation(pts.data(), 15, b), std::sqrt(e10) * 1.001 + 1e-12);
    EXPECT_TRUE(b[0] == pts[0] && b[3] == pts[14]);
}

TEST(LeastSquaresCubic, TwoJoinedCubics) {
    // A C¹ pair through J = (5, 5) with handles J ∓ (2, 1), rising throughout so
    // that the data's box is the curves' box.
    const P c1[4] = {{0, 0}, {1, 3}, {3, 4}, {5, 5}}, c2[4] = {{5, 5}, {7, 6}, {8, 9}, {10, 10}};
    const V t0 = c1[1] - c1[0], t1 = c2[3] - c2[2];
    // Each cubic sampled at s = i/8 (s < 1 on the first, s > 0 on the second),
    // global parameters s/2 and ½ + s/2: the groups map back to s exactly.
    std::vector<P> pts;
    std::vector<double> u;
    for (int i = 0; i < 8; ++i) pts.push_back(At(c1, i / 8.0)), u.push_back(i / 16.0);
    for (int i = 1; i <= 8; ++i) pts.push_back(At(c2, i / 8.0)), u.push_back(0.5 + i / 16.0);
    P o1[4], o2[4];
    EXPECT_LT(LeastSquares(pts.data(), u.data(), 16, 8, t0, t1, o1, o2, 1), 1e-24);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(Near(o1[i], c1[i], 1e-10) && Near(o2[i], c2[i], 1e-10)) << i;

    // From chord lengths: slow but steady (0.1% of the size in distance after
    // 40 passes), joined at one point with one tangent.
    const double e = LeastSquares(pts.data(), 16, 8, t0, t1, o1, o2, 40);
    EXPECT_LT(e, 1e-4);
    EXPECT_TRUE(o1[3] == o2[0] && o1[0] == pts[0] && o2[3] == pts[15]);
    EXPECT_NEAR(Cross(o1[3] - o1[2], o2[1] - o2[0]), 0.0, 1e-9);
    EXPECT_GT(Dot(o1[3] - o1[2], o2[1] - o2[0]), 0.0);
    EXPECT_LE(std::max(Deviation(pts.data(), 8, o1), Deviation(pts.data() + 8, 8, o2)), std::sqrt(e) * 1.001 + 1e-12);

    // Too few points, a split that leaves a group empty, or no passes: nothing written.
    const P mark{-7, -7};
    P k1[4] = {mark, mark, mark, mark}, k2[4] = {mark, mark, mark, mark};
    EXPECT_EQ(LeastSquares(pts.data(), 4, 2, t0, t1, k1, k2, 10), DBL_MAX);
    EXPECT_EQ(LeastSquares(pts.data(), 16, 0, t0, t1, k1, k2, 10), DBL_MAX);
    EXPECT_EQ(LeastSquares(pts.data(), 16, 16, t0, t1, k1, k2, 10), DBL_MAX);
    EXPECT_EQ(LeastSquares(pts.data(), 16, 8, t0, t1, k1, k2, 0), DBL_MAX);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(k1[i] == mark && k2[i] == mark);
}

TEST(LeastSquaresQuadratic, RegressionAppends) {
    std::vector<P> pts;
    for (int i = -3; i <= 4; ++i) pts.push_back({i * 0.5, 2 - 3 * (i * 0.5) + 0.5 * (i * 0.5) * (i * 0.5)});
    std::vector<double> c{42};
    ASSERT_TRUE(LeastSquares(pts.data(), pts.size(), c));
    ASSERT_EQ(c.size(), 4u);
    EXPECT_TRUE(c[0] == 42 && std::fabs(c[1] - 2) < 1e-13 && std::fabs(c[2] + 3) < 1e-13 && std::fabs(c[3] - 0.5) < 1e-13);
    const P equalX[3] = {{1, 0}, {1, 1}, {1, 5}};
    EXPECT_FALSE(LeastSquares(equalX, 3, c));
    EXPECT_FALSE(LeastSquares(pts.data(), 2, c));
    EXPECT_EQ(c.size(), 4u);
}
