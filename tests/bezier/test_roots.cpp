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

using namespace QorMath;

namespace {

using Poly = std::vector<double>;  // power basis, highest power first
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();
constexpr double kUnwritten = -1234.5;  // what every slot of the root array holds before a call
constexpr int kSlots = 20;              // degree + 2 usable slots at most 14; the rest must stay unwritten

int Call(const double* c, int n, double* r, bool ends) {
    switch (n) {
        case 1: return FindLinearRoot(c, r, ends);
        case 2: return FindQuadraticRoots(c, r, ends);
        case 3: return FindCubicRoots(c, r, ends);
        case 4: return FindQuarticRoots(c, r, ends);
        case 5: return FindQuinticRoots(c, r, ends);
        case 6: return FindDegree6Roots(c, r);
        case 7: return FindDegree7Roots(c, r);
        case 8: return FindDegree8Roots(c, r);
        case 9: return FindDegree9Roots(c, r);
        case 10: return FindDegree10Roots(c, r);
        case 11: return FindDegree11Roots(c, r);
        default: {  // the bare isolation, as offset cusps run it on degree 12
            bernstein::RootList list{r, 0, 14};
            bernstein::AppendIsolatedRoots<12>(c, list);
            return list.count;
        }
    }
}

// The solver of c's degree, checked to report 0..degree + 2 roots and to leave
// every slot past degree + 2 unwritten. slot0 receives slot 0 after the call.
Poly Roots(const Poly& c, bool ends = false, double* slot0 = nullptr) {
    const int n = int(c.size()) - 1;
    double r[kSlots];
    std::fill(r, r + kSlots, kUnwritten);
    const int count = Call(c.data(), n, r, ends);
    for (int i = n + 2; i < kSlots; ++i) EXPECT_TRUE(std::memcmp(&r[i], &kUnwritten, sizeof r[i]) == 0) << "slot " << i;
    EXPECT_TRUE(count >= 0 && count <= n + 2) << count;
    if (slot0) *slot0 = r[0];
    return Poly(r, r + std::clamp(count, 0, n + 2));
}

// Same length and every root within tol (inclusive; 0 asks for equality).
::testing::AssertionResult Match(const Poly& got, const Poly& want, double tol) {
    bool ok = got.size() == want.size();
    for (size_t i = 0; ok && i < got.size(); ++i) ok = std::fabs(got[i] - want[i]) <= tol;
    if (ok) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure() << std::setprecision(17) << "got {";
    for (double g : got) failure << " " << g;
    failure << " } want {";
    for (double w : want) failure << " " << w;
    return failure << " }";
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
        {2, -1, true, 1, 0.5},  {2, -1, false, 1, 0.5},   {1, -1, true, 1, 1.0},   {1, -1, false, 0, 1.0},
        {4, 0, true, 1, 0.0},   {4, 0, false, 0, 0.0},    {1, 1, true, 0, -1.0},   {-2, 3, false, 0, 1.5},
        {0, 1, true, 0, kUnwritten}, {0, 0, true, 0, kUnwritten}, {-0.0, 1, true, 0, kUnwritten},
        {1e-300, -1e-301, false, 1, 0.1}, {kNaN, 1, true, 0, kNaN},
    };
    for (const Row& r : rows) {
        double slot0 = 0;
        const Poly got = Roots({r.a, r.b}, r.ends, &slot0);
        EXPECT_EQ(int(got.size()), r.count) << r.a << " " << r.b << " " << r.ends;
        EXPECT_TRUE(std::isnan(r.slot0) ? std::isnan(slot0) : std::fabs(slot0 - r.slot0) <= 1e-16) << slot0;
    }
}

TEST(QuadraticRoots, Branches) {
    struct Row { const char* what; Poly c; bool ends; Poly want; };
    const Row rows[] = {
        {"|a| <= 1e-9 is linear", {1e-9, 0, -2.5e-10}, true, {}},
        {"|a| <= 1e-9 is linear", {-1e-9, 2, -1}, false, {0.5}},
        {"just above 1e-9", {2e-9, 0, -5e-10}, false, {0.5}},
        {"just above 1e-9", {-2e-9, 0, 5e-10}, true, {0.5}},
        {"c = 0, swap puts 0 first", {1, -1, 0}, true, {0.0, 1.0}},
        {"c = 0, open", {1, -1, 0}, false, {}},
        {"c = 0", {1, -0.5, 0}, true, {0.0, 0.5}},
        {"c = 0", {1, -0.5, 0}, false, {0.5}},
        {"c = 0, linear root outside", {1, 1, 0}, true, {0.0}},
        {"c = 0, linear root outside", {2, -4, 0}, true, {0.0}},
        {"c = 0, t² gives 0 twice", {1, 0, 0}, true, {0.0, 0.0}},
        {"D == 0", {1, -0.5, 0.0625}, false, {0.25}},
        {"D == 0, scaled", {4, -2, 0.25}, true, {0.25}},
        {"D == 0 at 1", {1, -2, 1}, true, {1.0}},
        {"D == 0 at 1, open", {1, -2, 1}, false, {}},
        {"D < 0", {1, -1, 0.5}, true, {}},
        {"two roots", {1, -1, 0.1875}, false, {0.25, 0.75}},
        {"two roots, a < 0", {-2, 2, -0.375}, true, {0.25, 0.75}},
        {"root at 1", {1, -1.5, 0.5}, true, {0.5, 1.0}},
        {"root at 1, open", {1, -1.5, 0.5}, false, {0.5}},
        {"one inside", {1, 0, -0.25}, true, {0.5}},
        {"both negative", {1, 1.5, 0.5}, true, {}},
        {"NaN", {kNaN, kNaN, kNaN}, true, {}},
    };
    for (const Row& r : rows) EXPECT_TRUE(Match(Roots(r.c, r.ends), r.want, 1e-15)) << r.what;
    double slot0 = 0;  // t² − t, open: the linear solver's 1 is written though not counted
    EXPECT_TRUE(Roots({1, -1, 0}, false, &slot0).empty());
    EXPECT_EQ(slot0, 1.0);
}

// Degrees 3 to 5 with a zero leading or constant coefficient: the driver's step
// for t = 0 drops, snaps, keeps or sorts in the quotient's 0, as the row says.
TEST(CubicToQuinticRoots, ZeroCoefficientFallbacks) {
    const long double w = std::sqrt(0.515625L);  // t² − 0.875t + 0.0625 has roots (0.875 ∓ w)/2
    const double q1 = double((0.875L - w) / 2), q2 = double((0.875L + w) / 2);
    struct Row { const char* what; Poly c; bool ends; Poly want; };
    const Row rows[] = {
        {"c[0] = 0", {0, 1, -1, 0.1875}, false, {0.25, 0.75}},
        {"c[0] = 0 passes the flag", {0, 1, -1.5, 0.5}, true, {0.5, 1.0}},
        {"c[0] = 0 passes the flag", {0, 1, -1.5, 0.5}, false, {0.5}},
        {"c[0] = -0", {-0.0, 0, 1, -1, 0.1875}, true, {0.25, 0.75}},
        {"c[0] = 0 down to linear", {0, 0, 0, 0, 2, -1}, true, {0.5}},
        {"c[n] = 0, flag clear", Expand(1, {0, 0.25, 0.5}), false, {0.25, 0.5}},
        {"c[n] = c[n-1] = 0", Expand(1, {0, 0, 0.5}), true, {0.0, 0.5}},
        {"c[n] = c[n-1] = 0, quartic", Expand(1, {0, 0, 0, 0.5}), true, {0.0, 0.5}},
        {"snap 1e-8 to 0", Expand(1, {0, 1e-8L, 0.5}), true, {0.0, 0.5}},
        {"no snap when clear", Expand(1, {0, 1e-8L, 0.5}), false, {1e-8, 0.5}},
        {"snap, quartic", Expand(1, {0, 5e-8L, 0.3L, 0.6L}), true, {0.0, 0.3, 0.6}},
        {"2e-7 is kept, k >= n-1", Expand(1, {0, 2e-7L, 0.5}), true, {2e-7, 0.5}},
        {"k >= n-1 drops t = 0", Expand(1, {0, 0.25, 0.5}), true, {0.25, 0.5}},
        {"k >= n-1, quartic", Expand(-2, {0, 0.2L, 0.4L, 0.6L}), true, {0.2, 0.4, 0.6}},
        {"k >= n-1, quintic", Expand(3, {0, 0.1L, 0.3L, 0.7L, 0.9L}), true, {0.1, 0.3, 0.7, 0.9}},
        {"sort", Expand(1, {0, 0.5, 2}), true, {0.0, 0.5}},
        {"sort, no quotient roots", Expand(1, {0}, {{0, 1}}), true, {0.0}},
        {"sort, quartic", Expand(1, {0, 0.3L, 0.7L, 2}), true, {0.0, 0.3, 0.7}},
        {"sort, quartic, clear", Expand(1, {0, 0.3L, 0.7L, 2}), false, {0.3, 0.7}},
        {"sort, quintic", Expand(-1, {0, 0.1L, 0.9L, -1, 3}), true, {0.0, 0.1, 0.9}},
        {"t² drops 0 at both levels", Expand(1, {0, 0, 0.25, 0.5, 0.75}), true, {0.25, 0.5, 0.75}},
        {"t²: sorted in below, kept above", Expand(1, {0, 0, 0.5, 2, -1}), true, {0.0, 0.5}},
        {"quotient with root 1", Pad({1, -1.875, 0.9375, -0.0625}, 0, 1), true, {q1, q2, 1.0}},
    };
    for (const Row& r : rows) EXPECT_TRUE(Match(Roots(r.c, r.ends), r.want, 1e-12)) << r.what;
}

// Degrees 6 to 11 shed a zero leading or constant coefficient one degree at a
// time; degree 6 hands on to the quintic with the flag clear, so neither 0 nor 1
// is ever reported.
TEST(HighDegreeRoots, ZeroCoefficientChains) {
    struct Row { int lead, trail; Poly core; Poly want; };
    const Row rows[] = {
        {1, 0, {1, -1.5, 0.5, 0, 0, 0}, {0.5}},                       // degree 6: root 1 stays out
        {0, 1, Expand(2, {0.1L, 0.3L, 0.5L, 0.7L, 0.9L}), {0.1, 0.3, 0.5, 0.7, 0.9}},  // degree 6, c[6] = 0
        {1, 0, Expand(1, {0.2L, 0.4L, 0.6L, 0.8L, 1.0L, 2}), {0.2, 0.4, 0.6, 0.8}},     // degree 7
        {0, 1, Expand(-1, {0, 0.25L, 0.6L, 1, -0.5L, 3}), {0.25, 0.6}},  // degree 7, then 6 with c[6] = 0
        {9, 0, {1, -0.5, 0}, {0.5}},                                   // 11 down to the quadratic
        {0, 9, Expand(1, {0.3L, 0.6L}), {0.3, 0.6}},
        {3, 4, Expand(1, {0.15L, 0.45L, 0.85L, 1}), {0.15, 0.45, 0.85}},  // degree 10
        {1, 2, Expand(1, {0.05L, 0.5L, 0.95L, 0, 1.2L, 1.5L}), {0.05, 0.5, 0.95}},  // degree 9
        {2, 1, Expand(1, {0.35L, 0.65L, -1, -2, 2}), {0.35, 0.65}},      // degree 8
    };
    for (const Row& r : rows) {
        const Poly c = Pad(r.core, r.lead, r.trail);
        EXPECT_TRUE(Match(Roots(c), r.want, 1e-12)) << "degree " << c.size() - 1 << ", " << r.lead << " + " << r.trail;
    }
}

// Products of known factors, every degree, with real roots outside [0, 1] and
// complex pairs that must not count.
TEST(Roots, ProductsOfKnownFactors) {
    struct Row { long double lead; std::vector<long double> roots; std::vector<std::pair<long double, long double>> pairs; };
    const Row rows[] = {
        {2, {0.375L}, {}}, {-3, {1.5L}, {}}, {-3, {0.2L, 0.7L}, {}}, {1, {0.4L, -0.4L}, {}}, {5, {}, {{0.5L, 0.1L}}},
        {1, {0.1L, 0.5L, 0.9L}, {}}, {-0.5L, {0.33L, 1.2L, -0.5L}, {}}, {1, {0.62L}, {{0.3L, 0.05L}}},
        {1, {0.15L, 0.35L, 0.65L, 0.85L}, {}}, {7, {0.05L, 0.95L}, {{0, 1}}},
        {1, {0.12L, 0.31L, 0.5L, 0.69L, 0.88L}, {}}, {-0.25L, {0.01L, 0.99L, 1.01L}, {{0.5L, 0.2L}}},
        {1, {0.1L, 0.25L, 0.4L, 0.55L, 0.7L, 0.9L}, {}}, {3, {0.2L, 0.5L, 0.8L, -1, 1.5L}, {{2, 1}}},
        {1, {0.0625L, 0.2L, 0.35L, 0.5L, 0.65L, 0.8L, 0.9375L}, {}}, {1, {0.3L, 0.7L, -0.3L}, {{0.5L, 0.3L}, {1, 1}}},
        {1, {0.1L, 0.3L, 0.45L, 0.6L, 0.75L, 0.9L, 1.3L, -0.2L}, {}}, {2, {0.5L}, {{0.2L, 0.1L}, {0.8L, 0.1L}, {-1, 1}, {2, 2}}},
        {1, {0.1L, 0.3L, 0.5L, 0.7L, 0.9L, 1.2L, 1.5L, -0.5L, -1}, {}}, {-1, {0.42L, 0.58L, 0.999L}, {{0.1L, 0.3L}, {0.5L, 0.5L}, {0.9L, 0.2L}}},
        {1, {0.05L, 0.2L, 0.4L, 0.6L, 0.8L, 0.95L, -0.1L, 1.1L}, {{0.5L, 1}}}, {0.5L, {0.001L, 0.25L, 0.5L, 0.75L}, {{0.3L, 2}, {0.6L, 2}, {-1, 1}}},
        {1, {0.1L, 0.2L, 0.3L, 0.5L, 0.7L, 0.85L, 1.05L, -0.05L, 2, -2, 3}, {}},
        {-4, {0.11L, 0.37L, 0.63L, 0.89L}, {{0.25L, 0.5L}, {0.75L, 0.5L}, {0.5L, 1.5L}}},
        {1, {0.08L, 0.24L, 0.41L, 0.57L, 0.76L, 0.92L, -1, 2, 3, -3}, {{0.5L, 1}}}, {1, {0.5L}, {{0.5L, 1}, {0.5L, 2}, {0.5L, 3}, {0.5L, 4}, {0.5L, 5}}},
        {1, {0.07L, 0.3L, 0.52L, 0.74L, 0.96L, 1.4L}, {{0.5L, 0.5L}, {0.2L, 1}, {0.8L, 1}}},  // 12: the bare isolation
    };
    for (const Row& r : rows) {
        const Poly c = Expand(r.lead, r.roots, r.pairs);
        Poly want;
        for (long double t : r.roots)
            if (t > 0 && t < 1) want.push_back(double(t));
        std::sort(want.begin(), want.end());
        for (bool ends : {false, true}) EXPECT_TRUE(Match(Roots(c, ends), want, 1e-9)) << "degree " << c.size() - 1;
    }
}

// The end roots of degrees 3 to 5: with the flag set, a Bernstein end value within
// DBL_EPSILON of zero adds exactly 0.0 first or exactly 1.0 last.
TEST(Roots, EndRoots) {
    const long double w = std::sqrt(0.515625L);
    const double q1 = double((0.875L - w) / 2), q2 = double((0.875L + w) / 2);
    // (t − 1)²(t − 0.25) + 2⁻⁵⁴: every coefficient and every Bernstein step is exact.
    const Poly tinyAtOne{1, -2.25, 1.5, -0.25 + 0x1p-54};
    ASSERT_EQ(bernstein::ToBernstein<3>(tinyAtOne.data()).b[3], 0x1p-54);
    // t³ − 0.75t² − 2⁻⁵⁴: negative near 0 with no root there.
    const Poly tinyAtZero{1, -0.75, 0, -0x1p-54};
    // t(t − 1)(t − 0.25)(t − 0.625) + 2⁻⁵³: both end values 2⁻⁵³, four roots inside.
    // With the flag the 0.0 counts toward the degree, so once 0.625 is found the
    // isolation stops and the root just below 1 is not reported.
    const Poly bothEnds{1, -1.875, 1.03125, -0.15625, 0x1p-53};
    const auto polygon = bernstein::ToBernstein<4>(bothEnds.data());
    ASSERT_TRUE(polygon.b[0] == 0x1p-53 && polygon.b[4] == 0x1p-53);
    const double nearZero = 0x1p-53 / 0.15625, nearOne = 1 - 0x1p-53 / (0.75 * 0.375);
    struct Row { const char* what; Poly c; bool ends; Poly want; };
    const Row rows[] = {
        {"exact root at 1", {1, -1.875, 0.9375, -0.0625}, true, {q1, q2, 1.0}},
        {"exact root at 1, open", {1, -1.875, 0.9375, -0.0625}, false, {q1, q2}},
        {"value at 1 is 2^-54", tinyAtOne, true, {0.25, 1.0}},
        {"value at 1 is 2^-54, open", tinyAtOne, false, {0.25}},
        {"value at 0 is -2^-54", tinyAtZero, true, {0.0, 0.75}},
        {"value at 0 is -2^-54, open", tinyAtZero, false, {0.75}},
        {"both end values tiny", bothEnds, true, {0.0, nearZero, 0.25, 0.625, 1.0}},
        {"both end values tiny, open", bothEnds, false, {nearZero, 0.25, 0.625, nearOne}},
        {"roots 1e-9 inside the ends", Expand(1, {1e-9L, 0.4L, 1 - 1e-9L}), true, {1e-9, 0.4, 1 - 1e-9}},
        {"roots 1e-9 inside the ends", Expand(1, {1e-9L, 0.4L, 1 - 1e-9L}), false, {1e-9, 0.4, 1 - 1e-9}},
        {"roots 1e-9 outside the ends", Expand(1, {-1e-9L, 0.5L, 1 + 1e-9L}), true, {0.5}},
        {"quintic, roots 1e-9 outside", Expand(-1, {-1e-9L, 0.3L, 0.5L, 0.7L, 1 + 1e-9L}), true, {0.3, 0.5, 0.7}},
    };
    for (const Row& r : rows) {
        const Poly got = Roots(r.c, r.ends);
        EXPECT_TRUE(Match(got, r.want, 1e-12)) << r.what;
        for (size_t i = 0; i < got.size() && got.size() == r.want.size(); ++i) {  // end roots are written exactly
            if (r.want[i] == 0.0 || r.want[i] == 1.0) {
                EXPECT_EQ(got[i], r.want[i]) << r.what;
            }
        }
    }
}

// With the flag set the end root counts toward the degree: once the left piece of
// the first split holds the 0.0 and two roots, the cubic's right piece (root 0.7)
// is never visited.
TEST(Roots, IsolationStopsAtDegree) {
    const Poly c = Expand(1, {1e-17L, 0.2L, 0.7L});
    ASSERT_LE(std::fabs(c[3]), DBL_EPSILON);
    EXPECT_TRUE(Match(Roots(c, true), {0.0, 1e-17, 0.2}, 1e-12));
    EXPECT_TRUE(Match(Roots(c, false), {1e-17, 0.2, 0.7}, 1e-12));
}

// A piece whose polygon starts with two zero values touches the axis at its
// start without crossing: no sign change, yet its start is reported as a root.
TEST(Bernstein, TouchingStartWithoutSignChange) {
    double roots[5] = {-1, -1, -1, -1, -1};
    const double c[4] = {1, 0, 0, 0};  // t³: polygon 0, 0, 0, 1 over [0, 1]
    QorMath::bernstein::RootList list{roots, 0, 5};
    QorMath::bernstein::IsolateBernsteinRoots<3>(QorMath::bernstein::ToBernstein<3>(c), c, list);
    ASSERT_EQ(list.count, 1);
    EXPECT_EQ(roots[0], 0.0);
    QorMath::bernstein::Polygon<3> p{{0.25, 0.5, 0.75, 1.0}, {0, 1, 2, 3}};
    list.count = 0;
    QorMath::bernstein::IsolateBernsteinRoots<3>(p, c, list);
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

// bᵢ = Σⱼ≤ᵢ C(i,j)/C(N,j)·aⱼ against the explicit sum in long double, at x = i/N.
template <int N>
void CheckBernstein(std::mt19937& rng) {
    std::uniform_real_distribution<double> u(-4, 4);
    for (int j = 0; j <= N; ++j) EXPECT_EQ(bernstein::Binomial(N, j), double(Choose(N, j)));
    for (int trial = 0; trial < 40; ++trial) {
        double c[N + 1];
        for (double& v : c) v = std::ldexp(u(rng), int(rng() % 61) - 30);
        const bernstein::Polygon<N> p = bernstein::ToBernstein<N>(c);
        for (int i = 0; i <= N; ++i) {
            long double sum = 0, size = 0;
            for (int j = 0; j <= i; ++j) {
                const long double term = Choose(i, j) / Choose(N, j) * c[N - j];
                sum += term, size += std::fabs(term);
            }
            EXPECT_LE(std::fabs(p.b[i] - sum), 2 * N * DBL_EPSILON * size) << "N " << N << " i " << i;
            EXPECT_EQ(p.x[i], double(i) / N);
        }
        // De Casteljau at s: the pieces are the Bernstein forms of p over [0, s] and [s, 1].
        const double s = trial % 2 ? 0.5 : (trial % 7 + 1) / 8.0 - 0.03;
        bernstein::Polygon<N> left, right;
        if (s == 0.5)
            bernstein::SplitPolygon<N>(p, left, right, [](double a, double b) { return (a + b) * 0.5; });
        else
            bernstein::SplitPolygon<N>(p, left, right, [s](double a, double b) { return (b - a) * s + a; });
        for (const auto& [piece, from, to] : {std::tuple{&left, 0.0L, (long double)s}, std::tuple{&right, (long double)s, 1.0L}}) {
            std::vector<long double> q(N + 1, 0.0L), power{1};  // q(v) = p(from + (to − from)·v), lowest power first
            for (int j = 0; j <= N; ++j) {
                for (int k = 0; k <= j; ++k) q[k] += c[N - j] * power[k];
                std::vector<long double> next(j + 2, 0.0L);  // power *= from + (to − from)·v
                for (int k = 0; k <= j; ++k) next[k] += power[k] * from, next[k + 1] += power[k] * (to - from);
                power = next;
            }
            long double size = 0;
            for (int j = 0; j <= N; ++j) size += std::fabs(c[N - j]);
            for (int i = 0; i <= N; ++i) {
                long double sum = 0;
                for (int j = 0; j <= i; ++j) sum += Choose(i, j) / Choose(N, j) * q[j];
                EXPECT_LE(std::fabs(piece->b[i] - sum), 8 * N * DBL_EPSILON * size) << "N " << N << " s " << s << " i " << i;
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
    const Poly base[] = {Expand(1, {0.1L, 0.45L, 1.8L}), Expand(-1, {0.2L, 0.55L, 0.9L}, {{2, 1}}),
                         Expand(1, {0.1L, 0.3L, 0.5L, 0.7L, 0.9L, 2}, {{0.5L, 1}, {1, 1}})};
    for (const Poly& c : base) {
        Poly tiny = c;
        for (double& v : tiny) v = std::ldexp(v, -600);
        EXPECT_TRUE(Roots(tiny).empty());
        for (int e : {-450, -200, 200, 900}) {
            Poly scaled = c;
            for (double& v : scaled) v = std::ldexp(v, e);
            const Poly want = Roots(c, false), got = Roots(scaled, false);
            EXPECT_TRUE(got.size() == want.size() && std::memcmp(got.data(), want.data(), got.size() * sizeof(double)) == 0)
                << Match(got, want, 0).message();
            if (c.size() <= 6) {
                Poly withEnds = want;
                if (e < 0) withEnds.insert(withEnds.begin(), 0.0), withEnds.push_back(1.0);
                EXPECT_TRUE(Match(Roots(scaled, true), withEnds, 0)) << e;
            }
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

// Random polynomials from random roots in [0, 1], apart from each other and
// from the ends by at least 1e-3, times real factors outside and complex pairs;
// kept when the roots of the rounded coefficients are determined to well under
// 1e-9 (condition Σ|cⱼ|rⁿ⁻ʲ / |p′(r)| times the unit roundoff). All are found,
// in order, to 1e-9, with either flag.
TEST(Roots, RandomPolynomialsCrossCheck) {
    std::mt19937 rng(2024);
    std::uniform_real_distribution<long double> unit(0, 1);
    int kept = 0;
    for (int n = 1; n <= 12; ++n)
        for (int trial = 0; trial < 300; ++trial) {
            const int inside = int(rng() % (std::min(n, 8) + 1));
            std::vector<long double> roots;
            for (int i = 0; i < inside; ++i) roots.push_back(1e-3L + (1 - 2e-3L) * unit(rng));
            std::sort(roots.begin(), roots.end());
            bool apart = true;
            for (int i = 1; i < inside; ++i) apart = apart && roots[i] - roots[i - 1] >= 1e-3L;
            if (!apart) continue;
            std::vector<std::pair<long double, long double>> pairs;
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
            bool wellPosed = true;
            for (int i = 0; i < inside; ++i) {
                long double size = 0, slope = 0;
                for (int j = 0; j <= n; ++j) size = size * roots[i] + std::fabs((long double)c[j]);
                for (int j = 0; j < n; ++j) slope = slope * roots[i] + (n - j) * (long double)c[j];
                wellPosed = wellPosed && 2 * n * DBL_EPSILON * size < 1e-11L * std::fabs(slope);
            }
            long double atZero = c[n], atOne = 0;
            for (double v : c) atOne += v;
            if (!wellPosed || std::fabs(atZero) < 1e-12L || std::fabs(atOne) < 1e-12L) continue;
            ++kept;
            const Poly want(roots.begin(), roots.begin() + inside);
            for (bool ends : {false, true}) {
                if (ends && n > 5) break;
                EXPECT_TRUE(Match(Roots(c, ends), want, 1e-9)) << "degree " << n << " trial " << trial;
            }
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
