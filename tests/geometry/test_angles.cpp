#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>

using namespace QorMath;

namespace {

// Direction of (x, y) in [0, 2π) built quadrant by quadrant from atan of a
// non-negative ratio, without atan2.
double QuadrantAngle(double x, double y) {
    if (x == 0 && y == 0) return 0;
    if (x > 0 && y >= 0) return std::atan(y / x);
    if (x <= 0 && y > 0) return Pi / 2 + std::atan(-x / y);
    if (x < 0 && y <= 0) return Pi + std::atan(y / x);
    return 3 * Pi / 2 + std::atan(x / -y);
}

double CircularDistance(double a, double b) {
    const double d = std::fabs(std::fmod(a - b, TwoPi));
    return std::min(d, TwoPi - d);
}

template <int K>
void ExpectNear(const vector2dT<double, K>& p, double x, double y, double tol = 1e-15) {
    EXPECT_NEAR(p.x, x, tol);
    EXPECT_NEAR(p.y, y, tol);
}

}  // namespace

TEST(Angles, VectorToAngle) {
    EXPECT_DOUBLE_EQ(Radians::VectorToAngle({0, -1}), 3 * Pi / 2);
    EXPECT_EQ(Radians::VectorToAngle({0, 0}), 0.0);
    EXPECT_EQ(Radians::VectorToAngle({-1, -0.0}), Pi);  // atan2 gives -π here
    EXPECT_EQ(Radians::VectorToAngle({-1, 0.0}), Pi);
    // Within half a unit below the full turn, rounding after the range reduction
    // gives the full turn itself.
    EXPECT_EQ(TURNANGLE::VectorToAngle({1, -1e-9}), TurnAngleFullTurn);
    EXPECT_EQ(TURNANGLE::VectorToAngle({1, -1e-7}), 359999994);

    const int n = 7200;
    for (double radius : {1e-3, 1.0, 1e6}) {
        for (int i = 0; i < n; ++i) {
            const double t = (i + 0.37) * TwoPi / n;
            const Vector2d v{radius * std::cos(t), radius * std::sin(t)};
            const double ref = QuadrantAngle(v.x, v.y), r = Radians::VectorToAngle(v);
            ASSERT_TRUE(r >= 0 && r < TwoPi) << t;
            ASSERT_NEAR(r, ref, 1e-13) << t;
            ASSERT_NEAR(Degrees::VectorToAngle(v), ref * DegreesPerRadian, 1e-10) << t;
            const int32_t ta = TURNANGLE::VectorToAngle(v);
            ASSERT_TRUE(ta >= 0 && ta <= TurnAngleFullTurn) << t;
            ASSERT_LE(std::fabs(ta - ref * DegreesPerRadian * 1e6), 0.5001) << t;
        }
    }
}

TEST(Angles, AngleToVectorAndRotatePoint) {
    for (double t = -7.0; t < 7.0; t += 0.173) {
        const Vector2d u = Radians::AngleToVector(t);
        EXPECT_NEAR(Magnitude(u), 1.0, 1e-15);
        EXPECT_LT(CircularDistance(Radians::VectorToAngle(u), t), 1e-14);
        ExpectNear(Radians::AngleToVector(t, -2.5), -2.5 * u.x, -2.5 * u.y);
        const Point2d c{3, -2}, p{10, 5}, r = Radians::RotatePoint(p, t, c);
        EXPECT_NEAR(Magnitude(r - c), Magnitude(p - c), 1e-13);
        EXPECT_LT(CircularDistance(Radians::GetAngle(p - c, r - c), t), 1e-7);
    }
    ExpectNear(Degrees::AngleToVector(90.0), 0, 1);
    ExpectNear(Degrees::AngleToVector(30.0, 2.0), std::sqrt(3.0), 1);
    ExpectNear(Radians::RotatePoint({2, 1}, Pi / 2, {1, 1}), 1, 2);
    ExpectNear(Degrees::RotatePoint({2, 1}, 90.0, {1, 1}), 1, 2);
}

TEST(Angles, NormalizeAngle) {
    EXPECT_DOUBLE_EQ(Radians::NormalizeAngle(-Pi / 2), 3 * Pi / 2);
    EXPECT_EQ(Radians::NormalizeAngle(TwoPi), 0.0);
    EXPECT_NEAR(Radians::NormalizeAngle(-20.0), -20.0 + 4 * TwoPi, 1e-14);
    for (auto [in, out] : {std::pair{-90.0, 270.0}, {720.0, 0.0}, {365.5, 5.5}, {-720.25, 359.75}})
        EXPECT_EQ(Degrees::NormalizeAngle(in), out) << in;
    for (auto [in, out] : {std::pair<int32_t, int32_t>{-90000000, 270000000}, {720000000, 0}, {-1, 359999999},
                           {360000001, 1}, {INT32_MAX, 347483647}, {INT32_MIN, 12516352}})
        EXPECT_EQ(TURNANGLE::NormalizeAngle(in), out) << in;
    for (int64_t v = INT32_MIN; v <= INT32_MAX; v += 16777259) {  // congruent and in range everywhere
        const int32_t r = TURNANGLE::NormalizeAngle(static_cast<int32_t>(v));
        ASSERT_TRUE(r >= 0 && r < TurnAngleFullTurn) << v;
        ASSERT_EQ((r - v) % TurnAngleFullTurn, 0) << v;
    }
}

TEST(Angles, NormalizeFineAngleKeepsBothHalfTurns) {
    for (auto [in, out] : {std::pair{3 * Pi, Pi}, {-3 * Pi, -Pi}, {Pi, Pi}, {-Pi, -Pi}, {0.5, 0.5}})
        EXPECT_EQ(Radians::NormalizeFineAngle(in), out) << in;
    EXPECT_DOUBLE_EQ(Radians::NormalizeFineAngle(3 * Pi / 2), -Pi / 2);
    EXPECT_DOUBLE_EQ(Radians::NormalizeFineAngle(-3 * Pi / 2), Pi / 2);
    for (double x = -40.0; x <= 40.0; x += 0.0917) {
        const double r = Radians::NormalizeFineAngle(x), turns = (x - r) / TwoPi;
        ASSERT_TRUE(r >= -Pi && r <= Pi) << x;
        ASSERT_NEAR(turns, std::round(turns), 1e-13) << x;
    }
}

TEST(Angles, GetAngleAndFineAngle) {
    const Vector2d ex{1, 0};
    EXPECT_DOUBLE_EQ(Radians::GetAngle(ex, {0, -1}), 3 * Pi / 2);
    EXPECT_DOUBLE_EQ(Radians::GetFineAngle(ex, {0, -1}), -Pi / 2);
    EXPECT_EQ(Radians::GetAngle(ex, {-1, 0}), Pi);
    EXPECT_EQ(Radians::GetFineAngle(ex, {-1, 0}), Pi);
    EXPECT_EQ(Degrees::GetFineAngle(ex, {-1, 0}), 180.0);
    EXPECT_EQ(TURNANGLE::GetFineAngle({0, 0}, {1, 0}, {-1, 0}), 180000000);
    EXPECT_EQ(Radians::GetAngle(ex, {2, 0}), 0.0);
    EXPECT_EQ(Radians::GetAngle(ex, {0, 0}), 0.0);
    EXPECT_EQ(Radians::GetAngle(Vector2d{NAN, 0}, ex), 0.0);
    EXPECT_EQ(Radians::GetAngle(Point2d{1, 1}, Point2d{1, 1}, Point2d{3, 1}), 0.0);

    // Pairs of directions of different lengths: the counter-clockwise turn from
    // the first to the second, in every unit and both argument forms.
    const Point2d vertex{-3.5, 12.25};
    for (double a = 0.05; a < 7.0; a += 0.41) {
        for (double b = -6.0; b < 6.5; b += 0.29) {
            const Vector2d u = Radians::AngleToVector(a, 0.75), w = Radians::AngleToVector(b, 40.0);
            const double g = Radians::GetAngle(u, w), f = Radians::GetFineAngle(u, w);
            ASSERT_TRUE(g >= 0 && g <= TwoPi && f > -Pi && f <= Pi) << a << ' ' << b;
            ASSERT_LT(CircularDistance(g, b - a), 1e-7) << a << ' ' << b;
            ASSERT_LT(CircularDistance(f, b - a), 1e-7) << a << ' ' << b;
            ASSERT_DOUBLE_EQ(Degrees::GetAngle(u, w), g * DegreesPerRadian);
            ASSERT_DOUBLE_EQ(Degrees::GetFineAngle(u, w), f * DegreesPerRadian);

            const Point2d p1 = vertex + u, p2 = vertex + w;
            const double gv = Radians::GetAngle(vertex, p1, p2), fv = gv > Pi ? gv - TwoPi : gv;
            ASSERT_LT(CircularDistance(gv, b - a), 1e-7);
            ASSERT_DOUBLE_EQ(Degrees::GetAngle(vertex, p1, p2), gv * DegreesPerRadian);
            ASSERT_LE(std::fabs(TURNANGLE::GetAngle(vertex, p1, p2) - gv * DegreesPerRadian * 1e6), 0.5001);
            ASSERT_LE(std::fabs(TURNANGLE::GetFineAngle(vertex, p1, p2) - fv * DegreesPerRadian * 1e6), 0.5001);
        }
    }
}

TEST(Angles, RotatePoints) {
    // An angle within DBL_EPSILON of zero returns at once. A far-off centre makes
    // any rotation pass visible: its translation alone overflows int32.
    const Point2d far{0, 1e300};
    tagPOINT pts[6] = {{10, 0}, {-4, 6}};
    for (double t : {1e-17, DBL_EPSILON, -DBL_EPSILON}) Radians::RotatePoints(pts, 2, t, far);
    Degrees::RotatePoints(pts, 2, 1e-17, far);
    EXPECT_TRUE(pts[0].x == 10 && pts[0].y == 0 && pts[1].x == -4 && pts[1].y == 6);
    tagPOINT moved[1] = {{10, 0}};
    Radians::RotatePoints(moved, 1, 1e-15, far);
    EXPECT_EQ(moved[0].x, IntegerIndefinite);
    Radians::RotatePoints(pts, 0, 1.0, {0, 0});
    EXPECT_TRUE(pts[0].x == 10 && pts[0].y == 0);
    Radians::RotatePoints(pts, 2, Pi / 2, {0, 0});
    EXPECT_TRUE(pts[0].x == 0 && pts[0].y == 10 && pts[1].x == -6 && pts[1].y == -4);

    // Against each point rotated in double and rounded half away from zero.
    const tagPOINT orig[6] = {{0, 0}, {100, -20}, {-37, 55}, {1000, 1000}, {-2, 3}, {13, -8}};
    const Point2d centre{13.25, -7.5};
    for (double t : {0.3, -1.1, 2.5, 4.0}) {
        std::copy(orig, orig + 6, pts);
        Radians::RotatePoints(pts, 6, t, centre);
        for (int i = 0; i < 6; ++i) {
            const Point2d r = Radians::RotatePoint({double(orig[i].x), double(orig[i].y)}, t, centre);
            EXPECT_TRUE(pts[i].x == RoundToInt(r.x) && pts[i].y == RoundToInt(r.y)) << t << ' ' << i;
        }
    }
}

TEST(Angles, Constrain) {
    EXPECT_EQ(Radians::Constrain(0.3, 4, 0.0), 0.0);
    EXPECT_DOUBLE_EQ(Radians::Constrain(1.0, 4, 0.0), Pi / 2);
    EXPECT_DOUBLE_EQ(Radians::Constrain(1.0, -4, 0.0), Pi / 2);  // negative steps: same divisions
    EXPECT_EQ(Radians::Constrain(1.234, 0, 9.0), 1.234);
    EXPECT_DOUBLE_EQ(Radians::Constrain(1.0, 4, 0.5), 0.5);
    EXPECT_DOUBLE_EQ(Radians::Constrain(2.2, 4, 0.5), Pi / 2 + 0.5);
    for (int32_t steps : {-12, -3, 1, 3, 8, 24}) {
        const double div = TwoPi / std::abs(steps);
        for (double a = -7.0; a < 7.0; a += 0.123) {
            const double r = Radians::Constrain(a, steps, 0.4), k = (r - 0.4) / div;
            ASSERT_NEAR(k, std::round(k), 1e-12) << steps << ' ' << a;
            ASSERT_LE(std::fabs(r - a), div / 2 + 1e-12) << steps << ' ' << a;
        }
    }
}

TEST(Angles, GetQuadrantBoundaries) {
    const double q3 = 4.71238898038469;  // 3π/2 as the boundary constant
    auto below = [](double x) { return std::nextafter(x, 0.0); };
    const std::pair<double, int> cases[] = {{0.0, 0},        {below(Pi / 2), 0}, {Pi / 2, 1}, {below(Pi), 1},
                                            {Pi, 2},         {below(q3), 2},     {q3, 3},     {below(TwoPi), 3},
                                            {TwoPi, 0},      {-0.1, 3},          {-Pi / 2, 3}, {-Pi, 2},
                                            {7.0, 0},        {-20.0, 3}};
    for (auto [angle, q] : cases) EXPECT_EQ(static_cast<int>(Radians::GetQuadrant(angle)), q) << angle;
    for (double a = -30.0; a < 30.0; a += 0.0731) {
        const double r = std::fmod(a, TwoPi) + (a < 0 ? TwoPi : 0);
        ASSERT_EQ(static_cast<int>(Radians::GetQuadrant(a)), static_cast<int>(r / (Pi / 2))) << a;
    }
}

TEST(Angles, GetRotatedSizePairsEachProjectionAndRoundsUp) {
    // 0° exchanges the components; cos 90° is not exactly 0, so at 90° each tiny
    // term still rounds up to 1; cos 60° · 20 = 10.000000000000002 rounds up to 11.
    const struct { int32_t cx, cy; double deg; int32_t rx, ry; } cases[] = {
        {100, 50, 0, 50, 100},    {100, 50, 90, 101, 51},  {100, 50, -90, 101, 51}, {100, 50, 180, 51, 101},
        {100, 50, 270, 101, 51},  {100, 50, 45, 107, 107}, {100, 50, 30, 94, 112},  {10, 20, 60, 20, 24},
        {0, 0, 90, 0, 0},         {0, 7, 0, 7, 0}};
    for (const auto& c : cases) {
        const tagSIZE s = Degrees::GetRotatedSize({c.cx, c.cy}, c.deg);
        EXPECT_TRUE(s.cx == c.rx && s.cy == c.ry) << c.cx << 'x' << c.cy << " at " << c.deg << ": " << s.cx << ',' << s.cy;
    }
}
