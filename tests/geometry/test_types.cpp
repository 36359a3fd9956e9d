// Shared value types: the one rule for storing doubles into int32 fields,
// point/vector arithmetic, record layouts and the empty and unit rectangles.

#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

using namespace QorMath;

namespace {
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
constexpr int32_t kMin = std::numeric_limits<int32_t>::min();

// Layouts other records and callers rely on: field order and no padding.
static_assert(sizeof(Point2d) == 2 * sizeof(double) && sizeof(vector2dT<float, 0>) == 2 * sizeof(float));
static_assert(sizeof(MATRIX) == 6 * sizeof(double) && offsetof(MATRIX, tx) == 2 * sizeof(double) &&
              offsetof(MATRIX, c) == 3 * sizeof(double) && offsetof(MATRIX, ty) == 5 * sizeof(double));
static_assert(offsetof(AFF_TRANSFORM, rotation) == 3 * sizeof(double) &&
              offsetof(AFF_TRANSFORM, origin) == 4 * sizeof(double));
static_assert(offsetof(BoundsT<double>, top) == sizeof(double) && offsetof(BoundsT<double>, bottom) == 3 * sizeof(double));
static_assert(sizeof(tagRECT) == 16 && offsetof(tagRECT, top) == 4 && sizeof(tagPOINT) == 8 && sizeof(tagSIZE) == 8);
static_assert(static_cast<int>(MapMode::Fit) == 1 && static_cast<int>(MapMode::Fill) == 2 &&
              static_cast<int>(AnchorLocation::Center) == 4 && static_cast<int>(AnchorLocation::BottomRight) == 8 &&
              static_cast<int>(Side::SideRight) == 2 && static_cast<int>(Quadrant::Fourth) == 3);
}  // namespace

TEST(RoundToInt, HalfAwayFromZeroThenTruncation) {
    const struct { double v; int32_t want; } cases[] = {
        {0.0, 0}, {-0.0, 0}, {0.5, 1}, {-0.5, -1}, {1.49, 1}, {-1.49, -1}, {2.5, 3}, {-2.5, -3},
        {-0.4, 0}, {0.4, 0}, {1e-300, 0}, {-1e-300, 0}, {1e6 + 0.5, 1000001}, {-1e6 - 0.5, -1000001},
        // The double just below 0.5 plus 0.5 rounds to 1.0, so the add-then-truncate rule gives 1
        // where a correctly rounded nearest-integer would give 0.
        {0.49999999999999994, 1}, {-0.49999999999999994, -1},
        // Around the int32 ends: the result is judged after rounding, not before.
        {2147483646.5, kMax}, {2147483647.0, kMax}, {2147483647.4, kMax},
        {2147483647.5, kMin},  // rounds to 2^31: out of range
        {-2147483647.5, kMin}, {-2147483648.0, kMin}, {-2147483648.4, kMin},  // in range, genuinely -2^31
        {-2147483647.4, -2147483647},
        {3e9, kMin}, {-3e9, kMin}, {DBL_MAX, kMin}, {-DBL_MAX, kMin}, {kInf, kMin}, {-kInf, kMin}, {kNaN, kMin},
    };
    for (const auto& c : cases) EXPECT_EQ(RoundToInt(c.v), c.want) << std::hexfloat << c.v;
}

TEST(RoundToInt, TruncateToIntGivesIndefiniteOutsideInt32) {
    const struct { double v; int32_t want; } cases[] = {
        {1.9, 1}, {-1.9, -1}, {-0.0, 0}, {DBL_MIN, 0}, {-DBL_TRUE_MIN, 0},
        {2147483647.99, kMax}, {2147483648.0, kMin}, {-2147483647.99, -2147483647},
        {-2147483648.99, kMin}, {-2147483649.0, kMin}, {1e19, kMin}, {kInf, kMin}, {-kInf, kMin}, {kNaN, kMin},
    };
    for (const auto& c : cases) EXPECT_EQ(TruncateToInt(c.v), c.want) << std::hexfloat << c.v;
    EXPECT_EQ(IntegerIndefinite, kMin);
}

TEST(Vector2d, PointsAndVectorsStayApart) {
    const Point2d p{3.0, -1.0}, q{1.0, 2.0};
    const Vector2d v{0.5, 4.0};
    static_assert(!std::is_same_v<Point2d, Vector2d>);
    static_assert(std::is_same_v<decltype(p - q), Vector2d> && std::is_same_v<decltype(v - v), Vector2d>);
    static_assert(std::is_same_v<decltype(p + v), Point2d> && std::is_same_v<decltype(v + p), Point2d>);
    static_assert(std::is_same_v<decltype(p - v), Point2d> && std::is_same_v<decltype(-v), Vector2d>);
    EXPECT_TRUE(p - q == (Vector2d{2.0, -3.0}) && q + (p - q) == p);
    EXPECT_TRUE(p + v == (Point2d{3.5, 3.0}) && v + p == p + v && p - v == (Point2d{2.5, -5.0}));
    EXPECT_TRUE(-v == (Vector2d{-0.5, -4.0}));
    EXPECT_TRUE(v * 2.0 == (Vector2d{1.0, 8.0}) && 2.0 * v == v * 2.0 && v / 0.5 == v * 2.0);
    Point2d r = p;
    EXPECT_TRUE((r += v) == p + v && (r -= v) == p);
    const vector2dT<float, 1> fp{1.5f, 2.0f};
    EXPECT_TRUE((fp + vector2dT<float, 0>{0.5f, -1.0f}) == (vector2dT<float, 1>{2.0f, 1.0f}));
}

TEST(Vector2d, ComparisonProductsAndLengths) {
    const Point2d nan{kNaN, 0.0};
    EXPECT_TRUE(!(nan == nan) && nan != nan);
    EXPECT_TRUE((Point2d{-0.0, 0.0}) == (Point2d{0.0, -0.0}) && (Point2d{1.0, 2.0}) != (Point2d{1.0, 2.5}));
    EXPECT_EQ(Dot(Vector2d{1, 2}, Point2d{3, 4}), 11.0);
    EXPECT_EQ(Cross(Vector2d{1, 0}, Vector2d{0, 1}), 1.0);  // counter-clockwise turn is positive
    EXPECT_EQ(Cross(Vector2d{0, 1}, Vector2d{1, 0}), -1.0);
    EXPECT_EQ(MagnitudeSqrd(Vector2d{3, -4}), 25.0);
    EXPECT_EQ(Magnitude(Point2d{-3, 4}), 5.0);
    EXPECT_TRUE(AsPoint(AsVector(Point2d{7, 8})) == (Point2d{7, 8}));
}

TEST(EmptyValues, RectAndBoundsHoldTheInt32Extremes) {
    const tagRECT e = GetEmptyRect();
    EXPECT_TRUE(e.left == kMax && e.top == kMin && e.right == kMin && e.bottom == kMax);
    tagRECT r{1, 2, 3, 4};
    InitializeEmpty(r);
    EXPECT_EQ(std::memcmp(&r, &e, sizeof r), 0);
    // Finite doubles, not infinities: the int32 extremes written as doubles.
    BoundsT<double> b{1, 2, 3, 4};
    InitializeEmpty(b);
    EXPECT_TRUE(b.left == 2147483647.0 && b.top == -2147483648.0 && b.right == -2147483648.0 && b.bottom == 2147483647.0);
}

TEST(EmptyValues, IdentityBoundsIsOneSharedUnitSquare) {
    const BoundsT<double>& u = IdentityBounds();
    EXPECT_EQ(&u, &IdentityBounds());
    EXPECT_TRUE(u.left == 0.0 && u.top == 1.0 && u.right == 1.0 && u.bottom == 0.0);
}
