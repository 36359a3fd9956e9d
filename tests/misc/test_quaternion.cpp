#include <array>
#include <cstdlib>

#include "../test_util.h"

using namespace QorMath;

namespace {

using Q4 = std::array<double, 4>;  // x, y, z, w
using V3 = vector3dT<double>;
using LD = long double;
const double kPi = 3.14159265358979323846, kHalf = std::sqrt(0.5);

Q4 A(const Quaternion& q) { return {q.x, q.y, q.z, q.w}; }
Quaternion Q(const Q4& v) { return {v[0], v[1], v[2], v[3]}; }
::testing::AssertionResult Near(const Q4& g, const Q4& w, double tol) {
    for (int i = 0; i < 4; ++i)
        if (!(std::fabs(g[i] - w[i]) <= tol))
            return ::testing::AssertionFailure() << std::setprecision(17) << i << ": " << g[i] << " vs " << w[i];
    return ::testing::AssertionSuccess();
}
Q4 Rotated(const Quaternion& q, V3 v, bool quick = false) {
    quick ? q.RotateQuick(v) : q.Rotate(v);
    return {v.x, v.y, v.z, 0};
}
Quaternion RandomQ(std::mt19937& rng, double lo = -2, double hi = 2) {
    std::uniform_real_distribution<double> u(lo, hi);
    const double x = u(rng), y = u(rng), z = u(rng);
    return {x, y, z, u(rng)};
}

}  // namespace

TEST(Quaternion, ValuesAndHamiltonProduct) {
    Quaternion q(1, 2, 3, 4);
    const Quaternion p(10, 20, 30, 40);
    EXPECT_TRUE(A(Quaternion()) == (Q4{0, 0, 0, 1}) && A(q + p) == (Q4{11, 22, 33, 44}));
    EXPECT_TRUE(A(q * 2.0) == (Q4{2, 4, 6, 8}) && A(q / 2.0) == (Q4{0.5, 1, 1.5, 2}));
    EXPECT_TRUE(A(q.GetConjugate()) == (Q4{-1, -2, -3, 4}) && q.DotProduct(p) == 300);
    EXPECT_TRUE(q.MagnitudeSqrd() == 30 && q.Magnitude() == std::sqrt(30.0));
    EXPECT_TRUE(Near(A(Quaternion(kPi / 3, V3{2, -4, 4})), {1, -2, 2, std::sqrt(0.75)}, 5e-16));  // axis as given
    q.Clear();
    EXPECT_EQ(A(q), (Q4{0, 0, 0, 1}));
    // The unit table (i·j = k, j·k = i, k·i = j, squares -1) fixes the bilinear product; entry ±n is ±e[n-1].
    const Quaternion e[4] = {{0, 0, 0, 1}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};  // 1, i, j, k
    const int table[4][4] = {{1, 2, 3, 4}, {2, -1, 4, -3}, {3, -4, -1, 2}, {4, 3, -2, -1}};
    for (int a = 0; a < 4; ++a)
        for (int b = 0; b < 4; ++b)
            EXPECT_EQ(A(e[a] * e[b]), A(e[std::abs(table[a][b]) - 1] * (table[a][b] < 0 ? -1.0 : 1.0))) << a << b;
}

TEST(Quaternion, RotateAndRotateQuick) {
    Quaternion z90;
    z90.SetAngleAndAxis(kPi / 2, {0, 0, 1});
    EXPECT_TRUE(Near(Rotated(z90, {1, 0, 0}), {0, 1, 0, 0}, 1e-15));
    EXPECT_TRUE(Near(Rotated(z90, {1, 0, 0}, true), {kHalf, kHalf, 0, 0}, 1e-15));  // w·v + u × v, no rotation
    EXPECT_EQ(Rotated({1, 2, 3, 4}, {1, -2, 5}, true), (Q4{20, -10, 16, 0}));
    // Rodrigues, v cos θ + (a × v) sin θ + a (a·v)(1 - cos θ); a quaternion of magnitude m also scales by m².
    std::mt19937 rng(2);
    for (int i = 0; i < 300; ++i) {
        const Quaternion r = RandomQ(rng, -10, 10), s = RandomQ(rng);  // v and θ, and the axis
        const V3 v{r.x, r.y, r.z};
        const LD n = std::sqrt(LD(s.x) * s.x + LD(s.y) * s.y + LD(s.z) * s.z), ax = s.x / n, ay = s.y / n, az = s.z / n;
        const LD th = r.w * 0.7L, co = std::cos(th), si = std::sin(th), dot = ax * v.x + ay * v.y + az * v.z;
        const Q4 want{double(v.x * co + (ay * v.z - az * v.y) * si + ax * dot * (1 - co)),
                      double(v.y * co + (az * v.x - ax * v.z) * si + ay * dot * (1 - co)),
                      double(v.z * co + (ax * v.y - ay * v.x) * si + az * dot * (1 - co)), 0};
        const Quaternion q(double(th), V3{double(ax), double(ay), double(az)});
        EXPECT_TRUE(Near(Rotated(q, v), want, 1e-13)) << i;
        EXPECT_TRUE(Near(Rotated(q * 1.5, v), {2.25 * want[0], 2.25 * want[1], 2.25 * want[2], 0}, 3e-13)) << i;
    }
}

TEST(Quaternion, RotationCreateThetaNormalizeAndForceZeros) {
    Quaternion q;
    q.RotationCreate({1, 2, 3}, {4, 5, 6});
    EXPECT_EQ(A(q), (Q4{-3, 6, -3, 32}));
    q.RotationCreate({1, 0, 0}, {0, 1, 0});  // twice the 90° between them: a half turn
    EXPECT_TRUE(A(q) == (Q4{0, 0, 1, 0}) && q.RotationTheta() == kPi && Quaternion().RotationTheta() == 0);
    EXPECT_TRUE(Quaternion(0, 0, 0, -1).RotationTheta() == 2 * kPi);
    EXPECT_TRUE(std::isnan(Quaternion(0, 0, 0, 1.5).RotationTheta()));
    for (double th : {0.3, 2.5, 6.0}) EXPECT_NEAR(Quaternion(th, V3{0.6, 0, 0.8}).RotationTheta(), th, 1e-14);
    // Normalize needs a magnitude above DBL_EPSILON; ForceZeros snaps x, y, z within 1000·DBL_EPSILON and w only
    // within DBL_EPSILON, both inclusive.
    const double eps = DBL_EPSILON, up = std::nextafter(eps, 1.0), big = 1000 * eps, bigUp = std::nextafter(big, 1.0);
    const auto normalized = [](const Q4& v) {
        Quaternion q = Q(v);
        const bool ok = q.Normalize();
        return std::pair(ok, A(q));
    };
    const Q4 tiny[] = {{0, 0, 0, 1e-17}, {0, 0, 0, eps}, {-eps, 0, 0, 0}, {eps / 2, eps / 2, -eps / 2, eps / 2}};
    for (const Q4& v : tiny) EXPECT_EQ(normalized(v), std::pair(false, v));
    EXPECT_EQ(normalized({0, 0, up, 0}), std::pair(true, Q4{0, 0, 1, 0}));
    EXPECT_TRUE(normalized({3, 0, 4, 0}).first && Near(normalized({3, 0, 4, 0}).second, {0.6, 0, 0.8, 0}, 1e-16));
    const Q4 cases[][2] = {
        {{1e-13, 1e-15, 0.5, 1e-15}, {0, 0, 0.5, 1e-15}}, {{big, -big, bigUp, eps}, {0, 0, bigUp, 0}},
        {{-bigUp, 2e-16, -3e-14, -up}, {-bigUp, 0, 0, -up}}, {{0, 0, 0, 1e-13}, {0, 0, 0, 1e-13}},
        {{0.1, 0.2, 0.3, -eps}, {0.1, 0.2, 0.3, 0}}};
    const auto forced = [](const Q4& v) { Quaternion f = Q(v); f.ForceZeros(); return A(f); };
    for (const auto& c : cases) EXPECT_EQ(forced(c[0]), c[1]) << &c - cases;
}

TEST(Quaternion, Interpolate) {
    const Quaternion id, q(0.1, 0.2, 0.3, std::sqrt(0.86)), near = q * Quaternion(2e-4, V3{0, 0, 1});
    Quaternion out;
    // Equal or opposite, also within 1e-8 (1 - cos(φ/2) ≈ φ²/8 for a turn by φ = 2e-4): out = q0.
    for (const Quaternion& q1 : {q, q * -1.0, near, near * -1.0})
        EXPECT_TRUE(!Quaternion::Interpolate(q, q1, 0.5, out = Quaternion(9, 9, 9, 9)) && A(out) == A(q));
    EXPECT_TRUE(Quaternion::Interpolate(id, Quaternion(4e-4, V3{0, 0, 1}), 0.5, out));
    EXPECT_TRUE(Near(A(out), A(Quaternion(2e-4, V3{0, 0, 1})), 1e-15));
    EXPECT_TRUE(Quaternion::Interpolate(id, {0, 0, 1, 0}, 0.5, out) && Near(A(out), {0, 0, kHalf, kHalf}, 1e-15));
    // q1 = q0 ⊗ (a 240° turn): dot product -0.5, and no flip to the nearer -q1, so t walks the 120° arc of
    // q0 ⊗ (a turn by t·240°), past its ends too.
    const Quaternion q0(0.7, V3{0.36, 0.48, 0.8});
    const V3 axis{0.48, 0.6, 0.64};
    for (double t : {0.0, 0.25, 0.5, 1.0, 1.5, -0.5}) {
        EXPECT_TRUE(Quaternion::Interpolate(q0, q0 * Quaternion(4 * kPi / 3, axis), t, out)) << t;
        EXPECT_TRUE(Near(A(out), A(q0 * Quaternion(t * 4 * kPi / 3, axis)), 2e-15)) << t;
    }
}
