// Shared value types: the one rule for storing doubles into int32 fields,
// point/vector arithmetic, record layouts and the empty and unit rectangles.

#include <type_traits>

#include "../test_util.h"

using namespace QorMath;
using namespace qtest;

namespace {
constexpr int32_t kMax = INT32_MAX, kMin = INT32_MIN;
// Layouts other records and callers rely on: field order and no padding.
static_assert(sizeof(MATRIX) == 48 && offsetof(MATRIX, tx) == 16 && offsetof(MATRIX, c) == 24 && offsetof(MATRIX, ty) == 40);
static_assert(offsetof(AFF_TRANSFORM, origin) == 32 && offsetof(BoundsT<double>, bottom) == 24 && sizeof(Point2d) == 16);
static_assert(sizeof(tagRECT) == 16 && offsetof(tagRECT, top) == 4 && sizeof(tagPOINT) == 8 && sizeof(tagSIZE) == 8);
static_assert(!std::is_same_v<Point2d, Vector2d> && std::is_same_v<decltype(Point2d{} - Point2d{}), Vector2d>);
}  // namespace

TEST(IntConversion, RoundHalfAwayFromZeroThenTruncate) {
    const struct { double v; int32_t round, trunc; } cases[] = {  // {input, RoundToInt, TruncateToInt}
        {0.0, 0, 0}, {-0.0, 0, 0}, {0.5, 1, 0}, {-0.5, -1, 0}, {1.9, 2, 1}, {-1.9, -2, -1}, {2.5, 3, 2}, {-2.5, -3, -2},
        {-0.4, 0, 0}, {-DBL_TRUE_MIN, 0, 0}, {-1e6 - 0.5, -1000001, -1000000},
        // The double below 0.5, plus 0.5, rounds to 1.0: add-then-truncate gives 1, not nearest-integer's 0.
        {0.49999999999999994, 1, 0}, {-0.49999999999999994, -1, 0},
        // Range is judged on the rounded (or truncated) value, not on the input.
        {2147483647.4, kMax, kMax}, {2147483647.5, kMin, kMax}, {2147483647.99, kMin, kMax}, {2147483648.0, kMin, kMin},
        {-2147483647.4, -2147483647, -2147483647}, {-2147483647.5, kMin, -2147483647}, {-2147483648.4, kMin, kMin},
        {-2147483648.99, kMin, kMin}, {-2147483649.0, kMin, kMin}, {1e19, kMin, kMin}, {-DBL_MAX, kMin, kMin},
        {kInf, kMin, kMin}, {-kInf, kMin, kMin}, {kNaN, kMin, kMin},
    };
    for (const auto& c : cases)
        EXPECT_TRUE(RoundToInt(c.v) == c.round && TruncateToInt(c.v) == c.trunc) << std::hexfloat << c.v;
    EXPECT_EQ(IntegerIndefinite, kMin);
}

TEST(Vector2d, AffineArithmeticAndProducts) {
    const Point2d p{3, -1}, q{1, 2};
    const Vector2d v{0.5, 4};
    EXPECT_TRUE(p - q == (Vector2d{2, -3}) && p + v == (Point2d{3.5, 3}) && v + p == p + v && p - v == (Point2d{2.5, -5}));
    EXPECT_TRUE(-v == (Vector2d{-0.5, -4}) && 2.0 * v == (Vector2d{1, 8}) && v / 0.5 == v * 2.0 && Dot(v, q) == 8.5);
    EXPECT_TRUE(Cross(Vector2d{1, 0}, Vector2d{0, 1}) == 1 && Cross(v, v) == 0);  // counter-clockwise is positive
    EXPECT_TRUE(MagnitudeSqrd(v) == 16.25 && Magnitude(Point2d{-3, 4}) == 5 && AsPoint(AsVector(p)) == p);
}

TEST(EmptyValues, EmptyRectsAndTheUnitSquare) {
    const tagRECT e = GetEmptyRect();
    tagRECT r{1, 2, 3, 4};
    BoundsT<double> b{1, 2, 3, 4};
    InitializeEmpty(r);
    InitializeEmpty(b);  // the int32 extremes as finite doubles, not infinities
    EXPECT_TRUE(e.left == kMax && e.top == kMin && e.right == kMin && e.bottom == kMax && SameBits(r, e));
    EXPECT_TRUE(b.left == 2147483647.0 && b.top == -2147483648.0 && b.right == -2147483648.0 && b.bottom == 2147483647.0);
    const BoundsT<double>& u = IdentityBounds();
    EXPECT_TRUE(&u == &IdentityBounds() && u.left == 0 && u.top == 1 && u.right == 1 && u.bottom == 0);
}
