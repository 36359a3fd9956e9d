#include "fitting/fit_internal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace QorMath;

namespace {

using P = vector2dT<double, 1>;

// Squared distance from q to the cubic c at t, in long double by the Bernstein weights.
long double Dist2(const P c[4], const P& q, long double t) {
    const long double s = 1 - t, w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    long double x = -q.x, y = -q.y;
    for (int i = 0; i < 4; ++i) x += w[i] * c[i].x, y += w[i] * c[i].y;
    return x * x + y * y;
}

// The local minima of the distance from q over (0, 1): a scan, then ternary search.
std::vector<long double> LocalMinima(const P c[4], const P& q) {
    const auto f = [&](long double t) { return Dist2(c, q, t); };
    std::vector<long double> found;
    for (long double i = 1, n = 2000; i < n; ++i) {
        long double lo = (i - 1) / n, hi = (i + 1) / n;
        if (!(f(lo) > f(i / n) && f(i / n) <= f(hi))) continue;
        for (int it = 0; it < 200; ++it) {
            const long double m1 = (2 * lo + hi) / 3, m2 = (lo + 2 * hi) / 3;
            const bool left = f(m1) < f(m2);
            (left ? hi : lo) = left ? m2 : m1;
        }
        found.push_back((lo + hi) / 2);
    }
    return found;
}

constexpr BoundsT<double> kWide{-100, 100, 100, -100};  // left, top, right, bottom

}  // namespace

TEST(FitInternals, NormaliseParameters) {
    double u[4] = {2, 3, 4, 6}, v[3] = {0.1, 0.2, 0.7};  // v ends at 1 exactly, not (0.7 − 0.1)·(1/0.6)
    NormaliseParameters(u, 4);
    NormaliseParameters(v, 3);
    EXPECT_TRUE(u[0] == 0 && u[1] == 0.25 && u[2] == 0.5 && u[3] == 1 && v[0] == 0 && v[2] == 1);
    EXPECT_NEAR(v[1], 1.0 / 6, 1e-15);
}

TEST(FitInternals, MeasureFitErrorIsTheWorstSquaredDistanceOrBoxOvershoot) {
    // B(t) = (9t, 0). Interior points 1 and 2 below/above at distances 1 and 2;
    // the end points lie far off but are skipped while their u is exactly 0 / 1.
    const P line[4] = {{0, 0}, {3, 0}, {6, 0}, {9, 0}};
    const P pts[4] = {{0, 5}, {1.8, 1}, {4.5, -2}, {9, 7}};
    const struct { double u0, u3; BoundsT<double> box; double error, worst; } cases[] = {
        {0, 1, kWide, 4, 0.5},
        {1e-9, 1, kWide, 25, 0},          // the first point is measured once u0 is not 0
        {0, 0.999, kWide, 49, 1},         // likewise the last
        {0, 1, {1, 100, 100, -100}, 4, 0.5},    // curve left 1 past the data: 1 < 4
        {0, 1, {-100, 100, 5, -100}, 16, 0.5},  // right 4 past: 16, worst point unchanged
        {0, 1, {-100, -3, 100, -100}, 9, 0.5},  // top 3 above the data's top
        {0, 1, {-100, 100, 100, 2.5}, 6.25, 0.5},  // bottom 2.5 below the data's bottom
    };
    for (const auto& c : cases) {
        double u[4] = {c.u0, 0.2, 0.5, c.u3}, worst = -1;
        EXPECT_NEAR(MeasureFitError(pts, line, u, 4, &worst, c.box), c.error, 1e-12) << c.error;
        EXPECT_NEAR(worst, c.worst, 1e-12) << c.error;
        EXPECT_NEAR(u[1], 0.2, 1e-15);
    }
    // The curve's box is its tight box: the arch's top is 3, not the handles' 4.
    const P arch[4] = {{0, 0}, {0, 4}, {4, 4}, {4, 0}};
    double u[2] = {0, 1};
    EXPECT_NEAR(MeasureFitError(arch, arch, u, 2, nullptr, {0, 2, 4, 0}), 1.0, 1e-12);
}

TEST(FitInternals, MeasureFitErrorNewtonThenGlobal) {
    // Under an arch, q has two local nearest points: the left leg (global) and
    // the right leg. Newton from near either keeps that one; a start outside
    // [0, 1] can only be answered by the global solve.
    const P arch[4] = {{0, 0}, {0, 10}, {10, 10}, {10, 0}};
    const P q{4, 2};
    const std::vector<long double> minima = LocalMinima(arch, q);
    ASSERT_EQ(minima.size(), 2u);
    const double left = double(minima[0]), right = double(minima[1]);
    ASSERT_LT(Dist2(arch, q, left), Dist2(arch, q, right));
    // Newton's answer is kept only when it moves u by less than 0.02.
    const P pts[5] = {q, q, q, q, q};
    double u[5] = {right - 0.005, left + 0.005, 1.5, -0.5, right - 0.05}, worst = -1;
    const double e = MeasureFitError(pts, arch, u, 5, &worst, kWide);
    EXPECT_NEAR(e, double(Dist2(arch, q, right)), 1e-9);
    EXPECT_NEAR(worst, right, 1e-7);
    const double want[5] = {right, left, left, left, left};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(u[i], want[i], 1e-7) << i;
}

TEST(FitInternals, PolishQuinticRoot) {
    const struct { double q[6], t, tolerance; bool ok; double root; } cases[] = {
        {{1, -0.3, 5, -1.5, 4, -1.2}, 0.45, 1e-5, true, 0.3},  // (t − 0.3)(t⁴ + 5t² + 4)
        {{0, 0, 0, 0, 1, -5}, 4.5, 1e-5, true, 5},             // step 0.5, then 0
        {{0, 0, 0, 0, 1, -5}, 0, 1e-5, false, 0},              // a first step of 5 is not below 1
        {{0, 0, 0, 1, 0, -2}, 1.5, 0.1, true, 17.0 / 12},      // the root is the point stepped to
        {{0, 0, 0, 1, 0, -2}, 1.5, 0, false, 0},               // no step is below 0
        {{0, 0, 0, 1, 0, -2}, 0, 1e-5, false, 0},              // zero derivative
        {{0, 0, 0, 1, 0, 0.01}, 0.5, 1e-5, false, 0},          // steps 0.26, 0.14, 0.1, then 6
    };
    for (const auto& c : cases) {
        double root = -99;
        EXPECT_EQ(PolishQuinticRoot(c.q, c.t, c.tolerance, &root), c.ok) << c.t << " " << c.q[5];
        EXPECT_TRUE(!c.ok || std::fabs(root - c.root) <= 1e-14) << c.t << " " << root;
    }
}

TEST(FitInternals, GaussJordanInverse) {
    // det 1, integer inverse; the first column's pivot is in the last row.
    double m[3][3] = {{1, 2, 3}, {0, 1, 4}, {5, 6, 0}}, inv[3][3];
    const double want[3][3] = {{-24, 18, 5}, {20, -15, -4}, {-5, 4, 1}};
    ASSERT_TRUE(GaussJordanInverse<3>(m, inv));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_NEAR(inv[i][j], want[i][j], 1e-12);
    double swap[2][2] = {{0, 1}, {1, 0}}, swapInv[2][2];
    ASSERT_TRUE(GaussJordanInverse<2>(swap, swapInv));
    EXPECT_TRUE(swapInv[0][1] == 1 && swapInv[1][0] == 1 && swapInv[0][0] == 0 && swapInv[1][1] == 0);
    double singular[2][2] = {{1, 2}, {2, 4}}, noColumn[2][2] = {{0, 1}, {0, 1}}, out[2][2];
    EXPECT_FALSE(GaussJordanInverse<2>(singular, out));
    EXPECT_FALSE(GaussJordanInverse<2>(noColumn, out));
}
