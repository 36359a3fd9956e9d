#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <utility>
#include <vector>

using namespace QorMath;

namespace {

// Singular values of the linear part from the eigenvalues of MᵀM, in long double.
std::pair<long double, long double> SingularValues(const MATRIX& m) {
    const long double a = m.a, b = m.b, c = m.c, d = m.d;
    const long double tr = a * a + b * b + c * c + d * d, det = a * d - b * c;
    const long double s1 = std::sqrt((tr + std::sqrt(std::max(0.0L, tr * tr - 4 * det * det))) / 2);
    return {s1, s1 > 0 ? std::fabs(det) / s1 : 0};
}

bool Close(const vector2dT<double, 0>& v, double x, double y, double tol) {
    return std::fabs(v.x - x) <= tol && std::fabs(v.y - y) <= tol;
}

}  // namespace

TEST(Ellipses, BoxAndAxesAgainstDenseSampling) {
    // Generic, zero entries in either row, mirrored, rank one, perpendicular rows
    // either way round, a scaled rotation (axes (2, 2)), nearly diagonal, and rows
    // of equal length (the axis angle's quotient is ±∞).
    std::vector<MATRIX> ms = {{1.5, 0.3, 40, -0.7, 2.2, -9}, {0, 2, 0, 3, 0, 0},    {2, 0, 0, 0, 1, 0},
                              {-1.2, -0.5, 7, 0.4, -2.0, -3}, {1, 2, 0, 2, 4, 0},   {0.3, 0, 0, 0, 0, 0},
                              {0.5, -3, 0, 6, 1, 0},          {2, 0, 0, 0, 3, 0},   {2, 5e-4, 0, -3e-4, 1.5, 0},
                              {2, 1, 0, 1, 2, 0},             {2, -1, 0, -1, 2, 0},
                              ConstructScaledRotationMatrix(2, 2, Pi / 6)};
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-3.0, 3.0);
    for (int i = 0; i < 6; ++i) ms.push_back({u(rng), u(rng), u(rng), u(rng), u(rng), u(rng)});
    for (const MATRIX& m : ms) {
        double lo_x = 1e300, hi_x = -1e300, lo_y = 1e300, hi_y = -1e300, farthest = 0, nearest = 1e300;
        for (int i = 0; i < 100000; ++i) {
            const Vector2d v = m(Vector2d{std::cos(TwoPi * i / 100000), std::sin(TwoPi * i / 100000)});
            lo_x = std::min(lo_x, v.x), hi_x = std::max(hi_x, v.x);
            lo_y = std::min(lo_y, v.y), hi_y = std::max(hi_y, v.y);
            farthest = std::max(farthest, Magnitude(v)), nearest = std::min(nearest, Magnitude(v));
        }
        const auto [s1, s2] = SingularValues(m);
        const double L = double(s1), tol = 1e-8 * (1 + L);  // sampling misses the extremes by O(Δt²)

        // Radius 3.5 about c, signed so that "outside" is positive: left, top, right, bottom.
        const Point2d c{-2.25, 11.0};
        const BoundsT<double> b = GetTransformedCircleBBox(m, 3.5, c);
        const double box[4] = {c.x - b.left, b.top - c.y, b.right - c.x, c.y - b.bottom};
        const double seen[4] = {-lo_x, hi_y, hi_x, -lo_y}, row[2] = {std::hypot(m.a, m.b), std::hypot(m.c, m.d)};
        for (int i = 0; i < 4; ++i) {  // contains every sample and no more; half extents are the row lengths
            EXPECT_TRUE(box[i] >= 3.5 * seen[i] - 1e-12 && box[i] <= 3.5 * (seen[i] + tol)) << m.a << ' ' << i;
            EXPECT_NEAR(box[i], 3.5 * row[i % 2], 1e-12 * (1 + 3.5 * L)) << m.a << ' ' << i;
        }

        const double det = m.a * m.d - m.b * m.c, eps = 1e-12 * L;
        if (std::fabs(det) < 1e-3) continue;  // singular: the lengths are 0/0 by their formula
        double l1 = 0, l2 = 0;
        Vector2d major{}, minor{};
        GetTransformedCircleAxisLengths(m, l1, l2);
        EXPECT_TRUE(std::fabs(l1 - s1) <= eps && std::fabs(l2 - s2) <= eps) << m.a << ' ' << l1 << ' ' << l2;
        EXPECT_TRUE(l1 >= farthest - eps && l1 <= farthest + tol && l2 <= nearest + eps && l2 >= nearest - tol) << m.a;
        GetTransformedCircleAxes(m, major, minor);
        const MATRIX inv{m.d / det, -m.b / det, 0, -m.c / det, m.a / det, 0};
        EXPECT_TRUE(std::fabs(Magnitude(major) - l1) <= eps && std::fabs(Magnitude(minor) - l2) <= eps) << m.a;
        // Both lie on the ellipse (their pre-images are unit vectors) and are perpendicular.
        EXPECT_TRUE(std::fabs(Magnitude(inv(major)) - 1) < 1e-12 && std::fabs(Magnitude(inv(minor)) - 1) < 1e-12);
        EXPECT_NEAR(Dot(major, minor), 0.0, eps * L) << m.a;
        EXPECT_GT(Cross(major, minor), 0.0) << m.a;  // minor is major turned a quarter counter-clockwise
    }
}

TEST(Ellipses, WorkedExamples) {
    const BoundsT<double> b = GetTransformedCircleBBox(IdentityMatrix(), 2.0, {5, 5});
    const BoundsT<double> s = GetTransformedCircleBBox({2, 0, 100, 0, 1, 100}, 1.0, {0, 0});  // no translation
    EXPECT_TRUE(b.left == 3 && b.top == 7 && b.right == 7 && b.bottom == 3);
    EXPECT_TRUE(s.left == -2 && s.top == 1 && s.right == 2 && s.bottom == -1);
    Vector2d major{}, minor{};
    GetTransformedCircleAxes({1, 0, 0, 0, 2, 0}, major, minor);
    EXPECT_TRUE(Close(major, 0, 2, 1e-15) && Close(minor, -1, 0, 1e-15));
    // A major axis shorter than √DBL_EPSILON takes the fall-back minor = (L2, major.x).
    GetTransformedCircleAxes({2e-9, 0, 0, 0, 1e-9, 0}, major, minor);
    EXPECT_TRUE(Close(major, 2e-9, 0, 1e-24) && Close(minor, 1e-9, 2e-9, 1e-24));
}

TEST(Ellipses, NormalOnTransformedCircle) {
    EXPECT_TRUE(Close(GetNormalOnTransformedCircle(IdentityMatrix(), {0, 1}), 0, 1, 0));
    EXPECT_TRUE(Close(GetNormalOnTransformedCircle({-1, 0, 0, 0, 1, 0}, {1, 0}), 1, 0, 0));  // negated: D < 0
    // Any similarity without translation, mirrored or not, gives back p: the
    // radial direction of the circle at p.
    for (double s : {0.5, -0.5, -3.0}) {
        const MATRIX m = ConstructScaledRotationMatrix(s, std::fabs(s), 2.9);
        EXPECT_TRUE(Close(GetNormalOnTransformedCircle(m, {-0.6, 0.8}), -0.6, 0.8, 1e-14)) << s;
    }
    // With a translation t, a rotation R scaled by s gives p + Rᵀt/s; singular:
    // the image point itself, negated for a negative determinant.
    EXPECT_TRUE(Close(GetNormalOnTransformedCircle({0, -2, 4, 2, 0, 6}, {1, 0}), 4, -2, 1e-15));
    EXPECT_TRUE(Close(GetNormalOnTransformedCircle({0, 0, 3, 0, 0, 4}, {7, 7}), 3, 4, 0));
    EXPECT_TRUE(Close(GetNormalOnTransformedCircle({-1e-20, 0, 1, 0, 1, 2}, {0, 0}), -1, -2, 0));
}

TEST(Ellipses, PointWithGivenNormal) {
    EXPECT_EQ(FindPointOnEllipseThatHasNormal({1, 0}, 4, 1), (Point2d{-1, 0}));
    for (auto [rx, ry] : {std::pair{0.5, 1.0}, {4.0, 1.0}, {0.5, 7.5}, {4.0, 7.5}})
        for (double a = 0.01; a < TwoPi; a += 0.13) {
            const Vector2d n = Radians::AngleToVector(a, 2.5);
            const Point2d u = FindPointOnEllipseThatHasNormal(n, rx, ry);
            const Vector2d g{u.x / rx, u.y / ry};  // outward normal of (rx·cos t, ry·sin t): the gradient
            ASSERT_NEAR(Magnitude(u), 1.0, 1e-14);
            ASSERT_TRUE(std::fabs(Cross(g, n)) < 1e-14 * Magnitude(g) * Magnitude(n) && Dot(g, n) < 0) << a;
        }
}
