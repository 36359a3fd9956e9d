#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;
using qtest::Basis;
using qtest::SameBits;

namespace {

using P = Point2d;
using LD = long double;

// At t, from the control points in long double (Bernstein form): the point, f = (B − q)·B′ (half the
// derivative of the squared distance), f′, and the squared distance.
struct Stat {
    LD x, y, f, df, d2;
};
Stat At(const P p[4], P q, LD t) {
    const qtest::LongPoint b = qtest::BernsteinAt(p, t), d = qtest::BernsteinAt(p, t, true);
    const LD ex = b.x - q.x, ey = b.y - q.y, s = 1 - t;
    const auto dd = [&](double P::*c) { return 6 * (s * (p[2].*c - 2 * p[1].*c + p[0].*c) + t * (p[3].*c - 2 * p[2].*c + p[1].*c)); };
    return {b.x, b.y, ex * d.x + ey * d.y, d.x * d.x + d.y * d.y + ex * dd(&P::x) + ey * dd(&P::y), ex * ex + ey * ey};
}

// The minimum distance over [0, 1]: dense sampling, then Newton on f from the best sample.
Stat Nearest(const P p[4], P q, LD& t) {
    const int n = 2000;
    int best = 0;
    LD d2 = At(p, q, 0).d2;
    for (int i = 1; i <= n; ++i)
        if (const LD e = At(p, q, LD(i) / n).d2; e < d2) best = i, d2 = e;
    t = LD(best) / n;
    for (int k = 0; best > 0 && best < n && k < 40; ++k) {
        const Stat s = At(p, q, t);
        if (s.df != 0) t -= s.f / s.df;
    }
    return At(p, q, t);
}

// The zeros of f in (0, 1): sign changes over a grid offset so that symmetric cases put no root on a
// node, bisected. {−1} when two are closer than 1e-3 or one is that near an end: such near-double
// roots are ill-conditioned for any solver, and the case is left out.
std::vector<LD> Stationary(const P p[4], P q) {
    std::vector<LD> r;
    const int n = 2000;
    for (int i = 0; i <= n; ++i) {
        LD lo = i == 0 ? 0 : (i - 0.63L) / n, hi = i == n ? 1 : (i + 0.37L) / n;
        const LD flo = At(p, q, lo).f;
        if (flo * At(p, q, hi).f >= 0) continue;
        for (int k = 0; k < 64; ++k) ((At(p, q, (lo + hi) / 2).f * flo > 0) ? lo : hi) = (lo + hi) / 2;
        if (lo < 1e-3L || lo > 1 - 1e-3L || (!r.empty() && lo - r.back() < 1e-3L)) return {-1};
        r.push_back(lo);
    }
    return r;
}

tagPOINT Round(P v) { return {static_cast<int>(std::lround(v.x)), static_cast<int>(std::lround(v.y))}; }

}  // namespace

TEST(BezierClosest, RandomCurvesAgainstLongDouble) {
    // Per curve: the nearest point against dense sampling and Newton; every stationary point, minima and
    // maxima alike, in t order after what the vectors held; the integer forms against the double ones.
    std::mt19937 rng(5);
    int interior = 0, compared = 0;
    for (int i = 0; i < 1500; ++i) {
        P p[4], q = qtest::RandomPoint(rng), n{}, n2{}, dp[4];
        tagPOINT ip[4], iq = Round(q), in{};
        for (int j = 0; j < 4; ++j)
            p[j] = qtest::RandomPoint(rng), ip[j] = Round({p[j].x * 3, p[j].y * 3}), dp[j] = {1. * ip[j].x, 1. * ip[j].y};
        const Basis B(p);
        double t = -1, dd = -1, t2 = -1, dd2 = -1;
        const bool ok = FindClosestPointOnBezier(B.a, B.b, B.c, B.d, q, t, n, dd);
        EXPECT_EQ(FindClosestPointOnBezier(p, q, t2, n2, dd2), ok);
        EXPECT_TRUE(SameBits(t, t2) && SameBits(n, n2) && SameBits(dd, dd2)) << i;
        LD rt;
        const Stat ref = Nearest(p, q, rt);
        const double tol = 1e-10 * (1 + double(ref.d2));
        if (rt > 0 && rt < 1) {  // an interior minimum is stationary: it must be found
            ++interior;
            ASSERT_TRUE(ok) << i;
            EXPECT_NEAR(dd, double(ref.d2), tol) << i;
        }
        if (ok) {  // a stationary point of the curve in [0, 1], never nearer than the true minimum
            const Stat at = At(p, q, t);
            EXPECT_TRUE(t >= 0 && t <= 1 && qtest::Near(n, P{double(at.x), double(at.y)}, 1e-12)) << i;
            EXPECT_TRUE(std::fabs(dd - double(at.d2)) <= tol && dd >= double(ref.d2) - tol) << i << ' ' << dd;
        }
        const std::vector<LD> all = Stationary(p, q);
        std::vector<double> ts{-1}, ds{-1}, its{-1}, ids{-1};
        std::vector<P> pts{{}};
        std::vector<tagPOINT> ipts{{}};
        const bool any = FindClosestPointsOnBezier(p, q, ts, pts, ds);
        EXPECT_TRUE(ts[0] == -1 && ds[0] == -1);
        if (all.empty() || all[0] >= 0) {
            ++compared;
            ASSERT_TRUE(any == !all.empty() && ts.size() == all.size() + 1 && pts.size() == ts.size() && ds.size() == ts.size()) << i;
            for (size_t j = 0; j < all.size(); ++j) {
                const Stat at = At(p, q, all[j]);
                EXPECT_TRUE(std::fabs(ts[j + 1] - double(all[j])) < 1e-9 && qtest::Near(pts[j + 1], P{double(at.x), double(at.y)}, 1e-8) &&
                            std::fabs(ds[j + 1] - double(at.d2)) < 1e-8 * (1 + double(at.d2))) << i << ' ' << j;
            }
        }
        // The integer forms compute in doubles: the parameters of the double forms, the points rounded half
        // away from zero, the distance that of the unrounded point (one result) or of the rounded ones (all).
        const P dq{1. * iq.x, 1. * iq.y};
        const bool iok = FindClosestPointOnBezier(ip, iq, t, in, dd);
        EXPECT_EQ(FindClosestPointOnBezier(dp, dq, t2, n2, dd2), iok) << i;
        EXPECT_TRUE(!iok || (SameBits(t, t2) && SameBits(dd, dd2) && qtest::Same(&in, {Round(n2)}) &&
                             SameBits(FindClosestPointOnBezier(ip, iq), t))) << i;
        ts = {}, pts = {}, ds = {};
        EXPECT_EQ(FindClosestPointsOnBezier(ip, iq, its, ipts, ids), FindClosestPointsOnBezier(dp, dq, ts, pts, ds));
        ASSERT_TRUE(its.size() == ts.size() + 1 && ipts.size() == its.size() && ids.size() == its.size()) << i;
        for (size_t j = 0; j < ts.size(); ++j) {
            const tagPOINT r = Round(pts[j]);
            EXPECT_TRUE(SameBits(its[j + 1], ts[j]) && qtest::Same(&ipts[j + 1], {r}) &&
                        ids[j + 1] == double(r.x - iq.x) * (r.x - iq.x) + double(r.y - iq.y) * (r.y - iq.y)) << i;
        }
    }
    EXPECT_GT(interior, 500);
    EXPECT_GT(compared, 1000);
}

TEST(BezierClosest, EdgeCases) {
    const P s[4] = {{0, 0}, {1, 2}, {2, -2}, {3, 0}}, arch[4] = {{0, 0}, {0, 1}, {1, 1}, {1, 0}};
    const P flat[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}}, dot[4] = {{2, 2}, {2, 2}, {2, 2}, {2, 2}};
    const Basis B(s);  // on the curve at 0.3 of an S
    P n{9, 9};
    double t = 7, dd = -1;
    EXPECT_TRUE(FindClosestPointOnBezier(s, Evaluate(B.a, B.b, B.c, B.d, 0.3), t, n, dd));
    EXPECT_TRUE(std::fabs(t - 0.3) < 1e-9 && dd < 1e-24) << t << " " << dd;
    // From (0.5, 0) the arch's ends are stationary and equally near (exactly 0.25): the smaller t wins.
    EXPECT_TRUE(FindClosestPointOnBezier(arch, {0.5, 0}, t, n, dd));
    EXPECT_TRUE(t == 0 && n == arch[0] && dd == 0.25) << t;
    // No stationary point (a point; the projection beyond an end): false, outputs untouched.
    t = 7, n = {9, 9}, dd = -1;
    const tagPOINT idot[4] = {{2, 2}, {2, 2}, {2, 2}, {2, 2}}, iflat[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}},
                   iarch[4] = {{0, 0}, {0, 2}, {2, 2}, {2, 0}};
    tagPOINT in{9, 9};
    EXPECT_FALSE(FindClosestPointOnBezier(dot, {5, 1}, t, n, dd) || FindClosestPointOnBezier(flat, {5, 1}, t, n, dd) ||
                 FindClosestPointOnBezier(idot, {5, 1}, t, in, dd));
    EXPECT_TRUE(t == 7 && n.x == 9 && n.y == 9 && in.x == 9 && in.y == 9 && dd == -1);
    // The t-returning form: its own t on success (the tie gives 0), else the nearer end, 1 on equal distances.
    const struct { const tagPOINT* curve; tagPOINT q; double t; } ends[] = {
        {iarch, {1, 0}, 0.0}, {iflat, {5, 1}, 1.0}, {iflat, {-2, 1}, 0.0}, {idot, {7, -3}, 1.0}};
    for (const auto& e : ends) EXPECT_EQ(FindClosestPointOnBezier(e.curve, e.q), e.t) << e.q.x;
}

TEST(BezierClosest, Invert) {
    const P s[4] = {{0, 0}, {3, 6}, {6, -6}, {9, 0}};
    const auto Off = [&](LD t, LD h) {  // h along the unit left normal at t
        const qtest::LongPoint a = qtest::BernsteinAt(s, t), d = qtest::BernsteinAt(s, t, true);
        const LD len = std::hypot(d.x, d.y);
        return P{double(a.x - h * d.y / len), double(a.y + h * d.x / len)};
    };
    const auto Run = [](const P p[4], P q, std::vector<double> out) {
        const Basis B(p);
        const bool r = Invert(B.a, B.b, B.c, B.d, q, out);
        EXPECT_EQ(r, !out.empty());
        return out;
    };
    std::vector<double> got = Run(s, Off(0.4L, 0.05L), {});
    EXPECT_TRUE(got.size() == 1 && std::fabs(got[0] - 0.4) < 1e-9);
    got = Run(s, Off(0.4L, -0.05L), {7});
    EXPECT_TRUE(got.size() == 2 && got[0] == 7 && std::fabs(got[1] - 0.4) < 1e-9);
    EXPECT_TRUE(Run(s, Off(0.4L, 0.2L), {}).empty());
    EXPECT_EQ(Run(s, Off(0.4L, 0.2L), {7}), std::vector<double>{7});
    // Just beyond either end on the extended curve, within 0.1 of the end: its nearest stationary point
    // lies outside [0, 1], so nothing is appended.
    for (const LD t : {-0.003L, 1.003L}) {
        const P q = Off(t, 0), &end = t < 0 ? s[0] : s[3];
        ASSERT_LT(std::hypot(q.x - end.x, q.y - end.y), 0.1);
        EXPECT_TRUE(Run(s, q, {}).empty()) << double(t);
    }
    // Points on random curves invert to their parameter.
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(0.02, 0.98);
    for (int i = 0; i < 300; ++i) {
        P p[4];
        for (P& v : p) v = qtest::RandomPoint(rng);
        const double t = u(rng);
        const qtest::LongPoint on = qtest::BernsteinAt(p, t);
        got = Run(p, {double(on.x), double(on.y)}, {});
        EXPECT_TRUE(got.size() == 1 && std::fabs(got[0] - t) < 1e-7) << i;
    }
}
