#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using LD = long double;
using qtest::BernsteinAt;
using qtest::LongPoint;

LD Dist(LongPoint u, LongPoint v) { return std::hypot(u.x - v.x, u.y - v.y); }
LD Cross(LongPoint u, LongPoint v) { return u.x * v.y - u.y * v.x; }

// The double point from B(s) = B(t), s ≠ t: dividing B(s) − B(t) by s − t leaves
// A·(σ² − π) + Bc·σ + C = 0 with σ = s + t and π = s·t. Crossing the two component
// equations with A eliminates π: σ = −[A, C]/[A, Bc]; then s, t = (σ ± √(σ² − 4π))/2.
// Power basis in long double straight from the control points. ok = false when the
// curve has no real crossing (or no loop term).
struct DoublePoint {
    LD s = 0, t = 0;  // s > t
    bool ok = false;
};
DoublePoint TrueDoublePoint(const P p[4]) {
    LongPoint A{p[3].x - 3.0L * p[2].x + 3.0L * p[1].x - p[0].x, p[3].y - 3.0L * p[2].y + 3.0L * p[1].y - p[0].y},
        Bc{3.0L * (p[2].x - 2.0L * p[1].x + p[0].x), 3.0L * (p[2].y - 2.0L * p[1].y + p[0].y)},
        C{3.0L * (p[1].x - p[0].x), 3.0L * (p[1].y - p[0].y)};
    DoublePoint r;
    if (Cross(A, Bc) == 0) return r;
    const LD sigma = -Cross(A, C) / Cross(A, Bc);
    const LD pi = std::fabs(A.x) > std::fabs(A.y) ? sigma * sigma + (Bc.x * sigma + C.x) / A.x
                                                   : sigma * sigma + (Bc.y * sigma + C.y) / A.y;
    const LD disc = sigma * sigma - 4 * pi;
    if (!(disc > 0)) return r;
    r.s = (sigma + std::sqrt(disc)) / 2, r.t = (sigma - std::sqrt(disc)) / 2, r.ok = true;
    return r;
}

// How far a depth-8 leaf's chord strays from its arc over [lo, hi]: a piece of
// parameter width h = (hi − lo)/256 lies within h²/8·max|B″| of the linear
// interpolation of its ends, and B″ is linear in t, so its largest norm is at an end.
LD LeafError(const P p[4], LD lo, LD hi) {
    auto second = [&](LD t) {
        const LD w[4] = {6 * (1 - t), 6 * (3 * t - 2), 6 * (1 - 3 * t), 6 * t};
        LongPoint r{0, 0};
        for (int i = 0; i < 4; ++i) r.x += w[i] * p[i].x, r.y += w[i] * p[i].y;
        return std::hypot(r.x, r.y);
    };
    const LD h = (hi - lo) / 256;
    return h * h / 8 * std::max(second(lo), second(hi));
}

struct Intervals {
    double t1a = 42, t1b = 42, t2a = 42, t2b = 42;
    bool Untouched() const { return t1a == 42 && t1b == 42 && t2a == 42 && t2b == 42; }
};
template <typename Pt>
bool Loop(const Pt p[4], Intervals& iv, bool closed) {
    return DoesBezierSelfIntersect(p, iv.t1a, iv.t1b, iv.t2a, iv.t2b, closed);
}

struct Found {
    double s = 42, t = 42;
    P point{42, 42};
    bool ok = false;
};
template <typename Pt>
Found Find(const Pt p[4]) {
    Found f;
    f.ok = FindBezierSelfIntersection(p, f.s, f.t, f.point);
    return f;
}

// A found double point against the true one: s and t in their intervals, B(s) the
// returned point to rounding (both come from the same leaf parameter), and B(t) and
// the point within the distance at which two leaf chord polylines crossing at angle θ
// can meet: each stray up to e from its arc, so (e1 + e2)·(1 + 2/sin θ), with margin.
::testing::AssertionResult Matches(const P p[4], const Found& f, const Intervals& iv, LD scale) {
    const DoublePoint dp = TrueDoublePoint(p);
    if (!dp.ok) return ::testing::AssertionFailure() << "no double point";
    const LongPoint at = BernsteinAt(p, dp.s), ps = BernsteinAt(p, f.s), pt = BernsteinAt(p, f.t);
    const LongPoint ds = BernsteinAt(p, dp.s, true), dt = BernsteinAt(p, dp.t, true);
    const LD sinTheta = std::fabs(Cross(ds, dt)) / (std::hypot(ds.x, ds.y) * std::hypot(dt.x, dt.y));
    const LD e = LeafError(p, iv.t1a, iv.t1b) + LeafError(p, iv.t2a, iv.t2b);
    const LD tol = 1.5L * e * (1 + 2 / sinTheta) + 1e-9L * scale, rounding = 1e-14L * scale;
    const LongPoint point{f.point.x, f.point.y};
    if (!(iv.t1a <= f.s && f.s <= iv.t1b && iv.t2a <= f.t && f.t <= iv.t2b))
        return ::testing::AssertionFailure() << "s " << f.s << " or t " << f.t << " outside its interval";
    if (!(Dist(ps, point) <= rounding && Dist(pt, point) <= tol && Dist(at, point) <= tol))
        return ::testing::AssertionFailure() << "B(s) off by " << Dist(ps, point) << ", B(t) by " << Dist(pt, point)
                                             << ", true point by " << Dist(at, point) << " (tolerance " << tol << ")";
    return ::testing::AssertionSuccess();
}

tagPOINT ToInt(const P& v) { return {int32_t(v.x), int32_t(v.y)}; }

}  // namespace

TEST(BezierSelfIntersect, LoopCurveIntervals) {
    // (0,0), (3,2), (−1,2), (2,0): A = (14, 0), Bc = (−21, −6), C = (9, 6). The double point solves
    // σ = 1, π = 1/7, so s, t = (1 ± √(3/7))/2 at (1, 6/7). The intervals come from 7x² − 14x + 6 = 0
    // forward (x = 1 ± 1/√7, clamped) and its mirror on the reversed curve. Scaling, translating or
    // mapping the curve by any affine map multiplies every cross product alike: same intervals.
    const P loop[4] = {{0, 0}, {3, 2}, {-1, 2}, {2, 0}};
    const LD r7 = 1 / std::sqrt(7.0L), s = (1 + std::sqrt(3.0L / 7)) / 2, t = (1 - std::sqrt(3.0L / 7)) / 2;
    const DoublePoint dp = TrueDoublePoint(loop);
    ASSERT_TRUE(dp.ok);
    EXPECT_NEAR(double(dp.s), double(s), 1e-15);
    EXPECT_NEAR(double(dp.t), double(t), 1e-15);
    const LongPoint at = BernsteinAt(loop, s), at2 = BernsteinAt(loop, t);
    EXPECT_LT(Dist(at, {1, 6.0L / 7}) + Dist(at2, {1, 6.0L / 7}), 1e-15L);

    const MATRIX maps[] = {{1, 0, 0, 0, 1, 0}, {1000, 0, 0, 0, 1000, 0}, {0, -3, 250, 0.5, 0, -7}, {2, 1, 5, -1, 3, 2}};
    for (const MATRIX& m : maps) {
        P q[4];
        for (int i = 0; i < 4; ++i)
            q[i] = {m.a * loop[i].x + m.b * loop[i].y + m.tx, m.c * loop[i].x + m.d * loop[i].y + m.ty};
        Intervals iv;
        ASSERT_TRUE(Loop(q, iv, false)) << m.a;
        EXPECT_NEAR(iv.t1a, double(1 - r7), 1e-13);
        EXPECT_EQ(iv.t1b, 1.0);
        EXPECT_EQ(iv.t2a, 0.0);
        EXPECT_NEAR(iv.t2b, double(r7), 1e-13);
        EXPECT_TRUE(iv.t1a <= s && s <= iv.t1b && iv.t2a <= t && t <= iv.t2b);
    }
    const tagPOINT integer[4] = {{0, 0}, {3000, 2000}, {-1000, 2000}, {2000, 0}};
    const P scaled[4] = {{0, 0}, {3000, 2000}, {-1000, 2000}, {2000, 0}};
    Intervals a, b;
    EXPECT_TRUE(Loop(integer, a, false) && Loop(scaled, b, false));
    EXPECT_TRUE(a.t1a == b.t1a && a.t1b == b.t1b && a.t2a == b.t2a && a.t2b == b.t2b);
}

TEST(BezierSelfIntersect, NoLoopAndClosedCurves) {
    // No loop (an S with an inflection, a straight curve with handles out of order, a
    // C-shaped arc, a point): false, intervals untouched, and no double point either.
    const P none[][4] = {{{0, 0}, {1, 1}, {2, -1}, {3, 0}},
                         {{0, 0}, {6, 3}, {-2, -1}, {4, 2}},
                         {{0, 0}, {0, 5}, {5, 5}, {5, 0}},
                         {{1, 1}, {1, 1}, {1, 1}, {1, 1}}};
    for (const auto& p : none) {
        Intervals iv;
        EXPECT_TRUE(!Loop(p, iv, false) && !Loop(p, iv, true) && iv.Untouched()) << p[1].x;
        const Found f = Find(p);
        EXPECT_TRUE(!f.ok && f.s == 42 && f.t == 42 && f.point.x == 42 && f.point.y == 42);
    }
    // A closed curve whose handles cross, P3 = P0 + (δ, 0): within DBL_EPSILON it is closed, and with the
    // flag false rejected before anything is written. Examined (flag true, or δ beyond DBL_EPSILON), its
    // double point is the shared end, s = 1 and t = 0 (or t → 0): the intervals reach the ends.
    for (const double delta : {0.0, DBL_EPSILON, 2 * DBL_EPSILON, 1e-3}) {
        const P closed[4] = {{0, 0}, {3, 2}, {-1, 2}, {delta, 0}};
        const bool treatedClosed = delta <= DBL_EPSILON;
        Intervals off, on;
        EXPECT_EQ(Loop(closed, off, false), !treatedClosed) << delta;
        EXPECT_EQ(off.Untouched(), treatedClosed) << delta;
        ASSERT_TRUE(Loop(closed, on, true)) << delta;
        EXPECT_TRUE(on.t1b == 1.0 && on.t2a == 0.0) << delta;
    }
    // Exactly closed, the first interval collapses onto 1 and the search is skipped: the double point is
    // P0, at s = 0 and t = 1, at any scale.
    const tagPOINT closed[4] = {{0, 0}, {3, 2}, {-1, 2}, {0, 0}},
                   bigClosed[4] = {{7, 9}, {3007, 2009}, {-993, 2009}, {7, 9}};
    Intervals off, on;
    EXPECT_TRUE(!Loop(closed, off, false) && off.Untouched() && Loop(closed, on, true));
    for (const auto* p : {closed, bigClosed}) {
        const Found f = Find(p);
        EXPECT_TRUE(f.ok && f.s == 0 && f.t == 1 && f.point.x == p[0].x && f.point.y == p[0].y) << f.s << ' ' << f.t;
    }
}

TEST(BezierSelfIntersect, FindOnLoopCurve) {
    // At unit scale the pieces shrink below one unit before depth 8: nothing found, t not written. Scaled
    // by 1000 (and shifted) the double point is found to within what the depth-8 leaves resolve.
    const P small[4] = {{0, 0}, {3, 2}, {-1, 2}, {2, 0}};
    EXPECT_TRUE(!Find(small).ok && Find(small).t == 42);
    for (const P shift : {P{0, 0}, P{-5e3, 12345}}) {
        P big[4];
        for (int i = 0; i < 4; ++i) big[i] = {small[i].x * 1000 + shift.x, small[i].y * 1000 + shift.y};
        Intervals iv;
        ASSERT_TRUE(Loop(big, iv, true));
        const Found f = Find(big);
        ASSERT_TRUE(f.ok);
        EXPECT_NEAR(f.s, 0.8273268353539884, 1e-4);
        EXPECT_NEAR(f.t, 0.1726731646460115, 1e-4);
        EXPECT_TRUE(qtest::Near(f.point, P{1000 + shift.x, 6000.0 / 7 + shift.y}, 0.05));
        EXPECT_TRUE(Matches(big, f, iv, 2e4));
    }
}

TEST(BezierSelfIntersect, RandomCurves) {
    // Integer control points up to 1e4. The loop test is true exactly when both double-point parameters
    // lie in [0, 1] (cases within 1e-9 of an end, or with a nearly cusped loop, are skipped), each
    // interval holds one of them, and a found point lies on the curve at s and t. Integer and double
    // forms agree to the bit. Big loops, whose depth-7 pieces all span more than four units, are found.
    std::mt19937 rng(20240611);
    std::uniform_int_distribution<int> u(-10000, 10000);
    int loops = 0, found = 0, big = 0;
    for (int n = 0; n < 4000; ++n) {
        P p[4];
        tagPOINT q[4];
        for (int i = 0; i < 4; ++i) p[i] = {double(u(rng)), double(u(rng))}, q[i] = ToInt(p[i]);
        const DoublePoint dp = TrueDoublePoint(p);
        const bool inside = dp.ok && dp.t >= 0 && dp.s <= 1;
        if (dp.ok && (std::fabs(dp.s - dp.t) < 1e-6L || std::min({std::fabs(dp.s), std::fabs(dp.t), std::fabs(1 - dp.s),
                                                                 std::fabs(1 - dp.t)}) < 1e-9L))
            continue;
        Intervals iv, ivInt;
        const bool loop = Loop(p, iv, true);
        ASSERT_EQ(loop, Loop(q, ivInt, true)) << n;
        EXPECT_TRUE(qtest::SameBits(iv.t1a, ivInt.t1a) && qtest::SameBits(iv.t1b, ivInt.t1b) &&
                    qtest::SameBits(iv.t2a, ivInt.t2a) && qtest::SameBits(iv.t2b, ivInt.t2b)) << n;
        ASSERT_EQ(loop, inside) << n << ": " << double(dp.s) << ' ' << double(dp.t);
        if (!loop) continue;
        ++loops;
        EXPECT_TRUE(iv.t1a <= dp.s && dp.s <= iv.t1b && iv.t2a <= dp.t && dp.t <= iv.t2b) << n;
        const Found f = Find(p), fInt = Find(q);
        EXPECT_TRUE(f.ok == fInt.ok && qtest::SameBits(f.s, fInt.s) && qtest::SameBits(f.t, fInt.t) &&
                    qtest::SameBits(f.point, fInt.point)) << n;
        // Slowest travel over each interval, sampled: a depth-7 piece then spans at least speed·width/128.
        LD slowest = INFINITY;
        for (const auto& [lo, hi] : {std::pair{iv.t1a, iv.t1b}, {iv.t2a, iv.t2b}})
            for (int k = 0; k <= 64; ++k) {
                const LongPoint v = BernsteinAt(p, lo + (hi - lo) * k / 64.0L, true);
                slowest = std::min(slowest, std::hypot(v.x, v.y) * (hi - lo) / 128);
            }
        if (slowest > 4) {
            ++big;
            EXPECT_TRUE(f.ok) << n;
        }
        if (!f.ok) continue;
        ++found;
        EXPECT_TRUE(Matches(p, f, iv, 1e4)) << n;
    }
    EXPECT_GT(loops, 200);
    EXPECT_GT(big, 50);
    EXPECT_GE(found, big);
}
