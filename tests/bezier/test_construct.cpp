#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <random>
#include <utility>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using V = Vector2d;
using LD = long double;

struct LP {
    LD x, y;
};
LP L(const P& p) { return {p.x, p.y}; }
LP L(const tagPOINT& p) { return {LD(p.x), LD(p.y)}; }
LP operator-(LP a, LP b) { return {a.x - b.x, a.y - b.y}; }
LP operator+(LP a, LP b) { return {a.x + b.x, a.y + b.y}; }
LP operator*(LD s, LP a) { return {s * a.x, s * a.y}; }
LD Dot(LP a, LP b) { return a.x * b.x + a.y * b.y; }
LP Unit(LP a) { return (1 / std::sqrt(Dot(a, a))) * a; }

// The rounded cubic at t, in long double.
LP At(const tagPOINT o[4], LD t) {
    const LD s = 1 - t;
    return (s * s * s) * L(o[0]) + (3 * s * s * t) * L(o[1]) + (3 * s * t * t) * L(o[2]) + (t * t * t) * L(o[3]);
}

}  // namespace

TEST(BezierFrom3Points, WorkedExamples) {
    const struct { P A, M, B; bool half; tagPOINT want[4]; } cases[] = {
        {{0, 0}, {50, 50}, {100, 0}, true, {{0, 0}, {33, 67}, {67, 67}, {100, 0}}},  // Q = (50, 100)
        {{0, 0}, {50, 50}, {100, 0}, false, {{0, 0}, {33, 67}, {67, 67}, {100, 0}}},  // symmetric: same Q
        {{10, 10}, {10, 10}, {70, 40}, false, {{10, 10}, {-10, 0}, {10, 10}, {70, 40}}},  // M = A: Q = (−20, −5)
        {{0, 0}, {2e-16, -2e-16}, {70, 40}, false, {{0, 0}, {-23, -13}, {0, 0}, {70, 40}}},  // M within ε of A
        {{0, 0}, {30, 60}, {0, 0}, false, {{0, 0}, {40, 80}, {40, 80}, {0, 0}}},  // B = A: Q = (60, 120)
        {{0, 0}, {60, 0}, {60, 0}, false, {{0, 0}, {40, 0}, {60, 0}, {60, 0}}},  // B = M: u = 0, k = 0, Q = M
        {{-2.5, -0.5}, {0, 0}, {2.5, 0.5}, true, {{-3, -1}, {-1, 0}, {1, 0}, {3, 1}}},  // halves away from zero
    };
    for (const auto& c : cases) {
        tagPOINT o[4];
        From3Points(o, c.A, c.M, c.B, c.half);
        EXPECT_TRUE(qtest::Same(o, {c.want[0], c.want[1], c.want[2], c.want[3]})) << c.M.x << ' ' << c.half;
    }
}

TEST(BezierFrom3Points, MidpointFormPassesMAtHalf) {
    std::mt19937 rng(21);
    std::uniform_real_distribution<double> u(-1e4, 1e4);
    for (int i = 0; i < 2000; ++i) {
        const P A{u(rng), u(rng)}, M{u(rng), u(rng)}, B{u(rng), u(rng)};
        tagPOINT o[4];
        From3Points(o, A, M, B, true);
        // The quadratic through M at ½ has Q = 2M − (A + B)/2; raised to cubic degree,
        // P1 = (A + 2Q)/3 and P2 = (2Q + B)/3, each coordinate rounded half away from zero.
        const LP Q = 2 * L(M) - 0.5L * (L(A) + L(B));
        const LP want[4] = {L(A), (1 / 3.0L) * (L(A) + 2 * Q), (1 / 3.0L) * (2 * Q + L(B)), L(B)};
        for (int k = 0; k < 8; ++k) {
            const LD v = k % 2 ? want[k / 2].y : want[k / 2].x;
            if (std::fabs(std::fabs(v - std::trunc(v)) - 0.5L) < 1e-6L) continue;  // too near a tie to call
            const LD rounded = v < 0 ? -std::floor(0.5L - v) : std::floor(v + 0.5L);
            EXPECT_EQ(k % 2 ? o[k / 2].y : o[k / 2].x, rounded) << i << ' ' << k;
        }
    }
}

TEST(BezierFrom3Points, BisectorFormTouchesTheTangentAtM) {
    // Large coordinates make rounding negligible. With n the outward bisector at M and
    // hA, hB the heights of A and B below the line through M across n, the quadratic
    // A, M + n·√(hA·hB), B reaches that line exactly at M and only there.
    std::mt19937 rng(22);
    std::uniform_real_distribution<double> u(-1e6, 1e6), r(2e5, 1e6), ang(-3.2, 3.2), open(0.5, 2.6);
    for (int i = 0; i < 1000; ++i) {
        const P M{u(rng), u(rng)};
        const double a0 = ang(rng), a1 = a0 + (i % 2 ? 1 : -1) * open(rng), rA = r(rng), rB = r(rng);
        const P A{M.x + rA * std::cos(a0), M.y + rA * std::sin(a0)};
        const P B{M.x + rB * std::cos(a1), M.y + rB * std::sin(a1)};
        tagPOINT o[4];
        From3Points(o, A, M, B, false);
        EXPECT_TRUE(qtest::Same(o, {{RoundToInt(A.x), RoundToInt(A.y)}}));
        EXPECT_TRUE(qtest::Same(o + 3, {{RoundToInt(B.x), RoundToInt(B.y)}}));

        const LP n = Unit(Unit(L(M) - L(A)) + Unit(L(M) - L(B))), d{-n.y, n.x};
        // The highest point of the rounded cubic along n: on the line, at M.
        LD lo = 0, hi = 1;
        for (int k = 0; k < 200; ++k) {
            const LD m1 = lo + (hi - lo) / 3, m2 = hi - (hi - lo) / 3;
            const bool rising = Dot(At(o, m1) - L(M), n) < Dot(At(o, m2) - L(M), n);
            (rising ? lo : hi) = rising ? m1 : m2;
        }
        const LP top = At(o, (lo + hi) / 2) - L(M);
        EXPECT_LE(std::fabs(Dot(top, n)), 0.75L) << i;  // 0.5·√2 from rounding
        EXPECT_LE(std::fabs(Dot(top, d)), 3.0L) << i;
    }
}

TEST(BezierFrom3Points, DirectionForm) {
    const struct { P A; V s; P M, B; V e; tagPOINT want[4]; } cases[] = {
        // r = (8M − 4(A + B))/3 = (0, 80); α = 40, β = −40.
        {{0, 0}, {1, 1}, {50, 30}, {100, 0}, {1, -1}, {{0, 0}, {40, 40}, {60, 40}, {100, 0}}},
        {{0, 0}, {-1, -1}, {50, 30}, {100, 0}, {2, -2}, {{0, 0}, {40, 40}, {60, 40}, {100, 0}}},  // α −40, β −20
        {{0, 0}, {1, 0}, {50, 0}, {100, 0}, {1, 2 * DBL_EPSILON}, {{0, 0}, {0, 0}, {100, 0}, {100, 0}}},  // r = 0
        {{-2.5, 0.5}, {0, 1}, {0, 0}, {2.5, -0.5}, {1, 0}, {{-3, 1}, {-3, 1}, {3, -1}, {3, -1}}},  // r = 0, ties
    };
    for (const auto& c : cases) {
        tagPOINT o[4];
        ASSERT_TRUE(From3Points(o, c.A, c.s, c.M, c.B, c.e));
        EXPECT_TRUE(qtest::Same(o, {c.want[0], c.want[1], c.want[2], c.want[3]})) << c.s.x << ' ' << c.e.x;
    }
    // Parallel (either way round), zero and |den| exactly ε (inclusive): false, out untouched.
    const std::pair<V, V> noCross[] = {{{1, 2}, {-2, -4}}, {{1, 2}, {3, 6}}, {{0, 0}, {1, 0}}, {{1, 0}, {1, DBL_EPSILON}}};
    for (auto [s, e] : noCross) {
        tagPOINT o[4] = {{7, 7}, {7, 7}, {7, 7}, {7, 7}};
        EXPECT_FALSE(From3Points(o, {0, 0}, s, {5, 9}, {10, 0}, e)) << s.x << ' ' << e.y;
        EXPECT_TRUE(qtest::Same(o, {{7, 7}, {7, 7}, {7, 7}, {7, 7}}));
    }

    std::mt19937 rng(23);
    std::uniform_real_distribution<double> u(-1e4, 1e4), ang(-3.2, 3.2), len(0.01, 100);
    for (int i = 0; i < 2000; ++i) {
        const P A{u(rng), u(rng)}, M{u(rng), u(rng)}, B{u(rng), u(rng)};
        const double as = ang(rng), ae = ang(rng), ls = len(rng), le = len(rng);
        if (std::fabs(std::sin(as - ae)) < 0.1) continue;
        const V s{ls * std::cos(as), ls * std::sin(as)}, e{le * std::cos(ae), le * std::sin(ae)};
        tagPOINT o[4];
        ASSERT_TRUE(From3Points(o, A, s, M, B, e));
        const LP h = At(o, 0.5L);
        EXPECT_TRUE(std::fabs(h.x - M.x) <= 0.5 + 1e-9 && std::fabs(h.y - M.y) <= 0.5 + 1e-9) << i;
        // Handles on the lines through A along s and through B along e, within rounding.
        const LP ns = Unit({-s.y, s.x}), ne = Unit({-e.y, e.x});
        EXPECT_LE(std::fabs(Dot(L(o[1]) - L(A), ns)), 0.71L) << i;
        EXPECT_LE(std::fabs(Dot(L(o[2]) - L(B), ne)), 0.71L) << i;
    }
}
