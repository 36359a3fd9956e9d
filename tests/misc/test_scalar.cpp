#include <array>
#include <cstdint>
#include <cstdlib>
#include <numeric>

#include "../test_util.h"

using namespace QorMath;
using LD = long double;

TEST(Scalar, GaussianAndCubeRoot) {
    EXPECT_NEAR(Gaussian(0, 0, 1), 0.3989422804014327, 1e-16);
    for (const auto& c : {std::array<double, 3>{1.5, -0.5, 2}, {-3, 1, 0.25}, {10, 0, 3}, {0.1, 0.2, -0.7}}) {
        const LD d = LD(c[0]) - c[1], s2 = LD(c[2]) * c[2];
        const auto want = double(std::exp(-d * d / (2 * s2)) / std::sqrt(2 * 3.14159265358979323846L * s2));
        EXPECT_NEAR(Gaussian(c[0], c[1], c[2]), want, 2e-15 * want) << c[0];
    }
    EXPECT_EQ(CubeRoot(-8), -2.0);
    // pow with the exponent rounded below ⅓: at 1e300 that is 1.3e-14 under the true cube root.
    for (double x : {27.0, 2.0, 1e-3, 1e-9, 1e300}) {
        const auto want = double(std::pow(LD(x), LD(0.3333333333333333)));
        EXPECT_TRUE(std::fabs(CubeRoot(x) - want) <= 2.5e-16 * want && CubeRoot(-x) == -CubeRoot(x)) << x;
    }
    EXPECT_GT(1e100 - CubeRoot(1e300), 1e86);
    for (double x : {0.0, 5e-11, 1e-10, -1e-10}) EXPECT_EQ(CubeRoot(x), 0.0) << x;
    EXPECT_TRUE(CubeRoot(std::nextafter(1e-10, 1.0)) > 4.6e-4 && CubeRoot(std::nextafter(-1e-10, -1.0)) < -4.6e-4);
}

TEST(Scalar, GCD) {
    const int32_t cases[][3] = {
        {12, -18, 6}, {-12, -18, 6}, {0, 5, 5}, {-5, 0, 5}, {1, 1000000, 1}, {1000000, -1, 1}, {0, 0, 0},
        {-7, 7, 7}, {462, -1071, 21}, {INT32_MAX, -INT32_MAX, INT32_MAX},
        {INT32_MIN, 0, INT32_MIN}, {0, INT32_MIN, INT32_MIN}, {INT32_MIN, INT32_MIN, INT32_MIN},  // 2^31 wraps
        {INT32_MIN, 6, 2}, {6, INT32_MIN, 2}, {INT32_MIN, 1 << 30, 1 << 30}, {-(1 << 30), INT32_MIN, 1 << 30},
        {INT32_MIN, 3, 1}, {INT32_MIN, -1, 1}, {INT32_MAX, INT32_MIN, 1}, {INT32_MIN, -96, 32}};
    for (const auto& c : cases) EXPECT_EQ(GCD(c[0], c[1]), c[2]) << c[0] << ", " << c[1];
    std::mt19937 rng(11);
    std::uniform_int_distribution<int32_t> any(INT32_MIN, INT32_MAX), odd(-3000, 3000);
    for (int i = 0; i < 20000; ++i) {
        int32_t a = any(rng), b = any(rng);
        const int32_t k = i % 2 ? (odd(rng) | 1) : 1 << (i % 20);  // a large common factor: odd, or a power of two
        if (i % 3 == 1) a = a % 1000 * k, b = b % 1000 * k;
        if (i % 5 == 4) (i % 2 ? a : b) = INT32_MIN;
        const long long want = std::gcd(std::llabs(a), std::llabs(b));
        EXPECT_TRUE(want == 2147483648LL || GCD(a, b) == want) << a << ", " << b;
    }
}

TEST(Scalar, BiasGainAndBlendFactors) {
    EXPECT_TRUE(Bias(0.25, 0.5) == 0.25 && Bias(0.5, 0.8) == 0.8);
    EXPECT_NEAR(Bias(0.3, 0.2), 3.0 / 31, 1e-16);  // 0.06 / (0.6 · 0.7 + 0.2)
    for (double t : {-3.0, 0.7, 1e300}) EXPECT_TRUE(Bias(t, 0) == 0 && Bias(t, -0.4) == 0) << t;
    EXPECT_TRUE(Bias(0.3, 1.7) == Bias(0.3, 1.0) && Bias(1, DBL_EPSILON) == 0 && Bias(1, 2 * DBL_EPSILON) == 1);
    // Neutral within DBL_EPSILON of 0.5, inclusive; an unclamped huge t shows any departure.
    EXPECT_TRUE(Bias(1e17, 0.5 + 0x1p-52) == 1e17 && Bias(1e17, 0.5 - 0x1p-52) == 1e17);
    EXPECT_LT(Bias(1e17, 0.5 + 3 * 0x1p-53), 1e16);

    EXPECT_TRUE(Gain(0.3, 0) == 0.3 && Gain(0.3, 1e-17) == 0.3);
    EXPECT_TRUE(Gain(0.25, 0.5) == 0.375 && Gain(0.75, 0.5) == 0.625 && Gain(0.25, -0.25) == 0.1875);
    EXPECT_NEAR(Gain(0.2, 0.3), 13.0 / 47, 5e-16);  // 1.3 · 0.2 / 0.94
    for (double t : {0.2, 0.7}) EXPECT_TRUE(Gain(t, 2) == Gain(t, 1) && Gain(t, -3) == Gain(t, -1)) << t;
    // Where D = B + A vanishes (within DBL_EPSILON) the result is 1, whichever half t is in.
    EXPECT_TRUE(Gain(0.5, -1) == 1 && Gain(0.75, -0.5) == 1 && Gain(0, 1) == 1 && Gain(0x1p-54, 1) == 1);
    EXPECT_EQ(Gain(0x1p-53, 1), 0.5);
    std::mt19937 rng(4);
    std::uniform_real_distribution<double> t01(0, 1), g(0.05, 0.95);
    for (int i = 0; i < 1000; ++i) {
        const double t = t01(rng), b = g(rng), gg = 2 * b - 1;
        EXPECT_NEAR(Bias(Bias(t, b), 1 - b), t, 1e-14) << t << " " << b;  // 1 - b undoes b
        EXPECT_NEAR(Gain(1 - t, gg), 1 - Gain(t, gg), 1e-14) << t << " " << gg;  // odd about the middle
        EXPECT_TRUE(Gain(0, gg) == 0 && Gain(1, gg) == 1 && Gain(0.5, gg) == 0.5) << gg;
    }
    EXPECT_TRUE(GetLinearBlendFactor(3, 0) == 1 && GetLinearBlendFactor(1, 4) == 0.25);
    EXPECT_TRUE(GetLinearBlendFactor(7, 4) == 1.75 && GetLinearBlendFactor(size_t(1) << 60, size_t(1) << 62) == 0.25);
    // The logarithmic factor is t itself within DBL_EPSILON of base 1, inclusive.
    EXPECT_TRUE(GetLogarithmicBlendFactor(0.5, 1) == 0.5 && GetLogarithmicBlendFactor(1, 10) == 1);
    for (double base : {1 + DBL_EPSILON, 1 - 0x1p-53}) EXPECT_EQ(GetLogarithmicBlendFactor(0.3, base), 0.3);
    EXPECT_NEAR(GetLogarithmicBlendFactor(0.3, 1 + 2 * DBL_EPSILON), 0.5, 1e-12);  // the formula, rounding and all
    for (const auto& c : {std::array<double, 2>{0.5, 10}, {0.25, 0.5}, {0.8, 100}, {2, 3}}) {
        const LD want = std::log((c[1] - 1.0L) * c[0] + 1) / std::log(LD(c[1]));
        EXPECT_NEAR(GetLogarithmicBlendFactor(c[0], c[1]), double(want), 1e-15) << c[0];
    }
    // Bias first, with the third argument: 4/7, then gain 0.5 gives 10/19.
    EXPECT_NEAR(GetBiasGainBlendFactor(0.25, 0.5, 0.8), 10.0 / 19, 1e-15);
}
