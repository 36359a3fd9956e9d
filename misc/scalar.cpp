#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "QorMath/angles.h"
#include "QorMath/misc.h"

namespace QorMath {

double Gaussian(double x, double mean, double sigma) {
    const double d = x - mean;
    const double variance = sigma * sigma;
    return std::exp(-(d * d) / (2.0 * variance)) * (1.0 / std::sqrt(2.0 * Pi * variance));
}

double CubeRoot(double x) {
    constexpr double kThird = 0.3333333333333333;
    if (x > 1e-10) return std::pow(x, kThird);
    if (x < -1e-10) return -std::pow(-x, kThird);
    return 0.0;
}

int32_t GCD(int32_t a, int32_t b) {
    // Euclid on 64-bit magnitudes: |-2147483648| = 2^31 fits there, so every
    // pair ends with its true divisor. Only 2^31 itself cannot go back to int32.
    int64_t x = std::llabs(static_cast<int64_t>(a));
    int64_t y = std::llabs(static_cast<int64_t>(b));
    auto result = [](int64_t g) { return g > INT32_MAX ? INT32_MIN : static_cast<int32_t>(g); };
    if (x == y) return result(x);
    for (;;) {
        if (x == 0) return result(y);
        if (y == 0) return result(x);
        if (x == 1 || y == 1) return 1;
        int64_t r;
        if (x > y) {
            r = x % y;
            x = y;
        } else {
            r = y % x;
        }
        y = r;
        if (x == y) return result(x);
    }
}

double Bias(double t, double b) {
    if (std::fabs(b - 0.5) <= DBL_EPSILON) return t;
    const double bc = std::clamp(b, 0.0, 1.0);
    if (std::fabs(bc) <= DBL_EPSILON) return 0.0;
    return t * bc / ((1.0 - 2.0 * bc) * (1.0 - t) + bc);
}

double Gain(double t, double g) {
    if (std::fabs(g) <= DBL_EPSILON) return t;
    const double gc = std::clamp(g, -1.0, 1.0);
    const double a = gc + 1.0;
    const double b = (2.0 * t - 1.0) * (2.0 * gc);
    const double d = b + a;
    if (std::fabs(d) <= DBL_EPSILON) return 1.0;
    // Only d is guarded, before the branch: the upper half's denominator b - a
    // may still vanish.
    if (t < 0.5) return a * t / d;
    return (b - a * t) / (b - a);
}

double GetLinearBlendFactor(size_t index, size_t count) {
    if (count == 0) return 1.0;
    return static_cast<double>(index) / static_cast<double>(count);
}

double GetLogarithmicBlendFactor(double t, double base) {
    if (std::fabs(base - 1.0) <= DBL_EPSILON) return t;
    return std::log((base - 1.0) * t + 1.0) / std::log(base);
}

double GetBiasGainBlendFactor(double t, double gainParameter, double biasParameter) {
    return Gain(Bias(t, biasParameter), gainParameter);
}

}  // namespace QorMath
