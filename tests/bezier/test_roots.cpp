#include "bezier/roots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "bezier/bernstein.h"
#include "geometry/precision_guard.h"
#include "solve_by_degree.h"

using namespace QorMath;

namespace {

using Poly = std::vector<double>;  // power basis, highest power first
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();
constexpr double kUnwritten = -1234.5;  // what every slot of the root array holds before a call
constexpr int kSlots = 20;              // degree + 2 usable slots at most 14; the rest must stay unwritten

// The solver of c's degree, checked to report 0..degree + 2 roots and to leave
// every slot past degree + 2 unwritten. slot0 receives slot 0 after the call.
Poly Roots(const Poly& c, bool ends = false, double* slot0 = nullptr) {
    const int n = int(c.size()) - 1;
    double r[kSlots];
    std::fill(r, r + kSlots, kUnwritten);
    const int count = qtest::SolveByDegree(c.data(), n, r, ends);
    for (int i = n + 2; i < kSlots; ++i) EXPECT_TRUE(std::memcmp(&r[i], &kUnwritten, sizeof r[i]) == 0) << "slot " << i;
    EXPECT_TRUE(count >= 0 && count <= n + 2) << count;
    if (slot0) *slot0 = r[0];
    return Poly(r, r + std::clamp(count, 0, n + 2));
}

// Same length and every root within tol (inclusive; 0 asks for equality).
::testing::AssertionResult Match(const Poly& got, const Poly& want, double tol) {
    bool ok = got.size() == want.size();
    for (size_t i = 0; ok && i < got.size(); ++i) ok = std::fabs(got[i] - want[i]) <= tol;
    auto result = ok ? ::testing::AssertionSuccess() : ::testing::AssertionFailure();
    result << std::setprecision(17) << "got {";
    for (double g : got) result << " " << g;
    result << " } want {";
    for (double w : want) result << " " << w;
    return result << " }";
}

// lead·Π(t − rᵢ)·Π((t − αⱼ)² + βⱼ²) expanded in long double, rounded once.
Poly Expand(long double lead, const std::vector<long double>& roots,
            const std::vector<std::pair<long double, long double>>& complexPairs = {}) {
    std::vector<long double> p{lead};
    const auto times = [&p](std::vector<long double> f) {  // f highest power first
        std::vector<long double> q(p.size() + f.size() - 1, 0.0L);
        for (size_t i = 0; i < p.size(); ++i)
            for (size_t j = 0; j < f.size(); ++j) q[i + j] += p[i] * f[j];
        p = q;
    };
    for (long double r : roots) times({1, -r});
    for (auto [a, b] : complexPairs) times({1, -2 * a, a * a + b * b});
    return Poly(p.begin(), p.end());
}

Poly Pad(Poly p, int leadingZeros, int trailingZeros) {
    p.insert(p.begin(), leadingZeros, 0.0);
    p.insert(p.end(), trailingZeros, 0.0);
    return p;
}

long double Choose(int n, int k) {
    long double r = 1;
    for (int i = 1; i <= k; ++i) r = r * (n - k + i) / i;
    return r;
}

}  // namespace

// t = −b/a lands in slot 0 whatever its value; only the count depends on the interval.
TEST(LinearRoot, SlotZeroAndInterval) {
    struct Row { double a, b; bool ends; int count; double slot0; };
    const Row rows[] = {
        {2, -1, false, 1, 0.5}, {1, -1, true, 1, 1.0},  {1, -1, false, 0, 1.0}, {4, 0, true, 1, 0.0}, {4, 0, false, 0, 0.0},
        {1, 1, true, 0, -1.0},  {-2, 3, false, 0, 1.5}, {0, 1, true, 0, kUnwritten}, {-0.0, 1, true, 0, kUnwritten},
        {1e-300, -1e-301, false, 1, 0.1}, {kNaN, 1, true, 0, kNaN},
    };
    for (const Row& r : rows) {
        double slot0 = 0;
        EXPECT_EQ(int(Roots({r.a, r.b}, r.ends, &slot0).size()), r.count) << r.a << " " << r.b << " " << r.ends;
        EXPECT_TRUE(std::isnan(r.slot0) ? std::isnan(slot0) : std::fabs(slot0 - r.slot0) <= 1e-16) << slot0;
    }
}

// Worked examples for every branch of the closed forms and of the drivers. With
// the flag set, degrees 3 to 5 add exactly 0.0 first or 1.0 last when a Bernstein
// end value is within DBL_EPSILON of zero; a zero leading or constant coefficient
// drops a degree, and the driver's step for t = 0 drops, snaps, keeps or sorts in
// the quotient's 0. Degrees 6 and up shed zeros one degree at a time down to the
// quintic with the flag clear, so neither 0 nor 1 is ever reported.
TEST(Roots, WorkedExamples) {
    const long double w = std::sqrt(0.515625L);  // t² − 0.875t + 0.0625 has roots (0.875 ∓ w)/2
    const double q1 = double((0.875L - w) / 2), q2 = double((0.875L + w) / 2);
    const Poly atOne{1, -1.875, 0.9375, -0.0625};  // (t − 1)(t² − 0.875t + 0.0625)
    // (t − 1)²(t − 0.25) + 2⁻⁵⁴: every coefficient and every Bernstein step is exact.
    const Poly tinyAtOne{1, -2.25, 1.5, -0.25 + 0x1p-54};
    ASSERT_EQ(bernstein::ToBernstein<3>(tinyAtOne.data()).b[3], 0x1p-54);
    const Poly tinyAtZero{1, -0.75, 0, -0x1p-54};  // t³ − 0.75t² − 2⁻⁵⁴: negative near 0, no root there
    // t(t − 1)(t − 0.25)(t − 0.625) + 2⁻⁵³: both end values 2⁻⁵³, four roots inside. With
    // the flag the 0.0 counts toward the degree, so once 0.625 is found the isolation
    // stops and the root just below 1 is not reported.
    const Poly bothEnds{1, -1.875, 1.03125, -0.15625, 0x1p-53};
    const auto polygon = bernstein::ToBernstein<4>(bothEnds.data());
    ASSERT_TRUE(polygon.b[0] == 0x1p-53 && polygon.b[4] == 0x1p-53);
    const double nearZero = 0x1p-53 / 0.15625, nearOne = 1 - 0x1p-53 / (0.75 * 0.375);
    // Likewise the left piece of the first split holds the 0.0 and two roots: 0.7 is never visited.
    const Poly stops = Expand(1, {1e-17L, 0.2L, 0.7L});
    ASSERT_LE(std::fabs(stops[3]), DBL_EPSILON);
    struct Row { Poly c; bool ends; Poly want; };
    const Row rows[] = {
        // Quadratic: |a| <= 1e-9 (inclusive) is linear; c = 0 puts 0 in front when the ends count.
        {{1e-9, 0, -2.5e-10}, true, {}}, {{-1e-9, 2, -1}, false, {0.5}}, {{-2e-9, 0, 5e-10}, true, {0.5}},
        {{1, -1, 0}, true, {0.0, 1.0}}, {{1, -0.5, 0}, false, {0.5}}, {{1, 1, 0}, true, {0.0}}, {{1, 0, 0}, true, {0.0, 0.0}},
        // D == 0 (also at 1), D < 0, two roots with a < 0, a root at 1, one inside, none, NaN.
        {{1, -0.5, 0.0625}, false, {0.25}}, {{1, -2, 1}, true, {1.0}}, {{1, -2, 1}, false, {}}, {{1, -1, 0.5}, true, {}},
        {{-2, 2, -0.375}, true, {0.25, 0.75}}, {{1, -1.5, 0.5}, true, {0.5, 1.0}}, {{1, -1.5, 0.5}, false, {0.5}},
        {{1, 0, -0.25}, true, {0.5}}, {{1, 1.5, 0.5}, true, {}}, {{kNaN, kNaN, kNaN}, true, {}},
        // Degrees 3 to 5, c[0] = 0 (or −0): one degree down, the flag passed on.
        {{0, 1, -1.5, 0.5}, true, {0.5, 1.0}}, {{0, 1, -1.5, 0.5}, false, {0.5}},
        {{-0.0, 0, 1, -1, 0.1875}, true, {0.25, 0.75}}, {{0, 0, 0, 0, 2, -1}, true, {0.5}},
        // c[n] = 0: flag clear, no 0 and no snap; c[n−1] = 0 too; snap 1e-8 to 0; 2e-7 kept as k >= n − 1.
        {Expand(1, {0, 1e-8L, 0.5}), false, {1e-8, 0.5}}, {Expand(1, {0, 0, 0.5}), true, {0.0, 0.5}},
        {Expand(1, {0, 1e-8L, 0.5}), true, {0.0, 0.5}}, {Expand(1, {0, 2e-7L, 0.5}), true, {2e-7, 0.5}},
        // k >= n − 1 drops t = 0 (cubic, quintic, a quotient reporting its root 1).
        {Expand(1, {0, 0.25, 0.5}), true, {0.25, 0.5}}, {Pad(atOne, 0, 1), true, {q1, q2, 1.0}},
        {Expand(3, {0, 0.1L, 0.3L, 0.7L, 0.9L}), true, {0.1, 0.3, 0.7, 0.9}},
        // Otherwise 0 is sorted in, also among no quotient roots; t² drops 0 at both levels, or
        // is sorted in below and kept above.
        {Expand(1, {0, 0.5, 2}), true, {0.0, 0.5}}, {Expand(1, {0}, {{0, 1}}), true, {0.0}},
        {Expand(-1, {0, 0.1L, 0.9L, -1, 3}), true, {0.0, 0.1, 0.9}},
        {Expand(1, {0, 0, 0.25, 0.5, 0.75}), true, {0.25, 0.5, 0.75}}, {Expand(1, {0, 0, 0.5, 2, -1}), true, {0.0, 0.5}},
        // End values: exactly 0, within DBL_EPSILON, isolation stopping at the degree.
        {atOne, true, {q1, q2, 1.0}}, {atOne, false, {q1, q2}}, {tinyAtOne, true, {0.25, 1.0}}, {tinyAtOne, false, {0.25}},
        {tinyAtZero, true, {0.0, 0.75}}, {tinyAtZero, false, {0.75}},
        {bothEnds, true, {0.0, nearZero, 0.25, 0.625, 1.0}}, {bothEnds, false, {nearZero, 0.25, 0.625, nearOne}},
        {stops, true, {0.0, 1e-17, 0.2}}, {stops, false, {1e-17, 0.2, 0.7}},
        // Roots 1e-9 inside the ends are found; 1e-9 outside they are not.
        {Expand(1, {1e-9L, 0.4L, 1 - 1e-9L}), true, {1e-9, 0.4, 1 - 1e-9}},
        {Expand(-1, {-1e-9L, 0.3L, 0.5L, 0.7L, 1 + 1e-9L}), true, {0.3, 0.5, 0.7}},
        // Degrees 6 to 11: degree 6 keeps its root 1 out; chains down to the quadratic from either end.
        {Pad({1, -1.5, 0.5, 0, 0, 0}, 1, 0), false, {0.5}}, {Pad({1, -0.5, 0}, 9, 0), false, {0.5}},
        {Pad(Expand(1, {0.3L, 0.6L}), 0, 9), false, {0.3, 0.6}},
        {Pad(Expand(1, {0.05L, 0.5L, 0.95L, 0, 1.2L, 1.5L}), 1, 2), false, {0.05, 0.5, 0.95}},
    };
    for (size_t k = 0; k < std::size(rows); ++k) {
        const Row& r = rows[k];
        const Poly got = Roots(r.c, r.ends);
        EXPECT_TRUE(Match(got, r.want, 1e-12)) << "row " << k;
        for (size_t i = 0; i < got.size() && got.size() == r.want.size(); ++i)  // end roots are written exactly
            EXPECT_TRUE(got[i] == r.want[i] || (r.want[i] != 0.0 && r.want[i] != 1.0)) << "row " << k << " root " << i;
    }
    double slot0 = 0;  // t² − t, open: the linear solver's 1 is written though not counted
    EXPECT_TRUE(Roots({1, -1, 0}, false, &slot0).empty());
    EXPECT_EQ(slot0, 1.0);
}

// A piece whose polygon starts with two zero values touches the axis at its
// start without crossing: no sign change, yet its start is reported as a root.
TEST(Bernstein, TouchingStartWithoutSignChange) {
    double roots[5] = {-1, -1, -1, -1, -1};
    const double c[4] = {1, 0, 0, 0};  // t³: polygon 0, 0, 0, 1 over [0, 1]
    bernstein::RootList list{roots, 0, 5};
    bernstein::IsolateBernsteinRoots<3>(bernstein::ToBernstein<3>(c), c, list);
    ASSERT_EQ(list.count, 1);
    EXPECT_EQ(roots[0], 0.0);
    list.count = 0;
    bernstein::IsolateBernsteinRoots<3>(bernstein::Polygon<3>{{0.25, 0.5, 0.75, 1.0}, {0, 1, 2, 3}}, c, list);
    EXPECT_EQ(list.count, 0);
}

// A double root that the polygon cannot separate is found once, by the probe on
// p′; the probe starts just left of 0 and so converges to the smallest root of p′:
// (t − 0.3)²(t − 0.7)² reports 0.3 for both double roots. Rounding may also split
// a double root into two simple ones some 1e-8 apart, reported as such.
TEST(Roots, DoubleRoots) {
    EXPECT_TRUE(Match(Roots(Expand(1, {0.3L, 0.3L, 0.8L}), true), {0.3, 0.8}, 1e-9));
    const Poly split = Roots(Expand(-2, {0.15L, 0.3L, 0.3L, 0.8L}), false);
    EXPECT_TRUE(Match(split, {0.15, 0.3, 0.3, 0.8}, 1e-7) || Match(split, {0.15, 0.3, 0.8}, 1e-7)) << Match(split, {}, 0).message();
    EXPECT_TRUE(Match(Roots(Expand(1, {0.3L, 0.3L, 0.7L, 0.7L})), {0.3, 0.3}, 1e-9));
    EXPECT_TRUE(Match(Roots(Expand(1, {0.3L, 0.3L, 1.5L}, {{0.5L, 1}, {0.2L, 2}, {0.9L, 1}, {0.6L, 3}})), {0.3}, 1e-9));
}

// The conversion bᵢ = Σⱼ≤ᵢ C(i,j)·(aⱼ/C(N,j)), and the de Casteljau pieces at s: each
// the Bernstein form over [0, 1] of q(v) = p(from + (to − from)·v), against the explicit
// sum in long double. Every fourth trial takes aⱼ = kⱼ·C(N,j) with integer kⱼ: the
// quotients are exact, and so is every sum of the conversion.
template <int N>
void CheckBernstein(std::mt19937& rng) {
    std::uniform_real_distribution<double> u(-4, 4);
    for (int j = 0; j <= N; ++j) EXPECT_EQ(bernstein::Binomial(N, j), double(Choose(N, j)));
    for (int trial = 0; trial < 40; ++trial) {
        const bool exact = trial % 4 == 0;
        double c[N + 1];
        long double size = 0;
        for (int j = 0; j <= N; ++j) {
            c[N - j] = exact ? double((int(rng() % 2001) - 1000) * Choose(N, j)) : std::ldexp(u(rng), int(rng() % 61) - 30);
            size += std::fabs(c[N - j]);
        }
        const bernstein::Polygon<N> p = bernstein::ToBernstein<N>(c);
        for (int i = 0; i <= N; ++i) EXPECT_EQ(p.x[i], double(i) / N);
        const double s = trial % 2 ? 0.5 : (trial % 7 + 1) / 8.0 - 0.03;
        bernstein::Polygon<N> left, right;
        if (s == 0.5)
            bernstein::SplitPolygon<N>(p, left, right, [](double a, double b) { return (a + b) * 0.5; });
        else
            bernstein::SplitPolygon<N>(p, left, right, [s](double a, double b) { return (b - a) * s + a; });
        const long double ls = s;
        for (const auto& [piece, from, to] : {std::tuple{&p, 0.0L, 1.0L}, {&left, 0.0L, ls}, {&right, ls, 1.0L}}) {
            std::vector<long double> q(N + 1, 0.0L), power{1};  // lowest power first
            for (int j = 0; j <= N; ++j) {
                for (int k = 0; k <= j; ++k) q[k] += c[N - j] * power[k];
                std::vector<long double> next(j + 2, 0.0L);  // power *= from + (to − from)·v
                for (int k = 0; k <= j; ++k) next[k] += power[k] * from, next[k + 1] += power[k] * (to - from);
                power = next;
            }
            for (int i = 0; i <= N; ++i) {
                long double sum = 0, terms = 0;
                for (int j = 0; j <= i; ++j) {
                    const long double term = Choose(i, j) * (q[j] / Choose(N, j));
                    sum += term, terms += std::fabs(term);
                }
                const long double tol = piece != &p ? 8 * N * DBL_EPSILON * size : exact ? 0 : 2 * N * DBL_EPSILON * terms;
                EXPECT_LE(std::fabs(piece->b[i] - sum), tol) << "N " << N << " s " << s << " i " << i;
                EXPECT_LE(std::fabs(piece->x[i] - (from + (to - from) * i / N)), 4 * DBL_EPSILON);
            }
        }
    }
}

template <int... N>
void CheckBernsteinDegrees(std::mt19937& rng, std::integer_sequence<int, N...>) {
    (CheckBernstein<N + 1>(rng), ...);
}

TEST(Bernstein, ConversionAndSplit) {
    std::mt19937 rng(12);
    CheckBernsteinDegrees(rng, std::make_integer_sequence<int, 12>{});
}

// Scaling every coefficient by a power of two scales every intermediate exactly:
// the isolated roots keep their bits. The end-root tests are absolute, though:
// scaled down, both end values fall below DBL_EPSILON and the flag adds 0 and 1.
// Far enough down the sign test bᵢ·bᵢ₊₁ < 0 underflows to 0 and sees nothing.
TEST(Roots, ScaleInvariance) {
    for (const Poly& c : {Expand(1, {0.1L, 0.45L, 1.8L}), Expand(-1, {0.2L, 0.55L, 0.9L}, {{2, 1}}),
                          Expand(1, {0.1L, 0.3L, 0.5L, 0.7L, 0.9L, 2}, {{0.5L, 1}, {1, 1}})}) {
        const Poly unscaled = Roots(c);
        for (int e : {-600, -450, -200, 200, 900}) {
            Poly scaled = c, want = e == -600 ? Poly{} : unscaled, withEnds = want;
            for (double& v : scaled) v = std::ldexp(v, e);
            if (e < 0) withEnds.insert(withEnds.begin(), 0.0), withEnds.push_back(1.0);
            EXPECT_TRUE(Match(Roots(scaled), want, 0)) << e;
            EXPECT_TRUE(c.size() > 6 || Match(Roots(scaled, true), withEnds, 0)) << e;
        }
    }
}

// NaN, infinite, huge and subnormal coefficients: every solver returns, reports at
// most degree + 2 roots and writes nothing past them (checked inside Roots).
// All-NaN input has no sign changes and no end roots.
TEST(Roots, NonFiniteAndExtremeCoefficients) {
    const double pool[] = {kNaN, kInf, -kInf, DBL_MAX, -DBL_MAX, 1e300, -1e300, 1e-300, 4.9e-324, -4.9e-324,
                           1e-310, DBL_MIN, DBL_EPSILON, 0.0, -0.0, 1.0, -1.0, 0.5, -3.0, 1e-17};
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-2, 2);
    for (int n = 1; n <= 12; ++n) {
        for (bool ends : {false, true}) EXPECT_TRUE(Roots(Poly(n + 1, kNaN), ends).empty()) << n;
        for (int trial = 0; trial < 400; ++trial) {
            Poly c(n + 1);
            for (double& v : c) v = rng() % 3 ? pool[rng() % std::size(pool)] : u(rng);
            Roots(c, trial % 2);
        }
    }
}

// Products of known factors: the real roots in (0, 1) are found, in order, to 1e-9
// with either flag; real roots outside and complex pairs do not count. First cases
// by hand, with roots and pairs close to the ends, the axis and each other; then
// random roots in [0, 1], apart from each other and from the ends by at least 1e-3,
// times real factors outside and complex pairs, kept when the roots of the rounded
// coefficients are determined to well under 1e-9 (condition Σ|cⱼ|rⁿ⁻ʲ / |p′(r)| times
// the unit roundoff).
TEST(Roots, ProductsOfKnownFactors) {
    using Pairs = std::vector<std::pair<long double, long double>>;
    const auto check = [](long double lead, const std::vector<long double>& roots, const Pairs& pairs) {
        const Poly c = Expand(lead, roots, pairs);
        Poly want;
        for (long double t : roots)
            if (t > 0 && t < 1) want.push_back(double(t));
        std::sort(want.begin(), want.end());
        for (bool ends : {false, true}) EXPECT_TRUE(Match(Roots(c, ends), want, 1e-9)) << "degree " << c.size() - 1;
    };
    struct Row { long double lead; std::vector<long double> roots; Pairs pairs; };
    const Row rows[] = {
        {5, {}, {{0.5L, 0.1L}}}, {1, {0.62L}, {{0.3L, 0.05L}}}, {-0.25L, {0.01L, 0.99L, 1.01L}, {{0.5L, 0.2L}}},
        {-1, {0.42L, 0.58L, 0.999L}, {{0.1L, 0.3L}, {0.5L, 0.5L}, {0.9L, 0.2L}}},
        {0.5L, {0.001L, 0.25L, 0.5L, 0.75L}, {{0.3L, 2}, {0.6L, 2}, {-1, 1}}},
        {1, {0.1L, 0.2L, 0.3L, 0.5L, 0.7L, 0.85L, 1.05L, -0.05L, 2, -2, 3}, {}},
        {1, {0.5L}, {{0.5L, 1}, {0.5L, 2}, {0.5L, 3}, {0.5L, 4}, {0.5L, 5}}},
        {1, {0.07L, 0.3L, 0.52L, 0.74L, 0.96L, 1.4L}, {{0.5L, 0.5L}, {0.2L, 1}, {0.8L, 1}}},  // 12: the bare isolation
    };
    for (const Row& r : rows) check(r.lead, r.roots, r.pairs);

    std::mt19937 rng(2024);
    std::uniform_real_distribution<long double> unit(0, 1);
    int kept = 0;
    for (int n = 1; n <= 12; ++n)
        for (int trial = 0; trial < 300; ++trial) {
            const int inside = int(rng() % (std::min(n, 8) + 1));
            std::vector<long double> roots;
            for (int i = 0; i < inside; ++i) roots.push_back(1e-3L + (1 - 2e-3L) * unit(rng));
            std::sort(roots.begin(), roots.end());
            if (std::adjacent_find(roots.begin(), roots.end(), [](auto a, auto b) { return b - a < 1e-3L; }) != roots.end())
                continue;
            Pairs pairs;
            for (int left = n - inside; left > 0;) {
                if (left >= 2 && rng() % 2) {
                    pairs.push_back({-1 + 3 * unit(rng), 0.05L + unit(rng)}), left -= 2;
                } else {
                    const long double d = 0.05L + 2 * unit(rng);
                    roots.push_back(rng() % 2 ? -d : 1 + d), --left;
                }
            }
            const long double lead = (rng() % 2 ? 1 : -1) * (0.5L + 3 * unit(rng));
            const Poly c = Expand(lead, roots, pairs);
            long double atOne = 0;
            for (double v : c) atOne += v;
            bool wellPosed = std::fabs(c[n]) >= 1e-12 && std::fabs(atOne) >= 1e-12L;
            for (int i = 0; i < inside; ++i) {
                long double size = 0, slope = 0;
                for (int j = 0; j <= n; ++j) size = size * roots[i] + std::fabs((long double)c[j]);
                for (int j = 0; j < n; ++j) slope = slope * roots[i] + (n - j) * (long double)c[j];
                wellPosed = wellPosed && 2 * n * DBL_EPSILON * size < 1e-11L * std::fabs(slope);
            }
            if (wellPosed) ++kept, check(lead, roots, pairs);
        }
    EXPECT_GT(kept, 2500);
}

#if defined(__i386__) || defined(__x86_64__)
// The solvers raise x87 precision for their work and put the caller's back.
TEST(Roots, RestoresPrecisionControl) {
    const unsigned saved = ReadPrecisionControl();
    const Poly cubic = Expand(1, {0.2L, 0.4L, 0.6L}), degree11 = Expand(1, {0.1L, 0.3L, 0.5L, 0.7L, 0.9L, 2, 3, 4, 5, 6, 7});
    for (unsigned pc : {PrecisionSingle, PrecisionDouble}) {
        WritePrecisionControl(pc);
        double r[kSlots];
        FindCubicRoots(cubic.data(), r, true), FindDegree11Roots(degree11.data(), r);
        EXPECT_EQ(ReadPrecisionControl(), pc);
    }
    WritePrecisionControl(saved);
}
#endif
