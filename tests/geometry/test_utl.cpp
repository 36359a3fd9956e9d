// The flat UTL interface: int32 angles in millionths of a degree, converted with
// the truncated factor 0.017453292519943 so that results match older callers bit
// for bit; every call applies its operation after the existing transform.

#include "../test_util.h"

using namespace QorMath;
using namespace qtest;

namespace {
using P = Point2d;
constexpr double kUtlDegree = 0.017453292519943;  // deliberately not π/180
const MATRIX kSample{1.25, -0.5, 7.0, 0.75, 2.0, -3.5};
const MATRIX kOdd{1.25, -0.0, kNaN, 0.75, 2, -3.5};  // -0.0 and NaN show any write

double UtlRadians(int32_t angle) { return static_cast<double>(angle) / 1e6 * kUtlDegree; }
}  // namespace

TEST(UtlMatrix, IdentityTranslateAndStretch) {
    EXPECT_TRUE(SameBits(Apply(UTLGetIdentityMatrix, kOdd), MATRIX{1, 0, 0, 0, 1, 0}));
    EXPECT_TRUE(Near(Apply(UTLTranslateMatrix, kSample, INT32_MIN, INT32_MAX),
                     {1.25, -0.5, 7 - 2147483648.0, 0.75, 2, 2147483643.5}));
    EXPECT_TRUE(Near(Apply(UTLStretchMatrix, IdentityMatrix(), 2.0, 3.0, 10, 10), {2, 0, -10, 0, 3, -20}));
    const auto member = [](MATRIX* m) { m->ScaleMatrix(Vector2d{0.3, -1.7}, P{5, -9}); };  // to the bit
    EXPECT_TRUE(SameBits(Apply(UTLStretchMatrix, kSample, 0.3, -1.7, 5, -9), Apply(member, kSample)));
}

TEST(UtlMatrix, RotateUsesTheTruncatedDegreeFactorAndSkipsWholeTurns) {
    // No reduction and no quarter-turn shortcut: 90° and 360.000001° go through cos and sin.
    for (int32_t angle : {1, 45000000, 90000000, -30000000, 360000001, INT32_MAX, INT32_MIN})
        EXPECT_TRUE(SameBits(Apply(UTLRotateMatrix, kSample, angle), Apply(&MATRIX::Rotate, kSample, UtlRadians(angle))));
    // π/180 lands on other bits: the angles differ by 1.3e-14.
    const MATRIX utl = Apply(UTLRotateMatrix, kSample, 45000000), full = Apply(&MATRIX::Rotate, kSample, Pi / 4);
    EXPECT_TRUE(!SameBits(utl, full) && Near(utl, full, 1e-12));
    for (int32_t turns : {0, 360000000, -720000000, 1800000000})  // returns before touching anything
        EXPECT_TRUE(SameBits(Apply(UTLRotateMatrix, kOdd, turns), kOdd) &&
                    SameBits(Apply(UTLRotateMatrixAround, kOdd, turns, 5, 6), kOdd)) << turns;
}

TEST(UtlMatrix, RotateAroundReducesAndKeepsQuarterTurnsExact) {
    EXPECT_TRUE(Near(Apply(UTLRotateMatrixAround, IdentityMatrix(), 450000000, 10, 0), {0, -1, 10, 1, 0, -10}));
    // Quarter turns about the origin only permute and negate fields, with no rounding noise.
    const MATRIX s = kSample, ccw{-s.c, -s.d, -s.ty, s.a, s.b, s.tx}, cw{s.c, s.d, s.ty, -s.a, -s.b, -s.tx};
    const struct { int32_t angle; MATRIX want; } quarters[] = {{90000000, ccw}, {-90000000, cw}, {270000000, cw},
        {180000000, {-s.a, -s.b, -s.tx, -s.c, -s.d, -s.ty}}, {-1710000000, ccw}};  // -4.75 turns
    for (const auto& q : quarters) EXPECT_TRUE(Near(Apply(UTLRotateMatrixAround, s, q.angle, 0, 0), q.want)) << q.angle;
    // Other angles: reduced in integers, then exactly a rotation about the centre by the truncated factor.
    for (int32_t angle : {30000000, -330000000, 123456789, INT32_MAX})
        EXPECT_TRUE(SameBits(Apply(UTLRotateMatrixAround, s, angle, -4, 9), Apply(&MATRIX::RotateAroundPoint, s,
                             UtlRadians((angle % 360000000 + 360000000) % 360000000), P{-4, 9}))) << angle;
}

TEST(UtlMatrix, SkewIsTheSkewAroundMatrixAppliedAfter) {
    const struct { int32_t ax, ay, cx, cy; } skews[] = {{15000000, 40000000, -7, 2}, {-45000000, 10000000, 3, -8}};
    for (const auto& k : skews)  // entries below 30: a few ulps
        EXPECT_TRUE(Near(Apply(UTLSkewMatrix, kSample, k.ax, k.ay, k.cx, k.cy),
                         ConstructSkewAroundMatrix(UtlRadians(k.ax), UtlRadians(k.ay), P{1.0 * k.cx, 1.0 * k.cy}) * kSample,
                         1e-12));
    EXPECT_TRUE(Near(Apply(UTLSkewMatrix, IdentityMatrix(), 30000000, 20000000, 7, -3)(P{7, -3}), P{7, -3}, 1e-14));
}

TEST(UtlMatrix, TransformPointRoundsAndIgnoresNonPositiveCounts) {
    const MATRIX m{1.5, 0, 0, 0, -0.5, 0.25};
    tagPOINT pts[] = {{1, 1}, {-1, 3}, {3, -1}, {7, 7}};
    for (int64_t count : {int64_t{0}, int64_t{-1}, INT64_MIN}) UTLTransformPoint(pts, &m, count);
    UTLTransformPoint(pts, &m, 3);  // (1.5, -0.25), (-1.5, -1.25), (4.5, 0.75); the fourth is beyond count
    EXPECT_TRUE(Same(pts, {{2, 0}, {-2, -1}, {5, 1}, {7, 7}}));
}
