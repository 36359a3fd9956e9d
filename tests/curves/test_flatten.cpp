#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using qtest::SameBits;

namespace {

using P = Point2d;
using LD = long double;

// B(t) by Horner's rule on a = P3 − 3(P2 − P1) − P0, b = 3(P2 − 2P1 + P0),
// c = 3(P1 − P0), d = P0: the bits that the flattened points must have.
P Horner(const P p[4], double t) {
    const auto h = [t](double p0, double p1, double p2, double p3) {
        return (((p3 - 3 * (p2 - p1) - p0) * t + 3 * (p2 - 2 * p1 + p0)) * t + 3 * (p1 - p0)) * t + p0;
    };
    return {h(p[0].x, p[1].x, p[2].x, p[3].x), h(p[0].y, p[1].y, p[2].y, p[3].y)};
}

// The curve at t by the Bernstein sum in long double.
std::pair<LD, LD> Exact(const P p[4], LD t) {
    const LD s = 1 - t, w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    return {w[0] * p[0].x + w[1] * p[1].x + w[2] * p[2].x + w[3] * p[3].x,
            w[0] * p[0].y + w[1] * p[1].y + w[2] * p[2].y + w[3] * p[3].y};
}

::testing::AssertionResult Fail() { return ::testing::AssertionFailure(); }
P ToP(const tagPOINT& q) { return {double(q.x), double(q.y)}; }
// g is w stored by the library's rounding rule.
bool Rounds(const tagPOINT& g, const P& w) { return g.x == RoundToInt(w.x) && g.y == RoundToInt(w.y); }

// Forced depth from the control polygon's larger travel L: L²/tol against 900, 22500, 490000.
int MinDepth(const P p[4], double tol) {
    if (tol == 0) return 0;
    double lx = 0, ly = 0;
    for (int i = 0; i < 3; ++i) lx += std::fabs(p[i + 1].x - p[i].x), ly += std::fabs(p[i + 1].y - p[i].y);
    const double r = std::max(lx, ly) * std::max(lx, ly) / tol;
    return r >= 490000 ? 3 : r >= 22500 ? 2 : r >= 900 ? 1 : 0;
}

// An adaptive flattening out[0..n] checked against the rules that define it, not by
// rerunning it: every point is B at a multiple of 1/N (N = 2^(D+1), D = ⌊log2 m⌋ − 1),
// recovered from its bits; consecutive triples out[2j..2j+2] tile [0, 1] with dyadic
// intervals between the minimum and the maximum depth; an interval that stopped above
// depth D is flat, and one below the minimum depth has a parent that was not.
::testing::AssertionResult FollowsRules(const P p[4], const P* out, int n, double tol, int m) {
    const int D = std::ilogb(double(m)) - 1, M = std::min(MinDepth(p, tol), D), N = 2 << D;
    if (n % 2 || n < (2 << M) || n > N) return Fail() << "count " << n << ", depths " << M << ".." << D;
    if (!SameBits(out[0], p[0]) || !SameBits(out[n], p[3])) return Fail() << "end points";
    const P E = p[0] == p[3] ? P{p[3].x - 1, p[3].y - 1} : p[3];  // the chord end at t = 1
    const auto at = [&](int j) { return j == 0 ? p[0] : j == N ? E : Horner(p, double(j) / N); };
    std::vector<int> T(n + 1, N);
    T[0] = 0;
    double size = 1;
    for (int k = 0; k < 4; ++k) size = std::max({size, std::fabs(p[k].x), std::fabs(p[k].y)});
    for (int i = 1; i < n; ++i) {
        int j = T[i - 1] + 1;
        while (j < N && !SameBits(Horner(p, double(j) / N), out[i])) ++j;
        if (j == N) return Fail() << "point " << i << " is not B(j/" << N << ") for j > " << T[i - 1];
        const auto [x, y] = Exact(p, LD(j) / N);
        if (std::fabs(x - out[i].x) > 1e-13 * size || std::fabs(y - out[i].y) > 1e-13 * size)
            return Fail() << "point " << i << " is off the curve";
        T[i] = j;
    }
    const auto flat = [&](int a, int b) {
        const P q0 = at(a), qm = at((a + b) / 2), q1 = at(b);
        const double dx = q0.x - q1.x, dy = q0.y - q1.y, cross = (qm.y - q1.y) * dx - (qm.x - q1.x) * dy;
        return (dx == 0 && dy == 0) || (dx * dx + dy * dy) * tol > cross * cross;
    };
    for (int i = 0; i < n; i += 2) {
        const int a = T[i], b = T[i + 2], w = b - a, depth = D + 1 - std::ilogb(double(w)), parent = a - a % (2 * w);
        if (w < 2 || (w & (w - 1)) || a % w || 2 * T[i + 1] != a + b || depth < M)
            return Fail() << "interval " << a << ".." << T[i + 1] << ".." << b << " of " << N;
        if (depth < D && !flat(a, b)) return Fail() << "emitted unflat " << a << ".." << b << " of " << N;
        if (depth > M && flat(parent, parent + 2 * w))
            return Fail() << "split flat " << parent << ".." << parent + 2 * w << " of " << N;
    }
    return ::testing::AssertionSuccess();
}

const P kCurve[4] = {{0, 0}, {30, 80}, {90, -40}, {100, 10}};
constexpr P kUnset{qtest::kNaN, 0};

}  // namespace

TEST(FlattenCount, SizeClasses) {
    const struct { tagRECT box; int m, want; } rects[] = {
        {{0, 0, 650, 0}, 100, 100}, {{0, 0, 649, 0}, 100, 50}, {{0, 160, 0, 0}, 100, 50}, {{0, 0, 0, 159}, 100, 25},
        {{5, 30, 10, 0}, 100, 25},  {{0, 29, 29, 0}, 100, 12}, {{0, 29, 29, 0}, 7, 0},     {{0, 0, 29, 0}, -100, -12},
        {{1000, 10, 0, 0}, 100, 12},   // right < left: the width −1000 does not count, the height 10 does
        {{1000, 0, 0, 700}, 100, 100},  // top < bottom: the height is made absolute
    };
    for (const auto& c : rects)
        EXPECT_EQ(CalculateNumBezierLines(c.box, c.m), c.want) << c.box.left << ' ' << c.box.top << ' ' << c.box.right;
    const struct { P p[4]; int want; } points[] = {  // m = 100; the integral rows through tagPOINT too
        {{{0, 0}, {649, 5}, {3, -2}, {10, 0}}, 50},     {{{5, 5}, {5, -645}, {5, 0}, {5, 5}}, 100},
        {{{0, 0}, {0, 0}, {-30, 0}, {0, 0}}, 25},       {{{0, 0}, {10, 0}, {29, 0}, {0, 29}}, 12},
        {{{0.2, 0}, {10, 5}, {29.9, 3}, {15, 1}}, 25},  // floor 0 to ceil 30, though 29.7 wide
        {{{29.5, 0}, {0, 0}, {0, 0}, {0, 0}}, 25},      // P0 alone spans 29 to 30
        {{{0, -0.1}, {0, 0}, {0, 28.9}, {0, 0}}, 25},   // −1 to 29
        {{{0, 0}, {649.5, 0}, {0, 0}, {0, 0}}, 100},    // to 650
    };
    for (const auto& c : points) {
        EXPECT_EQ(CalculateNumBezierLines(c.p, 100), c.want) << c.p[0].x << ' ' << c.p[1].x;
        tagPOINT ip[4];
        bool integral = true;
        for (int k = 0; k < 4; ++k) ip[k] = {int32_t(c.p[k].x), int32_t(c.p[k].y)}, integral &= ToP(ip[k]) == c.p[k];
        EXPECT_TRUE(!integral || CalculateNumBezierLines(ip, 100) == c.want) << c.p[1].x;
    }
}

TEST(FlattenUniform, EndsCopiedInteriorEvaluated) {
    std::mt19937 rng(31);
    std::uniform_real_distribution<double> u(-100, 100);
    for (int i = 0; i < 400; ++i) {
        P p[4], dp[4];
        tagPOINT ip[4];
        for (int k = 0; k < 4; ++k) {
            p[k] = {u(rng), u(rng)};
            ip[k] = {RoundToInt(p[k].x * 1000), RoundToInt(p[k].y * 1000)}, dp[k] = ToP(ip[k]);
        }
        for (int n : {1, 2, 3, 7, 64}) {
            std::vector<P> out(n + 2, kUnset), dout(n + 1);
            BezierToLines(p, out.data(), n);
            ASSERT_TRUE(SameBits(out[0], p[0]) && SameBits(out[n], p[3]) && std::isnan(out[n + 1].x)) << i;
            for (int k = 1; k < n; ++k) {
                ASSERT_TRUE(SameBits(out[k], Horner(p, double(k) / n))) << i << ' ' << n << ' ' << k;
                const auto [x, y] = Exact(p, LD(k) / n);
                EXPECT_TRUE(qtest::Near(out[k], P{double(x), double(y)}, 1e-12)) << i << ' ' << n << ' ' << k;
            }
            // Integer points: the same computation in doubles, each coordinate rounded.
            std::vector<tagPOINT> iout(n + 2, tagPOINT{7, 7});
            BezierToLines(ip, iout.data(), n), BezierToLines(dp, dout.data(), n);
            for (int k = 0; k <= n; ++k)
                ASSERT_TRUE(Rounds(iout[k], dout[k])) << i << ' ' << n << ' ' << k;
            EXPECT_TRUE(iout[n + 1].x == 7 && iout[n + 1].y == 7);
        }
    }
    P out[3] = {kUnset, kUnset, kUnset};
    BezierToLines(kCurve, out, -2);  // nothing written
    EXPECT_TRUE(std::isnan(out[0].x) && std::isnan(out[1].x));
    BezierToLines(kCurve, out, 0);  // P0, then P3 over it
    EXPECT_TRUE(SameBits(out[0], kCurve[3]) && std::isnan(out[1].x));
    const tagPOINT tie[4] = {{0, 0}, {0, 0}, {5, -5}, {5, -5}};  // B(½) = (2.5, −2.5), exactly
    tagPOINT io[3];
    BezierToLines(tie, io, 2);
    EXPECT_TRUE(qtest::Same(io, {{0, 0}, {3, -3}, {5, -5}}));
}

TEST(FlattenAdaptive, MaximaAndDegenerateCurves) {
    P out[65];
    std::fill(out, out + 65, kUnset);
    for (int m : {0, -1, INT32_MIN}) EXPECT_EQ(AdaptiveBezierToLines(kCurve, out, 0.25, m), 0);
    EXPECT_TRUE(std::isnan(out[0].x));
    EXPECT_EQ(AdaptiveBezierToLines(kCurve, out, 0.25, 1), 1);
    EXPECT_TRUE(SameBits(out[0], kCurve[0]) && SameBits(out[1], kCurve[3]) && std::isnan(out[2].x));
    // m = 2, 3: depth 0 is also the maximum, the midpoint whatever tol (and random curves below).
    EXPECT_EQ(AdaptiveBezierToLines(kCurve, out, 1e12, 3), 2);
    EXPECT_TRUE(SameBits(out[1], Horner(kCurve, 0.5)) && SameBits(out[2], kCurve[3]) && std::isnan(out[3].x));
    // Tolerance 0 or below: the largest power of two, up to a deep stack.
    const tagPOINT ip[4] = {{0, 0}, {30, 80}, {90, -40}, {100, 10}};
    for (auto [m, lines] : {std::pair{7, 4}, {8, 8}, {5000, 4096}, {1 << 20, 1 << 20}}) {
        std::vector<P> big(m + 1);
        std::vector<tagPOINT> ibig(m + 1);
        EXPECT_EQ(AdaptiveBezierToLines(kCurve, big.data(), 0, m), lines) << m;
        EXPECT_EQ(AdaptiveBezierToLines(ip, ibig.data(), -1, m), lines) << m;
    }
    // One point four times: the midpoint lies on the line to P3 − (1, 1), so two lines.
    const P dot[4] = {{3.5, -2}, {3.5, -2}, {3.5, -2}, {3.5, -2}};
    ASSERT_EQ(AdaptiveBezierToLines(dot, out, 0.25, 64), 2);
    EXPECT_TRUE(SameBits(out[0], dot[0]) && SameBits(out[1], dot[0]) && SameBits(out[2], dot[0]));
    // With tol 0 only zero chords stop early: [0, ½] (P to P), then [½, ¾], … down to depth 5.
    EXPECT_EQ(AdaptiveBezierToLines(dot, out, 0, 64), 12);
    // Closed: its zero chord would stop at two lines; against P3 − (1, 1) the first test fails.
    const P loop[4] = {{0, 0}, {100, 100}, {-100, 100}, {0, 0}};
    const int n = AdaptiveBezierToLines(loop, out, 100, 64);
    EXPECT_GT(n, 2);
    EXPECT_TRUE(FollowsRules(loop, out, n, 100, 64));
}

TEST(FlattenAdaptive, MinimumDepthThresholds) {
    // Collinear controls on an axis: every midpoint is on its chord, so the flattening
    // stops exactly at the minimum depth, 2^(M+1) lines.
    const struct { P end; double tol; int m, lines; } cases[] = {
        {{30, 0}, 1, 64, 4},  {{30, 0}, 1.0000000001, 64, 2},  {{0, 15}, 0.25, 64, 4},  {{150, 0}, 1, 64, 8},
        {{0, 150}, 1.0000000001, 64, 4},  {{0, -700}, 1, 64, 16},  {{700, 0}, 1.0000000001, 64, 8},
        {{700, 0}, 1, 8, 8},  {{700, 0}, 1, 7, 4},
        {{30, 0}, -1, 64, 64},  // a negative tolerance never passes
    };
    P out[65];
    for (const auto& c : cases) {
        const P p[4] = {{0, 0}, {0, 0}, {0, 0}, c.end};
        const int n = AdaptiveBezierToLines(p, out, c.tol, c.m);
        EXPECT_EQ(n, c.lines) << c.end.x << ' ' << c.end.y << ' ' << c.tol << ' ' << c.m;
        EXPECT_TRUE(FollowsRules(p, out, n, c.tol, c.m)) << c.end.x << ' ' << c.end.y << ' ' << c.tol;
    }
    const P zigzag[4] = {{0, 0}, {30, 0}, {20, 0}, {40, 0}};  // travel 60, extent 40: 60²/4 = 900
    EXPECT_EQ(AdaptiveBezierToLines(zigzag, out, 4, 64), 4);
}

TEST(FlattenAdaptive, RandomCurvesFollowTheRules) {
    std::mt19937 rng(33);
    const double tols[] = {0, -1, 1e-4, 0.01, 0.25, 4, 100, 1e4};
    const int ms[] = {2, 3, 4, 7, 16, 100, 255, 1000, 2047, 2048, 5000};
    for (int i = 0; i < 880; ++i) {
        std::uniform_real_distribution<double> u(-std::pow(10.0, i % 5), std::pow(10.0, i % 5));
        P p[4], dp[4];
        tagPOINT ip[4];
        for (P& q : p) q = {u(rng), u(rng)};
        if (i % 7 == 0) p[3] = p[0];                 // closed
        if (i % 7 == 3) p[1] = p[0], p[2] = p[3];  // straight, up to rounding
        const double tol = tols[i % 8];
        const int m = ms[i % 11];
        std::vector<P> out(m + 2, kUnset), dout(m + 1);
        const int n = AdaptiveBezierToLines(p, out.data(), tol, m);
        ASSERT_TRUE(FollowsRules(p, out.data(), n, tol, m)) << i;
        EXPECT_TRUE(std::isnan(out[n + 1].x)) << i;
        // Integer points: the double computation on the converted coordinates, rounded.
        for (int k = 0; k < 4; ++k) ip[k] = {RoundToInt(p[k].x), RoundToInt(p[k].y)}, dp[k] = ToP(ip[k]);
        std::vector<tagPOINT> iout(m + 1);
        const int nd = AdaptiveBezierToLines(dp, dout.data(), tol, m);
        ASSERT_EQ(AdaptiveBezierToLines(ip, iout.data(), tol, m), nd) << i;
        for (int k = 0; k <= nd; ++k)
            ASSERT_TRUE(Rounds(iout[k], dout[k])) << i << ' ' << k;
    }
}

TEST(FlattenInt, DifferencesWrapInInt32) {
    // x travel formed in int32: INT32_MAX → INT32_MIN is a step of +1, so L = 1 and
    // L²/tol = 1024 asks for depth 1 (the true travel would ask for 3). y = 0: all flat.
    const tagPOINT wrap[4] = {{INT32_MAX, 0}, {INT32_MIN, 0}, {INT32_MIN, 0}, {INT32_MIN, 0}};
    std::vector<tagPOINT> out(65);
    EXPECT_EQ(AdaptiveBezierToLines(wrap, out.data(), 1.0 / 1024, 64), 4);
    EXPECT_TRUE(qtest::Same(&out[4], {wrap[3]}));
    // Extremes must stay defined: steps of |INT32_MIN|, sums and boxes spanning 2^32.
    constexpr int32_t lo = INT32_MIN, hi = INT32_MAX;
    const tagPOINT wild[][4] = {{{0, 0}, {lo, 0}, {0, 0}, {0, 0}},
                                {{lo, hi}, {hi, lo}, {lo, hi}, {hi, lo}},
                                {{lo, lo}, {lo, lo}, {hi, hi}, {hi, hi}}};
    for (const auto& p : wild) {
        for (double tol : {0.0, 0.25}) {
            const int n = AdaptiveBezierToLines(p, out.data(), tol, 64);
            EXPECT_TRUE(n >= 2 && n <= 64 && n % 2 == 0);
            EXPECT_TRUE(qtest::Same(out.data(), {p[0]}) && qtest::Same(&out[n], {p[3]}));
        }
        BezierToLines(p, out.data(), 16);
        EXPECT_TRUE(qtest::Same(out.data(), {p[0]}) && qtest::Same(&out[16], {p[3]}));
        EXPECT_EQ(CalculateNumBezierLines(p, 64), 8);  // the int32 box size wraps to 1 or below
    }
    EXPECT_EQ(CalculateNumBezierLines(tagRECT{lo, hi, hi, lo}, 64), 8);
}
