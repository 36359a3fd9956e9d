#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
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
using Ts = std::vector<double>;

template <typename T, typename C>
T F(const C& c, T x, T y) {
    return c[0] * x * x * x + c[1] * y * y * y + c[2] * x * x * y + c[3] * x * y * y + c[4] * x * x + c[5] * y * y +
           c[6] * x * y + c[7] * x + c[8] * y + c[9];
}

// Zeros of g in (0, 1): sign changes on a grid, bisected in long double. None when g comes within 1e-4 of its
// largest value of 0 away from a crossing (a near-tangency), or a zero lies within 1e-3 of an end or of another:
// such cases are ill-conditioned for any solver and are left out.
template <typename G>
std::optional<std::vector<LD>> Zeros(G g) {
    const int n = 2000;
    LD v[n + 1], big = 0;
    std::vector<LD> r;
    for (int i = 0; i <= n; ++i) v[i] = g(LD(i) / n), big = std::max(big, std::fabs(v[i]));
    for (int i = 0; i < n; ++i) {
        LD lo = LD(i) / n, hi = LD(i + 1) / n;
        if ((v[i] < 0) == (v[i + 1] < 0)) continue;
        for (int k = 0; k < 70; ++k) ((g((lo + hi) / 2) < 0) == (v[i] < 0) ? lo : hi) = (lo + hi) / 2;
        if (lo < 1e-3L || lo > 1 - 1e-3L || (!r.empty() && lo - r.back() < 1e-3L)) return std::nullopt;
        r.push_back(lo);
    }
    for (int i = 0; i <= n; ++i)
        if (std::fabs(v[i]) < 1e-4L * big && std::none_of(r.begin(), r.end(), [&](LD z) { return std::fabs(z - LD(i) / n) < 1e-3L; }))
            return std::nullopt;
    return r;
}

// B(t) = ((a·t + b)·t + c)·t + d in double: the point the line parameter is taken from.
P Horner(const P p[4], double t) {
    const qtest::Basis B(p);
    return {((B.a.x * t + B.b.x) * t + B.c.x) * t + B.d.x, ((B.a.y * t + B.b.y) * t + B.c.y) * t + B.d.y};
}

bool Bits(const Ts& a, const Ts& b) { return std::equal(a.begin(), a.end(), b.begin(), b.end(), SameBits<double>); }

}  // namespace

TEST(BezierImplicit, VanishesOnTheCurve) {
    // f has degree 3, so vanishing at ten points of an (irreducible) cubic makes it a multiple of the curve's
    // equation, and c1 = −a.y³, c2 = a.x³ fix the multiple: integer curves, exact in int64 at B(−5) … B(5).
    // Real curves: f(B(t)) vanishes for t inside and outside [0, 1], relative to the size of the resultant's terms,
    // at most the product of the Sylvester matrix's row sums, (Σ|Y coefficients|)³·(Σ|X coefficients|)³.
    const P arch[4] = {{0, 0}, {1, 2}, {3, 2}, {4, 0}}, quadratic[4] = {{5, 7}, {7, 9}, {9, 9}, {11, 7}};
    const auto implicit = [](const P p[4]) {
        const qtest::Basis B(p);
        std::array<double, 10> k;
        ConvertBezierToImplicit(B.a, B.b, B.c, B.d, k[0], k[1], k[2], k[3], k[4], k[5], k[6], k[7], k[8], k[9]);
        return k;
    };
    EXPECT_EQ(implicit(arch), (std::array<double, 10>{0, -8, 0, 0, -432, -180, 0, 1728, -864, 0}));
    EXPECT_EQ(implicit(quadratic), (std::array<double, 10>{}));  // no t³ term: zero throughout
    std::mt19937 rng(31);
    std::uniform_int_distribution<int> ui(-6, 6);
    for (int i = 0; i < 200; ++i) {
        P ip[4], rp[4];
        for (int j = 0; j < 4; ++j) ip[j] = {double(ui(rng)), double(ui(rng))}, rp[j] = qtest::RandomPoint(rng);
        const qtest::Basis B(ip), R(rp);
        const auto ik = implicit(ip), rk = implicit(rp);
        int64_t c[10];
        for (int j = 0; j < 10; ++j) {
            c[j] = std::llround(ik[j]);
            ASSERT_EQ(double(c[j]), ik[j]) << "curve " << i << " c" << j + 1;
        }
        EXPECT_TRUE(c[0] == -std::pow(B.a.y, 3) && c[1] == std::pow(B.a.x, 3)) << "curve " << i;
        for (int64_t t = -5; t <= 5; ++t) {
            const P b = Horner(ip, double(t));
            EXPECT_EQ(F(c, int64_t(b.x), int64_t(b.y)), 0) << "curve " << i << " t " << t;
        }
        for (const LD t : {-1.5L, -0.5L, 0.0L, 0.3L, 0.5L, 1.0L, 1.7L, 2.5L}) {
            const qtest::LongPoint b = BernsteinAt(rp, t);
            const auto sum = [](LD a, LD b, LD c, LD d) { return std::fabs(a) + std::fabs(b) + std::fabs(c) + std::fabs(d); };
            const LD scale = std::pow(sum(R.a.x, R.b.x, R.c.x, R.d.x - b.x) * sum(R.a.y, R.b.y, R.c.y, R.d.y - b.y), 3);
            EXPECT_NEAR(F(rk, b.x, b.y), 0, 1e-14L * scale) << "curve " << i << " t " << double(t);
        }
    }
}

TEST(BezierLine, RandomLinesAgainstLongDouble) {
    // Lines through a point of the curve or anywhere; every fourth from an integer point along a table direction,
    // axis-parallel or with |dx| = |dy|. Stale contents cleared; each B(t) on the line; the roots those of a
    // long-double reference, and the same with the end flag when no end is on the line. s = (B(t) − L0)·(1/d) in
    // the component where |d| is larger, y on a tie, to the bit: the other component gives other bits often enough
    // (infinities on axis-parallel lines) to tell them apart. The crossings with x = L0.x appended to what the
    // vector held, as the reference finds them. The integer forms equal the double forms on converted points.
    const P dirs[] = {{4, 0}, {-3, 0}, {0, 4}, {0, -5}, {3, 3}, {3, -3}, {-2.5, 2.5}};
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(0, 1);
    int compared = 0, roots = 0, differ[8] = {};
    const auto toInt = [](P v) { return tagPOINT{int(std::lround(v.x * 50)), int(std::lround(v.y * 50))}; };
    const auto toDouble = [](tagPOINT v) { return P{double(v.x), double(v.y)}; };
    for (int i = 0; i < 800; ++i) {
        P p[4], L[2], dp[4], dL[2];
        tagPOINT ip[4], iL[2];
        for (P& q : p) q = qtest::RandomPoint(rng);
        const qtest::LongPoint on = BernsteinAt(p, u(rng));
        L[0] = i % 3 ? P{double(on.x), double(on.y)} : qtest::RandomPoint(rng), L[1] = qtest::RandomPoint(rng);
        const int dir = i % 4 == 3 ? 1 + i / 4 % 7 : 0;
        if (dir) L[0] = {std::round(L[0].x), std::round(L[0].y)}, L[1] = {L[0].x + dirs[dir - 1].x, L[0].y + dirs[dir - 1].y};
        Ts ts{4, 5}, ss{6}, ts2, ss2, xs{0.75};
        const bool ok = FindBezierLineIntersection(p, L, ts, ss, false);
        ASSERT_TRUE(ok == !ts.empty() && ts.size() == ss.size());
        const LD dx = LD(L[1].x) - L[0].x, dy = LD(L[1].y) - L[0].y;
        const auto g = [&](LD t) { const auto b = BernsteinAt(p, t); return (b.x - L[0].x) * dy - (b.y - L[0].y) * dx; };
        for (size_t j = 0; j < ts.size(); ++j) {
            const P b = Horner(p, ts[j]);
            const double sx = (b.x - L[0].x) * (1 / (L[1].x - L[0].x)), sy = (b.y - L[0].y) * (1 / (L[1].y - L[0].y));
            EXPECT_LT(std::fabs(g(ts[j])), 1e-9L * std::hypot(dx, dy)) << "case " << i;
            EXPECT_TRUE(SameBits(ss[j], std::fabs(dx) > std::fabs(dy) ? sx : sy)) << "case " << i << ": " << ss[j];
            differ[dir] += !SameBits(sx, sy);
        }
        if (const auto ref = Zeros(g)) {
            ++compared, roots += int(ref->size());
            ASSERT_EQ(ts.size(), ref->size()) << "case " << i;
            for (size_t j = 0; j < ts.size(); ++j) EXPECT_NEAR(ts[j], (*ref)[j], 1e-11) << "case " << i;
            EXPECT_TRUE(FindBezierLineIntersection(p, L, ts2, ss2, true) == ok && ts2 == ts && ss2 == ss) << i;
        }
        EXPECT_TRUE(FindBezierIntersectionsAtX(p, L[0].x, xs, false) && xs[0] == 0.75);
        if (const auto ref = Zeros([&](LD t) { return BernsteinAt(p, t).x - L[0].x; })) {
            ASSERT_EQ(xs.size(), ref->size() + 1) << "case " << i;
            for (size_t j = 0; j < ref->size(); ++j) EXPECT_NEAR(xs[j + 1], (*ref)[j], 1e-11) << "case " << i;
        }
        for (int j = 0; j < 4; ++j) ip[j] = toInt(p[j]), dp[j] = toDouble(ip[j]);
        for (int j = 0; j < 2; ++j) iL[j] = toInt(L[j]), dL[j] = toDouble(iL[j]);
        const bool iok = FindBezierLineIntersection(ip, iL, ts, ss, i % 2);
        EXPECT_TRUE(iok == FindBezierLineIntersection(dp, dL, ts2, ss2, i % 2) && ts == ts2 && ss == ss2) << i;
        EXPECT_EQ(DoesBezierIntersectLineSegment(ip, iL), DoesBezierIntersectLineSegment(dp, dL)) << "case " << i;
    }
    EXPECT_GT(compared, 700);
    EXPECT_GT(roots, 850);
    for (int n : differ) EXPECT_GT(n, 0);
}

TEST(BezierLine, EndPointsAndDegenerateLines) {
    // An arch from (0, 0) to (4, 0). The flag adds t = 0 in front or t = 1 at the back, with its s, where an end
    // lies on the line, and changes nothing else.
    const P p[4] = {{0, 0}, {1, 3}, {3, 3}, {4, 0}};
    const struct {
        P L[2];
        size_t inside;       // crossings without the flag, all in (0, 1)
        double front, back;  // s of the added t = 0 and t = 1; NaN: not added
    } cases[] = {
        {{{0, 0}, {4, 0}}, 0, 0.0, 1.0},            // the chord: both ends, nothing between
        {{{-2, -2}, {2, 2}}, 1, 0.5, qtest::kNaN},  // through P0, crossing once inside (s from y on the tie)
        {{{2, 2}, {6, -2}}, 1, qtest::kNaN, 0.5},   // through P3, crossing once inside
    };
    for (const auto& c : cases) {
        Ts t0{9}, s0{9}, t1, s1;
        FindBezierLineIntersection(p, c.L, t0, s0, false);
        ASSERT_TRUE(FindBezierLineIntersection(p, c.L, t1, s1, true) && t0.size() == c.inside);
        for (double t : t0) EXPECT_TRUE(t > 0 && t < 1) << t;
        if (!std::isnan(c.front)) t0.insert(t0.begin(), 0.0), s0.insert(s0.begin(), c.front);
        if (!std::isnan(c.back)) t0.push_back(1.0), s0.push_back(c.back);
        EXPECT_TRUE(Bits(t1, t0) && Bits(s1, s0)) << c.L[0].x;
    }
    // A zero-length line finds nothing and leaves both vectors empty.
    const P dot[2] = {{2, 1}, {2, 1}};
    const tagPOINT ip[4] = {{0, 0}, {1, 3}, {3, 3}, {4, 0}}, idot[2] = {{2, 1}, {2, 1}};
    Ts ts{1}, ss{2}, its{1}, iss{2};
    EXPECT_FALSE(FindBezierLineIntersection(p, dot, ts, ss, true) || FindBezierLineIntersection(ip, idot, its, iss, true));
    EXPECT_TRUE(ts.empty() && ss.empty() && its.empty() && iss.empty());
    EXPECT_FALSE(DoesBezierIntersectLineSegment(p, dot) || DoesBezierIntersectLineSegment(ip, idot));

    // Vertical lines beyond the curve: true with the vector as it was, false when it was empty. At x = P0.x the
    // flag puts t = 0 in front, unless two more crossings already fill the cubic's room.
    const P wave[4] = {{1, 0}, {2, 5}, {-1, 4}, {3, 1}}, one[4] = {{1, 0}, {0, 5}, {3, 4}, {2, 1}};
    Ts kept{0.5, 0.25}, none;
    EXPECT_TRUE(FindBezierIntersectionsAtX(wave, 7, kept, true) && kept == Ts({0.5, 0.25}));
    EXPECT_TRUE(!FindBezierIntersectionsAtX(wave, -7, none, true) && none.empty());
    for (const P* c : {one, wave}) {
        Ts with, without;
        FindBezierIntersectionsAtX(c, 1, with, true);
        FindBezierIntersectionsAtX(c, 1, without, false);
        ASSERT_TRUE(with.size() == 2 && without.size() == (c == one ? 1u : 2u));
        EXPECT_TRUE(c == one ? SameBits(with[0], 0.0) && with[1] == without[0] : with == without);
        for (double t : without) EXPECT_GT(t, 0);
    }
}

TEST(BezierLine, SegmentEndsAreInclusive) {
    // Each curve crosses y = 1 (x = 1 with the coordinates swapped) once, at X with X.x in [2, 8]. Axis-parallel
    // segments of length 4 scale the crossing cubic by ±4 exactly, so the root is the same for all, and X.x − 4 is
    // exact: segments ending exactly at X give s = 0 and s = 1.
    const P curves[][4] = {{{2, -2}, {6, -1}, {2, 3}, {6, 4}}, {{1, -3}, {9, 0}, {0, 2}, {7, 5}},
                           {{3, 0}, {9, 2}, {1, 1}, {5, 3}}};
    for (const auto& c : curves)
        for (const bool swap : {false, true}) {
            P p[4];
            for (int j = 0; j < 4; ++j) p[j] = swap ? P{c[j].y, c[j].x} : c[j];
            const auto at = [swap](double along) { return swap ? P{1, along} : P{along, 1}; };
            const P probe[2] = {at(0), at(4)};
            Ts ts, ss;
            ASSERT_TRUE(FindBezierLineIntersection(p, probe, ts, ss, false) && ts.size() == 1);
            const double x = swap ? Horner(p, ts[0]).y : Horner(p, ts[0]).x;
            ASSERT_TRUE(x >= 2 && x <= 8) << x;
            const std::array<double, 3> segs[] = {
                {x, x - 4, 1}, {x - 4, x, 1}, {x + 1e-9, x + 4, 0}, {x - 4, x - 1e-9, 0}, {x - 4, x + 4, 1}};
            for (const auto& s : segs) {
                const P seg[2] = {at(s[0]), at(s[1])};
                EXPECT_EQ(DoesBezierIntersectLineSegment(p, seg), s[2] == 1) << swap << ": " << s[0] << " .. " << s[1];
            }
        }
}
