#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <vector>

using namespace QorMath;

namespace {

// Matrices covering every branch of the extreme-angle and axis rules: generic,
// zero entries in either row, mirrored, rank one, perpendicular rows, rows
// of equal length.
std::vector<MATRIX> TestMatrices() {
    std::vector<MATRIX> ms = {{1.5, 0.3, 40, -0.7, 2.2, -9}, {0, 2, 0, 3, 0, 0},   {2, 0, 0, 0, 1, 0},
                              {-1.2, -0.5, 7, 0.4, -2.0, -3}, {1, 2, 0, 2, 4, 0},  {0.3, 0, 0, 0, 0, 0},
                              {0.5, -3, 0, 6, 1, 0},          {2, 5e-4, 0, -3e-4, 1.5, 0},
                              // rows of equal length: the axis angle's quotient is ±∞
                              {2, 1, 0, 1, 2, 0},             {2, -1, 0, -1, 2, 0}};
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-3.0, 3.0);
    for (int i = 0; i < 4; ++i) ms.push_back({u(rng), u(rng), u(rng), u(rng), u(rng), u(rng)});
    return ms;
}

// Images of the unit circle under m's linear part, densely sampled.
std::vector<Vector2d> SampleEllipse(const MATRIX& m, int n = 100000) {
    std::vector<Vector2d> s(n);
    for (int i = 0; i < n; ++i) {
        const double t = TwoPi * i / n;
        s[i] = m(Vector2d{std::cos(t), std::sin(t)});
    }
    return s;
}

// Exact comparison when tol is 0.
template <int K>
void ExpectVec(const vector2dT<double, K>& v, double x, double y, double tol = 0) {
    EXPECT_NEAR(v.x, x, tol);
    EXPECT_NEAR(v.y, y, tol);
}

// Singular values of the linear part from the eigenvalues of MᵀM, in long double.
void SingularValues(const MATRIX& m, long double& s1, long double& s2) {
    const long double a = m.a, b = m.b, c = m.c, d = m.d;
    const long double tr = a * a + b * b + c * c + d * d, det = a * d - b * c;
    const long double l1 = (tr + std::sqrt(std::max(0.0L, tr * tr - 4 * det * det))) / 2;
    s1 = std::sqrt(l1);
    s2 = l1 > 0 ? std::fabs(det) / s1 : 0;
}

}  // namespace

TEST(Ellipses, BBoxAgainstDenseSampling) {
    for (const MATRIX& m : TestMatrices()) {
        for (double radius : {1.0, 3.5}) {
            const Point2d c{-2.25, 11.0};
            const BoundsT<double> b = GetTransformedCircleBBox(m, radius, c);
            double lo_x = 1e300, hi_x = -1e300, lo_y = 1e300, hi_y = -1e300;
            for (const Vector2d& v : SampleEllipse(m)) {
                const Point2d p = c + v * radius;
                lo_x = std::min(lo_x, p.x), hi_x = std::max(hi_x, p.x);
                lo_y = std::min(lo_y, p.y), hi_y = std::max(hi_y, p.y);
            }
            const double hw = radius * std::hypot(m.a, m.b), hh = radius * std::hypot(m.c, m.d);
            const double tol = 1e-8 * (1 + hw + hh);  // sampling misses the extremes by O(Δt²)
            // Signed so that "outside" is positive: left, top, right, bottom.
            const double box[4] = {-b.left, b.top, b.right, -b.bottom}, seen[4] = {-lo_x, hi_y, hi_x, -lo_y};
            const double closed[4] = {hw - c.x, hh + c.y, hw + c.x, hh - c.y};  // half extents are the row lengths
            for (int i = 0; i < 4; ++i) {
                EXPECT_GE(box[i], seen[i] - 1e-12) << m.a << ' ' << i;  // contains every sample
                EXPECT_LE(box[i], seen[i] + tol) << m.a << ' ' << i;    // and no more
                EXPECT_NEAR(box[i], closed[i], 1e-12 * (1 + hw + hh)) << m.a << ' ' << i;
            }
        }
    }
}

TEST(Ellipses, BBoxWorkedExamples) {
    const BoundsT<double> b = GetTransformedCircleBBox(IdentityMatrix(), 2.0, {5, 5});
    EXPECT_TRUE(b.left == 3 && b.top == 7 && b.right == 7 && b.bottom == 3);
    const BoundsT<double> s = GetTransformedCircleBBox({2, 0, 100, 0, 1, 100}, 1.0, {0, 0});  // no translation
    EXPECT_TRUE(s.left == -2 && s.top == 1 && s.right == 2 && s.bottom == -1);
}

TEST(Ellipses, AxisLengthsAreTheSingularValues) {
    const struct {
        MATRIX m;
        double major, minor;
    } cases[] = {{{3, 0, 0, 0, 2, 0}, 3, 2},
                 {{2, 0, 0, 0, 3, 0}, 3, 2},
                 {{-3, 0, 5, 0, 2, 5}, 3, 2},
                 {ConstructScaledRotationMatrix(2, 2, Pi / 6), 2, 2}};
    for (const auto& c : cases) {
        double major = 0, minor = 0;
        GetTransformedCircleAxisLengths(c.m, major, minor);
        EXPECT_NEAR(major, c.major, 1e-14);
        EXPECT_NEAR(minor, c.minor, 1e-14);
    }
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-3.0, 3.0);
    for (int i = 0; i < 500; ++i) {
        const MATRIX m{u(rng), u(rng), u(rng), u(rng), u(rng), u(rng)};
        if (std::fabs(m.a * m.d - m.b * m.c) < 0.1) continue;  // keep it well conditioned
        long double s1, s2;
        SingularValues(m, s1, s2);
        double major = 0, minor = 0;
        GetTransformedCircleAxisLengths(m, major, minor);
        ASSERT_NEAR(major, double(s1), 1e-9 * double(s1)) << i;
        ASSERT_NEAR(minor, double(s2), 1e-9 * double(s1)) << i;
    }
}

TEST(Ellipses, AxesAreTheExtremesOfTheSampledEllipse) {
    for (const MATRIX& m : TestMatrices()) {
        const double det = m.a * m.d - m.b * m.c;
        if (std::fabs(det) < 1e-3) continue;
        Vector2d major{}, minor{};
        GetTransformedCircleAxes(m, major, minor);
        double l1 = 0, l2 = 0;
        GetTransformedCircleAxisLengths(m, l1, l2);
        EXPECT_NEAR(Magnitude(major), l1, 1e-12 * l1);
        EXPECT_NEAR(Magnitude(minor), l2, 1e-12 * l1);
        EXPECT_NEAR(Dot(major, minor), 0.0, 1e-12 * l1 * l1);
        EXPECT_GT(Cross(major, minor), 0.0);  // minor is major turned a quarter counter-clockwise

        // Both vectors lie on the ellipse: their pre-images are unit vectors.
        const MATRIX inv{m.d / det, -m.b / det, 0, -m.c / det, m.a / det, 0};
        EXPECT_NEAR(Magnitude(inv(major)), 1.0, 1e-12);
        EXPECT_NEAR(Magnitude(inv(minor)), 1.0, 1e-12);
        // And no sample lies farther than major or nearer than minor.
        double far = 0, near = 1e300;
        for (const Vector2d& v : SampleEllipse(m)) far = std::max(far, Magnitude(v)), near = std::min(near, Magnitude(v));
        EXPECT_GE(Magnitude(major), far - 1e-12 * l1);
        EXPECT_LE(Magnitude(minor), near + 1e-12 * l1);
    }
}

TEST(Ellipses, AxesWorkedExamplesAndFallBack) {
    Vector2d major{}, minor{};
    GetTransformedCircleAxes({1, 0, 0, 0, 2, 0}, major, minor);
    ExpectVec(major, 0, 2, 1e-15);
    ExpectVec(minor, -1, 0, 1e-15);
    // A major axis shorter than √DBL_EPSILON takes the fall-back minor = (L2, major.x).
    GetTransformedCircleAxes({2e-9, 0, 0, 0, 1e-9, 0}, major, minor);
    ExpectVec(major, 2e-9, 0, 1e-24);
    ExpectVec(minor, 1e-9, 2e-9, 1e-24);
    GetTransformedCircleAxes({1e-9, 0, 0, 0, 1e-9, 0}, major, minor);
    EXPECT_NEAR(minor.x, 1e-9, 1e-24);
    EXPECT_EQ(minor.y, major.x);
}

TEST(Ellipses, NormalOnTransformedCircle) {
    ExpectVec(GetNormalOnTransformedCircle(IdentityMatrix(), {0, 1}), 0, 1);
    ExpectVec(GetNormalOnTransformedCircle({-1, 0, 0, 0, 1, 0}, {1, 0}), 1, 0);
    // Any similarity without translation, mirrored or not, gives back p: the
    // radial direction of the circle at p.
    for (double ang : {0.0, 0.7, 2.9, -1.3})
        for (double s : {0.5, -0.5, 3.0, -3.0}) {
            const Point2d p{std::cos(ang + 1), std::sin(ang + 1)};
            ExpectVec(GetNormalOnTransformedCircle(ConstructScaledRotationMatrix(s, std::fabs(s), ang), p), p.x, p.y,
                      1e-14);
        }
    // With a translation t, a rotation R scaled by s gives p + Rᵀt/s.
    ExpectVec(GetNormalOnTransformedCircle({0, -2, 4, 2, 0, 6}, {1, 0}), 4, -2);
    // Singular: the image point itself, negated for a negative determinant.
    ExpectVec(GetNormalOnTransformedCircle({0, 0, 3, 0, 0, 4}, {7, 7}), 3, 4);
    ExpectVec(GetNormalOnTransformedCircle({-1e-20, 0, 1, 0, 1, 2}, {0, 0}), -1, -2);
}

TEST(Ellipses, PointWithGivenNormal) {
    ExpectVec(FindPointOnEllipseThatHasNormal({1, 0}, 4, 1), -1, 0);
    for (double rx : {0.5, 4.0})
        for (double ry : {1.0, 7.5})
            for (double a = 0.01; a < TwoPi; a += 0.13) {
                const Vector2d n = Radians::AngleToVector(a, 2.5);
                const Point2d u = FindPointOnEllipseThatHasNormal(n, rx, ry);
                ASSERT_NEAR(Magnitude(u), 1.0, 1e-14);
                // Outward normal of (rx·cos t, ry·sin t) is the gradient (cos t/rx, sin t/ry).
                const Vector2d g{u.x / rx, u.y / ry};
                ASSERT_NEAR(Cross(g, n) / (Magnitude(g) * Magnitude(n)), 0.0, 1e-14) << a;
                ASSERT_LT(Dot(g, n), 0.0) << a;
            }
}
