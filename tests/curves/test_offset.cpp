#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using qtest::kInf;
using qtest::kNaN;

namespace {

using P = Point2d;
using LD = long double;

// B′ (Bernstein weights) and B″ = 6[(1 − t)(P2 − 2P1 + P0) + t(P3 − 2P2 + P1)], in long double.
struct Jet {
    LD x1, y1, x2, y2;
};
Jet JetAt(const P p[4], LD t) {
    const qtest::LongPoint v = qtest::BernsteinAt(p, t, true);
    const auto second = [&](double P::*c) {
        return 6 * ((1 - t) * (p[2].*c - 2 * p[1].*c + p[0].*c) + t * (p[3].*c - 2 * p[2].*c + p[1].*c));
    };
    return {v.x, v.y, second(&P::x), second(&P::y)};
}

// The exact offset point B(t) + d·(unit left normal).
qtest::LongPoint OffsetAt(const P p[4], LD t, LD d) {
    const qtest::LongPoint b = qtest::BernsteinAt(p, t);
    const Jet j = JetAt(p, t);
    const LD len = std::sqrt(j.x1 * j.x1 + j.y1 * j.y1);
    return {b.x - d * j.y1 / len, b.y + d * j.x1 / len};
}

// Offsetting is refused only when at t = ½, ¼ and ¾ alike the signed radius
// |B′|³ / (B′ × B″) lies on the side of d and short of it.
bool Acceptable(const P p[4], LD d, LD* nearest = nullptr) {
    bool ok = false;
    for (const LD t : {0.25L, 0.5L, 0.75L}) {
        const Jet j = JetAt(p, t);
        const LD k = j.x1 * j.y2 - j.y1 * j.x2, r = std::pow(j.x1 * j.x1 + j.y1 * j.y1, 1.5L) / k;
        if (nearest) *nearest = std::min(*nearest, std::fabs(r - d) / (std::fabs(d) + 1));
        ok = ok || !((d > 0 && 0 <= r && r < d) || (d < 0 && d < r && r < 0));
    }
    return ok;
}

}  // namespace

TEST(OffsetValidity, WorkedCurves) {
    const double k = 10 * 4 * (std::sqrt(2.0) - 1) / 3;
    const P arc[4] = {{10, 0}, {10, k}, {k, 10}, {0, 10}}, back[4] = {arc[3], arc[2], arc[1], arc[0]};
    const P line[4] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}};
    const P cusp[4] = {{0, 0}, {1, 1}, {0, 1}, {1, 0}};  // B′(½) = 0: no curvature at the midpoint
    const struct { const P* p; double d; bool ok; } cases[] = {
        {arc, 5, true},    {arc, 15, false},  {arc, -15, true}, {arc, -5, true},  {arc, 0, true},
        {back, -5, true},  {back, -15, false}, {back, 15, true},  {line, 1e9, true}, {line, -1e9, true},
        {cusp, 1e6, true}, {cusp, -1e6, true},
    };
    for (const auto& c : cases) {
        const qtest::Basis b(c.p);
        EXPECT_EQ(IsBezierValidForOffset(c.p, c.d), c.ok) << c.p[0].x << " " << c.d;
        EXPECT_EQ(IsBezierValidForOffset(b.a, b.b, b.c, c.d), c.ok) << c.p[0].x << " " << c.d;
    }
}

TEST(OffsetValidity, MatchesTheRadiiAtThreeSamples) {
    std::mt19937 rng(11);
    int refused = 0, accepted = 0;
    for (int rep = 0; rep < 400; ++rep) {
        const P p[4] = {qtest::RandomPoint(rng), qtest::RandomPoint(rng), qtest::RandomPoint(rng), qtest::RandomPoint(rng)};
        for (const double t : {0.25, 0.5, 0.75})
            for (const double f : {-1.02, -0.98, 0.98, 1.02, 0.0}) {
                // d just either side of each sample's radius, of either sign.
                const Jet j = JetAt(p, t);
                const double r = double(std::pow(j.x1 * j.x1 + j.y1 * j.y1, 1.5L) / (j.x1 * j.y2 - j.y1 * j.x2));
                const double d = f * std::fabs(r);
                LD nearest = 1;
                const bool want = Acceptable(p, d, &nearest);
                if (nearest < 1e-9) continue;
                ASSERT_EQ(IsBezierValidForOffset(p, d), want) << rep << " " << d;
                (want ? accepted : refused)++;
            }
    }
    EXPECT_GT(refused, 100);
    EXPECT_GT(accepted, 100);
}

TEST(OffsetCurve, StraightSegment) {
    const P line[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    for (const double d : {2.0, -2.0}) {
        P out[4];
        double status = 7;
        EXPECT_TRUE(FindBezierOffsetCurve(line, out, d, 1e-20, status));
        EXPECT_EQ(status, 0.5);
        for (int i = 0; i < 4; ++i) EXPECT_TRUE(qtest::Near(out[i], P{double(i), d}, 1e-12)) << i;
        status = 7;
        EXPECT_FALSE(FindBezierOffsetCurve(line, out, d, 0.0, status));  // the error is not below 0
        EXPECT_EQ(status, 0.5);
    }
}

TEST(OffsetWhole, PiecesFitTheExactOffset) {
    std::mt19937 rng(2024);
    const double tolerance = 0.02;
    int withCusps = 0, fitted = 0, failed = 0;
    for (int rep = 0; rep < 50; ++rep) {
        const P p[4] = {qtest::RandomPoint(rng), qtest::RandomPoint(rng), qtest::RandomPoint(rng), qtest::RandomPoint(rng)};
        for (const double d : {-4.0, -0.7, 0.5, 3.0}) {
            std::vector<double> cuts{5, 6}, cusps, sameCuts{7};
            std::vector<P> out{{9, 9}};
            const bool ok = GetSegmentsToOffset(p, d, tolerance, cuts);
            ASSERT_EQ(OffsetBezier(p, d, tolerance, out, &sameCuts), ok);
            ASSERT_EQ(sameCuts, cuts);
            ASSERT_EQ(out.size(), 1 + 4 * (cuts.size() - 1));
            ASSERT_TRUE(cuts.size() >= 2 && cuts.front() == 0 && cuts.back() == 1);
            const qtest::Basis b(p);
            CubicBezier::FindOffsetCusps(b.a, b.b, b.c, d, cusps);
            std::vector<double> ends{0, 1};  // where pieces may be arbitrarily short
            for (const double t : cusps)
                if (t > 0 && t < 1) ends.push_back(t);
            for (const double t : ends) EXPECT_EQ(std::count(cuts.begin(), cuts.end(), t), 1) << rep << " " << d;
            withCusps += ends.size() > 2;
            failed += !ok;
            bool smallest = false;  // a piece that could not be halved again
            for (size_t i = 0; i + 1 < cuts.size(); ++i) {
                const double lo = cuts[i], hi = cuts[i + 1];
                ASSERT_LT(lo, hi);
                smallest = smallest || hi - lo <= 1.0 / 64;
                // Halving stops at 1/64: only a cusp makes a piece shorter, and never
                // below half that unless the piece runs from one cusp (or end) to the next.
                const bool bounded = std::count(ends.begin(), ends.end(), lo) && std::count(ends.begin(), ends.end(), hi);
                EXPECT_TRUE(ends.size() > 2 || hi - lo >= 1.0 / 64) << rep << " " << d << " " << lo;
                EXPECT_TRUE(bounded || hi - lo > 1.0 / 128) << rep << " " << d << " " << lo;
                // A piece wide enough to halve was accepted, so its offset is usable.
                P piece[4];
                CubicBezier::Subsection(lo, hi, p, piece);
                LD nearest = 1;
                EXPECT_TRUE(hi - lo <= 1.0 / 64 || Acceptable(piece, d, &nearest) || nearest < 1e-9) << rep << " " << d;
                // Every fitted piece, good or not, runs from the offset point at lo to that at hi.
                const P* f = &out[1 + 4 * i];
                for (const auto& [end, t] : {std::pair{f[0], lo}, std::pair{f[3], hi}}) {
                    const qtest::LongPoint o = OffsetAt(p, t, d);
                    EXPECT_NEAR(double(std::hypot(end.x - o.x, end.y - o.y)), 0.0, 1e-8) << rep << " " << d << " " << t;
                }
                if (!ok) continue;
                // Every point of the fitted piece lies near the exact offset over [lo, hi]
                // (dense search, then ternary refinement). The fit is judged at its
                // samples only, so between them it may stray a little further.
                for (int s = 0; s <= 12; ++s) {
                    const qtest::LongPoint x = qtest::BernsteinAt(f, s / 12.0L);
                    const auto gap = [&](LD t) {
                        const qtest::LongPoint o = OffsetAt(p, t, d);
                        return std::hypot(o.x - x.x, o.y - x.y);
                    };
                    LD best = lo;
                    for (int k = 1; k <= 64; ++k) best = std::min<LD>(best, lo + (hi - lo) * k / 64, [&](LD x1, LD x2) {
                        return gap(x1) < gap(x2);
                    });
                    LD a = std::max<LD>(lo, best - (hi - lo) / 64), c = std::min<LD>(hi, best + (hi - lo) / 64);
                    for (int it = 0; it < 60; ++it) {
                        const LD m1 = (2 * a + c) / 3, m2 = (a + 2 * c) / 3;
                        const bool left = gap(m1) < gap(m2);
                        (left ? c : a) = left ? m2 : m1;
                    }
                    ASSERT_LE(double(gap((a + c) / 2)), 1.25 * tolerance) << rep << " " << d << " piece " << i << " s " << s;
                }
                fitted++;
            }
            EXPECT_TRUE(ok || smallest) << rep << " " << d;  // a refusal comes from the halving limit
        }
    }
    EXPECT_GT(withCusps, 10);
    EXPECT_GT(failed, 5);
    EXPECT_GT(fitted, 200);
}

TEST(OffsetWhole, NonFiniteInput) {
    const struct { P p1; double y3, d, tolerance; } cases[] = {
        {{kNaN, 2}, 0, 1, 0.1}, {{1, kInf}, 0, 1, 0.1}, {{1, 2}, -kInf, 1, 0.1},
        {{1, 2}, 0, kNaN, 0.1}, {{1, 2}, 0, kInf, 0.1}, {{1, 2}, 0, 1, kNaN},
    };
    for (const auto& c : cases) {
        const P p[4] = {{0, 0}, c.p1, {3, 2}, {4, c.y3}};
        std::vector<double> cuts{0.3};
        std::vector<P> out{{9, 9}};
        EXPECT_FALSE(GetSegmentsToOffset(p, c.d, c.tolerance, cuts));
        EXPECT_EQ(cuts, (std::vector<double>{0, 1}));
        EXPECT_FALSE(OffsetBezier(p, c.d, c.tolerance, out));
        EXPECT_EQ(out.size(), 1u);
    }
}
