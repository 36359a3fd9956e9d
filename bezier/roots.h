#ifndef QORMATH_BEZIER_ROOTS_H
#define QORMATH_BEZIER_ROOTS_H

// Internal: the real roots in [0, 1] of a polynomial given in power basis,
// highest power first (c[0]·tⁿ + … + c[n]). Each solver writes its roots from
// roots[0] upward and returns their count; roots[] must have room for
// degree + 2 values. Roots come in ascending order, except that a root within
// DBL_EPSILON of an end may be reported both as the end root and as an
// isolated one (nothing is deduplicated). One exception to [0, 1]: the probe
// for a double root (bernstein.h) starts just left of 0 and accepts where
// |p| < 1e-7, so a polynomial of tiny scale can yield a root of p′ below 0.
//
// includeEnds (degrees 1 to 5): when set the interval is closed and the end
// roots 0 and 1 are reported; when clear, roots are sought in (0, 1).
// Degrees 3 and up isolate roots on the Bernstein control polygon and polish
// each with Newton's method; see roots.cpp.

#include <cstdint>

#include "bezier/bernstein.h"

namespace QorMath {

int32_t FindLinearRoot(const double c[2], double roots[], bool includeEnds);
int32_t FindQuadraticRoots(const double c[3], double roots[], bool includeEnds);
int32_t FindCubicRoots(const double c[4], double roots[], bool includeEnds);
int32_t FindQuarticRoots(const double c[5], double roots[], bool includeEnds);
int32_t FindQuinticRoots(const double c[6], double roots[], bool includeEnds);

// Open interval only, no end roots; a zero leading or constant coefficient drops
// one degree (degree 6 falls back to FindQuinticRoots with includeEnds clear).
int32_t FindDegree6Roots(const double c[7], double roots[]);
int32_t FindDegree7Roots(const double c[8], double roots[]);
int32_t FindDegree8Roots(const double c[9], double roots[]);
int32_t FindDegree9Roots(const double c[10], double roots[]);
int32_t FindDegree10Roots(const double c[11], double roots[]);
int32_t FindDegree11Roots(const double c[12], double roots[]);

}  // namespace QorMath

#endif
