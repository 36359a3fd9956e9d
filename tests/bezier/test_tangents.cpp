#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;

namespace {

using P = Point2d;
using V = Vector2d;
using LD = long double;

using LP = qtest::LongPoint;
LP At(const P p[4], LD t, bool slope = false) { return qtest::BernsteinAt(p, t, slope); }
V Rounded(LP v) { return {double(v.x), double(v.y)}; }
using qtest::Basis;

// The t in (0, 1), or [0, 1] when closed, where B′ × v = 0: a quadratic from the control-point
// differences, solved in long double; the sentinel −7 first, as the outputs are pre-filled.
std::vector<double> Parallels(const P p[4], LD vx, LD vy, bool closed) {
    LD q[3];
    for (int i = 0; i < 3; ++i) q[i] = (LD(p[i + 1].x) - p[i].x) * vy - (LD(p[i + 1].y) - p[i].y) * vx;
    const LD A = 3 * (q[0] - 2 * q[1] + q[2]), B = 6 * (q[1] - q[0]), C = 3 * q[0], D = B * B - 4 * A * C;
    std::vector<LD> r = A == 0 ? std::vector<LD>{-C / B} : std::vector<LD>{};
    if (A != 0 && D >= 0) r = {(-B - std::sqrt(D)) / (2 * A), (-B + std::sqrt(D)) / (2 * A)};
    std::sort(r.begin(), r.end());
    std::vector<double> in{-7};
    for (LD t : r)
        if (closed ? t >= 0 && t <= 1 : t > 0 && t < 1) in.push_back(double(t));
    return in;
}

}  // namespace

TEST(BezierSafeTangent, FallsBackInThreeStages) {
    // B′; with P0 = P1 (or P2 = P3) the difference over 1e-5 toward the middle, which clears
    // DBL_EPSILON squared only on a curve some hundreds of units long; on a tiny arch, whose B′ and
    // difference both fall short, the chord from B(1e-6) to B(0.999999), horizontal where B′ is vertical.
    const P curve[4] = {{-3, 1}, {4, 7}, {-2, -5}, {6, 2}}, start[4] = {{0, 0}, {0, 0}, {300, 100}, {400, -200}},
            end[4] = {start[3], start[2], start[1], start[0]}, tiny[4] = {{0, 0}, {0, 1e-9}, {1e-9, 1e-9}, {1e-9, 0}},
            dot[4] = {{5, -3}, {5, -3}, {5, -3}, {5, -3}};  // a point: exactly (1, 0)
    auto diff = [](const P p[4], LD t0, LD t1) { return Rounded({At(p, t1).x - At(p, t0).x, At(p, t1).y - At(p, t0).y}); };
    const struct { const P* p; double t; V want; double rel; } cases[] = {
        {curve, 0.3, Rounded(At(curve, 0.3, true)), 1e-14}, {start, 0, diff(start, 0, 1e-5), 1e-9},
        {end, 1, diff(end, 1 - 1e-5, 1), 1e-5}, {tiny, 0, diff(tiny, 1e-6, 0.999999), 1e-6},
        {tiny, 0.7, diff(tiny, 1e-6, 0.999999), 1e-6}, {dot, 0, {1, 0}, 0}, {dot, 0.5, {1, 0}, 0}, {dot, 1, {1, 0}, 0}};
    for (const auto& k : cases) {
        const Basis B(k.p);
        EXPECT_TRUE(qtest::Near(SafeBezierTangent(k.t, B.a, B.b, B.c, B.d), k.want, k.rel * std::hypot(k.want.x, k.want.y))) << k.t;
    }
}

TEST(BezierTangents, AxisAndDirectionParallelsMatchClosedForms) {
    // Outputs pre-filled with −7 and compared whole: appended, never cleared.
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> u(-1, 1);
    auto near = [](const std::vector<double>& got, const std::vector<double>& want) {
        bool ok = got.size() == want.size();
        for (size_t i = 0; ok && i < got.size(); ++i) ok = std::fabs(got[i] - want[i]) <= 1e-9;
        return ok;
    };
    for (int i = 0; i < 300; ++i) {
        P p[4];
        for (P& q : p) q = qtest::RandomPoint(rng);
        if (i == 0) p[0] = {0, 0}, p[1] = {3, 1}, p[2] = {3, 2}, p[3] = {0, 3};  // no t² in x′: a linear root, ½
        if (i == 1) p[0] = {0, 0}, p[1] = {0, 1}, p[2] = {2, 3}, p[3] = {3, 3};  // x′(0) = 0, y′(1) = 0
        const Basis B(p);
        const V v{u(rng), u(rng)};
        std::vector<double> vert{-7}, horz{-7}, par{-7}, ax{-7}, ay{-7};
        bool every = true, everyX = true, everyY = true;
        GetVerticalTangents(B.a, B.b, B.c, vert);
        GetHorizontalTangents(B.a, B.b, B.c, horz);
        GetParallels(B.a, B.b, B.c, v, par, every);
        EXPECT_TRUE(near(vert, Parallels(p, 0, 1, false)) && near(horz, Parallels(p, 1, 0, false))) << i;
        EXPECT_TRUE(near(par, Parallels(p, v.x, v.y, true)) && !every) << i;
        if (i != 1) continue;  // the ends count only for GetParallels
        GetParallels(B.a, B.b, B.c, V{1, 0}, ax, everyX);
        GetParallels(B.a, B.b, B.c, V{0, 1}, ay, everyY);
        EXPECT_TRUE(vert.size() + horz.size() == 2 && ay == (std::vector<double>{-7, 0.0}) &&
                    ax == (std::vector<double>{-7, 1.0}) && !everyX && !everyY);
    }
    // A straight segment along the direction, or a zero direction: parallel everywhere, nothing appended.
    const P line[4] = {{0, 0}, {3, 3}, {1, 1}, {4, 4}}, curve[4] = {{-3, 1}, {4, 7}, {-2, -5}, {6, 2}};
    for (const auto& [p, v] : {std::pair{line, V{2, 2}}, {line, V{-0.5, -0.5}}, {curve, V{0, 0}}}) {
        const Basis B(p);
        std::vector<double> out{-7};
        bool every = false;
        GetParallels(B.a, B.b, B.c, v, out, every);
        EXPECT_TRUE(every && out.size() == 1);
    }
}

TEST(BezierTangents, TangentLinesThroughAPoint) {
    // Each sign change of (B − x) × B′ on a fine long double grid holds one root, in order.
    std::mt19937 rng(12);
    for (int i = 0; i < 300; ++i) {
        P p[4];
        for (P& q : p) q = qtest::RandomPoint(rng);
        const P x = qtest::RandomPoint(rng);
        const Basis B(p);
        double roots[7];
        const int n = FindTangentsToPoint(B.a, B.b, B.c, B.d, x, roots), N = 4096;
        auto g = [&](LD t) {
            const LP b = At(p, t), d = At(p, t, true);
            return (b.x - x.x) * d.y < (b.y - x.y) * d.x;
        };
        std::vector<double> lo;
        bool prev = g(0);
        for (int j = 1; j <= N; ++j)
            if (const bool cur = g(LD(j) / N); cur != prev) lo.push_back(double(j - 1) / N), prev = cur;
        ASSERT_EQ(n, int(lo.size())) << i;
        for (int j = 0; j < n; ++j) EXPECT_TRUE(roots[j] >= lo[j] - 1e-9 && roots[j] <= lo[j] + 1.0 / N + 1e-9) << i;
    }
    // A point on the start tangent line, behind or ahead of P0: t = 0 exactly, first.
    const P curves[][4] = {{{0, 0}, {1, 4}, {-1, -1}, {4, 0}}, {{-3, 1}, {4, 7}, {-2, -5}, {6, 2}}};
    for (const auto& p : curves)
        for (double f : {-2.0, 0.5, 3.0}) {
            const Basis B(p);
            double roots[7];
            const P x{p[0].x + f * (p[1].x - p[0].x), p[0].y + f * (p[1].y - p[0].y)};
            EXPECT_TRUE(FindTangentsToPoint(B.a, B.b, B.c, B.d, x, roots) >= 1 && roots[0] == 0) << f;
        }
}
