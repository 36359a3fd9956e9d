#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;
using qtest::SameBits;

namespace {

using P = Point2d;
using LD = long double;

// The curve at t by the Bernstein sum in long double, a scheme apart from the
// de Casteljau and Horner forms under test.
std::pair<LD, LD> At(const P p[4], LD t) {
    const LD s = 1 - t, w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    LD x = 0, y = 0;
    for (int i = 0; i < 4; ++i) x += w[i] * p[i].x, y += w[i] * p[i].y;
    return {x, y};
}

// Largest coordinate gap between piece q at u and the curve p at t0 + u·(t1 − t0).
double PieceError(const P q[4], const P p[4], LD t0, LD t1) {
    LD e = 0;
    for (int i = 0; i <= 16; ++i) {
        const auto a = At(q, i / 16.0L), b = At(p, t0 + i / 16.0L * (t1 - t0));
        e = std::max({e, std::fabs(a.first - b.first), std::fabs(a.second - b.second)});
    }
    return double(e);
}

// De Casteljau with interpolation (b − a)·s + a: left piece in w[0..3], right in w[3..6].
void Casteljau(double t, const P p[4], P w[7]) {
    const auto L = [t](P a, P b) { return P{(b.x - a.x) * t + a.x, (b.y - a.y) * t + a.y}; };
    const P A = L(p[0], p[1]), M = L(p[1], p[2]), C = L(p[2], p[3]), D = L(A, M), E = L(M, C);
    const P r[7] = {p[0], A, D, L(D, E), E, C, p[3]};
    std::copy(r, r + 7, w);
}

::testing::AssertionResult Bits(const P* g, const P* w, int n) {
    for (int i = 0; i < n; ++i)
        if (!SameBits(g[i], w[i]))
            return ::testing::AssertionFailure() << "entry " << i << ": " << qtest::Near(g[i], w[i]).message();
    return ::testing::AssertionSuccess();
}

void RandomCurve(std::mt19937& rng, P p[4], double scale) {
    std::uniform_real_distribution<double> u(-scale, scale);
    for (int i = 0; i < 4; ++i) p[i] = {u(rng), u(rng)};
}

}  // namespace

TEST(BezierSplit, PiecesAreTheCasteljauPoints) {
    // lerp(0.1, 0.7, 0.3): (b − a)·s + a and (1 − s)·a + s·b differ in the last bit here;
    // a == b gives a exactly, which (1 − s)·a + s·b would not.
    const P e[4] = {{0.1, 0.1}, {0.7, 0.1}, {0.7, 0.1}, {0.7, 0.1}};
    ASSERT_NE((1 - 0.3) * 0.1 + 0.3 * 0.7, 0x1.1eb851eb851ecp-2);
    P l[4], r[4];
    LeftOf(0.3, e, l);
    EXPECT_TRUE(l[1].x == 0x1.1eb851eb851ecp-2 && l[1].y == 0.1);
    // Midpoints are (a + b)·0.5: 0.2 and 3.3 meet at 1.75 exactly, the lerp at 0.5 one ulp below.
    const P m[4] = {{0.2, 0}, {3.3, 0}, {3.3, 0}, {3.3, 0}};
    Split(m, l, r);
    EXPECT_EQ(l[1].x, 1.75);
    Split(0.5, m, l, r);
    EXPECT_EQ(l[1].x, 0x1.bffffffffffffp+0);
    // At 0: P0 four times and the input; at 1 the reverse (exact here: integral points).
    const P q[4] = {{1, -2}, {7, 5}, {-3, 8}, {4, 0}};
    P l1[4], r1[4];
    Split(0.0, q, l, r), Split(1.0, q, l1, r1);
    for (int k = 0; k < 4; ++k) EXPECT_TRUE(l[k] == q[0] && r[k] == q[k] && l1[k] == q[k] && r1[k] == q[3]) << k;

    std::mt19937 rng(11);
    std::uniform_real_distribution<double> ut(-0.5, 1.5);
    for (int i = 0; i < 3000; ++i) {
        P p[4], w[7], o[7];
        RandomCurve(rng, p, i % 3 ? 100 : 1e6);
        const double fixed[] = {0, 1, 0.5, -0.5, 1.5, 1e-300};
        const double t = i < 6 ? fixed[i] : ut(rng);
        Casteljau(t, p, w);
        Split(t, p, l, r);
        ASSERT_TRUE(Bits(l, w, 4) && Bits(r, w + 3, 4)) << i;
        const double tol = 1e-14 * (i % 3 ? 100 : 1e6) * (1 + 4 * std::fabs(t - 0.5));
        EXPECT_TRUE(PieceError(l, p, 0, t) <= tol && PieceError(r, p, t, 1) <= tol) << i;
        Split(t, p, o);
        LeftOf(t, p, l), RightOf(t, p, r);
        ASSERT_TRUE(Bits(o, w, 7) && Bits(l, w, 4) && Bits(r, w + 3, 4)) << i;
        RightOf(0.375, l, r), RightOf(0.375, l, l);  // in place on a piece written before: the same bits
        ASSERT_TRUE(Bits(l, r, 4)) << i;
        Split(p, l, r);
        EXPECT_TRUE(PieceError(l, p, 0, 0.5L) <= tol && PieceError(r, p, 0.5L, 1) <= tol) << i;
    }
}

TEST(BezierSplit, SubsectionBranchesAndTenPointLayout) {
    std::mt19937 rng(12);
    std::uniform_real_distribution<double> ut(-0.25, 1.25);
    const std::pair<double, double> fixed[] = {{0.25, 0.5}, {0.6, 0.5}, {0, 0.7},  {-0.25, 0.7}, {0.3, 1},
                                               {0.3, 1.25}, {0, 1},     {-1, 2},   {1e-9, 0.9},  {0.5, 0.5}};
    int movedShared = 0;
    for (int i = 0; i < 3000; ++i) {
        P p[4], s[4], w[4], o[10], a[4], b[4];
        RandomCurve(rng, p, 100);
        const auto [t0, t1] = i < 10 ? fixed[i] : std::make_pair(ut(rng), ut(rng));
        Subsection(t0, t1, p, s);
        if (t0 <= 0)  // by definition from the one-piece functions
            LeftOf(t1, p, w);
        else if (t1 >= 1)
            RightOf(t0, p, w);
        else
            LeftOf(t1, p, a), RightOf(t0 / t1, a, w);
        ASSERT_TRUE(Bits(s, w, 4)) << t0 << ' ' << t1;
        // The piece covers [t0, t1], clamped to [0, t1] or [t0, 1] by the first two branches.
        const LD lo = t0 <= 0 ? 0 : t0, hi = t0 > 0 && t1 >= 1 ? 1 : t1;
        const double ratio = t0 > 0 && t1 < 1 ? std::fabs(t0 / t1) : 1;  // extrapolation inflates errors
        EXPECT_LE(PieceError(s, p, lo, hi), 2e-13 * std::pow(1 + ratio, 3)) << t0 << ' ' << t1;

        // Ten points: each later piece overwrites the shared point the earlier one wrote.
        Split(t0, t1, p, o);
        LeftOf(t0, p, a), RightOf(t1, p, b);
        ASSERT_TRUE(Bits(o, a, 3) && Bits(o + 3, s, 3) && Bits(o + 6, b, 4)) << t0 << ' ' << t1;
        movedShared += !SameBits(a[3], s[0]) || !SameBits(s[3], b[0]);
    }
    EXPECT_GT(movedShared, 100);  // the overwrite order is visible

    // LeftOf(1) moves a point here ((1e-17 − 0.1)·1 + 0.1 is 0), so only the second
    // branch gives RightOf(0.3) of the input itself for t1 = 1.
    const P p[4] = {{0.1, 0}, {1e-17, 0}, {0.5, 0}, {0.25, 1}};
    P l[4], s[4], want[4], viaLeft[4];
    LeftOf(1, p, l), Subsection(0, 1, p, s);
    ASSERT_FALSE(SameBits(l[1], p[1]));
    EXPECT_TRUE(Bits(s, l, 4));
    RightOf(0.3, p, want), RightOf(0.3, l, viaLeft), Subsection(0.3, 1, p, s);
    ASSERT_FALSE(Bits(want, viaLeft, 4));
    EXPECT_TRUE(Bits(s, want, 4));
}

TEST(BezierSplitInt, MidpointInInt32) {
    tagPOINT l[4], r[4];
    const tagPOINT a[4] = {{-3, 3}, {0, 0}, {0, 0}, {0, 0}};
    Split(a, l, r);
    EXPECT_TRUE(qtest::Same(l, {{-3, 3}, {-1, 1}, {0, 0}, {0, 0}}));  // toward zero, not floor
    const tagPOINT b[4] = {{7, -7}, {0, 0}, {0, 0}, {0, 0}};  // 3, then 3/2 = 1, then 1/2 = 0
    Split(b, l, r);
    EXPECT_TRUE(qtest::Same(l, {{7, -7}, {3, -3}, {1, -1}, {0, 0}}) && qtest::Same(r, {{0, 0}, {0, 0}, {0, 0}, {0, 0}}));

    // Sums wrap in 32 bits: against int64 sums reduced modulo 2^32.
    const auto mid = [](int32_t u, int32_t v) {
        int64_t s = int64_t(u) + v;
        s += s > INT32_MAX ? -(int64_t(1) << 32) : s < INT32_MIN ? (int64_t(1) << 32) : 0;
        return int32_t(s / 2);
    };
    std::mt19937 rng(13);
    std::uniform_int_distribution<int32_t> full(INT32_MIN, INT32_MAX), edge(-8, 7);
    const auto nearLimit = [&] {  // within 8 of either end
        const int32_t k = edge(rng);
        return k < 0 ? INT32_MIN - (k + 1) : INT32_MAX - k;
    };
    for (int i = 0; i < 5000; ++i) {
        tagPOINT p[4];
        for (tagPOINT& q : p) q = i % 2 ? tagPOINT{full(rng), full(rng)} : tagPOINT{nearLimit(), nearLimit()};
        Split(p, l, r);
        for (int k = 0; k < 2; ++k) {  // x, then y
            const auto c = [k](const tagPOINT& q) { return k ? q.y : q.x; };
            const int32_t A = mid(c(p[0]), c(p[1])), M = mid(c(p[1]), c(p[2])), C = mid(c(p[2]), c(p[3]));
            const int32_t D = mid(A, M), E = mid(M, C), w[8] = {c(p[0]), A, D, mid(D, E), mid(D, E), E, C, c(p[3])};
            for (int j = 0; j < 8; ++j) ASSERT_EQ(c(j < 4 ? l[j] : r[j - 4]), w[j]) << i << ' ' << j << ' ' << k;
        }
    }
}

TEST(BezierSplitInt, ParameterFormsRoundTheDoubleForms) {
    tagPOINT o[10];
    const tagPOINT tie[4] = {{0, 0}, {5, -5}, {5, -5}, {5, -5}};
    LeftOf(0.5, tie, o);
    EXPECT_TRUE(qtest::Same(o, {{0, 0}, {3, -3}}));  // 2.5 → 3, −2.5 → −3
    const tagPOINT far[4] = {{0, 0}, {2000000000, 0}, {2000000000, 0}, {2000000000, 0}};
    LeftOf(2, far, o);  // 4e9 does not fit: the integer-indefinite value, no undefined cast
    EXPECT_TRUE(qtest::Same(o, {{0, 0}, {INT32_MIN, 0}}));

    std::mt19937 rng(14);
    std::uniform_real_distribution<double> ut(-0.5, 1.5);
    for (int i = 0; i < 3000; ++i) {
        const int32_t lim = i % 4 ? 100000 : INT32_MAX;
        std::uniform_int_distribution<int32_t> uc(-lim, lim);
        tagPOINT p[4], g[10];
        P d[4], w[10];
        for (int k = 0; k < 4; ++k) p[k] = {uc(rng), uc(rng)}, d[k] = {double(p[k].x), double(p[k].y)};
        const double t0 = ut(rng), t1 = ut(rng);
        const auto check = [&](int n) {
            for (int k = 0; k < n; ++k)
                ASSERT_TRUE(g[k].x == RoundToInt(w[k].x) && g[k].y == RoundToInt(w[k].y)) << i << ' ' << n << ' ' << k;
        };
        Split(t0, p, g, g + 4), Split(t0, d, w, w + 4), check(8);
        Split(t0, p, g), Split(t0, d, w), check(7);
        Split(t0, t1, p, g), Split(t0, t1, d, w), check(10);
        LeftOf(t0, p, g), LeftOf(t0, d, w), RightOf(t1, p, g + 4), RightOf(t1, d, w + 4), check(8);
        Subsection(t0, t1, p, g), Subsection(t0, t1, d, w), check(4);
    }
}

TEST(BezierPowerBasis, CoefficientsAndEvaluation) {
    const P q[4] = {{1, 2}, {4, -3}, {-5, 7}, {10, 1}};
    P a, b, c, d;
    GetPowerBasis(q, a, b, c, d);  // by hand: a = P3 − 3(P2 − P1) − P0 and so on
    EXPECT_TRUE(a == (P{36, -31}) && b == (P{-36, 45}) && c == (P{9, -15}) && d == (P{1, 2}));

    std::mt19937 rng(15);
    std::uniform_real_distribution<double> ut(-0.5, 1.5);
    for (int i = 0; i < 2000; ++i) {
        P p[4];
        RandomCurve(rng, p, 100);
        GetPowerBasis(p, a, b, c, d);
        EXPECT_TRUE(SameBits(Evaluate(a, b, c, d, 0), p[0]));
        for (double t : {ut(rng), 1.0, 0.5}) {
            const auto [x, y] = At(p, t);
            EXPECT_TRUE(qtest::Near(Evaluate(a, b, c, d, t), P{double(x), double(y)}, 2e-12)) << t;
            // B′ = 3[(1 − t)²(P1 − P0) + 2t(1 − t)(P2 − P1) + t²(P3 − P2)]
            const LD s = 1 - LD(t), w[3] = {3 * s * s, 6 * s * t, 3 * LD(t) * t};
            LD dx = 0, dy = 0;
            for (int k = 0; k < 3; ++k) dx += w[k] * (LD(p[k + 1].x) - p[k].x), dy += w[k] * (LD(p[k + 1].y) - p[k].y);
            EXPECT_TRUE(qtest::Near(EvaluateDerivative(a, b, c, t), Vector2d{double(dx), double(dy)}, 5e-12)) << t;
        }
    }
}
