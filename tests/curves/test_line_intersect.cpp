#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;
using qtest::BernsteinAt;
using qtest::SameBits;

namespace {

using P = Point2d;
using LD = long double;
using Implicit = std::array<double, 10>;

Implicit Implicitize(const qtest::Basis& B) {
    Implicit k;
    ConvertBezierToImplicit(B.a, B.b, B.c, B.d, k[0], k[1], k[2], k[3], k[4], k[5], k[6], k[7], k[8], k[9]);
    return k;
}
template <typename T, typename C>
T F(const C& c, T x, T y) {
    return c[0] * x * x * x + c[1] * y * y * y + c[2] * x * x * y + c[3] * x * y * y + c[4] * x * x + c[5] * y * y +
           c[6] * x * y + c[7] * x + c[8] * y + c[9];
}

// The Sylvester matrix of Y(t) − y and X(t) − x, Y rows first: its determinant is their resultant.
template <typename T>
struct Sylvester {
    T m[6][6] = {};
    LD scale = 1;  // product of the rows' 1-norms, a bound on the sum of |terms| of the determinant
    Sylvester(const qtest::Basis& B, T x, T y) {
        const T row[2][4] = {{T(B.a.y), T(B.b.y), T(B.c.y), T(B.d.y) - y}, {T(B.a.x), T(B.b.x), T(B.c.x), T(B.d.x) - x}};
        for (int r = 0; r < 6; ++r) {
            LD n = 0;
            for (int j = 0; j < 4; ++j) m[r][r % 3 + j] = row[r / 3][j], n += std::fabs(LD(row[r / 3][j]));
            scale *= n;
        }
    }
    // Cofactor expansion: exact in int64 for small integer entries.
    T Det(int r = 0, unsigned used = 0) const {
        T sum = r == 6;
        for (int j = 0, sign = 1; r < 6 && j < 6; ++j)
            if (!(used >> j & 1)) {
                if (m[r][j] != 0) sum += sign * m[r][j] * Det(r + 1, used | 1u << j);
                sign = -sign;
            }
        return sum;
    }
};

// Zeros of g in (0, 1): sign changes on an offset grid, bisected in long double. {−1} when a zero lies
// within 1e-3 of an end or of another, or g′ vanishes where |g| is small (near-tangency): such cases
// are ill-conditioned for any solver and are left out.
template <typename G, typename DG>
std::vector<LD> Zeros(G g, DG dg) {
    const int n = 2000;
    LD big = 0;
    for (int i = 0; i <= n; ++i) big = std::max(big, std::fabs(g(LD(i) / n)));
    std::vector<LD> r;
    for (const bool ofG : {false, true})
        for (int i = 0; i <= n; ++i) {
            const auto h = [&](LD t) { return ofG ? g(t) : dg(t); };
            LD lo = i == 0 ? 0 : (i - 0.61L) / n, hi = i == n ? 1 : (i + 0.39L) / n;
            const LD hlo = h(lo);
            if (hlo * h(hi) >= 0) continue;
            for (int k = 0; k < 70; ++k) ((h((lo + hi) / 2) * hlo > 0) ? lo : hi) = (lo + hi) / 2;
            if (!ofG && std::fabs(g(lo)) < 1e-4L * big) return {-1};
            if (ofG && (lo < 1e-3L || lo > 1 - 1e-3L || (!r.empty() && lo - r.back() < 1e-3L))) return {-1};
            if (ofG) r.push_back(lo);
        }
    return r;
}
bool Usable(const std::vector<LD>& zeros) { return zeros.empty() || zeros[0] >= 0; }

// B(t) = ((a·t + b)·t + c)·t + d in double: the point the line parameter is taken from.
P Horner(const qtest::Basis& B, double t) {
    return {((B.a.x * t + B.b.x) * t + B.c.x) * t + B.d.x, ((B.a.y * t + B.b.y) * t + B.c.y) * t + B.d.y};
}

}  // namespace

TEST(BezierImplicit, WorkedExampleAndQuadratic) {
    const P p[4] = {{0, 0}, {1, 2}, {3, 2}, {4, 0}};
    const Implicit k = Implicitize(qtest::Basis(p));
    EXPECT_EQ(k, (Implicit{0, -8, 0, 0, -432, -180, 0, 1728, -864, 0}));
    EXPECT_TRUE(F(k, 2.0, 1.5) == 0 && F(k, 0.0, 0.0) == 0);
    // A raised quadratic (no t³ term): the resultant vanishes identically.
    const P q[4] = {{5, 7}, {7, 9}, {9, 9}, {11, 7}};
    ASSERT_TRUE(qtest::Basis(q).a == P({0, 0}));
    EXPECT_EQ(Implicitize(qtest::Basis(q)), Implicit{});
}

TEST(BezierImplicit, EqualsTheResultant) {
    // Integer curves: integer coefficients, and f equals the determinant exactly at integer points.
    // Real curves: f equals the long-double determinant at random points and vanishes on the curve for
    // t inside and outside [0, 1], relative to the size of the determinant's terms.
    std::mt19937 rng(31);
    std::uniform_int_distribution<int> ui(-8, 8), ux(-20, 20);
    std::uniform_real_distribution<double> ur(-15, 15);
    for (int i = 0; i < 200; ++i) {
        P ip[4], rp[4];
        for (int j = 0; j < 4; ++j) ip[j] = {double(ui(rng)), double(ui(rng))}, rp[j] = qtest::RandomPoint(rng);
        const qtest::Basis IB(ip), RB(rp);
        const Implicit ik = Implicitize(IB), rk = Implicitize(RB);
        int64_t c[10];
        for (int j = 0; j < 10; ++j) {
            c[j] = std::llround(ik[j]);
            ASSERT_EQ(double(c[j]), ik[j]) << "curve " << i << " c" << j + 1;
        }
        for (int s = 0; s < 12; ++s) {
            const int64_t x = ux(rng), y = ux(rng);
            EXPECT_EQ(F(c, x, y), Sylvester<int64_t>(IB, x, y).Det()) << "curve " << i << " at " << x << ", " << y;
            const LD rx = ur(rng), ry = ur(rng);
            const Sylvester<LD> S(RB, rx, ry);
            EXPECT_NEAR(F(rk, rx, ry), S.Det(), 1e-14L * S.scale) << "curve " << i;
        }
        for (const LD t : {-1.5L, -0.5L, 0.0L, 0.3L, 0.5L, 1.0L, 1.7L, 2.5L}) {
            const qtest::LongPoint b = BernsteinAt(rp, t);
            EXPECT_NEAR(F(rk, b.x, b.y), 0, 1e-14L * Sylvester<LD>(RB, b.x, b.y).scale) << "curve " << i << " t " << double(t);
        }
    }
}

TEST(BezierLine, RandomLinesAgainstLongDouble) {
    // Stale contents are cleared; every B(t) lies on the line and L0 + s·(L1 − L0) reproduces it; the
    // roots are those of a long-double reference; the end flag changes nothing when no end is on the
    // line; the integer forms are the double forms on converted points.
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(0, 1);
    int compared = 0, roots = 0;
    for (int i = 0; i < 600; ++i) {
        P p[4], L[2], dp[4], dL[2];
        for (P& q : p) q = qtest::RandomPoint(rng);
        const qtest::LongPoint on = BernsteinAt(p, u(rng));
        L[0] = i % 3 ? P{double(on.x), double(on.y)} : qtest::RandomPoint(rng), L[1] = qtest::RandomPoint(rng);
        std::vector<double> ts{4, 5}, ss{6}, ts2, ss2;
        const bool ok = FindBezierLineIntersection(p, L, ts, ss, false);
        ASSERT_TRUE(ok == !ts.empty() && ts.size() == ss.size());
        const LD dx = LD(L[1].x) - L[0].x, dy = LD(L[1].y) - L[0].y, len = std::hypot(dx, dy);
        for (size_t j = 0; j < ts.size(); ++j) {
            ASSERT_TRUE(ts[j] >= 0 && ts[j] <= 1) << ts[j];
            const qtest::LongPoint b = BernsteinAt(p, ts[j]);
            EXPECT_NEAR(((b.x - L[0].x) * dy - (b.y - L[0].y) * dx) / len, 0, 1e-9) << "case " << i;
            EXPECT_NEAR(L[0].x + ss[j] * dx, b.x, 1e-9) << "case " << i;
            EXPECT_NEAR(L[0].y + ss[j] * dy, b.y, 1e-9) << "case " << i;
        }
        const auto g = [&](LD t) { const auto b = BernsteinAt(p, t); return (b.x - L[0].x) * dy - (b.y - L[0].y) * dx; };
        const auto dg = [&](LD t) { const auto b = BernsteinAt(p, t, true); return b.x * dy - b.y * dx; };
        if (const std::vector<LD> ref = Zeros(g, dg); Usable(ref)) {
            ++compared, roots += int(ref.size());
            ASSERT_EQ(ts.size(), ref.size()) << "case " << i;
            for (size_t j = 0; j < ts.size(); ++j) EXPECT_NEAR(ts[j], ref[j], 1e-11) << "case " << i;
            EXPECT_TRUE(FindBezierLineIntersection(p, L, ts2, ss2, true) == ok && ts2 == ts && ss2 == ss) << "case " << i;
        }
        tagPOINT ip[4], iL[2];
        for (int j = 0; j < 6; ++j) {
            const P v = j < 4 ? p[j] : L[j - 4];
            tagPOINT& w = j < 4 ? ip[j] : iL[j - 4];
            w = {int(std::lround(v.x * 50)), int(std::lround(v.y * 50))};
            (j < 4 ? dp[j] : dL[j - 4]) = {double(w.x), double(w.y)};
        }
        const bool iok = FindBezierLineIntersection(ip, iL, ts, ss, i % 2);
        EXPECT_TRUE(iok == FindBezierLineIntersection(dp, dL, ts2, ss2, i % 2) && ts == ts2 && ss == ss2) << "case " << i;
        EXPECT_EQ(DoesBezierIntersectLineSegment(ip, iL), DoesBezierIntersectLineSegment(dp, dL)) << "case " << i;
    }
    EXPECT_GT(compared, 450);
    EXPECT_GT(roots, 500);
}

TEST(BezierLine, LineParameterFromTheLargerComponent) {
    // s = (B(t) − L0)·(1/d) in the component where |d| is larger, y on a tie. The other component
    // gives other bits often enough (infinities on axis-parallel lines) to tell them apart.
    const std::pair<P, bool> cases[] = {{{4, 0}, true},  {{-3, 0}, true},       {{0, 4}, false},  {{0, -5}, false},
                                        {{3, 3}, false}, {{3, -3}, false},      {{-2.5, 2.5}, false},
                                        {{5, 4.75}, true}, {{-4.75, 5}, false}};
    std::mt19937 rng(11);
    for (const auto& [d, fromX] : cases) {
        int differ = 0;
        for (int i = 0; i < 60; ++i) {
            P p[4];
            for (P& q : p) q = qtest::RandomPoint(rng);
            const P L0{std::round(p[1].x), std::round(p[2].y)}, L[2] = {L0, {L0.x + d.x, L0.y + d.y}};
            std::vector<double> ts, ss;
            FindBezierLineIntersection(p, L, ts, ss, false);
            for (size_t j = 0; j < ts.size(); ++j) {
                const P b = Horner(qtest::Basis(p), ts[j]);
                const double sx = (b.x - L0.x) * (1 / (L[1].x - L0.x)), sy = (b.y - L0.y) * (1 / (L[1].y - L0.y));
                EXPECT_TRUE(SameBits(ss[j], fromX ? sx : sy)) << d.x << ", " << d.y << ": " << ss[j];
                differ += !SameBits(sx, sy);
            }
        }
        EXPECT_GT(differ, 0) << d.x << ", " << d.y;
    }
}

TEST(BezierLine, EndPointsAndDegenerateLines) {
    // An arch from (0, 0) to (4, 0). The flag adds t = 0 (in front) or t = 1 (at the back) where an end
    // lies on the line, and changes nothing else.
    const P p[4] = {{0, 0}, {1, 3}, {3, 3}, {4, 0}};
    struct Case {
        P L0, L1;
        std::vector<double> ends, endS;  // added with the flag, and their line parameters
    } const cases[] = {
        {{0, 0}, {4, 0}, {0.0, 1.0}, {0.0, 1.0}},  // the chord: both ends, nothing between
        {{-2, -2}, {2, 2}, {0.0}, {0.5}},          // through P0, crossing once inside (s from y on the tie)
        {{2, 2}, {6, -2}, {1.0}, {0.5}},           // through P3, crossing once inside
    };
    for (const Case& c : cases) {
        const P L[2] = {c.L0, c.L1};
        std::vector<double> t0{9}, s0{9}, t1, s1;
        FindBezierLineIntersection(p, L, t0, s0, false);
        ASSERT_TRUE(FindBezierLineIntersection(p, L, t1, s1, true));
        ASSERT_EQ(t1.size(), t0.size() + c.ends.size());
        const size_t off = c.ends[0] == 0.0;
        for (size_t j = 0; j < c.ends.size(); ++j) {
            const size_t e = j == 0 && off ? 0 : t1.size() - c.ends.size() + j;
            EXPECT_TRUE(SameBits(t1[e], c.ends[j]) && SameBits(s1[e], c.endS[j])) << t1[e] << " " << s1[e];
        }
        for (size_t j = 0; j < t0.size(); ++j) EXPECT_TRUE(t0[j] > 0 && t0[j] < 1 && t1[j + off] == t0[j] && s1[j + off] == s0[j]);
    }
    // A zero-length line finds nothing and leaves both vectors empty.
    const P dot[2] = {{2, 1}, {2, 1}};
    const tagPOINT ip[4] = {{0, 0}, {1, 3}, {3, 3}, {4, 0}}, idot[2] = {{2, 1}, {2, 1}};
    std::vector<double> ts{1}, ss{2}, its{1}, iss{2};
    EXPECT_FALSE(FindBezierLineIntersection(p, dot, ts, ss, true) || FindBezierLineIntersection(ip, idot, its, iss, true));
    EXPECT_TRUE(ts.empty() && ss.empty() && its.empty() && iss.empty());
    EXPECT_FALSE(DoesBezierIntersectLineSegment(p, dot) || DoesBezierIntersectLineSegment(ip, idot));
}

TEST(BezierLine, IntersectionsAtXAppend) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-12, 12);
    for (int i = 0; i < 200; ++i) {
        P p[4];
        for (P& q : p) q = qtest::RandomPoint(rng);
        const double x = u(rng);
        std::vector<double> ts{0.75};
        EXPECT_TRUE(FindBezierIntersectionsAtX(p, x, ts, false));
        ASSERT_EQ(ts[0], 0.75);
        const auto g = [&](LD t) { return BernsteinAt(p, t).x - x; };
        if (const std::vector<LD> ref = Zeros(g, [&](LD t) { return BernsteinAt(p, t, true).x; }); Usable(ref)) {
            ASSERT_EQ(ts.size(), ref.size() + 1) << "case " << i;
            for (size_t j = 0; j < ref.size(); ++j) EXPECT_NEAR(ts[j + 1], ref[j], 1e-11) << "case " << i;
        }
    }
    // Beyond the curve: true with the vector as it was, false when it was empty.
    const P p[4] = {{1, 0}, {2, 5}, {-1, 4}, {3, 1}}, one[4] = {{1, 0}, {0, 5}, {3, 4}, {2, 1}};
    std::vector<double> ts{0.5, 0.25}, none;
    EXPECT_TRUE(FindBezierIntersectionsAtX(p, 7, ts, true));
    EXPECT_EQ(ts, (std::vector<double>{0.5, 0.25}));
    EXPECT_FALSE(FindBezierIntersectionsAtX(p, -7, none, true));
    EXPECT_TRUE(none.empty());
    // At x = P0.x the flag puts t = 0 in front, unless two more crossings already fill the cubic's room.
    for (const P* c : {one, p}) {
        std::vector<double> with, without;
        FindBezierIntersectionsAtX(c, 1, with, true);
        FindBezierIntersectionsAtX(c, 1, without, false);
        ASSERT_TRUE(with.size() == 2 && without.size() == (c == one ? 1u : 2u));
        EXPECT_TRUE(c == one ? SameBits(with[0], 0.0) && with[1] == without[0] : with == without);
        for (double t : without) EXPECT_GT(t, 0);
    }
}

TEST(BezierLine, SegmentEndsAreInclusive) {
    // Each curve crosses y = 1 (x = 1 with the coordinates swapped) once, at X with X.x in [2, 8].
    // Axis-parallel segments of length 4 scale the crossing cubic by ±4 exactly, so the root is the same
    // for all, and X.x − 4 is exact: segments ending exactly at X give s = 0 and s = 1.
    const P curves[][4] = {{{2, -2}, {6, -1}, {2, 3}, {6, 4}}, {{1, -3}, {9, 0}, {0, 2}, {7, 5}}, {{3, 0}, {9, 2}, {1, 1}, {5, 3}}};
    for (const auto& c : curves)
        for (const bool swap : {false, true}) {
            P p[4];
            for (int j = 0; j < 4; ++j) p[j] = swap ? P{c[j].y, c[j].x} : c[j];
            const auto at = [swap](double along) { return swap ? P{1, along} : P{along, 1}; };
            const P probe[2] = {at(0), at(4)};
            std::vector<double> ts, ss;
            ASSERT_TRUE(FindBezierLineIntersection(p, probe, ts, ss, false) && ts.size() == 1);
            const P X = Horner(qtest::Basis(p), ts[0]);
            const double x = swap ? X.y : X.x;
            ASSERT_TRUE(x >= 2 && x <= 8) << x;
            const std::array<double, 3> segs[] = {{x, x - 4, 1}, {x - 4, x, 1}, {x + 1e-9, x + 4, 0}, {x - 4, x - 1e-9, 0}, {x - 4, x + 4, 1}};
            for (const auto& s : segs) {
                const P seg[2] = {at(s[0]), at(s[1])};
                EXPECT_EQ(DoesBezierIntersectLineSegment(p, seg), s[2] == 1) << "swap " << swap << ": " << s[0] << " .. " << s[1];
            }
        }
}
