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

// The double point from B(s) = B(t), s ≠ t: dividing B(s) − B(t) by s − t leaves A·(σ² − π) + Bc·σ + C = 0 with
// σ = s + t and π = s·t. Crossing the two component equations with A eliminates π: σ = −[A, C]/[A, Bc]; then
// s, t = (σ ± √(σ² − 4π))/2. Power basis in long double from the control points; ok = false when the curve has
// no real crossing (or no loop term).
struct DoublePoint {
    LD s = 0, t = 0;  // s > t
    bool ok = false;
};
DoublePoint TrueDoublePoint(const P p[4]) {
    const LongPoint A{p[3].x - 3.0L * p[2].x + 3.0L * p[1].x - p[0].x, p[3].y - 3.0L * p[2].y + 3.0L * p[1].y - p[0].y},
        Bc{3.0L * (p[2].x - 2.0L * p[1].x + p[0].x), 3.0L * (p[2].y - 2.0L * p[1].y + p[0].y)},
        C{3.0L * (p[1].x - p[0].x), 3.0L * (p[1].y - p[0].y)};
    if (Cross(A, Bc) == 0) return {};
    const LD sigma = -Cross(A, C) / Cross(A, Bc);
    const LD pi = sigma * sigma + (std::fabs(A.x) > std::fabs(A.y) ? (Bc.x * sigma + C.x) / A.x : (Bc.y * sigma + C.y) / A.y);
    const LD disc = sigma * sigma - 4 * pi;
    if (!(disc > 0)) return {};
    return {(sigma + std::sqrt(disc)) / 2, (sigma - std::sqrt(disc)) / 2, true};
}

struct Loop {
    double t1a = 42, t1b = 42, t2a = 42, t2b = 42;  // the intervals, 42 until written
    double s = 42, t = 42;                          // the double point, likewise
    P point{42, 42};
    bool Untouched() const { return t1a == 42 && t1b == 42 && t2a == 42 && t2b == 42; }
    template <typename Pt>
    bool Test(const Pt p[4], bool closed) { return DoesBezierSelfIntersect(p, t1a, t1b, t2a, t2b, closed); }
    template <typename Pt>
    bool Find(const Pt p[4]) { return FindBezierSelfIntersection(p, s, t, point); }
};

// How far a depth-8 leaf's chord strays from its arc over [lo, hi]: a piece of parameter width h = (hi − lo)/256
// lies within h²/8·max|B″| of the linear interpolation of its ends, and B″ is linear in t, so its largest norm is
// at an end.
LD LeafError(const P p[4], LD lo, LD hi) {
    const auto second = [&](LD t) {
        const LD w[4] = {6 * (1 - t), 6 * (3 * t - 2), 6 * (1 - 3 * t), 6 * t};
        LongPoint r{0, 0};
        for (int i = 0; i < 4; ++i) r.x += w[i] * p[i].x, r.y += w[i] * p[i].y;
        return std::hypot(r.x, r.y);
    };
    const LD h = (hi - lo) / 256;
    return h * h / 8 * std::max(second(lo), second(hi));
}

// A found double point against the true one: s and t in their intervals, B(s) the returned point to rounding (both
// come from the same leaf parameter), and B(t) and the true point within the distance at which two leaf chord
// polylines crossing at angle θ can meet: each strays up to e from its arc, so (e1 + e2)·(1 + 2/sin θ), with margin.
::testing::AssertionResult Matches(const P p[4], const Loop& f, LD scale) {
    const DoublePoint dp = TrueDoublePoint(p);
    if (!dp.ok) return ::testing::AssertionFailure() << "no double point";
    const LongPoint at = BernsteinAt(p, dp.s), ps = BernsteinAt(p, f.s), pt = BernsteinAt(p, f.t);
    const LongPoint ds = BernsteinAt(p, dp.s, true), dt = BernsteinAt(p, dp.t, true), point{f.point.x, f.point.y};
    const LD sinTheta = std::fabs(Cross(ds, dt)) / (std::hypot(ds.x, ds.y) * std::hypot(dt.x, dt.y));
    const LD e = LeafError(p, f.t1a, f.t1b) + LeafError(p, f.t2a, f.t2b);
    const LD tol = 1.5L * e * (1 + 2 / sinTheta) + 1e-9L * scale;
    if (!(f.t1a <= f.s && f.s <= f.t1b && f.t2a <= f.t && f.t <= f.t2b))
        return ::testing::AssertionFailure() << "s " << f.s << " or t " << f.t << " outside its interval";
    if (!(Dist(ps, point) <= 1e-14L * scale && Dist(pt, point) <= tol && Dist(at, point) <= tol))
        return ::testing::AssertionFailure() << "B(s) off by " << Dist(ps, point) << ", B(t) by " << Dist(pt, point)
                                             << ", true point by " << Dist(at, point) << " (tolerance " << tol << ")";
    return ::testing::AssertionSuccess();
}

}  // namespace

TEST(BezierSelfIntersect, LoopCurve) {
    // (0,0), (3,2), (−1,2), (2,0): A = (14, 0), Bc = (−21, −6), C = (9, 6). The double point solves σ = 1, π = 1/7,
    // so s, t = (1 ± √(3/7))/2 at (1, 6/7). The intervals come from 7x² − 14x + 6 = 0 forward (x = 1 ± 1/√7,
    // clamped) and its mirror on the reversed curve. Scaling, translating or mapping the curve by any affine map
    // multiplies every cross product alike: same intervals.
    const P loop[4] = {{0, 0}, {3, 2}, {-1, 2}, {2, 0}};
    const LD r7 = 1 / std::sqrt(7.0L), s = (1 + std::sqrt(3.0L / 7)) / 2, t = (1 - std::sqrt(3.0L / 7)) / 2;
    const MATRIX maps[] = {{1, 0, 0, 0, 1, 0}, {1000, 0, 0, 0, 1000, 0}, {0, -3, 250, 0.5, 0, -7}, {2, 1, 5, -1, 3, 2}};
    for (const MATRIX& m : maps) {
        P q[4];
        for (int i = 0; i < 4; ++i) q[i] = {m.a * loop[i].x + m.b * loop[i].y + m.tx, m.c * loop[i].x + m.d * loop[i].y + m.ty};
        Loop iv;
        ASSERT_TRUE(iv.Test(q, false)) << m.a;
        EXPECT_TRUE(std::fabs(iv.t1a - (1 - r7)) < 1e-13 && iv.t1b == 1 && iv.t2a == 0 && std::fabs(iv.t2b - r7) < 1e-13)
            << m.a << ": " << iv.t1a << " " << iv.t1b << " " << iv.t2a << " " << iv.t2b;
        EXPECT_TRUE(iv.t1a <= s && s <= iv.t1b && iv.t2a <= t && t <= iv.t2b);
    }
    // At unit scale the pieces shrink below one unit before depth 8: nothing found, t not written. Scaled by 1000
    // (and shifted) the double point is found to within what the depth-8 leaves resolve.
    Loop small;
    EXPECT_TRUE(!small.Find(loop) && small.t == 42);
    for (const P shift : {P{0, 0}, P{-5e3, 12345}}) {
        P big[4];
        for (int i = 0; i < 4; ++i) big[i] = {loop[i].x * 1000 + shift.x, loop[i].y * 1000 + shift.y};
        Loop f;
        ASSERT_TRUE(f.Test(big, true) && f.Find(big));
        EXPECT_TRUE(std::fabs(f.s - s) < 1e-4 && std::fabs(f.t - t) < 1e-4) << f.s << " " << f.t;
        EXPECT_TRUE(qtest::Near(f.point, P{1000 + shift.x, 6000.0 / 7 + shift.y}, 0.05));
        EXPECT_TRUE(Matches(big, f, 2e4));
    }
}

TEST(BezierSelfIntersect, NoLoopAndClosedCurves) {
    // No loop (an S with an inflection, a straight curve with handles out of order, a C-shaped arc, a point): false,
    // nothing written, and no double point either.
    const P none[][4] = {{{0, 0}, {1, 1}, {2, -1}, {3, 0}}, {{0, 0}, {6, 3}, {-2, -1}, {4, 2}},
                         {{0, 0}, {0, 5}, {5, 5}, {5, 0}}, {{1, 1}, {1, 1}, {1, 1}, {1, 1}}};
    for (const auto& p : none) {
        Loop f;
        EXPECT_TRUE(!f.Test(p, false) && !f.Test(p, true) && !f.Find(p) && f.Untouched()) << p[1].x;
        EXPECT_TRUE(f.s == 42 && f.t == 42 && f.point.x == 42 && f.point.y == 42);
    }
    // A closed curve whose handles cross, P3 = P0 + (δ, 0): within DBL_EPSILON it is closed, and with the flag false
    // rejected before anything is written. Examined (flag true, or δ beyond DBL_EPSILON), its double point is the
    // shared end, s = 1 and t = 0 (or t → 0): the intervals reach the ends.
    for (const double delta : {0.0, DBL_EPSILON, 2 * DBL_EPSILON, 1e-3}) {
        const P closed[4] = {{0, 0}, {3, 2}, {-1, 2}, {delta, 0}};
        const bool treatedClosed = delta <= DBL_EPSILON;
        Loop off, on;
        EXPECT_TRUE(off.Test(closed, false) != treatedClosed && off.Untouched() == treatedClosed) << delta;
        EXPECT_TRUE(on.Test(closed, true) && on.t1b == 1.0 && on.t2a == 0.0) << delta;
    }
    // Exactly closed, the first interval collapses onto 1 and the search is skipped: the double point is P0, at
    // s = 0 and t = 1, at any scale, for the integer form too.
    const tagPOINT closed[4] = {{0, 0}, {3, 2}, {-1, 2}, {0, 0}}, bigClosed[4] = {{7, 9}, {3007, 2009}, {-993, 2009}, {7, 9}};
    for (const auto* p : {closed, bigClosed}) {
        Loop f;
        EXPECT_TRUE(!f.Test(p, false) && f.Untouched() && f.Test(p, true));
        EXPECT_TRUE(f.Find(p) && f.s == 0 && f.t == 1 && f.point.x == p[0].x && f.point.y == p[0].y) << f.s << ' ' << f.t;
    }
}

TEST(BezierSelfIntersect, RandomCurves) {
    // Integer control points up to 1e4. The loop test is true exactly when both double-point parameters lie in
    // [0, 1] (cases within 1e-9 of an end, or with a nearly cusped loop, are skipped), each interval holds one of
    // them, and a found point lies on the curve at s and t. Integer and double forms agree to the bit. Big loops,
    // whose depth-7 pieces all span more than four units, are found.
    std::mt19937 rng(20240611);
    std::uniform_int_distribution<int> u(-10000, 10000);
    int loops = 0, found = 0, big = 0;
    for (int n = 0; n < 4000; ++n) {
        P p[4];
        tagPOINT q[4];
        for (int i = 0; i < 4; ++i) q[i] = {u(rng), u(rng)}, p[i] = {double(q[i].x), double(q[i].y)};
        const DoublePoint dp = TrueDoublePoint(p);
        const bool inside = dp.ok && dp.t >= 0 && dp.s <= 1;
        if (dp.ok && (dp.s - dp.t < 1e-6L || std::min({std::fabs(dp.s), std::fabs(dp.t), std::fabs(1 - dp.s), std::fabs(1 - dp.t)}) < 1e-9L))
            continue;
        Loop f, fInt;
        const bool loop = f.Test(p, true), ok = f.Find(p);
        ASSERT_TRUE(loop == fInt.Test(q, true) && ok == fInt.Find(q)) << n;
        EXPECT_TRUE(qtest::SameBits(f, fInt)) << n;
        ASSERT_EQ(loop, inside) << n << ": " << double(dp.s) << ' ' << double(dp.t);
        if (!loop) continue;
        ++loops;
        EXPECT_TRUE(f.t1a <= dp.s && dp.s <= f.t1b && f.t2a <= dp.t && dp.t <= f.t2b) << n;
        // Slowest travel over each interval, sampled: a depth-7 piece then spans at least speed·width/128.
        LD slowest = INFINITY;
        for (const auto& [lo, hi] : {std::pair{f.t1a, f.t1b}, {f.t2a, f.t2b}})
            for (int k = 0; k <= 64; ++k) {
                const LongPoint v = BernsteinAt(p, lo + (hi - lo) * k / 64.0L, true);
                slowest = std::min(slowest, std::hypot(v.x, v.y) * (hi - lo) / 128);
            }
        big += slowest > 4;
        if (!ok) {
            EXPECT_LE(slowest, 4) << n;
            continue;
        }
        ++found;
        EXPECT_TRUE(Matches(p, f, 1e4)) << n;
    }
    EXPECT_GT(loops, 200);
    EXPECT_GT(big, 50);
    EXPECT_GE(found, big);
}
