#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using LD = long double;

using LP = qtest::LongPoint;
LP At(const P p[4], LD t, bool slope = false) { return qtest::BernsteinAt(p, t, slope); }
using qtest::Basis;
double Area(const P p[4]) {
    const Basis B(p);
    return GetAreaUnderBezier(B.a, B.b, B.c, B.d);
}

}  // namespace

TEST(BezierSide, PointsBesideAnArchAndALine) {
    // The arch runs up, across and down: outside is left of travel, inside right. From (−2, 0) the
    // start is the nearest point and stationary (B′(0) ⊥ B(0) − p), so t = 0 exactly.
    const P arch[4] = {{0, 0}, {0, 3}, {4, 3}, {4, 0}}, line[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    // Beyond the end (the only stationary point is at t = 5/3), and on a point: false, side untouched.
    const P dot[4] = {{1, 1}, {1, 1}, {1, 1}, {1, 1}};
    const Side L = Side::SideLeft, R = Side::SideRight, N = Side::SideNone, kept = static_cast<Side>(7);
    const struct { const P* c; P p; Side want; double t; bool ok = true; } cases[] = {
        {arch, {2, 5}, L, -1},   {arch, {-1, 1}, L, -1},  {arch, {5, 1}, L, -1},    {arch, {-2, 0}, L, 0},
        {arch, {2, 1}, R, -1},   {arch, {1, 1.5}, R, -1}, {arch, {3.2, 0.5}, R, -1}, {line, {1.5, 1}, L, 0.5},
        {line, {1.5, -1}, R, 0.5}, {line, {1.5, 0}, N, 0.5},  // on the curve: SideNone, still true
        {line, {5, 0}, N, -1, false}, {dot, {2, 2}, N, -1, false}};
    for (const auto& k : cases) {
        const Basis B(k.c);
        double t = -1, dd = -1;
        P nearest{};
        Side side = kept;
        EXPECT_EQ(GetSide(B.a, B.b, B.c, B.d, k.p, t, nearest, dd, side), k.ok) << k.p.x << ' ' << k.p.y;
        EXPECT_TRUE(side == (k.ok ? k.want : kept) && GetSide(B.a, B.b, B.c, B.d, k.p) == k.want) << k.p.x << ' ' << k.p.y;
        EXPECT_TRUE(k.t < 0 || t == k.t) << t;
    }
}

TEST(BezierArea, AgainstQuadratureAndTheShoelace) {
    const P up[4] = {{0, 0}, {1.0 / 3, 1.0 / 3}, {2.0 / 3, 2.0 / 3}, {1, 1}}, down[4] = {up[3], up[2], up[1], up[0]};
    EXPECT_TRUE(std::fabs(Area(up) - 0.5) < 1e-15 && std::fabs(Area(down) + 0.5) < 1e-15);
    // Random segments: Simpson over 2000 steps of y·x′ (degree 5, so the error is h⁴-small).
    std::mt19937 rng(27);
    for (int i = 0; i < 200; ++i) {
        P p[4];
        for (P& q : p) q = qtest::RandomPoint(rng);
        LD sum = 0;
        for (int j = 0, n = 2000; j <= n; ++j)
            sum += (j == 0 || j == n ? 1 : j % 2 ? 4 : 2) * At(p, LD(j) / n).y * At(p, LD(j) / n, true).x / (3 * n);
        EXPECT_NEAR(Area(p), double(sum), 1e-9) << i;
    }
    // A closed path of four segments: ∮ y dx = −(enclosed signed area). The inscribed polygon through
    // n points per segment is off by O(1/n²); Richardson's (4·A₂ₙ − Aₙ)/3 leaves O(1/n⁴).
    for (int i = 0; i < 20; ++i) {
        P path[4][4];
        for (auto& s : path)
            for (P& q : s) q = qtest::RandomPoint(rng);
        for (int k = 0; k < 4; ++k) path[k][3] = path[(k + 1) % 4][0];
        LD shoelace[2] = {0, 0}, sum = 0;
        for (const auto& s : path) {
            sum += Area(s);
            for (int h = 0, n = 1000; h < 2; ++h, n *= 2)
                for (int j = 0; j < n; ++j) {
                    const LP u = At(s, LD(j) / n), v = At(s, LD(j + 1) / n);
                    shoelace[h] += (u.x * v.y - v.x * u.y) / 2;
                }
        }
        EXPECT_NEAR(double(sum), double(-(4 * shoelace[1] - shoelace[0]) / 3), 1e-8) << i;
    }
}

TEST(BezierMap, OffsetsAlongTheLeftNormal) {
    // The result lies k = distance·scale to the left of B(t) across the tangent, nothing along it;
    // k = 0 gives B(t) to the bit.
    std::mt19937 rng(29);
    std::uniform_real_distribution<double> u(-5, 5);
    for (int i = 0; i < 200; ++i) {
        P p[4];
        for (P& q : p) q = qtest::RandomPoint(rng);
        const Basis B(p);
        const double t = i / 199.0, dist = u(rng), scale = u(rng);
        const LP at = At(p, t), T = At(p, t, true);
        const P r = MapToBezier(p, t, dist, scale), r0 = MapToBezier(p, t, 0, scale);
        const LD len = std::hypot(T.x, T.y), ox = r.x - at.x, oy = r.y - at.y;
        const P want = Evaluate(B.a, B.b, B.c, B.d, t);
        EXPECT_TRUE(std::fabs(double((T.x * oy - T.y * ox) / len) - dist * scale) < 1e-11 && std::fabs(double((T.x * ox + T.y * oy) / len)) < 1e-11 &&
                    qtest::SameBits(r0, want)) << i;
    }
    const P dot[4] = {{5, -3}, {5, -3}, {5, -3}, {5, -3}};  // tangent (1, 0): straight up by k
    for (double t : {0.0, 0.5, 1.0}) EXPECT_TRUE(qtest::Near(MapToBezier(dot, t, 2, -1.5), P{5, -6}));
}
