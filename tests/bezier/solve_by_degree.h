#ifndef QORMATH_TESTS_BEZIER_SOLVE_BY_DEGREE_H
#define QORMATH_TESTS_BEZIER_SOLVE_BY_DEGREE_H

// The root solver for c[0..n], by degree; from 12 up the bare degree-12
// isolation that offset cusps run, with room for 14 roots. Shared by the root
// tests and the fuzz target.

#include <cstdint>

#include "bezier/bernstein.h"
#include "bezier/roots.h"

namespace qtest {

inline int32_t SolveByDegree(const double* c, int n, double* r, bool ends) {
    using namespace QorMath;
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
        default: {
            bernstein::RootList list{r, 0, 14};
            bernstein::AppendIsolatedRoots<12>(c, list);
            return list.count;
        }
    }
}

}  // namespace qtest

#endif
