#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using LD = long double;

// One coordinate of the curve and its two derivatives at t, Bernstein form in long double.
struct Jet {
    LD v, d1, d2;
};
Jet Coord(LD v0, LD v1, LD v2, LD v3, LD t) {
    const LD s = 1 - t;
    return {s * s * s * v0 + 3 * s * s * t * v1 + 3 * s * t * t * v2 + t * t * t * v3,
            3 * (s * s * (v1 - v0) + 2 * s * t * (v2 - v1) + t * t * (v3 - v2)),
            6 * (s * (v2 - 2 * v1 + v0) + t * (v3 - 2 * v2 + v1))};
}

// f(t) = (B(t) − q)·B′(t), half the derivative of the squared distance, and f′(t); also that distance.
struct Stat {
    LD f, df, d2, x, y;
};
Stat At(const P p[4], P q, LD t) {
    const Jet x = Coord(p[0].x, p[1].x, p[2].x, p[3].x, t), y = Coord(p[0].y, p[1].y, p[2].y, p[3].y, t);
    const LD ex = x.v - q.x, ey = y.v - q.y;
    return {ex * x.d1 + ey * y.d1, x.d1 * x.d1 + y.d1 * y.d1 + ex * x.d2 + ey * y.d2, ex * ex + ey * ey, x.v, y.v};
}

// The minimum of |B(t) − q| over [0, 1]: dense sampling, then Newton on f from the best sample.
Stat Nearest(const P p[4], P q, LD& t) {
    const int n = 2000;
    int best = 0;
    for (int i = 1; i <= n; ++i) best = At(p, q, LD(i) / n).d2 < At(p, q, LD(best) / n).d2 ? i : best;
    t = LD(best) / n;
    if (best == 0 || best == n) return At(p, q, t);
    for (int k = 0; k < 40; ++k) {
        const Stat s = At(p, q, t);
        if (s.df != 0) t -= s.f / s.df;
    }
    return At(p, q, t);
}

// The zeros of f in (0, 1): sign changes over a fine grid, bisected.
std::vector<LD> Stationary(const P p[4], P q) {
    std::vector<LD> r;
    const int n = 4000;
    for (int i = 0; i < n; ++i) {
        LD lo = LD(i) / n, hi = LD(i + 1) / n;
        const LD flo = At(p, q, lo).f;
        if (flo * At(p, q, hi).f >= 0) continue;
        for (int k = 0; k < 64; ++k) {
            const LD m = (lo + hi) / 2;
            (At(p, q, m).f * flo > 0 ? lo : hi) = m;
        }
        r.push_back((lo + hi) / 2);
    }
    return r;
}

// Roots closer than this to each other or to an end are left out of comparisons:
// near-double roots are ill-conditioned for any solver.
bool WellSeparated(const std::vector<LD>& r) {
    for (size_t i = 0; i < r.size(); ++i)
        if (r[i] < 1e-3L || r[i] > 1 - 1e-3L || (i > 0 && r[i] - r[i - 1] < 1e-3L)) return false;
    return true;
}

int Round(LD v) { return static_cast<int>(std::lround(v)); }
// Far enough from a rounding boundary that the reference and the library round alike.
bool Clear(LD v) { return std::fabs(std::fabs(v - std::trunc(v)) - 0.5L) > 1e-6L; }

void Basis(const P p[4], P (&k)[4]) { GetPowerBasis(p, k[0], k[1], k[2], k[3]); }

}  // namespace

TEST(BezierClosest, NearestAgreesWithDenseSampling) {
    std::mt19937 rng(5);
    int interior = 0;
    for (int i = 0; i < 1500; ++i) {
        P p[4], k[4], q = qtest::RandomPoint(rng), n{}, n2{};
        for (P& v : p) v = qtest::RandomPoint(rng);
        tagPOINT ip[4], iq{Round(q.x), Round(q.y)}, in{};
        for (int j = 0; j < 4; ++j) ip[j] = {Round(p[j].x * 3), Round(p[j].y * 3)};
        Basis(p, k);
        double t = -1, dd = -1, t2 = -1, dd2 = -1, it = -1, idd = -1;
        const bool ok = FindClosestPointOnBezier(k[0], k[1], k[2], k[3], q, t, n, dd);
        EXPECT_EQ(FindClosestPointOnBezier(p, q, t2, n2, dd2), ok);
        EXPECT_TRUE(qtest::SameBits(t, t2) && qtest::SameBits(n, n2) && qtest::SameBits(dd, dd2)) << i;
        LD rt;
        const Stat ref = Nearest(p, q, rt);
        const double tol = 1e-10 * (1 + double(ref.d2));
        if (rt > 0 && rt < 1) {
            ++interior;
            ASSERT_TRUE(ok) << i;
            EXPECT_NEAR(dd, double(ref.d2), tol) << i;
        } else if (ok) {  // an interior stationary point instead: never nearer than the true minimum
            EXPECT_GE(dd, double(ref.d2) - tol) << i;
        }
        if (ok) {
            const Stat at = At(p, q, t);
            EXPECT_TRUE(t >= 0 && t <= 1 && std::fabs(at.x - n.x) < 1e-12 && std::fabs(at.y - n.y) < 1e-12) << i;
            EXPECT_NEAR(dd, double(at.d2), tol) << i;
        }
        // Integer form: nearest rounded half away from zero, the distance that of the unrounded point.
        P dp[4];
        for (int j = 0; j < 4; ++j) dp[j] = {double(ip[j].x), double(ip[j].y)};
        const Stat iref = Nearest(dp, {double(iq.x), double(iq.y)}, rt);
        const bool iok = FindClosestPointOnBezier(ip, iq, it, in, idd);
        if (rt > 0 && rt < 1) {
            ASSERT_TRUE(iok) << i;
            EXPECT_NEAR(idd, double(iref.d2), 1e-9 * (1 + double(iref.d2))) << i;
            if (Clear(iref.x) && Clear(iref.y)) EXPECT_TRUE(qtest::Same(&in, {{Round(iref.x), Round(iref.y)}})) << i;
        }
    }
    EXPECT_GT(interior, 500);
}

TEST(BezierClosest, EdgeCases) {
    const P s[4] = {{0, 0}, {1, 2}, {2, -2}, {3, 0}}, arch[4] = {{0, 0}, {0, 1}, {1, 1}, {1, 0}};
    const P flat[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}}, dot[4] = {{2, 2}, {2, 2}, {2, 2}, {2, 2}};
    P k[4], n{9, 9};
    double t = 7, dd = -1;
    // On the curve at 0.3 of an S.
    Basis(s, k);
    EXPECT_TRUE(FindClosestPointOnBezier(s, Evaluate(k[0], k[1], k[2], k[3], 0.3), t, n, dd));
    EXPECT_NEAR(t, 0.3, 1e-9);
    EXPECT_LT(dd, 1e-24);
    // From (0.5, 0) the arch's ends are stationary and equally near (exactly 0.25): the smaller t wins.
    EXPECT_TRUE(FindClosestPointOnBezier(arch, {0.5, 0}, t, n, dd));
    EXPECT_TRUE(t == 0 && n == arch[0] && dd == 0.25) << t;
    // No stationary point (a point, or the projection beyond an end): false, outputs untouched.
    t = 7, n = {9, 9}, dd = -1;
    EXPECT_FALSE(FindClosestPointOnBezier(dot, {5, 1}, t, n, dd));
    EXPECT_FALSE(FindClosestPointOnBezier(flat, {5, 1}, t, n, dd));
    EXPECT_TRUE(t == 7 && n == P{9, 9} && dd == -1);
    const tagPOINT idot[4] = {{2, 2}, {2, 2}, {2, 2}, {2, 2}}, iflat[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    const tagPOINT iarch[4] = {{0, 0}, {0, 2}, {2, 2}, {2, 0}};
    tagPOINT in{9, 9};
    EXPECT_FALSE(FindClosestPointOnBezier(idot, {5, 1}, t, in, dd));
    EXPECT_TRUE(t == 7 && qtest::Same(&in, {{9, 9}}) && dd == -1);
    // The t-returning form: its own t on success (the tie gives 0), else the nearer end, 1 on equal distances.
    const struct {
        const tagPOINT* curve;
        tagPOINT q;
        double t;
    } ends[] = {{iarch, {1, 0}, 0.0}, {iflat, {5, 1}, 1.0}, {iflat, {-2, 1}, 0.0}, {idot, {7, -3}, 1.0}};
    for (const auto& e : ends) EXPECT_EQ(FindClosestPointOnBezier(e.curve, e.q), e.t) << e.q.x;
}

TEST(BezierClosest, AllStationaryPointsAreAppended) {
    std::mt19937 rng(11);
    int compared = 0;
    for (int i = 0; i < 600; ++i) {
        P p[4], q = qtest::RandomPoint(rng), dp[4];
        for (P& v : p) v = qtest::RandomPoint(rng);
        tagPOINT ip[4], iq{Round(q.x), Round(q.y)};
        for (int j = 0; j < 4; ++j) ip[j] = {Round(p[j].x * 5), Round(p[j].y * 5)}, dp[j] = {1. * ip[j].x, 1. * ip[j].y};
        const std::vector<LD> ref = Stationary(p, q), iref = Stationary(dp, {1. * iq.x, 1. * iq.y});
        std::vector<double> ts{-1}, ds{-1}, its{-1}, ids{-1};
        std::vector<P> pts{{}};
        std::vector<tagPOINT> ipts{{}};
        const bool ok = FindClosestPointsOnBezier(p, q, ts, pts, ds), iok = FindClosestPointsOnBezier(ip, iq, its, ipts, ids);
        EXPECT_TRUE(ts[0] == -1 && ds[0] == -1 && its[0] == -1 && ids[0] == -1);  // appended, not cleared
        if (WellSeparated(ref)) {
            ++compared;
            EXPECT_EQ(ok, !ref.empty());
            ASSERT_TRUE(ts.size() == ref.size() + 1 && pts.size() == ts.size() && ds.size() == ts.size()) << i;
            for (size_t j = 0; j < ref.size(); ++j) {
                const Stat at = At(p, q, ref[j]);
                EXPECT_NEAR(ts[j + 1], double(ref[j]), 1e-9) << i;
                EXPECT_TRUE(qtest::Near(pts[j + 1], P{double(at.x), double(at.y)}, 1e-8)) << i;
                EXPECT_NEAR(ds[j + 1], double(at.d2), 1e-8 * (1 + double(at.d2))) << i;
            }
        }
        if (WellSeparated(iref)) {
            EXPECT_EQ(iok, !iref.empty());
            ASSERT_TRUE(its.size() == iref.size() + 1 && ipts.size() == its.size() && ids.size() == its.size()) << i;
            for (size_t j = 0; j < iref.size(); ++j) {
                const Stat at = At(dp, {1. * iq.x, 1. * iq.y}, iref[j]);
                const tagPOINT& r = ipts[j + 1];
                EXPECT_NEAR(its[j + 1], double(iref[j]), 1e-9) << i;
                if (Clear(at.x) && Clear(at.y)) EXPECT_TRUE(qtest::Same(&r, {{Round(at.x), Round(at.y)}})) << i;
                EXPECT_EQ(ids[j + 1], double(r.x - iq.x) * (r.x - iq.x) + double(r.y - iq.y) * (r.y - iq.y)) << i;
            }
        }
    }
    EXPECT_GT(compared, 400);
    // The arch seen from (0.5, 0): stationary at both ends and at the top, a maximum; only the top is inside (0, 1).
    const P arch[4] = {{0, 0}, {0, 1}, {1, 1}, {1, 0}};
    std::vector<double> ts, ds;
    std::vector<P> pts;
    EXPECT_TRUE(FindClosestPointsOnBezier(arch, {0.5, 0}, ts, pts, ds));
    ASSERT_EQ(ts.size(), 1u);
    EXPECT_NEAR(ts[0], 0.5, 1e-12);
    EXPECT_NEAR(ds[0], 0.5625, 1e-12);
}

TEST(BezierClosest, Invert) {
    const P s[4] = {{0, 0}, {3, 6}, {6, -6}, {9, 0}};
    P k[4];
    Basis(s, k);
    const auto Offset = [&](LD t, LD h) {  // h along the unit normal at t
        const Stat st = At(s, {0, 0}, t);
        const Jet x = Coord(s[0].x, s[1].x, s[2].x, s[3].x, t), y = Coord(s[0].y, s[1].y, s[2].y, s[3].y, t);
        const LD len = std::sqrt(x.d1 * x.d1 + y.d1 * y.d1);
        return P{double(st.x - h * y.d1 / len), double(st.y + h * x.d1 / len)};
    };
    const auto Run = [&](P q, std::vector<double> out) {
        const bool r = Invert(k[0], k[1], k[2], k[3], q, out);
        EXPECT_EQ(r, !out.empty());
        return out;
    };
    std::vector<double> got = Run(Offset(0.4L, 0.05L), {});
    ASSERT_EQ(got.size(), 1u);
    EXPECT_NEAR(got[0], 0.4, 1e-9);
    got = Run(Offset(0.4L, -0.05L), {7});
    EXPECT_TRUE(got.size() == 2 && got[0] == 7 && std::fabs(got[1] - 0.4) < 1e-9);
    EXPECT_TRUE(Run(Offset(0.4L, 0.2L), {}).empty());
    EXPECT_EQ(Run(Offset(0.4L, 0.2L), {7}), std::vector<double>{7});
    // Just beyond either end on the extended curve, within 0.1 of the end: the nearest stationary point is outside.
    for (const LD t : {-0.01L, 1.01L}) {
        const P q = Offset(t, 0);
        const P& end = t < 0 ? s[0] : s[3];
        ASSERT_LT(std::hypot(q.x - end.x, q.y - end.y), 0.1);
        EXPECT_TRUE(Run(q, {}).empty()) << double(t);
    }
    // Points on random curves invert to their parameter.
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(0.02, 0.98);
    for (int i = 0; i < 300; ++i) {
        P p[4];
        for (P& v : p) v = qtest::RandomPoint(rng);
        Basis(p, k);
        const double t = u(rng);
        const Stat on = At(p, {0, 0}, t);
        got = Run({double(on.x), double(on.y)}, {});
        ASSERT_EQ(got.size(), 1u) << i;
        EXPECT_NEAR(got[0], t, 1e-7) << i;
    }
}
