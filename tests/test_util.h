#ifndef QORMATH_TESTS_TEST_UTIL_H
#define QORMATH_TESTS_TEST_UTIL_H

// Helpers shared by the tests: field-wise comparisons that print failing values in full
// precision, a wrapper for in-place calls, and random inputs.

#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <iomanip>
#include <limits>
#include <random>
#include <type_traits>

namespace qtest {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();

/// Every field of g within tol (inclusive) of w's; the default 0 asks for equality. NaN never matches.
inline ::testing::AssertionResult Near(const MATRIX& g, const MATRIX& w, double tol = 0) {
    const double gv[] = {g.a, g.b, g.tx, g.c, g.d, g.ty}, wv[] = {w.a, w.b, w.tx, w.c, w.d, w.ty};
    const char* names[] = {"a", "b", "tx", "c", "d", "ty"};
    for (int i = 0; i < 6; ++i)
        if (!(std::fabs(gv[i] - wv[i]) <= tol))
            return ::testing::AssertionFailure() << std::setprecision(17) << names[i] << ": " << gv[i] << " vs " << wv[i];
    return ::testing::AssertionSuccess();
}

/// Both components of g within tol (inclusive) of w's.
template <int K>
::testing::AssertionResult Near(QorMath::vector2dT<double, K> g, QorMath::vector2dT<double, K> w, double tol = 0) {
    if (std::fabs(g.x - w.x) <= tol && std::fabs(g.y - w.y) <= tol) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << std::setprecision(17) << "(" << g.x << ", " << g.y << ") vs (" << w.x
                                         << ", " << w.y << ")";
}

/// The integer points starting at got equal want, in order.
inline ::testing::AssertionResult Same(const tagPOINT* got, std::initializer_list<tagPOINT> want) {
    for (const tagPOINT& w : want) {
        if (got->x != w.x || got->y != w.y)
            return ::testing::AssertionFailure() << "(" << got->x << ", " << got->y << ") vs (" << w.x << ", " << w.y << ")";
        ++got;
    }
    return ::testing::AssertionSuccess();
}

/// Byte equality: tells -0.0 from 0.0 and matches identical NaNs.
template <typename T>
bool SameBits(const T& x, const T& y) {
    return std::memcmp(&x, &y, sizeof(T)) == 0;
}

/// A copy of m after the in-place call f(&m, args...), or (m.*f)(args...) for a member function.
template <typename F, typename... Args>
MATRIX Apply(F f, MATRIX m, Args... args) {
    if constexpr (std::is_member_function_pointer_v<F>)
        (m.*f)(args...);
    else
        f(&m, args...);
    return m;
}

/// A point with coordinates uniform in [-10, 10].
inline QorMath::Point2d RandomPoint(std::mt19937& rng) {
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    return {u(rng), u(rng)};
}

/// A matrix with entries uniform in [-3, 3] and |det| >= minDet.
inline MATRIX RandomMatrix(std::mt19937& rng, double minDet = 0) {
    std::uniform_real_distribution<double> u(-3.0, 3.0);
    for (;;) {
        const MATRIX m{u(rng), u(rng), u(rng), u(rng), u(rng), u(rng)};
        if (std::fabs(m.a * m.d - m.b * m.c) >= minDet) return m;
    }
}

/// A segment's power-basis coefficients, as the analysis functions take them.
struct Basis {
    QorMath::Point2d a, b, c, d;
    explicit Basis(const QorMath::Point2d p[4]) { QorMath::CubicBezier::GetPowerBasis(p, a, b, c, d); }
};

/// B(t), or B′(t) when slope is set, by the Bernstein weights in long double: a
/// second evaluation independent of the library's power basis and Horner rule.
struct LongPoint {
    long double x, y;
};
inline LongPoint BernsteinAt(const QorMath::Point2d p[4], long double t, bool slope = false) {
    const long double s = 1 - t, w[2][4] = {{s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t},
                                            {-3 * s * s, 3 * s * (s - 2 * t), 3 * t * (2 * s - t), 3 * t * t}};
    LongPoint r{0, 0};
    for (int i = 0; i < 4; ++i) r.x += w[slope][i] * p[i].x, r.y += w[slope][i] * p[i].y;
    return r;
}

}  // namespace qtest

#endif
