#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>

using namespace QorMath;

static double CircularDistance(double a, double b) { return std::fabs(std::remainder(a - b, TwoPi)); }

TEST(Angles, WorkedExamples) {
    const Vector2d ex{1, 0};
    EXPECT_DOUBLE_EQ(Radians::VectorToAngle({0, -1}), 3 * Pi / 2);
    EXPECT_EQ(Radians::VectorToAngle({0, 0}), 0.0);
    EXPECT_EQ(Radians::VectorToAngle({-1, -0.0}), Pi);  // atan2 gives -π here
    EXPECT_EQ(TURNANGLE::VectorToAngle({1, -1e-9}), TurnAngleFullTurn);  // rounds up to the full turn
    EXPECT_DOUBLE_EQ(Radians::GetAngle(ex, {0, -1}), 3 * Pi / 2);
    EXPECT_DOUBLE_EQ(Radians::GetFineAngle(ex, {0, -1}), -Pi / 2);
    EXPECT_TRUE(Radians::GetAngle(ex, {-1, 0}) == Pi && Radians::GetFineAngle(ex, {-1, 0}) == Pi);
    EXPECT_EQ(TURNANGLE::GetFineAngle({0, 0}, {1, 0}, {-1, 0}), 180000000);
    EXPECT_EQ(Radians::GetAngle(ex, {0, 0}), 0.0);
}

TEST(Angles, Normalize) {
    for (auto [in, out] : {std::pair{3 * Pi, Pi}, {-3 * Pi, -Pi}, {Pi, Pi}, {-Pi, -Pi}})
        EXPECT_EQ(Radians::NormalizeFineAngle(in), out) << in;  // both half turns are kept
    EXPECT_TRUE(Radians::NormalizeAngle(TwoPi) == 0.0 && Radians::NormalizeAngle(-Pi / 2) == 3 * Pi / 2);
    EXPECT_DOUBLE_EQ(Radians::NormalizeFineAngle(-3 * Pi / 2), Pi / 2);
    for (auto [in, out] : {std::pair{-90.0, 270.0}, {720.0, 0.0}, {-720.25, 359.75}})
        EXPECT_EQ(Degrees::NormalizeAngle(in), out) << in;
    for (auto [in, out] : {std::pair<int32_t, int32_t>{-90000000, 270000000}, {720000000, 0}, {-1, 359999999},
                           {INT32_MAX, 347483647}, {INT32_MIN, 12516352}})
        EXPECT_EQ(TURNANGLE::NormalizeAngle(in), out) << in;
}

// Directions at known angles from std::cos and std::sin; the counter-clockwise
// turn from the first to the second in every unit and argument form; rotating
// the first about the vertex by that turn lands on the second's direction.
TEST(Angles, DirectionsTurnsAndRotations) {
    const Point2d vertex{-3.5, 12.25};
    auto eq = [](double x, double y) { return std::fabs(x - y) <= 1e-13 * std::fabs(y); };
    for (double a = 0.05; a < 7.0; a += 0.41)
        for (double b = -6.0; b < 6.5; b += 0.029) {
            const Vector2d u{0.75 * std::cos(a), 0.75 * std::sin(a)}, w{40 * std::cos(b), 40 * std::sin(b)};
            const double r = Radians::VectorToAngle(w), rd = r * DegreesPerRadian, bd = b * DegreesPerRadian;
            ASSERT_TRUE(r >= 0 && r < TwoPi && CircularDistance(r, b) < 1e-13) << b;
            ASSERT_TRUE(eq(Degrees::VectorToAngle(w), rd) && std::fabs(TURNANGLE::VectorToAngle(w) - rd * 1e6) < 0.51);
            for (const Vector2d& x : {Radians::AngleToVector(b, 40.0), Radians::AngleToVector(b) * 40.0,
                                      Degrees::AngleToVector(bd, 40.0), Degrees::AngleToVector(bd) * 40.0})
                ASSERT_LT(Magnitude(x - w), 1e-12) << b;

            const Point2d p1 = vertex + u, p2 = vertex + w;
            const double g = Radians::GetAngle(u, w), f = Radians::GetFineAngle(u, w);
            const double gv = Radians::GetAngle(vertex, p1, p2), fv = gv > Pi ? gv - TwoPi : gv;
            ASSERT_TRUE(g >= 0 && g <= TwoPi && f > -Pi && f <= Pi) << a << ' ' << b;
            ASSERT_TRUE(CircularDistance(g, b - a) < 1e-7 && CircularDistance(gv, b - a) < 1e-7) << a << ' ' << b;
            ASSERT_LT(CircularDistance(f, g), 1e-12) << a << ' ' << b;
            ASSERT_TRUE(eq(Degrees::GetAngle(u, w), g * DegreesPerRadian) &&
                        eq(Degrees::GetFineAngle(u, w), f * DegreesPerRadian) &&
                        eq(Degrees::GetAngle(vertex, p1, p2), gv * DegreesPerRadian)) << a << ' ' << b;
            ASSERT_LE(std::fabs(TURNANGLE::GetAngle(vertex, p1, p2) - gv * DegreesPerRadian * 1e6), 0.5001);
            ASSERT_LE(std::fabs(TURNANGLE::GetFineAngle(vertex, p1, p2) - fv * DegreesPerRadian * 1e6), 0.5001);
            const Vector2d want = w * (0.75 / 40.0);
            ASSERT_LT(Magnitude(Radians::RotatePoint(p1, b - a, vertex) - vertex - want), 1e-13);
            ASSERT_LT(Magnitude(Degrees::RotatePoint(p1, (b - a) * DegreesPerRadian, vertex) - vertex - want), 1e-13);
        }
}

TEST(Angles, RotatePoints) {
    // An angle within DBL_EPSILON of zero returns at once. A far-off centre makes
    // any rotation pass visible: its translation alone overflows int32.
    tagPOINT pts[2] = {{10, 0}, {-4, 6}}, moved[1] = {{10, 0}};
    for (double t : {1e-17, DBL_EPSILON, -DBL_EPSILON}) Radians::RotatePoints(pts, 2, t, {0, 1e300});
    Radians::RotatePoints(moved, 1, 1e-15, {0, 1e300});
    EXPECT_TRUE(pts[0].x == 10 && pts[0].y == 0 && pts[1].x == -4 && pts[1].y == 6);
    EXPECT_EQ(moved[0].x, IntegerIndefinite);
    Degrees::RotatePoints(pts, 2, 90.0, {0, 0});
    EXPECT_TRUE(pts[0].x == 0 && pts[0].y == 10 && pts[1].x == -6 && pts[1].y == -4);
    // Images about (13.25, -7.5) from 40-digit arithmetic, rounded to nearest.
    for (auto [t, want] : {std::pair{2.5, std::array<int32_t, 6>{-49, 54, 16, -88, -1380, -224}},
                           {-1.1, {41, -90, 46, 66, 1359, -430}}}) {
        tagPOINT q[3] = {{100, -20}, {-37, 55}, {1000, 1000}};
        Radians::RotatePoints(q, 3, t, {13.25, -7.5});
        EXPECT_EQ((std::array<int32_t, 6>{q[0].x, q[0].y, q[1].x, q[1].y, q[2].x, q[2].y}), want) << t;
    }
}

TEST(Angles, ConstrainAndQuadrant) {
    EXPECT_TRUE(Radians::Constrain(0.3, 4, 0.0) == 0.0 && Radians::Constrain(1.234, 0, 9.0) == 1.234);
    EXPECT_DOUBLE_EQ(Radians::Constrain(1.0, 4, 0.0), Pi / 2);
    for (int32_t steps : {-12, -3, 1, 8, 24})  // negative steps: the same divisions
        for (double a = -7.0; a < 7.0; a += 0.123) {
            const double div = TwoPi / std::abs(steps), r = Radians::Constrain(a, steps, 0.4), k = (r - 0.4) / div;
            ASSERT_TRUE(std::fabs(k - std::round(k)) < 1e-12 && std::fabs(r - a) <= div / 2 + 1e-12) << steps << a;
        }
    const double q3 = 4.71238898038469;  // 3π/2 as the boundary constant
    auto below = [](double x) { return std::nextafter(x, 0.0); };
    for (auto [angle, q] : {std::pair{0.0, 0}, {below(Pi / 2), 0}, {Pi / 2, 1}, {Pi, 2}, {below(q3), 2}, {q3, 3},
                            {below(TwoPi), 3}, {TwoPi, 0}, {-0.1, 3}, {-Pi, 2}, {-20.0, 3}})
        EXPECT_EQ(static_cast<int>(Radians::GetQuadrant(angle)), q) << angle;
}

TEST(Angles, GetRotatedSizePairsEachProjectionAndRoundsUp) {
    // 0° exchanges the components; cos 90° is not exactly 0, so at 90° each tiny
    // term still rounds up to 1; cos 60° · 20 = 10.000000000000002 rounds up to 11.
    const struct { int32_t cx, cy; double deg; int32_t rx, ry; } cases[] = {
        {100, 50, 0, 50, 100}, {100, 50, 90, 101, 51}, {100, 50, 180, 51, 101}, {100, 50, 45, 107, 107},
        {100, 50, 30, 94, 112}, {10, 20, 60, 20, 24}, {0, 0, 90, 0, 0}};
    for (const auto& c : cases) {
        const tagSIZE s = Degrees::GetRotatedSize({c.cx, c.cy}, c.deg);
        EXPECT_TRUE(s.cx == c.rx && s.cy == c.ry) << c.cx << 'x' << c.cy << " at " << c.deg;
    }
}
