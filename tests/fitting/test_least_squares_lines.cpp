#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

using namespace QorMath;

namespace {

struct Fit {
    Point2d origin{-99, -99};
    Vector2d dir{-99, -99};
};

// The fit from the points and from their running sums.
std::array<Fit, 2> FitBoth(const std::vector<Point2d>& pts) {
    std::array<Fit, 2> f;
    double sx = 0, sy = 0, sxy = 0, sxx = 0, syy = 0;
    for (const Point2d& p : pts) sx += p.x, sy += p.y, sxy += p.x * p.y, sxx += p.x * p.x, syy += p.y * p.y;
    GetLeastSquaresLines(pts.data(), int(pts.size()), f[0].origin, f[0].dir);
    GetLeastSquaresLines(sx, sy, sxy, sxx, syy, pts.data(), int(pts.size()), f[1].origin, f[1].dir);
    return f;
}

}  // namespace

TEST(LeastSquaresLines, WorkedExamples) {
    const struct { std::vector<Point2d> pts; Point2d origin; Vector2d dir; } cases[] = {
        {{{0, 0}, {1, 1}, {2, 2}}, {0, 0}, {1, 1}},
        {{{0, 1}, {2, 3}}, {-1, 0}, {1, 1}},  // origin is the crossing with y = 0
        {{{0, 2}, {2, 0}}, {2, 0}, {-1, 1}},
        {{{0, 5}, {4, 5}}, {2, 5}, {1, 0}},
        {{{3, 3}, {3, 3}}, {3, 3}, {0, 1}},
        {{{0, 0}, {1, 0}, {0, 1}, {1, 1}}, {0.5, 0.5}, {0, 1}},  // equal extents: vertical
        // Without cross moment the bounding box decides, not the spread: x is
        // wider (10 against 8) although y has the larger second moment.
        {{{0, 0}, {10, 0}, {5, 4}, {5, -4}, {5, 4}, {5, -4}}, {5, 0}, {1, 0}},
    };
    for (const auto& c : cases)
        for (const Fit& f : FitBoth(c.pts)) EXPECT_TRUE(f.origin == c.origin && f.dir == c.dir) << c.pts[1].x;

    Fit f;  // too few points leave the outputs alone; the sums form divides by a zero count
    for (int n : {1, 0, -3}) GetLeastSquaresLines(cases[0].pts.data(), n, f.origin, f.dir);
    EXPECT_TRUE(f.origin == (Point2d{-99, -99}) && f.dir == (Vector2d{-99, -99}));
    GetLeastSquaresLines(0, 0, 0, 0, 0, nullptr, 0, f.origin, f.dir);
    EXPECT_TRUE(std::isnan(f.origin.x) && std::isnan(f.dir.x));
}

TEST(LeastSquaresLines, NoisyPointsFollowThePrincipalAxis) {
    for (int k = 0; k < 40; ++k) {
        const Vector2d d{std::cos(0.1 + k * 0.077), std::sin(0.1 + k * 0.077)}, across{-d.y, d.x};  // over [0, π)
        std::vector<Point2d> pts;
        for (int i = 0; i < 5 + k * 3; ++i)
            pts.push_back(Point2d{k - 20.0, 7.0} + d * (i * 1.7 - k * 2.5) + across * (2 * std::sin(i * 2.1)));
        // Principal axis in long double: the covariance's eigenvector for the
        // larger eigenvalue, at angle ½·atan2(2Cxy, Cxx − Cyy).
        long double mx = 0, my = 0, cxx = 0, cxy = 0, cyy = 0, n = pts.size();
        for (const auto& p : pts) mx += p.x / n, my += p.y / n;
        for (const auto& p : pts) {
            const long double dx = p.x - mx, dy = p.y - my;
            cxx += dx * dx, cxy += dx * dy, cyy += dy * dy;
        }
        const long double phi = std::atan2(2 * cxy, cxx - cyy) / 2;
        const Vector2d axis{double(std::cos(phi)), double(std::sin(phi))};
        const Point2d c{double(mx), double(my)};
        for (const Fit& f : FitBoth(pts)) {
            ASSERT_TRUE(f.dir.y == 1.0 && f.origin.y == 0.0) << k;
            ASSERT_NEAR(Cross(f.dir, axis) / Magnitude(f.dir), 0.0, 1e-9) << k;
            // The centroid lies on the reported line.
            ASSERT_NEAR(Cross(c - f.origin, f.dir) / Magnitude(f.dir), 0.0, 1e-8 * (1 + Magnitude(c - f.origin))) << k;
        }
    }
}
