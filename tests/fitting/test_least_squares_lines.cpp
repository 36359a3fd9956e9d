#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace QorMath;

namespace {

struct Fit {
    Point2d origin{-99, -99};
    Vector2d dir{-99, -99};
};

Fit FitPoints(const std::vector<Point2d>& pts) {
    Fit f;
    GetLeastSquaresLines(pts.data(), int(pts.size()), f.origin, f.dir);
    return f;
}

Fit FitSums(const std::vector<Point2d>& pts) {
    double sx = 0, sy = 0, sxy = 0, sxx = 0, syy = 0;
    for (const Point2d& p : pts) sx += p.x, sy += p.y, sxy += p.x * p.y, sxx += p.x * p.x, syy += p.y * p.y;
    Fit f;
    GetLeastSquaresLines(sx, sy, sxy, sxx, syy, pts.data(), int(pts.size()), f.origin, f.dir);
    return f;
}

}  // namespace

TEST(LeastSquaresLines, WorkedExamples) {
    const struct {
        std::vector<Point2d> pts;
        Point2d origin;
        Vector2d dir;
    } cases[] = {
        {{{0, 0}, {1, 1}, {2, 2}}, {0, 0}, {1, 1}},
        {{{0, 1}, {2, 3}}, {-1, 0}, {1, 1}},  // origin is the crossing with y = 0
        {{{0, 5}, {4, 5}}, {2, 5}, {1, 0}},
        {{{3, 3}, {3, 3}}, {3, 3}, {0, 1}},
        {{{3, -1}, {3, 8}, {3, 2}}, {3, 3}, {0, 1}},
        {{{0, 0}, {1, 0}, {0, 1}, {1, 1}}, {0.5, 0.5}, {0, 1}},  // equal extents: vertical
        {{{0, 0}, {4, 0}, {0, 2}, {4, 2}}, {2, 1}, {1, 0}},
        // Without cross moment the bounding box decides, not the spread: x is
        // wider (10 against 8) although y has the larger second moment.
        {{{0, 0}, {10, 0}, {5, 4}, {5, -4}, {5, 4}, {5, -4}}, {5, 0}, {1, 0}},
        {{{0, 2}, {2, 0}}, {2, 0}, {-1, 1}},
    };
    for (const auto& c : cases) {
        for (const Fit& f : {FitPoints(c.pts), FitSums(c.pts)}) {
            EXPECT_EQ(f.origin, c.origin) << c.pts.size() << ' ' << c.pts[1].x;
            EXPECT_EQ(f.dir, c.dir) << c.pts.size() << ' ' << c.pts[1].x;
        }
    }
}

TEST(LeastSquaresLines, TooFewPointsAndEmptySums) {
    const std::vector<Point2d> one{{4, 7}};
    EXPECT_EQ(FitPoints(one).origin, (Point2d{-99, -99}));
    EXPECT_EQ(FitPoints(one).dir, (Vector2d{-99, -99}));
    Fit f;
    GetLeastSquaresLines(one.data(), 0, f.origin, f.dir);
    GetLeastSquaresLines(one.data(), -3, f.origin, f.dir);
    GetLeastSquaresLines(nullptr, 0, f.origin, f.dir);
    EXPECT_EQ(f.origin, (Point2d{-99, -99}));
    EXPECT_EQ(f.dir, (Vector2d{-99, -99}));
    // The sums form has no count check: zero points divide by zero.
    GetLeastSquaresLines(0, 0, 0, 0, 0, nullptr, 0, f.origin, f.dir);
    EXPECT_TRUE(std::isnan(f.origin.x));
    EXPECT_TRUE(std::isnan(f.dir.x));
}

TEST(LeastSquaresLines, NoisyPointsFollowThePrincipalAxis) {
    std::mt19937 rng(41);
    std::uniform_real_distribution<double> t(-30.0, 30.0), noise(-2.0, 2.0), ang(0.0, Pi);
    for (int k = 0; k < 40; ++k) {
        const double a = ang(rng);
        const Vector2d d{std::cos(a), std::sin(a)};
        const Point2d base{t(rng), t(rng)};
        std::vector<Point2d> pts(5 + k * 3);
        for (auto& p : pts) p = base + d * t(rng) + Vector2d{noise(rng), noise(rng)};

        // Principal axis in long double: the eigenvector of the 2x2 covariance
        // for the larger eigenvalue, at angle ½·atan2(2Cxy, Cxx − Cyy).
        long double mx = 0, my = 0;
        for (const auto& p : pts) mx += p.x, my += p.y;
        mx /= pts.size(), my /= pts.size();
        long double cxx = 0, cxy = 0, cyy = 0;
        for (const auto& p : pts) {
            const long double dx = p.x - mx, dy = p.y - my;
            cxx += dx * dx, cxy += dx * dy, cyy += dy * dy;
        }
        const long double phi = std::atan2(2 * cxy, cxx - cyy) / 2;
        const Vector2d axis{double(std::cos(phi)), double(std::sin(phi))};

        for (const Fit& f : {FitPoints(pts), FitSums(pts)}) {
            ASSERT_EQ(f.dir.y, 1.0);
            ASSERT_EQ(f.origin.y, 0.0);
            ASSERT_NEAR(Cross(f.dir, axis) / Magnitude(f.dir), 0.0, 1e-9) << k;
            // The centroid lies on the reported line.
            const Point2d c{double(mx), double(my)};
            ASSERT_NEAR(Cross(c - f.origin, f.dir) / Magnitude(f.dir), 0.0, 1e-8 * (1 + Magnitude(c - f.origin))) << k;
        }
    }
}
