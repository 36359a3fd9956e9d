// The flat UTL interface: int32 angles in millionths of a degree, converted with
// the truncated factor 0.017453292519943 so that results match older callers bit
// for bit; every call applies its operation after the existing transform.

#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>

using namespace QorMath;

namespace {
using P = Point2d;
using V = Vector2d;
constexpr double kUtlDegree = 0.017453292519943;  // deliberately not π/180
const MATRIX kSample{1.25, -0.5, 7.0, 0.75, 2.0, -3.5};
const MATRIX kOdd{1.25, -0.0, std::numeric_limits<double>::quiet_NaN(), 0.75, 2, -3.5};  // -0.0 and NaN show any write

double UtlRadians(int32_t angle) { return static_cast<double>(angle) / 1e6 * kUtlDegree; }
MATRIX Identity() {
    MATRIX m;
    UTLGetIdentityMatrix(&m);
    return m;
}
MATRIX Rotated(MATRIX m, int32_t angle) {
    UTLRotateMatrix(&m, angle);
    return m;
}
MATRIX RotatedAround(MATRIX m, int32_t angle, int32_t cx, int32_t cy) {
    UTLRotateMatrixAround(&m, angle, cx, cy);
    return m;
}
bool SameBits(const MATRIX& x, const MATRIX& y) { return std::memcmp(&x, &y, sizeof(MATRIX)) == 0; }
::testing::AssertionResult Near(const MATRIX& g, const MATRIX& w, double tol) {
    const double gv[] = {g.a, g.b, g.tx, g.c, g.d, g.ty}, wv[] = {w.a, w.b, w.tx, w.c, w.d, w.ty};
    const char* names[] = {"a", "b", "tx", "c", "d", "ty"};
    for (int i = 0; i < 6; ++i)
        if (!(std::fabs(gv[i] - wv[i]) <= tol))
            return ::testing::AssertionFailure() << std::setprecision(17) << names[i] << ": " << gv[i] << " vs " << wv[i];
    return ::testing::AssertionSuccess();
}
}  // namespace

TEST(UtlMatrix, IdentityTranslateAndStretch) {
    MATRIX m{9, 9, 9, 9, 9, 9};
    UTLGetIdentityMatrix(&m);
    EXPECT_TRUE(SameBits(m, MATRIX{1, 0, 0, 0, 1, 0}));
    m = kSample;
    UTLTranslateMatrix(&m, -3, 4);
    EXPECT_TRUE(Near(m, {1.25, -0.5, 4, 0.75, 2, 0.5}, 0));
    m = Identity();
    UTLTranslateMatrix(&m, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
    EXPECT_TRUE(Near(m, {1, 0, -2147483648.0, 0, 1, 2147483647.0}, 0));

    m = Identity();
    UTLStretchMatrix(&m, 2, 3, 10, 10);
    EXPECT_TRUE(Near(m, {2, 0, -10, 0, 3, -20}, 0));
    // The same scaling about a point as the member ScaleMatrix, to the bit.
    const struct { double sx, sy; int32_t cx, cy; } stretches[] = {{0.3, -1.7, 5, -9}, {1e-3, 7.25, -100, 3}, {-1, 1, 0, 0}};
    for (const auto& s : stretches) {
        MATRIX got = kSample, want = kSample;
        UTLStretchMatrix(&got, s.sx, s.sy, s.cx, s.cy);
        want.ScaleMatrix(V{s.sx, s.sy}, P{static_cast<double>(s.cx), static_cast<double>(s.cy)});
        EXPECT_TRUE(SameBits(got, want)) << s.sx << " " << s.sy;
    }
}

TEST(UtlMatrix, RotateUsesTheTruncatedDegreeFactor) {
    // No reduction and no quarter-turn shortcut: 90° and 360.000001° go through cos and sin.
    for (int32_t angle : {1, 45000000, 90000000, -30000000, 359999999, 360000001, 2147483647,
                          std::numeric_limits<int32_t>::min()}) {
        MATRIX want = kSample;
        want.Rotate(UtlRadians(angle));
        EXPECT_TRUE(SameBits(Rotated(kSample, angle), want)) << angle;
    }
    // 45° by the full-precision factor lands on other bits (the angles differ by 1.3e-14).
    MATRIX full = kSample;
    full.Rotate(45 * RadiansPerDegree);
    EXPECT_TRUE(!SameBits(Rotated(kSample, 45000000), full) && Near(Rotated(kSample, 45000000), full, 1e-12));
    // Whole turns return before touching anything.
    for (int32_t turns : {0, 360000000, -720000000, 1800000000, -1800000000})
        EXPECT_TRUE(SameBits(Rotated(kOdd, turns), kOdd)) << turns;
}

TEST(UtlMatrix, RotateAroundReducesAndKeepsQuarterTurnsExact) {
    EXPECT_TRUE(Near(RotatedAround(Identity(), 450000000, 10, 0), {0, -1, 10, 1, 0, -10}, 0));
    // Quarter turns about the origin only permute and negate fields, with no rounding noise.
    const MATRIX s = kSample;
    const struct { int32_t angle; MATRIX want; } quarters[] = {
        {90000000, {-s.c, -s.d, -s.ty, s.a, s.b, s.tx}},   {180000000, {-s.a, -s.b, -s.tx, -s.c, -s.d, -s.ty}},
        {270000000, {s.c, s.d, s.ty, -s.a, -s.b, -s.tx}},  {-90000000, {s.c, s.d, s.ty, -s.a, -s.b, -s.tx}},
        {-1710000000, {-s.c, -s.d, -s.ty, s.a, s.b, s.tx}},  // -4.75 turns
    };
    for (const auto& q : quarters) EXPECT_TRUE(Near(RotatedAround(s, q.angle, 0, 0), q.want, 0)) << q.angle;
    for (int32_t turns : {0, 360000000, -1080000000}) EXPECT_TRUE(SameBits(RotatedAround(kOdd, turns, 5, 6), kOdd));
    // Other angles: reduced in integers, then exactly a rotation about the centre by the truncated factor.
    for (int32_t angle : {30000000, 390000000, -330000000, 123456789, 2147483647}) {
        MATRIX want = s;
        want.RotateAroundPoint(UtlRadians((angle % 360000000 + 360000000) % 360000000), P{-4, 9});
        EXPECT_TRUE(SameBits(RotatedAround(s, angle, -4, 9), want)) << angle;
    }
    EXPECT_NEAR(Magnitude(RotatedAround(Identity(), 30000000, 7, -3)(P{7, -3}) - P{7, -3}), 0, 1e-14);
}

TEST(UtlMatrix, SkewIsTheSkewAroundMatrixAppliedAfter) {
    const struct { int32_t ax, ay, cx, cy; } skews[] = {
        {30000000, 0, 0, 0}, {0, -20000000, 4, 4}, {15000000, 40000000, -7, 2}, {-45000000, 10000000, 3, -8}};
    for (const auto& k : skews) {
        MATRIX got = kSample;
        UTLSkewMatrix(&got, k.ax, k.ay, k.cx, k.cy);
        const P centre{static_cast<double>(k.cx), static_cast<double>(k.cy)};
        const MATRIX want = ConstructSkewAroundMatrix(UtlRadians(k.ax), UtlRadians(k.ay), centre) * kSample;
        EXPECT_TRUE(Near(got, want, 1e-12)) << k.ax << " " << k.ay;  // entries below ~30: a few ulps
    }
    MATRIX m = Identity();
    UTLSkewMatrix(&m, 30000000, 20000000, 7, -3);
    EXPECT_NEAR(Magnitude(m(P{7, -3}) - P{7, -3}), 0, 1e-14);  // the centre stays put
}

TEST(UtlMatrix, TransformPointRoundsAndIgnoresNonPositiveCounts) {
    const MATRIX m{1.5, 0, 0, 0, -0.5, 0.25};
    tagPOINT pts[] = {{1, 1}, {-1, 3}, {3, -1}, {7, 7}}, copy[4];
    std::memcpy(copy, pts, sizeof pts);
    for (int64_t count : {int64_t{0}, int64_t{-1}, std::numeric_limits<int64_t>::min()}) {
        UTLTransformPoint(pts, &m, count);
        EXPECT_EQ(std::memcmp(pts, copy, sizeof pts), 0) << count;
    }
    UTLTransformPoint(pts, &m, 3);
    const tagPOINT want[] = {{2, 0}, {-2, -1}, {5, 1}, {7, 7}};  // (1.5, -0.25), (-1.5, -1.25), (4.5, 0.75)
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(pts[i].x == want[i].x && pts[i].y == want[i].y) << i;
    m.TransformPoints(copy, 3);
    EXPECT_EQ(std::memcmp(pts, copy, sizeof pts), 0);  // the same as the member for integer points
}
